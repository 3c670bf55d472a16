#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// The text side of IRIs: percent-encoding and the parts of a text. Pure functions; internal to the storage layer.
namespace foundation::storage::vfs::iri_text {

/// The length of the scheme if the text begins with one and "://", otherwise 0.
std::size_t schemeLength(std::u16string_view text) noexcept;

/// Adds a decoded text in written form, leaving each "/" as it is. False when the text contains a surrogate without a
/// byte form; the tail of `written` is then unspecified.
bool appendEncoded(std::u16string& written, std::u16string_view decoded);

/// Adds part of an IRI that a person wrote in written form: percent-encodings stay, in upper case hex, and raw
/// characters that an IRI must encode are encoded. Returns null, or what is wrong with the text; the tail of `written`
/// is then unspecified.
char const* appendNormalized(std::u16string& written, std::u16string_view text);

/// Adds the bytes that a written text encodes to `bytes`.
void appendDecodedBytes(std::string& bytes, std::u16string_view written);

/// The text that a written text encodes.
std::u16string decoded(std::u16string_view written);

/// Where the first element of a decoded path begins that can be an authority; its size if there is none. Before it
/// there are only separators, "." and "..", which lead nowhere from the folder of all authorities.
std::size_t authorityStart(std::u16string_view path) noexcept;

/// Where the last element of a path begins: after its last "/", or at 0.
std::size_t lastElement(std::u16string_view path) noexcept;

}  // namespace foundation::storage::vfs::iri_text
