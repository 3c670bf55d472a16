#pragma once

#include "foundation/core/host_export.hpp"

/// Whether the host's class system itself sets up the libraries that it loads, so that their load hooks have nothing to
/// do. Always false: this host has no such class system.
KORVAN_HOST_EXPORT bool omGetKcosUsingUSM() noexcept;
