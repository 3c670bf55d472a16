#include "cli/output.hpp"

#include <cerrno>
#include <climits>
#include <csignal>

#include <poll.h>
#include <unistd.h>

#include "cli/shown_text.hpp"
#include "cli/signals.hpp"
#include "foundation/core/text/bytes.hpp"
#include "quindarel/interrupt/interrupt_state.hpp"

namespace kglob {
namespace {

constexpr std::size_t bufferSize = std::size_t{64} << 10;

[[noreturn]] void fail(int error) {
  if (error == EPIPE) throw EndedBySignal{SIGPIPE};  // where the caller had SIGPIPE ignored
  throw WriteError(error, std::generic_category());
}

/// Waits until a descriptor that the caller made non-blocking takes more.
void waitUntilWritable() {
  pollfd descriptor{STDOUT_FILENO, POLLOUT, 0};
  poll(&descriptor, 1, -1);
}

/// The whole lines at the start of `lines` that fit into one atomic write to a pipe (POSIX: up to PIPE_BUF bytes), or
/// the first line if that is longer.
std::string_view firstPiece(std::string_view lines, char end) {
  if (lines.size() <= PIPE_BUF) return lines;
  std::size_t last = lines.substr(0, PIPE_BUF).rfind(end);
  if (last == std::string_view::npos) last = lines.find(end);
  return last == std::string_view::npos ? lines : lines.substr(0, last + 1);
}

/// An interrupt takes effect before a piece, not within it.
void writePiece(std::string_view piece) {
  for (std::size_t size = 0; size < piece.size();) {
    if (size == 0 && utIsInterruptPending()) throw EndedBySignal{SIGINT};
    ssize_t const written = write(STDOUT_FILENO, piece.data() + size, piece.size() - size);
    if (written >= 0)
      size += static_cast<std::size_t>(written);
    else if (errno == EAGAIN)
      waitUntilWritable();
    else if (errno != EINTR)
      fail(errno);
  }
}

}  // namespace

Output::Output(bool nullEnded) : end_(nullEnded ? '\0' : '\n'), escape_(!nullEnded && isatty(STDOUT_FILENO) == 1) {}

void Output::addMatch(std::u16string_view match) {
  if (escape_)
    appendForTerminal(buffer_, match);
  else if (std::size_t const size = buffer_.size(); !foundation::core::text::appendBytes(buffer_, match))
    buffer_.replace(size, std::string::npos, foundation::core::text::toBytesLossy(match));
  buffer_ += end_;
  if (buffer_.size() >= bufferSize) flush();
}

void Output::flush() {
  for (std::string_view rest = buffer_; !rest.empty();) {
    std::string_view const piece = firstPiece(rest, end_);
    writePiece(piece);
    rest.remove_prefix(piece.size());
  }
  buffer_.clear();
}

void Output::close() {
  flush();
  if (::close(STDOUT_FILENO) != 0 && errno != EINTR) fail(errno);
}

}  // namespace kglob
