// SPDX-License-Identifier: MIT
// What a host does with a session: it opens it, asks for everything through all functions and closes it. Counts and
// what is handed out must agree.
#pragma once

#include <cstdlib>
#include <string>
#include <vector>

#include "api/everything.h"
#include "helpers/temp_folder.h"

namespace traguardo::fuzz {

using test::Answer;

// One folder for a process, which the system cleans.
inline const test::TempFolder& folder() {
  static const test::TempFolder made;
  return made;
}

inline void check(bool holds) {
  if (!holds) std::abort();
}

inline std::vector<Answer> read_everything(const std::string& path) {
  const test::Limits limits{3, 24, 20'000};
  std::vector<Answer> answers = test::Everything::of(path, limits);
  for (std::size_t i = 0; i < answers.size(); ++i) {
    const bool is_count = answers[i].call.ends_with(" count");
    check(!is_count || answers[i].result >= 0);
    if (answers[i].call.ends_with(" samples")) check(answers[i].result == answers[i - 1].result);
  }
  check(answers.size() == 1 || answers[answers.size() - 2].result == 1);
  return answers;
}

}  // namespace traguardo::fuzz
