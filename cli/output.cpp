#include "cli/output.hpp"

#include <cerrno>
#include <csignal>

#include <poll.h>
#include <unistd.h>

#include "cli/shown_text.hpp"
#include "cli/signals.hpp"
#include "foundation/core/text/bytes.hpp"
#include "quindarel/interrupt/interrupt_state.hpp"

namespace kglob {
namespace {

constexpr std::size_t pieceSize = std::size_t{64} << 10;

[[noreturn]] void fail(int error) {
  if (error == EPIPE) throw EndedBySignal{SIGPIPE};  // where the caller had SIGPIPE ignored
  throw WriteError(error, std::generic_category());
}

/// Waits until a descriptor that the caller made non-blocking takes more.
void waitUntilWritable() {
  pollfd descriptor{STDOUT_FILENO, POLLOUT, 0};
  poll(&descriptor, 1, -1);
}

}  // namespace

Output::Output(bool raw) : escape_(!raw && isatty(STDOUT_FILENO) == 1) {}

void Output::addMatch(std::u16string_view match, char end) {
  if (escape_)
    appendForTerminal(buffer_, match);
  else if (std::size_t const size = buffer_.size(); !foundation::core::text::appendBytes(buffer_, match))
    buffer_.replace(size, std::string::npos, foundation::core::text::toBytesLossy(match));
  buffer_ += end;
  if (buffer_.size() >= pieceSize) flush();
}

void Output::flush() {
  std::string_view rest = buffer_;
  while (!rest.empty()) {
    if (utIsInterruptPending()) throw EndedBySignal{SIGINT};
    ssize_t const written = write(STDOUT_FILENO, rest.data(), rest.size());
    if (written >= 0)
      rest.remove_prefix(static_cast<std::size_t>(written));
    else if (errno == EAGAIN)
      waitUntilWritable();
    else if (errno != EINTR)
      fail(errno);
  }
  buffer_.clear();
}

void Output::close() {
  flush();
  if (::close(STDOUT_FILENO) != 0 && errno != EINTR) fail(errno);
}

}  // namespace kglob
