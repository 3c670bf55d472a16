#include <random>
#include <string>

#include <gtest/gtest.h>

#include "foundation/core/text/bytes.hpp"
#include "support/text.hpp"

namespace {

namespace text = foundation::core::text;

TEST(TextBytes, EachByteSequenceHasItsText) {
  struct {
    std::string bytes;
    std::u16string text;
  } const cases[] = {
      {"", u""},
      {"plain name.txt", u"plain name.txt"},
      {std::string("a\0b", 3), std::u16string(u"a\0b", 3)},
      {"\x7F", u"\x7F"},
      {"\xC2\x80", u"\x80"},
      {"\xDF\xBF", u"\u07FF"},
      {"\xE0\xA0\x80", u"\u0800"},
      {"\xED\x9F\xBF", u"\uD7FF"},
      {"\xEE\x80\x80", u"\uE000"},
      {"\xEF\xBF\xBF", u"\uFFFF"},
      {"\xF0\x90\x80\x80", u"\U00010000"},
      {"\xF4\x8F\xBF\xBF", u"\U0010FFFF"},
      // No UTF-8: each byte by itself.
      {"\x80", u"\xDC80"},
      {"a\xFF", u"a\xDCFF"},
      {"\xC0\xAF", u"\xDCC0\xDCAF"},
      {"\xC1\xBF", u"\xDCC1\xDCBF"},
      {"\xE0\x9F\xBF", u"\xDCE0\xDC9F\xDCBF"},
      {"\xED\xA0\x80", u"\xDCED\xDCA0\xDC80"},
      {"\xF0\x8F\xBF\xBF", u"\xDCF0\xDC8F\xDCBF\xDCBF"},
      {"\xF4\x90\x80\x80", u"\xDCF4\xDC90\xDC80\xDC80"},
      {"\xF8\x88", u"\xDCF8\xDC88"},
      // A sequence that breaks off is taken byte by byte, and what follows is read again.
      {"\xE6\x97", u"\xDCE6\xDC97"},
      {"\xE6\x97z", u"\xDCE6\xDC97z"},
      {"\xC3\xC3\xA9", u"\xDCC3\u00E9"},
  };
  for (auto const& c : cases) {
    EXPECT_EQ(text::fromBytes(c.bytes), c.text) << testing::PrintToString(c.bytes);
    std::string bytes = "before";
    EXPECT_TRUE(text::appendBytes(bytes, c.text));
    EXPECT_EQ(bytes, "before" + c.bytes);
  }
}

TEST(TextBytes, SomeTextsHaveNoBytes) {
  for (std::u16string const none : {u"\xD800", u"a\xDBFF", u"\xD83Dz", u"\xDC00", u"\xDC7F", u"\xDD00", u"\xDFFF"}) {
    std::string bytes;
    EXPECT_FALSE(text::appendBytes(bytes, u"name" + none)) << testing::PrintToString(none);
  }
  EXPECT_EQ(text::toBytesLossy(u"a\xD800"
                               u"b"),
            "a\xEF\xBF\xBD"
            "b");
  EXPECT_EQ(text::toBytesLossy(u"\xDCFF\u00E9"), "\xFF\xC3\xA9");
}

TEST(TextBytes, NoBytesAreLost) {
  std::mt19937 random(20250101);
  static constexpr std::string_view pieces[] = {"a",        "/",        "\xC3",     "\xA9", "\xE6\x97\xA5",
                                                "\xF0\x9F", "\x98\x80", "\xED\xA0", "\xFF"};
  for (int i = 0; i < 20000; ++i) {
    std::string bytes;
    for (auto left = random() % 8; left > 0; --left) bytes += pieces[random() % std::size(pieces)];
    ASSERT_EQ(korvan::test::toBytes(text::fromBytes(bytes)), bytes) << testing::PrintToString(bytes);
  }
}

}  // namespace
