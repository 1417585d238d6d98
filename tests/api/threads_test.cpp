// SPDX-License-Identifier: MIT
// Many threads at a time: each call gives what it gives alone. Run under the thread sanitizer, too.

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <thread>

#include "api/everything.h"
#include "helpers/temp_folder.h"

namespace traguardo {
namespace {

using test::Answer;
using test::Everything;
using test::TempFolder;

constexpr int kThreads = 8;

template <typename Work>
void in_threads(Work&& work) {
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) threads.emplace_back([&work, i] { work(i); });
  for (std::thread& thread : threads) thread.join();
}

TEST(Threads, OpenReadAndCloseTheSameSessionsSideBySide) {
  const TempFolder folder;
  std::vector<std::string> names;
  for (const char* kind : {"logger", "legacy"}) {
    for (const auto& entry : std::filesystem::directory_iterator(std::filesystem::path(TRAGUARDO_SESSIONS) / kind)) {
      const std::filesystem::path& file = entry.path();
      if (file.extension() == ".json" || std::filesystem::file_size(file) > 20'000) continue;
      std::filesystem::copy_file(file, folder.path() / file.filename(),
                                 std::filesystem::copy_options::overwrite_existing);
      const bool is_session = file.extension() != ".jts" && file.extension() != ".qlc";
      if (is_session) names.push_back(file.filename().string());
    }
  }
  std::sort(names.begin(), names.end());
  names.resize(std::min<std::size_t>(names.size(), 19));
  names.push_back("compressed_level6.qlc");
  std::vector<std::vector<Answer>> alone;
  for (const std::string& name : names) alone.push_back(Everything::of(folder.file(name)));

  std::atomic<int> wrong{0};
  in_threads([&](int thread) {
    // Another spelling for each thread, so that each has a file of its own.
    std::string spelling = folder.path().string();
    for (int i = 0; i <= thread; ++i) spelling += "/.";
    for (std::size_t i = 0; i < names.size(); ++i) {
      const std::size_t which = (i + static_cast<std::size_t>(thread) * 3) % names.size();
      if (Everything::of(spelling + "/" + names[which]) != alone[which]) ++wrong;
    }
  });
  EXPECT_EQ(wrong, 0);
  const std::vector<std::string> left = folder.names();
  EXPECT_TRUE(std::none_of(left.begin(), left.end(),
                           [](const std::string& name) { return name.ends_with(".part") || name.ends_with(".tmp"); }));
}

TEST(Threads, ShareOneHandleUntilOneOfThemClosesIt) {
  const TempFolder folder;
  std::filesystem::copy_file(std::filesystem::path(TRAGUARDO_SESSIONS) / "logger/integers.qlt",
                             folder.path() / "a.qlt");
  const std::string path = folder.file("a.qlt");
  std::atomic<int> wrong{0};
  std::atomic<int> closed{0};
  std::atomic<int> handles[2] = {0, 0};
  in_threads([&](int) {
    const int handle = open_file(path.c_str());
    int none = 0;
    if (!handles[0].compare_exchange_strong(none, handle) && none != handle) ++wrong;
    const int count = get_channel_samples_count(handle, 0);
    std::vector<double> times(static_cast<std::size_t>(std::max(count, 0)));
    std::vector<double> values(times.size());
    for (int i = 0; i < 50; ++i) {
      if (get_channel_samples(handle, 0, times.data(), values.data(), count) != count) ++wrong;
    }
    ++handles[1];
    while (handles[1] < kThreads) std::this_thread::yield();
    if (close_file_i(handle) == handle) ++closed;
  });
  EXPECT_EQ(wrong, 0);
  EXPECT_EQ(closed, 1);
}

}  // namespace
}  // namespace traguardo
