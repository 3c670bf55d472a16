#pragma once

#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "foundation/storage/vfs/read_session.hpp"
#include "korvan/io/glob.hpp"
#include "support/text.hpp"

namespace korvan::test {

using Strings = std::vector<std::string>;
using foundation::storage::vfs::ReadSession;

/// The core search, with bytes in and out.
inline Strings search(std::string const& pattern, std::string const& root, bool includeDotFiles = false) {
  return toBytes(io::internal::glob(toText(pattern), toText(root), includeDotFiles));
}

/// Expects that the searches of one session with the policy find these matches one after the other, even if its cache
/// is too small for any folder.
inline void expectSearches(std::vector<std::pair<std::string, Strings>> const& expected, std::string const& root,
                           foundation::storage::vfs::SessionPolicy const& policy) {
  for (std::size_t const memory : {ReadSession::defaultMemoryBound, std::size_t{300}}) {
    ReadSession session(memory, policy);
    for (auto const& [pattern, matches] : expected) {
      session.beginSearch();
      EXPECT_EQ(search(pattern, root), matches) << pattern << " in " << root << " in " << memory << " bytes";
    }
    EXPECT_TRUE(session.failedListings().empty()) << session.failedListings()[0].what();
  }
}

/// Expects these matches of the search, without a session, in one, and in one whose cache is too small for any folder.
inline void expectSearch(Strings const& expected, std::string const& pattern, std::string const& root,
                         bool includeDotFiles = false) {
  SCOPED_TRACE("\"" + pattern + "\" in " + root + (includeDotFiles ? " with dot files" : ""));
  ASSERT_EQ(search(pattern, root, includeDotFiles), expected);
  for (std::size_t const memory : {ReadSession::defaultMemoryBound, std::size_t{300}}) {
    ReadSession const session(memory);
    ASSERT_EQ(search(pattern, root, includeDotFiles), expected) << "in a session of " << memory << " bytes";
    ASSERT_TRUE(session.failedListings().empty()) << session.failedListings()[0].what();
  }
}

}  // namespace korvan::test
