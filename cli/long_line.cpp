#include "cli/long_line.hpp"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <ctime>

namespace kglob {
namespace {

/// At most three digits and a unit, rounded up as `ls -h` does: 999, 1.5K, 10K, 1.0M.
std::string humanSize(std::uint64_t bytes) {
  if (bytes < 1024) return std::to_string(bytes);
  constexpr char units[] = "KMGTPE";
  double size = static_cast<double>(bytes) / 1024;
  std::size_t unit = 0;
  while (size > 1023) {
    size /= 1024;
    ++unit;
  }
  bool const hasFraction = size <= 9.9;
  double const scale = hasFraction ? 10 : 1;
  double const rounded = static_cast<double>(static_cast<std::uint64_t>(size * scale + (1 - 1e-9))) / scale;
  std::array<char, 16> text;
  static_cast<void>(std::snprintf(text.data(), text.size(), hasFraction ? "%.1f%c" : "%.0f%c", rounded, units[unit]));
  return text.data();
}

std::string localTime(std::int64_t seconds) {
  std::time_t const time = seconds;
  std::tm local{};
  localtime_r(&time, &local);
  std::array<char, 64> text;
  return {text.data(), std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S", &local)};
}

}  // namespace

void LongLine::append(std::string& line, kglob_facts const& facts) {
  constexpr std::array kinds = {'-', 'f', 'd', 'l'};
  bool const hasSize = (facts.known & KGLOB_HAS_BYTES) != 0;
  bool const hasTime = (facts.known & KGLOB_HAS_TIME) != 0;
  std::string const size = !hasSize ? "-" : humanSizes_ ? humanSize(facts.bytes) : std::to_string(facts.bytes);
  std::string time = hasTime ? localTime(facts.modified_seconds) : "-";
  time.resize(std::max(time.size(), std::size_t{19}), ' ');
  sizeWidth_ = std::max(sizeWidth_, size.size());
  (line += kinds[facts.kind < kinds.size() ? facts.kind : 0]).append(1 + sizeWidth_ - size.size(), ' ');
  (((line += size) += ' ') += time) += ' ';
}

}  // namespace kglob
