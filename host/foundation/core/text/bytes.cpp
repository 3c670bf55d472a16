#include "foundation/core/text/bytes.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "foundation/core/text/utf16.hpp"

namespace foundation::core::text {
namespace {

bool isContinuation(unsigned char byte) {
  return (byte & 0xC0U) == 0x80U;
}

// The length of the valid UTF-8 sequence at the start of `bytes` (RFC 3629: no overlong form, no surrogate, at most
// U+10FFFF), and its code point; 0 when there is none.
std::size_t decodeSequence(std::string_view bytes, char32_t& codePoint) {
  auto const at = [&](std::size_t i) { return static_cast<unsigned char>(bytes[i]); };
  unsigned char const lead = at(0);
  std::size_t const length = lead < 0xC2 ? 0 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : lead < 0xF5 ? 4 : 0;
  if (length == 0 || bytes.size() < length) return 0;
  codePoint = lead & (0x7FU >> length);
  for (std::size_t i = 1; i < length; ++i) {
    if (!isContinuation(at(i))) return 0;
    codePoint = (codePoint << 6) | (at(i) & 0x3FU);
  }
  if (length == 3 && (codePoint < 0x800 || (codePoint >= 0xD800 && codePoint <= 0xDFFF))) return 0;
  if (length == 4 && (codePoint < 0x10000 || codePoint > 0x10FFFF)) return 0;
  return length;
}

void appendCodePoint(std::string& bytes, char32_t codePoint) {
  auto const put = [&](char32_t value) { bytes.push_back(static_cast<char>(static_cast<unsigned char>(value))); };
  auto const continuation = [](char32_t value) { return 0x80 | (value & 0x3F); };
  if (codePoint < 0x80) {
    put(codePoint);
  } else if (codePoint < 0x800) {
    put(0xC0 | (codePoint >> 6));
    put(continuation(codePoint));
  } else if (codePoint < 0x10000) {
    put(0xE0 | (codePoint >> 12));
    put(continuation(codePoint >> 6));
    put(continuation(codePoint));
  } else {
    put(0xF0 | (codePoint >> 18));
    put(continuation(codePoint >> 12));
    put(continuation(codePoint >> 6));
    put(continuation(codePoint));
  }
}

template <class Unit>
using UnsignedOf = std::conditional_t<sizeof(Unit) == 1, unsigned char, char16_t>;

// Copies the ASCII units at the start of `in` to `out`, which has room for all of `in`, and returns their number. Every
// name passes through here, and nearly all are ASCII, so the first loop has no branch inside, which lets compilers
// vectorise it.
template <class To, class From>
std::size_t copyAscii(From const* __restrict in, std::size_t size, To* __restrict out) {
  using Unit = UnsignedOf<From>;
  Unit all = 0;
  for (std::size_t i = 0; i < size; ++i) {
    auto const unit = static_cast<Unit>(in[i]);
    all = static_cast<Unit>(all | unit);
    out[i] = static_cast<To>(unit);
  }
  if (all < 0x80) return size;
  return static_cast<std::size_t>(
      std::find_if(in, in + size, [](From unit) { return static_cast<Unit>(unit) >= 0x80; }) - in);
}

// Appends the bytes of the text; `unpaired` is called for a surrogate without a byte form and returns whether to go on.
template <class Unpaired>
bool encode(std::string& bytes, std::u16string_view text, Unpaired unpaired) {
  std::size_t const start = bytes.size();
  bytes.resize(start + text.size());
  std::size_t const ascii = copyAscii(text.data(), text.size(), bytes.data() + start);
  bytes.resize(start + ascii);
  for (std::size_t i = ascii; i < text.size(); ++i) {
    char16_t const unit = text[i];
    if (!isSurrogate(unit)) {
      appendCodePoint(bytes, unit);
    } else if (isPairAt(text, i)) {
      appendCodePoint(bytes, codePointOfPair(unit, text[i + 1]));
      ++i;
    } else if (isEscapedByte(unit)) {
      bytes.push_back(static_cast<char>(static_cast<unsigned char>(unit - escapedByteBase)));
    } else if (!unpaired(bytes)) {
      return false;
    }
  }
  return true;
}

}  // namespace

void appendFromBytes(std::u16string& text, std::string_view bytes) {
  std::size_t const start = text.size();
  text.resize(start + bytes.size());
  std::size_t const ascii = copyAscii(bytes.data(), bytes.size(), text.data() + start);
  text.resize(start + ascii);
  for (bytes.remove_prefix(ascii); !bytes.empty();) {
    auto const lead = static_cast<unsigned char>(bytes.front());
    char32_t codePoint = lead;
    std::size_t length = lead < 0x80 ? 1 : decodeSequence(bytes, codePoint);
    if (length == 0) {
      codePoint = escapedByteBase + lead;
      length = 1;
    }
    if (codePoint < 0x10000) {
      text.push_back(static_cast<char16_t>(codePoint));
    } else {
      text.push_back(static_cast<char16_t>(0xD800 + ((codePoint - 0x10000) >> 10)));
      text.push_back(static_cast<char16_t>(0xDC00 + ((codePoint - 0x10000) & 0x3FF)));
    }
    bytes.remove_prefix(length);
  }
}

std::u16string fromBytes(std::string_view bytes) {
  std::u16string text;
  appendFromBytes(text, bytes);
  return text;
}

bool appendBytes(std::string& bytes, std::u16string_view text) {
  return encode(bytes, text, [](std::string&) { return false; });
}

std::string toBytesLossy(std::u16string_view text) {
  std::string bytes;
  encode(bytes, text, [](std::string& out) {
    out += "\xEF\xBF\xBD";
    return true;
  });
  return bytes;
}

std::string validUtf8Prefix(std::string_view bytes) {
  // Bytes that aren't UTF-8 become lone low surrogates.
  std::u16string text = fromBytes(bytes);
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (isHighSurrogate(text[i]))
      ++i;  // skips a pair
    else if (isLowSurrogate(text[i]))
      text.resize(i);
  }
  std::string prefix;
  appendBytes(prefix, text);
  return prefix;
}

}  // namespace foundation::core::text
