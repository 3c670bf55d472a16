#pragma once

#include <string>
#include <string_view>

/// Where a match is, whatever form the search gives it in.
namespace kglob {

/// Completes relative matches.
class MatchLocation {
 public:
  explicit MatchLocation(std::string const& rootFolder);

  /// The match as an absolute path or an IRI: one that is relative to a root folder in a store is encoded as an IRI.
  std::string absolute(std::string_view match) const;

  /// The folder that relative matches start from: an absolute path or an IRI.
  std::string const& root() const noexcept { return root_; }

  static bool isRelative(std::string_view match);

 private:
  std::string root_;
  bool isIRI_;
};

/// The IRI of a local absolute path or of a match that is one already, all in ASCII as RFC 3986 wants it.
std::string linkTarget(std::string_view location);

/// An IRI with its percent-encodings undone; every other text as it is.
std::string decoded(std::string_view location);

}  // namespace kglob
