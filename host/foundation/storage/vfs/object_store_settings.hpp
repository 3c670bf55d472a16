#pragma once

#include <string>

#include "foundation/core/host_export.hpp"

namespace foundation::storage::vfs {

/// How the host wants object stores to be used. What is empty or false here is decided by environment variables and
/// profile files; what isn't goes before them.
struct ObjectStoreSettings {
  std::string endpointUrl;     ///< "http[s]://host[:port][/path]"
  std::string region;          ///< letters, digits and "-"
  std::string profile;         ///< credentials in environment variables are then ignored
  bool noSignRequest = false;  ///< make unsigned requests; no credentials are looked for
  bool requesterPays = false;  ///< agree that the account that makes the requests pays for them
};

/// Makes these the settings of the process. A provider reads them when it is first used, and checks them then; later
/// changes have no effect on it. Safe to call from several threads at once.
KORVAN_HOST_EXPORT void setObjectStoreSettings(ObjectStoreSettings settings);

/// The settings of the process.
KORVAN_HOST_EXPORT ObjectStoreSettings objectStoreSettings();

}  // namespace foundation::storage::vfs
