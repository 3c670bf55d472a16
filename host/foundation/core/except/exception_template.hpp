#pragma once

#include <exception>

#include "foundation/core/host_export.hpp"

namespace foundation::core::except {

/// The exceptions that are actually thrown: members of the platform's hierarchy that also derive from `Base` of the
/// standard library. `T` is what they carry: a message ID (msg_id_exception.hpp) or an interface of the hierarchy
/// (internal_exception.hpp).
template <class T, class Base = std::exception, class Enable = void>
class KORVAN_HOST_EXPORT Exception;

}  // namespace foundation::core::except
