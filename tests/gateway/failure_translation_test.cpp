#include <cerrno>
#include <functional>
#include <new>

#include "builtin_call.hpp"
#include "fl/filesystem/fsys_exception.hpp"
#include "foundation/storage/vfs/storage_exception.hpp"
#include "quindarel/interpreter/dispatcher.hpp"
#include "support/memory_provider.hpp"
#include "support/temporary_folder.hpp"

namespace korvan::test {
namespace {

/// Storage whose answers are scripted by the test.
class ScriptedProvider final : public vfs::Provider {
 public:
  std::function<void(vfs::AbsoluteIRI const&)> onRequest = [](vfs::AbsoluteIRI const&) {};

  Authority authority() const noexcept override { return Authority::required; }
  vfs::PathKind kind(vfs::AbsoluteIRI const& location) override {
    onRequest(location);
    return vfs::PathKind::isFile;
  }
  void list(vfs::AbsoluteIRI const& folder, std::string_view, vfs::EntrySink& entries) override {
    entries.add("one", vfs::EntryKind::file);
    onRequest(folder);
  }
};

class BuiltinFailures : public testing::Test {
 protected:
  ~BuiltinFailures() override { utSetInterruptPending(false); }

  std::shared_ptr<ScriptedProvider> const provider_ = std::make_shared<ScriptedProvider>();
  ServedScheme const served_{u"scripted", provider_};
};

TEST_F(BuiltinFailures, AreTranslatedByKindWithLocationsWrittenLikeThePattern) {
  provider_->onRequest = [](vfs::AbsoluteIRI const& location) {
    std::u16string const name = location.getName();
    if (name == u"disk") throw fl::filesystem::FsysExceptionBase(u"/some/where", EIO);
    if (name == u"memory") throw std::bad_alloc();
    throw vfs::Exception(name == u"denied 1" ? vfs::ErrorCode::permissionDenied
                         : name == u"none"   ? vfs::ErrorCode::notFound
                                             : vfs::ErrorCode::other,
                         location, "scripted failure");
  };
  std::string const invalidFile = "reported KORVAN:automation:io:FileIO:InvalidFile ";
  std::string const storage = "reported KORVAN:virtualfilesystem:";
  struct Case {
    std::u16string pattern;
    std::vector<std::string> outcome;
    std::u16string root = u"scripted://store/in";
  };
  Case const cases[] = {
      {u"scripted://store/denied 1", {storage + "permissionDenied \"scripted://store/denied%201\""}},
      {u"denied 1", {storage + "permissionDenied \"/store/in/denied 1\""}},
      {u"scripted://store/x", {invalidFile + "\"scripted://store/x\""}},
      {u"x", {invalidFile + "\"/store/in/x\""}},
      {u"disk", {invalidFile + "\"/some/where\""}},
      {u"none", {}},
      {u"memory", {"std::bad_alloc"}},
      {u"file:///%zz", {storage + "invalidIRI \"file:///%zz\""}},
      {u"x", {storage + "invalidIRI \"file:///a?b\""}, u"file:///a?b"},
      {u"NoSuch://x/*", {storage + "unsupportedProvider \"nosuch\""}},
  };
  for (Case const& c : cases)
    EXPECT_EQ(outcome({row(c.pattern), row(u"RootFolder"), row(c.root)}), c.outcome) << toBytes(c.pattern);
}

TEST_F(BuiltinFailures, OfTheCurrentFolderPassUnchangedEvenIfItIsNotNeeded) {
  struct Gone final : Quindarel::current_working_folder::ICurrentWorkingFolder {
    vfs::Folder get() const override { throw Quindarel::current_working_folder::UnknownFolderException(ENOENT); }
  } const gone;
  Kdispatcher::getDispatcher()->SetCurrentWorkingFolder(&gone);
  EXPECT_THROW(matches({row(u"/")}), Quindarel::current_working_folder::UnknownFolderException);
  Kdispatcher::getDispatcher()->SetCurrentWorkingFolder(nullptr);
}

TEST_F(BuiltinFailures, AnInterruptEndsTheCallBeforeDuringAndAfterTheSearch) {
  int requests = 0;
  provider_->onRequest = [&](vfs::AbsoluteIRI const&) {
    ++requests;
    EXPECT_EQ(utInterruptMode::current(), utInterruptMode::off);
    utSetInterruptPending(true);
  };
  EXPECT_EQ(outcome({row(u"scripted://store/x")}), std::vector<std::string>{"InterruptException(ctrl-c)"});
  EXPECT_EQ(requests, 1) << "noticed after the search";
  EXPECT_EQ(outcome({row(u"scripted://store/x")}), std::vector<std::string>{"InterruptException(ctrl-c)"});
  EXPECT_EQ(requests, 1) << "still pending, so the search doesn't start";
  utSetInterruptPending(false);
  EXPECT_EQ(outcome({row(u"scripted://store/*")}), std::vector<std::string>{"InterruptException"});
}

TEST_F(BuiltinFailures, RestoreTheInterruptModeOfTheCaller) {
  utInterruptMode const callersMode(utInterruptMode::off);
  EXPECT_EQ(matches({row(u"scripted://store/x")}), std::vector<std::string>{"scripted://store/x"});
}

}  // namespace
}  // namespace korvan::test
