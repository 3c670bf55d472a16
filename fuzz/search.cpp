#include <algorithm>
#include <memory>
#include <optional>

#include "foundation/storage/vfs/read_session.hpp"
#include "fuzz/input.hpp"
#include "korvan/io/glob.hpp"
#include "support/memory_provider.hpp"
#include "support/oracle.hpp"

namespace korvan::fuzz {
namespace {

using test::MemoryProvider;
using test::Tree;

// Characters with a meaning in patterns, paths or encodings; few, so that patterns often match names.
std::string takeCharacters(FuzzedDataProvider& input, std::size_t longest) {
  constexpr std::string_view characters = "aaab..***///%?:\xC3\xA9\xFF";
  std::string text;
  for (std::size_t size = input.ConsumeIntegralInRange<std::size_t>(0, longest); size > 0; --size)
    text += characters[input.ConsumeIntegralInRange<std::size_t>(0, characters.size() - 1)];
  return text;
}

// Of at most so many links: with each, the ways through the tree multiply.
Tree takeTree(FuzzedDataProvider& input, unsigned links) {
  Tree tree;
  tree.addFolder(Tree::searchRoot);
  std::vector<std::string> folders{Tree::searchRoot};
  for (unsigned entries = input.ConsumeIntegralInRange(0U, 8U); entries > 0; --entries) {
    std::string name = takeCharacters(input, 3);
    std::erase(name, '/');
    if (name.empty() || name == "." || name == "..") continue;
    auto const any = [&] { return folders[input.ConsumeIntegralInRange<std::size_t>(0, folders.size() - 1)]; };
    std::string const path = any() + '/' + name;
    if (tree.resolve(path, false)) continue;
    unsigned const kind = input.ConsumeIntegralInRange(0U, links == 0 ? 2U : 3U);
    if (kind == 0) tree.addFile(path);
    if (kind == 3) {
      tree.addLink(path, any() + '/' + takeCharacters(input, 2));
      --links;
    }
    if (kind != 1 && kind != 2) continue;
    tree.addFolder(path);
    folders.push_back(path);
  }
  return tree;
}

}  // namespace
}  // namespace korvan::fuzz

/// A search finds what the slow matcher finds, in a store with folders or with flat keys, with and without a session.
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  using namespace korvan;
  FuzzedDataProvider input(data, size);
  bool const isFlat = input.ConsumeBool();
  bool const dots = input.ConsumeBool();
  std::size_t const memory = input.PickValueInArray({std::size_t{0}, std::size_t{300}, std::size_t{1} << 20});
  test::MemoryProvider::Options options;
  options.authority = isFlat ? test::MemoryProvider::Authority::required : test::MemoryProvider::Authority::empty;
  options.subtreePage = isFlat ? input.ConsumeIntegralInRange<std::size_t>(1, 5) : 0;
  options.marksEveryFolder = input.ConsumeBool();
  options.hidesKinds = input.ConsumeBool();
  std::string const pattern = fuzz::takeCharacters(input, 16);
  if (pattern.starts_with('/') || foundation::storage::vfs::hasIRIPrefix(test::toText(pattern))) return 0;
  if (isFlat && test::hasDotOrEmptySegment(pattern)) return 0;  // a flat store has no such folders

  test::Tree const tree = fuzz::takeTree(input, isFlat ? 0 : 3);
  test::ServedScheme const store(u"store", std::make_shared<test::MemoryProvider>(tree, options));
  auto const root = test::toText((isFlat ? "store://" : "store:///") + test::Tree::searchRoot);
  std::optional<foundation::storage::vfs::ReadSession> session;
  if (memory != 0) session.emplace(memory);
  auto const found = test::toBytes(io::internal::glob(test::toText(pattern), root, dots));
  fuzz::require(found == test::expectedMatches(tree, test::Tree::searchRoot, pattern, dots));
  return 0;
}
