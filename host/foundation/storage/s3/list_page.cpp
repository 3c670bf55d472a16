#include "foundation/storage/s3/list_page.hpp"

#include <utility>

#include <pugixml.hpp>

#include "foundation/storage/s3/url.hpp"

namespace foundation::storage::s3 {
namespace {

// A store may skip much that is deleted and give a page of nothing, but not without end.
constexpr unsigned mostEmptyPages = 100;

std::string nameOf(pugi::xml_node node, bool encoded) {
  std::string_view const text = node.text().get();
  if (node.first_child() != node.last_child()) throw BadPage("a name is written in pieces");
  if (text.empty()) throw BadPage("an entry has no name");
  if (!encoded) return std::string(text);
  auto name = percentDecode(text);
  if (!name) throw BadPage("a name isn't encoded as it should be");
  return *std::move(name);
}

bool truthOf(std::string_view text) {
  if (text == "true") return true;
  if (text == "false") return false;
  throw BadPage("it doesn't say whether more follows");
}

}  // namespace

ListPage parseListPage(std::string_view body) {
  pugi::xml_document document;
  // Names of nothing but blanks are names.
  auto const parsed =
      document.load_buffer(body.data(), body.size(), pugi::parse_default | pugi::parse_ws_pcdata_single);
  if (!parsed) throw BadPage("it isn't well-formed XML (" + std::string(parsed.description()) + ')');
  pugi::xml_node const root = document.document_element();
  if (root.name() != std::string_view("ListBucketResult")) throw BadPage("it isn't the page of a listing");

  bool const encoded = root.child("EncodingType").text().get() == std::string_view("url");
  ListPage page;
  for (pugi::xml_node const node : root) {
    std::string_view const name = node.name();
    if (name == "Contents")
      page.keys.push_back(nameOf(node.child("Key"), encoded));
    else if (name == "CommonPrefixes")
      for (pugi::xml_node const prefix : node.children("Prefix"))
        page.commonPrefixes.push_back(nameOf(prefix, encoded));
  }
  page.truncated = truthOf(root.child("IsTruncated").text().get());
  page.continuationToken = root.child("NextContinuationToken").text().get();
  return page;
}

PageCheck::PageCheck(std::string prefix, bool delimited, std::string after)
    : prefix_(std::move(prefix)), delimited_(delimited), last_(std::move(after)), begun_(!last_.empty()) {}

void PageCheck::acceptName(std::string const& name, bool isPrefix) const {
  if (!name.starts_with(prefix_)) throw BadPage("it holds a name that doesn't begin with what was asked for");
  auto const delimiter = name.find('/', prefix_.size());
  bool const good =
      isPrefix ? delimited_ && delimiter == name.size() - 1 : !delimited_ || delimiter == std::string::npos;
  if (!good) throw BadPage("it doesn't keep to the delimiter");
  if (begun_ && name < last_) throw BadPage("it goes back behind the page before it");
}

void PageCheck::accept(ListPage const& page) {
  std::string const* greatest = nullptr;
  for (auto const* const names : {&page.keys, &page.commonPrefixes})
    for (std::string const& name : *names) {
      acceptName(name, names == &page.commonPrefixes);
      if (greatest == nullptr || *greatest < name) greatest = &name;
    }
  if (greatest == nullptr) {
    if (page.truncated && ++emptyPages_ > mostEmptyPages)
      throw BadPage("page after page is empty, yet more is said to follow");
  } else {
    if (begun_ && !(last_ < *greatest)) throw BadPage("it repeats the page before it");
    last_ = *greatest;
    begun_ = true;
    emptyPages_ = 0;
  }
  if (!page.truncated) return;
  if (page.continuationToken.empty()) throw BadPage("more follows, yet no token tells how to ask for it");
  if (page.continuationToken == token_) throw BadPage("its continuation token repeats");
  token_ = page.continuationToken;
}

}  // namespace foundation::storage::s3
