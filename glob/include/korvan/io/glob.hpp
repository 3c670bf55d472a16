#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "korvan/io/export.hpp"

/// File search by pattern, on local disks and in every storage that the host's storage layer reaches.
///
/// The pattern language:
///
///     pattern  =  [ root ] segment { "/" segment } [ "/" ]     a final "/": folders only
///     root     =  "/"                                          the local file system's root
///              |  scheme "://" [ [ authority ] "/" ]           an IRI: "file:///srv", "s3://bucket/x"
///     segment  =  "**"                                         any number of folders, including none; as the last
///                                                              segment: the folder itself and everything below it
///              |  { "*" | character }                          one name; "*" is any run of its characters, or none
///
/// - Every other character matches itself, code unit for code unit: "?", "[", "]", "{", "}", "!", "~", "$" and the
///   backslash have no meaning, and case matters. There is no escape character: a "*" in a name is matched by "*".
/// - In every segment but "**", adjacent stars count as one: "a**b" is "a*b", "***" is "*". A run "**/**" is one "**".
/// - Wildcards don't match a name that begins with "." and "**" doesn't enter such a folder, unless the search includes
///   dot files. A segment that itself begins with "." always matches them: ".*", ".git".
/// - A pattern without "*" is looked up as it is written, and comes back as it is written if something exists there.
/// - Links are followed; a link that leads nowhere is a file. "**" lists a link to a folder above it, and what follows
///   "**" is matched in it, but "**" doesn't descend into it, so that every search ends.
/// - A relative pattern is searched below the root folder and has relative matches. An IRI ignores the root folder. So
///   does an absolute local pattern, unless the root folder is an IRI: then it is taken in that IRI's scheme, so that
///   with the root folder "s3://bucket/x" the pattern "/data/*" lists the bucket "data".
/// - An authority with a "*" is a segment: "s3://*" matches the account's buckets, "s3://log-*/x" looks into some of
///   them, and "s3://**" matches everything in all of them. Where the account can't be listed, nothing matches.
/// - In an IRI, characters that it can't contain are percent-encoded: "file:///a%20b/*". An encoded "*", "%2A", means
///   the character itself only in segments before the first wildcard; from the first segment with a "*" on, it is a
///   wildcard like "*" itself.
///
/// Matches come in the order of the walk: the entries of a folder in code point order, each folder before what is below
/// it. Nothing is sorted afterwards, and a match found in two ways ("**/a/**/x") is returned twice.
///
///     pattern          matches                              does not match
///     *.txt            a.txt                                .txt  d/a.txt  A.TXT
///     */               every folder, as "d/"                files
///     d*/x             d/x  d1/x                            e/x  d/e/x
///     **               all below the root folder            the root folder itself
///     a/**             a  a/b  a/b/c                        a/.b
///     **/*.txt         a.txt  d/a.txt  d/e/a.txt            .d/a.txt
///     d/**/x           d/x  d/e/x  d/e/f/x                  dx  e/x
///     .git/*           everything in .git but dot files     .git/.x
///     *.*              a.txt  b.                            README
///     a?.txt           the one name "a?.txt"                ab.txt
///     {a,b}            the one name "{a,b}"                 a  b
namespace korvan::io::internal {

/// The paths that match the pattern, as texts (UTF-16), in walk order; empty if nothing matches and for an empty
/// pattern. They end in a separator when the pattern does.
///
/// `rootFolder` is a local path or an IRI; the empty text and a relative path are taken from the process's current
/// folder. With `includeDotFiles` wildcards also match names that begin with ".", and "**" enters such folders.
///
/// An unreadable folder below a wildcard has no matches, and the search goes on; a
/// `foundation::storage::vfs::ReadSession` that is open around the call records each such folder. Throws the storage
/// layer's exceptions for a malformed IRI or a scheme that isn't served, and when something that the pattern names
/// literally can't be looked up; `fl::filesystem::FsysExceptionBase` when the current folder can't be determined;
/// `Quindarel::System::InterruptException` when the host's pending flag is set.
///
/// Costs one listing for each folder that a wildcard is matched in, and at most one existence test for each literal
/// segment below a wildcard, for each folder in which a "**" begins and for each entry under it, besides what the
/// storage layer asks to recognise cycles; a read session answers most of them from its cache. Uses a bounded part of
/// the thread's stack, whatever the pattern and the tree. May be called by several threads at once.
KORVAN_IO_EXPORT std::vector<std::u16string> glob(std::u16string const& pattern, std::u16string const& rootFolder,
                                                  bool includeDotFiles);

/// The same matches in the same order, each fetched as soon as it is found: `**/*.csv` returns its first match as soon
/// as the folder with it has been read. Matches are not collected, so memory doesn't grow with their number, and a
/// stream that is dropped reads no further. Everything else is as above. To be used by one thread at a time, always
/// with the same read session open, if any. Movable; a moved-from stream may only be assigned to or destroyed.
class GlobStream {
 public:
  /// Reads nothing yet. Throws for a malformed IRI or a scheme that isn't served.
  KORVAN_IO_EXPORT GlobStream(std::u16string const& pattern, std::u16string const& rootFolder, bool includeDotFiles);
  KORVAN_IO_EXPORT GlobStream(GlobStream&&) noexcept;
  KORVAN_IO_EXPORT GlobStream& operator=(GlobStream&&) noexcept;
  KORVAN_IO_EXPORT ~GlobStream();

  /// The next match, valid until the next call; nothing once there are no more. An exception ends the search.
  KORVAN_IO_EXPORT std::optional<std::u16string_view> next();

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace korvan::io::internal
