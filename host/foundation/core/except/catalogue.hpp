#pragma once

#include <string>

#include "foundation/core/except/base_msg_id.hpp"
#include "foundation/core/host_export.hpp"

namespace resource_core {

/// The host's message catalogue, in English: the text of the message with its arguments filled in. Always one line:
/// characters that must not be shown are escaped (foundation/core/text/escape.hpp), all others are shown as they are,
/// so that users recognise their paths. A message that isn't in the catalogue is shown as its identifier and arguments.
KORVAN_HOST_EXPORT std::u16string messageText(BaseMsgID const& id);

}  // namespace resource_core
