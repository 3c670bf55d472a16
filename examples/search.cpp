// search FOLDER FROM: prints the CSV files below a folder, each as it is reached from another folder.
#include <exception>
#include <iostream>

#include "foundation/core/text/bytes.hpp"
#include "korvan/io/glob.hpp"
#include "korvan/io/path.hpp"

using foundation::core::text::fromBytes;
using foundation::core::text::toBytesLossy;
using korvan::io::internal::Path;

int main(int argc, char** argv) try {
  if (argc != 3) return 2;
  Path const folder(fromBytes(argv[1]));  // a local path or an IRI: "/srv/data", "s3://bucket/data"
  Path const from(fromBytes(argv[2]));
  for (std::u16string const& match : korvan::io::internal::glob(u"**/*.csv", folder.string(false), false)) {
    Path const file = folder / match;
    Path const way = relative(file, from);  // empty where no relative path leads, as from a disk to a store
    bool const same = isSameFile(from / way.generic(false), file);
    std::cout << toBytesLossy(match) << ": " << (same ? toBytesLossy(way.string(false)) : "elsewhere") << "\n";
  }
} catch (std::exception const& error) {
  std::cerr << error.what() << "\n";
  return 2;
}
