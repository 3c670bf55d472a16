#pragma once

#include <exception>

#include "foundation/core/host_export.hpp"

namespace foundation::core::except {

/// An exception as it is thrown: of the platform's family and derived from `Base` of the standard library. `T` says what it carries: a
/// message ID (msg_id_exception.hpp) or an interface of the family (internal_exception.hpp).
template <class T, class Base = std::exception, class Enable = void>
class KORVAN_HOST_EXPORT Exception;

}  // namespace foundation::core::except
