#pragma once

#include <string_view>

#include "foundation/storage/vfs/entry_facts.hpp"
#include "kglob.h"
#include "korvan/io/path.hpp"

namespace kglob {

/// The facts of a match, as many as the level asks for; of kind `unknown` if they can't be found out. To be called
/// while the search's session is open. Costs what `kglob_fact_level` says. Throws `std::bad_alloc`, and the exception
/// of an interrupt.
foundation::storage::vfs::EntryFacts findFacts(std::u16string_view match, korvan::io::internal::Path const& rootFolder,
                                               kglob_fact_level level);

/// The same for C; the texts are those of `facts`.
kglob_facts viewOf(foundation::storage::vfs::EntryFacts const& facts);

/// Nothing known.
inline constexpr kglob_facts noFacts{sizeof(kglob_facts), KGLOB_UNKNOWN, 0, 0, 0, 0, 0, "", ""};

}  // namespace kglob
