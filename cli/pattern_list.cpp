#include "cli/pattern_list.hpp"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string_view>
#include <system_error>

namespace kglob {
namespace {

struct CloseFile {
  void operator()(std::FILE* file) const {
    if (file != stdin) static_cast<void>(std::fclose(file));  // only read
  }
};
struct Free {
  void operator()(char* text) const { std::free(text); }
};

}  // namespace

std::vector<std::string> allPatterns(Options const& options) {
  std::vector<std::string> patterns = options.patterns;
  if (options.patternsFrom.empty()) return patterns;
  bool const isStandardInput = options.patternsFrom == "-";
  std::string const what = "patterns from " + (isStandardInput ? "standard input" : options.patternsFrom);
  std::unique_ptr<std::FILE, CloseFile> const file(isStandardInput ? stdin
                                                                   : std::fopen(options.patternsFrom.c_str(), "re"));
  char const end = options.nullEnded ? '\0' : '\n';
  std::size_t capacity = 0;
  std::unique_ptr<char, Free> buffer;
  for (;;) {
    char* text = buffer.release();
    ssize_t const length = file ? getdelim(&text, &capacity, end, file.get()) : -1;
    buffer.reset(text);
    if (length < 0) break;
    std::string_view line(text, static_cast<std::size_t>(length));
    if (line.ends_with(end)) line.remove_suffix(1);
    if (line.find('\0') != std::string_view::npos)
      throw std::runtime_error(what + ": there is a NUL byte within a line; with -0 it ends a pattern");
    if (!line.empty()) patterns.emplace_back(line);
  }
  if (!file || std::ferror(file.get()) != 0)
    throw std::runtime_error("cannot read " + what + ": " + std::generic_category().message(errno));
  return patterns;
}

}  // namespace kglob
