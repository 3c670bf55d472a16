#pragma once

#include <exception>

#include "foundation/core/except/exception_template.hpp"
#include "foundation/core/except/root_exception.hpp"

namespace foundation::core::except {

/// An exception between the host's own components, without a message for the user.
class KORVAN_HOST_EXPORT IInternalException : public IException {
 public:
  ~IInternalException() noexcept override;

 protected:
  IInternalException() noexcept;
  IInternalException(IInternalException const&) noexcept;
  IInternalException& operator=(IInternalException const&) noexcept;
};

/// The base of such exceptions as they are thrown; derived classes define how they are copied and what their text is.
template <>
class KORVAN_HOST_EXPORT Exception<IInternalException, std::exception, void> : public IInternalException,
                                                                               public std::exception {
 public:
  ~Exception() noexcept override;
  /// The text of `IException`, as UTF-8. Valid as long as the exception.
  char const* what() const noexcept override;

 protected:
  Exception() noexcept;
  Exception(Exception const&) noexcept;
  Exception& operator=(Exception const&) noexcept;
};

}  // namespace foundation::core::except
