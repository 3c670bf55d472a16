// search FOLDER FROM: prints the CSV files below FOLDER, each with its path relative to FROM. Folders that can't be
// read are reported, and the exit status is then 2.
#include <exception>
#include <iostream>

#include "foundation/core/text/bytes.hpp"
#include "foundation/storage/vfs/read_session.hpp"
#include "korvan/io/glob.hpp"
#include "korvan/io/path.hpp"

using foundation::core::text::fromBytes;
using foundation::core::text::toBytesLossy;
using foundation::storage::vfs::ReadSession;
using korvan::io::internal::Path;

int main(int argc, char** argv) try {
  if (argc != 3) return 2;
  Path const folder(fromBytes(argv[1]));  // a local path or an IRI: "/srv/data", "s3://bucket/data"
  Path const from(fromBytes(argv[2]));
  ReadSession const session;  // without one, unreadable folders are skipped silently
  for (std::u16string const& match : korvan::io::internal::glob(u"**/*.csv", folder.string(false), false)) {
    Path const file = folder / match;
    Path const route = relative(file, from);  // empty if there is no relative path, as from a disk to a store
    bool const same = isSameFile(from / route.generic(false), file);
    std::cout << toBytesLossy(match) << ": " << (same ? toBytesLossy(route.string(false)) : "elsewhere") << "\n";
  }
  for (auto const& failure : session.failedListings()) std::cerr << failure.what() << "\n";
  return session.failedListings().empty() ? 0 : 2;
} catch (std::exception const& error) {
  std::cerr << error.what() << "\n";
  return 2;
}
