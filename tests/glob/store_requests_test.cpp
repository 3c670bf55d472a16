#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "foundation/storage/vfs/read_session.hpp"
#include "support/memory_provider.hpp"
#include "support/search.hpp"

// How many requests a search of a store of flat keys may cost, on trees of 20,000 keys in 500 folders: little more than
// it takes today. A change that saves requests for one shape at the cost of another fails here.

namespace korvan::test {
namespace {

using foundation::storage::vfs::ReadSession;

void addFiles(Tree& tree, std::string const& folder, int count) {
  for (int i = 0; i < count; ++i) {
    tree.addFile(folder + "/x" + std::to_string(i) + (i % 2 == 0 ? ".csv" : ".txt"));
  }
}

TEST(StoreRequests, AreFew) {
  Tree threeLevels;
  Tree flat;
  Tree deep;
  Tree fewHuge;
  for (int i = 0; i < 500; ++i) {
    std::string const name = "f" + std::to_string(1000 + i);
    addFiles(flat, name, 40);
    addFiles(fewHuge, name, i % 125 == 60 ? 4504 : 4);
    addFiles(threeLevels, "d" + std::to_string(i % 5) + "/d" + std::to_string(i / 5 % 10) + "/" + name, 40);
    std::string folder = "c" + std::to_string(i / 10);
    for (int depth = 0; depth < i % 10; ++depth) folder += "/d";
    addFiles(deep, folder, 40);
  }
  struct {
    char const* shape;
    Tree const& tree;
    Strings patterns;
    std::size_t matches, requests;
  } const cases[] = {
      {"three levels", threeLevels, {"**"}, 20555, 34},
      {"three levels", threeLevels, {"**/*.csv"}, 10000, 34},
      {"three levels", threeLevels, {"d3/d4/*/x8.csv"}, 10, 3},
      {"flat", flat, {"**"}, 20500, 24},
      {"flat", flat, {"*/*.csv"}, 10000, 23},
      {"flat", flat, {"*/x8.csv"}, 500, 24},
      {"flat", flat, {"f1077/*.csv"}, 20, 1},
      {"deep", deep, {"**/*.csv"}, 10000, 24},
      {"deep", deep, {"*/d/d/x8.csv"}, 50, 25},
      {"deep", deep, {"c1/**", "c10/**"}, 820, 2},
      {"few huge", fewHuge, {"**"}, 20500, 17},
      {"few huge", fewHuge, {"*/x8.csv"}, 4, 18},
      {"few huge", fewHuge, {"f1060/x1*.csv"}, 555, 2},
  };
  MemoryProvider::Options options;
  options.subtreePage = 1000;
  for (auto const& [shape, tree, patterns, matches, requests] : cases) {
    auto const store = std::make_shared<MemoryProvider>(tree, options);
    ServedScheme const mem(u"mem", store);
    ReadSession const session;
    std::size_t found = 0;
    for (auto const& pattern : patterns) found += search(pattern, "mem:///").size();
    EXPECT_EQ(found, matches) << shape << ' ' << patterns[0];
    EXPECT_LE(store->requests(), requests) << shape << ' ' << patterns[0];
  }
}

}  // namespace
}  // namespace korvan::test
