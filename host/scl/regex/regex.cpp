#include "scl/regex/regex.hpp"

#define PCRE2_CODE_UNIT_WIDTH 16
#include <array>
#include <stdexcept>
#include <utility>

#include <pcre2.h>

namespace scl::regex {
namespace {

PCRE2_SPTR16 units(std::u16string_view text) {
  return reinterpret_cast<PCRE2_SPTR16>(text.data());
}

std::string describe(int error) {
  std::array<PCRE2_UCHAR16, 256> buffer{};
  int const length = pcre2_get_error_message_16(error, buffer.data(), buffer.size());
  std::string text;
  for (int i = 0; i < length; ++i) text.push_back(static_cast<char>(buffer[static_cast<std::size_t>(i)]));
  return text;
}

// PCRE2 without UTF mode: code units are matched as they are, so that a lone surrogate in a name isn't an error.
class Pcre2Engine final : public regex_impl_abstract {
 public:
  explicit Pcre2Engine(std::u16string_view expression) {
    int error = 0;
    PCRE2_SIZE offset = 0;
    code_.reset(pcre2_compile_16(units(expression), expression.size(), 0, &error, &offset, nullptr));
    if (!code_) throw std::invalid_argument(describe(error) + " at offset " + std::to_string(offset));
  }

  std::u16string replace(std::u16string_view text, std::u16string_view replacement) const override {
    constexpr std::uint32_t options =
        PCRE2_SUBSTITUTE_GLOBAL | PCRE2_SUBSTITUTE_LITERAL | PCRE2_SUBSTITUTE_OVERFLOW_LENGTH;
    std::u16string result(text.size() + replacement.size() + 1, u'\0');
    for (;;) {
      PCRE2_SIZE length = result.size();
      int const count =
          pcre2_substitute_16(code_.get(), units(text), text.size(), 0, options, nullptr, nullptr, units(replacement),
                              replacement.size(), reinterpret_cast<PCRE2_UCHAR16*>(result.data()), &length);
      if (count != PCRE2_ERROR_NOMEMORY || length <= result.size()) {
        if (count < 0) throw std::runtime_error(describe(count));
        result.resize(length);
        return result;
      }
      result.resize(length);
    }
  }

 private:
  struct Free {
    void operator()(pcre2_code_16* code) const { pcre2_code_free_16(code); }
  };
  std::unique_ptr<pcre2_code_16, Free> code_;
};

}  // namespace

regex_impl_abstract::~regex_impl_abstract() = default;

regex::regex(std::basic_string_view<char16_t> const& expression, constants::syntax_option_type /*syntax*/,
             std::unique_ptr<regex_impl_abstract> engine)
    : engine_(engine ? std::move(engine) : std::make_unique<Pcre2Engine>(expression)) {}

}  // namespace scl::regex
