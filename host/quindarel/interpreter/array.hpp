#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "quindarel/interpreter/array_ptr.hpp"
#include "quindarel/interpreter/string_array.hpp"

/// An array of the interpreter: values of one class in two or more dimensions, in memory order (the first dimension
/// varies fastest). Builtins may only read their inputs; they create new arrays with the functions below.
struct KORVAN_HOST_EXPORT vxArray_tag {
 public:
  using Characters = std::u16string;           ///< UTF-16 code units
  using Logicals = std::vector<std::uint8_t>;  ///< 0 is false, everything else true
  using Doubles = std::vector<double>;
  using Strings = Quindarel::String::StringArray;
  using Values = std::variant<Characters, Logicals, Doubles, Strings>;

  /// Fewer than two dimensions are padded with ones, and trailing ones after the second are dropped. Throws
  /// `std::invalid_argument` if the number of values isn't the product of the dimensions, `std::length_error` if that
  /// product is too large for any memory.
  vxArray_tag(std::vector<std::size_t> dimensions, Values values);

  /// The sizes of the dimensions, two or more. Valid as long as the array.
  std::span<std::size_t const> dimensions() const noexcept { return dimensions_; }
  /// The number of values: the product of the dimensions.
  std::size_t size() const;
  /// The values. Their number must not be changed.
  Values const& values() const noexcept { return values_; }
  Values& values() noexcept { return values_; }

 private:
  std::vector<std::size_t> dimensions_;
  Values values_;
};

namespace matrix::detail {

/// A view of a character array, valid as long as the array.
struct CharacterArrayView {
  std::span<std::size_t const> dimensions;
  std::u16string_view data;
};

/// The view of a character array; nothing for null or an array of another class.
KORVAN_HOST_EXPORT std::optional<CharacterArrayView> viewCharacterArray(vxArray_tag const* array) noexcept;

namespace noninlined::vx_array_api {

/// Whether the array is exactly one logical value; false for null.
KORVAN_HOST_EXPORT bool vxIsLogicalScalar(vxArray_tag const* array) noexcept;

/// Whether the array is exactly one logical value, and that is true; false for null.
KORVAN_HOST_EXPORT bool vxIsLogicalScalarTrue(vxArray_tag const* array) noexcept;

}  // namespace noninlined::vx_array_api
}  // namespace matrix::detail

namespace Quindarel {

/// An array with these dimensions and values; see the constructor of `vxArray_tag`.
KORVAN_HOST_EXPORT matrix::detail::ArrayPtr createArray(std::vector<std::size_t> dimensions,
                                                        vxArray_tag::Values values);

/// A character row vector: 1-by-n, for the empty text 1-by-0.
KORVAN_HOST_EXPORT matrix::detail::ArrayPtr createCharacterRow(std::u16string text);

/// A 1-by-1 logical array.
KORVAN_HOST_EXPORT matrix::detail::ArrayPtr createLogicalScalar(bool value);

}  // namespace Quindarel
