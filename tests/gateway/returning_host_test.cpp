// A host whose error routines come back: this program's definitions take the place of the host library's.
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
  std::string const numArgs = "KORVAN:automation:io:glob:InvalidNumArgs";
  std::string const mustBeText = "KORVAN:string:MustBeStringScalarOrCharacterVector";
  struct Case {
    int nlhs;
    std::size_t inputs;
    std::vector<std::string> told;
    std::string thrown;
  };
  Case const cases[] = {
      {2, 1, {"maxlhs"}, mustBeText},
      {1, 7, {"maxrhs", numArgs}, numArgs},
      {2, 0, {"maxlhs", "minrhs", numArgs}, numArgs},
      {1, 2, {numArgs}, numArgs},
  };
  for (Case const& c : cases) {
    told.clear();
    EXPECT_EQ(outcome(std::vector(c.inputs, logical(true)), c.nlhs), std::vector{"thrown " + c.thrown});
    EXPECT_EQ(told, c.told);
  }
}

}  // namespace
}  // namespace korvan::test
