#include "foundation/storage/vfs/session/key_parts.hpp"

#include <algorithm>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "foundation/core/text/bytes.hpp"
#include "support/text.hpp"

namespace korvan::test {
namespace {

namespace vfs = foundation::storage::vfs;
using vfs::KeyParts;
using Strings = std::vector<std::string>;

using Order = std::function<bool(std::string const&, std::string const&)>;

vfs::SubtreePage pageOf(Strings const& keys, std::string const& after, std::size_t size,
                        Order const& comesBefore = std::less<>()) {
  auto const first = std::upper_bound(keys.begin(), keys.end(), after, comesBefore);
  auto const last = first + std::min<std::ptrdiff_t>(static_cast<std::ptrdiff_t>(size), keys.end() - first);
  Strings const paths(first, last);
  if (!std::is_sorted(first, last) || (!paths.empty() && paths.front() <= after))
    return {.paths = {}, .position = {}, .isOrdered = false};
  return {.paths = paths, .last = last == keys.end(), .position = {}};
}

// Reads all keys by parts, in a world where all requests in flight take equally long.
struct Reading {
  Strings const& keys;
  std::size_t pageSize = 1000;
  std::size_t inFlight = 16;
  Strings folders{};  // that become known after the first page
  bool isCertain = true;
  std::size_t memory = 1 << 20;
  std::function<bool()> fails = [] { return false; };               // of a request that is made ahead
  std::function<bool()> staysInFlight = [] { return false; };       // for longer than others
  std::function<std::string(std::string)> skips = std::identity();  // what is between this path and the one returned

  Order comesBefore = std::less<>();

  bool isOrdered = true;
  Strings found{};
  std::size_t requests = 0;
  std::size_t rounds = 0;  // how often the reader waited for requests
  std::size_t mostReady = 0;

  void run() {
    vfs::Visibility const visibility({});
    KeyParts parts(visibility);
    vfs::SubtreeRequest request{vfs::AbsoluteIRI(u"file:///")};
    std::vector<KeyParts::Fetch> inTheAir;
    std::size_t window = 0;
    parts.select(request);
    for (bool isLast = false; !isLast;) {
      auto const state = parts.seek(request, isCertain);
      if (state == KeyParts::State::ready) {
        auto const page = parts.take();
        isOrdered = page.isOrdered;
        found.insert(found.end(), page.paths.begin(), page.paths.end());
        request.page = page.nextPage;
        if (!page.paths.empty()) request.after = page.paths.back();
        std::string const past = skips(request.after);
        if (past != request.after) request.page.clear();
        request.after = past;
        isLast = page.last;
        if (window == 0) parts.addFolders(folders);
        window = std::min(inFlight, 2 * window + 1);
        continue;
      }
      if (state == KeyParts::State::missing) finish(parts, parts.fetchWanted(), false), ++rounds;
      while (inTheAir.size() < window) {
        auto fetch = parts.fetchAhead({window, memory});
        if (!fetch) break;
        inTheAir.push_back(*std::move(fetch));
      }
      if (state == KeyParts::State::coming) ++rounds;
      std::vector<KeyParts::Fetch> later;
      for (auto const& fetch : inTheAir) {
        if (staysInFlight())
          later.push_back(fetch);
        else
          finish(parts, fetch, fails());
      }
      inTheAir = std::move(later);
    }
  }

  void finish(KeyParts& parts, KeyParts::Fetch const& fetch, bool hasFailed) {
    ++requests;
    hasFailed ? parts.fail(fetch) : parts.add(fetch, pageOf(keys, fetch.request.after, pageSize, comesBefore));
  }
};

std::string numbered(char const* before, int number, char const* after) {
  return before + std::to_string(1'000'000 + number).substr(1) + after;
}

// Whatever is guessed, fails, or comes late: each key comes once, in order.
TEST(KeyParts, HaveEveryKeyOnce) {
  std::mt19937 random(1);
  for (int round = 0; round < 3000; ++round) {
    auto const upTo = [&](unsigned most) { return static_cast<std::size_t>(random() % most); };
    auto const randomPath = [&] {
      std::string path;
      for (std::size_t length = 1 + upTo(6); path.size() < length;) path += "ab/01\xC3"[upTo(6)];
      return path;
    };
    Strings keys;
    for (std::size_t count = upTo(120); keys.size() < count;) keys.push_back(randomPath());
    std::sort(keys.begin(), keys.end());
    keys.erase(std::unique(keys.begin(), keys.end()), keys.end());
    Reading reading{.keys = keys, .pageSize = 1 + upTo(8), .inFlight = upTo(18), .isCertain = upTo(3) != 0};
    for (std::size_t count = upTo(9); reading.folders.size() < count;) reading.folders.push_back(randomPath() + '/');
    std::sort(reading.folders.begin(), reading.folders.end());
    std::string const skipped = upTo(3) == 0 ? randomPath() : std::string("~");  // with all below it
    Strings expected;
    for (std::string const& key : keys)
      if (!key.starts_with(skipped)) expected.push_back(key);
    reading.skips = [&](std::string const& after) { return after.starts_with(skipped) ? skipped + '\xFF' : after; };
    reading.fails = [&] { return upTo(10) == 0; };
    reading.staysInFlight = [&] { return upTo(3) == 0; };
    reading.run();
    std::erase_if(reading.found, [&](std::string const& path) { return path.starts_with(skipped); });
    ASSERT_EQ(reading.found, expected) << "round " << round;
  }
}

// Reading in parts notices what reading page by page would notice.
TEST(KeyParts, AreNotReadInAnotherOrderThanThatOfBytes) {
  std::mt19937 random(1);
  int unnoticed = 0;
  for (int round = 0; round < 3000; ++round) {
    Strings keys;
    while (keys.size() < 60)
      keys.push_back({"0123456789x"[random() % 11], "0123456789"[random() % 10], "012"[random() % 3]});
    Order const comesBefore = [](std::string a, std::string b) {
      for (auto* const text : {&a, &b}) std::replace(text->begin(), text->end(), 'x', '1');
      return a < b;
    };
    std::sort(keys.begin(), keys.end(), comesBefore);
    keys.erase(std::unique(keys.begin(), keys.end(), [&](auto const& a, auto const& b) { return !comesBefore(a, b); }),
               keys.end());
    Reading reading{.keys = keys, .pageSize = 3 + random() % 8};
    reading.comesBefore = comesBefore;
    reading.staysInFlight = [&] { return random() % 3 == 0; };
    reading.run();
    if (!reading.isOrdered) continue;
    ++unnoticed;
    ASSERT_EQ(reading.found, keys) << "round " << round;
  }
  EXPECT_LT(unnoticed, 300);
}

TEST(KeyParts, BeginWherePathsAreText) {
  Strings keys;
  for (int i = 0; i < 999; ++i) keys.push_back(numbered("d\xC3\xA9/\xE2\x82\xAC", i, ".bin"));
  keys.push_back(keys.back() + ".and more");
  for (int pages = 1; pages < 100; pages += 3) {
    std::string const point = vfs::KeySpacing(keys).after(keys.back(), pages);
    EXPECT_GT(point, keys.back());
    EXPECT_EQ(foundation::core::text::validUtf8Prefix(point), point);
  }
}

TEST(KeyParts, AreReadSideBySideWithFewRequestsMore) {
  std::mt19937 random(1);
  Strings inFolders, inOne, hexadecimal, words, folders, wordFolders;
  for (int i = 0; i < 2000; ++i) {
    folders.push_back(numbered("folder", i, "/"));
    for (int j = 0; j < 50; ++j) inFolders.push_back(folders.back() + numbered("f", j, ".csv"));
  }
  for (int i = 0; i < 100'000; ++i) inOne.push_back(numbered("f", i, ".csv"));
  while (hexadecimal.size() < 100'000) {
    std::string key;
    while (key.size() < 12) key += "0123456789abcdef"[random() % 16];
    hexadecimal.push_back(key);
  }
  for (int i = 0; i < 3000; ++i) {
    wordFolders.emplace_back();
    for (auto length = 3 + random() % 8; length != 0; --length)
      wordFolders.back() += "abcdefghijklmnopqrstuvwxyz"[random() % 26];
    wordFolders.back() += '/';
    auto const count = random() % 10 == 0 ? random() % 500 : random() % 20;
    for (std::size_t j = 0; j < count; ++j)
      words.push_back(wordFolders.back() + numbered("IMG", static_cast<int>(j), ".jpg"));
  }
  for (auto* const each : {&hexadecimal, &words, &wordFolders}) std::sort(each->begin(), each->end());
  struct {
    char const* shape;
    Reading reading;
    std::size_t requests, rounds;
  } cases[] = {
      {"folders", {.keys = inFolders, .folders = folders}, 110, 25},
      {"folders whose names are unknown", {.keys = inFolders}, 120, 25},
      {"keys that may not all be wanted", {.keys = inFolders, .isCertain = false}, 120, 25},
      {"one by one", {.keys = inFolders, .inFlight = 1, .folders = folders}, 100, 100},
      {"one folder", {.keys = inOne}, 120, 25},
      {"hexadecimal names", {.keys = hexadecimal}, 150, 40},
      {"words", {.keys = words, .folders = wordFolders}, 150, 40},
  };
  for (auto& [shape, reading, requests, rounds] : cases) {
    SCOPED_TRACE(shape);
    reading.run();
    EXPECT_EQ(reading.found.size(), reading.keys.size());
    EXPECT_LE(reading.requests, requests);
    EXPECT_LE(reading.rounds, rounds);
  }
}

TEST(KeyParts, AreHeldWithinLimits) {
  Strings keys;
  for (int i = 0; i < 10'000; ++i) keys.push_back(numbered("", i, ""));
  vfs::Visibility const visibility({});
  vfs::SubtreeRequest const request{vfs::AbsoluteIRI(u"file:///")};
  for (auto const& [limits, certain, pages] :
       {std::tuple(KeyParts::Limits{4, 1 << 20}, true, 17), std::tuple(KeyParts::Limits{4, 1}, true, 2),
        std::tuple(KeyParts::Limits{0, 1 << 20}, true, 1), std::tuple(KeyParts::Limits{4, 1 << 20}, false, 1)}) {
    KeyParts parts(visibility);
    parts.select(request);
    parts.seek(request, certain);
    auto fetch = std::optional(parts.fetchWanted());
    int requests = 0;
    for (; fetch && requests < 100; ++requests) {
      parts.add(*fetch, pageOf(keys, fetch->request.after, 10));
      fetch = parts.fetchAhead(limits);
    }
    EXPECT_LE(requests, pages);
    EXPECT_GE(requests, pages - 1);
  }
}

}  // namespace
}  // namespace korvan::test
