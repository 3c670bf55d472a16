#include <chrono>
#include <memory>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "foundation/storage/vfs/read_session.hpp"
#include "support/hooked_provider.hpp"
#include "support/search.hpp"

// How many requests a search of a store of flat keys may cost, with 1,000 keys a page. A change that saves requests for
// one shape at the cost of another fails here.

namespace korvan::test {
namespace {

using foundation::storage::vfs::ReadSession;

void addFiles(Tree& tree, std::string const& folder, int count) {
  for (int i = 1000; i < 1000 + count; ++i) {
    tree.addFile(folder + "/x" + std::to_string(i) + (i % 2 == 0 ? ".csv" : ".txt"));
  }
}

TEST(StoreRequests, AreFew) {
  Tree threeLevels;
  Tree flat;
  Tree deep;
  Tree fewHuge;
  Tree large;
  Tree chain;
  Tree punctuated;  // the keys below "n" come after those below "n-x", although "n" is listed first
  Tree filesFirst;
  for (int i = 0; i < 40; ++i) addFiles(large, "f" + std::to_string(1000 + i), 1100);
  for (int depth = 0; depth < 30; ++depth) {
    std::string folder;
    for (int i = 0; i < depth; ++i) folder += "d/";
    for (int i = 0; i < 1200; ++i) chain.addFile(folder + "x" + std::to_string(1000 + i));
  }
  for (std::string const name : {"n", "n!", "n-x", "n.d"}) addFiles(punctuated, name, 2000);
  for (int i = 0; i < 2900; ++i) filesFirst.addFile("a" + std::to_string(1000 + i));
  for (int i = 0; i < 5; ++i) addFiles(filesFirst, "z" + std::to_string(i), 3000);
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
      {"three levels", threeLevels, {"**"}, 20555, 22},
      {"three levels", threeLevels, {"**/*.csv"}, 10000, 22},
      {"three levels", threeLevels, {"*/*/*/x1008.csv"}, 500, 26},
      {"three levels", threeLevels, {"d3/d4/*/x1008.csv"}, 10, 1},
      {"flat", flat, {"**"}, 20500, 21},
      {"flat", flat, {"*/*.csv"}, 10000, 21},
      {"flat", flat, {"*/x1008.csv"}, 500, 21},
      {"flat", flat, {"f1077/**"}, 41, 1},
      {"deep", deep, {"**/*.csv"}, 10000, 21},
      {"deep", deep, {"*/d/d/x1008.csv"}, 50, 21},
      {"deep", deep, {"c1/**", "c10/**"}, 820, 2},
      {"few huge", fewHuge, {"**"}, 20500, 21},
      {"few huge", fewHuge, {"*/*.csv"}, 10000, 21},
      {"few huge", fewHuge, {"*/x5008.csv"}, 4, 18},
      {"few huge", fewHuge, {"f1060/x11*.csv"}, 50, 1},
      {"large", large, {"**"}, 44040, 45},
      {"chain", chain, {"**"}, 36029, 38},
      {"punctuated", punctuated, {"**"}, 8004, 9},
      {"files first", filesFirst, {"*"}, 2905, 4},
      {"files first", filesFirst, {"*", "**"}, 20810, 19},
  };
  MemoryProvider::Options options;
  options.subtreePage = 1000;
  for (auto const& [shape, tree, patterns, matches, requests] : cases) {
    auto const store = std::make_shared<MemoryProvider>(tree, options);
    std::size_t oneByOne = 0;
    for (std::size_t const inFlight : {0U, 4U, 16U}) {
      SCOPED_TRACE(shape + (" " + patterns[0]) + " with " + std::to_string(inFlight) + " requests in flight");
      store->forgetRequests();
      auto const wait = [](auto, auto const&) { std::this_thread::sleep_for(std::chrono::milliseconds(1)); };
      ServedScheme const mem(u"mem", std::make_shared<HookedProvider>(store, inFlight, wait));
      ReadSession const session;
      Strings found;
      for (auto const& pattern : patterns) {
        Strings const more = search(pattern, "mem:///");
        found.insert(found.end(), more.begin(), more.end());
      }
      EXPECT_EQ(found.size(), matches);
      if (inFlight == 0) oneByOne = store->requests();
      EXPECT_LE(store->requests(), inFlight == 0 ? requests : oneByOne + store->pages() + 2 * inFlight);
    }
  }
}

TEST(StoreRequests, OfAnAccountAreOneForItsBucketsAndThoseInEachBucket) {
  Tree account;
  for (std::string const bucket : {"b1", "b2", "log"}) addFiles(account, bucket + "/d", 10);
  struct {
    std::string pattern;
    std::size_t matches, requests;
  } const cases[] = {
      {"mem://", 1, 1},    {"mem://*", 3, 1},     {"mem://b*/", 2, 1},          {"mem://*/d/x1001.txt", 3, 7},
      {"mem://**", 37, 4}, {"mem://**/b2", 1, 4}, {"mem://b*/**/*.csv", 10, 3},
  };
  MemoryProvider::Options options{vfs::Provider::Authority::required};
  options.subtreePage = 1000;
  auto const store = std::make_shared<MemoryProvider>(account, options);
  ServedScheme const mem(u"mem", store);
  for (auto const& [pattern, matches, requests] : cases) {
    store->forgetRequests();
    ReadSession const session;
    EXPECT_EQ(search(pattern, "").size(), matches) << pattern;
    EXPECT_LE(store->requests(), requests) << pattern;
  }
}

// Another account's bucket may be named, although it isn't an entry of this account.
TEST(StoreRequests, AnAccountsListDoesNotDenyOtherBuckets) {
  MemoryProvider::Options options{vfs::Provider::Authority::required};
  options.subtreePage = 1000;
  auto const store = std::make_shared<MemoryProvider>(Tree().addFile("own/x"), options);
  ServedScheme const mem(u"mem", store);
  ReadSession const session;
  EXPECT_EQ(search("mem://o*", ""), Strings{"mem://own"});
  EXPECT_EQ(search("mem://**", ""), (Strings{"mem://", "mem://own", "mem://own/x"}));
  store->tree.addFile("other/x");
  EXPECT_EQ(search("mem://**/other", ""), Strings{});
  EXPECT_EQ(search("mem://other", ""), Strings{"mem://other"});
  EXPECT_EQ(search("mem://other/**", ""), (Strings{"mem://other/", "mem://other/x"}));
  EXPECT_EQ(store->mostRequests(MemoryProvider::Operation::list), 1U);
}

}  // namespace
}  // namespace korvan::test
