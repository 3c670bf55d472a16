#include "foundation/storage/vfs/detail/entry_table.hpp"

#include <algorithm>
#include <cstring>
#include <stdexcept>

#include "quindarel/interrupt/interrupt_poll.hpp"

namespace foundation::storage::vfs {
namespace {

// The first eight bytes of a name as a number that orders as they do: most comparisons need no more. At least eight
// bytes may be read there.
std::uint64_t sortKey(char const* name, std::size_t length) {
  std::uint64_t key = 0;
  std::memcpy(&key, name, sizeof key);
  if (length < sizeof key) key &= (std::uint64_t{1} << (8 * length)) - 1;
  return __builtin_bswap64(key);
}

// Facts as they follow a name: this, then the bytes of the two texts.
struct WrittenFacts {
  std::uint64_t size;
  Timestamp modified;
  bool hasSize;
  bool isDated;
  std::uint8_t etagLength;
  std::uint8_t classLength;
};

void appendFacts(std::string& bytes, EntryFacts const& facts) {
  auto const lengthOf = [](std::string const& text) {
    return static_cast<std::uint8_t>(std::min<std::size_t>(text.size(), 255));
  };
  WrittenFacts const written{facts.size.value_or(0), facts.modified.value_or(Timestamp()),
                             facts.size.has_value(), facts.modified.has_value(),
                             lengthOf(facts.etag),   lengthOf(facts.storageClass)};
  bytes.append(reinterpret_cast<char const*>(&written), sizeof written);
  bytes.append(facts.etag, 0, written.etagLength);
  bytes.append(facts.storageClass, 0, written.classLength);
}

EntryFacts factsAt(char const* bytes, EntryKind kind) {
  WrittenFacts written;
  std::memcpy(&written, bytes, sizeof written);
  bytes += sizeof written;
  EntryFacts facts{.kind = kind};
  if (written.hasSize) facts.size = written.size;
  if (written.isDated) facts.modified = written.modified;
  facts.etag.assign(bytes, written.etagLength);
  facts.storageClass.assign(bytes + written.etagLength, written.classLength);
  return facts;
}

constexpr bool littleEndian = __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__;
static_assert(littleEndian, "sortKey swaps bytes");

}  // namespace

void EntryTable::add(std::string_view name, EntryFacts const& facts) {
  if (!append(name, facts.kind)) return;
  records_.back().flags |= factsFlag;
  appendFacts(names_, facts);
}

std::optional<EntryFacts> EntryTable::facts(std::size_t index) const {
  Record const& record = records_[index];
  if ((record.flags & factsFlag) == 0) return std::nullopt;
  return factsAt(names_.data() + record.offset + (record.flags >> flagBits), entryKind(index));
}

// False for a name that is ignored.
bool EntryTable::append(std::string_view name, EntryKind kind) {
  if (name.empty() || name == "." || name == "..") return false;
  constexpr std::size_t pollEvery = 4096;
  if (records_.size() % pollEvery == pollEvery - 1) utThrowIfInterruptPending();
  if (name.size() >= (std::size_t{1} << (32 - flagBits)) || names_.size() + name.size() > UINT32_MAX) {
    throw std::length_error("a folder's names exceed 4 GiB");
  }
  std::uint32_t flags = static_cast<std::uint32_t>(name.size()) << flagBits;
  if (kind == EntryKind::file) flags |= static_cast<std::uint32_t>(PathKind::isFile) + 1;
  if (kind == EntryKind::folder) flags |= static_cast<std::uint32_t>(PathKind::isFolder) + 1;
  if (kind == EntryKind::link || kind == EntryKind::unknown) flags |= linkFlag;
  if (kind == EntryKind::link) flags |= certainFlag;
  records_.push_back({static_cast<std::uint32_t>(names_.size()), flags});
  names_.append(name);
  return true;
}

void EntryTable::sort() {
  struct Keyed {
    std::uint64_t key;
    Record record;
  };
  std::size_t const namesEnd = names_.size();
  names_.append(sizeof(std::uint64_t), '\0');
  std::vector<Keyed> keyed;
  keyed.reserve(records_.size());
  for (Record const& record : records_) {
    keyed.push_back({sortKey(names_.data() + record.offset, record.flags >> flagBits), record});
  }

  auto const rest = [this](Record const& record) {
    std::size_t const length = record.flags >> flagBits;
    std::size_t const skipped = std::min(length, sizeof(std::uint64_t));
    return std::string_view(names_.data() + record.offset + skipped, length - skipped);
  };
  constexpr std::size_t pollEvery = std::size_t{1} << 16;
  std::size_t comparisons = 0;
  std::sort(keyed.begin(), keyed.end(), [&](Keyed const& a, Keyed const& b) {
    if (++comparisons % pollEvery == 0) utThrowIfInterruptPending();
    if (a.key != b.key) return a.key < b.key;
    int const order = rest(a.record).compare(rest(b.record));
    if (order != 0) return order < 0;
    // A NUL at the end of a name makes the keys of different names equal; then the shorter name comes first.
    std::uint32_t const aLength = a.record.flags >> flagBits;
    std::uint32_t const bLength = b.record.flags >> flagBits;
    if (aLength != bLength) return aLength < bLength;
    return (a.record.flags & kindMask) > (b.record.flags & kindMask);
  });
  for (std::size_t i = 0; i < keyed.size(); ++i) records_[i] = keyed[i].record;

  // Among equal names the greatest kind comes first: a folder if there is one.
  records_.erase(std::unique(records_.begin(), records_.end(),
                             [&](Record const& a, Record const& b) { return nameOf(a) == nameOf(b); }),
                 records_.end());
  names_.resize(namesEnd);
}

void EntryTable::setKind(std::size_t index, PathKind kind) noexcept {
  Record& record = records_[index];
  record.flags = (record.flags & ~kindMask) | (static_cast<std::uint32_t>(kind) + 1);
}

void EntryTable::setEntryKind(std::size_t index, EntryKind kind) noexcept {
  Record& record = records_[index];
  if (kind == EntryKind::link) {
    record.flags |= certainFlag;
  } else {
    record.flags &= ~linkFlag;
    setKind(index, kind == EntryKind::folder ? PathKind::isFolder : PathKind::isFile);
  }
}

std::size_t EntryTable::find(std::string_view wanted) const noexcept {
  std::size_t low = 0;
  std::size_t high = records_.size();
  while (low < high) {
    std::size_t const middle = low + (high - low) / 2;
    if (name(middle) < wanted) {
      low = middle + 1;
    } else {
      high = middle;
    }
  }
  return low < records_.size() && name(low) == wanted ? low : npos;
}

void EntryTable::reserveUsual() {
  names_.reserve(1024);
  records_.reserve(64);
}

void EntryTable::shrink() {
  names_.shrink_to_fit();
  records_.shrink_to_fit();
}

}  // namespace foundation::storage::vfs
