#include <algorithm>
#include <chrono>
#include <iterator>
#include <memory>
#include <random>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "foundation/storage/vfs/conversion.hpp"
#include "foundation/storage/vfs/session/pending_reads.hpp"
#include "foundation/storage/vfs/session/read_limit.hpp"
#include "foundation/storage/vfs/session/read_window.hpp"
#include "foundation/storage/vfs/session/visibility.hpp"
#include "support/hooked_provider.hpp"
#include "support/oracle.hpp"
#include "support/search.hpp"

namespace korvan::test {
namespace {

using namespace std::chrono_literals;
using vfs::PendingReads;
using Operation = MemoryProvider::Operation;
using Question = PendingReads::Question;

std::string described(bool isListing, vfs::AbsoluteIRI const& location) {
  return (isListing ? "list " : "look up ") + toBytes(std::u16string(location.encodedPath()));
}

// What the search requests of folders, in this order, without anything read ahead.
Strings requested(Tree const& tree, std::string const& pattern) {
  Strings all;
  auto const log = [&](Operation asked, vfs::AbsoluteIRI const& location) {
    bool const isListing = asked == Operation::list;
    bool const isOfFolder = tree.isFolder(vfs::decodedPath(isListing ? location : location.getParent()).substr(1));
    if (asked != Operation::identity && isOfFolder) all.push_back(described(isListing, location));
  };
  ServedScheme const mem(u"mem", std::make_shared<HookedProvider>(std::make_shared<MemoryProvider>(tree), 0, log));
  ReadSession const session;
  search(pattern, "mem:///", true);
  return all;
}

vfs::SearchOutline outlineOf(std::string pattern) {
  using Match = vfs::SearchOutline::Match;
  vfs::SearchOutline outline{vfs::AbsoluteIRI(u"file:///"), {}, true};
  for (pattern += '/'; !pattern.empty(); pattern.erase(0, pattern.find('/') + 1)) {
    std::string const segment = pattern.substr(0, pattern.find('/'));
    bool const isFilter = segment.find('*') != std::string::npos;
    outline.segments.push_back({segment == "**" ? Match::descent
                                : isFilter      ? Match::filter
                                                : Match::name,
                                toText(segment)});
  }
  return outline;
}

// What is read if each read is made when it is predicted to be the next.
Strings predicted(Tree const& tree, std::string const& pattern) {
  vfs::SearchStates const search(outlineOf(pattern), vfs::Visibility({}));
  MemoryProvider store(tree);
  PendingReads pending;
  Strings all;
  auto const below = [&](vfs::AbsoluteIRI const& folder, vfs::SearchStates::Set states) {
    vfs::FolderSnapshot snapshot(folder, "");
    vfs::EntrySink sink(snapshot.entries, false);
    store.list(folder, "", sink);
    snapshot.entries.sort();
    all.push_back(described(true, folder));
    return PendingReads::Group::below(snapshot, search, states, false);
  };
  vfs::AbsoluteIRI const start(u"file:///");
  if (auto first = below(start, search.at(start))) pending.enterFirst(std::move(*first));
  while (auto const read = pending.takeNext()) {
    EXPECT_EQ(read->states, search.at(read->location)) << "as its path implies";
    if (read->question == Question::entries) {
      pending.enter(read->position, below(read->location, read->states));
      continue;
    }
    all.push_back(described(false, read->location));
    PendingReads::Group group(read->location.getParent());
    if (store.kind(read->location) == vfs::PathKind::isFolder) {
      group.add(search, read->states, toBytes(read->location.getName()));
    }
    pending.enter(read->position, std::move(group));
  }
  EXPECT_EQ(pending.size(), 0U);
  return all;
}

TEST(Prediction, IsTheOrderOfTheSearch) {
  Tree tree;
  for (std::string const top : {"a", "a-1", "d1", "d2", "z"}) {
    for (std::string const middle : {"b/c", "d/e", "x.d", "z"}) tree.addFile(top + "/" + middle + "/f.txt");
  }
  tree.addFile("d2/d/e/a/b").addLink("link", "a").addFolder("a/.dot/d");
  for (std::string const pattern : {"*", "**", "**/*.txt", "**/", "*/*/*.txt", "*/d", "*/d/e", "*/d/e/*", "*/d/*",
                                    "d*/**", "*/b/**", "**/d*/**/*.txt", "*//d/*", "**/**", "*/./d", "a*/nothing/*"}) {
    auto expected = requested(tree, pattern);
    auto const isOfLink = [](std::string const& read) { return read.find("/link") != std::string::npos; };
    std::erase_if(expected, isOfLink);
    auto actual = predicted(tree, pattern);
    if (pattern == "*/./d") expected.resize(1);  // only what precedes it is predicted
    EXPECT_EQ(actual, expected) << pattern;
  }
}

// A folder that is listed later may be looked in before; each folder is listed once at most.
TEST(Prediction, LeavesNoListingOut) {
  std::mt19937 random(3);
  for (int round = 0; round < 400; ++round) {
    Tree const tree = Tree::random(random, 40, false);
    std::string const pattern = "**/" + randomPattern(random);
    if (hasDotOrEmptySegment(pattern)) continue;
    auto expected = requested(tree, pattern);
    auto actual = predicted(tree, pattern);
    std::sort(expected.begin(), expected.end());
    std::sort(actual.begin(), actual.end());
    EXPECT_EQ(std::adjacent_find(actual.begin(), actual.end()), actual.end()) << pattern;
    Strings missing;
    std::set_difference(expected.begin(), expected.end(), actual.begin(), actual.end(), std::back_inserter(missing));
    std::erase_if(missing, [](std::string const& read) { return !read.starts_with("list"); });
    EXPECT_EQ(missing, Strings()) << pattern;
  }
}

TEST(PendingReads, ForgetsWhatTheSearchHasPassed) {
  vfs::SearchStates const search(outlineOf("*/*"), vfs::Visibility({}));
  vfs::FolderSnapshot snapshot(vfs::AbsoluteIRI(u"file:///"), "");
  for (auto const* const name : {"a", "b%", "c", "d"}) snapshot.entries.add(name, EntryKind::folder);
  PendingReads pending;
  pending.enterFirst(*PendingReads::Group::below(snapshot, search, search.at(snapshot.location), false));
  EXPECT_FALSE(pending.takeRequested(Question::kind, vfs::AbsoluteIRI(u"file:///b%25")));
  EXPECT_TRUE(pending.takeRequested(Question::entries, vfs::AbsoluteIRI(u"file:///b%25")));
  EXPECT_FALSE(pending.takeRequested(Question::entries, vfs::AbsoluteIRI(u"file:///b%25/")));
  EXPECT_EQ(pending.size(), 2U);
  auto const next = pending.takeNext();
  ASSERT_TRUE(next);
  EXPECT_EQ(next->location.toString(), u"file:///c");
  pending.clear();
  EXPECT_FALSE(pending.takeNext());
}

TEST(ReadWindow, Follows) {
  // h: 4 hits; c: a read that computes; w: three that wait; p: three that are preempted; t: three that are traced;
  // s: shrink; l: limit to 3; n: the next search
  struct {
    std::size_t cores, mostReads;
    std::string events;
    std::size_t size;
  } const cases[] = {
      {4, 32, "chhhhhhh", 0},
      {4, 32, "chhhhhhhh", 1},
      {4, 32, "chhhhhhhhh", 2},
      {4, 32, "chhhhhhhhhhhhhhhhhhhhhhhhh", 3},
      {1, 32, "chhhhhhhhhhh", 0},
      {4, 0, "whhhhhhhhhhh", 0},
      {1, 32, "wh", 2},
      {1, 32, "phth", 0},
      {1, 32, "whhhh", 8},
      {1, 32, std::string("w") + std::string(100, 'h'), 31},
      {1, 5, std::string("w") + std::string(100, 'h'), 4},
      {4, 1, std::string("w") + std::string(100, 'h'), 0},
      {4, 2, "chhhhhhhhhhhhhhhhhhhhhhhhh", 1},
      {2, 32, "whhhhcccccccccccccccccccccccccccccccccccccccch", 1},
      {1, 32, "whhhhs", 4},
      {1, 32, "whhhhl", 3},
      {1, 32, "whhhhlhhhhhh", 3},
      {1, 32, "whhhhn", 0},
  };
  for (auto const& [cores, mostReads, events, size] : cases) {
    vfs::ReadWindow window(cores);
    for (char const event : events) {
      if (event == 'c') window.noteRead({1ms, 1ms, 1});
      for (int i = 0; i < 3; ++i) {
        if (event == 'w') window.noteRead({1ms, 0ms, 1});
        if (event == 'p') window.noteRead({5ms, 1ms, 0});
        if (event == 't') window.noteRead({1ms, 0ms, 10});
      }
      if (event == 's') window.shrink();
      if (event == 'l') window.limit(3);
      if (event == 'n') window.close();
      for (int i = 0; event == 'h' && i < 4; ++i) window.noteHit(mostReads);
    }
    EXPECT_EQ(window.size(), size) << events;
    EXPECT_GE(window.ahead(), size);
  }
}

TEST(ReadLimit, IsThatOfThePolicyOrElseTheProviders) {
  MemoryProvider const provider{Tree()};
  for (auto const& [wanted, limit] : {std::pair{0U, 16U}, {1U, 1U}, {20U, 20U}, {99U, 64U}})
    EXPECT_EQ(vfs::ReadLimit({.readsInFlight = wanted}).of(provider), limit);
}

}  // namespace
}  // namespace korvan::test
