// Prints the CSV files below a folder, and how each is reached from the folder "notes" beside them.
#include <exception>
#include <iostream>

#include "foundation/core/text/bytes.hpp"
#include "glob/glob.hpp"
#include "path/path.hpp"

using foundation::core::text::fromBytes;
using foundation::core::text::toBytesLossy;
using korvan::io::internal::Path;

int main(int argc, char** argv) try {
  if (argc != 2) return 2;
  Path const folder(fromBytes(argv[1]));  // a local path or an IRI: "/srv/data", "s3://bucket/data"
  for (std::u16string const& match : korvan::io::internal::glob(u"**/*.csv", folder.string(false), false)) {
    Path const file = folder / match;
    Path const road = relative(file, folder / u"notes");
    bool const same = isSameFile(file, folder / u"notes" / road.generic(false));
    std::cout << toBytesLossy(match) << " " << toBytesLossy(road.string(false)) << (same ? "" : " leads elsewhere")
              << "\n";
  }
} catch (std::exception const& error) {
  std::cerr << error.what() << "\n";
  return 2;
}
