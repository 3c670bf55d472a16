#pragma once

#include "foundation/core/host_export.hpp"

/// Whether the host's class system sets up the libraries that it loads by itself, so that a library's load hook has
/// nothing to do. This host has no such class system: false.
KORVAN_HOST_EXPORT bool omGetKcosUsingUSM() noexcept;
