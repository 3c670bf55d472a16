#include "foundation/storage/vfs/session/failure_log.hpp"

namespace foundation::storage::vfs {

void FailureLog::rethrowRemembered(Question question, std::u16string_view key) {
  Failures const& failures = failuresOf(question);
  auto const found = failures.find(key);
  if (found == failures.end()) return;
  report(found->second);
  throw Exception(found->second);
}

void FailureLog::remember(Question question, std::u16string_view key, Exception const& failure) {
  failuresOf(question).try_emplace(std::u16string(key), failure);
}

void FailureLog::report(Exception const& failure) {
  if (failure.getErrorCode() == static_cast<int>(ErrorCode::notFound)) return;
  bool const isNew = reportedKeys_.emplace(keyOf(failure.getLocation())).second;
  if (isNew) reported_.push_back(failure);
}

}  // namespace foundation::storage::vfs
