#pragma once

#include <string>

#include "kglob.h"

namespace kglob {

/// A failure of a search, with the texts that a `kglob_failure` points to.
struct SearchFailure {
  kglob_status status;
  std::string identifier;
  std::string message;
  std::string location;
  std::string reason;

  /// Valid until this is changed, moved or destroyed.
  kglob_failure view() const noexcept {
    return {status, identifier.c_str(), message.c_str(), location.c_str(), reason.c_str()};
  }
};

/// The exception that is being handled, with the identifier and the message that the interpreter's builtin reports for
/// it. To be called in an exception handler. Where `asIRI` is set the location is written as an IRI. Throws
/// `std::bad_alloc`.
SearchFailure describeCurrentException(bool asIRI);

/// Lack of memory, described without any.
inline constexpr kglob_failure outOfMemory{KGLOB_OUT_OF_MEMORY, "KORVAN:interpreter:OutOfMemory",
                                           "Out of memory: narrow the search, or free memory and try again.", "", ""};

/// A search that was started before the process forked, used in the child.
inline constexpr kglob_failure inForkedProcess{
    KGLOB_FAILED, "KORVAN:interpreter:Failure",
    "The call failed: a search can't be continued in a forked process; open a new one there.", "", ""};

}  // namespace kglob
