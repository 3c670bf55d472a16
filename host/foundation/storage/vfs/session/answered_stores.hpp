#pragma once

#include <set>
#include <string>
#include <string_view>

#include "foundation/storage/vfs/storage_exception.hpp"

namespace foundation::storage::vfs {

/// The stores (IRI authorities, such as buckets) that have answered in this session. One of them can't be absent: when
/// it claims to be, in the middle of a search, what follows would be missing from the result without a word. Internal to
/// the session.
class AnsweredStores {
 public:
  /// The result of `ask`, which asks a provider about the location. Throws what that throws, except that the absence of
  /// a store that has answered before is a failure with the code `other`.
  template <class Ask>
  auto ask(AbsoluteIRI const& location, Ask ask) {
    try {
      auto result = ask();
      add(location);
      return result;
    } catch (Exception const& failure) {
      throwIfLost(location, failure);
      throw;
    }
  }

 private:
  void add(AbsoluteIRI const& location);
  void throwIfLost(AbsoluteIRI const& location, Exception const& failure) const;

  std::set<std::u16string, std::less<>> stores_;
};

}  // namespace foundation::storage::vfs
