#pragma once

#include <map>
#include <string>
#include <string_view>

namespace foundation::storage::s3 {

/// The settings of one section by name, in lower case. A setting indented below another is named "parent.setting".
using ProfileSection = std::map<std::string, std::string, std::less<>>;

/// The sections of a shared credentials or config file, by the text between the brackets (without quotation marks, each
/// run of blanks replaced by one space).
using ProfileFile = std::map<std::string, ProfileSection, std::less<>>;

/// Parses the text of such a file: "[section]" and "name = value" lines, one setting a line. Blanks around names and
/// values are dropped. A line that begins with "#" or ";" is a comment; elsewhere both are ordinary characters, as a
/// secret may contain them. If a setting is repeated, the last value counts. Other lines are ignored.
ProfileFile parseProfileFile(std::string_view text);

}  // namespace foundation::storage::s3
