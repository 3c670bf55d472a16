#pragma once

#include <array>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "foundation/storage/vfs/detail/location_key.hpp"
#include "foundation/storage/vfs/storage_exception.hpp"

namespace foundation::storage::vfs {

/// The failures of one session: remembered by location, so that what has failed isn't tried again, and reported once
/// for each location, however often and in whatever order it is asked about. Not for several threads at once.
class FailureLog {
 public:
  /// What was asked about a location. One question may fail where another is answered.
  enum class Question { entries, kind, identity, facts };

  /// Whether a failure belongs in the report: not if the caller is sure to pass it on, or it would be reported twice.
  enum class Report { no, yes };

  /// The result of `ask`, which puts the question to the provider, and throws what that throws. A question that failed
  /// before isn't put again: the remembered failure is thrown, as a plain `Exception`.
  template <class Ask>
  auto attempt(Question question, AbsoluteIRI const& location, Report toReport, Ask ask) {
    rethrowRemembered(question, location, toReport);
    try {
      return ask();
    } catch (Exception const& failure) {
      remember(question, location, failure);
      if (toReport == Report::yes) report(failure);
      throw;
    }
  }

  /// Remembers a failure, unless one is remembered for the question, without reporting it: the search may never ask for
  /// what was read ahead.
  void remember(Question question, AbsoluteIRI const& location, Exception const& failure);

  /// Calls `visit` with the key of each location for which a failure of the question is remembered.
  template <class Visit>
  void forEach(Question question, Visit visit) const {
    for (auto const& failure : failures_[static_cast<std::size_t>(question)]) visit(std::u16string_view(failure.first));
  }

  /// Adds the failure to the report, unless its location is in it or it is absence.
  void report(Exception const& failure);

  /// In the order of the failures, without absence, which isn't a failure. Only ever grows.
  std::vector<Exception> const& reported() const noexcept { return reported_; }

 private:
  // Bounds the memory; what is forgotten is asked again.
  static constexpr std::size_t mostRemembered = 10000;
  using Failures = std::unordered_map<std::u16string, Exception, KeyHash, KeyEqual>;

  void rethrowRemembered(Question question, AbsoluteIRI const& location, Report toReport);

  std::array<Failures, 4> failures_;  // by question
  std::unordered_set<std::u16string, KeyHash, KeyEqual> reportedKeys_;
  std::vector<Exception> reported_;
};

}  // namespace foundation::storage::vfs
