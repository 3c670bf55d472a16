// The search as a plain loop over std::filesystem in the current folder: what a caller without a glob would write.
#include <cstdio>
#include <filesystem>
#include <string>

#include "selection.hpp"

namespace fs = std::filesystem;

int main(int argc, char** argv) {
  korvan::bench::Selection const selection = korvan::bench::selectionFromArguments(argc, argv);
  std::size_t count = 0;
  fs::recursive_directory_iterator entry(".", fs::directory_options::skip_permission_denied);
  for (; entry != fs::recursive_directory_iterator(); ++entry) {
    std::string const& path = entry->path().native();
    std::size_t const depth = static_cast<std::size_t>(entry.depth()) + 1;
    if (path[path.rfind('/') + 1] == '.') {
      entry.disable_recursion_pending();
      continue;
    }
    ++count;
    if (!selection.descends(depth)) entry.disable_recursion_pending();
    if (!selection.countOnly && selection.selects(std::string_view(path).substr(2), depth, entry->is_directory())) {
      std::fwrite(path.data() + 2, 1, path.size() - 2, stdout);
      std::fputc('\n', stdout);
    }
  }
  if (selection.countOnly) std::printf("%zu\n", count);
  return std::fflush(stdout) == 0 ? 0 : 1;
}
