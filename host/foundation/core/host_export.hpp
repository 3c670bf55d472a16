#pragma once

/// Marks what the host library exports. Everything else in host/ is hidden.
#define KORVAN_HOST_EXPORT __attribute__((visibility("default")))
