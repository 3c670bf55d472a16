#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "foundation/core/host_export.hpp"

namespace scl::regex {

namespace constants {
/// The syntax of an expression; 0 is the default, Perl's, with lookbehind and lookahead.
using syntax_option_type = unsigned int;
}  // namespace constants

/// An engine with one compiled expression. Any number of threads may use it at once.
class KORVAN_HOST_EXPORT regex_impl_abstract {
 public:
  virtual ~regex_impl_abstract();

  /// The text with every match, from left to right and without overlap, replaced by `replacement`, which is taken
  /// literally. Throws `std::runtime_error` if the engine fails, as at its limit for backtracking.
  virtual std::u16string replace(std::u16string_view text, std::u16string_view replacement) const = 0;
};

/// A compiled expression for UTF-16. Lone surrogates in a text are ordinary characters.
class KORVAN_HOST_EXPORT regex {
 public:
  /// Compiles the expression with the library's own engine (PCRE2) if `engine` is null; otherwise takes that engine,
  /// which must already have the expression. Throws `std::invalid_argument` if the expression is malformed.
  regex(std::basic_string_view<char16_t> const& expression, constants::syntax_option_type syntax,
        std::unique_ptr<regex_impl_abstract> engine);

  /// The engine, owned by this object; null only after a move.
  regex_impl_abstract const* engine() const noexcept { return engine_.get(); }

 private:
  std::unique_ptr<regex_impl_abstract> engine_;
};

}  // namespace scl::regex
