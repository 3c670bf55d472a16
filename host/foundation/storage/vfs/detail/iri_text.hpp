#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// The text side of IRIs: percent-encoding and the parts of a text. Pure functions; internal to the storage layer.
namespace foundation::storage::vfs::iri_text {

/// The length of the scheme where the text begins with one and "://", otherwise 0.
std::size_t schemeLength(std::u16string_view text) noexcept;

/// Adds a decoded text in written form; "/" stays. False when the text holds a surrogate that stands for no bytes;
/// `written` then has an unspecified tail.
bool appendEncoded(std::u16string& written, std::u16string_view decoded);

/// Adds a text that a person wrote as part of an IRI in written form: its percent-encodings stay, in upper case hex,
/// and raw characters that an IRI must encode are encoded. Returns null, or what is wrong with the text, in which case
/// `written` has an unspecified tail.
char const* appendNormalized(std::u16string& written, std::u16string_view text);

/// The bytes that a written text stands for, added to `bytes`.
void appendDecodedBytes(std::string& bytes, std::u16string_view written);

/// The text that a written text stands for.
std::u16string decoded(std::u16string_view written);

/// Where the last element of a path begins: after its last "/", or at 0.
std::size_t lastElement(std::u16string_view path) noexcept;

}  // namespace foundation::storage::vfs::iri_text
