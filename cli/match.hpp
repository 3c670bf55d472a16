#pragma once

#include <string_view>

#include "kglob.h"

namespace kglob {

/// A match, valid until the next block of matches is fetched.
struct Match {
  std::string_view path;  ///< as the search gives it
  kglob_facts facts;      ///< all zero unless they were asked for
};

}  // namespace kglob
