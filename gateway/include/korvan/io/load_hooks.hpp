#pragma once

#include "korvan/io/export.hpp"

extern "C" {

/// The host calls this after it has loaded the library, once or more often, on any thread. Throws `std::system_error`
/// if the system can't determine whether it was called before.
KORVAN_IO_EXPORT void KVInitialize_libqdkorvanautomationio();

/// The host calls this before it unloads the library. It has nothing to release.
KORVAN_IO_EXPORT void KVTerminate_libqdkorvanautomationio();
}
