#include "foundation/core/text/escape.hpp"
#include "fuzz/input.hpp"

/// Bytes are converted to text and back without loss, and an escaped line has nothing left to escape.
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  using namespace foundation::core::text;
  using korvan::fuzz::require;
  FuzzedDataProvider input(data, size);
  std::string const bytes = korvan::fuzz::takeBytes(input);
  std::u16string const text = korvan::fuzz::takeText(input);

  std::string back;
  require(appendBytes(back, fromBytes(bytes)) && back == bytes);
  require(toBytesLossy(fromBytes(bytes)) == bytes);
  std::string ofText;
  if (appendBytes(ofText, text)) {
    require(toBytesLossy(text) == ofText);
    back.clear();
    require(appendBytes(back, fromBytes(ofText)) && back == ofText);
  }

  std::u16string line;
  appendOneLine(line, text);
  forEachCharacter(line, [](std::u16string_view character) { require(!mustEscape(character)); });
  bool anyEscaped = false;
  forEachCharacter(text, [&](std::u16string_view character) { anyEscaped |= mustEscape(character); });
  require(anyEscaped || line == text);
  return 0;
}
