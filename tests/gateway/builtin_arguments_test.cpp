#include "builtin_call.hpp"
#include "support/temporary_folder.hpp"

namespace korvan::test {
namespace {

TEST(BuiltinArguments, AreCheckedInOrderAndTakeEffect) {
  TemporaryFolder const folder;
  for (char const* file : {"a/.x", "a/y", "b/z"}) folder.addFile(file);
  CurrentFolder const current(folder.path());
  std::string const mustBeText = "thrown KORVAN:string:MustBeStringScalarOrCharacterVector";
  std::string const missing = "thrown KORVAN:string:MissingNotSupported";
  std::string const numArgs = "reported KORVAN:automation:io:glob:InvalidNumArgs";
  std::string const argName = "reported KORVAN:automation:io:glob:InvalidArgName ";
  std::string const argScalar = "reported KORVAN:automation:io:glob:InvalidArgScalar ";
  using Characters = vxArray_tag::Characters;
  Array const text = row(u"x");
  Array const all = row(u"*");
  Array const bad = array({1, 1}, vxArray_tag::Doubles{1});
  Array const none = strings({std::nullopt});
  Array const root = strings({u"rOOTfOLDER"});
  Array const dot = row(u"INCLUDEDOTFILES");
  struct Case {
    char const* what;
    std::vector<Array> inputs;
    std::vector<std::string> outcome;
    int nlhs = 1;
  };
  Case const cases[] = {
      {"outputs before too many inputs", std::vector(6, bad), {"reported KORVAN:interpreter:TooManyOutputs"}, 2},
      {"no input", {}, {"reported KORVAN:interpreter:NotEnoughInputs"}},
      {"six inputs", std::vector(6, bad), {"reported KORVAN:interpreter:TooManyInputs"}},
      {"two inputs, before the pattern", {bad, text}, {numArgs}},
      {"four inputs, before the pattern", {bad, text, text, text}, {numArgs}},
      {"pattern before option name", {bad, row(u"None"), text}, {mustBeText}},
      {"name is not text, its value is valid", {text, bad, logical(true)}, {mustBeText}},
      {"first pair before second", {text, row(u"a"), text, bad, text}, {argName + "\"a\""}},
      {"the value of an unknown name is not examined", {text, row(u"Z"), nullptr}, {argName + "\"Z\""}},
      {"prefix of a name", {text, row(u"Root"), text}, {argName + "\"Root\""}},
      {"longer than a name", {text, row(u"RootFolder2"), text}, {argName + "\"RootFolder2\""}},
      {"empty name", {text, row(u""), text}, {argName + "\"\""}},
      // U+0152 would become "R" if it were truncated to a byte.
      {"unit beyond a byte", {text, row(u"\u0152ootFolder"), text}, {argName + "\"\xC5\x92ootFolder\""}},
      {"root is not text", {text, root, bad}, {mustBeText}},
      {"flag is a number", {text, dot, bad}, {argScalar + "\"INCLUDEDOTFILES\" logical"}},
      {"flag is two logicals",
       {text, row(u"includeDOTfiles"), array({1, 2}, vxArray_tag::Logicals{1, 1})},
       {argScalar + "\"includeDOTfiles\" logical"}},
      {"row", {row(u"/"), root, text}, {"/"}},
      {"string scalar", {strings({u"/"})}, {"/"}},
      {"1-by-0", {array({1, 0}, Characters())}, {}},
      {"0-by-0", {array({0, 0}, Characters())}, {}},
      {"null", {nullptr}, {mustBeText}},
      {"0-by-1", {array({0, 1}, Characters())}, {mustBeText}},
      {"3-by-1", {array({3, 1}, Characters(u"abc"))}, {mustBeText}},
      {"1-by-1-by-2", {array({1, 1, 2}, Characters(u"ab"))}, {mustBeText}},
      {"two strings", {strings({u"a", u"b"})}, {mustBeText}},
      {"missing", {none}, {missing}},
      {"logical", {logical(true)}, {mustBeText}},
      {"empty root, no output requested", {all, root, row(u"")}, {"a", "b"}, 0},
      {"relative root", {all, root, row(u"a")}, {"y"}},
      {"root as an IRI", {all, root, row(u"file://" + folder.text() + u"/b")}, {"z"}},
      {"second root", {all, root, row(u"a"), root, row(u"b")}, {"z"}},
      {"dot files", {row(u"a/*"), dot, logical(true)}, {"a/.x", "a/y"}},
      {"dot files turned off again", {row(u"a/*"), dot, logical(true), dot, logical(false)}, {"a/y"}},
      {"both options", {all, dot, logical(true), root, strings({u"a"})}, {".x", "y"}},
  };
  for (Case const& c : cases) EXPECT_EQ(outcome(c.inputs, c.nlhs), c.outcome) << c.what;
}

}  // namespace
}  // namespace korvan::test
