#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "foundation/storage/vfs/detail/location_key.hpp"
#include "foundation/storage/vfs/storage_exception.hpp"

namespace foundation::storage::vfs {

/// The failures of one session: remembered by location, so that what has failed isn't tried again, and reported once for each
/// location, however often it is met. Not for several threads at once.
class FailureLog {
 public:
  /// What was asked about a location: its entries, or its kind. One may fail where the other succeeds.
  enum class Question { entries, kind };

  /// Throws and reports the failure that is remembered for the question, if any, as a plain `Exception`. `key`: see `keyOf`.
  void rethrowRemembered(Question question, std::u16string_view key);

  /// Remembers a failure, unless one is remembered for the question, without reporting it: the search may never ask for what was
  /// read ahead.
  void remember(Question question, std::u16string_view key, Exception const& failure);

  /// Adds the failure to `reported`, unless one of its location is there. Absence isn't a failure.
  void report(Exception const& failure);

  /// In the order of the failures; only ever grows.
  std::vector<Exception> const& reported() const noexcept { return reported_; }

 private:
  using Failures = std::unordered_map<std::u16string, Exception, KeyHash, KeyEqual>;
  Failures& failuresOf(Question question) noexcept { return question == Question::kind ? kinds_ : entries_; }

  Failures entries_;
  Failures kinds_;
  std::unordered_set<std::u16string, KeyHash, KeyEqual> reportedKeys_;
  std::vector<Exception> reported_;
};

}  // namespace foundation::storage::vfs
