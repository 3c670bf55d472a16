#pragma once

#include <cstddef>
#include <string>

#include "cli/search.hpp"
#include "foundation/storage/vfs/read_session.hpp"

namespace kglob {

/// Reports the folders that a session couldn't read, so that an incomplete result isn't taken for a complete one: one
/// line each, ten at most, then a count.
class FailedFolders {
 public:
  static constexpr std::size_t maximumLines = 10;

  /// The session and the scope must outlive this.
  FailedFolders(foundation::storage::vfs::ReadSession const& session, Scope const& scope)
      : session_(session), scope_(scope) {}

  /// Reports the session's notes and the failures since the last call, in a search for `pattern`. Local folders are written the way the matches
  /// of that pattern are, below the root folder as the user wrote it; as IRIs if the pattern or the root folder is one.
  /// Folders in stores are always written as IRIs.
  void reportNew(std::u16string const& pattern);

  /// Reports how many were not reported one by one. Returns whether there was any failure.
  bool finish() const;

 private:
  foundation::storage::vfs::ReadSession const& session_;
  Scope const& scope_;
  std::size_t seen_ = 0;
  std::size_t notesSeen_ = 0;
};

}  // namespace kglob
