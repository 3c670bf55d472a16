#include "foundation/core/except/catalogue.hpp"
#include "foundation/core/except/internal_exception.hpp"
#include "foundation/core/except/msg_id_exception.hpp"
#include "foundation/core/except/user_exception.hpp"

namespace foundation::core::except {

IUserException::IUserException() noexcept = default;
IUserException::IUserException(IUserException const&) noexcept = default;
IUserException& IUserException::operator=(IUserException const&) noexcept = default;
IUserException::~IUserException() noexcept = default;

std::u16string IUserException::ToUstringImpl() const {
  return GetUnicodeMessageTxt();
}

IMsgIDException::IMsgIDException() noexcept = default;
IMsgIDException::IMsgIDException(IMsgIDException const&) noexcept = default;
IMsgIDException& IMsgIDException::operator=(IMsgIDException const&) noexcept = default;
IMsgIDException::~IMsgIDException() noexcept = default;

std::u16string IMsgIDException::GetUnicodeMessageTxt() const {
  return resource_core::messageText(GetBaseMsgIDObj());
}

std::string IMsgIDException::get_error_id(resource_core::BaseMsgID const& id) const {
  return id.component() + ':' + id.mnemonic();
}

IInternalException::IInternalException() noexcept = default;
IInternalException::IInternalException(IInternalException const&) noexcept = default;
IInternalException& IInternalException::operator=(IInternalException const&) noexcept = default;
IInternalException::~IInternalException() noexcept = default;

using InternalException = Exception<IInternalException, std::exception, void>;

InternalException::Exception() noexcept = default;
InternalException::Exception(Exception const&) noexcept = default;
InternalException& InternalException::operator=(Exception const&) noexcept = default;
InternalException::~Exception() noexcept = default;

char const* InternalException::what() const noexcept {
  return IException::what();
}

}  // namespace foundation::core::except
