#include "foundation/storage/vfs/conversion.hpp"

#include <algorithm>
#include <string_view>
#include <utility>

#include "fl/filesystem/operations.hpp"
#include "foundation/core/text/ascii.hpp"
#include "foundation/core/text/escape.hpp"
#include "foundation/core/text/utf16.hpp"
#include "foundation/storage/vfs/detail/iri_access.hpp"
#include "foundation/storage/vfs/detail/iri_text.hpp"
#include "foundation/storage/vfs/storage_exception.hpp"
#include "foundation/storage/vfs/storage_system.hpp"

namespace foundation::storage::vfs {
namespace {

// The text with each surrogate that has no byte form replaced by NUL and its value in hex, so that different texts stay
// different. No name contains NUL, so nothing can exist at such a location.
std::u16string namingNothing(std::u16string_view text) {
  using namespace core::text;
  std::u16string nothing;
  forEachCharacter(text, [&](std::u16string_view character) {
    char16_t const unit = character[0];
    if (character.size() == 2 || !isSurrogate(unit) || isEscapedByte(unit)) {
      nothing += character;
      return;
    }
    nothing += u'\0';
    for (int shift = 12; shift >= 0; shift -= 4) nothing += static_cast<char16_t>(hexDigits[(unit >> shift) & 0xF]);
  });
  return nothing;
}

}  // namespace

AbsoluteIRI toAbsoluteIRI(std::u16string const& scheme, fl::filesystem::upath const& path) {
  if (!fl::filesystem::detail::is_absolute(path.native())) return toAbsoluteIRI(scheme, absolute(path, {}));
  bool const hasAuthority = StorageSystem::instance().provider(scheme)->authority() == Provider::Authority::required;
  std::u16string_view rest = path.native();
  std::u16string written;
  written.reserve(scheme.size() + rest.size() + 3);
  written.append(scheme).append(u"://");
  bool encoded = true;
  if (hasAuthority) {
    std::size_t const start = std::min(rest.find_first_not_of(u'/'), rest.size());
    if (start == rest.size()) return IRIAccess::folderOfAuthorities(scheme);
    std::size_t const end = std::min(rest.find(u'/', start), rest.size());
    encoded = iri_text::appendEncoded(written, rest.substr(start, end - start));
    rest.remove_prefix(end);
  }
  std::size_t const pathStart = written.size();
  if (!encoded) throw InvalidIRIException(path.native(), "it contains half of a surrogate pair");
  if (!iri_text::appendEncoded(written, rest)) {
    written.resize(pathStart);
    iri_text::appendEncoded(written, namingNothing(rest));
  }
  return IRIAccess::fromWrittenForm(std::move(written), static_cast<std::uint32_t>(scheme.size()),
                                    static_cast<std::uint32_t>(pathStart));
}

fl::filesystem::upath fromAbsoluteIRI(AbsoluteIRI const& location) {
  std::u16string path;
  if (!location.authority().empty()) path = u"/" + iri_text::decoded(location.authority());
  path += iri_text::decoded(location.encodedPath());
  if (path.empty()) path = u"/";
  return {std::move(path), true};
}

std::u16string decodedElement(std::u16string_view written) {
  return iri_text::decoded(written);
}

std::string decodedPath(AbsoluteIRI const& location) {
  std::string path;
  iri_text::appendDecodedBytes(path, location.encodedPath());
  return path;
}

}  // namespace foundation::storage::vfs
