#pragma once

#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "support/c_search.hpp"
#include "support/memory_provider.hpp"
#include "support/search.hpp"

namespace korvan::test {

/// Searches of "mem:///" through the C interface.
class CInterface : public testing::Test {
 protected:
  void serve(Tree const& tree) {
    provider_ = std::make_shared<MemoryProvider>(tree);
    vfs::StorageSystem::instance().registerProvider(u"mem", provider_);
  }
  ~CInterface() override { vfs::StorageSystem::instance().registerProvider(u"mem", nullptr); }

  /// 100 matches of 2 KB: more than a search keeps ready.
  void serveLongPaths() {
    Tree tree;
    std::string folder;
    for (int depth = 0; depth < 8; ++depth) folder += std::string(250, 'f') + "/";
    for (int i = 100; i < 200; ++i) tree.addFile(folder + std::to_string(i));
    serve(tree);
    longPaths_ = folder + "*";
  }

  std::shared_ptr<MemoryProvider> provider_;
  std::string longPaths_;
};

}  // namespace korvan::test
