#pragma once

#include "foundation/core/except/internal_exception.hpp"
#include "foundation/core/host_export.hpp"

namespace Quindarel::System {

/// Thrown to end work that the user interrupted. It has no message ID, since it isn't an error.
class KORVAN_HOST_EXPORT InterruptException
    : public foundation::core::except::Exception<foundation::core::except::IInternalException, std::exception, void> {
 public:
  /// `fromCtrlC` is true if ctrl-c itself ended the work, false if the work polled the pending flag.
  explicit InterruptException(bool fromCtrlC = false) noexcept;
  InterruptException(InterruptException const&) noexcept;
  InterruptException& operator=(InterruptException const&) noexcept;
  ~InterruptException() noexcept override;

  /// The value passed to the constructor.
  bool fromCtrlC() const noexcept { return fromCtrlC_; }

  /// A copy, allocated with `new` and owned by the caller.
  boost::exception_detail::clone_base const* clone() const override;

  /// Throws a copy.
  [[noreturn]] void rethrow() const override;

  /// "InterruptException(ctrl-c)" or "InterruptException".
  std::u16string ToUstringImpl() const override;

 private:
  bool fromCtrlC_;
};

}  // namespace Quindarel::System
