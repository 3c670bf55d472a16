#pragma once

#include <string>
#include <string_view>

#include "foundation/core/text/ascii.hpp"

/// Percent-encoding, RFC 3986, 2.1. `Unit` is `char` or `char16_t`.
namespace foundation::core::text {

/// Adds "%XX" for each byte, in upper case.
template <class Unit>
void appendPercentEncoded(std::basic_string<Unit>& text, std::string_view bytes) {
  for (char const byte : bytes) {
    auto const value = static_cast<unsigned char>(byte);
    text.push_back('%');
    text.push_back(static_cast<Unit>(hexDigits[value >> 4]));
    text.push_back(static_cast<Unit>(hexDigits[value & 0xF]));
  }
}

/// The byte, from 0 to 255, that the two hexadecimal digits after a "%" encode; -1 where `digits` doesn't begin with
/// two of them.
template <class Unit>
constexpr int percentEncodedByte(std::basic_string_view<Unit> digits) noexcept {
  if (digits.size() < 2) return -1;
  int const high = hexValue(digits[0]);
  int const low = hexValue(digits[1]);
  return high < 0 || low < 0 ? -1 : high * 16 + low;
}

}  // namespace foundation::core::text
