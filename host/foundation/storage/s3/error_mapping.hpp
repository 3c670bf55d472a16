#pragma once

#include <optional>
#include <string>
#include <vector>

#include "foundation/storage/s3/configuration.hpp"
#include "foundation/storage/s3/retry.hpp"
#include "foundation/storage/vfs/storage_exception.hpp"

namespace foundation::storage::s3 {

/// Texts that a message must not contain.
using Secrets = std::vector<std::string>;

/// Adds the user names and passwords in the URLs of proxies.
void addUserInformation(Secrets& secrets, std::vector<std::string> const& proxies);

/// Why a request wasn't answered with 200, in one line: the failure, or the HTTP status with the error code, the
/// message and the request id of the response, whose body need not be XML. The secrets are redacted.
std::string failureReason(RequestOutcome const& outcome, Secrets const& secrets);

/// The storage exception for a request that wasn't answered with 200; the only place where S3 errors are mapped. A
/// missing bucket or key (by the store's own error code, as a bare 404 may come from anything) is `notFound`; 401, 403
/// and rejected credentials are `permissionDenied`; everything else is `other`. The reason gives the HTTP status, the
/// store's error code, message and request id and, for the wrong region, the right one. The body need not be XML. The
/// configuration's secrets and the user information of its proxies are redacted, in case a message repeats one.
vfs::Exception exceptionFor(RequestOutcome const& outcome, Configuration const& configuration,
                            vfs::AbsoluteIRI const& location);

/// The reason of a failure by a response with status 200 and a malformed body. `fault` says in a few words what is
/// wrong with it.
std::string malformedReason(Response const& response, std::string const& fault);

/// The region of the bucket, if the response is one that a store gives to a request for the wrong region.
std::optional<std::string> regionNamedBy(RequestOutcome const& outcome);

}  // namespace foundation::storage::s3
