#include "quindarel/interpreter/string_array.hpp"

#include <algorithm>
#include <cstdint>
#include <utility>

namespace Quindarel::String {

namespace {

// A record begins with the length of the text: one code unit or, for a long text, this mark and four units.
constexpr char16_t longMark = 0xFFFF;
constexpr std::size_t longHeader = 5;

constexpr std::size_t firstBlock = 256;
constexpr std::size_t largestBlock = std::size_t{1} << 15;  // small enough for the heap to reuse freed memory

/// Up to this many dead units aren't worth a compaction.
constexpr std::size_t toleratedDeadUnits = 4096;

std::size_t headerUnits(std::size_t length) noexcept {
  return length < longMark ? 1 : longHeader;
}

std::u16string_view textOf(char16_t const* record) noexcept {
  if (*record != longMark) return {record + 1, *record};
  std::uint64_t length = 0;
  for (std::size_t i = 1; i < longHeader; ++i) length = length << 16 | record[i];
  return {record + longHeader, length};
}

std::size_t unitsOf(char16_t const* record) noexcept {
  std::size_t const length = textOf(record).size();
  return headerUnits(length) + length;
}

char16_t* write(char16_t* record, std::u16string_view text) noexcept {
  if (headerUnits(text.size()) == 1) {
    *record = static_cast<char16_t>(text.size());
  } else {
    *record = longMark;
    std::uint64_t length = text.size();
    for (std::size_t i = longHeader - 1; i > 0; --i, length >>= 16) record[i] = static_cast<char16_t>(length);
  }
  std::copy(text.begin(), text.end(), record + headerUnits(text.size()));
  return record;
}

}  // namespace

StringArray::StringArray(std::size_t count) : elements_(count) {}

std::optional<std::u16string_view> StringArray::operator[](std::size_t index) const noexcept {
  if (!elements_[index]) return std::nullopt;
  return textOf(elements_[index]);
}

void StringArray::setText(std::size_t index, std::u16string_view text) {
  Record const record = store(text);
  drop(std::exchange(elements_[index], record));
  if (deadUnits_ > liveUnits_ + toleratedDeadUnits) compact();
}

void StringArray::setMissing(std::size_t index) noexcept {
  drop(std::exchange(elements_[index], nullptr));
}

StringArray::Record StringArray::store(std::u16string_view text) {
  std::size_t const units = headerUnits(text.size()) + text.size();
  if (free_ == nullptr || units > freeUnits_) {
    // A long text gets a block of its own, so that little of a shared block is wasted.
    bool const own = units > largestBlock / 4;
    std::size_t const size = own ? units : std::max(units, std::clamp(blockUnits_ * 2, firstBlock, largestBlock));
    blocks_.push_back(std::make_unique_for_overwrite<char16_t[]>(size));
    char16_t* const block = blocks_.back().get();
    if (own) {
      liveUnits_ += units;
      return write(block, text);
    }
    free_ = block;
    freeUnits_ = blockUnits_ = size;
  }
  char16_t* const record = write(free_, text);
  free_ += units;
  freeUnits_ -= units;
  liveUnits_ += units;
  return record;
}

void StringArray::drop(Record record) noexcept {
  if (!record) return;
  std::size_t const units = unitsOf(record);
  liveUnits_ -= units;
  deadUnits_ += units;
}

void StringArray::compact() {
  StringArray fresh(size());
  for (std::size_t i = 0; i < size(); ++i)
    if (elements_[i]) fresh.elements_[i] = fresh.store(textOf(elements_[i]));
  *this = std::move(fresh);
}

}  // namespace Quindarel::String
