#include "korvan/io/vx_err_msg_id.hpp"

#include "foundation/core/except/msg_id_exception.hpp"
#include "korvan/io/message_ids.hpp"
#include "quindarel/interpreter/errors.hpp"

namespace korvan::io::internal {

template <class T>
void vxErrMsgId(T const& id) {
  foundation::core::except::Exception<T, std::exception, void> const error(id);
  matrix::detail::do_legacy_vx_error(error);
  throw foundation::core::except::Exception<T, std::exception, void>(error);
}

template void vxErrMsgId(KORVAN::automation::io::glob::InvalidNumArgs const&);
template void vxErrMsgId(KORVAN::automation::io::glob::InvalidArgName const&);
template void vxErrMsgId(KORVAN::automation::io::glob::InvalidArgScalar const&);
template void vxErrMsgId(KORVAN::automation::io::FileIO::InvalidFile const&);
template void vxErrMsgId(KORVAN::virtualfilesystem::invalidIRI const&);
template void vxErrMsgId(KORVAN::virtualfilesystem::unsupportedProvider const&);
template void vxErrMsgId(KORVAN::virtualfilesystem::permissionDenied const&);

}  // namespace korvan::io::internal
