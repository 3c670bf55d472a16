#include "korvan/io/load_hooks.hpp"

#include <mutex>

#include "quindarel/interpreter/class_system.hpp"

namespace {
std::once_flag initialised;
}

void KVInitialize_libqdkorvanautomationio() {
  if (omGetKcosUsingUSM()) return;
  // The library needs no set-up before its first use; if it ever does, it belongs here.
  std::call_once(initialised, [] {});
}

void KVTerminate_libqdkorvanautomationio() {}
