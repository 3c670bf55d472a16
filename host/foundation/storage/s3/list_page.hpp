#pragma once

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace foundation::storage::s3 {

/// One page of a listing (ListObjectsV2), decoded.
struct ListPage {
  std::vector<std::string> keys;
  std::vector<std::string> commonPrefixes;
  bool truncated = false;         ///< whether more follows
  std::string continuationToken;  ///< what asks for it, when truncated
};

/// An answer that can't be a page of the listing that was asked for; says why, in a few words.
class BadPage : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Reads the XML of a page. Elements may stand in any order; unknown ones are passed over. Keys and prefixes are
/// decoded when the page says that they are encoded. Throws `BadPage` when the text isn't whole, isn't such a page, or
/// leaves open whether more follows.
ListPage parseListPage(std::string_view body);

/// Holds the pages of one listing to what was asked: all names begin with the prefix; with a delimiter no key goes past
/// it and each common prefix ends with it; each page begins no earlier than the one before ended, and goes further; a
/// token isn't given twice in a row. So a listing of any store ends.
class PageCheck {
 public:
  /// `after`: what the names must be greater than, for a listing that begins there; empty otherwise.
  PageCheck(std::string prefix, bool delimited, std::string after = {});

  /// Throws `BadPage` when the page can't be the next.
  void accept(ListPage const& page);

 private:
  void acceptName(std::string const& name, bool isPrefix) const;

  std::string prefix_;
  bool delimited_;
  std::string last_;
  std::string token_;
  bool begun_ = false;
  unsigned emptyPages_ = 0;
};

}  // namespace foundation::storage::s3
