// Why a command could not do its work, in one line for the person who called it.
#pragma once

#include <stdexcept>

namespace traguardo::tool {

struct Failure : std::runtime_error {
  using std::runtime_error::runtime_error;
};

}  // namespace traguardo::tool
