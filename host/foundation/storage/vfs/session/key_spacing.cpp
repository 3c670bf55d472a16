#include "foundation/storage/vfs/session/key_spacing.hpp"

#include <algorithm>
#include <bitset>

#include "foundation/core/text/bytes.hpp"

namespace foundation::storage::vfs {
namespace {

// How far beyond the page, and how finely, paths are told apart; together within the precision of a double.
constexpr double pagesAhead = 1e6;
constexpr double precision = 1e14;

// The most paths of a page that are looked at, evenly spread.
constexpr std::size_t samples = 256;

using Characters = std::bitset<256>;

Characters charactersAt(std::size_t position, std::vector<std::string> const& paths) {
  Characters present;
  auto const note = [&](std::string const& path) {
    if (position < path.size()) present.set(static_cast<unsigned char>(path[position]));
  };
  for (std::size_t i = 0; i < paths.size(); i += 1 + paths.size() / samples) note(paths[i]);
  note(paths.back());
  return present;
}

Characters charactersOf(std::string_view kind) {
  Characters result;
  for (char const each : kind) result.set(static_cast<unsigned char>(each));
  return result;
}

Characters const digits = charactersOf("0123456789");
Characters const lowerCase = charactersOf("abcdefghijklmnopqrstuvwxyz");
Characters const upperCase = charactersOf("ABCDEFGHIJKLMNOPQRSTUVWXYZ");
Characters const hexadecimal = charactersOf("0123456789abcdef");

// With all characters of the same kinds: the page shows few of those in front.
Characters completed(Characters present, bool isHexadecimal) {
  if (isHexadecimal) return (present & hexadecimal).any() ? present | hexadecimal : present;
  for (Characters const& kind : {digits, lowerCase, upperCase})
    if ((present & kind).any()) present |= kind;
  return present;
}

std::string sorted(Characters const& present) {
  std::string characters;
  for (std::size_t i = 0; i < present.size(); ++i)
    if (present[i]) characters.push_back(static_cast<char>(i));
  return characters;
}

}  // namespace

KeySpacing::KeySpacing(std::vector<std::string> const& paths) {
  if (paths.size() < 2) return;
  std::string const& first = paths.front();
  std::string const& last = paths.back();
  auto const differing = std::mismatch(first.begin(), first.end(), last.begin(), last.end()).first;
  auto const common = static_cast<std::size_t>(differing - first.begin());
  // The page shows all characters of a position after the first one in which its paths differ.
  Characters const inside = charactersAt(common + 1, paths);
  bool const isHexadecimal = (inside & digits).any() && (inside & lowerCase).any() && (inside & ~hexadecimal).none();
  std::vector<Position> before;
  std::size_t start = common;
  for (double span = 1; start > 0 && span < pagesAhead; span *= static_cast<double>(before.back().characters.size()))
    before.push_back({sorted(completed(charactersAt(--start, paths), isHexadecimal)), 0});
  positions_.assign(before.rbegin(), before.rend());
  prefix_ = first.substr(0, start);
  double value = 1;
  for (Position& position : positions_) position.value = value /= static_cast<double>(position.characters.size());
  for (std::size_t i = common; i < std::max(first.size(), last.size()) && value * precision > 1; ++i) {
    Characters const present = charactersAt(i, paths);
    std::string characters = sorted(i == common ? completed(present, isHexadecimal)
                                                : present | ((present & digits).any() ? digits : Characters()));
    value /= static_cast<double>(characters.size());
    positions_.push_back({std::move(characters), value});
  }
  auto const count = static_cast<double>(paths.size());
  key_ = (valueOf(last) - valueOf(first)) / (count - 1);
  page_ = key_ * count;
}

double KeySpacing::valueOf(std::string_view path) const {
  if (!path.starts_with(prefix_)) return path < prefix_ ? 0 : 1;
  path.remove_prefix(prefix_.size());
  double value = 0;
  auto const isLess = [](char a, char b) { return static_cast<unsigned char>(a) < static_cast<unsigned char>(b); };
  for (std::size_t i = 0; i < std::min(path.size(), positions_.size()); ++i) {
    std::string const& known = positions_[i].characters;
    auto const at = std::lower_bound(known.begin(), known.end(), path[i], isLess);
    value += static_cast<double>(at - known.begin()) * positions_[i].value;
  }
  return value;
}

std::string KeySpacing::after(std::string_view path, double pages) const {
  double value = valueOf(path) + pages * page_ - key_ / 2;  // rather a key too early than one too late
  if (!(page_ > 0 && value < 1)) return {};
  std::string result = prefix_;
  for (Position const& position : positions_) {
    auto const index = std::min(static_cast<std::size_t>(value / position.value), position.characters.size() - 1);
    result.push_back(position.characters[index]);
    value -= static_cast<double>(index) * position.value;
    if (value < page_ / 64) break;
  }
  return core::text::validUtf8Prefix(result);
}

}  // namespace foundation::storage::vfs
