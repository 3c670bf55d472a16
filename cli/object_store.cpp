#include "cli/object_store.hpp"

#include <new>

#include "kglob.h"

namespace kglob {

void configureObjectStore(Options const& options) {
  if (!options.requestPayer.empty() && options.requestPayer != "requester")
    throw UsageError("--request-payer: \"" + options.requestPayer + "\" is not \"requester\"");
  kglob_object_store settings = KGLOB_OBJECT_STORE_INIT;
  settings.endpoint_url = options.endpointUrl.c_str();
  settings.region = options.region.c_str();
  settings.profile = options.profile.c_str();
  settings.no_sign_request = options.noSignRequest ? 1 : 0;
  settings.requester_pays = options.requestPayer.empty() ? 0 : 1;
  if (kglob_configure_object_store(&settings) != KGLOB_OK) throw std::bad_alloc();
}

}  // namespace kglob
