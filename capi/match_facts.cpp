#include "capi/match_facts.hpp"

#include <string>

#include "foundation/storage/vfs/facts.hpp"
#include "foundation/storage/vfs/storage_exception.hpp"

namespace kglob {
namespace {

namespace vfs = foundation::storage::vfs;

std::uint32_t kindOf(vfs::EntryKind kind) {
  switch (kind) {
    case vfs::EntryKind::file:
      return KGLOB_FILE;
    case vfs::EntryKind::folder:
      return KGLOB_FOLDER;
    case vfs::EntryKind::link:
      return KGLOB_LINK;
    case vfs::EntryKind::unknown:
      break;
  }
  return KGLOB_UNKNOWN;
}

}  // namespace

vfs::EntryFacts findFacts(std::u16string_view match, korvan::io::internal::Path const& rootFolder,
                          kglob_fact_level level) {
  vfs::EntryFacts unknown;
  unknown.kind = vfs::EntryKind::unknown;
  try {
    auto const system = Quindarel::KorvanStorageSystem::GetStorageSystemReference();
    vfs::AbsoluteIRI const location = absolute(korvan::io::internal::Path(std::u16string(match)), rootFolder).toIRI();
    if (level == KGLOB_ALL_FACTS) return vfs::facts(location, system).value_or(unknown);
    unknown.kind = vfs::entryKind(location, system).value_or(vfs::EntryKind::unknown);
  } catch (vfs::Exception const&) {
    // Among the session's failures.
  }
  return unknown;
}

kglob_facts viewOf(vfs::EntryFacts const& facts) {
  kglob_facts view = noFacts;
  view.kind = kindOf(facts.kind);
  if (facts.size) view.known |= KGLOB_HAS_BYTES;
  if (facts.modified) view.known |= KGLOB_HAS_TIME;
  view.bytes = facts.size.value_or(0);
  view.modified_seconds = facts.modified.value_or(vfs::Timestamp{}).seconds;
  view.modified_nanoseconds = facts.modified.value_or(vfs::Timestamp{}).nanoseconds;
  view.etag = facts.etag.c_str();
  view.storage_class = facts.storageClass.c_str();
  return view;
}

}  // namespace kglob
