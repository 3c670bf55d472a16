#include "capi/search_request.hpp"

#include <algorithm>
#include <cstring>
#include <stdexcept>

#include "foundation/core/text/bytes.hpp"
#include "foundation/storage/vfs/absolute_iri.hpp"
#include "foundation/storage/vfs/conversion.hpp"
#include "foundation/storage/vfs/folder.hpp"
#include "foundation/storage/vfs/read_session.hpp"
#include "korvan/io/path.hpp"
#include "quindarel/interpreter/dispatcher.hpp"

namespace kglob {
namespace {

namespace vfs = foundation::storage::vfs;
using foundation::core::text::fromBytes;
using korvan::io::internal::Path;

kglob_options knownOptions(kglob_options const* options) {
  kglob_options known = KGLOB_OPTIONS_INIT;
  if (options == nullptr) return known;
  std::size_t const size = options->size;
  if (size < sizeof size) throw std::invalid_argument("the options' size is not set");
  char const* const bytes = reinterpret_cast<char const*>(options);
  std::memcpy(&known, bytes, std::min(size, sizeof known));
  bool const asksForMore =
      size > sizeof known && std::any_of(bytes + sizeof known, bytes + size, [](char byte) { return byte != 0; });
  if (asksForMore || known.reserved != 0) throw std::invalid_argument("the options hold some that this library lacks");
  return known;
}

std::u16string absoluteFolder(std::u16string const& folder) {
  Path const path(folder);
  if (isAbsolute(path)) return folder;
  vfs::Folder const current = Kdispatcher::getDispatcher()->GetCurrentWorkingFolder()->get();
  return absolute(path, Path(vfs::fromAbsoluteIRI(current.getLocation()))).string(false);
}

}  // namespace

SearchRequest makeRequest(char const* pattern, kglob_options const* options) {
  if (pattern == nullptr) throw std::invalid_argument("the pattern is null");
  kglob_options const known = knownOptions(options);
  std::u16string const text = fromBytes(pattern);
  std::u16string const folder = fromBytes(known.root_folder == nullptr ? "" : known.root_folder);
  return {text, absoluteFolder(folder),
          known.cache_bytes == 0 ? vfs::ReadSession::defaultMemoryBound : known.cache_bytes,
          known.include_dot_files != 0, vfs::hasIRIPrefix(text) || vfs::hasIRIPrefix(folder)};
}

}  // namespace kglob
