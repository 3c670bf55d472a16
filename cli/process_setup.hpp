#pragma once

/// What the process needs before it does anything else.
namespace kglob {

/// Opens the standard descriptors that the caller closed, so that no folder or connection gets one of them. They can't
/// be written to, so writing matches there still fails.
void reserveStandardDescriptors() noexcept;

/// Lets all threads allocate from one heap if at most two run at a time. The C library would give each a heap of its own,
/// which grows by a system call for every page.
void shareHeap() noexcept;

}  // namespace kglob
