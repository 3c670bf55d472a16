#pragma once

#include <chrono>
#include <optional>
#include <string>

#include <nlohmann/json_fwd.hpp>

/// Members of JSON objects that issue credentials. Malformed ones throw `CredentialsError`, whose message names the
/// member and quotes nothing.
namespace foundation::storage::s3 {

nlohmann::json parseObject(std::string const& text);

/// A member's text; empty if it is absent or null.
std::string textIn(nlohmann::json const& object, char const* name);

/// A member's text, which must not be empty.
std::string requiredTextIn(nlohmann::json const& object, char const* name);

/// A member's time (ISO 8601); nothing if it is absent or null.
std::optional<std::chrono::sys_seconds> timeIn(nlohmann::json const& object, char const* name);

/// A member that must be a whole number, not below 0.
std::uint64_t numberIn(nlohmann::json const& object, char const* name);

}  // namespace foundation::storage::s3
