#pragma once

#include <string>
#include <vector>

#include "foundation/storage/s3/configuration.hpp"
#include "foundation/storage/s3/retry.hpp"
#include "foundation/storage/vfs/storage_exception.hpp"

namespace foundation::storage::s3 {

/// Texts that a message must not contain.
using Secrets = std::vector<std::string>;

/// Why a request wasn't answered with 200, in one line: the failure, or the HTTP status with the error code, the message
/// and the request id of the response, whose body need not be XML. The secrets are redacted.
std::string failureReason(RequestOutcome const& outcome, Secrets const& secrets);

/// The storage exception for a request that wasn't answered with 200; the only place where S3 errors are mapped. A
/// missing bucket or key (by the store's own error code, as a bare 404 may come from anything) is `notFound`; 401, 403
/// and rejected credentials are `permissionDenied`; everything else is `other`. The reason gives the HTTP status, the
/// store's error code, message and request id and, for the wrong region, the right one. The body need not be XML. The
/// configuration's secrets are redacted, in case the store repeats one.
vfs::Exception exceptionFor(RequestOutcome const& outcome, Configuration const& configuration,
                            vfs::AbsoluteIRI const& location);

/// The storage exception for a response with status 200 and a malformed body. `fault` is the reason in a few words.
vfs::Exception malformedResponseException(Response const& response, std::string const& fault,
                                          Configuration const& configuration, vfs::AbsoluteIRI const& location);

}  // namespace foundation::storage::s3
