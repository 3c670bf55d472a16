#pragma once

#include <string>
#include <string_view>

/// The ASCII rules that schemes, headers, settings and percent-encodings follow, whatever the running locale. `Unit` is
/// `char` or `char16_t`; units beyond ASCII are neither letters nor digits, and have no other case.
namespace foundation::core::text {

template <class Unit>
constexpr bool isDigit(Unit unit) noexcept {
  return unit >= '0' && unit <= '9';
}

template <class Unit>
constexpr bool isUpper(Unit unit) noexcept {
  return unit >= 'A' && unit <= 'Z';
}

template <class Unit>
constexpr bool isLower(Unit unit) noexcept {
  return unit >= 'a' && unit <= 'z';
}

template <class Unit>
constexpr bool isLetter(Unit unit) noexcept {
  return isUpper(unit) || isLower(unit);
}

template <class Unit>
constexpr Unit toLower(Unit unit) noexcept {
  return isUpper(unit) ? static_cast<Unit>(unit - 'A' + 'a') : unit;
}

/// The text in lower case.
template <class Unit>
std::basic_string<Unit> lowerCase(std::basic_string_view<Unit> text) {
  std::basic_string<Unit> lower(text);
  for (Unit& unit : lower) unit = toLower(unit);
  return lower;
}

/// The value of a hexadecimal digit of either case, or -1.
template <class Unit>
constexpr int hexValue(Unit unit) noexcept {
  if (isDigit(unit)) return unit - '0';
  Unit const lower = toLower(unit);
  return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

/// The hexadecimal digits in upper case, by their value.
inline constexpr char hexDigits[] = "0123456789ABCDEF";

}  // namespace foundation::core::text
