#pragma once

#include <memory>

#include "foundation/core/host_export.hpp"

/// An array of the interpreter; see quindarel/interpreter/array.hpp.
struct vxArray_tag;

namespace matrix::detail {

/// Destroys an array of the interpreter.
struct KORVAN_HOST_EXPORT vxDestroy_deleter {
  /// Does nothing for null.
  void operator()(vxArray_tag* array) const noexcept;
};

/// An array with its owner, as in the output slots of a builtin.
using ArrayPtr = std::unique_ptr<vxArray_tag, vxDestroy_deleter>;

}  // namespace matrix::detail
