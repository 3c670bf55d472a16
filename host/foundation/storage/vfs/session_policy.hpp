#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace foundation::storage::vfs {

/// What a read session shows of storage. Whatever the policy hides doesn't exist for the session: it isn't listed, has
/// no kind, and isn't read. A search doesn't know of the policy.
///
/// Names, devices and depths count below the *start* of a search only: the first folder that it lists, which is what
/// its pattern says before the first wildcard. What is written out up to there is never hidden.
struct SessionPolicy {
  /// Whether a folder is opened from the one above it (`Folder(parent, name)`) through a link too. If not, a descent
  /// shows links to folders and doesn't enter them; a link that is part of a location is still followed.
  bool followLinks = true;

  /// Whether folders on other devices than the start are empty. Costs one request for each folder.
  bool oneFileSystem = false;

  /// How many levels of folders are read: with 1 only the start itself, whose entries are then found; with 2 also its
  /// subfolders; and so on. Deeper folders are empty. Makes fewer requests.
  std::optional<std::size_t> maximumDepth{};

  /// Whether it is a failed listing (see `ReadSession::failedListings`) of the folder concerned, rather than an
  /// exception, when permission to look up a location below the start is denied. The location then doesn't exist.
  bool reportRefusals = false;

  /// Whether listings remember the facts about entries that they hold anyway, for `facts`. Costs memory only.
  bool collectFacts = false;

  /// The most reads in flight at once, that of the searching thread included: with 1 the session starts no thread. 0
  /// for what is worth having, as the provider says (`Provider::readsInFlight`); a greater number than the provider's
  /// raises it, up to 64. Reads that compute never take more threads than there are cores. No result depends on it.
  std::size_t readsInFlight = 0;

  /// The names of entries that are left out, together with everything below them: "*" is any run of characters, every
  /// other character stands for itself. No request is made for what is below them; a flat listing may show what is on
  /// the same page.
  std::vector<std::u16string> excludedNames{};
};

}  // namespace foundation::storage::vfs
