// A host whose error routines return: this program's definitions replace the host library's.
#include "builtin_call.hpp"

namespace {
std::vector<std::string> reported;
}

namespace matrix::detail {

void error_minrhs() {
  reported.emplace_back("minrhs");
}
void error_maxrhs() {
  reported.emplace_back("maxrhs");
}
void error_maxlhs() {
  reported.emplace_back("maxlhs");
}
void do_legacy_vx_error(foundation::core::except::IUserException const& error) {
  reported.push_back(error.GetID());
}

}  // namespace matrix::detail

namespace korvan::test {
namespace {

TEST(ReturningHost, GetsTheLibrarysErrorAsAnException) {
  std::string const numArgs = "KORVAN:automation:io:glob:InvalidNumArgs";
  std::string const mustBeText = "KORVAN:string:MustBeStringScalarOrCharacterVector";
  struct Case {
    int nlhs;
    std::size_t inputs;
    std::vector<std::string> reported;
    std::string thrown;
  };
  Case const cases[] = {
      {2, 1, {"maxlhs"}, mustBeText},
      {1, 7, {"maxrhs", numArgs}, numArgs},
      {2, 0, {"maxlhs", "minrhs", numArgs}, numArgs},
      {1, 2, {numArgs}, numArgs},
  };
  for (Case const& c : cases) {
    reported.clear();
    EXPECT_EQ(outcome(std::vector(c.inputs, logical(true)), c.nlhs), std::vector{"thrown " + c.thrown});
    EXPECT_EQ(reported, c.reported);
  }
}

}  // namespace
}  // namespace korvan::test
