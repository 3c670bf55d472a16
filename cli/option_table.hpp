#pragma once

#include <algorithm>
#include <array>

#include "cli/option_row.hpp"

/// The options of kglob, each in one place. The command line is read and `--help` is put together from this table at
/// run time; the manual page and the completions of the shells are made from it when the program is built (see
/// cli/documents).
namespace kglob {

inline constexpr std::array optionTable = {
    OptionRow{'r', "root-folder", "FOLDER", &Options::rootFolders, "search below FOLDER, not the current folder",
              "FOLDER is a local folder or an IRI; absolute patterns and IRIs ignore it.", folders},
    OptionRow{'d', "include-dot-files", "", &Options::dotFiles, "let * and ** match names that begin with a dot"},
    OptionRow{
        'L', "follow", "", &Options::follow, "let ** enter links to folders",
        "Without it ** lists such a link and does not enter it. A link back to a folder above it is never entered."},
    OptionRow{'x', "one-file-system", "", &Options::oneFileSystem, "stay on the file system of the start folder",
              "The start folder is the part of the pattern before its first wildcard."},
    OptionRow{'E', "exclude", "NAME", &Options::excluded, "leave out entries called NAME, with all below",
              "In NAME * is any run of characters. Folders with such a name are not read. Names in the part of the "
              "pattern before its first wildcard are never left out. May be repeated."},
    OptionRow{'\0', "max-depth", "N", &Options::maxDepth, "go at most N levels below the fixed part",
              "The fixed part is that of the pattern before its first wildcard: with 1, ** matches what * does."},
    OptionRow{'j', "threads", "N", &Options::threads, "have at most N reads in flight",
              "These are folders read from a disk, or requests to a store. By default there are at most 32 on a disk "
              "and 16 in a store, and 64 is the most. With 1 the search runs on one thread. Reads that compute rather "
              "than wait take no more threads than there are processors. The matches and their order are the same."},
    OptionRow{'\0', "patterns-from", "FILE", &Options::patternsFrom, "read patterns from FILE, one a line; - is stdin",
              "They are searched after those of the command line. With -0 each ends with a NUL byte instead.", files},
    OptionRow{'t', "type", "KIND", &Options::types, "only files (f), folders (d) or links (l)",
              "A link is neither a file nor a folder, whatever it points to. May be repeated, to allow several.",
              "f d l"},
    OptionRow{
        '\0', "size", "SIZE", &Options::sizes, "only files of SIZE (+N at least, -N at most)",
        "SIZE is a number with an optional + or - before it and a unit behind it: b, k, m, g, t for powers of 1000, "
        "ki, mi, gi, ti for powers of 1024. May be repeated; a file must meet all."},
    OptionRow{
        '\0', "changed-within", "TIME", &Options::changedWithin, "only what was changed after TIME",
        "TIME is a duration before now (10min, 2h, 1d, 3weeks), a date and time (2024-01-31, \"2024-01-31 12:00:00\", "
        "2024-01-31T12:00:00Z), or @ and seconds since 1970."},
    OptionRow{'\0', "changed-before", "TIME", &Options::changedBefore, "only what was changed before TIME",
              "TIME is written as for --changed-within."},
    OptionRow{
        'u', "unique", "", &Options::unique, "show each match once",
        "A match is otherwise shown once for each way and each pattern that finds it. Needs memory for all matches."},
    OptionRow{'n', "limit", "N", &Options::limit, "stop after N matches"},
    OptionRow{'c', "count", "", &Options::count, "show only the number of matches"},
    OptionRow{'q', "quiet", "", &Options::quiet, "show nothing, stop at the first match"},
    OptionRow{'0', "null", "", &Options::nullEnded, "end each match with a NUL byte, escape nothing"},
    OptionRow{'a', "absolute", "", &Options::absolute, "show absolute paths, and IRIs in stores"},
    OptionRow{'\0', "decode", "", &Options::decode, "show IRIs without percent-encoding",
              "The result names the object for other programs, but is no pattern for kglob where it contains %."},
    OptionRow{
        'l', "long", "", &Options::longFormat, "show kind, size and time of change too",
        "The kind is f, d or l as for --type. On a disk each match costs one system call; a store tells them with the "
        "listing."},
    OptionRow{'h', "human-readable", "", &Options::humanSizes, "with -l, sizes in K, M, G; alone, this help",
              "The units are powers of 1024."},
    OptionRow{
        '\0', "json", "", &Options::json, "show each match as a JSON object, one a line",
        "Its members are path; root, the folder that a relative path starts from; kind (file, folder or link); size in "
        "bytes; mtime (RFC 3339); and for objects etag and storage_class. What is unknown is absent. A path that is "
        "not UTF-8 has its other bytes as \\xNN, and path_base64 has its exact bytes."},
    OptionRow{'\0', "color", "WHEN", &Options::colour, "use colors (auto, always or never)",
              "By default they are used on terminals, unless NO_COLOR is set.", "auto always never"},
    OptionRow{'\0', "hyperlink", "", &Options::hyperlink, "make names links on terminals",
              "For terminals that know the control sequence OSC 8."},
    OptionRow{'\0', "endpoint-url", "URL", &Options::endpointUrl, "send requests to the object store at URL",
              "The environment and the profile say which one by default; see ENVIRONMENT."},
    OptionRow{'\0', "region", "NAME", &Options::region, "the region of the object store"},
    OptionRow{'\0', "profile", "NAME", &Options::profile, "use the profile NAME for object stores",
              "Access keys in the environment are then ignored."},
    OptionRow{'\0', "no-sign-request", "", &Options::noSignRequest, "do not sign requests, as for public buckets"},
    OptionRow{'\0',
              "request-payer",
              "WHO",
              &Options::requestPayer,
              "WHO is requester, who pays for the requests",
              {},
              "requester"},
    OptionRow{'\0', "stats", "", &Options::stats, "report on standard error how much was read",
              "Counts folders, entries, requests to stores and bytes of their answers, and the time taken."},
    OptionRow{'\0', "help", "", &Options::help, "show this help"},
    OptionRow{'\0', "version", "", &Options::version, "show the version"},
};

static_assert(std::ranges::all_of(optionTable,
                                  [](OptionRow const& row) { return row.takesValue() == !row.placeholder.empty(); }),
              "an option has a placeholder if and only if it takes a value");
static_assert(
    std::ranges::all_of(optionTable,
                        [](OptionRow const& row) {
                          return row.help.find_first_of("'\\[]:") == std::string_view::npos;
                        }),
    "a help line is quoted in completions as it is, so it must not contain characters that are special there");

}  // namespace kglob
