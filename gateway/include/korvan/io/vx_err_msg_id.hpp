#pragma once

#include "korvan/io/export.hpp"

namespace korvan::io::internal {

/// Ends the builtin's call with the message `id`: hands it to the interpreter, which doesn't come back. Should it come
/// back, throws `foundation::core::except::Exception<T, std::exception, void>`. Exists for the messages of
/// message_ids.hpp but those of `KORVAN::string`, which are thrown.
template <class T>
[[noreturn]] KORVAN_IO_EXPORT void vxErrMsgId(T const& id);

}  // namespace korvan::io::internal
