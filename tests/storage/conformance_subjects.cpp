#include "storage/conformance_subjects.hpp"

#include "foundation/storage/vfs/conversion.hpp"
#include "storage/conformance_tree.hpp"
#include "storage/test_store.hpp"
#include "support/memory_provider.hpp"
#include "support/temporary_folder.hpp"

namespace korvan::test {
namespace {

constexpr Differences onDisk{
    .links = true, .anyBytes = true, .requests = false, .filteredListingsTellAbsence = true, .longestName = 255};
constexpr Differences inMemory{
    .links = true, .anyBytes = true, .requests = false, .filteredListingsTellAbsence = true, .longestName = 1U << 20};
constexpr Differences inStore{
    .links = false, .anyBytes = false, .requests = true, .filteredListingsTellAbsence = false, .longestName = 1000};

/// The tree, with what only disks can hold. A link's target is a path from the tree's root.
Tree treeWithLinks() {
  Tree tree = conformanceTree();
  tree.addLink("links/file", "kinds/file")
      .addLink("links/folder", "kinds/folder")
      .addLink("links/broken", "kinds/nothing")
      .addLink("links/chain", "links/folder")
      .addLink("links/self", "links/self")
      .addLink("links/up", "links")
      .addFile("bytes/\xff\xc3")
      .addFile("bytes/\xed\xb3\xbf");
  return tree;
}

class LocalSubject final : public Subject {
 public:
  explicit LocalSubject(std::unique_ptr<TemporaryFolder> folder)
      : Subject(foundation::storage::vfs::toAbsoluteIRI(u"file", fl::filesystem::upath(folder->text())).toString(),
                onDisk),
        folder_(std::move(folder)) {}

  static std::unique_ptr<Subject> make() {
    auto folder = std::make_unique<TemporaryFolder>();
    treeWithLinks().writeTo(*folder);
    return std::make_unique<LocalSubject>(std::move(folder));
  }

 private:
  std::unique_ptr<TemporaryFolder> folder_;
};

class MemorySubject final : public Subject {
 public:
  MemorySubject()
      : Subject(u"conformance-memory:///", inMemory),
        served_(u"conformance-memory", std::make_shared<MemoryProvider>(treeWithLinks())) {}

 private:
  ServedScheme served_;
};

std::unique_ptr<Subject> makeSubject(SubjectKind kind) {
  switch (kind) {
    case SubjectKind::local:
      return LocalSubject::make();
    case SubjectKind::memory:
      return std::make_unique<MemorySubject>();
    case SubjectKind::store:
      break;
  }
  useTestStore();
  return std::make_unique<Subject>(u"s3://conformance", inStore);
}

}  // namespace

std::ostream& operator<<(std::ostream& out, SubjectKind kind) {
  static char const* const names[] = {"Local", "Memory", "Store"};
  return out << names[static_cast<int>(kind)];
}

Subject const& subject(SubjectKind kind) {
  static std::unique_ptr<Subject> subjects[3];
  std::unique_ptr<Subject>& made = subjects[static_cast<int>(kind)];
  if (made == nullptr) made = makeSubject(kind);
  return *made;
}

}  // namespace korvan::test
