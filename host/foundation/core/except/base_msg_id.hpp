#pragma once

#include <cstddef>
#include <string>
#include <variant>
#include <vector>

#include "foundation/core/host_export.hpp"

namespace resource_core {

/// The value of one placeholder of a message.
using MsgArgument = std::variant<long, std::string, std::u16string>;

/// Names one message of the host's catalogue and carries the values of its placeholders. A plain value, from which each
/// message's class derives without adding data.
class KORVAN_HOST_EXPORT BaseMsgID {
 public:
  /// In the order of the message's placeholders.
  std::vector<MsgArgument> const& arguments() const noexcept { return arguments_; }

  /// The part of the catalogue that has the message: a path with ":" between its elements.
  std::string const& component() const noexcept { return component_; }

  /// The message's name within the component.
  std::string const& mnemonic() const noexcept { return mnemonic_; }

 protected:
  /// A message with `argumentCount` arguments, each the integer 0 until it is set.
  BaseMsgID(char const* component, char const* mnemonic, std::size_t argumentCount = 0);

  /// Sets the argument of the placeholder `index`, counted from 0.
  void setArgument(std::size_t index, MsgArgument value);

 private:
  std::vector<MsgArgument> arguments_;
  std::string component_;
  std::string mnemonic_;
};

}  // namespace resource_core
