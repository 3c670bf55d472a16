#include "foundation/storage/s3/list_page.hpp"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstdint>
#include <functional>
#include <utility>

#include <pugixml.hpp>

#include "foundation/storage/s3/page_document.hpp"
#include "foundation/storage/s3/timestamp.hpp"

namespace foundation::storage::s3 {
namespace {

// A store may skip many deleted keys and return an empty page, but not endlessly.
constexpr unsigned maximumEmptyPages = 100;

bool parseBool(std::string_view text) {
  if (text == "true") return true;
  if (text == "false") return false;
  throw MalformedPage("IsTruncated is neither true nor false");
}

vfs::EntryFacts parseFacts(pugi::xml_node object) {
  vfs::EntryFacts facts;
  std::string_view const size = object.child("Size").text().get();
  std::uint64_t bytes = 0;
  auto const [end, error] = std::from_chars(size.data(), size.data() + size.size(), bytes);
  if (error == std::errc() && end == size.data() + size.size()) facts.size = bytes;
  if (auto const time = parseTimestamp(object.child("LastModified").text().get())) {
    auto const seconds = std::chrono::floor<std::chrono::seconds>(*time);
    std::chrono::nanoseconds const rest = *time - seconds;
    facts.modified = vfs::Timestamp{seconds.time_since_epoch().count(), static_cast<std::uint32_t>(rest.count())};
  }
  std::string_view etag = object.child("ETag").text().get();
  if (etag.size() >= 2 && etag.starts_with('"') && etag.ends_with('"')) etag = etag.substr(1, etag.size() - 2);
  facts.etag = etag;
  facts.storageClass = object.child("StorageClass").text().get();
  return facts;
}

}  // namespace

ListPage parseListPage(std::string_view body, bool withFacts) {
  pugi::xml_document const document = loadPage(body, "ListBucketResult");
  pugi::xml_node const root = document.first_child();
  bool const encoded = root.child("EncodingType").text().get() == std::string_view("url");
  ListPage page;
  for (pugi::xml_node const node : root) {
    std::string_view const name = node.name();
    if (name == "Contents") {
      page.keys.push_back(parseName(node.child("Key"), encoded));
      if (withFacts) page.facts.push_back(parseFacts(node));
    } else if (name == "CommonPrefixes") {
      for (pugi::xml_node const prefix : node.children("Prefix"))
        page.commonPrefixes.push_back(parseName(prefix, encoded));
    }
  }
  page.truncated = parseBool(root.child("IsTruncated").text().get());
  page.continuationToken = root.child("NextContinuationToken").text().get();
  return page;
}

PageCheck::PageCheck(std::string prefix, bool delimited, std::string after, std::string token)
    : prefix_(std::move(prefix)), delimited_(delimited), last_(std::move(after)), token_(std::move(token)) {}

void PageCheck::checkName(std::string const& name, bool isPrefix) const {
  if (!name.starts_with(prefix_)) throw MalformedPage("a name does not begin with the requested prefix");
  auto const delimiter = name.find('/', prefix_.size());
  bool const isSplit =
      isPrefix ? delimited_ && delimiter == name.size() - 1 : !delimited_ || delimiter == std::string::npos;
  if (!isSplit) throw MalformedPage("a name is not split at the requested delimiter");
}

// Whether the page's names are in byte order and none precedes those of the previous pages. A common prefix may come
// again.
bool PageCheck::continues(ListPage const& page) {
  std::string greatest = last_;
  for (auto const* const names : {&page.keys, &page.commonPrefixes}) {
    if (names->empty()) continue;
    if (names->front() < last_ || !std::is_sorted(names->begin(), names->end())) return false;
    greatest = std::max(greatest, names->back());
  }
  last_ = std::move(greatest);
  return true;
}

bool PageCheck::hasNewNames(ListPage const& page) {
  std::size_t const before = seen_.size();
  for (auto const* const names : {&page.keys, &page.commonPrefixes})
    for (std::string const& name : *names) seen_.insert(std::hash<std::string>()(name));
  return seen_.size() > before;
}

void PageCheck::accept(ListPage const& page) {
  for (std::string const& key : page.keys) checkName(key, false);
  for (std::string const& prefix : page.commonPrefixes) checkName(prefix, true);
  if (page.keys.empty() && page.commonPrefixes.empty()) {
    if (page.truncated && ++emptyPages_ > maximumEmptyPages) throw MalformedPage("too many empty pages in a row");
  } else {
    emptyPages_ = 0;
    std::string const before = last_;
    isOrdered_ = isOrdered_ && continues(page);
    bool const isNew = isOrdered_ ? before < last_ : hasNewNames(page);
    if (!isNew) throw MalformedPage("a page repeats the previous one");
  }
  if (!page.truncated) return;
  if (page.continuationToken.empty()) throw MalformedPage("more pages follow, but there is no continuation token");
  if (page.continuationToken == token_) throw MalformedPage("the continuation token repeats");
  token_ = page.continuationToken;
}

}  // namespace foundation::storage::s3
