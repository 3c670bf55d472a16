#pragma once

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>

#include "foundation/core/text/bytes.hpp"
#include "tree.hpp"

namespace korvan::bench {

/// A tree in the system's folder for temporary files, removed by the destructor.
class TemporaryTree {
 public:
  explicit TemporaryTree(TreeShape shape) : holder_(makeHolder()) { makeTree(root(), shape); }
  ~TemporaryTree() {
    std::error_code ignored;
    std::filesystem::remove_all(holder_, ignored);
  }
  TemporaryTree(TemporaryTree const&) = delete;
  TemporaryTree& operator=(TemporaryTree const&) = delete;

  std::filesystem::path root() const { return holder_ / "tree"; }
  std::u16string rootText() const { return foundation::core::text::fromBytes(root().native()); }

 private:
  static std::filesystem::path makeHolder() {
    std::string name = std::filesystem::temp_directory_path() / "kglob-bench-XXXXXX";
    if (::mkdtemp(name.data()) == nullptr) throw std::system_error(errno, std::system_category(), name);
    return name;
  }

  std::filesystem::path holder_;
};

}  // namespace korvan::bench
