#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace foundation::storage::s3 {

/// A time as services write it (ISO 8601): "2030-01-31T23:59:59Z", with a fraction of a second, which is dropped, or with
/// an offset such as "+02:00" or "UTC" in place of "Z". Nothing if the text isn't such a time.
std::optional<std::chrono::sys_seconds> parseTimestamp(std::string_view text);

/// The time in that form, in UTC: "2030-01-31T23:59:59Z".
std::string writtenTimestamp(std::chrono::sys_seconds time);

}  // namespace foundation::storage::s3
