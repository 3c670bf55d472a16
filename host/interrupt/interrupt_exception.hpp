#pragma once

#include "export.hpp"
#include "foundation/core/except/internal_exception.hpp"

namespace Quindarel::System {

/// Thrown to end work that the user interrupted. It carries no message ID, since it is no error.
class KORVAN_HOST_EXPORT InterruptException
    : public foundation::core::except::Exception<foundation::core::except::IInternalException, std::exception, void> {
 public:
  /// `fromCtrlC` is true when the interrupt came from ctrl-c itself, false when running work noticed the pending flag.
  explicit InterruptException(bool fromCtrlC = false);
};

}  // namespace Quindarel::System
