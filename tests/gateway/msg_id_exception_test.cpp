#include <cstring>
#include <memory>
#include <type_traits>

#include <boost/exception/get_error_info.hpp>
#include <boost/exception/info.hpp>
#include <gtest/gtest.h>

#include "builtin_call.hpp"
#include "gateway/message_ids.hpp"
#include "gateway/vx_err_msg_id.hpp"
#include "interrupt/interrupt_exception.hpp"

namespace korvan::test {
namespace {

namespace except = foundation::core::except;
using KORVAN::virtualfilesystem::permissionDenied;
using Denied = except::Exception<permissionDenied, std::exception, void>;

static_assert(std::is_base_of_v<except::IMsgIDException, Denied> && std::is_base_of_v<std::exception, Denied>);
static_assert(std::is_base_of_v<except::IUserException, except::IMsgIDException>);

// The place of a virtual member function in the table, as the Itanium C++ ABI has it in a pointer to member.
template <class Member>
std::ptrdiff_t slot(Member member) {
  std::ptrdiff_t offset = 0;
  static_assert(sizeof member >= sizeof offset);
  std::memcpy(&offset, &member, sizeof offset);
  return (offset - 1) / static_cast<std::ptrdiff_t>(sizeof(void*));
}

TEST(MsgIDException, KeepsTheOrderOfItsVirtualOperations) {
  using Wide = std::string (except::IException::*)(std::u16string const&) const;
  using Narrow = std::u16string (except::IException::*)(std::string const&) const;
  EXPECT_EQ(slot(&Denied::clone), 0);
  EXPECT_EQ(slot(&Denied::rethrow), 1);
  // The destructor takes two.
  EXPECT_EQ(slot(&except::IException::what), 4);
  EXPECT_EQ(slot(static_cast<Wide>(&except::IException::convert_str)), 5);
  EXPECT_EQ(slot(static_cast<Narrow>(&except::IException::convert_str)), 6);
  EXPECT_EQ(slot(&except::IException::ToUstringImpl), 7);
  EXPECT_EQ(slot(&except::IUserException::GetID), 8);
  EXPECT_EQ(slot(&except::IUserException::GetUnicodeMessageTxt), 9);
  EXPECT_EQ(slot(&except::IMsgIDException::GetBaseMsgIDObj), 10);
}

void expectSame(except::IMsgIDException const& copy, Denied const& original) {
  EXPECT_EQ(typeid(copy), typeid(original));
  EXPECT_EQ(copy.GetID(), "KORVAN:virtualfilesystem:permissionDenied");
  EXPECT_EQ(copy.GetBaseMsgIDObj().component(), "KORVAN:virtualfilesystem");
  EXPECT_EQ(copy.GetBaseMsgIDObj().mnemonic(), "permissionDenied");
  EXPECT_EQ(copy.GetBaseMsgIDObj().arguments(), original.GetBaseMsgIDObj().arguments());
  EXPECT_STREQ(copy.what(), original.what());
  EXPECT_NE(copy.what(), original.what()) << "the texts of two exceptions must not be one";
}

using Note = boost::error_info<struct NoteTag, int>;

TEST(MsgIDException, IsCopiedClonedAndThrownAgainWhole) {
  auto original = std::make_unique<Denied>(permissionDenied(std::u16string(u"s3://bucket/\u00e9")));
  ASSERT_EQ(boost::get_error_info<Note>(*original), nullptr) << "the record begins empty";
  *original << Note(42);

  Denied const copy(*original);
  expectSame(copy, *original);
  std::unique_ptr<boost::exception_detail::clone_base const> const clone(original->clone());
  auto const* const cloned = dynamic_cast<Denied const*>(clone.get());
  ASSERT_NE(cloned, nullptr);
  expectSame(*cloned, *original);
  try {
    clone->rethrow();
    ADD_FAILURE();
  } catch (Denied const& again) {
    expectSame(again, *original);
    EXPECT_NE(static_cast<void const*>(&again), static_cast<void const*>(cloned));
    ASSERT_NE(boost::get_error_info<Note>(again), nullptr);
    EXPECT_EQ(*boost::get_error_info<Note>(again), 42);
  }
  EXPECT_THROW(clone->rethrow(), except::IMsgIDException);
  EXPECT_THROW(clone->rethrow(), std::exception);

  original.reset();
  EXPECT_NE(std::string(copy.what()).find("s3://bucket/\xC3\xA9"), std::string::npos);
  EXPECT_STREQ(static_cast<std::exception const&>(copy).what(), static_cast<except::IException const&>(copy).what());
}

TEST(MsgIDException, ThrownInTheLibraryIsCaughtHereByEachBase) {
  auto const call = [] { matches({number(1)}); };
  using KORVAN::string::MustBeStringScalarOrCharacterVector;
  using Exact = except::Exception<MustBeStringScalarOrCharacterVector, std::exception, void>;
  EXPECT_THROW(call(), Exact);
  EXPECT_THROW(call(), except::IMsgIDException);
  EXPECT_THROW(call(), except::IUserException);
  EXPECT_THROW(call(), except::IException);
  EXPECT_THROW(call(), boost::exception);
  EXPECT_THROW(call(), boost::exception_detail::clone_base);
  EXPECT_THROW(call(), std::exception);
}

TEST(InterruptException, TellsWhereItCameFromAndKeepsItsTypeWhenThrownAgain) {
  using Quindarel::System::InterruptException;
  for (bool const fromCtrlC : {false, true}) {
    std::unique_ptr<boost::exception_detail::clone_base const> const clone(InterruptException(fromCtrlC).clone());
    try {
      clone->rethrow();
      ADD_FAILURE();
    } catch (except::IInternalException const& caught) {
      EXPECT_EQ(caught.ToUstringImpl(), fromCtrlC ? u"InterruptException(ctrl-c)" : u"InterruptException");
      EXPECT_STREQ(dynamic_cast<InterruptException const&>(caught).what(),
                   fromCtrlC ? "InterruptException(ctrl-c)" : "InterruptException");
    }
  }
}

}  // namespace
}  // namespace korvan::test
