// SPDX-License-Identifier: MIT
#include "channel_cursor.h"

#include <algorithm>
#include <cmath>

#include "inside.h"
#include "support/table_rows.h"

namespace traguardo::tool {

namespace {

constexpr u64 kForEver = std::numeric_limits<u64>::max();
constexpr u64 kWindow = 8192;  // samples

u64 doubled(u64 stretch_us) {
  return stretch_us > kForEver / 2 ? kForEver : stretch_us * 2;
}

u64 sum(u64 time_us, u64 stretch_us) {
  return stretch_us > kForEver - time_us ? kForEver : time_us + stretch_us;
}

}  // namespace

SampleWalk::SampleWalk(const Session& session, const Channel& channel) : session_(session), channel_(channel) {
  const SFileQLT& file = inside_of(session);
  if (channel.kind == ChannelKind::logged) {
    logged_ = file.view->GetCanali()[static_cast<std::size_t>(channel.index)].get();
    end_us_ = sum(logged_->GetA(), 1);
  } else {
    end_us_ = file.gps.grid().size() * GpsView::kStep;
  }
}

// The grid of the GPS has a point every 10 ms from 0 on.
u64 SampleWalk::count_between(u64 from_us, u64 to_us) const {
  if (logged_ != nullptr) return logged_->GetNumValoriRange(from_us, to_us);
  const auto points_below = [](u64 time_us) { return (time_us + GpsView::kStep - 1) / GpsView::kStep; };
  return points_below(std::min(to_us, end_us_)) - points_below(std::min(from_us, end_us_));
}

void SampleWalk::read_between(u64 from_us, u64 to_us, u64 count) {
  times_.resize(static_cast<std::size_t>(count));
  values_.resize(times_.size());
  u64 written = 0;
  if (logged_ != nullptr) {
    written = logged_->GetValoriRange(from_us, to_us, times_.data(), values_.data(), static_cast<int>(count));
  } else {
    const u64 first = (from_us + GpsView::kStep - 1) / GpsView::kStep;
    written = inside_of(session_).gps.grid().fill(static_cast<u32>(channel_.index), first, count, GpsTimeUnit::kSeconds,
                                                  times_.data(), values_.data());
  }
  for (std::size_t i = 0; i < written; ++i) {
    const TimedValue sample{static_cast<u64>(std::llround(times_[i] * 1e6)),
                            static_cast<float>(values_[i] * channel_.scale + channel_.offset)};
    if (window_.empty() || sample.time_us > window_.back().time_us) window_.push_back(sample);
  }
}

// Gives false behind the last sample. The stretch of time follows how dense the samples are.
bool SampleWalk::fill() {
  window_.clear();
  at_ = 0;
  while (next_from_us_ < end_us_) {
    const u64 to = std::min(sum(next_from_us_, stretch_us_), end_us_);
    const u64 count = count_between(next_from_us_, to);
    if (count > kWindow && stretch_us_ > 1) {
      stretch_us_ = std::max<u64>(1, stretch_us_ / 2);
      continue;
    }
    read_between(next_from_us_, to, count);
    next_from_us_ = to;
    if (count < kWindow / 4) stretch_us_ = doubled(stretch_us_);
    if (!window_.empty()) return true;
  }
  return false;
}

void SampleWalk::go_to(u64 time_us) {
  constexpr u64 kFirstLookUs = 100'000;
  u64 from = time_us;
  for (u64 look = kFirstLookUs; from > 0 && count_between(from, time_us) == 0; look = doubled(look)) {
    from = time_us > look ? time_us - look : 0;
  }
  window_.clear();
  at_ = 0;
  next_from_us_ = from;
  // All of that look but its last sample is passed over.
  if (from == time_us || !fill()) return;
  while (at_ + 1 < window_.size() && window_[at_ + 1].time_us < time_us) ++at_;
}

ChannelCursor::ChannelCursor(const Session& session, const Channel& channel)
    : channel_(channel), is_held_(is_held(session, channel)), walk_(session, channel) {
  go_to(0);
}

void ChannelCursor::go_to(u64 time_us) {
  walk_.go_to(time_us);
  before_.reset();
  behind_.reset();
  if (const TimedValue* const sample = walk_.next()) behind_ = *sample;
}

std::optional<float> ChannelCursor::at(u64 time_us) {
  while (behind_ && behind_->time_us <= time_us) {
    before_ = behind_;
    const TimedValue* const sample = walk_.next();
    behind_ = sample == nullptr ? std::nullopt : std::optional<TimedValue>(*sample);
  }
  if (!before_) return std::nullopt;
  if (is_held_ || before_->time_us == time_us) return before_->value;
  if (!behind_) return std::nullopt;
  return static_cast<float>(on_line(static_cast<double>(before_->value), static_cast<double>(behind_->value),
                                    static_cast<double>(time_us - before_->time_us),
                                    static_cast<double>(behind_->time_us - before_->time_us)));
}

}  // namespace traguardo::tool
