#include "gateway/arguments.hpp"

#include <algorithm>
#include <cctype>
#include <climits>
#include <optional>
#include <string_view>

#include "foundation/core/except/msg_id_exception.hpp"
#include "korvan/io/message_ids.hpp"
#include "quindarel/interpreter/array.hpp"
#include "quindarel/interpreter/string_array.hpp"

namespace korvan::io::internal {

namespace {

template <class T>
using Thrown = foundation::core::except::Exception<T, std::exception, void>;

using KORVAN::string::MissingNotSupported;
using KORVAN::string::MustBeStringScalarOrCharacterVector;

bool isRowOrEmpty(matrix::detail::CharacterArrayView const& array) {
  auto const size = array.dimensions;
  return size.size() == 2 && (size[0] == 1 || (size[0] == 0 && size[1] == 0));
}

// `tolower` is defined only for the values of a byte; other code units are compared unchanged.
int lower(char16_t unit) {
  return unit <= UCHAR_MAX ? std::tolower(unit) : unit;
}

}  // namespace

std::u16string getTextArgument(vxArray_tag const* argument) {
  if (auto const characters = matrix::detail::viewCharacterArray(argument)) {
    if (isRowOrEmpty(*characters)) return std::u16string(characters->data);
  } else if (Quindarel::String::isString(argument)) {
    Quindarel::String::StringArray const& strings = Quindarel::String::getString(argument);
    if (strings.size() == 1) {
      std::optional<std::u16string_view> const text = strings[0];
      if (!text) throw Thrown<MissingNotSupported>(MissingNotSupported());
      return std::u16string(*text);
    }
  }
  throw Thrown<MustBeStringScalarOrCharacterVector>(MustBeStringScalarOrCharacterVector());
}

bool equalsIgnoreCase(std::u16string const& a, std::u16string const& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](char16_t x, char16_t y) { return lower(x) == lower(y); });
}

}  // namespace korvan::io::internal
