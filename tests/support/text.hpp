#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "foundation/core/text/bytes.hpp"

namespace korvan::test {

inline std::u16string toText(std::string_view bytes) {
  return foundation::core::text::fromBytes(bytes);
}

/// The bytes of a text, or a mark that no expectation equals where none stand for it.
inline std::string toBytes(std::u16string_view text) {
  std::string bytes;
  return foundation::core::text::appendBytes(bytes, text) ? bytes : "(no bytes stand for this text)";
}

inline std::vector<std::string> toBytes(std::vector<std::u16string> const& texts) {
  std::vector<std::string> all;
  for (auto const& text : texts) all.push_back(toBytes(text));
  return all;
}

}  // namespace korvan::test
