#pragma once

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <string>

#include <fuzzer/FuzzedDataProvider.h>

#include "support/text.hpp"

namespace korvan::fuzz {

/// Ends the program unless the condition holds; the fuzzer then saves the input.
inline void require(bool holds, int line = __builtin_LINE()) {
  if (holds) return;
  static_cast<void>(std::fprintf(stderr, "the check in line %d fails\n", line));
  std::abort();
}

/// At most `longest` bytes of the input.
inline std::string takeBytes(FuzzedDataProvider& input, std::size_t longest = 64) {
  return input.ConsumeRandomLengthString(longest);
}

/// A text of arbitrary code units, or one converted from bytes, as names and arguments are.
inline std::u16string takeText(FuzzedDataProvider& input) {
  if (input.ConsumeBool()) return test::toText(takeBytes(input));
  std::u16string text;
  for (std::size_t units = input.ConsumeIntegralInRange<std::size_t>(0, 16); units > 0; --units)
    text.push_back(input.ConsumeIntegral<char16_t>());
  return text;
}

}  // namespace korvan::fuzz
