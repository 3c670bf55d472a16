#pragma once

#include <memory>

#include "korvan/io/export.hpp"
#include "quindarel/interpreter/array_ptr.hpp"

namespace korvan::io::internal {

/// The interpreter's builtin `glob(pattern)`, `glob(pattern, name, value)` or `glob(pattern, name, value, name,
/// value)`: the texts that the core search (glob/glob.hpp) gives, in its order, as an n-by-1 string array.
///
/// Texts are string scalars or character row vectors. Names, in any case: "RootFolder", a folder as text, against which
/// a relative pattern is searched and which is itself taken from the host's current folder (that folder when it is
/// empty or not given); "IncludeDotFiles", a logical scalar (false when not given). The later of two values for one
/// name counts.
///
/// Sets `plhs[0]` also when `nlhs` is 0, and only on success. A failure ends the call by an error of the interpreter:
/// the host's own for the argument counts, the messages of message_ids.hpp otherwise. An interrupt ends it by
/// `Quindarel::System::InterruptException`, before the search, during it and after it; while it runs, the host's
/// interrupt mode is `off`. What the search can't list it passes over.
KORVAN_IO_EXPORT void glob(int nlhs, std::unique_ptr<vxArray_tag, matrix::detail::vxDestroy_deleter>* plhs, int nrhs,
                           vxArray_tag const* const* prhs);

}  // namespace korvan::io::internal
