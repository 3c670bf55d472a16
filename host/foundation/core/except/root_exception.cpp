#include "foundation/core/except/root_exception.hpp"

#include <memory>

#include "foundation/core/text/bytes.hpp"

namespace foundation::core::except {

IException::IException() noexcept = default;

// The text for `what` is not copied: a copy makes its own when it is asked.
IException::IException(IException const& other) noexcept
    : boost::exception_detail::clone_base(other), boost::exception(other) {}

IException& IException::operator=(IException const& other) noexcept {
  boost::exception::operator=(other);
  delete what_.exchange(nullptr);
  return *this;
}

IException::~IException() noexcept {
  delete what_.load(std::memory_order_acquire);
}

char const* IException::what() const noexcept {
  std::string const* text = what_.load(std::memory_order_acquire);
  if (text == nullptr) {
    try {
      auto made = std::make_unique<std::string const>(convert_str(ToUstringImpl()));
      if (what_.compare_exchange_strong(text, made.get(), std::memory_order_acq_rel)) text = made.release();
    } catch (...) {
      return "an error whose text could not be made";
    }
  }
  return text->c_str();
}

std::string IException::convert_str(std::u16string const& text) const {
  return core::text::toBytesLossy(text);
}

std::u16string IException::convert_str(std::string const& text) const {
  return core::text::fromBytes(text);
}

}  // namespace foundation::core::except
