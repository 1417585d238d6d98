// SPDX-License-Identifier: MIT
// Single precision, in the order in which it stands: the last bit of a value depends on it.
#include "legacy/derived/run_calculations.h"

#include <algorithm>
#include <optional>
#include <span>

#include "legacy/wmp_session.h"
#include "math/filters.h"

namespace traguardo {
namespace {

constexpr i32 kUsualLowGear = 18;
constexpr i32 kUsualHighGear = 80;
constexpr float kUsualWheelMm = 1524.0F;

// As the run's record tells them; a run without a record tells zeros.
ShaftDrive drive_of_run(const WmpRun& run) {
  return {std::min(run.first_gear_teeth(), run.second_gear_teeth()),
          std::max(run.first_gear_teeth(), run.second_gear_teeth()), truncate_to<i32>(run.wheel_circumference_mm())};
}

i32 wheel_or_usual(float wheel_mm) {
  return truncate_to<i32>(wheel_mm == 0.0F ? kUsualWheelMm : wheel_mm);
}

std::optional<std::size_t> find_logged_shaft(const WmpSession& session) {
  for (std::size_t i = 0; i < session.tables.logged_count; ++i) {
    if (session.tables.channels[i].record.sensor_id() == kShaftSensor) return i;
  }
  return std::nullopt;
}

// Hands each run's samples of the shaft and of the channel to `fill`, as far as both have them. They are read at the
// same index, whatever their rates.
template <typename Fill>
bool fill_runs(WmpSession& session, std::size_t index, Fill fill) {
  const std::span<float> output = session.store.values(index);
  std::ranges::fill(output, 0.0F);
  const std::optional<std::size_t> shaft = find_logged_shaft(session);
  if (!shaft) return false;
  const std::span<const float> input = session.store.values(*shaft);
  const u64 end = std::min(input.size(), output.size());
  const u32 period_ms = session.tables.channels[index].statistics.period_ms;
  // Runs follow one another, so that together they cover a channel once. A damaged lap table may let thousands of them
  // lie over each other: what is more than twice the channel isn't believed.
  u64 believed = 2 * end;
  for (const WmpRun& run : session.tables.runs) {
    const u64 first = run.start_ms / period_ms;
    if (first >= end) continue;
    const u64 count = std::min({u64{run.length_ms / period_ms}, end - first, believed});
    believed -= count;
    const std::size_t from = static_cast<std::size_t>(first);
    const std::size_t samples = static_cast<std::size_t>(count);
    fill(run, input.subspan(from, samples), output.subspan(from, samples));
  }
  return true;
}

}  // namespace

ShaftDrive drive_of_session(const WmpSession& session) {
  ShaftDrive drive{0, 0, wheel_or_usual(0.0F)};
  if (!session.tables.runs.empty()) {
    const WmpRun& run = session.tables.runs.front();
    drive = drive_of_run(run);
    drive.wheel_mm = wheel_or_usual(run.wheel_circumference_mm());
  }
  if (drive.low_gear == 0) drive.low_gear = kUsualLowGear;
  if (drive.high_gear == 0) drive.high_gear = kUsualHighGear;
  return drive;
}

bool compute_geared_speed(WmpSession& session, std::size_t index) {
  const ShaftDrive drive = drive_of_session(session);
  const float low = static_cast<float>(drive.low_gear);
  const float high = static_cast<float>(drive.high_gear);
  const float to_user_unit = 1.0F / session.speed_scale;
  return fill_runs(session, index, [=](const WmpRun& run, std::span<const float> shaft, std::span<float> speed) {
    const float wheel = static_cast<float>(wheel_or_usual(run.wheel_circumference_mm()));
    for (std::size_t i = 0; i < speed.size(); ++i) speed[i] = shaft[i] / 60000.0F * low * wheel * to_user_unit / high;
  });
}

bool compute_acceleration(WmpSession& session, std::size_t index) {
  constexpr float kMinutesPerSecond = 0.016666668F;
  constexpr float kGPerMetrePerSecondSquared = 0.101973176F;
  constexpr std::size_t kHalfWidth = 3;
  const float period = static_cast<float>(session.tables.channels[index].statistics.period_ms);
  return fill_runs(session, index, [=](const WmpRun& run, std::span<const float> shaft, std::span<float> rise) {
    const ShaftDrive drive = drive_of_run(run);
    // Without gears there is nothing to divide by.
    if (drive.high_gear == 0) return;
    const float factor = static_cast<float>(drive.low_gear) * kMinutesPerSecond * static_cast<float>(drive.wheel_mm) *
                         kGPerMetrePerSecondSquared / (static_cast<float>(drive.high_gear) * period);
    for (std::size_t i = 1; i < rise.size(); ++i) rise[i] = (shaft[i] - shaft[i - 1]) * factor;
    CFiltri::MediaMobile(rise.data(), rise.size(), kHalfWidth);
  });
}

bool compute_scaled_speed(WmpSession& session, std::size_t index) {
  const std::optional<std::size_t> shaft_channel = find_logged_shaft(session);
  const float divisor = shaft_channel ? session.tables.channels[*shaft_channel].record.parameter(0) : 1.0F;
  return fill_runs(session, index, [=](const WmpRun&, std::span<const float> shaft, std::span<float> speed) {
    for (std::size_t i = 0; i < speed.size(); ++i) speed[i] = shaft[i] / divisor;
  });
}

}  // namespace traguardo
