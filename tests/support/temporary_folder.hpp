#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

#include "support/text.hpp"

namespace korvan::test {

/// A temporary folder, readable by every user, and removed with everything below it at any depth. Names are bytes.
class TemporaryFolder {
 public:
  /// Makes the folder in `parent`.
  explicit TemporaryFolder(std::string const& parent = std::filesystem::temp_directory_path().string())
      : path_(parent + "/korvan-test-XXXXXX") {
    if (::mkdtemp(path_.data()) == nullptr) throw std::runtime_error("can't make " + path_);
    std::filesystem::permissions(path_, std::filesystem::perms{0755});
  }

  ~TemporaryFolder() {
    // Unlike std::filesystem::remove_all, rm removes paths that are longer than PATH_MAX.
    if (std::system(("rm -rf '" + path_ + "'").c_str()) != 0) std::abort();
  }

  TemporaryFolder(TemporaryFolder const&) = delete;
  TemporaryFolder& operator=(TemporaryFolder const&) = delete;

  std::string const& path() const noexcept { return path_; }
  std::u16string text() const { return toText(path_); }

  /// Each creates an entry at a path below the folder, along with the folders above it, or throws.
  void addFile(std::string const& path) const {
    if (!std::ofstream(at(path))) throw std::runtime_error("can't make " + path);
  }
  void addFolder(std::string const& path) const { std::filesystem::create_directory(at(path)); }
  /// `target` is written into the link unchanged.
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

/// Makes `folder` the process's current folder during its lifetime.
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
