#pragma once

#include <string>
#include <string_view>

namespace korvan::test {

/// A folder of its own for one test, readable by every user; everything below it goes with it, whatever its depth and
/// rights. Names are bytes.
class TemporaryFolder {
 public:
  /// Where it is made. `memory` is a file system in memory where there is one: for trees too large for a disk's
  /// patience.
  enum class Place { disk, memory };

  explicit TemporaryFolder(Place place = Place::disk);
  ~TemporaryFolder();
  TemporaryFolder(TemporaryFolder const&) = delete;
  TemporaryFolder& operator=(TemporaryFolder const&) = delete;

  std::string const& path() const noexcept { return path_; }
  std::u16string text() const;

  /// Each makes what its name says at a path below the folder, the folders above it too, and throws `std::system_error`
  /// when it can't.
  void addFile(std::string_view path) const;
  void addFolder(std::string_view path) const;
  /// `target` is written into the link as it stands.
  void addLink(std::string_view path, std::string const& target) const;

 private:
  std::string at(std::string_view path) const;
  std::string path_;
};

/// Makes `folder` the process's current one for as long as it lives.
class CurrentFolder {
 public:
  explicit CurrentFolder(std::string const& folder);
  ~CurrentFolder();
  CurrentFolder(CurrentFolder const&) = delete;
  CurrentFolder& operator=(CurrentFolder const&) = delete;

 private:
  int previous_;
};

}  // namespace korvan::test
