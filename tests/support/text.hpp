#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "foundation/core/text/bytes.hpp"

namespace korvan::test {

inline std::u16string toText(std::string_view bytes) {
  return foundation::core::text::fromBytes(bytes);
}

/// The bytes of a text; if it has no byte form, a string that no test expects.
inline std::string toBytes(std::u16string_view text) {
  std::string bytes;
  return foundation::core::text::appendBytes(bytes, text) ? bytes : "(this text has no byte form)";
}

inline std::vector<std::string> toBytes(std::vector<std::u16string> const& texts) {
  std::vector<std::string> all;
  for (auto const& text : texts) all.push_back(toBytes(text));
  return all;
}

}  // namespace korvan::test
