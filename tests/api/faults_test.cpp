// SPDX-License-Identifier: MIT
// Every operation on a file and every allocation fails once, at each place where it comes up while a session is opened,
// read through all functions and closed. Allowed is the documented failure or the full right data: never an abort, a
// wrong number or anything left behind.

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <new>

#include "api/everything.h"
#include "helpers/temp_folder.h"
#include "model/mapped_array.h"
#include "support/platform/fault_injection.h"

namespace {

constexpr traguardo::i64 kNever = -1;
std::atomic<traguardo::i64> g_allocations_left{kNever};
std::atomic<bool> g_an_allocation_failed{false};

bool may_allocate() {
  if (!traguardo::test::t_in_library || g_allocations_left == kNever) return true;
  if (g_allocations_left.fetch_sub(1) != 0) return true;
  g_an_allocation_failed = true;
  return false;
}

void* allocated(std::size_t bytes) {
  return may_allocate() ? std::malloc(bytes == 0 ? 1 : bytes) : nullptr;
}

}  // namespace

void* operator new(std::size_t bytes) {
  void* block = allocated(bytes);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}
void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept {
  return allocated(bytes);
}
void* operator new[](std::size_t bytes) {
  return ::operator new(bytes);
}
void* operator new[](std::size_t bytes, const std::nothrow_t& tag) noexcept {
  return ::operator new(bytes, tag);
}
void operator delete(void* block) noexcept {
  std::free(block);
}
void operator delete(void* block, std::size_t) noexcept {
  std::free(block);
}
void operator delete(void* block, const std::nothrow_t&) noexcept {
  std::free(block);
}
void operator delete[](void* block) noexcept {
  std::free(block);
}
void operator delete[](void* block, const std::nothrow_t&) noexcept {
  std::free(block);
}
void operator delete[](void* block, std::size_t) noexcept {
  std::free(block);
}

namespace traguardo {
namespace {

using test::Answer;
using test::Everything;
using test::TempFolder;

// Copies a stored session, with its trace, and gives its path.
std::string stored(const TempFolder& folder, const std::string& name) {
  const std::filesystem::path from = std::filesystem::path(TRAGUARDO_SESSIONS) / name;
  for (const auto& entry : std::filesystem::directory_iterator(from.parent_path())) {
    if (entry.path().stem() == from.stem() && entry.path().extension() != ".json") {
      std::filesystem::copy_file(entry.path(), folder.path() / entry.path().filename());
    }
  }
  return folder.file(from.filename().string());
}

// What is right: each answer is that of a run without a fault, or a failure as documented.
std::string fault_in(const std::vector<Answer>& good, const std::vector<Answer>& found) {
  std::map<std::string, std::size_t> seen;
  std::multimap<std::string, const Answer*> by_call;
  for (const Answer& answer : good) by_call.emplace(answer.call, &answer);
  for (const Answer& answer : found) {
    const auto [begin, end] = by_call.equal_range(answer.call);
    bool is_right = answer.is_null || answer.result == -2 || (answer.call == "open_file" && answer.result <= 0);
    for (auto candidate = begin; candidate != end; ++candidate) is_right = is_right || *candidate->second == answer;
    if (!is_right) return answer.call + " gave " + std::to_string(answer.result);
  }
  return {};
}

class Faults : public ::testing::TestWithParam<const char*> {
 protected:
  Faults() : path_(stored(folder_, GetParam())), before_(folder_.names()) {
    good_ = Everything::of(path_);
    // An expansion may stay, whole.
    for (const std::string& name : folder_.names()) {
      if (std::find(before_.begin(), before_.end(), name) == before_.end()) made_.push_back(name);
    }
    remove_made();
  }

  void remove_made() const {
    for (const std::string& name : made_) std::filesystem::remove(folder_.path() / name);
  }

  void check(const std::string& fault, const std::vector<Answer>& found) const {
    EXPECT_EQ(fault_in(good_, found), "") << fault;
    std::vector<std::string> names = folder_.names();
    std::erase_if(names,
                  [&](const std::string& name) { return std::find(made_.begin(), made_.end(), name) != made_.end(); });
    ASSERT_EQ(names, before_) << fault;
  }

  const TempFolder folder_;
  const std::string path_;
  const std::vector<std::string> before_;
  std::vector<std::string> made_;
  std::vector<Answer> good_;
  const KeptBudget nothing_{0};  // so that stores are written and read
};

TEST_P(Faults, OfTheDiskAreFailuresOrNone) {
  ASSERT_GT(good_.size(), 20U);
  for (int kind = 0; kind < platform::kOperations; ++kind) {
    for (u64 n = 0; n < 100'000; ++n) {
      remove_made();
      platform::let_fail_after(static_cast<platform::Operation>(kind), n);
      const std::vector<Answer> found = Everything::of(path_);
      const bool came_to_fail = platform::let_nothing_fail();
      check("operation " + std::to_string(kind) + ", number " + std::to_string(n), found);
      if (!came_to_fail || HasFailure()) break;
    }
  }
  remove_made();
  EXPECT_EQ(Everything::of(path_), good_);
}

TEST_P(Faults, OfTheMemoryAreFailuresOrNone) {
  for (i64 n = 0; n < 1'000'000; ++n) {
    remove_made();
    g_an_allocation_failed = false;
    g_allocations_left = n;
    const std::vector<Answer> found = Everything::of(path_);
    g_allocations_left = kNever;
    check("allocation " + std::to_string(n), found);
    if (!g_an_allocation_failed || HasFailure()) break;
  }
  remove_made();
  EXPECT_EQ(Everything::of(path_), good_);
}

INSTANTIATE_TEST_SUITE_P(Sessions, Faults,
                         ::testing::Values("gps/gps_channel_packets.qlt", "logger/compressed_level6.qlc",
                                           "legacy/random_9010.wmp"));

}  // namespace
}  // namespace traguardo
