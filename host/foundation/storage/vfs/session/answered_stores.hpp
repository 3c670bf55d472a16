#pragma once

#include <map>
#include <string>
#include <string_view>

#include "foundation/storage/vfs/storage_exception.hpp"

namespace foundation::storage::vfs {

/// Which stores (IRI authorities, such as buckets) exist, as their first answers in this session say. When one of them
/// claims to be absent in the middle of a search, what follows would be missing from the result without a word. Internal
/// to the session.
class AnsweredStores {
 public:
  /// The result of `ask`, which asks a provider about the location. Throws what that throws, except that the absence of
  /// a store that has answered before is a failure with the code `other`. A store that was absent isn't asked again.
  template <class Ask>
  auto ask(AbsoluteIRI const& location, Ask ask) {
    throwIfAbsent(location);
    try {
      auto result = ask();
      add(location);
      return result;
    } catch (Exception const& failure) {
      noteAbsence(location, failure);
      throw;
    }
  }

 private:
  void add(AbsoluteIRI const& location);
  void noteAbsence(AbsoluteIRI const& location, Exception const& failure);
  void throwIfAbsent(AbsoluteIRI const& location) const;

  std::map<std::u16string, bool, std::less<>> exists_;
};

}  // namespace foundation::storage::vfs
