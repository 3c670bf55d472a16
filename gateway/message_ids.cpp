#include "korvan/io/message_ids.hpp"

#include "foundation/core/except/msg_id_exception.hpp"

// Explicit instantiations, so that the library always exports the exceptions' vtables: link-time optimisation keeps
// implicitly instantiated ones private.
namespace foundation::core::except {

template class Exception<KORVAN::automation::io::glob::InvalidNumArgs>;
template class Exception<KORVAN::automation::io::glob::InvalidArgName>;
template class Exception<KORVAN::automation::io::glob::InvalidArgScalar>;
template class Exception<KORVAN::automation::io::FileIO::InvalidFile>;
template class Exception<KORVAN::virtualfilesystem::invalidIRI>;
template class Exception<KORVAN::virtualfilesystem::unsupportedProvider>;
template class Exception<KORVAN::virtualfilesystem::permissionDenied>;
template class Exception<KORVAN::string::MustBeStringScalarOrCharacterVector>;
template class Exception<KORVAN::string::MissingNotSupported>;

}  // namespace foundation::core::except
