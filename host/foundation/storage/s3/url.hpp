#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "foundation/storage/s3/configuration.hpp"

namespace foundation::storage::s3 {

/// Percent-encodes every byte but `A-Za-z0-9-._~`, in upper case hex: the form that signatures are made over.
std::string percentEncode(std::string_view bytes);

/// The bytes that an encoded text of a store stands for: "%XX", and "+" as a space. Nothing where "%" isn't followed by
/// two hex digits.
std::optional<std::string> percentDecode(std::string_view text);

/// The parameters of a query: names and values, not encoded.
using Query = std::vector<std::pair<std::string, std::string>>;

/// The query as it is sent and signed: encoded, sorted by name, "name=" for an empty value.
std::string canonicalQuery(Query query);

/// The URL of a bucket, without a query. Path style (the bucket as the first element of the path) with an endpoint of
/// the user's and for names that can't be one label of a host name; otherwise the bucket is part of the host.
std::string bucketUrl(Configuration const& configuration, std::string_view bucket);

}  // namespace foundation::storage::s3
