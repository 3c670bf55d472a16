#include "foundation/storage/vfs/detail/name_filter.hpp"

#include <algorithm>

#include "fuzz/input.hpp"
#include "support/oracle.hpp"

/// The filter agrees with a matcher that tries every possibility.
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  using korvan::fuzz::require;
  FuzzedDataProvider input(data, size);
  std::string const pattern = korvan::fuzz::takeBytes(input, 16);
  std::string const name = korvan::fuzz::takeBytes(input, 20);
  if (std::count(pattern.begin(), pattern.end(), '*') > 5) return 0;  // the slow matcher's time grows with each star

  foundation::storage::vfs::NameFilter const filter(korvan::test::toText(pattern));
  bool const matches = filter.matches(name);
  require(matches == korvan::test::nameMatches(name, pattern));
  require(!matches || name.starts_with(filter.literalHead()));
  require(matches || !filter.matchesAll());
  return 0;
}
