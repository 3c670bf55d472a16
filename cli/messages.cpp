#include "cli/messages.hpp"

#include <string>

#include <unistd.h>

#include "cli/shown_text.hpp"
#include "foundation/core/text/bytes.hpp"

namespace kglob {

void tell(std::u16string_view message, std::string_view identifier) {
  std::string line = "kglob: ";
  appendOneLine(line, message);
  if (!identifier.empty()) ((line += " [") += identifier) += ']';
  line += '\n';
  [[maybe_unused]] auto const written = write(STDERR_FILENO, line.data(), line.size());
}

void tell(std::string_view message) {
  tell(foundation::core::text::fromBytes(message));
}

}  // namespace kglob
