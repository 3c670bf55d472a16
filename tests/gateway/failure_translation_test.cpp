#include <cerrno>
#include <new>

#include <gtest/gtest.h>
#include <unistd.h>

#include "builtin_call.hpp"
#include "fl/filesystem/exception.hpp"
#include "foundation/storage/vfs/exception.hpp"
#include "interpreter/dispatcher.hpp"
#include "interrupt/interrupt_exception.hpp"
#include "interrupt/interrupt_state.hpp"
#include "scripted_provider.hpp"
#include "support/memory_provider.hpp"
#include "support/temporary_folder.hpp"

namespace korvan::test {
namespace {

constexpr char const* invalidFile = "KORVAN:automation:io:FileIO:InvalidFile";
constexpr char const* permissionDenied = "KORVAN:virtualfilesystem:permissionDenied";
constexpr char const* invalidIRI = "KORVAN:virtualfilesystem:invalidIRI";
constexpr char const* unsupported = "KORVAN:virtualfilesystem:unsupportedProvider";

class BuiltinFailures : public testing::Test {
 protected:
  ~BuiltinFailures() override { utSetInterruptPending(false); }

  std::shared_ptr<ScriptedProvider> const provider_ = std::make_shared<ScriptedProvider>();
  ServedScheme const served_{u"scripted", provider_};
};

TEST_F(BuiltinFailures, OfStorageAreTranslatedByKindAndToldAsTheCallerWritesLocations) {
  provider_->onKind = [](vfs::AbsoluteIRI const& location) -> vfs::PathKind {
    auto const code = location.getName() == u"denied 1" ? vfs::ErrorCode::permissionDenied
                      : location.getName() == u"none"   ? vfs::ErrorCode::nothingThere
                                                        : vfs::ErrorCode::other;
    if (location.getName() == u"disk") throw fl::filesystem::FsysExceptionBase(u"/some/where", EIO);
    throw vfs::Exception(code, location, "no more to say");
  };
  Array const rootName = row(u"RootFolder");
  Array const root = row(u"scripted://store/in");
  struct Case {
    char const* what;
    std::vector<Array> inputs;
    Failure expected;
  };
  Case const cases[] = {
      {"denied, IRI pattern",
       {row(u"scripted://store/denied 1")},
       reported(permissionDenied, {u"scripted://store/denied%201"})},
      {"denied, local pattern",
       {row(u"denied 1"), rootName, root},
       reported(permissionDenied, {u"/store/in/denied 1"})},
      {"other, IRI pattern", {row(u"scripted://store/x")}, reported(invalidFile, {u"scripted://store/x"})},
      {"other, local pattern", {row(u"x"), rootName, root}, reported(invalidFile, {u"/store/in/x"})},
      {"of the local path library", {row(u"scripted://store/disk")}, reported(invalidFile, {u"/some/where"})},
      {"nothing there is no failure", {row(u"none"), rootName, root}, {}},
      {"malformed pattern", {row(u"file:///%zz")}, reported(invalidIRI, {u"file:///%zz"})},
      {"malformed root", {row(u"x"), rootName, row(u"file:///a?b")}, reported(invalidIRI, {u"file:///a?b"})},
      {"unknown scheme", {row(u"NoSuch://x/*")}, reported(unsupported, {u"nosuch"})},
  };
  for (Case const& c : cases) {
    SCOPED_TRACE(c.what);
    utInterruptMode const mode(utInterruptMode::on);
    matrix::detail::ArrayPtr output;
    EXPECT_EQ(failureOf([&] { callGlob(1, output, c.inputs); }), c.expected);
    EXPECT_EQ(utInterruptMode::current(), utInterruptMode::on);
    EXPECT_EQ(output == nullptr, c.expected != Failure());
  }
}

TEST_F(BuiltinFailures, OfTheCurrentFolderPassUnchangedEvenWhereItIsNotNeeded) {
  TemporaryFolder const folder;
  folder.addFolder("gone");
  folder.addFile("x");
  CurrentFolder const current(folder.path() + "/gone");
  ASSERT_EQ(::rmdir((folder.path() + "/gone").c_str()), 0);
  std::vector<Array> const inputs = {row(u"x"), row(u"RootFolder"), row(folder.text())};
  EXPECT_THROW(matches(inputs), Quindarel::current_working_folder::UnknownFolderException);

  // A host that keeps a current folder of its own.
  class Own final : public Quindarel::current_working_folder::ICurrentWorkingFolder {
   public:
    explicit Own(std::u16string const& text) : location_(u"file://" + text) {}
    vfs::Folder get() const override {
      return {location_, Quindarel::KorvanStorageSystem::GetStorageSystemReference()};
    }

   private:
    vfs::AbsoluteIRI location_;
  } const own(folder.text());
  Kdispatcher::getDispatcher()->SetCurrentWorkingFolder(&own);
  EXPECT_EQ(matches({row(u"x")}), std::vector<std::string>{"x"});
  Kdispatcher::getDispatcher()->SetCurrentWorkingFolder(nullptr);
}

TEST_F(BuiltinFailures, OfAnotherKindPassUnchanged) {
  provider_->onKind = [](vfs::AbsoluteIRI const&) -> vfs::PathKind { throw std::bad_alloc(); };
  EXPECT_THROW(matches({row(u"scripted://store/x")}), std::bad_alloc);
  EXPECT_EQ(utInterruptMode::current(), utInterruptMode::on);
}

TEST_F(BuiltinFailures, AnInterruptEndsTheCallBeforeDuringAndAfterTheSearch) {
  int asked = 0;
  utInterruptMode::Mode during = utInterruptMode::on;
  provider_->onKind = [&](vfs::AbsoluteIRI const&) {
    ++asked;
    during = utInterruptMode::current();
    utSetInterruptPending(true);
    return vfs::PathKind::isFile;
  };
  provider_->onList = [&](vfs::EntryTable& entries) {
    entries.add("one", vfs::EntryKind::file);
    utSetInterruptPending(true);
  };
  struct Case {
    char const* what;
    bool pending;
    std::u16string pattern;
    bool fromCtrlC;
    int asked;
  };
  Case const cases[] = {
      {"before the search, which is not begun", true, u"scripted://store/x", true, 0},
      {"seen by the search", false, u"scripted://store/*", false, 0},
      {"seen after the search", false, u"scripted://store/x", true, 1},
  };
  for (Case const& c : cases) {
    SCOPED_TRACE(c.what);
    asked = 0;
    utSetInterruptPending(c.pending);
    matrix::detail::ArrayPtr output = Quindarel::createLogicalScalar(true);
    vxArray_tag const* const untouched = output.get();
    try {
      callGlob(1, output, {row(c.pattern)});
      ADD_FAILURE() << "not interrupted";
    } catch (Quindarel::System::InterruptException const& interrupt) {
      EXPECT_EQ(interrupt.fromCtrlC(), c.fromCtrlC);
    }
    EXPECT_EQ(asked, c.asked);
    EXPECT_EQ(output.get(), untouched);
    EXPECT_EQ(utInterruptMode::current(), utInterruptMode::on);
    EXPECT_TRUE(utIsInterruptPending());
  }
  EXPECT_EQ(during, utInterruptMode::off);
}

TEST_F(BuiltinFailures, TheModeOfTheCallerIsBackWhateverItWas) {
  provider_->onKind = [](vfs::AbsoluteIRI const&) { return vfs::PathKind::isFile; };
  utInterruptMode const callers(utInterruptMode::off);
  EXPECT_EQ(matches({row(u"scripted://store/x")}), std::vector<std::string>{"scripted://store/x"});
  EXPECT_EQ(utInterruptMode::current(), utInterruptMode::off);
}

}  // namespace
}  // namespace korvan::test
