#pragma once

/// What the process needs before it does anything else.
namespace kglob {

/// Opens the standard descriptors that the caller closed, so that no folder or connection gets one of them. They can't
/// be written to, so writing matches there still fails.
void reserveStandardDescriptors() noexcept;

}  // namespace kglob
