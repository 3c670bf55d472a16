#include <new>
#include <random>
#include <stdexcept>

#include <gtest/gtest.h>
#include <malloc.h>

#include "foundation/core/except/catalogue.hpp"
#include "foundation/core/except/msg_id_exception.hpp"
#include "korvan/io/message_ids.hpp"
#include "quindarel/interpreter/array.hpp"
#include "quindarel/interpreter/dispatcher.hpp"
#include "quindarel/interpreter/errors.hpp"
#include "quindarel/interpreter/string_array.hpp"
#include "quindarel/interrupt/interrupt_exception.hpp"
#include "support/text.hpp"

namespace korvan::test {
namespace {

class Unknown : public resource_core::BaseMsgID {
 public:
  Unknown() : BaseMsgID("KORVAN:test", "Unknown", 2) { setArgument(1, u"wide"); }
};

TEST(Catalogue, HasALineOfTextWithTheArgumentsForEachMessage) {
  namespace glob = KORVAN::automation::io::glob;
  std::u16string const path = u"/\u00e9 {1}%s\n\x1B\u2028" + toText("\xFF");
  std::string const shown = "\"/\xC3\xA9 {1}%s\\n\\x1B\\xE2\\x80\\xA8\\xFF\"";
  struct {
    resource_core::BaseMsgID id;
    std::string part;
  } const cases[] = {
      {glob::InvalidNumArgs(), ""},
      {glob::InvalidArgName(u"Rot"), "IncludeDotFiles"},
      {glob::InvalidArgScalar(u"includedotfiles", "logical"), "includedotfiles"},
      {KORVAN::automation::io::FileIO::InvalidFile(path), shown},
      {KORVAN::virtualfilesystem::invalidIRI(path), shown},
      {KORVAN::virtualfilesystem::unsupportedProvider(std::u16string(u"ftp")), "\"ftp\""},
      {KORVAN::virtualfilesystem::permissionDenied(path), shown},
      {KORVAN::string::MustBeStringScalarOrCharacterVector(), ""},
      {KORVAN::string::MissingNotSupported(), ""},
      {Unknown(), "Unknown 0 wide"},
  };
  for (auto const& c : cases) {
    std::string const line = toBytes(resource_core::messageText(c.id));
    EXPECT_NE(line.find(c.part), std::string::npos) << line;
    bool const byIdentifier = line.find(c.id.mnemonic()) != std::string::npos;
    EXPECT_EQ(byIdentifier, c.id.mnemonic() == "Unknown") << line << ": the catalogue has no text for it";
    EXPECT_EQ(line.find('{'), line.find("{1}%s")) << line;
  }
}

template <class Thrown>
Quindarel::InterpreterError errorOf(Thrown const& thrown) {
  try {
    throw thrown;
  } catch (...) {
    return Quindarel::currentInterpreterError();
  }
}

TEST(CurrentInterpreterError, DescribesEveryExceptionOfABuiltin) {
  using Folder = Quindarel::current_working_folder::UnknownFolderException;
  using Reported = foundation::core::except::Exception<Unknown, std::exception, void>;
  struct {
    Quindarel::InterpreterError error;
    char const* identifier;
    char const* part;
  } const cases[] = {
      {errorOf(Reported(Unknown())), "KORVAN:test:Unknown", "wide"},
      {errorOf(Quindarel::InterpreterError("a:b", u"said", {})), "a:b", "said"},
      {errorOf(Quindarel::System::InterruptException()), "KORVAN:interpreter:Interrupted", "nterrupted"},
      {errorOf(std::bad_alloc()), "KORVAN:interpreter:OutOfMemory", "memory"},
      {errorOf(Folder(ENOENT)), "KORVAN:interpreter:CurrentFolderUnknown", "No such file"},
      {errorOf(std::runtime_error("two\nlines")), "KORVAN:interpreter:Failure", "two\\nlines"},
      {errorOf(1), "KORVAN:interpreter:Failure", "no reason"},
  };
  for (auto const& c : cases) {
    EXPECT_EQ(c.error.identifier(), c.identifier);
    EXPECT_NE(std::string(c.error.what()).find(c.part), std::string::npos) << c.error.what();
  }
}

TEST(StringArray, HasTheLastTextsThatWereSetInAnyOrder) {
  std::mt19937 random(7);
  std::vector<std::optional<std::u16string>> model(50);
  Quindarel::String::StringArray array(model.size());
  for (int step = 0; step < 20000; ++step) {
    std::size_t const i = random() % model.size();
    std::size_t const from = random() % model.size();
    if (random() % 8 == 0) {
      model[i].reset();
      array.setMissing(i);
    } else if (random() % 8 == 0 && model[from]) {
      model[i] = model[from];
      array.setText(i, *array[from]);
    } else {
      // Short, and around the lengths at which a text needs a longer header.
      std::size_t const lengths[] = {0, 1, random() % 300, 65533 + random() % 5, 131070 + random() % 5};
      model[i] = std::u16string(lengths[random() % (step % 400 == 0 ? 5 : 3)], static_cast<char16_t>(random()));
      array.setText(i, *model[i]);
    }
    for (std::size_t k = 0; step % 500 == 0 && k < model.size(); ++k) ASSERT_EQ(array[k], model[k]) << "element " << k;
  }
}

TEST(StringArray, CostsLittleBeyondTheTextAndFreesReplacedText) {
  auto const allocated = [] { return ::mallinfo2().uordblks + ::mallinfo2().hblkhd; };
  constexpr std::size_t count = 200000;
  std::u16string const text = u"a/path/of/the/usual/length/file.txt";
  std::size_t const textBytes = count * text.size() * sizeof(char16_t);
  std::size_t const before = allocated();
  Quindarel::String::StringArray array(count);
  for (std::size_t i = 0; i < count; ++i) array.setText(i, text);
  EXPECT_LT(allocated() - before, textBytes + 12 * count + (std::size_t{2} << 20));
  for (std::size_t i = 20 * count; i-- > 0;) array.setText(i % count, text);
  EXPECT_LT(allocated() - before, 2 * textBytes + 20 * count);
}

}  // namespace
}  // namespace korvan::test
