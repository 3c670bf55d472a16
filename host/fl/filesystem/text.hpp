#pragma once

#include <string>

#include "foundation/core/host_export.hpp"

/// The text side of local paths (POSIX pathnames): no function here looks at a disk. The native and the generic
/// separator are both "/"; a backslash is an ordinary character of a name. No function collapses doubled separators,
/// "." or "..".
namespace fl::filesystem {

namespace upath_constant {
/// Its first character is the separator of native texts.
inline constexpr char16_t PATHNAME_SEPARATOR[] = u"/";
/// Its first character is the separator of generic texts.
inline constexpr char16_t GENERIC_PATHNAME_SEPARATOR[] = u"/";
}  // namespace upath_constant

/// A text split at its last element.
template <class Char>
struct pathname_element_context {
  std::basic_string<Char>
      parent;  ///< the text without its last element: "a" of "a/b" and of "a/", "/" of "/a", else empty
  std::basic_string<Char> name;  ///< the last element: "b" of "a/b", empty of "a/" and "/"
  std::basic_string<Char>
      stem;  ///< the name up to its last ".", all of it where that is its first character or there is none
  std::basic_string<Char> extension;  ///< the name from that "." on, or empty
};

namespace detail {

/// The text in native form: here the text itself. `interpret` is the flag of the path, which nothing depends on.
KORVAN_HOST_EXPORT std::u16string make_native_form(std::u16string const& text, bool interpret);

/// As above, for a text that isn't needed any more: its memory is reused.
KORVAN_HOST_EXPORT std::u16string make_native_form(std::u16string&& text, bool interpret) noexcept;

/// The text with "/" between its elements: here the text itself.
KORVAN_HOST_EXPORT std::u16string make_generic_form(std::u16string const& text);

/// The text with the path library's expansions applied: here the text itself, as "~" and "$HOME" are lawful names.
/// Valid as long as `text`.
KORVAN_HOST_EXPORT std::u16string const& make_expanded_path(std::u16string const& text, bool interpret) noexcept;
std::u16string const& make_expanded_path(std::u16string&& text, bool interpret) = delete;  // would not outlive the call

/// Adds `element` to `text` with exactly one "/" between: none is added after a text that ends in one, and those that
/// `element` begins with are dropped. An empty text becomes the element itself.
KORVAN_HOST_EXPORT void concatenate_pathname(std::u16string& text, std::u16string const& element, bool interpret);

/// The root name: always empty here.
KORVAN_HOST_EXPORT std::u16string extract_root_name(std::u16string const& text);

/// The text split at its last element.
KORVAN_HOST_EXPORT pathname_element_context<char16_t> extract_pathname_elements(std::u16string const& text);

/// The first text of `extract_pathname_elements`.
KORVAN_HOST_EXPORT std::u16string extract_parent_path(std::u16string const& text);

/// Whether the text begins with "/".
KORVAN_HOST_EXPORT bool is_absolute(std::u16string const& text) noexcept;

}  // namespace detail
}  // namespace fl::filesystem
