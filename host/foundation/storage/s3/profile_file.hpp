#pragma once

#include <map>
#include <string>
#include <string_view>

namespace foundation::storage::s3 {

/// The settings of one section, by name in lower case. A setting that is indented below another is named
/// "other.setting".
using ProfileSection = std::map<std::string, std::string, std::less<>>;

/// The sections of a shared credentials or configuration file, by the text between the brackets (runs of blanks made
/// one space, quotes dropped).
using ProfileFile = std::map<std::string, ProfileSection, std::less<>>;

/// Reads the text of such a file: "[section]" lines and "name = value" lines, one setting each. Blanks around name and
/// value are dropped; a line that begins with "#" or ";" is a comment, and both are ordinary characters elsewhere, as
/// in a secret. Of a setting that is given twice the last holds. Other lines are passed over. Pure text.
ProfileFile parseProfileFile(std::string_view text);

}  // namespace foundation::storage::s3
