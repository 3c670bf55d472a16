#pragma once

#include "korvan/io/export.hpp"

namespace korvan::io::internal {

/// Ends the builtin's call with the message `id`: reports it to the interpreter, which normally doesn't return. If it
/// does, throws `foundation::core::except::Exception<T, std::exception, void>`. Instantiated for the messages of
/// message_ids.hpp except those of `KORVAN::string`, which are thrown directly.
template <class T>
[[noreturn]] KORVAN_IO_EXPORT void vxErrMsgId(T const& id);

}  // namespace korvan::io::internal
