#include "foundation/storage/s3/object_location.hpp"

#include <algorithm>

#include "foundation/core/text/bytes.hpp"
#include "foundation/storage/vfs/conversion.hpp"

namespace foundation::storage::s3 {
namespace {

constexpr std::size_t longestKey = 1024;  // bytes; a limit of the S3 interface

bool isValidUtf8(std::string_view bytes) {
  return core::text::validUtf8Prefix(bytes).size() == bytes.size();
}

}  // namespace

bool ObjectLocation::canExist() const {
  return !bucket.empty() && bucket != "." && bucket != ".." && isValidUtf8(bucket) && key.size() <= longestKey &&
         key.find('\0') == std::string::npos && isValidUtf8(key);
}

ObjectLocation objectLocationOf(vfs::AbsoluteIRI const& location) {
  ObjectLocation result;
  if (location.authority().empty()) return result;
  // "/bucket/path", decoded. The text of an IRI always has bytes, but if not, it names nothing.
  std::string path;
  if (!core::text::appendBytes(path, vfs::fromAbsoluteIRI(location).native())) return result;
  std::size_t begin = std::min(path.find('/', 1), path.size());
  result.bucket = path.substr(1, begin - 1);
  while (begin < path.size()) {
    std::size_t const end = std::min(path.find('/', ++begin), path.size());
    std::string_view const element = std::string_view(path).substr(begin, end - begin);
    result.folderOnly = element.empty() || element == "." || element == "..";
    if (element == "..") {
      auto const slash = result.key.rfind('/');
      result.key.resize(slash == std::string::npos ? 0 : slash);
    } else if (!result.folderOnly) {
      if (!result.key.empty()) result.key += '/';
      result.key += element;
    }
    begin = end;
  }
  return result;
}

std::string_view nameablePrefix(std::string_view key) {
  for (std::size_t begin = 0; begin < key.size();) {
    std::size_t const end = std::min(key.find('/', begin), key.size());
    std::string_view const element = key.substr(begin, end - begin);
    if (element.empty() || element == "." || element == ".." || element.find('\0') != std::string_view::npos)
      return key.substr(0, begin);
    begin = end + 1;
  }
  return key;
}

}  // namespace foundation::storage::s3
