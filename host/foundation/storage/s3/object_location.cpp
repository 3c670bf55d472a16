#include "foundation/storage/s3/object_location.hpp"

#include <algorithm>

#include "foundation/core/text/bytes.hpp"
#include "foundation/core/text/utf16.hpp"
#include "foundation/storage/vfs/conversion.hpp"

namespace foundation::storage::s3 {
namespace {

constexpr std::size_t longestKey = 1024;  // of every store of this kind

}  // namespace

bool Place::possible() const {
  return !bucket.empty() && bucket != "." && bucket != ".." && utf8Part(bucket).size() == bucket.size() &&
         key.size() <= longestKey && key.find('\0') == std::string::npos && utf8Part(key).size() == key.size();
}

Place placeOf(vfs::AbsoluteIRI const& location) {
  Place place;
  if (location.authority().empty()) return place;
  // The bucket and the path, decoded: "/bucket/path". A text without bytes can't be in an IRI.
  std::string path;
  if (!core::text::appendBytes(path, vfs::fromAbsoluteIRI(location).native())) return place;
  std::size_t begin = std::min(path.find('/', 1), path.size());
  place.bucket = path.substr(1, begin - 1);
  while (begin < path.size()) {
    std::size_t const end = std::min(path.find('/', ++begin), path.size());
    std::string_view const element = std::string_view(path).substr(begin, end - begin);
    place.folderOnly = element.empty() || element == "." || element == "..";
    if (element == "..") {
      auto const slash = place.key.rfind('/');
      place.key.resize(slash == std::string::npos ? 0 : slash);
    } else if (!place.folderOnly) {
      if (!place.key.empty()) place.key += '/';
      place.key += element;
    }
    begin = end;
  }
  return place;
}

std::string_view nameablePart(std::string_view path) {
  for (std::size_t begin = 0; begin < path.size();) {
    std::size_t const end = std::min(path.find('/', begin), path.size());
    std::string_view const element = path.substr(begin, end - begin);
    if (element.empty() || element == "." || element == ".." || element.find('\0') != std::string_view::npos)
      return path.substr(0, begin);
    begin = end + 1;
  }
  return path;
}

std::string utf8Part(std::string_view bytes) {
  // What isn't UTF-8 becomes lone surrogates, the only ones that text from bytes holds.
  std::u16string text = core::text::fromBytes(bytes);
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (core::text::isHighSurrogate(text[i]))
      ++i;  // the first half of a pair
    else if (core::text::isLowSurrogate(text[i]))
      text.resize(i);
  }
  std::string part;
  core::text::appendBytes(part, text);
  return part;
}

}  // namespace foundation::storage::s3
