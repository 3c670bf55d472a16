#pragma once

#include <memory>

#include "korvan/io/export.hpp"
#include "quindarel/interpreter/array_ptr.hpp"

namespace korvan::io::internal {

/// The interpreter's builtin `glob(pattern)`, `glob(pattern, name, value)` or `glob(pattern, name, value, name,
/// value)`: the matches of the core search (korvan/io/glob.hpp), in its order, as an n-by-1 string array.
///
/// Texts are string scalars or character row vectors. The names are "RootFolder", a text: the folder in which a
/// relative pattern is searched for, itself resolved against the host's current folder (by default, and if empty,
/// that folder); and "IncludeDotFiles", a logical scalar (by default false). Upper and lower case are equal in names
/// as far as `tolower` maps one to the other in the process's current locale; in a Turkish one (tr_TR),
/// "INCLUDEDOTFILES" is an unknown name. Of two values for one name the later counts.
///
/// Sets `plhs[0]` on success only, even if `nlhs` is 0. A failure ends the call with an error of the interpreter: the
/// host's own for wrong numbers of arguments, otherwise a message of message_ids.hpp. An interrupt before, during or
/// after the search ends the call with `Quindarel::System::InterruptException`; during the search, the host's
/// interrupt mode is `off`. Folders that can't be listed are skipped; a `foundation::storage::vfs::ReadSession` that
/// is open around the call records them.
KORVAN_IO_EXPORT void glob(int nlhs, std::unique_ptr<vxArray_tag, matrix::detail::vxDestroy_deleter>* plhs, int nrhs,
                           vxArray_tag const* const* prhs);

}  // namespace korvan::io::internal
