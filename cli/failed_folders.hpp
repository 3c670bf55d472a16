#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "cli/search.hpp"
#include "foundation/storage/vfs/read_session.hpp"

namespace kglob {

/// Tells the folders that a session could not read, so that nobody takes a part for the whole: one line each, ten at
/// most, then a count.
class FailedFolders {
 public:
  static constexpr std::size_t most = 10;

  /// The session must outlive this.
  FailedFolders(foundation::storage::vfs::ReadSession const& session, Scope const& scope)
      : session_(session), scope_(scope) {}

  /// Tells those that came up since the last call, in a search for `pattern`: as paths the way the matches of that
  /// pattern read, below the root folder as it was given; as IRIs where the pattern or the root folder is one, and
  /// always outside the local disk.
  void tellNew(std::u16string const& pattern);

  /// Tells how many were not told one by one. Gives whether there was any failure.
  bool finish() const;

 private:
  foundation::storage::vfs::ReadSession const& session_;
  Scope const& scope_;
  std::size_t seen_ = 0;
};

}  // namespace kglob
