#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <stdexcept>

namespace kglob {

/// Copies a structure of the caller's, whose first member says how large it is there, over the members of `known` that
/// it includes. Throws `std::invalid_argument` if the size is smaller than that member, or if the structure is larger
/// than this library's and has a nonzero byte beyond it: that would ask for something that this library can't do.
template <class Structure>
void copyKnown(Structure& known, Structure const* given) {
  std::size_t const size = given->size;
  if (size < sizeof size) throw std::invalid_argument("the size of a structure is not set");
  char const* const bytes = reinterpret_cast<char const*>(given);
  std::memcpy(&known, bytes, std::min(size, sizeof known));
  bool const asksForMore =
      size > sizeof known && std::any_of(bytes + sizeof known, bytes + size, [](char byte) { return byte != 0; });
  if (asksForMore) throw std::invalid_argument("a structure holds more than this library knows");
}

/// Sets the members that a structure of the caller's has to those of `known`, and members beyond to 0.
template <class Structure>
void fill(Structure* wanted, Structure known) {
  std::size_t const size = wanted->size;
  if (size < sizeof size) return;
  known.size = size;
  std::memset(wanted, 0, size);
  std::memcpy(wanted, &known, std::min(size, sizeof known));
}

}  // namespace kglob
