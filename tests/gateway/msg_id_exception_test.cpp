#include <cstring>

#include <boost/exception/get_error_info.hpp>
#include <boost/exception/info.hpp>

#include "builtin_call.hpp"
#include "korvan/io/message_ids.hpp"

namespace korvan::test {
namespace {

namespace except = foundation::core::except;
using KORVAN::virtualfilesystem::permissionDenied;
using Denied = except::Exception<permissionDenied, std::exception, void>;

// The index of a virtual member function in the vtable, which the Itanium C++ ABI stores in a pointer to member.
template <class Member>
std::ptrdiff_t slot(Member member) {
  std::ptrdiff_t offset = 0;
  std::memcpy(&offset, &member, sizeof offset);
  return offset / static_cast<std::ptrdiff_t>(sizeof(void*));
}

TEST(MsgIDException, KeepsTheOrderOfItsVirtualOperations) {
  EXPECT_EQ(slot(&Denied::clone), 0);
  EXPECT_EQ(slot(&Denied::rethrow), 1);
  EXPECT_EQ(slot(&except::IException::what), 4) << "the destructor takes two slots";
  EXPECT_EQ(slot(&except::IException::ToUstringImpl), 7) << "and convert_str two more";
  EXPECT_EQ(slot(&except::IUserException::GetID), 8);
  EXPECT_EQ(slot(&except::IUserException::GetUnicodeMessageTxt), 9);
  EXPECT_EQ(slot(&except::IMsgIDException::GetBaseMsgIDObj), 10);
}

using Note = boost::error_info<struct NoteTag, int>;

TEST(MsgIDException, IsCopiedClonedAndRethrownCompletely) {
  auto const expectComplete = [](Denied const& copy) {
    EXPECT_EQ(failureText(copy.GetID(), copy.GetBaseMsgIDObj()),
              "KORVAN:virtualfilesystem:permissionDenied \"s3://bucket/\xC3\xA9\"");
    EXPECT_NE(std::string(copy.what()).find("s3://bucket/\xC3\xA9"), std::string::npos);
    EXPECT_STREQ(static_cast<std::exception const&>(copy).what(), copy.what());
    ASSERT_NE(boost::get_error_info<Note>(copy), nullptr);
    EXPECT_EQ(*boost::get_error_info<Note>(copy), 42);
  };
  auto original = std::make_unique<Denied>(permissionDenied(std::u16string(u"s3://bucket/\u00e9")));
  ASSERT_EQ(boost::get_error_info<Note>(*original), nullptr) << "the error info is empty at first";
  *original << Note(42);
  Denied const copy(*original);
  std::unique_ptr<boost::exception_detail::clone_base const> const clone(original->clone());
  original.reset();
  expectComplete(copy);
  try {
    clone->rethrow();
    ADD_FAILURE();
  } catch (Denied const& again) {
    expectComplete(again);
  }
}

TEST(MsgIDException, ThrownInTheLibraryIsCaughtHereByAnyBase) {
  auto const call = [] { matches({logical(true)}); };
  using Exact = except::Exception<KORVAN::string::MustBeStringScalarOrCharacterVector, std::exception, void>;
  EXPECT_THROW(call(), Exact);
  EXPECT_THROW(call(), except::IMsgIDException);
  EXPECT_THROW(call(), except::IUserException);
  EXPECT_THROW(call(), except::IException);
  EXPECT_THROW(call(), boost::exception);
  EXPECT_THROW(call(), boost::exception_detail::clone_base);
  EXPECT_THROW(call(), std::exception);
}

}  // namespace
}  // namespace korvan::test
