#pragma once

#include <string>
#include <vector>

#include "korvan/io/export.hpp"

/// File search by pattern, on local disks and in every storage that the host's storage layer reaches.
///
/// The pattern language:
///
///     pattern  =  [ root ] segment { "/" segment } [ "/" ]     a final "/": folders only
///     root     =  "/"                                          the local file system's root
///              |  scheme "://" [ authority ] "/"               an IRI: "file:///srv", "s3://bucket"
///     segment  =  "**"                                         any number of folders, none included; as the last
///     segment: every entry
///                                                              below, and the folder itself
///              |  { "*" | character }                          one name; "*" is any run of its characters, none
///              included
///
/// - Every other character stands for itself, to the code unit: "?", "[", "]", "{", "}", "!", "~", "$" and the
/// backslash have no meaning, and
///   case matters. There is no escape: a "*" in a name is found by "*".
/// - A segment of more than "**" that holds stars is one name: "a**b" is "a*b", "***" is "*". Runs "**/**" are one
/// "**".
/// - Wildcards don't match a name that begins with "." and "**" doesn't enter such a folder, unless the search includes
/// dot files. A
///   segment that begins with "." itself matches them always: ".*", ".git".
/// - A pattern without "*" is looked up as it is written, and comes back as it is written when something stands there.
/// - Links are followed; a link that leads nowhere is a file. "**" lists a link to a folder around it, and matches in
/// it what follows,
///   but doesn't descend into it, so that every search ends.
/// - A relative pattern is searched below the root folder and gives relative matches; an absolute pattern or an IRI
/// ignores the root
///   folder. In an IRI, name characters that it can't hold are percent-encoded: "file:///a%20b/*".
///
/// Matches come in the order of the walk: the entries of a folder in code point order, each folder before what is below
/// it. Nothing is sorted afterwards and a match found in two ways ("**/a/**/x") is given twice.
///
///     pattern          matches                              does not match
///     *.txt            a.txt                                .txt  d/a.txt  A.TXT
///     */               every folder, as "d/"                files
///     d*/x             d/x  d1/x                            e/x  d/e/x
///     **               all below the root folder            the root folder itself
///     a/**             a  a/b  a/b/c                        a/.b
///     **/*.txt         a.txt  d/a.txt  d/e/a.txt            .d/a.txt
///     d/**/x           d/x  d/e/x  d/e/f/x                  dx  e/x
///     .git/*           what .git holds, but dot files       .git/.x
///     *.*              a.txt  b.                            README
///     a?.txt           the one name "a?.txt"                ab.txt
///     {a,b}            the one name "{a,b}"                 a  b
namespace korvan::io::internal {

/// The paths that match the pattern, as texts (UTF-16), in walk order; empty where nothing matches and for an empty
/// pattern. They end in a separator when the pattern does.
///
/// `rootFolder` is a local path or an IRI; the empty text and a relative path are taken from the process's current
/// folder. With `includeDotFiles` wildcards also match names that begin with ".", and "**" enters such folders.
///
/// A folder below that can't be read gives nothing, and the rest is searched. Throws the storage layer's exceptions for
/// a malformed IRI or a scheme that isn't served, and when something that the pattern names literally can't be looked
/// at; `fl::filesystem::FsysExceptionBase` when the current folder can't be told;
/// `Quindarel::System::InterruptException` when the host's pending flag is set.
///
/// Costs one listing for each folder that a wildcard is matched in, one existence test for each literal segment below a
/// wildcard and for each entry under "**"; a host's read session answers most of them from what was read. May be called
/// by several threads at once.
KORVAN_IO_EXPORT std::vector<std::u16string> glob(std::u16string const& pattern, std::u16string const& rootFolder,
                                                  bool includeDotFiles);

}  // namespace korvan::io::internal
