#include "tree.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstdint>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include <sys/stat.h>

namespace korvan::bench {
namespace {

// Not from <random>, whose distributions differ between standard libraries.
class FixedRandom {
 public:
  std::uint64_t next() noexcept {
    // splitmix64
    std::uint64_t z = state_ += 0x9E3779B97F4A7C15U;
    z = (z ^ (z >> 30U)) * 0xBF58476D1CE4E5B9U;
    z = (z ^ (z >> 27U)) * 0x94D049BB133111EBU;
    return z ^ (z >> 31U);
  }
  std::size_t below(std::size_t bound) noexcept { return next() % bound; }

 private:
  std::uint64_t state_ = 20240229;
};

template <class T>
struct Weighted {
  T value;
  unsigned percent;
};

template <class T, std::size_t N>
T choose(std::array<Weighted<T>, N> const& choices, FixedRandom& random) {
  std::size_t ticket = random.below(100);
  for (auto const& choice : choices) {
    if (ticket < choice.percent) return choice.value;
    ticket -= choice.percent;
  }
  return choices.back().value;
}

constexpr std::array<Weighted<std::size_t>, 8> folderDepths = {
    {{1, 1}, {2, 4}, {3, 12}, {4, 22}, {5, 25}, {6, 20}, {7, 10}, {8, 6}}};

// A folder's weight when a folder is drawn for each file: most get a handful of files, a few get many.
constexpr std::array<Weighted<std::size_t>, 3> folderWeights = {{{1, 80}, {4, 18}, {30, 2}}};

constexpr std::array<Weighted<std::string_view>, 12> extensions = {{{".cpp", 20},
                                                                    {".hpp", 20},
                                                                    {".txt", 15},
                                                                    {".csv", 12},
                                                                    {".json", 8},
                                                                    {".md", 6},
                                                                    {".py", 5},
                                                                    {".xml", 4},
                                                                    {".png", 4},
                                                                    {".dat", 3},
                                                                    {".tar.gz", 1},
                                                                    {"", 2}}};

constexpr std::array<std::string_view, 16> folderWords = {"data",    "docs",  "detail", "d",     "src",  "include",
                                                          "tests",   "lib",   "assets", "build", "core", "modules",
                                                          "scripts", "tools", "util",   "vendor"};

constexpr std::array<std::string_view, 12> fileWords = {"index",       "report", "measurement", "parser",
                                                        "string_view", "run",    "table",       "session",
                                                        "config",      "a",      "test-case",   "notes"};

struct Folder {
  std::string path;
  std::size_t depth;
};

class Maker {
 public:
  Maker(std::filesystem::path const& root, TreeShape shape) : shape_(shape) {
    makeFolder(root.native());
    folders_.push_back({root.native(), 0});
    foldersAtDepth_.resize(folderDepths.size() + 1);
    foldersAtDepth_[0].push_back(0);
  }

  void run() {
    while (folders_.size() <= shape_.folders) addFolder();
    std::vector<std::size_t> tickets;
    for (std::size_t folder = 0; folder < folders_.size(); ++folder) {
      tickets.insert(tickets.end(), choose(folderWeights, random_), folder);
    }
    for (std::size_t count = shape_.folders; count < shape_.entries; ++count) {
      makeFile(folders_[tickets[random_.below(tickets.size())]].path, "");
    }
    addHidden();
  }

 private:
  void addFolder() {
    std::size_t depth = choose(folderDepths, random_);
    while (foldersAtDepth_[depth - 1].empty()) --depth;
    auto const& parents = foldersAtDepth_[depth - 1];
    std::string const& parent = folders_[parents[random_.below(parents.size())]].path;
    std::string path = uniquePath(parent, "", folderWords[random_.below(folderWords.size())], "");
    makeFolder(path);
    foldersAtDepth_[depth].push_back(folders_.size());
    folders_.push_back({std::move(path), depth});
  }

  void addHidden() {
    for (std::size_t count = 0; count < shape_.entries / 100; ++count)
      makeFile(folders_[random_.below(folders_.size())].path, ".");
    for (std::size_t count = 0; count < shape_.folders / 100; ++count) {
      std::string const folder = uniquePath(folders_[random_.below(folders_.size())].path, ".", "cache", "");
      makeFolder(folder);
      for (int file = 0; file < 10; ++file) makeFile(folder, "");
    }
  }

  // A counter makes each name unique without looking at the disk.
  std::string uniquePath(std::string const& parent, std::string_view before, std::string_view word,
                         std::string_view extension) {
    std::array<char, 16> digits{};
    auto const end = std::to_chars(digits.data(), digits.data() + digits.size(), ++counter_, 36).ptr;
    std::string path = parent;
    path.append("/").append(before).append(word).append("_").append(digits.data(), end).append(extension);
    return path;
  }

  void makeFile(std::string const& folder, std::string_view before) {
    std::string const path =
        uniquePath(folder, before, fileWords[random_.below(fileWords.size())], choose(extensions, random_));
    if (::mknod(path.c_str(), S_IFREG | 0644, 0) != 0) throw std::system_error(errno, std::system_category(), path);
  }

  static void makeFolder(std::string const& path) {
    if (::mkdir(path.c_str(), 0755) != 0) throw std::system_error(errno, std::system_category(), path);
  }

  TreeShape shape_;
  FixedRandom random_;
  std::uint64_t counter_ = 0;
  std::vector<Folder> folders_;
  std::vector<std::vector<std::size_t>> foldersAtDepth_;
};

}  // namespace

void makeTree(std::filesystem::path const& root, TreeShape shape) {
  Maker(root, shape).run();
}

}  // namespace korvan::bench
