#pragma once

#include <string>

namespace korvan::io::internal {

/// To be called in an exception handler: reports an exception of the local path library or the storage layer to the
/// interpreter, and rethrows any other unchanged. The location of a storage failure is written like `pattern`, the
/// pattern of the search: as an IRI if that is one, otherwise as a local path.
[[noreturn]] void reportFailure(std::u16string const& pattern);

}  // namespace korvan::io::internal
