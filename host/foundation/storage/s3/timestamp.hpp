#pragma once

#include <chrono>
#include <optional>
#include <string_view>

namespace foundation::storage::s3 {

/// A time as services write it (ISO 8601): "2030-01-31T23:59:59Z", with a fraction of a second or without, and with an
/// offset such as "+02:00" or "UTC" in place of "Z". Digits after the milliseconds are dropped. Nothing if the text isn't
/// such a time.
std::optional<std::chrono::sys_time<std::chrono::milliseconds>> parseTimestamp(std::string_view text);

}  // namespace foundation::storage::s3
