// SPDX-License-Identifier: MIT
#include "legacy/derived/math_session.h"

#include "legacy/wmp_session.h"

namespace traguardo {
namespace {

void resample_steps(std::span<const float> source, u32 source_period_ms, u32 target_period_ms, std::size_t first,
                    std::span<float> out) {
  const u64 last_ms = source.empty() ? 0 : u64{source_period_ms} * (source.size() - 1);
  for (std::size_t i = 0; i < out.size(); ++i) {
    const u64 time_ms = u64{target_period_ms} * (first + i);
    const bool is_covered = !source.empty() && source_period_ms > 0 && time_ms <= last_ms;
    out[i] = is_covered ? source[static_cast<std::size_t>(time_ms / source_period_ms)] : 0.0F;
  }
}

}  // namespace

std::size_t WmpMathSession::channel_count() const {
  return session_->tables.channels.size();
}
std::string_view WmpMathSession::channel_name(std::size_t index) const {
  return session_->tables.channels[index].record.name_view();
}
u64 WmpMathSession::names_version() const {
  return session_->names_version;
}

std::string_view WmpMathSession::Formula(std::size_t target) const {
  return session_->tables.channels[target].record.formula_view();
}
double WmpMathSession::period_ms(std::size_t target) const {
  return session_->tables.channels[target].statistics.period_ms;
}
u32 WmpMathSession::frequency_hz(std::size_t target) const {
  return session_->tables.channels[target].statistics.frequency_hz;
}
std::span<float> WmpMathSession::Samples(std::size_t target) {
  return session_->store.values(target);
}
std::size_t WmpMathSession::lap_count() const {
  return session_->tables.laps.size();
}

SMathLap WmpMathSession::Lap(std::size_t index) const {
  const WmpLapRecord& lap = session_->tables.laps[index];
  return {static_cast<double>(lap.start_ms()), static_cast<double>(lap.time_ms())};
}

void WmpMathSession::fill_input(std::size_t source, std::size_t target, std::size_t first, std::span<float> out) {
  const std::span<const float> samples = session_->store.values(source);
  const u32 source_period_ms = session_->tables.channels[source].statistics.period_ms;
  const u32 target_period_ms = session_->tables.channels[target].statistics.period_ms;
  if (session_->tables.channels[source].extension.stepped() && source_period_ms != target_period_ms) {
    resample_steps(samples, source_period_ms, target_period_ms, first, out);
  } else {
    resample_linear(samples, source_period_ms, target_period_ms, first, out);
  }
}

}  // namespace traguardo
