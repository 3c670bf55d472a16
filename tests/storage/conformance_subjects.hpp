#pragma once

#include <cstdint>
#include <memory>
#include <ostream>
#include <string>

/// The providers that are held to one suite, each with the same tree (conformance_tree.txt) behind it.
namespace korvan::test {

/// All that may differ between providers. What isn't named here must be the same.
struct Differences {
  /// Links: a store has none. Where there are links, the tree holds some below "links".
  bool links;
  /// Names that are no UTF-8: a store refuses such keys. Where they are possible, "bytes" holds one.
  bool anyBytes;
  /// Requests are counted: only a remote provider makes some.
  bool requests;
  /// A listing by a filter with a literal head tells that there is no folder. A store is asked for what begins with
  /// that head; one more request would tell whether the folder is there when nothing does, and no search would make
  /// anything of the answer.
  bool filteredListingsTellAbsence;
  /// The longest name that can stand in a folder: 255 bytes on a disk, while a store limits the whole key to 1,024. A
  /// longer one names nothing, and asking for it is no failure.
  std::uint32_t longestName;
};

class Subject {
 public:
  Subject(std::u16string root, Differences differences) : root_(std::move(root)), differences_(differences) {}
  virtual ~Subject() = default;

  /// The IRI of the folder that holds the tree, without a final "/".
  std::u16string const& root() const noexcept { return root_; }
  Differences const& differences() const noexcept { return differences_; }

 private:
  std::u16string root_;
  Differences differences_;
};

enum class SubjectKind { local, memory, store };
std::ostream& operator<<(std::ostream& out, SubjectKind kind);

/// The subject of that kind, made at the first call and kept to the end of the process.
Subject const& subject(SubjectKind kind);

}  // namespace korvan::test
