#include "korvan/io/builtin_glob.hpp"

#include <string>
#include <utility>
#include <vector>

#include "foundation/storage/vfs/conversion.hpp"
#include "foundation/storage/vfs/folder.hpp"
#include "gateway/arguments.hpp"
#include "gateway/failure_translation.hpp"
#include "korvan/io/glob.hpp"
#include "korvan/io/message_ids.hpp"
#include "korvan/io/path.hpp"
#include "korvan/io/vx_err_msg_id.hpp"
#include "quindarel/interpreter/array.hpp"
#include "quindarel/interpreter/dispatcher.hpp"
#include "quindarel/interpreter/errors.hpp"
#include "quindarel/interpreter/string_array.hpp"
#include "quindarel/interrupt/interrupt_state.hpp"

namespace korvan::io::internal {

namespace {

using foundation::storage::vfs::AbsoluteIRI;
using foundation::storage::vfs::Folder;
using KORVAN::automation::io::glob::InvalidArgName;
using KORVAN::automation::io::glob::InvalidArgScalar;
using KORVAN::automation::io::glob::InvalidNumArgs;

struct Request {
  std::u16string pattern;
  std::u16string rootFolder;
  bool includeDotFiles = false;
};

/// The host's error functions may return. Even then every invalid count ends in an error: the library's own, or that of
/// an argument check.
void checkCounts(int nlhs, int nrhs) {
  if (nlhs > 1) matrix::detail::error_maxlhs();
  if (nrhs > 5)
    matrix::detail::error_maxrhs();
  else if (nrhs < 1)
    matrix::detail::error_minrhs();
  if (nrhs != 1 && nrhs != 3 && nrhs != 5) vxErrMsgId(InvalidNumArgs());
}

void readOption(Request& request, vxArray_tag const* nameArgument, vxArray_tag const* value) {
  namespace api = matrix::detail::noninlined::vx_array_api;
  std::u16string const name = getTextArgument(nameArgument);
  if (equalsIgnoreCase(name, u"RootFolder")) {
    request.rootFolder = getTextArgument(value);
  } else if (equalsIgnoreCase(name, u"IncludeDotFiles")) {
    if (!api::vxIsLogicalScalar(value)) vxErrMsgId(InvalidArgScalar(name, "logical"));
    request.includeDotFiles = api::vxIsLogicalScalarTrue(value);
  } else {
    vxErrMsgId(InvalidArgName(name));
  }
}

Request readRequest(int nrhs, vxArray_tag const* const* prhs) {
  Request request;
  request.pattern = getTextArgument(prhs[0]);
  for (int k = 1; k < nrhs; k += 2) readOption(request, prhs[k], prhs[k + 1]);
  return request;
}

AbsoluteIRI currentLocation() {
  Folder const folder = Kdispatcher::getDispatcher()->GetCurrentWorkingFolder()->get();
  return folder.getLocation();
}

/// The core search. It polls for ctrl-c itself, and its failures are reported as errors of the interpreter. These leave
/// through the guard, which restores the host's interrupt mode.
std::vector<std::u16string> search(Request const& request, AbsoluteIRI const& currentFolder) {
  utInterruptMode const deferred(utInterruptMode::off);
  try {
    Path const base(foundation::storage::vfs::fromAbsoluteIRI(currentFolder));
    Path const root = absolute(Path(request.rootFolder), base);
    return glob(request.pattern, root.string(false), request.includeDotFiles);
  } catch (...) {
    reportFailure(request.pattern);
  }
}

/// The texts as an n-by-1 string array. Each text is freed as soon as it is copied, so that memory never holds a large
/// result twice.
matrix::detail::ArrayPtr toColumn(std::vector<std::u16string>&& texts) {
  matrix::detail::ArrayPtr column = Quindarel::String::createStringArray(texts.size(), 1);
  Quindarel::String::StringArray& elements = Quindarel::String::getString(column);
  for (std::size_t i = 0; i < texts.size(); ++i) {
    std::u16string const text = std::move(texts[i]);
    elements.setText(i, text);
  }
  return column;
}

}  // namespace

void glob(int nlhs, std::unique_ptr<vxArray_tag, matrix::detail::vxDestroy_deleter>* plhs, int nrhs,
          vxArray_tag const* const* prhs) {
  checkCounts(nlhs, nrhs);
  Request const request = readRequest(nrhs, prhs);
  AbsoluteIRI const currentFolder = currentLocation();
  utInterruptState::ThrowIfInterruptPending();
  std::vector<std::u16string> matches = search(request, currentFolder);
  utInterruptState::ThrowIfInterruptPending();
  plhs[0] = toColumn(std::move(matches));
}

}  // namespace korvan::io::internal
