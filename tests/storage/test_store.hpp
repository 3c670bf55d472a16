#pragma once

#include <string>

/// The store that the fixture of this test run started.
namespace korvan::test {

/// Puts what the fixture wrote into this process's environment: the customary variables of a client, and the
/// KORVAN_TEST_ ones of store_fixture.py. Only the first call does. Throws `std::runtime_error` when there is no
/// fixture: a test that needs the store must fail without it.
void useTestStore();

/// The variable of the environment, empty where it isn't set.
std::string environmentVariable(char const* name);

}  // namespace korvan::test
