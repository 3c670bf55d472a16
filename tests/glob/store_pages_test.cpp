#include <algorithm>
#include <atomic>
#include <chrono>
#include <memory>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "support/hooked_provider.hpp"
#include "support/search.hpp"

namespace korvan::test {
namespace {

using namespace std::chrono_literals;

std::string numbered(char letter, int number) {
  return letter + std::to_string(1000 + number);
}

// A store's keys are read in parts side by side, as many as it can serve, with few requests more than one by one. What
// fails ahead is requested again when it is needed.
TEST(StorePages, AreReadInManyPartsAtATime) {
  Tree tree;
  for (int i = 0; i < 2000; ++i) tree.addFile("in one/" + numbered('f', i));
  for (int i = 0; i < 80; ++i) {
    for (int j = 0; j < 25; ++j) tree.addFile("in many/" + numbered('d', i) + "/" + numbered('f', j));
  }
  MemoryProvider::Options options;
  options.subtreePage = 20;
  auto const store = std::make_shared<MemoryProvider>(tree, options);
  struct {
    char const* pattern;
    std::size_t matches, requests;
    bool failsAhead;
  } const cases[] = {
      {"in one/*", 2000, 185, false},     {"in one/**", 2001, 185, false}, {"in many/**", 2081, 185, false},
      {"in many/**/*", 2080, 185, false}, {"in one/*", 2000, 250, true},   {"in many/**", 2081, 250, true},
  };
  auto const thisThread = std::this_thread::get_id();
  for (auto const& [pattern, matches, requests, failing] : cases) {
    SCOPED_TRACE(pattern);
    bool const failsAhead = failing;
    std::atomic<int> inFlight{0};
    std::atomic<int> most{0};
    std::atomic<int> made{0};
    auto const hook = [&](auto, vfs::AbsoluteIRI const& location) {
      int const now = ++inFlight;
      if (now > most) most = now;
      std::this_thread::sleep_for(10ms);
      --inFlight;
      if (failsAhead && std::this_thread::get_id() != thisThread && ++made % 7 == 0)
        throw vfs::Exception(vfs::ErrorCode::other, location, "injected");
    };
    store->forgetRequests();
    ServedScheme const mem(u"mem", std::make_shared<HookedProvider>(store, 16, hook));
    ReadSession const session;
    auto const found = search(pattern, "mem:///");
    EXPECT_EQ(found.size(), matches);
    EXPECT_LE(store->requests(), requests);
    EXPECT_TRUE(failsAhead || most >= 6) << most;
    EXPECT_TRUE(session.failedListings().empty());
  }
}

}  // namespace
}  // namespace korvan::test
