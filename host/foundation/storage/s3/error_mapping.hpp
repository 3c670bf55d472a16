#pragma once

#include <string>

#include "foundation/storage/s3/configuration.hpp"
#include "foundation/storage/s3/retry.hpp"
#include "foundation/storage/vfs/storage_exception.hpp"

namespace foundation::storage::s3 {

/// The storage exception for a request that wasn't answered with 200. A missing bucket or key (by
/// the store's own code, not by a bare 404) is `notFound`; 401, 403 and refused credentials are `permissionDenied`;
/// all else is `other`. The reason holds the HTTP status, the store's code and message, its request id and, for a wrong
/// region, the right one. A body need not be XML. Secrets of the configuration are blotted out, should the store repeat
/// one. The one place that decides it.
vfs::Exception exceptionOfResult(Result const& result, Configuration const& configuration,
                                 vfs::AbsoluteIRI const& location);

/// The storage exception for an answer whose status is 200 but whose body makes no sense. `fault` says why, in a few
/// words.
vfs::Exception exceptionOfBadAnswer(Answer const& answer, std::string const& fault, Configuration const& configuration,
                                    vfs::AbsoluteIRI const& location);

}  // namespace foundation::storage::s3
