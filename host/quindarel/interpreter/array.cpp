#include "quindarel/interpreter/array.hpp"

#include <stdexcept>
#include <utility>

namespace {

/// The number of values in a shape. Throws `std::length_error` if it exceeds `std::size_t`.
std::size_t valueCount(std::span<std::size_t const> dimensions) {
  bool overflow = false;
  bool empty = false;
  std::size_t count = 1;
  for (std::size_t dimension : dimensions) {
    empty = empty || dimension == 0;
    overflow = __builtin_mul_overflow(count, dimension, &count) || overflow;
  }
  if (empty) return 0;
  if (overflow) throw std::length_error("the array has more values than memory can hold");
  return count;
}

std::size_t valueCount(vxArray_tag::Values const& values) {
  return std::visit([](auto const& alternative) { return alternative.size(); }, values);
}

}  // namespace

vxArray_tag::vxArray_tag(std::vector<std::size_t> dimensions, Values values)
    : dimensions_(std::move(dimensions)), values_(std::move(values)) {
  if (valueCount(dimensions_) != valueCount(values_))
    throw std::invalid_argument("an array must have exactly as many values as its shape");
  while (dimensions_.size() < 2) dimensions_.push_back(1);
  while (dimensions_.size() > 2 && dimensions_.back() == 1) dimensions_.pop_back();
}

std::size_t vxArray_tag::size() const {
  return valueCount(values_);
}

namespace matrix::detail {

void vxDestroy_deleter::operator()(vxArray_tag* array) const noexcept {
  delete array;
}

std::optional<CharacterArrayView> viewCharacterArray(vxArray_tag const* array) noexcept {
  auto const* characters = array ? std::get_if<vxArray_tag::Characters>(&array->values()) : nullptr;
  if (!characters) return std::nullopt;
  return CharacterArrayView{array->dimensions(), *characters};
}

namespace noninlined::vx_array_api {

bool vxIsLogicalScalar(vxArray_tag const* array) noexcept {
  auto const* logicals = array ? std::get_if<vxArray_tag::Logicals>(&array->values()) : nullptr;
  return logicals && logicals->size() == 1;
}

bool vxIsLogicalScalarTrue(vxArray_tag const* array) noexcept {
  return vxIsLogicalScalar(array) && std::get_if<vxArray_tag::Logicals>(&array->values())->front() != 0;
}

}  // namespace noninlined::vx_array_api
}  // namespace matrix::detail

namespace Quindarel {

matrix::detail::ArrayPtr createArray(std::vector<std::size_t> dimensions, vxArray_tag::Values values) {
  return matrix::detail::ArrayPtr(new vxArray_tag(std::move(dimensions), std::move(values)));
}

matrix::detail::ArrayPtr createCharacterRow(std::u16string text) {
  std::size_t const length = text.size();
  return createArray({1, length}, std::move(text));
}

matrix::detail::ArrayPtr createLogicalScalar(bool value) {
  return createArray({1, 1}, vxArray_tag::Logicals{value});
}

namespace String {

bool isString(vxArray_tag const* array) noexcept {
  return array && std::holds_alternative<StringArray>(array->values());
}

StringArray const& getString(vxArray_tag const* array) {
  return std::get<StringArray>(array->values());
}

StringArray& getString(matrix::detail::ArrayPtr const& array) {
  return std::get<StringArray>(array->values());
}

matrix::detail::ArrayPtr createStringArray(unsigned long rows, unsigned long columns) {
  std::vector<std::size_t> dimensions{rows, columns};
  StringArray elements(valueCount(dimensions));
  return createArray(std::move(dimensions), std::move(elements));
}

}  // namespace String
}  // namespace Quindarel
