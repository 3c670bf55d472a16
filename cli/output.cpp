#include "cli/output.hpp"

#include <cerrno>
#include <climits>
#include <csignal>

#include <poll.h>
#include <unistd.h>

#include "cli/signals.hpp"

namespace kglob {
namespace {

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
    if (size == 0 && isInterrupted()) throw EndedBySignal{SIGINT};
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

Output::Output(bool nullEnded) : end_(nullEnded ? '\0' : '\n'), isTerminal_(isatty(STDOUT_FILENO) == 1) {}

void Output::addMatches(std::string_view matches) {
  std::size_t at = buffer_.size();
  buffer_ += matches;
  if (end_ == '\0') return;
  while ((at = buffer_.find('\0', at)) != std::string::npos) buffer_[at] = end_;
}

void Output::flush() {
  for (std::string_view rest = buffer_; !rest.empty();) {
    std::string_view const piece = firstPiece(rest, end_);
    writePiece(piece);
    rest.remove_prefix(piece.size());
  }
  buffer_.clear();
}

void Output::checkForReader() {
  pollfd descriptor{STDOUT_FILENO, 0, 0};
  if (poll(&descriptor, 1, 0) == 1 && (descriptor.revents & POLLERR) != 0) throw EndedBySignal{SIGPIPE};
}

void Output::close() {
  flush();
  if (::close(STDOUT_FILENO) != 0 && errno != EINTR) fail(errno);
}

}  // namespace kglob
