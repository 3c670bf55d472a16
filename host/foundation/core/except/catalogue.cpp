#include "foundation/core/except/catalogue.hpp"

#include <array>
#include <string_view>

#include "foundation/core/text/bytes.hpp"
#include "foundation/core/text/escape.hpp"

namespace resource_core {

namespace {

/// One message; "{0}" and "{1}" are the places of its arguments.
struct Entry {
  std::string_view component;
  std::string_view mnemonic;
  std::u16string_view text;
};

constexpr Entry entries[] = {
    {"KORVAN:automation:io:glob", "InvalidNumArgs",
     u"Each option needs a name and a value: call glob(PATTERN), glob(PATTERN, NAME, VALUE) or glob(PATTERN, NAME, VALUE, NAME, VALUE)."},
    {"KORVAN:automation:io:glob", "InvalidArgName",
     u"There is no option \"{0}\"; the options are \"RootFolder\" and \"IncludeDotFiles\"."},
    {"KORVAN:automation:io:glob", "InvalidArgScalar",
     u"The value of the option \"{0}\" must be a {1} scalar: true or false."},
    {"KORVAN:automation:io:FileIO", "InvalidFile",
     u"\"{0}\" can't be reached: name a file or folder that exists, on a disk or in a store that answers."},
    {"KORVAN:virtualfilesystem", "invalidIRI",
     u"\"{0}\" is not a valid location: write SCHEME://PATH, in it \"%\" only before two hex digits (\"%25\" is \"%\" itself), \"?\" as \"%3F\" and \"#\" as \"%23\"."},
    {"KORVAN:virtualfilesystem", "unsupportedProvider",
     u"No storage provider serves the scheme \"{0}\"; file:///FOLDER names a place on the local disk, s3://BUCKET/FOLDER one in an object store."},
    {"KORVAN:virtualfilesystem", "permissionDenied",
     u"Permission denied for \"{0}\": the search needs the right to read each folder that it lists and to pass through those above it."},
    {"KORVAN:string", "MustBeStringScalarOrCharacterVector",
     u"A pattern, an option's name and the value of \"RootFolder\" must be text: a string scalar or a character row vector."},
    {"KORVAN:string", "MissingNotSupported",
     u"A pattern, an option's name and the value of \"RootFolder\" must be text; a missing string has none."},
    {"KORVAN:interpreter", "NotEnoughInputs", u"Not enough inputs: the function needs at least one more."},
    {"KORVAN:interpreter", "TooManyInputs", u"Too many inputs: the function takes fewer."},
    {"KORVAN:interpreter", "TooManyOutputs", u"Too many outputs: the function returns fewer than were requested."},
    {"KORVAN:interpreter", "Interrupted", u"Interrupted by the user."},
    {"KORVAN:interpreter", "OutOfMemory", u"Out of memory: narrow the search, or free memory and try again."},
    {"KORVAN:interpreter", "CurrentFolderUnknown",
     u"The current folder can't be determined ({0}): change to a folder that exists and that you may read."},
    {"KORVAN:interpreter", "Failure", u"The call failed: {0}"},
};

using foundation::core::text::appendOneLine;

void appendArgument(std::u16string& line, MsgArgument const& argument) {
  if (auto const* wide = std::get_if<std::u16string>(&argument)) return appendOneLine(line, *wide);
  auto const* narrow = std::get_if<std::string>(&argument);
  appendOneLine(line, foundation::core::text::fromBytes(narrow ? *narrow : std::to_string(std::get<long>(argument))));
}

std::u16string filled(std::u16string_view text, std::vector<MsgArgument> const& arguments) {
  std::u16string line;
  for (std::size_t i = 0; i < text.size(); ++i) {
    // The texts above have "{" only before a digit and "}".
    if (text[i] != u'{') {
      line += text[i];
      continue;
    }
    std::size_t const index = text[i + 1] - std::size_t{u'0'};
    if (index < arguments.size()) appendArgument(line, arguments[index]);
    i += 2;
  }
  return line;
}

}  // namespace

std::u16string messageText(BaseMsgID const& id) {
  for (Entry const& entry : entries)
    if (entry.component == id.component() && entry.mnemonic == id.mnemonic()) return filled(entry.text, id.arguments());

  std::u16string line = foundation::core::text::fromBytes(id.component() + ':' + id.mnemonic());
  for (MsgArgument const& argument : id.arguments()) {
    line += u' ';
    appendArgument(line, argument);
  }
  return line;
}

}  // namespace resource_core
