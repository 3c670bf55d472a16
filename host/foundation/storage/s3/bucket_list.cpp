#include "foundation/storage/s3/bucket_list.hpp"

#include <pugixml.hpp>

#include "foundation/storage/s3/page_document.hpp"

namespace foundation::storage::s3 {

ListPage parseBucketList(std::string_view body) {
  pugi::xml_document const document = loadPage(body, "ListAllMyBucketsResult");
  pugi::xml_node const root = document.first_child();
  ListPage page;
  for (pugi::xml_node const bucket : root.child("Buckets").children("Bucket"))
    page.keys.push_back(parseName(bucket.child("Name"), false));
  page.continuationToken = root.child("ContinuationToken").text().get();
  page.truncated = !page.continuationToken.empty();
  return page;
}

}  // namespace foundation::storage::s3
