#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kglob {

/// The colours that LS_COLORS sets (see dircolors(1)): by kind with `di`, `ln` and `fi`, and by the end of a file's
/// name. What it doesn't set for folders and links is as `ls` has it. The texts are the parameters of the control
/// sequence SGR, such as "01;34"; empty for no colour.
class Colours {
 public:
  Colours();

  /// Whether to use colours when `--color` has the value `when`; `auto` on terminals, unless NO_COLOR is set. Throws
  /// `UsageError` for another value.
  static bool wanted(std::string_view when, bool onTerminal);

  std::string_view ofKind(std::uint32_t kind) const;
  std::string_view of(std::string_view path, std::uint32_t kind) const;

  /// Adds a text in a colour.
  static void append(std::string& line, std::string_view text, std::string_view colour);

 private:
  struct Ending {
    std::string text;
    std::string colour;
  };
  std::string folder_ = "01;34";
  std::string link_ = "01;36";
  std::string file_;
  std::vector<Ending> endings_;
};

}  // namespace kglob
