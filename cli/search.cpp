#include "cli/search.hpp"

#include <stdexcept>
#include <vector>

#include "quindarel/interpreter/array.hpp"
#include "quindarel/interpreter/string_array.hpp"

namespace kglob {
namespace {

using matrix::detail::ArrayPtr;

ArrayPtr stringScalar(std::u16string const& text) {
  ArrayPtr array = Quindarel::String::createStringArray(1, 1);
  Quindarel::String::getString(array).setText(0, text);
  return array;
}

}  // namespace

ArrayPtr search(SearchLibrary const& library, std::u16string const& pattern, Scope const& scope) {
  std::vector<ArrayPtr> inputs;
  inputs.push_back(stringScalar(pattern));
  auto const addOption = [&](char16_t const* name, ArrayPtr value) {
    inputs.push_back(Quindarel::createCharacterRow(name));
    inputs.push_back(std::move(value));
  };
  if (!scope.rootFolder.empty()) addOption(u"RootFolder", stringScalar(scope.rootFolder));
  if (scope.dotFiles) addOption(u"IncludeDotFiles", Quindarel::createLogicalScalar(true));

  std::vector<vxArray_tag const*> arguments;
  arguments.reserve(inputs.size());
  for (ArrayPtr const& input : inputs) arguments.push_back(input.get());
  ArrayPtr output;
  library.call(1, &output, static_cast<int>(arguments.size()), arguments.data());
  if (!Quindarel::String::isString(output.get())) throw std::logic_error("the search library returned no string array");
  return output;
}

}  // namespace kglob
