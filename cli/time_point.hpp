#pragma once

#include <cstdint>
#include <string_view>

namespace kglob {

/// The moment that a text means, in seconds since 1970-01-01T00:00:00Z, as fd reads it: a duration before `now`
/// (`10min`, `2h 30m`, `3weeks`), a date with or without a time of day (`2024-01-31`, `2024-01-31 12:00:00`, in the
/// local time zone; `2024-01-31T12:00:00Z` with one), or `@` and that number. `option` is what the text belongs to, for
/// the message of the `UsageError` that is thrown for a text that is none of these.
std::int64_t parseTime(std::string_view text, std::int64_t now, std::string_view option);

}  // namespace kglob
