#include "cli/size_bound.hpp"

#include <charconv>
#include <string>

#include "cli/options.hpp"
#include "foundation/core/text/ascii.hpp"

namespace kglob {
namespace {

/// The factor that a unit stands for; 0 if it isn't one.
std::uint64_t factorOf(std::string_view unit) {
  if (unit.empty() || unit == "b") return 1;
  std::size_t const power = std::string_view("kmgt").find(unit[0]);
  bool const isBinary = unit.substr(1) == "i" || unit.substr(1) == "ib";
  if (power == std::string_view::npos || !(isBinary || unit.size() == 1 || unit.substr(1) == "b")) return 0;
  std::uint64_t factor = 1;
  for (std::size_t i = 0; i <= power; ++i) factor *= isBinary ? 1024 : 1000;
  return factor;
}

}  // namespace

SizeBound::SizeBound(std::string_view text) {
  char const sign = text.starts_with('+') || text.starts_with('-') ? text[0] : '=';
  std::string const rest = foundation::core::text::lowerCase(text.substr(sign == '=' ? 0 : 1));
  std::uint64_t number = 0;
  auto const [end, error] = std::from_chars(rest.data(), rest.data() + rest.size(), number);
  std::uint64_t const factor = factorOf({end, rest.data() + rest.size()});
  std::uint64_t bytes = 0;
  if (error != std::errc() || factor == 0 || __builtin_mul_overflow(number, factor, &bytes))
    throw UsageError("--size: \"" + std::string(text) + "\" is not a size such as +10k or -1mi");
  if (sign != '-') least_ = bytes;
  if (sign != '+') most_ = bytes;
}

}  // namespace kglob
