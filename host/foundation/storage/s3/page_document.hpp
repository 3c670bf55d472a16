#pragma once

#include <string>
#include <string_view>

#include <pugixml.hpp>

namespace foundation::storage::s3 {

/// Loads the XML of a page of a listing, whose root element must have that name. Throws `MalformedPage` if the text
/// isn't well-formed, has another root element, or has characters that would alter names silently.
pugi::xml_document loadPage(std::string_view body, std::string_view rootName);

/// The text of an element that gives a name, decoded if it is percent-encoded. Throws `MalformedPage` if it is empty or
/// isn't one text.
std::string parseName(pugi::xml_node node, bool encoded);

}  // namespace foundation::storage::s3
