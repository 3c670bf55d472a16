#pragma once

#include <atomic>
#include <string>

#include <boost/exception/exception.hpp>

#include "foundation/core/host_export.hpp"

namespace foundation::core::except {

/// The root of the platform's exceptions: each can be copied, stored and thrown again with its full type (`clone`,
/// `rethrow`), and has a text. The order of the virtual operations is part of the interface: components built
/// separately call them by slot. Boost.Exception's record stays empty unless a host adds to it. Not a `std::exception`
/// itself: the types that are thrown add that base.
class KORVAN_HOST_EXPORT IException : public boost::exception_detail::clone_base, public boost::exception {
 public:
  ~IException() noexcept override;

  /// `ToUstringImpl` as UTF-8, made at the first call. Valid as long as the exception. May be called by several threads
  /// at once. A fixed text if there is no memory to make it.
  virtual char const* what() const noexcept;

  /// The UTF-8 bytes of a text, for showing: a surrogate without a byte form becomes U+FFFD.
  virtual std::string convert_str(std::u16string const& text) const;

  /// The text of UTF-8 bytes, without loss (see foundation/core/text/bytes.hpp).
  virtual std::u16string convert_str(std::string const& text) const;

  /// The exception's text.
  virtual std::u16string ToUstringImpl() const = 0;

 protected:
  IException() noexcept;
  IException(IException const& other) noexcept;
  IException& operator=(IException const& other) noexcept;

 private:
  mutable std::atomic<std::string const*> what_{nullptr};
};

}  // namespace foundation::core::except
