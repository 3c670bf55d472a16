#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "foundation/storage/vfs/folder.hpp"
#include "support/hooked_provider.hpp"
#include "support/memory_provider.hpp"
#include "support/search.hpp"

namespace korvan::test {

inline std::string numbered(char letter, int number) {
  return letter + std::to_string(1000 + number);
}

/// As many folders with one file as it says, side by side.
inline Tree wideTree(int folders) {
  Tree tree;
  for (int i = 0; i < folders; ++i) tree.addFile(numbered('d', i) + "/file");
  return tree;
}

inline void sleepShortly() {
  std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

/// Searches of "mem:///" that read ahead, with counts of the reads.
class ReadAhead : public testing::Test {
 protected:
  void serve(Tree const& tree, std::size_t window, std::function<void()> const& onRead) {
    store_ = std::make_shared<MemoryProvider>(tree);
    most_ = inFlight_ = byOthers_ = 0;
    auto const own = std::this_thread::get_id();
    auto const hook = [this, own, onRead](MemoryProvider::Operation /*asked*/, vfs::AbsoluteIRI const& /*location*/) {
      int const now = ++inFlight_;
      for (int most = most_; now > most && !most_.compare_exchange_weak(most, now);) {
      }
      if (std::this_thread::get_id() != own) ++byOthers_;
      struct AtEnd {
        std::atomic<int>& inFlight;
        ~AtEnd() { --inFlight; }
      } const atEnd{inFlight_};
      vfs::countRequest(10);
      onRead();
    };
    served_.reset();
    served_.emplace(u"mem", std::make_shared<HookedProvider>(store_, window, hook));
  }

  // Waits until the number of requests has stopped growing.
  std::size_t settledRequests() const {
    for (std::size_t before = store_->requests();; before = store_->requests()) {
      std::this_thread::sleep_for(std::chrono::milliseconds(200));
      if (store_->requests() == before) return before;
    }
  }

  // Lists a folder that needn't be what the search comes to next.
  static void list(int number) {
    auto const system = Quindarel::KorvanStorageSystem::GetStorageSystemReference();
    vfs::Folder const folder(vfs::AbsoluteIRI(toText("mem:///" + numbered('d', number))), system);
    EXPECT_NE(folder.listAll(u"*").begin(), folder.listAll(u"*").end());
  }

  std::shared_ptr<MemoryProvider> store_;
  std::atomic<int> inFlight_{0};
  std::atomic<int> most_{0};      // in flight at any time
  std::atomic<int> byOthers_{0};  // reads on other threads than the test's
  std::optional<ServedScheme> served_;
};

}  // namespace korvan::test
