#pragma once

#include <memory>

#include "foundation/core/host_export.hpp"

/// An array of the interpreter; see interpreter/array.hpp.
struct vxArray_tag;

namespace matrix::detail {

/// Destroys an array of the interpreter.
struct KORVAN_HOST_EXPORT vxDestroy_deleter {
  /// Null is passed over.
  void operator()(vxArray_tag* array) const noexcept;
};

/// An owned array, as output slots hold it.
using ArrayPtr = std::unique_ptr<vxArray_tag, vxDestroy_deleter>;

}  // namespace matrix::detail
