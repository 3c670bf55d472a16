#include "korvan/io/load_hooks.hpp"

#include <mutex>

#include "quindarel/interpreter/class_system.hpp"

namespace {
std::once_flag initialised;
}

void KVInitialize_libqdkorvanautomationio() {
  if (omGetKcosUsingUSM()) return;
  // Nothing of the library needs setting up before its first use; the guard is where it would go.
  std::call_once(initialised, [] {});
}

void KVTerminate_libqdkorvanautomationio() {}
