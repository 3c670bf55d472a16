#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/storage/vfs/detail/folder_snapshot.hpp"

namespace foundation::storage::vfs {

/// Reads many small folders of a flat store with few requests. One page of keys below a root holds, in key order, whole
/// sub-folders one after the other: each that begins and ends within what was read without a gap is known as if it had
/// been listed. A descent asks for folders nearly in key order, so pages follow one another; where it skips some, the
/// scan skips them too. Internal to the session.
class SubtreeScan {
 public:
  using Receive = std::function<void(std::shared_ptr<FolderReading>)>;

  /// A scan of what stands below `root` and begins with `prefix`. Makes no request.
  SubtreeScan(AbsoluteIRI root, std::string prefix);

  /// Whether the location is a folder below the root that the scan can reach (or the root, for the same prefix).
  bool reaches(AbsoluteIRI const& location, std::string_view prefix) const;

  /// Reads one page, so placed that it helps most to know `folder`, which the scan reaches: one request. Hands over
  /// each folder that is now known whole, sorted. Throws as `Provider::subtree` does; the scan then begins anew at the
  /// next call.
  void advance(Provider& provider, AbsoluteIRI const& folder, Receive const& receive);

  /// Whether a page is worth its request for a question that could also be asked by itself. Where pages make the
  /// folder that they are read for known, they answer the next questions too; where they don't, twice as many questions
  /// are to be asked by themselves with each page in vain, as what follows a huge folder may be small again.
  bool worthAPage();

 private:
  struct OpenFolder {
    std::string path;                        // below the root, ending in "/"; empty for the root
    std::shared_ptr<FolderReading> reading;  // null where keys before the first one read may be missing
    bool seen;  // whether a key has told that the folder exists; one that a page was only placed at may not
  };

  SubtreePage pageFor(Provider& provider, AbsoluteIRI const& folder) const;
  std::string pathBelowRoot(AbsoluteIRI const& folder) const;
  void beginAt(std::string const& path);
  void open(std::string path, bool whole, bool seen);
  void add(std::string_view path, Receive const& receive);
  void closeUntil(std::string_view path, Receive const& receive);

  AbsoluteIRI root_;
  std::string prefix_;
  std::string position_;  // the last path read; the next page begins after it
  std::vector<OpenFolder> open_;
  bool intact_ = true;  // whether the last page was gone through to its end; otherwise what is open may lack keys
  std::size_t questionsToPass_ = 0;  // before the next page is worth its request
  std::size_t pagesInVain_ = 0;      // in sequence
};

}  // namespace foundation::storage::vfs
