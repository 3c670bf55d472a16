#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "foundation/core/except/msg_id_exception.hpp"
#include "korvan/io/builtin_glob.hpp"
#include "quindarel/interpreter/array.hpp"
#include "quindarel/interpreter/errors.hpp"
#include "quindarel/interrupt/interrupt_state.hpp"
#include "support/text.hpp"

namespace korvan::test {

using Array = std::shared_ptr<vxArray_tag>;

inline Array row(std::u16string text) {
  return Quindarel::createCharacterRow(std::move(text));
}
inline Array logical(bool value) {
  return Quindarel::createLogicalScalar(value);
}
inline Array array(std::vector<std::size_t> dimensions, vxArray_tag::Values values) {
  return Quindarel::createArray(std::move(dimensions), std::move(values));
}

/// A column of strings; an element without a value is a missing string.
inline Array strings(std::vector<std::optional<std::u16string>> const& texts) {
  matrix::detail::ArrayPtr column = Quindarel::String::createStringArray(texts.size(), 1);
  for (std::size_t i = 0; i < texts.size(); ++i)
    if (texts[i]) Quindarel::String::getString(column).setText(i, *texts[i]);
  return column;
}

/// The matches of a call of the builtin, which must be returned as a column. Whether or not the call succeeds, it must
/// restore the interrupt mode; if it fails, it must leave the output unchanged.
inline std::vector<std::string> matches(std::vector<Array> const& inputs, int nlhs = 1) {
  std::vector<vxArray_tag const*> pointers;
  for (Array const& input : inputs) pointers.push_back(input.get());
  matrix::detail::ArrayPtr output = Quindarel::createLogicalScalar(true);
  vxArray_tag const* const untouched = output.get();
  utInterruptMode::Mode const mode = utInterruptMode::current();
  try {
    korvan::io::internal::glob(nlhs, &output, static_cast<int>(pointers.size()), pointers.data());
  } catch (...) {
    EXPECT_EQ(utInterruptMode::current(), mode);
    EXPECT_EQ(output.get(), untouched);
    throw;
  }
  EXPECT_EQ(utInterruptMode::current(), mode);
  std::vector<std::string> texts;
  auto const& elements = std::get<vxArray_tag::Strings>(output->values());
  for (std::size_t i = 0; i < elements.size(); ++i) texts.push_back(toBytes(elements[i].value()));
  EXPECT_TRUE(output->dimensions().size() == 2 && output->dimensions()[1] == 1);
  return texts;
}

/// A failure as text: `text`, then the arguments of the message ID, those in UTF-16 quoted.
inline std::string failureText(std::string text, resource_core::BaseMsgID const& id) {
  for (resource_core::MsgArgument const& argument : id.arguments()) {
    auto const* const wide = std::get_if<std::u16string>(&argument);
    text += wide != nullptr ? " \"" + toBytes(*wide) + '"' : ' ' + std::get<std::string>(argument);
  }
  return text;
}

/// The outcome of a call: its matches, or its failure, "reported" to the interpreter or "thrown" past it.
inline std::vector<std::string> outcome(std::vector<Array> const& inputs, int nlhs = 1) try {
  return matches(inputs, nlhs);
} catch (Quindarel::InterpreterError const& error) {
  return {failureText("reported " + error.identifier(), error.messageID().value())};
} catch (foundation::core::except::IMsgIDException const& error) {
  return {failureText("thrown " + error.GetID(), error.GetBaseMsgIDObj())};
} catch (std::exception const& error) {
  return {error.what()};
}

}  // namespace korvan::test
