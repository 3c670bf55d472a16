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

/// Standard output, buffered. Readers get whole lines only, however kglob ends: it is written in pieces of whole lines,
/// which a pipe accepts entirely or not at all, and a piece of which only a part was written is completed first.
/// Writing throws `EndedBySignal` for a pipe without readers and for an interrupt, and `WriteError` for every other
/// failure.
class Output {
 public:
  /// Lines end with a newline, or with NUL.
  explicit Output(bool nullEnded);

  bool isTerminal() const noexcept { return isTerminal_; }

  /// Adds matches, each ended by NUL, as one line each.
  void addMatches(std::string_view matches);

  /// Adds a line: `append` adds its text to the end of the string that it is given.
  template <class Append>
  void addLine(Append append) {
    append(buffer_);
    buffer_ += end_;
  }

  /// Adds whole lines as they are.
  void addText(std::string_view lines) { buffer_ += lines; }

  /// Writes what was added.
  void flush();

  /// Throws `EndedBySignal` if standard output is a pipe without readers. One system call.
  static void checkForReader();

  /// Flushes and closes: some file systems report only then that they couldn't store what was written.
  void close();

 private:
  char end_;
  bool isTerminal_;
  std::string buffer_;
};

}  // namespace kglob
