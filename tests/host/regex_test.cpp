#include "scl/regex/regex.hpp"

#include <memory>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

namespace {

using scl::regex::regex;

class Shout final : public scl::regex::regex_impl_abstract {
 public:
  std::u16string replace(std::u16string_view text, std::u16string_view) const override {
    return std::u16string(text) + u"!";
  }
};

TEST(Regex, ReplacesEveryMatch) {
  struct {
    std::u16string expression;
    std::u16string text;
    std::u16string replacement;
    std::u16string result;
  } const cases[] = {
      {u"a+", u"baaacad", u"-", u"b-c-d"},
      {u"(?<!x)a(?!y)", u"a xa ay a", u"<long replacement>", u"<long replacement> xa ay <long replacement>"},
      {u"a", u"aa", u"$1\\0${x}", u"$1\\0${x}$1\\0${x}"},  // as it stands
      {u"a", u"", u"b", u""},
      {u"a", u"b", u"", u"b"},
      {u"b",
       u"\xDCFF"
       u"b\xD800",
       u"", u"\xDCFF\xD800"},
      {u".", u"\U0001F600", u"u", u"uu"},
  };
  for (auto const& c : cases) {
    EXPECT_EQ(regex(c.expression, 0, nullptr).engine()->replace(c.text, c.replacement), c.result)
        << testing::PrintToString(c.expression);
  }
}

TEST(Regex, RefusesWhatIsNoExpression) {
  EXPECT_THROW(regex(u"(a", 0, nullptr), std::invalid_argument);
}

TEST(Regex, HoldsAGivenEngine) {
  EXPECT_EQ(regex(u"(", 0, std::make_unique<Shout>()).engine()->replace(u"a", u""), u"a!");
}

}  // namespace
