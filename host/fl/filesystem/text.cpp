#include "fl/filesystem/text.hpp"

#include <utility>

namespace fl::filesystem::detail {
namespace {

constexpr char16_t separator = upath_constant::GENERIC_PATHNAME_SEPARATOR[0];

// The length of the parent part of a text whose last separator is at `last`. The separator isn't part of it, unless
// it is the root folder.
std::size_t parentLength(std::size_t last) {
  return last == std::u16string::npos ? 0 : last == 0 ? 1 : last;
}

}  // namespace

std::u16string make_native_form(std::u16string const& text, bool /*interpret*/) {
  return text;
}

std::u16string make_native_form(std::u16string&& text, bool /*interpret*/) noexcept {
  return std::move(text);
}

std::u16string make_generic_form(std::u16string const& text) {
  return text;
}

std::u16string const& make_expanded_path(std::u16string const& text, bool /*interpret*/) noexcept {
  return text;
}

void concatenate_pathname(std::u16string& text, std::u16string const& element, bool /*interpret*/) {
  if (text.empty()) {
    text = element;
    return;
  }
  std::size_t const start = element.find_first_not_of(separator);
  std::size_t const length = start == std::u16string::npos ? 0 : element.size() - start;
  bool const separated = text.back() == separator;
  text.reserve(text.size() + length + 1);
  if (!separated) text.push_back(separator);
  if (length != 0) text.append(element, start, length);
}

std::u16string extract_root_name(std::u16string const& /*text*/) {
  return {};
}

pathname_element_context<char16_t> extract_pathname_elements(std::u16string const& text) {
  std::size_t const last = text.rfind(separator);
  pathname_element_context<char16_t> elements;
  elements.parent.assign(text, 0, parentLength(last));
  elements.name.assign(text, last == std::u16string::npos ? 0 : last + 1);
  std::size_t const dot = elements.name.rfind(u'.');
  bool const special = elements.name == u"." || elements.name == u"..";
  if (dot == std::u16string::npos || dot == 0 || special) {
    elements.stem = elements.name;
  } else {
    elements.stem.assign(elements.name, 0, dot);
    elements.extension.assign(elements.name, dot);
  }
  return elements;
}

std::u16string extract_parent_path(std::u16string const& text) {
  return text.substr(0, parentLength(text.rfind(separator)));
}

bool is_absolute(std::u16string const& text) noexcept {
  return !text.empty() && text.front() == separator;
}

}  // namespace fl::filesystem::detail
