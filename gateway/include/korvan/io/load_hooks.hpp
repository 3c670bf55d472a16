#pragma once

#include "korvan/io/export.hpp"

extern "C" {

/// The host calls this when it has loaded the library, once or again, on any thread. Throws `std::system_error` when
/// the system can't tell whether it was called before.
KORVAN_IO_EXPORT void KVInitialize_libqdkorvanautomationio();

/// The host calls this before it unloads the library, which has nothing to release.
KORVAN_IO_EXPORT void KVTerminate_libqdkorvanautomationio();
}
