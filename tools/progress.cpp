// SPDX-License-Identifier: MIT
#include "progress.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <system_error>

#include "api/file_table.h"
#include "paths.h"
#include "support/platform/process.h"

namespace traguardo::tool {

namespace {

constexpr std::uintmax_t kLargeFile = std::uintmax_t{32} << 20;

class ProgressBar : public IProgress {
 public:
  ProgressBar() = default;
  ProgressBar(const ProgressBar&) = delete;
  ProgressBar& operator=(const ProgressBar&) = delete;
  ~ProgressBar() override { clear(); }

  int Apri(bool* stop, int maximum, int) override {
    *stop = false;
    maximum_ = std::max(maximum, 1);
    return 1;
  }
  void Chiudi(int, int) override { clear(); }
  // Called from every frame of the file: what changes nothing on the screen ends at the first line.
  bool Avanza(int, int reached) override {
    if (reached != reached_) draw(reached);
    return true;
  }

 private:
  static constexpr int kWidth = 40;
  static constexpr int kLineWidth = kWidth + 8;  // with brackets and percentage

  void draw(int reached) {
    reached_ = reached;
    const double share = std::clamp(static_cast<double>(reached) / maximum_, 0.0, 1.0);
    const std::string bar(static_cast<std::size_t>(share * kWidth), '#');
    std::fprintf(stderr, "\r[%-*s] %3d %%", kWidth, bar.c_str(), static_cast<int>(share * 100));
    std::fflush(stderr);
  }
  // The line is there for what comes behind it.
  void clear() {
    if (reached_ == kNothingDrawn) return;
    reached_ = kNothingDrawn;
    std::fprintf(stderr, "\r%*s\r", kLineWidth, "");
    std::fflush(stderr);
  }

  static constexpr int kNothingDrawn = -1;
  int maximum_ = 100;
  int reached_ = kNothingDrawn;
};

}  // namespace

std::unique_ptr<IProgress> progress_for(const std::string& path) {
  if (!platform::is_terminal(stderr)) return nullptr;
  std::error_code problem;
  const std::uintmax_t size = std::filesystem::file_size(path_of(path), problem);
  if (problem || size < kLargeFile) return nullptr;
  return std::make_unique<ProgressBar>();
}

int open_with_progress(const std::string& path, const std::list<std::string>& reader_options) {
  const std::unique_ptr<IProgress> progress = progress_for(path);
  return open_file_with_progress(path.c_str(), progress.get(), &reader_options);
}

}  // namespace traguardo::tool
