#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "glob/existence.hpp"

namespace korvan::io::internal {

/// What a listing says about an entry's kind.
enum class ListedKind : std::uint8_t {
  unknown,  ///< nothing: an existence test can find out
  folder,
  other,
};

inline ListedKind listedKind(std::optional<PathKind> kind) noexcept {
  if (!kind) return ListedKind::unknown;
  return kind == PathKind::isFolder ? ListedKind::folder : ListedKind::other;
}

/// The names of a folder's entries with their kinds, in listing order and side by side in one text, whose memory is
/// reused: a search lists thousands of folders one after the other.
class EntryNames {
 public:
  std::size_t size() const noexcept { return records_.size(); }

  /// Valid until the names change.
  std::u16string_view operator[](std::size_t index) const noexcept {
    std::size_t const begin = index == 0 ? 0 : records_[index - 1].end;
    return std::u16string_view(text_).substr(begin, records_[index].end - begin);
  }

  ListedKind kind(std::size_t index) const noexcept { return records_[index].kind; }

  void add(std::u16string_view name, ListedKind kind) {
    text_ += name;
    records_.push_back({text_.size(), kind});
  }

  /// Removes all names and keeps the memory.
  void clear() noexcept {
    text_.clear();
    records_.clear();
  }

 private:
  struct Record {
    std::size_t end;
    ListedKind kind;
  };

  std::u16string text_;
  std::vector<Record> records_;
};

}  // namespace korvan::io::internal
