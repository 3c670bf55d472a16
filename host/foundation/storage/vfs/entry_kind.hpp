#pragma once

#include <cstdint>

namespace foundation::storage::vfs {

/// What an entry of a folder is itself, as the folder says.
enum class EntryKind : std::uint8_t {
  file,     ///< neither a folder nor a link
  folder,   ///< a folder
  link,     ///< a link: it counts as its target, whose kind only a further request can find out
  unknown,  ///< the folder doesn't say; the entry may be a link
};

}  // namespace foundation::storage::vfs
