#pragma once

#include <string>

#include "foundation/core/except/base_msg_id.hpp"
#include "foundation/core/host_export.hpp"

namespace resource_core {

/// The host's message catalogue, in English: the text of the message with its arguments filled in. Always one line: a
/// control character in an argument is shown as "\n", "\t" or "\xNN", a line or paragraph separator as "\u2028" or
/// "\u2029", everything else as it is, so that a path reads as its user wrote it. A message that the catalogue doesn't
/// know is told by its identifier and arguments.
KORVAN_HOST_EXPORT std::u16string messageText(BaseMsgID const& id);

}  // namespace resource_core
