#include "support/oracle.hpp"

#include <algorithm>
#include <array>
#include <functional>
#include <sstream>
#include <utility>

#include "support/text.hpp"

namespace korvan::test {
namespace {

std::string join(std::string const& folder, std::string const& name) {
  return folder.empty() || folder.back() == '/' ? folder + name : folder + "/" + name;
}

// Whether the text matches the segment, by trying every length for every star.
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

// One search, from the first segment to the last: every path through the tree that the segments allow, in the order of
// the names.
class Search {
 public:
  Search(Tree const& tree, std::string root, std::string const& pattern, bool dots)
      : tree_(tree), root_(std::move(root)), dots_(dots) {
    std::size_t const star = pattern.find('*');
    if (star == std::string::npos) {
      if (!pattern.empty() && tree_.resolve(full(pattern), false)) matches.push_back(pattern);
      return;
    }
    // Everything before the first wildcard is literal.
    std::size_t const slash = pattern.rfind('/', star);
    std::string const before = slash == std::string::npos ? "" : pattern.substr(0, slash);
    std::istringstream rest(pattern.substr(slash + 1) + "/");
    for (std::string segment; std::getline(rest, segment, '/');) {
      if (segment != "**" || segments_.empty() || segments_.back() != "**") segments_.push_back(segment);
    }
    if (tree_.isFolder(full(before))) from(before, 0);
  }

  std::vector<std::string> matches;

 private:
  std::string full(std::string const& path) const { return root_ + "/" + path; }

  // Adds the matches below the path of the segments from `index` on.
  void from(std::string const& path, std::size_t index) {
    std::string const& segment = segments_[index];
    auto const visit = [&](std::string const& below) {
      if (index + 1 == segments_.size()) {
        matches.push_back(below);
      } else if (tree_.isFolder(full(below))) {
        from(below, index + 1);
      }
    };
    if (segment == "**") {
      visit(path);
      everyBelow(path, {}, visit);
    } else if (segment.find('*') != std::string::npos) {
      for (auto const& [name, kind] : tree_.children(full(path))) {
        bool const isShown = dots_ || segment.front() == '.' || name.front() != '.';
        if (isShown && nameMatches(name, segment)) visit(join(path, name));
      }
    } else if (segment.empty()) {
      visit(index + 1 == segments_.size() ? join(path, "") : path);
    } else if (tree_.resolve(full(join(path, segment)), false)) {
      visit(join(path, segment));
    }
  }

  // A folder that is its own ancestor is visited, but not entered again.
  void everyBelow(std::string const& path, std::vector<std::string> chain,
                  std::function<void(std::string const&)> const& visit) const {
    chain.push_back(*tree_.resolve(full(path)));
    for (auto const& [name, kind] : tree_.children(full(path))) {
      if (!dots_ && name.front() == '.') continue;
      std::string const below = join(path, name);
      visit(below);
      bool const isAncestor = std::count(chain.begin(), chain.end(), tree_.resolve(full(below))) != 0;
      if (tree_.isFolder(full(below)) && !isAncestor) everyBelow(below, chain, visit);
    }
  }

  Tree const& tree_;
  std::string root_;
  bool dots_;
  std::vector<std::string> segments_;
};

}  // namespace

std::vector<std::string> expectedMatches(Tree const& tree, std::string const& root, std::string const& pattern,
                                         bool includeDotFiles, bool withRoot) {
  auto matches = Search(tree, root, pattern, includeDotFiles).matches;
  if (!withRoot) std::erase(matches, "");
  return matches;
}

bool nameMatches(std::string_view name, std::string_view segment) {
  return textMatches(toText(name), toText(segment));
}

bool hasDotOrEmptySegment(std::string const& pattern) {
  std::string const bounded = "/" + pattern + "/";
  return bounded.find("//", 1) + 2 < bounded.size() || bounded.find("/./") != std::string::npos ||
         bounded.find("/../") != std::string::npos;
}

std::string encodedForIRI(std::string_view bytes) {
  std::u16string written;
  auto const encode = [&](unsigned byte) {
    written += {u'%', u"0123456789ABCDEF"[byte >> 4U], u"0123456789ABCDEF"[byte & 15U]};
  };
  for (char16_t const unit : toText(bytes)) {
    bool const isPaired = !written.empty() && (written.back() & 0xFC00U) == 0xD800;
    bool const isByteOfNoCharacter = !isPaired && unit >= 0xDC80 && unit <= 0xDCFF;
    bool const isLateControl = unit >= 0x80 && unit < 0xA0;
    if (isLateControl) encode(0xC2);
    if (isByteOfNoCharacter || isLateControl || unit < 0x20 || unit == 0x7F ||
        std::u16string_view(u" \"<>\\^{|}`%#?").find(unit) != std::u16string_view::npos) {
      encode(unit & 0xFFU);
    } else {
      written += unit;
    }
  }
  return toBytes(written);
}

std::string randomPattern(std::mt19937& random) {
  static constexpr std::array segments = {"**",  "**", "*",  "*",  "a",   "b",  "a*",    "*b", ".*", "*.*",
                                          "***", "?",  "a%", "ab", "*a*", "**", "\xC3*", "",   ".",  ".."};
  std::string pattern;
  for (std::size_t count = 1 + random() % 5; count > 0; --count) {
    std::string const segment = segments[random() % segments.size()];
    if (pattern.empty() && segment.empty()) continue;
    pattern += (pattern.empty() ? "" : "/") + segment;
  }
  return random() % 4 == 0 && !pattern.empty() ? pattern + "/" : pattern;
}

}  // namespace korvan::test
