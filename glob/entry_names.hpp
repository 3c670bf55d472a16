#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace korvan::io::internal {

/// The names of a folder's entries, in listing order and side by side in one text: thousands of folders are listed one after the
/// other, and each reuses the memory of the one before.
class EntryNames {
 public:
  std::size_t size() const noexcept { return ends_.size(); }

  /// Valid until the names change.
  std::u16string_view operator[](std::size_t index) const noexcept {
    std::size_t const begin = index == 0 ? 0 : ends_[index - 1];
    return std::u16string_view(text_).substr(begin, ends_[index] - begin);
  }

  void add(std::u16string_view name) {
    text_ += name;
    ends_.push_back(text_.size());
  }

  /// Removes all names and keeps the memory.
  void clear() noexcept {
    text_.clear();
    ends_.clear();
  }

 private:
  std::u16string text_;
  std::vector<std::size_t> ends_;
};

}  // namespace korvan::io::internal
