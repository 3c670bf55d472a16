#pragma once

#include <string>
#include <string_view>

#include "foundation/core/host_export.hpp"

/// Text is UTF-16 everywhere above the operating system; names on disks and in stores are bytes. These functions are
/// the only conversion between the two, and it is lossless: valid UTF-8 becomes the characters it encodes (RFC 3629),
/// and each other byte 0xNN becomes the lone surrogate U+DCNN, which turns back into that byte. Pure functions; no
/// system call.
namespace foundation::core::text {

/// The text that the bytes encode. Never fails.
KORVAN_HOST_EXPORT std::u16string fromBytes(std::string_view bytes);

/// As above, added to the end of `text`, whose capacity is reused.
KORVAN_HOST_EXPORT void appendFromBytes(std::u16string& text, std::string_view bytes);

/// Adds the bytes of `text` to the end of `bytes`. False when the text contains a surrogate that is neither half of a
/// pair nor U+DC80 to U+DCFF: such a text has no byte form, so it can't be a name. The tail of `bytes` is then
/// unspecified.
KORVAN_HOST_EXPORT bool appendBytes(std::string& bytes, std::u16string_view text);

/// The bytes of a text that is shown to a person: as `appendBytes`, with U+FFFD for a surrogate without a byte form.
KORVAN_HOST_EXPORT std::string toBytesLossy(std::u16string_view text);

/// As many of the first bytes as are valid UTF-8.
KORVAN_HOST_EXPORT std::string validUtf8Prefix(std::string_view bytes);

}  // namespace foundation::core::text
