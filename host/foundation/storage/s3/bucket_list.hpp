#pragma once

#include <string_view>

#include "foundation/storage/s3/list_page.hpp"

namespace foundation::storage::s3 {

/// Parses the XML of a page of an account's buckets (ListBuckets): their names as keys, in the order of the page. More
/// pages follow if it has a continuation token. Unknown elements are ignored. Throws `MalformedPage` if the text isn't
/// well-formed or isn't such a page.
ListPage parseBucketList(std::string_view body);

}  // namespace foundation::storage::s3
