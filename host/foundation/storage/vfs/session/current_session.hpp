#pragma once

namespace foundation::storage::vfs {

class SessionCache;

/// The cache of the calling thread's innermost session, or null.
SessionCache* innermostSessionCache() noexcept;

/// The cache through which the storage layer answers the calling thread: the innermost session's, or null where there is none or while
/// that session waits for a provider. A provider that uses the storage layer to answer thus reads past the session, whose cache isn't
/// made to be entered a second time.
SessionCache* currentSessionCache() noexcept;

}  // namespace foundation::storage::vfs
