#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "foundation/storage/vfs/entry_kind.hpp"

namespace foundation::storage::vfs {

/// A point in time, since 1970-01-01T00:00:00Z without leap seconds (POSIX).
struct Timestamp {
  std::int64_t seconds = 0;
  std::uint32_t nanoseconds = 0;  ///< after the second; less than 1,000,000,000
  friend bool operator==(Timestamp const&, Timestamp const&) = default;
};

/// What storage says about an entry, links not followed.
struct EntryFacts {
  EntryKind kind = EntryKind::file;
  std::optional<std::uint64_t> size{};  ///< in bytes; nothing for folders of a store
  std::optional<Timestamp> modified{};  ///< when the content changed last; nothing for folders of a store
  std::string etag{};                   ///< RFC 9110, 8.8.3, without its quotation marks; empty if there is none
  std::string storageClass{};           ///< as the store names it, such as "STANDARD"; empty if there is none
  friend bool operator==(EntryFacts const&, EntryFacts const&) = default;
};

}  // namespace foundation::storage::vfs
