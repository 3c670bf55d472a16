#include "cli/time_point.hpp"

#include <algorithm>
#include <charconv>
#include <ctime>
#include <optional>
#include <string>

#include "cli/options.hpp"
#include "foundation/core/text/ascii.hpp"

namespace kglob {
namespace {

struct Unit {
  std::int64_t seconds;
  std::string_view names;  // each between spaces
};
constexpr std::int64_t day = 86'400;
constexpr Unit units[] = {
    {1, " s sec secs second seconds "}, {60, " m min mins minute minutes "},
    {3600, " h hr hrs hour hours "},    {day, " d day days "},
    {7 * day, " w week weeks "},        {2'630'016, " M month months "},  // 30.44 days
    {31'557'600, " y year years "},                                       // 365.25 days
};

/// The number at the start of the text, which is removed from it.
std::optional<std::int64_t> takeNumber(std::string_view& text) {
  std::int64_t number = 0;
  auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc()) return std::nullopt;
  text.remove_prefix(static_cast<std::size_t>(end - text.data()));
  return number;
}

std::optional<std::int64_t> parseDuration(std::string_view text) {
  std::int64_t sum = 0;
  do {
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    bool const hasDigit = !text.empty() && foundation::core::text::isDigit(text[0]);
    auto const number = hasDigit ? takeNumber(text) : std::nullopt;
    auto const isLetter = [](char c) { return foundation::core::text::isLetter(c); };
    auto const length = static_cast<std::size_t>(std::ranges::find_if_not(text, isLetter) - text.begin());
    std::string const name = " " + std::string(text.substr(0, length)) + " ";
    auto const* const unit =
        std::ranges::find_if(units, [&](Unit const& each) { return each.names.find(name) != std::string_view::npos; });
    std::int64_t seconds = 0;
    if (!number || unit == std::end(units) || __builtin_mul_overflow(*number, unit->seconds, &seconds) ||
        __builtin_add_overflow(sum, seconds, &sum))
      return std::nullopt;
    text.remove_prefix(length);
  } while (!text.empty());
  return sum;
}

std::optional<std::int64_t> parseDate(std::string const& text) {
  struct Format {
    char const* text;
    bool hasZone;
  };
  constexpr Format formats[] = {{"%Y-%m-%dT%H:%M:%S%z", true}, {"%Y-%m-%d %H:%M:%S%z", true},
                                {"%Y-%m-%dT%H:%M:%S", false},  {"%Y-%m-%d %H:%M:%S", false},
                                {"%Y-%m-%d %H:%M", false},     {"%Y-%m-%d", false}};
  for (Format const& format : formats) {
    std::tm time{};
    time.tm_isdst = -1;  // as the zone has it on that day
    char const* const end = strptime(text.c_str(), format.text, &time);
    if (end == nullptr || *end != '\0') continue;
    long const offset = time.tm_gmtoff;
    return format.hasZone ? timegm(&time) - offset : mktime(&time);
  }
  return std::nullopt;
}

std::optional<std::int64_t> parse(std::string_view text, std::int64_t now) {
  if (text.starts_with('@')) {
    text.remove_prefix(1);
    auto const seconds = takeNumber(text);
    return text.empty() ? seconds : std::nullopt;
  }
  if (auto const duration = parseDuration(text)) return now - *duration;
  return parseDate(std::string(text));
}

}  // namespace

std::int64_t parseTime(std::string_view text, std::int64_t now, std::string_view option) {
  if (auto const seconds = parse(text, now)) return *seconds;
  throw UsageError(std::string(option) + ": \"" + std::string(text) + "\" is neither a duration such as 2h nor a date");
}

}  // namespace kglob
