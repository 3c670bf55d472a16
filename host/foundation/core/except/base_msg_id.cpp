#include "foundation/core/except/base_msg_id.hpp"

#include <utility>

namespace resource_core {

BaseMsgID::BaseMsgID(char const* component, char const* mnemonic, std::size_t argumentCount)
    : arguments_(argumentCount), component_(component), mnemonic_(mnemonic) {}

void BaseMsgID::setArgument(std::size_t index, MsgArgument value) {
  arguments_.at(index) = std::move(value);
}

}  // namespace resource_core
