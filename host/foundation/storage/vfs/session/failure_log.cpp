#include "foundation/storage/vfs/session/failure_log.hpp"

namespace foundation::storage::vfs {

void FailureLog::rethrowRemembered(Question question, AbsoluteIRI const& location, Report toReport) {
  Failures const& failures = failures_[static_cast<std::size_t>(question)];
  if (failures.empty()) return;  // the key needn't be hashed
  auto const found = failures.find(keyOf(location));
  if (found == failures.end()) return;
  if (toReport == Report::yes) report(found->second);
  throw Exception(found->second);
}

void FailureLog::remember(Question question, AbsoluteIRI const& location, Exception const& failure) {
  Failures& failures = failures_[static_cast<std::size_t>(question)];
  if (failures.size() >= mostRemembered) failures.clear();
  failures.try_emplace(std::u16string(keyOf(location)), failure);
}

void FailureLog::report(Exception const& failure) {
  if (failure.getErrorCode() == static_cast<int>(ErrorCode::notFound)) return;
  bool const isNew = reportedKeys_.emplace(keyOf(failure.getLocation())).second;
  if (isNew) reported_.push_back(failure);
}

}  // namespace foundation::storage::vfs
