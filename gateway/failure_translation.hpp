#pragma once

#include <string>

namespace korvan::io::internal {

/// To be called in a handler: reports the failure that is being handled to the interpreter, where it is one of the
/// local path library or of the storage layer, and throws it on unchanged where it is not. A storage failure is told as
/// the caller writes locations: as an IRI when `pattern`, the search's pattern, is one, as a local path otherwise.
[[noreturn]] void reportFailure(std::u16string const& pattern);

}  // namespace korvan::io::internal
