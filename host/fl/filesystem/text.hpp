#pragma once

#include <string>

#include "foundation/core/host_export.hpp"

/// Text operations on local paths (POSIX pathnames); no function here accesses a disk. The native and the generic
/// separator are both "/"; a backslash is an ordinary character of a name. No function collapses doubled separators,
/// "." or "..".
namespace fl::filesystem {

namespace upath_constant {
/// Its first character is the separator in native form.
inline constexpr char16_t PATHNAME_SEPARATOR[] = u"/";
/// Its first character is the separator in generic form.
inline constexpr char16_t GENERIC_PATHNAME_SEPARATOR[] = u"/";
}  // namespace upath_constant

/// A text split at its last element.
template <class Char>
struct pathname_element_context {
  /// The text without its last element: "a" for "a/b" and "a/", "/" for "/a", otherwise empty.
  std::basic_string<Char> parent;
  /// The last element: "b" for "a/b", empty for "a/" and "/".
  std::basic_string<Char> name;
  /// The name before its last "."; the whole name if that is its first character or there is none.
  std::basic_string<Char> stem;
  /// The name from that "." on, or empty.
  std::basic_string<Char> extension;
};

namespace detail {

/// The text in native form, which here is the text itself. `interpret` is the flag of the path; it has no effect here.
KORVAN_HOST_EXPORT std::u16string make_native_form(std::u16string const& text, bool interpret);

/// As above, reusing the memory of the text.
KORVAN_HOST_EXPORT std::u16string make_native_form(std::u16string&& text, bool interpret) noexcept;

/// The text in generic form, with "/" between its elements, which here is the text itself.
KORVAN_HOST_EXPORT std::u16string make_generic_form(std::u16string const& text);

/// The text with the path library's expansions applied. Here there are none, as "~" and "$HOME" are valid names, so
/// it is the text itself. Valid as long as `text`.
KORVAN_HOST_EXPORT std::u16string const& make_expanded_path(std::u16string const& text, bool interpret) noexcept;
std::u16string const& make_expanded_path(std::u16string&& text, bool interpret) = delete;  // the result would dangle

/// Appends `element` to `text` with exactly one "/" between them: none is added to a text that ends in one, and leading
/// ones of `element` are dropped. An empty text becomes the element itself.
KORVAN_HOST_EXPORT void concatenate_pathname(std::u16string& text, std::u16string const& element, bool interpret);

/// The root name: always empty here.
KORVAN_HOST_EXPORT std::u16string extract_root_name(std::u16string const& text);

/// The text split at its last element.
KORVAN_HOST_EXPORT pathname_element_context<char16_t> extract_pathname_elements(std::u16string const& text);

/// The parent that `extract_pathname_elements` returns.
KORVAN_HOST_EXPORT std::u16string extract_parent_path(std::u16string const& text);

/// Whether the text begins with "/".
KORVAN_HOST_EXPORT bool is_absolute(std::u16string const& text) noexcept;

}  // namespace detail
}  // namespace fl::filesystem
