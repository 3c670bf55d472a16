#pragma once

/// What the process needs before it does anything else.
namespace kglob {

/// Opens the standard descriptors that the caller closed, so that no folder or connection gets one of them. They can't
/// be written to, so writing matches there still fails.
void reserveStandardDescriptors() noexcept;

/// Makes the C library allocate large blocks in the heap. A growing vector of matches leaves ever larger blocks behind.
/// By default each is mapped afresh and returned to the system; in the heap they are reused for the texts that follow,
/// which saves a fifth of the page faults of a large search.
void useHeapForLargeBlocks() noexcept;

}  // namespace kglob
