#include "cli/messages.hpp"

#include <string>

#include <unistd.h>

#include "foundation/core/text/bytes.hpp"
#include "foundation/core/text/escape.hpp"

namespace kglob {
namespace {

namespace text = foundation::core::text;

void writeLine(std::string_view line) noexcept {
  [[maybe_unused]] auto const written = write(STDERR_FILENO, line.data(), line.size());
}

}  // namespace

void report(std::string_view message, std::string_view identifier) {
  std::u16string line = u"kglob: ";
  text::appendOneLine(line, text::fromBytes(message));
  std::string bytes = text::toBytesLossy(line);
  if (!identifier.empty()) ((bytes += " [") += identifier) += ']';
  writeLine(bytes += '\n');
}

void report(kglob_failure const& error) {
  std::string message = error.message;
  if (message.find(error.reason) == std::string::npos) ((message += " (") += error.reason) += ')';
  report(message, error.identifier);
}

void reportOutOfMemory() noexcept {
  writeLine("kglob: out of memory\n");
}

}  // namespace kglob
