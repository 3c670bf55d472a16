#include "quindarel/interpreter/class_system.hpp"

bool omGetKcosUsingUSM() noexcept {
  return false;
}
