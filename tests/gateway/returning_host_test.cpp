// A host whose error routines come back: this program's definitions take the place of the host library's.
#include <gtest/gtest.h>

#include "builtin_call.hpp"

namespace {
std::vector<std::string> told;
}

namespace matrix::detail {

void error_minrhs() {
  told.emplace_back("minrhs");
}
void error_maxrhs() {
  told.emplace_back("maxrhs");
}
void error_maxlhs() {
  told.emplace_back("maxlhs");
}
void do_legacy_vx_error(foundation::core::except::IUserException const& error) {
  told.push_back(error.GetID());
}

}  // namespace matrix::detail

namespace korvan::test {
namespace {

TEST(ReturningHost, GetsTheLibrarysOwnErrorAsAnExceptionInstead) {
  Array const bad = number(1);
  std::string const invalidNumArgs = "KORVAN:automation:io:glob:InvalidNumArgs";
  struct Case {
    char const* what;
    int nlhs;
    std::vector<Array> inputs;
    std::vector<std::string> told;
    Failure expected;
  };
  Case const cases[] = {
      {"too many outputs: the call goes on",
       2,
       {bad},
       {"maxlhs"},
       thrown("KORVAN:string:MustBeStringScalarOrCharacterVector")},
      {"too many inputs", 1, {bad, bad, bad, bad, bad, bad, bad}, {"maxrhs", invalidNumArgs}, thrown(invalidNumArgs)},
      {"no input", 1, {}, {"minrhs", invalidNumArgs}, thrown(invalidNumArgs)},
      {"no input, too many outputs", 2, {}, {"maxlhs", "minrhs", invalidNumArgs}, thrown(invalidNumArgs)},
      {"two inputs", 1, {bad, bad}, {invalidNumArgs}, thrown(invalidNumArgs)},
  };
  for (Case const& c : cases) {
    SCOPED_TRACE(c.what);
    told.clear();
    matrix::detail::ArrayPtr output;
    EXPECT_EQ(failureOf([&] { callGlob(c.nlhs, output, c.inputs); }), c.expected);
    EXPECT_EQ(told, c.told);
  }
}

}  // namespace
}  // namespace korvan::test
