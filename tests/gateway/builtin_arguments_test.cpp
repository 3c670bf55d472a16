#include <gtest/gtest.h>

#include "builtin_call.hpp"
#include "support/temporary_folder.hpp"

namespace korvan::test {
namespace {

constexpr char const* mustBeText = "KORVAN:string:MustBeStringScalarOrCharacterVector";
constexpr char const* missing = "KORVAN:string:MissingNotSupported";
constexpr char const* invalidNumArgs = "KORVAN:automation:io:glob:InvalidNumArgs";
constexpr char const* invalidArgName = "KORVAN:automation:io:glob:InvalidArgName";
constexpr char const* invalidArgScalar = "KORVAN:automation:io:glob:InvalidArgScalar";

TEST(BuiltinArguments, AreCheckedInOrderAndReportedByTheirOwnChannel) {
  Array const text = row(u"x");
  Array const bad = number(1);
  struct Case {
    char const* what;
    int nlhs;
    std::vector<Array> inputs;
    Failure expected;
  };
  Case const cases[] = {
      {"outputs before inputs", 2, {}, reported("KORVAN:interpreter:TooManyOutputs")},
      {"outputs before too many inputs",
       2,
       {bad, bad, bad, bad, bad, bad},
       reported("KORVAN:interpreter:TooManyOutputs")},
      {"no input", 1, {}, reported("KORVAN:interpreter:NotEnoughInputs")},
      {"six inputs", 1, {bad, bad, bad, bad, bad, bad}, reported("KORVAN:interpreter:TooManyInputs")},
      {"two inputs, before the pattern", 1, {bad, text}, reported(invalidNumArgs)},
      {"four inputs, before the pattern", 0, {bad, text, text, text}, reported(invalidNumArgs)},
      {"pattern before option name", 1, {bad, row(u"None"), text}, thrown(mustBeText)},
      {"name is no text, its value would do", 1, {text, bad, logical(true)}, thrown(mustBeText)},
      {"name is missing", 1, {text, strings({std::nullopt}), text}, thrown(missing)},
      {"first pair before second", 1, {text, row(u"a"), text, bad, text}, reported(invalidArgName, {u"a"})},
      {"second pair", 1, {text, row(u"rootfolder"), text, row(u"b"), text}, reported(invalidArgName, {u"b"})},
      {"the value of an unknown name is not looked at",
       1,
       {text, row(u"Z"), nullptr},
       reported(invalidArgName, {u"Z"})},
      {"prefix of a name", 1, {text, row(u"Root"), text}, reported(invalidArgName, {u"Root"})},
      {"name with more", 1, {text, row(u"RootFolder2"), text}, reported(invalidArgName, {u"RootFolder2"})},
      {"empty name", 1, {text, row(u""), text}, reported(invalidArgName, {u""})},
      // U+0152 would be "R" if it were cut to a byte; U+212A is a "K" only to Unicode.
      {"units beyond a byte", 1, {text, row(u"\u0152ootFolder"), text}, reported(invalidArgName, {u"\u0152ootFolder"})},
      {"root is no text", 1, {text, row(u"RootFolder"), bad}, thrown(mustBeText)},
      {"root is missing", 1, {text, row(u"RootFolder"), strings({std::nullopt})}, thrown(missing)},
      {"flag is a number",
       1,
       {text, row(u"IncludeDotFiles"), bad},
       reported(invalidArgScalar, {u"IncludeDotFiles", "logical"})},
      {"flag is two logicals",
       1,
       {text, row(u"includeDOTfiles"), array({1, 2}, vxArray_tag::Logicals{1, 1})},
       reported(invalidArgScalar, {u"includeDOTfiles", "logical"})},
      {"flag is text",
       1,
       {text, strings({u"INCLUDEDOTFILES"}), row(u"true")},
       reported(invalidArgScalar, {u"INCLUDEDOTFILES", "logical"})},
  };
  for (Case const& c : cases) {
    SCOPED_TRACE(c.what);
    matrix::detail::ArrayPtr output(Quindarel::createLogicalScalar(true));
    vxArray_tag const* const untouched = output.get();
    EXPECT_EQ(failureOf([&] { callGlob(c.nlhs, output, c.inputs); }), c.expected);
    EXPECT_EQ(output.get(), untouched);
  }
}

TEST(BuiltinArguments, TextIsAStringScalarOrACharacterRow) {
  TemporaryFolder const folder;
  folder.addFile("ab");
  CurrentFolder const current(folder.path());
  using Characters = vxArray_tag::Characters;
  struct Case {
    char const* what;
    Array pattern;
    Failure expected;
    std::vector<std::string> found{};
  };
  Case const cases[] = {
      {"row", row(u"ab"), {}, {"ab"}},
      {"string scalar", strings({u"ab"}), {}, {"ab"}},
      {"1-by-0", array({1, 0}, Characters()), {}},
      {"0-by-0", array({0, 0}, Characters()), {}},
      {"empty string", strings({u""}), {}},
      {"null", nullptr, thrown(mustBeText)},
      {"0-by-1", array({0, 1}, Characters()), thrown(mustBeText)},
      {"3-by-1", array({3, 1}, Characters(u"abc")), thrown(mustBeText)},
      {"2-by-3", array({2, 3}, Characters(u"abcdef")), thrown(mustBeText)},
      {"1-by-1-by-2", array({1, 1, 2}, Characters(u"ab")), thrown(mustBeText)},
      {"0-by-0-by-2", array({0, 0, 2}, Characters()), thrown(mustBeText)},
      {"two strings", strings({u"a", u"b"}), thrown(mustBeText)},
      {"no string", strings({}), thrown(mustBeText)},
      {"missing", strings({std::nullopt}), thrown(missing)},
      {"logical", logical(true), thrown(mustBeText)},
  };
  for (Case const& c : cases) {
    SCOPED_TRACE(c.what);
    std::vector<std::string> found;
    EXPECT_EQ(failureOf([&] { found = matches({c.pattern}); }), c.expected);
    EXPECT_EQ(found, c.found);
  }
}

TEST(BuiltinArguments, OptionsActAndTheLaterValueCounts) {
  TemporaryFolder const folder;
  folder.addFile("a/.x");
  folder.addFile("a/y");
  folder.addFile("b/z");
  CurrentFolder const current(folder.path());
  Array const all = row(u"*");
  Array const rootName = strings({u"rOOTfOLDER"});
  Array const dotName = row(u"INCLUDEDOTFILES");
  struct Case {
    char const* what;
    std::vector<Array> inputs;
    std::vector<std::string> found;
  };
  Case const cases[] = {
      {"no option", {all}, {"a", "b"}},
      {"empty root", {all, rootName, row(u"")}, {"a", "b"}},
      {"relative root", {all, rootName, row(u"a")}, {"y"}},
      {"absolute root", {all, rootName, row(folder.text() + u"/b")}, {"z"}},
      {"root as an IRI", {all, rootName, row(u"file://" + folder.text() + u"/b")}, {"z"}},
      {"second root", {all, rootName, row(u"a"), rootName, row(u"b")}, {"z"}},
      {"dot files", {row(u"a/*"), dotName, logical(true)}, {"a/.x", "a/y"}},
      {"no dot files", {row(u"a/*"), dotName, logical(false)}, {"a/y"}},
      {"dot files taken back", {row(u"a/*"), dotName, logical(true), dotName, logical(false)}, {"a/y"}},
      {"both options", {all, dotName, logical(true), rootName, strings({u"a"})}, {".x", "y"}},
  };
  for (Case const& c : cases) EXPECT_EQ(matches(c.inputs), c.found) << c.what;
}

TEST(BuiltinOutput, IsAColumnWhateverTheNumberOfMatches) {
  TemporaryFolder const folder;
  folder.addFile("a");
  folder.addFile("b");
  CurrentFolder const current(folder.path());
  for (auto const& [pattern, count] : {std::pair(u"*", 2U), std::pair(u"a", 1U), std::pair(u"c*", 0U)}) {
    matrix::detail::ArrayPtr output = Quindarel::createLogicalScalar(true);
    callGlob(0, output, {row(pattern)});
    ASSERT_TRUE(Quindarel::String::isString(output.get()));
    auto const size = output->dimensions();
    EXPECT_EQ(std::vector(size.begin(), size.end()), (std::vector<std::size_t>{count, 1}));
  }
}

}  // namespace
}  // namespace korvan::test
