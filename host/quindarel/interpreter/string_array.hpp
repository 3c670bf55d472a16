#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "quindarel/interpreter/array_ptr.hpp"

namespace Quindarel::String {

/// The elements of a string array in the array's memory order (the first dimension varies fastest), each a text or
/// missing. A short text costs ten bytes beyond its characters and no allocation of its own. Movable, not copyable.
class KORVAN_HOST_EXPORT StringArray {
 public:
  /// `count` elements, all missing.
  explicit StringArray(std::size_t count);

  /// The number of elements, including missing ones.
  std::size_t size() const noexcept { return elements_.size(); }

  /// The text of the element, or nothing if it is missing. Valid until an element is set.
  std::optional<std::u16string_view> operator[](std::size_t index) const noexcept;

  /// Sets the element to a copy of `text`, which may be a text of this array. Elements may be set in any order and
  /// repeatedly. Takes amortised time proportional to the length of the text.
  void setText(std::size_t index, std::u16string_view text);

  /// Makes the element missing.
  void setMissing(std::size_t index) noexcept;

 private:
  /// A stored text: its length, then its characters. Null for a missing element.
  using Record = char16_t const*;

  Record store(std::u16string_view text);
  void drop(Record record) noexcept;
  void compact();

  std::vector<Record> elements_;
  std::vector<std::unique_ptr<char16_t[]>> blocks_;
  char16_t* free_ = nullptr;    ///< the first unused code unit of the current shared block
  std::size_t freeUnits_ = 0;   ///< the number of unused units from there on
  std::size_t blockUnits_ = 0;  ///< the size of the current shared block
  std::size_t liveUnits_ = 0;   ///< the units of records in use
  std::size_t deadUnits_ = 0;   ///< the units of records that were replaced
};

/// Whether the array is a string array; false for null.
KORVAN_HOST_EXPORT bool isString(vxArray_tag const* array) noexcept;

/// The elements of a string array, valid as long as the array. Throws `std::bad_variant_access` for an array
/// of another class.
KORVAN_HOST_EXPORT StringArray const& getString(vxArray_tag const* array);
KORVAN_HOST_EXPORT StringArray& getString(std::unique_ptr<vxArray_tag, matrix::detail::vxDestroy_deleter> const& array);

/// A rows-by-columns string array, all elements missing.
KORVAN_HOST_EXPORT std::unique_ptr<vxArray_tag, matrix::detail::vxDestroy_deleter> createStringArray(
    unsigned long rows, unsigned long columns);

}  // namespace Quindarel::String
