#include "quindarel/interrupt/interrupt_exception.hpp"

#include <string>

namespace Quindarel::System {

InterruptException::InterruptException(bool fromCtrlC) noexcept : fromCtrlC_(fromCtrlC) {}
InterruptException::InterruptException(InterruptException const&) noexcept = default;
InterruptException& InterruptException::operator=(InterruptException const&) noexcept = default;
InterruptException::~InterruptException() noexcept = default;

boost::exception_detail::clone_base const* InterruptException::clone() const {
  return new InterruptException(*this);
}

void InterruptException::rethrow() const {
  throw InterruptException(*this);
}

std::u16string InterruptException::ToUstringImpl() const {
  return convert_str(std::string(fromCtrlC_ ? "InterruptException(ctrl-c)" : "InterruptException"));
}

}  // namespace Quindarel::System
