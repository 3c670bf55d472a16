#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "foundation/core/host_export.hpp"

namespace scl::regex {

namespace constants {
/// How an expression is written; 0 is the library's default: Perl's syntax, with lookbehind and lookahead.
using syntax_option_type = unsigned int;
}  // namespace constants

/// An engine that holds one compiled expression. Used by any number of threads at once.
class KORVAN_HOST_EXPORT regex_impl_abstract {
 public:
  virtual ~regex_impl_abstract();

  /// The text with every match, from left to right and without overlap, replaced by `replacement` as it stands.
  /// Throws `std::runtime_error` when the engine gives up.
  virtual std::u16string replace(std::u16string_view text, std::u16string_view replacement) const = 0;
};

/// A UTF-16 expression, compiled once. Lone surrogates in a text are ordinary characters.
class KORVAN_HOST_EXPORT regex {
 public:
  /// Compiles the expression with the library's own engine (PCRE2) when `engine` is empty; otherwise holds that engine,
  /// which must have the expression already. Throws `std::invalid_argument` for what is no expression.
  regex(std::basic_string_view<char16_t> const& expression, constants::syntax_option_type syntax,
        std::unique_ptr<regex_impl_abstract> engine);

  /// The engine, owned by the expression; null when it holds none.
  regex_impl_abstract const* engine() const noexcept { return engine_.get(); }

 private:
  std::unique_ptr<regex_impl_abstract> engine_;
};

}  // namespace scl::regex
