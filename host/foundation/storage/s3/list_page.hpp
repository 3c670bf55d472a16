#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "foundation/storage/vfs/entry_facts.hpp"

namespace foundation::storage::s3 {

/// One page of a listing (ListObjectsV2), decoded.
struct ListPage {
  std::vector<std::string> keys;
  std::vector<std::string> commonPrefixes;
  bool truncated = false;         ///< whether more pages follow
  std::string continuationToken;  ///< what to request the next page with, if truncated
  /// Of each of `keys`, if they were asked for.
  std::vector<vfs::EntryFacts> facts = {};
};

/// A response that can't be a page of the requested listing. `what()` gives the reason in a few words.
class MalformedPage : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Parses the XML of a page. Elements may come in any order; unknown ones are ignored. Keys and prefixes are decoded if
/// the page says that they are encoded. Facts that a page lacks, or that can't be understood, are left out of
/// `ListPage::facts`. Throws `MalformedPage` if the text isn't well-formed, isn't a page of a
/// listing, or doesn't say whether more pages follow.
ListPage parseListPage(std::string_view body, bool withFacts = false);

/// Checks that the pages of one listing agree with the request and with each other: every name begins with the prefix;
/// with a delimiter, no key continues past it and each common prefix ends with it; no continuation token comes twice in a
/// row; each page has names that the previous ones don't have. So a listing of any store ends. Notices where a store
/// doesn't list in byte order, which the interface requires but not every store does.
class PageCheck {
 public:
  /// `after`: the key after which the listing starts; empty if it starts at the beginning. `token`: the continuation
  /// token that the listing starts with; may be empty.
  PageCheck(std::string prefix, bool delimited, std::string after = {}, std::string token = {});

  /// Throws `MalformedPage` if the page can't be the next one.
  void accept(ListPage const& page);

  /// Whether all pages so far came in byte order.
  bool isOrdered() const noexcept { return isOrdered_; }

 private:
  void checkName(std::string const& name, bool isPrefix) const;
  bool continues(ListPage const& page);
  bool hasNewNames(ListPage const& page);

  std::string prefix_;
  bool delimited_;
  std::string last_;  // the greatest name so far
  std::string token_;
  bool isOrdered_ = true;
  std::unordered_set<std::size_t> seen_;  // hashes of the names of a store that doesn't list in byte order
  unsigned emptyPages_ = 0;
};

}  // namespace foundation::storage::s3
