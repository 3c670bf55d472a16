#include "support/oracle.hpp"

#include <algorithm>
#include <array>
#include <cstdint>
#include <functional>

#include "support/text.hpp"

namespace korvan::test {
namespace {

std::string join(std::string const& folder, std::string const& name) {
  if (folder.empty()) return name;
  return folder.back() == '/' ? folder + name : folder + "/" + name;
}

bool isWildcard(std::string_view text) {
  return text.find('*') != std::string_view::npos;
}

// Whether the text matches, by trying every length of every run.
bool textMatches(std::u16string_view text, std::u16string_view segment) {
  if (segment.empty()) return text.empty();
  if (segment.front() != u'*') {
    return !text.empty() && text.front() == segment.front() && textMatches(text.substr(1), segment.substr(1));
  }
  for (std::size_t skipped = 0; skipped <= text.size(); ++skipped) {
    if (textMatches(text.substr(skipped), segment.substr(1))) return true;
  }
  return false;
}

// One search, from the first segment to the last: every way through the tree that the segments describe, in the order
// of the names.
class Search {
 public:
  Search(Tree const& tree, std::string root, std::string const& pattern, bool dots)
      : tree_(tree), root_(std::move(root)), dots_(dots) {
    std::size_t start = 0;
    for (std::size_t end; start <= pattern.size(); start = end + 1) {
      end = std::min(pattern.find('/', start), pattern.size());
      std::string segment = pattern.substr(start, end - start);
      if (segment == "**" && !segments_.empty() && segments_.back() == "**") continue;
      segments_.push_back(std::move(segment));
    }
    bool const foldersOnly = !pattern.empty() && pattern.back() == '/';
    ending_ = foldersOnly ? "/" : "";
    auto const first = std::find_if(segments_.begin(), segments_.end(), [](auto const& s) { return isWildcard(s); });
    std::string prefix;
    for (auto segment = segments_.begin(); segment != first; ++segment) {
      prefix += (segment == segments_.begin() ? "" : "/") + *segment;
    }
    if (first == segments_.end()) {
      if (!pattern.empty() && stands(pattern, foldersOnly)) matches_.push_back(pattern);
    } else if (stands(prefix, true)) {
      from(prefix, first - segments_.begin());
    }
  }

  std::vector<std::string> take() { return std::move(matches_); }

 private:
  std::string full(std::string const& path) const { return root_ + "/" + path; }

  bool stands(std::string const& path, bool asFolder) const {
    return asFolder ? tree_.isFolder(full(path)) : tree_.findEntry(full(path)) != nullptr;
  }

  void accept(std::string const& path, bool last, std::ptrdiff_t next) {
    if (!last) {
      if (stands(path, true)) from(path, next);
      return;
    }
    matches_.push_back(path.empty() || path.back() == '/' ? path : path + ending_);
  }

  void from(std::string const& path, std::ptrdiff_t index) {
    std::string const& segment = segments_[static_cast<std::size_t>(index)];
    bool const last = static_cast<std::size_t>(index) + 1 == segments_.size();
    if (!isWildcard(segment)) {
      bool const there = segment.empty() ? stands(path, true) : stands(join(path, segment), false);
      if (there) accept(segment.empty() ? path : join(path, segment), last, index + 1);
    } else if (segment == "**") {
      accept(path, last, index + 1);
      std::vector<Node const*> chain{tree_.find(full(path))};
      everyBelow(path, chain, last, [&](std::string const& below) { accept(below, last, index + 1); });
    } else {
      for (auto const& name : names(path)) {
        bool const shown = dots_ || segment.front() == '.' || name.front() != '.';
        if (!shown || !nameMatches(name, segment)) continue;
        accept(join(path, name), last, index + 1);
      }
    }
  }

  std::vector<std::string> names(std::string const& path) const {
    std::vector<std::string> all;
    for (auto const& child : tree_.find(full(path))->children) all.push_back(child.first);
    return all;
  }

  // A folder that is its own ancestor is met, but not entered again.
  void everyBelow(std::string const& path, std::vector<Node const*>& chain, bool files,
                  std::function<void(std::string const&)> const& meet) const {
    for (auto const& name : names(path)) {
      if (!dots_ && name.front() == '.') continue;
      std::string const below = join(path, name);
      bool const folder = stands(below, true);
      if (folder || files) meet(below);
      Node const* node = tree_.find(full(below));
      if (!folder || std::find(chain.begin(), chain.end(), node) != chain.end()) continue;
      chain.push_back(node);
      everyBelow(below, chain, files, meet);
      chain.pop_back();
    }
  }

  Tree const& tree_;
  std::string root_;
  bool dots_;
  std::string ending_;
  std::vector<std::string> segments_;
  std::vector<std::string> matches_;
};

}  // namespace

std::vector<std::string> expectedMatchesBelow(Tree const& tree, std::string const& root, std::string const& pattern,
                                              bool includeDotFiles) {
  return Search(tree, root, pattern, includeDotFiles).take();
}

std::vector<std::string> expectedMatches(Tree const& tree, std::string const& root, std::string const& pattern,
                                         bool includeDotFiles) {
  auto matches = expectedMatchesBelow(tree, root, pattern, includeDotFiles);
  matches.erase(std::remove(matches.begin(), matches.end(), std::string()), matches.end());
  return matches;
}

bool nameMatches(std::string_view name, std::string_view segment) {
  return textMatches(toText(name), toText(segment));
}

std::string encodedForIRI(std::string_view bytes) {
  constexpr std::string_view digits = "0123456789ABCDEF";
  constexpr std::string_view unsafe = " \"<>\\^{|}`%#?";
  std::string written;
  std::u16string const text = toText(bytes);
  for (std::size_t i = 0, length; i < text.size(); i += length) {
    char16_t const unit = text[i];
    length = unit >= 0xD800 && unit < 0xDC00 ? 2 : 1;
    std::string const character = toBytes(std::u16string_view(text).substr(i, length));
    bool const isControl = unit < 0x20 || (unit >= 0x7F && unit < 0xA0);
    bool const isByteOfNoCharacter = unit >= 0xDC80 && unit <= 0xDCFF;
    bool const isUnsafe = unit < 0x80 && unsafe.find(static_cast<char>(unit)) != std::string_view::npos;
    if (!isControl && !isByteOfNoCharacter && !isUnsafe) {
      written += character;
      continue;
    }
    for (char const c : character) {
      auto const byte = static_cast<std::uint8_t>(c);
      written += {'%', digits[byte >> 4U], digits[byte & 15U]};
    }
  }
  return written;
}

std::string randomPattern(std::mt19937& random) {
  static constexpr std::array segments = {"**",  "**", "*",  "*",  "a",   "b",  "a*",    "*b", ".*", "*.*",
                                          "***", "?",  "a%", "ab", "*a*", "**", "\xC3*", "",   ".",  ".."};
  std::size_t const count = 1 + random() % 5;
  std::string pattern;
  for (std::size_t i = 0; i < count; ++i) {
    std::string const segment = segments[random() % segments.size()];
    if (i == 0 && segment.empty()) continue;
    pattern += (pattern.empty() ? "" : "/") + segment;
  }
  return random() % 4 == 0 && !pattern.empty() ? pattern + "/" : pattern;
}

}  // namespace korvan::test
