#pragma once

#include <string>
#include <string_view>

#include "fl/filesystem/basic_path.hpp"
#include "foundation/core/host_export.hpp"
#include "foundation/storage/vfs/absolute_iri.hpp"

namespace foundation::storage::vfs {

/// The IRI of the scheme (in lower case) that names the local path. Where the scheme's IRIs have no authority ("file",
/// RFC 8089), its path is all of the local path; otherwise the first element is the authority (a bucket), and "/" is
/// the folder of all authorities. A relative path is taken from the process's current folder, one system call. A path
/// with a surrogate that has no byte form (see foundation/core/text/bytes.hpp) names nothing, and becomes an IRI at
/// which nothing can exist. Throws `UnsupportedIRISchemeException`; `InvalidIRIException` when the path's first
/// element, the authority, has no byte form; `fl::filesystem::FsysExceptionBase` when the current folder can't be
/// determined.
KORVAN_HOST_EXPORT AbsoluteIRI toAbsoluteIRI(std::u16string const& scheme, fl::filesystem::upath const& path);

/// The local path that the IRI names, decoded: the inverse of `toAbsoluteIRI` for paths that can exist. Pure text.
KORVAN_HOST_EXPORT fl::filesystem::upath fromAbsoluteIRI(AbsoluteIRI const& location);

/// The decoded text of one element of an IRI's path, which must not contain "/". Pure text.
KORVAN_HOST_EXPORT std::u16string decodedElement(std::u16string_view written);

/// The decoded path of an IRI as bytes, as a provider passes it to its system: "/a b" for "file:///a%20b". Pure text.
KORVAN_HOST_EXPORT std::string decodedPath(AbsoluteIRI const& location);

}  // namespace foundation::storage::vfs
