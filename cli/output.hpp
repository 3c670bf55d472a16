#pragma once

#include <string>
#include <string_view>
#include <system_error>

namespace kglob {

/// Standard output can't be written; the code says why.
class WriteError : public std::system_error {
 public:
  using std::system_error::system_error;
};

/// Standard output, written in large pieces (one system call for 64 KiB or so). A pipe that nobody reads any more and
/// an interrupt while it waits end the writing with `EndedBySignal`; every other failure with `WriteError`.
class Output {
 public:
  /// Matches are shown as on a terminal when standard output is one and `raw` is false; see appendForTerminal.
  explicit Output(bool raw);

  /// Adds a match as its bytes and the byte that ends it.
  void addMatch(std::u16string_view match, char end);

  /// Adds bytes as they are.
  void addText(std::string_view bytes) { buffer_ += bytes; }

  /// Writes what was added.
  void flush();

  /// Flushes and closes, since some file systems tell only then that they couldn't keep what was written.
  void close();

 private:
  bool escape_;
  std::string buffer_;
};

}  // namespace kglob
