#pragma once

#include <cstddef>
#include <exception>
#include <memory>
#include <optional>

#include "foundation/storage/vfs/detail/folder_snapshot.hpp"
#include "foundation/storage/vfs/session/key_parts.hpp"
#include "foundation/storage/vfs/session/pending_reads.hpp"
#include "foundation/storage/vfs/session/read_window.hpp"
#include "foundation/storage/vfs/session/visibility.hpp"

namespace foundation::storage::vfs {

/// What a read found out, or why it couldn't. Internal to the session.
struct Answer {
  FailureLog::Question question;  ///< `entries` or `kind`
  AbsoluteIRI location;
  std::shared_ptr<FolderSnapshot> snapshot{};  ///< for `entries`
  PathKind kind = PathKind::notFound;          ///< for `kind`
  std::exception_ptr failure{};                ///< an `Exception` as the provider threw it, or null
};

/// One read: what is asked, the answer, and what the answer predicts. Internal to the session.
struct Read {
  using Question = FailureLog::Question;

  Answer answer;
  std::shared_ptr<Provider> provider;
  std::shared_ptr<SearchStates const> search;  ///< for which it is made; null if none was announced
  SearchStates::Set states = 0;                ///< at the location, if it is a folder
  PendingReads::Position position{};           ///< valid as long as that search is predicted
  std::optional<PendingReads::Group> predicted{};
  std::optional<ReadWindow::Measurement> measured{};
  std::size_t memory = 0;  ///< of the answer and what it predicts, if it was made ahead
  bool isAnswered = false;
  bool isDone = false;           ///< the only member that other threads look at while the read is in flight
  bool lackedResources = false;  ///< descriptors or memory: a failure that says nothing about the location

  /// Reads, and predicts what the search reads below. Throws only what isn't an `Exception` of the storage layer.
  void make(Visibility const& visibility, bool isMeasured);

  /// The same for a read that nobody has requested. An interrupt or a lack of memory or descriptors isn't an answer
  /// then: when it is requested it is made again, and fails again if the cause remains.
  void prefetch(Visibility const& visibility, bool isMeasured) noexcept;
};

/// One request for a page of a flat store's keys. Internal to the session.
struct PageRead {
  KeyParts::Fetch fetch;
  std::shared_ptr<Provider> provider;
  SubtreePage page{};
  std::exception_ptr failure{};  ///< what the provider threw, or null
  std::optional<ReadWindow::Measurement> measured{};
  bool lackedResources = false;

  void make(bool isMeasured) noexcept;
};

}  // namespace foundation::storage::vfs
