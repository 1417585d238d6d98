// SPDX-License-Identifier: MIT
// A formula over the channels of an open session.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <map>
#include <memory>
#include <new>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "api/calls.h"
#include "math/math_channel_manager.h"
#include "native/python_api.h"
#include "support/platform/platform.h"
#include "units/user_units_manager.h"

namespace traguardo {

namespace {

constexpr i64 kMostPoints = 100'000'000;

struct FreeBlock {
  void operator()(float* block) const { platform::heap_free(nullptr, block); }
};

u64 step_us(double rate_hz) {
  return static_cast<u64>(std::llround(1e6 / rate_hz));
}

i64 points_of(const SFileQLT& file, double rate_hz) {
  const auto& channels = file.view->GetCanali();
  if (!(rate_hz > 0) || rate_hz > 1e6) return -1;
  if (channels.empty()) return 0;
  const u64 points = (channels.front()->GetA() - channels.front()->GetDa()) / step_us(rate_hz);
  return points > static_cast<u64>(kMostPoints) ? -1 : static_cast<i64>(points);
}

// Every channel on one even grid over the whole session, and behind them the result, which no formula can name.
class FormulaSession : public IMathSession {
 public:
  FormulaSession(const SFileQLT& file, double rate_hz, std::span<float> out)
      : file_(file), step_us_(step_us(rate_hz)), rate_hz_(static_cast<u32>(std::llround(rate_hz))), out_(out) {
    for (const SRkLap* lap : file.laps) {
      // A time below 0 wraps in the file's model.
      if (lap != nullptr) laps_.push_back({to_ms(lap->start), to_ms(lap->duration)});
    }
    std::stable_sort(laps_.begin(), laps_.end(), [](const auto& a, const auto& b) { return a.start_ms < b.start_ms; });
  }

  std::size_t channel_count() const override { return file_.view->GetCanali().size(); }
  std::string_view channel_name(std::size_t index) const override { return file_.view->GetCanali()[index]->GetNome(); }
  std::string_view Formula(std::size_t) const override { return {}; }
  double period_ms(std::size_t) const override { return static_cast<double>(step_us_) / 1000.0; }
  u32 frequency_hz(std::size_t) const override { return rate_hz_; }
  std::span<float> Samples(std::size_t) override { return out_; }
  std::size_t lap_count() const override { return laps_.size(); }
  SMathLap Lap(std::size_t index) const override { return laps_[index]; }
  void fill_input(std::size_t source, std::size_t, std::size_t first, std::span<float> out) override {
    auto [known, is_new] = grids_.try_emplace(source);
    if (is_new) known->second = grid_of(*file_.view->GetCanali()[source]);
    resample_linear(known->second, 1, 1, first, out);
  }

 private:
  static double to_ms(u64 time_us) { return static_cast<double>(static_cast<i64>(time_us)) / 1000.0; }

  std::vector<float> grid_of(CSuperChannel& channel) const {
    float* block = nullptr;
    u32 count = 0;
    const bool good = channel.GetValoriEvery(nullptr, step_us_, &block, &count);
    const std::unique_ptr<float, FreeBlock> owner(block);
    if (!good || block == nullptr) throw std::bad_alloc();
    return std::vector<float>(block, block + count);
  }

  const SFileQLT& file_;
  u64 step_us_;
  u32 rate_hz_;
  std::span<float> out_;
  std::map<std::size_t, std::vector<float>> grids_;
  std::vector<SMathLap> laps_;
};

}  // namespace

}  // namespace traguardo

int64_t tg_formula_points(int handle, double rate_hz) {
  return traguardo::guarded(int64_t{-1}, [&]() -> int64_t {
    const traguardo::FileInUse file = traguardo::use_file(handle);
    return file ? traguardo::points_of(*file, rate_hz) : -1;
  });
}

int tg_formula(int handle, const char* formula, double rate_hz, float* out, int64_t count, int* character,
               char* message, int room) {
  return traguardo::guarded(-1, [&] {
    const traguardo::FileInUse file = traguardo::use_file(handle);
    if (!file || count < 0 || traguardo::points_of(*file, rate_hz) != count) return -1;
    traguardo::FormulaSession session(*file, rate_hz, {out, static_cast<std::size_t>(count)});
    traguardo::CGestMathChan math(*traguardo::CUserUnitsOfMeasureMgr::GetInstance(), std::wstring());
    const traguardo::FormulaOutcome outcome = math.compute_formula(formula, session, session.channel_count());
    *character = static_cast<int>(outcome.character);
    const std::size_t length = std::min(outcome.message.size(), static_cast<std::size_t>(std::max(room, 1)) - 1);
    std::memcpy(message, outcome.message.data(), length);
    message[length] = 0;
    return static_cast<int>(outcome.code);
  });
}
