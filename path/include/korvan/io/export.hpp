#pragma once

/// Marks what the library exports to its host and to the host's other components. cmake/exported-symbols.txt
/// lists every symbol.
#define KORVAN_IO_EXPORT __attribute__((visibility("default")))
