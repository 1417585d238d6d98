// SPDX-License-Identifier: MIT
// Every operation on a file and every allocation fails once, at each place where it comes up while a session is opened,
// read through all functions and closed. Allowed is the documented failure or the full right data: never an abort, a
// wrong number or anything left behind.

#include <gtest/gtest.h>

#ifndef _WIN32
#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#endif

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

#ifndef _WIN32

namespace {

// Of each of these calls every other one is interrupted, while that is wanted.
enum Call { kOpenCall, kReadCall, kWriteAtCall, kWriteCall, kResizeCall, kCalls };
std::atomic<bool> g_interrupts{false};
std::atomic<int> g_calls[kCalls];

bool is_interrupted(Call call) {
  if (!g_interrupts || g_calls[call]++ % 2 == 1) return false;
  errno = EINTR;
  return true;
}

}  // namespace

extern "C" {

int open(const char* path, int flags, ...) {
  va_list rest;
  va_start(rest, flags);
  const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(rest, mode_t) : 0;
  va_end(rest);
  return is_interrupted(kOpenCall) ? -1 : static_cast<int>(::syscall(SYS_openat, AT_FDCWD, path, flags, mode));
}
ssize_t pread(int file, void* out, std::size_t count, off_t at) {
  return is_interrupted(kReadCall) ? -1 : ::syscall(SYS_pread64, file, out, count, at);
}
ssize_t pwrite(int file, const void* bytes, std::size_t count, off_t at) {
  return is_interrupted(kWriteAtCall) ? -1 : ::syscall(SYS_pwrite64, file, bytes, count, at);
}
ssize_t write(int file, const void* bytes, std::size_t count) {
  return is_interrupted(kWriteCall) ? -1 : ::syscall(SYS_write, file, bytes, count);
}
int ftruncate(int file, off_t size) noexcept {
  return is_interrupted(kResizeCall) ? -1 : static_cast<int>(::syscall(SYS_ftruncate, file, size));
}

}  // extern "C"

#endif

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

// What is right: each answer is that of a run without a fault, or a failure as documented; a fault comes once, so that
// the same call made again gives what is right.
std::string fault_in(const std::vector<Answer>& good, const std::vector<Answer>& found) {
  std::multimap<std::string, const Answer*> by_call;
  for (const Answer& answer : good) by_call.emplace(answer.call, &answer);
  for (const Answer& answer : found) {
    const bool is_again = answer.call.ends_with(test::kAgain);
    const std::string call = answer.call.substr(0, answer.call.find(test::kAgain));
    const auto [begin, end] = by_call.equal_range(call);
    bool is_right = !is_again && (answer.is_null || answer.result == test::kFailed ||
                                  (answer.call == "open_file" && answer.result <= 0));
    for (auto candidate = begin; candidate != end; ++candidate) {
      const Answer& right = *candidate->second;
      is_right = is_right || Answer{call, answer.result, answer.bytes, answer.is_null} == right;
    }
    if (!is_right) return answer.call + " gave " + std::to_string(answer.result);
  }
  return {};
}

bool takes_all_sessions() {
  return std::getenv("TRAGUARDO_ALL_SESSIONS") != nullptr;
}

class Faults : public ::testing::TestWithParam<std::string> {
 protected:
  Faults() : path_(stored(folder_, GetParam())), before_(names_with_a_file_of_the_user()) {
    good_ = Everything::of(path_);
    // An expansion may stay, whole.
    for (const std::string& name : folder_.names()) {
      if (std::find(before_.begin(), before_.end(), name) == before_.end()) made_.push_back(name);
    }
    remove_made();
  }

  std::vector<std::string> names_with_a_file_of_the_user() const {
    folder_.write(std::filesystem::path(path_).stem().string() + ".qlt.tmp", "mine");
    return folder_.names();
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
  std::vector<int> faults(platform::kOperations);
  for (int kind = 0; kind < platform::kOperations; ++kind) {
    for (u64 n = 0; n < 100'000; ++n) {
      remove_made();
      platform::let_fail_after(static_cast<platform::Operation>(kind), n);
      const std::vector<Answer> found = Everything::of(path_);
      const bool came_to_fail = platform::let_nothing_fail();
      check("operation " + std::to_string(kind) + ", number " + std::to_string(n), found);
      if (!came_to_fail || HasFailure()) break;
      ++faults[kind];
    }
    RecordProperty("faults_" + std::to_string(kind), faults[kind]);
  }
#ifndef _WIN32
  // What an expansion writes, and the copy that the older family leaves, is locked.
  EXPECT_EQ(faults[static_cast<int>(platform::Operation::kLock)] > 0, !path_.ends_with(".qlt"));
#endif
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
    RecordProperty("faults", static_cast<int>(n) + 1);
  }
  remove_made();
  EXPECT_EQ(Everything::of(path_), good_);
}

#ifndef _WIN32

TEST_P(Faults, OfInterruptedCallsAreNone) {
  for (std::atomic<int>& calls : g_calls) calls = 0;
  g_interrupts = true;
  const std::vector<Answer> found = Everything::of(path_);
  g_interrupts = false;
  EXPECT_EQ(found, good_);
  EXPECT_GT(g_calls[kOpenCall], 1);
  EXPECT_GT(g_calls[kReadCall], 1);
  // Among all sessions there are some with hardly a sample.
  EXPECT_GT(g_calls[kWriteAtCall] + g_calls[kWriteCall], takes_all_sessions() ? -1 : 1);
  // An expansion, and the copy that the older family leaves, go through a stream.
  EXPECT_EQ(g_calls[kWriteCall] > 1, !path_.ends_with(".qlt"));
}

TEST(PlantedLinks, AtTheNameOfACopyAreNeverWrittenThrough) {
  const TempFolder folder;
  const std::string path = stored(folder, "legacy/random_9010.wmp");
  const std::string elsewhere = folder.file("elsewhere");
  std::filesystem::create_symlink(elsewhere, folder.path() / "random_9010.bak");
  const int handle = open_file(path.c_str());
  EXPECT_EQ(close_file_i(handle), handle);
  EXPECT_FALSE(std::filesystem::exists(elsewhere));
  EXPECT_EQ(folder.read("random_9010.bak"), folder.read("random_9010.wmp"));
  EXPECT_FALSE(std::filesystem::is_symlink(folder.path() / "random_9010.bak"));
}

#endif

// One of each kind; all that are stored where TRAGUARDO_ALL_SESSIONS is set.
std::vector<std::string> sessions() {
  std::vector<std::string> names = {"gps/random_9027.qlt", "logger/compressed_level6.qlc", "legacy/random_9010.wmp"};
  if (!takes_all_sessions()) return names;
  names.clear();
  for (const auto& entry : std::filesystem::recursive_directory_iterator(TRAGUARDO_SESSIONS)) {
    const std::filesystem::path name = entry.path().lexically_relative(TRAGUARDO_SESSIONS);
    const std::string ending = name.extension().string();
    if (ending == ".qlt" || ending == ".qlc" || ending == ".wmp") names.push_back(name.generic_string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

INSTANTIATE_TEST_SUITE_P(Sessions, Faults, ::testing::ValuesIn(sessions()));

}  // namespace
}  // namespace traguardo
