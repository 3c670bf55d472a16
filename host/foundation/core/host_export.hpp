#pragma once

/// Marks what the host library gives to the libraries that it loads. Everything else in host/ is hidden.
#define KORVAN_HOST_EXPORT __attribute__((visibility("default")))
