#pragma once

#include <cstddef>
#include <string_view>

/// The surrogates of UTF-16 (Unicode 3.8): halves of a pair, and lone ones, some of which represent bytes that aren't
/// UTF-8 (see bytes.hpp).
namespace foundation::core::text {

constexpr bool isHighSurrogate(char16_t unit) noexcept {
  return unit >= 0xD800 && unit <= 0xDBFF;
}

constexpr bool isLowSurrogate(char16_t unit) noexcept {
  return unit >= 0xDC00 && unit <= 0xDFFF;
}

constexpr bool isSurrogate(char16_t unit) noexcept {
  return unit >= 0xD800 && unit <= 0xDFFF;
}

/// The byte 0xNN that isn't part of valid UTF-8 is the unit `escapedByteBase` + 0xNN.
inline constexpr char16_t escapedByteBase = 0xDC00;

/// Whether the unit, outside a pair, is a byte that isn't part of valid UTF-8: U+DC80 to U+DCFF.
constexpr bool isEscapedByte(char16_t unit) noexcept {
  return unit >= escapedByteBase + 0x80 && unit <= escapedByteBase + 0xFF;
}

/// Whether a pair of surrogates begins at `at`, which must be less than the text's size.
constexpr bool isPairAt(std::u16string_view text, std::size_t at) noexcept {
  return isHighSurrogate(text[at]) && at + 1 < text.size() && isLowSurrogate(text[at + 1]);
}

/// The code point of a pair.
constexpr char32_t codePointOfPair(char16_t high, char16_t low) noexcept {
  return 0x10000 + ((static_cast<char32_t>(high) - 0xD800) << 10) + (static_cast<char32_t>(low) - 0xDC00);
}

/// The length in units of the character at the start of a text that isn't empty: 2 for a pair, else 1.
constexpr std::size_t characterLength(std::u16string_view text) noexcept {
  return isPairAt(text, 0) ? 2 : 1;
}

}  // namespace foundation::core::text
