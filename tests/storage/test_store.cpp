#include "storage/test_store.hpp"

#include <cstdlib>
#include <fstream>
#include <stdexcept>

namespace korvan::test {

std::string environmentVariable(char const* name) {
  char const* const value = std::getenv(name);
  return value == nullptr ? "" : value;
}

void useTestStore() {
  static bool const used = [] {
    std::string const path = environmentVariable("KORVAN_TEST_STORE");
    std::ifstream file(path);
    if (!file) throw std::runtime_error("no store: ctest starts one, and KORVAN_TEST_STORE names the file it writes");
    for (std::string line; std::getline(file, line);) {
      std::size_t const end = line.find('=');
      ::setenv(line.substr(0, end).c_str(), line.substr(end + 1).c_str(), 1);
    }
    // A profile or an endpoint of the user's own would be another store.
    for (char const* name : {"AWS_PROFILE", "AWS_SESSION_TOKEN", "AWS_DEFAULT_REGION", "AWS_ENDPOINT_URL"})
      ::unsetenv(name);
    return true;
  }();
  static_cast<void>(used);
}

}  // namespace korvan::test
