#include <memory>
#include <optional>
#include <random>
#include <string>

#include <gtest/gtest.h>
#include <pthread.h>

#include "support/memory_provider.hpp"
#include "support/search.hpp"
#include "support/temporary_folder.hpp"

namespace korvan::test {
namespace {

std::string repeated(std::string const& text, int times) {
  std::string all;
  for (int i = 0; i < times; ++i) all += text;
  return all;
}

// Runs on a thread with the stack that small hosts give theirs.
template <class Run>
void onSmallStack(Run run) {
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  ASSERT_EQ(pthread_attr_setstacksize(&attributes, std::size_t{256} << 10), 0);
  pthread_t thread;
  auto const entry = [](void* argument) -> void* {
    (*static_cast<Run*>(argument))();
    return nullptr;
  };
  ASSERT_EQ(pthread_create(&thread, &attributes, entry, &run), 0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
}

TEST(Limits, APatternOfAMillionSegmentsEndsOnASmallStack) {
  TemporaryFolder const folder;
  Tree tree;
  tree.addFile("d/e/x");
  tree.writeTo(folder);
  std::string const iri = "file://" + folder.path();
  constexpr int many = 1'000'000;
  struct {
    std::string pattern;
    Strings matches;
  } const cases[] = {
      {repeated("*/", many), {}},
      {repeated("**/", many) + "x", {"d/e/x"}},
      {repeated("**/d*/", many), {}},
      {"*" + std::string(many, '/') + "e/x", {"d/e/x"}},
      {repeated("a/", many) + "*", {}},
      {iri + "/*/" + repeated("%62*/", many), {}},
      {iri + "/*" + std::string(many, '/') + "e/x", {iri + "/d/e/x"}},
  };
  for (auto const& test : cases) {
    onSmallStack([&] { EXPECT_EQ(search(test.pattern, folder.path()), test.matches) << test.pattern.substr(0, 20); });
  }
}

TEST(Limits, ADeepTreeEndsOnASmallStack) {
  constexpr int levels = 2000;  // about as deep as a path can name
  TemporaryFolder const folder;
  Tree tree;
  tree.addFile(repeated("d/", levels) + "x");
  tree.writeTo(folder);
  for (bool const inSession : {false, true}) {
    onSmallStack([&] {
      std::optional<ReadSession> session;
      if (inSession) session.emplace();
      EXPECT_EQ(search("**/x", folder.path()), Strings{repeated("d/", levels) + "x"});
      EXPECT_EQ(search("**", folder.path()).size(), levels + std::size_t{1});
    });
  }
}

// Several "**" divide a chain of folders among them in more ways than can be counted.
TEST(Limits, WhatIsKnownToGiveNothingIsNotTriedAgain) {
  constexpr int levels = 80;
  Tree tree;
  tree.addFile(repeated("a/", levels) + "x");
  auto const store = std::make_shared<MemoryProvider>(tree);
  ServedScheme const served(u"mem", store);
  ReadSession const session;
  EXPECT_EQ(search(repeated("**/a/", 6) + "zzz*", "mem:///"), Strings());
  EXPECT_EQ(search("**/a/**/*/**/a/**/x/**/x", "mem:///"), Strings());
  // Every way to a match still counts.
  EXPECT_EQ(search("a/**/a/**/x", "mem:///").size(), static_cast<std::size_t>(levels - 1));
  EXPECT_EQ(search("**/a/**/a/**/x", "mem:///").size(), static_cast<std::size_t>(levels * (levels - 1) / 2));
  // Nor where each descent is refused a link back to a folder that it has come through.
  store->tree.addLink(repeated("a/", levels) + "loop", "");
  ReadSession const changed;
  EXPECT_EQ(search(repeated("**/a/", 6) + "zzz*", "mem:///"), Strings());
}

TEST(Limits, AStreamReadsNoFurtherThanItIsAsked) {
  std::mt19937 random(7);
  auto const store = std::make_shared<MemoryProvider>(Tree::random(random, 200, true));
  ServedScheme const served(u"mem", store);
  Strings const all = search("**/*", "mem:///");
  ASSERT_GT(all.size(), 20U);
  std::size_t requestsBefore = 0;
  for (std::size_t const wanted : {std::size_t{1}, std::size_t{2}, all.size() / 2, all.size()}) {
    ReadSession const session;
    store->forgetRequests();
    Strings given;
    io::internal::GlobStream stream(u"**/*", u"mem:///", false);
    while (given.size() < wanted) given.push_back(toBytes(stream.next().value()));
    EXPECT_EQ(given, Strings(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(wanted)));
    EXPECT_GE(store->requests(), requestsBefore);
    requestsBefore = store->requests();
    if (wanted == 1) {
      EXPECT_LE(requestsBefore, 2U) << "the first folder, for the descent and for the names in it";
    }
  }
}

}  // namespace
}  // namespace korvan::test
