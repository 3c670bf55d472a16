#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "foundation/storage/s3/configuration.hpp"

namespace foundation::storage::s3 {

/// The domain of the services in a region: regions of some partitions have one of their own.
std::string_view domainOf(std::string_view region);

/// Encodes every byte except A-Z, a-z, 0-9, "-", ".", "_" and "~", with upper-case hex digits, as signatures require.
std::string percentEncode(std::string_view bytes);

/// Decodes a text that a store has percent-encoded: "%XX", and "+" for a space. Returns nothing if a "%" isn't followed
/// by two hex digits.
std::optional<std::string> percentDecode(std::string_view text);

/// The URL of an endpoint, "http[s]://host[:port][/path]" without a final "/". Returns nothing if the text isn't such a
/// URL, or has a user, a password, a query or a fragment.
std::optional<std::string> normalizedEndpoint(std::string const& text);

/// The parameters of a query: names and values, not encoded.
using Query = std::vector<std::pair<std::string, std::string>>;

/// The query as it is sent and signed (AWS Signature Version 4): percent-encoded, sorted by name, "name=" for an empty
/// value.
std::string canonicalQuery(Query query);

/// The URL of a bucket, without a query: at the configured endpoint or else at the region's own. The bucket becomes part
/// of the host name with the style "virtual", and with "auto" at a region's own endpoint, unless its name can't be one
/// label of a host name or the endpoint's host is an address. Otherwise it is the first element of the path. For an
/// empty name the URL is that of the service, which lists the buckets.
std::string bucketUrl(Configuration const& configuration, std::string_view region, std::string_view bucket);

}  // namespace foundation::storage::s3
