#pragma once

#include <exception>

#include "foundation/core/host_export.hpp"

namespace foundation::core::except {

/// An exception as it is thrown: of the platform's family and a `Base` of the standard library's at once. What it is
/// made from tells which: a message ID (msg_id_exception.hpp) or an interface of the family (internal_exception.hpp).
template <class T, class Base = std::exception, class Enable = void>
class KORVAN_HOST_EXPORT Exception;

}  // namespace foundation::core::except
