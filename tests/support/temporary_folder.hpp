#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

#include "support/text.hpp"

namespace korvan::test {

/// A folder of its own for one test, readable by every user; everything below it goes with it, whatever its depth.
/// Names are bytes.
class TemporaryFolder {
 public:
  /// Makes it in the folder `place`.
  explicit TemporaryFolder(std::string const& place = std::filesystem::temp_directory_path().string())
      : path_(place + "/korvan-test-XXXXXX") {
    if (::mkdtemp(path_.data()) == nullptr) throw std::runtime_error("can't make " + path_);
    std::filesystem::permissions(path_, std::filesystem::perms{0755});
  }

  ~TemporaryFolder() {
    // The library's own way ends where a path is too long for one.
    if (std::system(("rm -rf '" + path_ + "'").c_str()) != 0) std::abort();
  }

  TemporaryFolder(TemporaryFolder const&) = delete;
  TemporaryFolder& operator=(TemporaryFolder const&) = delete;

  std::string const& path() const noexcept { return path_; }
  std::u16string text() const { return toText(path_); }

  /// Each makes what its name says at a path below the folder, the folders above it too, and throws when it can't.
  void addFile(std::string const& path) const {
    if (!std::ofstream(at(path))) throw std::runtime_error("can't make " + path);
  }
  void addFolder(std::string const& path) const { std::filesystem::create_directory(at(path)); }
  /// `target` is written into the link as it stands.
  void addLink(std::string const& path, std::string const& target) const {
    std::filesystem::create_symlink(target, at(path));
  }

 private:
  std::filesystem::path at(std::string const& path) const {
    std::filesystem::path full = path_ + "/" + path;
    std::filesystem::create_directories(full.parent_path());
    return full;
  }

  std::string path_;
};

/// Makes `folder` the process's current one for as long as it lives.
class CurrentFolder {
 public:
  explicit CurrentFolder(std::string const& folder) { std::filesystem::current_path(folder); }
  ~CurrentFolder() { std::filesystem::current_path(previous_); }
  CurrentFolder(CurrentFolder const&) = delete;
  CurrentFolder& operator=(CurrentFolder const&) = delete;

 private:
  std::filesystem::path const previous_ = std::filesystem::current_path();
};

}  // namespace korvan::test
