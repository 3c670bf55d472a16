#pragma once

#include <stdexcept>
#include <string>
#include <string_view>
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
/// with a delimiter, no key continues past it and each common prefix ends with it; a page doesn't start before the end
/// of the previous one, and goes beyond it; no continuation token comes twice in a row. So a listing of any store ends.
class PageCheck {
 public:
  /// `after`: the key after which the listing starts; empty if it starts at the beginning.
  PageCheck(std::string prefix, bool delimited, std::string after = {});

  /// Throws `MalformedPage` if the page can't be the next one.
  void accept(ListPage const& page);

 private:
  void checkName(std::string const& name, bool isPrefix) const;

  std::string prefix_;
  bool delimited_;
  std::string last_;
  std::string token_;
  bool begun_ = false;
  unsigned emptyPages_ = 0;
};

}  // namespace foundation::storage::s3
