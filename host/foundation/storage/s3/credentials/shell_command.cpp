#include "foundation/storage/s3/credentials/shell_command.hpp"

#include <array>
#include <cerrno>
#include <csignal>
#include <system_error>
#include <thread>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "quindarel/interrupt/interrupt_poll.hpp"

namespace foundation::storage::s3 {
namespace {

constexpr std::chrono::milliseconds pollTime(40);         // an interrupt must be noticed within 50 ms
constexpr std::chrono::milliseconds terminationTime(10);  // between the request to end and the end by force

void check(int error, char const* what) {
  if (error != 0) throw std::system_error(error, std::generic_category(), what);
}

class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  ~Descriptor() { close(); }
  Descriptor(Descriptor const&) = delete;
  Descriptor& operator=(Descriptor const&) = delete;

  int number() const noexcept { return number_; }
  void close() noexcept {
    if (number_ >= 0) ::close(number_);
    number_ = -1;
  }

 private:
  int number_;
};

pid_t spawn(std::string const& command, int output) {
  struct Settings {
    Settings() {
      check(posix_spawn_file_actions_init(&actions), "posix_spawn_file_actions_init");
      check(posix_spawnattr_init(&attributes), "posix_spawnattr_init");
    }
    ~Settings() {
      posix_spawn_file_actions_destroy(&actions);
      posix_spawnattr_destroy(&attributes);
    }
    Settings(Settings const&) = delete;
    Settings& operator=(Settings const&) = delete;
    posix_spawn_file_actions_t actions;
    posix_spawnattr_t attributes;
  } settings;
  sigset_t all;
  sigset_t none;
  sigfillset(&all);
  sigemptyset(&none);
  check(posix_spawn_file_actions_adddup2(&settings.actions, output, STDOUT_FILENO), "dup2");
  check(posix_spawn_file_actions_addclosefrom_np(&settings.actions, STDERR_FILENO + 1), "closefrom");
  check(posix_spawnattr_setsigdefault(&settings.attributes, &all), "posix_spawnattr_setsigdefault");
  check(posix_spawnattr_setsigmask(&settings.attributes, &none), "posix_spawnattr_setsigmask");
  check(posix_spawnattr_setflags(&settings.attributes, POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK),
        "posix_spawnattr_setflags");
  std::array<std::string, 3> texts{"sh", "-c", command};
  std::array<char*, 4> const arguments{texts[0].data(), texts[1].data(), texts[2].data(), nullptr};
  pid_t process = 0;
  check(posix_spawn(&process, "/bin/sh", &settings.actions, &settings.attributes, arguments.data(), environ),
        "/bin/sh");
  return process;
}

/// A child process, which ends with it.
class Child {
 public:
  explicit Child(pid_t process) : process_(process) {}
  Child(Child const&) = delete;
  Child& operator=(Child const&) = delete;

  ~Child() {
    if (hasEnded()) return;
    kill(process_, SIGTERM);
    std::this_thread::sleep_for(terminationTime);
    if (hasEnded()) return;
    kill(process_, SIGKILL);
    while (waitpid(process_, nullptr, 0) < 0 && errno == EINTR) continue;
  }

  /// Collects the status once the child has ended.
  bool hasEnded() noexcept {
    if (ended_) return true;
    pid_t const result = waitpid(process_, &status_, WNOHANG);
    statusKnown_ = result == process_;
    ended_ = statusKnown_ || (result < 0 && errno != EINTR);
    return ended_;
  }

  bool statusKnown() const noexcept { return statusKnown_; }
  int status() const noexcept { return status_; }

 private:
  pid_t process_;
  bool ended_ = false;
  bool statusKnown_ = false;
  int status_ = 0;
};

// Whether the output was read to its end.
bool readOutput(int descriptor, std::string& output, std::size_t maximum) {
  std::array<char, 4096> block{};
  for (;;) {
    utThrowIfInterruptPending();
    pollfd waited{descriptor, POLLIN, 0};
    if (poll(&waited, 1, static_cast<int>(pollTime.count())) <= 0) continue;
    ssize_t const count = read(descriptor, block.data(), block.size());
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return true;
    output.append(block.data(), static_cast<std::size_t>(count));
    if (output.size() > maximum) return false;
  }
}

}  // namespace

CommandResult runShellCommand(std::string const& command, std::size_t maximumOutput) {
  std::array<int, 2> ends{};
  check(pipe2(ends.data(), O_CLOEXEC) == 0 ? 0 : errno, "pipe2");
  Descriptor const input(ends[0]);
  Descriptor output(ends[1]);
  Child child(spawn(command, output.number()));
  output.close();
  CommandResult result;
  result.tooLarge = !readOutput(input.number(), result.output, maximumOutput);
  if (result.tooLarge) return result;
  while (!child.hasEnded()) {
    utThrowIfInterruptPending();
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
  result.statusKnown = child.statusKnown();
  result.status = child.status();
  return result;
}

}  // namespace foundation::storage::s3
