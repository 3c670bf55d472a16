#include "foundation/storage/s3/page_document.hpp"

#include <charconv>
#include <cstdint>
#include <utility>

#include "foundation/storage/s3/list_page.hpp"
#include "foundation/storage/s3/url.hpp"

namespace foundation::storage::s3 {
namespace {

// Whether the text between "&" and ";" is a reference to a character.
bool isReference(std::string_view name) {
  for (std::string_view const known : {"quot", "amp", "lt", "gt", "apos"})
    if (name == known) return true;
  if (!name.starts_with('#')) return false;
  int const base = name.starts_with("#x") ? 16 : 10;
  name.remove_prefix(base == 16 ? 2 : 1);
  std::uint32_t character = 0;
  auto const [end, error] = std::from_chars(name.data(), name.data() + name.size(), character, base);
  return error == std::errc() && end == name.data() + name.size() && character != 0 && character <= 0x10FFFF &&
         (character < 0xD800 || character > 0xDFFF);
}

// pugixml ends a text at NUL and copies references that it doesn't know, so that keys would be altered silently.
void checkCharacters(std::string_view body) {
  if (body.find('\0') != std::string_view::npos) throw MalformedPage("it contains a NUL byte");
  for (auto at = body.find('&'); at != std::string_view::npos; at = body.find('&', at + 1))
    if (!isReference(body.substr(at + 1, body.find(';', at) - at - 1)))
      throw MalformedPage("it contains an undefined entity or character");
}

}  // namespace

pugi::xml_document loadPage(std::string_view body, std::string_view rootName) {
  checkCharacters(body);
  pugi::xml_document document;
  // A name may consist of blanks. As a fragment, the document shows what is outside its root element.
  constexpr unsigned options = pugi::parse_default | pugi::parse_ws_pcdata_single | pugi::parse_fragment;
  auto const parsed = document.load_buffer(body.data(), body.size(), options);
  if (!parsed) throw MalformedPage("it is not well-formed XML (" + std::string(parsed.description()) + ')');
  pugi::xml_node const root = document.first_child();
  if (root.name() != rootName) throw MalformedPage("it is not a page of a listing");
  if (root.next_sibling()) throw MalformedPage("more follows after the end of the page");
  return document;
}

std::string parseName(pugi::xml_node node, bool encoded) {
  std::string_view const text = node.text().get();
  if (node.first_child() != node.last_child()) throw MalformedPage("a name is not a single text");
  if (text.empty()) throw MalformedPage("an entry has no name");
  if (!encoded) return std::string(text);
  auto name = percentDecode(text);
  if (!name) throw MalformedPage("a name is not percent-encoded correctly");
  return *std::move(name);
}

}  // namespace foundation::storage::s3
