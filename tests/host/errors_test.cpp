#include "interpreter/errors.hpp"

#include <algorithm>
#include <new>
#include <stdexcept>

#include <gtest/gtest.h>

#include "foundation/core/except/msg_id_exception.hpp"
#include "gateway/message_ids.hpp"
#include "interpreter/catalogue.hpp"
#include "interpreter/dispatcher.hpp"
#include "interrupt/interrupt_exception.hpp"
#include "support/text.hpp"

namespace korvan::test {
namespace {

bool has(std::u16string const& line, std::u16string_view part) {
  return line.find(part) != std::u16string::npos;
}

TEST(Catalogue, HasALineWithTheArgumentsForEachMessageOfTheLibrary) {
  namespace glob = KORVAN::automation::io::glob;
  std::u16string const path = u"/data/\u00e9 {1}%s";
  struct Case {
    resource_core::BaseMsgID id;
    std::vector<std::u16string_view> parts;
  };
  Case const cases[] = {
      {glob::InvalidNumArgs(), {}},
      {glob::InvalidArgName(u"Rot"), {u"\"Rot\"", u"RootFolder", u"IncludeDotFiles"}},
      {glob::InvalidArgScalar(u"includedotfiles", "logical"), {u"includedotfiles", u"logical scalar"}},
      {KORVAN::automation::io::FileIO::InvalidFile(path), {path}},
      {KORVAN::virtualfilesystem::invalidIRI(path), {path}},
      {KORVAN::virtualfilesystem::unsupportedProvider(std::u16string(u"ftp")), {u"\"ftp\""}},
      {KORVAN::virtualfilesystem::permissionDenied(path), {path}},
      {KORVAN::string::MustBeStringScalarOrCharacterVector(), {}},
      {KORVAN::string::MissingNotSupported(), {}},
  };
  for (Case const& c : cases) {
    std::u16string const line = resource_core::messageText(c.id);
    SCOPED_TRACE(toBytes(line));
    EXPECT_FALSE(has(line, toText(c.id.mnemonic()))) << "told by its identifier, so the catalogue has no text";
    for (std::u16string_view part : c.parts) EXPECT_TRUE(has(line, part)) << toBytes(part);
    EXPECT_EQ(std::count(line.begin(), line.end(), u'{'), has(line, path) ? 1 : 0);
  }
}

TEST(Catalogue, MessagesStayOneLine) {
  std::u16string const path = u"a\nb\tc\x1B[1m\u2028\u0085" + toText("\xFF");
  std::u16string const line = resource_core::messageText(KORVAN::automation::io::FileIO::InvalidFile(path));
  EXPECT_TRUE(has(line, u"\"a\\nb\\tc\\x1B[1m\\u2028\\x85\xDCFF\"")) << toBytes(line);
}

class Unknown : public resource_core::BaseMsgID {
 public:
  Unknown() : BaseMsgID("KORVAN:test", "Unknown", 3) {
    setArgument(1, "narrow");
    setArgument(2, u"wide");
  }
};

TEST(Catalogue, TellsAnUnknownMessageByIdentifierAndArguments) {
  EXPECT_EQ(toBytes(resource_core::messageText(Unknown())), "KORVAN:test:Unknown 0 narrow wide");
}

template <class Thrown>
Quindarel::InterpreterError errorOf(Thrown const& thrown) {
  try {
    throw thrown;
  } catch (...) {
    return Quindarel::currentInterpreterError();
  }
}

TEST(CurrentInterpreterError, TellsWhateverLeavesABuiltin) {
  using foundation::core::except::Exception;
  struct Case {
    Quindarel::InterpreterError error;
    char const* identifier;
    char const* part;
  };
  using Folder = Quindarel::current_working_folder::UnknownFolderException;
  Case const cases[] = {
      {errorOf(Exception<Unknown, std::exception, void>(Unknown())), "KORVAN:test:Unknown", "narrow wide"},
      {errorOf(Quindarel::InterpreterError("a:b", u"said", {})), "a:b", "said"},
      {errorOf(Quindarel::System::InterruptException()), "KORVAN:interpreter:Interrupted", "nterrupted"},
      {errorOf(std::bad_alloc()), "KORVAN:interpreter:OutOfMemory", "memory"},
      {errorOf(Folder(ENOENT)), "KORVAN:interpreter:CurrentFolderUnknown", "No such file"},
      {errorOf(std::runtime_error("two\nlines")), "KORVAN:interpreter:Failure", "two\\nlines"},
      {errorOf(1), "KORVAN:interpreter:Failure", "no reason"},
  };
  for (Case const& c : cases) {
    EXPECT_EQ(c.error.identifier(), c.identifier);
    EXPECT_NE(std::string(c.error.what()).find(c.part), std::string::npos) << c.error.what();
  }
}

TEST(LegacyError, CarriesACopyOfTheMessageID) {
  using foundation::core::except::Exception;
  try {
    matrix::detail::do_legacy_vx_error(Exception<Unknown, std::exception, void>(Unknown()));
    ADD_FAILURE();
  } catch (Quindarel::InterpreterError const& error) {
    EXPECT_EQ(error.messageID().value().arguments(), Unknown().arguments());
  }
}

}  // namespace
}  // namespace korvan::test
