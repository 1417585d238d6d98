// SPDX-License-Identifier: MIT
// Why a command could not do its work, in one line for the person who called it.
#pragma once

#include <stdexcept>
#include <string>
#include <utility>

namespace traguardo::tool {

struct Failure : std::runtime_error {
  // details: what stands below the line, if anything, with a line feed in front of each of its lines.
  explicit Failure(const std::string& reason, std::string more = {})
      : std::runtime_error(reason), details(std::move(more)) {}

  std::string details;
};

}  // namespace traguardo::tool
