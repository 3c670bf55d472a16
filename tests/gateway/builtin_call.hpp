#pragma once

#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "foundation/core/except/msg_id_exception.hpp"
#include "gateway/builtin_glob.hpp"
#include "interpreter/array.hpp"
#include "interpreter/errors.hpp"
#include "support/text.hpp"

namespace korvan::test {

using Array = std::shared_ptr<vxArray_tag>;
using Arguments = std::vector<resource_core::MsgArgument>;

inline Array row(std::u16string text) {
  return Quindarel::createCharacterRow(std::move(text));
}
inline Array logical(bool value) {
  return Quindarel::createLogicalScalar(value);
}
inline Array array(std::vector<std::size_t> dimensions, vxArray_tag::Values values) {
  return Quindarel::createArray(std::move(dimensions), std::move(values));
}
inline Array number(double value) {
  return array({1, 1}, vxArray_tag::Doubles{value});
}

/// A column of strings; nothing is a missing one.
inline Array strings(std::vector<std::optional<std::u16string>> const& texts) {
  matrix::detail::ArrayPtr column = Quindarel::String::createStringArray(texts.size(), 1);
  for (std::size_t i = 0; i < texts.size(); ++i)
    if (texts[i]) Quindarel::String::getString(column).setText(i, *texts[i]);
  return column;
}

/// Calls the builtin as an interpreter does.
inline void callGlob(int nlhs, matrix::detail::ArrayPtr& output, std::vector<Array> const& inputs) {
  std::vector<vxArray_tag const*> pointers;
  for (Array const& input : inputs) pointers.push_back(input.get());
  korvan::io::internal::glob(nlhs, &output, static_cast<int>(pointers.size()), pointers.data());
}

/// The matches of a call that succeeds.
inline std::vector<std::string> matches(std::vector<Array> const& inputs) {
  matrix::detail::ArrayPtr output;
  callGlob(1, output, inputs);
  std::vector<std::string> texts;
  Quindarel::String::StringArray const& elements = Quindarel::String::getString(output);
  for (std::size_t i = 0; i < elements.size(); ++i) texts.push_back(toBytes(elements[i].value()));
  return texts;
}

/// How a call failed: told to the interpreter, or thrown past it.
struct Failure {
  enum class Channel { none, reported, thrown };

  Channel channel = Channel::none;
  std::string identifier{};
  Arguments arguments{};

  bool operator==(Failure const&) const = default;

  friend std::ostream& operator<<(std::ostream& out, Failure const& failure) {
    out << (failure.channel == Channel::none     ? "no failure"
            : failure.channel == Channel::thrown ? "thrown "
                                                 : "reported ")
        << failure.identifier;
    for (resource_core::MsgArgument const& argument : failure.arguments) {
      out << " [" << argument.index() << "] ";
      if (auto const* wide = std::get_if<std::u16string>(&argument)) out << toBytes(*wide);
      if (auto const* narrow = std::get_if<std::string>(&argument)) out << *narrow;
    }
    return out;
  }
};

inline Failure reported(std::string identifier, Arguments arguments = {}) {
  return {Failure::Channel::reported, std::move(identifier), std::move(arguments)};
}

inline Failure thrown(std::string identifier) {
  return {Failure::Channel::thrown, std::move(identifier)};
}

template <class Call>
Failure failureOf(Call call) {
  try {
    call();
  } catch (Quindarel::InterpreterError const& error) {
    return reported(error.identifier(), error.messageID().value().arguments());
  } catch (foundation::core::except::IMsgIDException const& error) {
    return {Failure::Channel::thrown, error.GetID(), error.GetBaseMsgIDObj().arguments()};
  }
  return {};
}

}  // namespace korvan::test
