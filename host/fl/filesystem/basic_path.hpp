#pragma once

#include <string>
#include <utility>

#include "fl/filesystem/text.hpp"

namespace fl::filesystem {

namespace detail {
/// The character types of a local path class: of names in the system, and of text.
template <class Narrow, class Char>
struct path_traits {
  using narrow_type = Narrow;
  using char_type = Char;
};
}  // namespace detail

/// A local path: a text, and a flag that says whether the path library may interpret the text. A plain value; no
/// operation of the class accesses a disk.
template <class Narrow, class Char, class Traits>
class basic_path {
 public:
  using string_type = std::basic_string<Char>;

  /// The empty path, with the flag true.
  basic_path() noexcept = default;

  /// The path of a text in native form, with the flag true. The empty text gives the empty path.
  explicit basic_path(string_type const& text)
      : text_(text.empty() ? string_type() : detail::make_native_form(text, true)) {}
  explicit basic_path(string_type&& text) noexcept
      : text_(text.empty() ? string_type() : detail::make_native_form(std::move(text), true)) {}

  /// The path of a text that is already in native form, with the given flag; nothing is converted.
  basic_path(string_type nativeText, bool flag) noexcept : text_(std::move(nativeText)), flag_(flag) {}

  string_type const& native() const& noexcept { return text_; }
  /// To be changed in place; the text must stay in native form.
  string_type& native() & noexcept { return text_; }
  string_type&& native() && noexcept { return std::move(text_); }
  bool flag() const noexcept { return flag_; }
  bool empty() const noexcept { return text_.empty(); }

 private:
  string_type text_;
  bool flag_ = true;
};

/// The local path class of this platform: names are bytes, text is UTF-16.
using upath = basic_path<char, char16_t, detail::path_traits<char, char16_t>>;

}  // namespace fl::filesystem
