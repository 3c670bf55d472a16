#include "cli/json_line.hpp"

#include <array>
#include <cstdio>
#include <ctime>
#include <string_view>

#include <nlohmann/json.hpp>

#include "foundation/core/text/ascii.hpp"
#include "foundation/core/text/bytes.hpp"
#include "foundation/core/text/escape.hpp"
#include "foundation/core/text/utf16.hpp"

namespace kglob {
namespace {

namespace text = foundation::core::text;

/// The text with `\xNN` for each byte that isn't UTF-8.
std::string escaped(std::string_view bytes) {
  std::string shown;
  text::forEachCharacter(text::fromBytes(bytes), [&](std::u16string_view character) {
    if (character.size() == 1 && text::isEscapedByte(character[0])) {
      unsigned const byte = character[0] & 0xFFU;
      ((shown += "\\x") += text::hexDigits[byte >> 4]) += text::hexDigits[byte & 15];
    } else {
      shown += text::toBytesLossy(character);
    }
  });
  return shown;
}

/// RFC 4648, section 4.
std::string base64(std::string_view bytes) {
  constexpr char digits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string encoded;
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    std::size_t const count = bytes.size() - i < 3 ? bytes.size() - i : 3;
    unsigned group = 0;
    for (std::size_t k = 0; k < 3; ++k)
      group = group << 8 | (k < count ? static_cast<unsigned char>(bytes[i + k]) : 0U);
    for (std::size_t k = 0; k < 4; ++k) encoded += k <= count ? digits[group >> (18 - 6 * k) & 63] : '=';
  }
  return encoded;
}

void add(nlohmann::ordered_json& object, std::string const& name, std::string_view bytes) {
  std::string const shown = escaped(bytes);
  object[name] = shown;
  if (shown != bytes) object[name + "_base64"] = base64(bytes);
}

std::string rfc3339(kglob_facts const& facts) {
  std::time_t const seconds = facts.modified_seconds;
  std::tm time{};
  gmtime_r(&seconds, &time);
  std::array<char, 64> date{};
  std::size_t const length = std::strftime(date.data(), date.size(), "%Y-%m-%dT%H:%M:%S", &time);
  std::array<char, 16> fraction{};
  if (facts.modified_nanoseconds != 0)
    static_cast<void>(std::snprintf(fraction.data(), fraction.size(), ".%09u", facts.modified_nanoseconds));
  return std::string(date.data(), length) + fraction.data() + "Z";
}

}  // namespace

void appendJson(std::string& line, std::string const& path, std::string const& root, kglob_facts const& facts) {
  nlohmann::ordered_json object;
  add(object, "path", path);
  if (MatchLocation::isRelative(path)) add(object, "root", root);
  if (facts.kind != KGLOB_UNKNOWN)
    object["kind"] = facts.kind == KGLOB_FILE ? "file" : facts.kind == KGLOB_FOLDER ? "folder" : "link";
  if ((facts.known & KGLOB_HAS_BYTES) != 0) object["size"] = facts.bytes;
  if ((facts.known & KGLOB_HAS_TIME) != 0) object["mtime"] = rfc3339(facts);
  if (*facts.etag != '\0') object["etag"] = facts.etag;
  if (*facts.storage_class != '\0') object["storage_class"] = facts.storage_class;
  line += object.dump();
}

}  // namespace kglob
