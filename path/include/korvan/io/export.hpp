#pragma once

/// Marks what the library gives to its host and to the host's other components; cmake/exported-symbols.txt names each
/// of these.
#define KORVAN_IO_EXPORT __attribute__((visibility("default")))
