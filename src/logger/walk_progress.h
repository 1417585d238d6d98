// SPDX-License-Identifier: MIT
// Tells a sink, if there is one, how far a walk through a file is.
#pragma once

#include "model/progress.h"
#include "support/bytes.h"

namespace traguardo {

class WalkProgress {
 public:
  explicit WalkProgress(u32 size) : size_(size) {}

  // False if the sink wants to stop before anything began.
  bool begin(IProgress* sink) {
    sink_ = sink;
    if (sink == nullptr) return true;
    bool stop = false;
    handle_ = sink->Apri(&stop, 100, 1);
    return !stop;
  }
  // False when it wants to stop; it was told the end then.
  bool Report(u64 position) { return sink_ == nullptr || is_silent_ || tell(position); }
  void End(bool good) {
    if (sink_ != nullptr) sink_->Chiudi(handle_, good ? 1 : 0);
  }
  void forget() { sink_ = nullptr; }
  void set_silent(bool silent) { is_silent_ = silent; }

 private:
  bool tell(u64 position) {
    // Rounded to the nearest whole percent.
    const int percent = static_cast<int>((position * 200 + size_) / (u64{2} * size_));
    if (sink_->Avanza(handle_, percent)) return true;
    End(false);
    return false;
  }

  u32 size_;
  IProgress* sink_ = nullptr;
  int handle_ = 0;
  bool is_silent_ = false;
};

}  // namespace traguardo
