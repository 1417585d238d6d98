// Which of a session's speeds the distances are made of.
#include <optional>
#include <span>

#include "legacy/wmp_session.h"

namespace traguardo {
namespace {

// A speed that may become the reference, and that covers a hundred metres.
bool is_moving_speed(const CWMP& session, std::size_t index) {
  constexpr float kLeastMetres = 100.0F;
  if (session.channel(index).measure_class() != WmpChannelRecord::kClassSpeed) return false;
  if (session.function_id(index) == WmpChannelExtension::kFunctionNeverReference) return false;
  const float enough =
      static_cast<float>(session.statistics(index).frequency_hz) * kLeastMetres / session.speed_scale();
  float sum = 0.0F;
  for (const float speed : session.values(index)) {
    sum += speed;
    if (sum > enough) return true;
  }
  return false;
}

// Too many values that are far off, unless enough good ones in a row stand between them.
bool is_accurate(std::span<const float> accuracies) {
  constexpr float kFarOff = 4.0F;
  constexpr int kMostFarOff = 5;
  constexpr int kGoodRun = 6;
  int far_off = 0;
  int good = 0;
  for (const float accuracy : accuracies) {
    if (accuracy > kFarOff) {
      good = 0;
      if (++far_off > kMostFarOff) return false;
    } else if (++good >= kGoodRun) {
      far_off = 0;
    }
  }
  return true;
}

}  // namespace

char CWMP::find_reference_speed(bool select) {
  const i16 reference = reference_speed();
  const bool has_reference = reference >= 0 && static_cast<std::size_t>(reference) < channels_.size();
  if (has_reference && is_moving_speed(*this, static_cast<std::size_t>(reference))) return 'Y';
  char result = 'N';
  std::optional<std::size_t> choice;
  for (std::size_t i = 0; i < channels_.size(); ++i) {
    if (has_reference && i == static_cast<std::size_t>(reference)) continue;
    if (!is_moving_speed(*this, i)) continue;
    if (result == 'N') {
      result = 'd';
      choice = i;
      continue;
    }
    result = 'D';
    if (!select) break;
    if (channels_[i].name_view() == "GPS_Speed") {
      result = 'G';
      choice = i;
      break;
    }
  }
  if (select && choice) set_reference_speed(static_cast<i32>(*choice));
  return result;
}

bool CWMP::positions_are_accurate() const {
  for (std::size_t i = 0; i < channels_.size(); ++i) {
    if (channels_[i].name_view() == "GPS_PosAccuracy" && !is_accurate(values(i))) return false;
  }
  return true;
}

bool CWMP::set_reference_speed(i32 index) {
  if (index < 0 || static_cast<std::size_t>(index) >= channels_.size()) return false;
  const i16 old_reference = reference_speed();
  if (index == old_reference) return true;
  if (channels_[static_cast<std::size_t>(index)].measure_class() != WmpChannelRecord::kClassSpeed) return false;
  header_.set_reference_speed(static_cast<i16>(index));
  if (rebuild_distance_table()) return true;
  header_.set_reference_speed(old_reference);
  rebuild_distance_table();
  return false;
}

}  // namespace traguardo
