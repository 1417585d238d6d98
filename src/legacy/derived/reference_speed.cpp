// SPDX-License-Identifier: MIT
#include "legacy/derived/reference_speed.h"

#include <optional>
#include <span>

#include "legacy/wmp_session.h"

namespace traguardo {
namespace {

// A speed that may become the reference, and that covers a hundred metres.
bool is_moving_speed(const WmpSession& session, std::size_t index) {
  constexpr float kLeastMetres = 100.0F;
  if (!session.tables.channels[index].is_speed()) return false;
  if (session.tables.function_id(index) == WmpChannelExtension::kFunctionNeverReference) return false;
  const float enough =
      static_cast<float>(session.tables.channels[index].statistics.frequency_hz) * kLeastMetres / session.speed_scale;
  float sum = 0.0F;
  for (const float speed : session.store.values(index)) {
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

char find_reference_speed(WmpSession& session, bool select) {
  const std::vector<WmpChannel>& channels = session.tables.channels;
  const i16 reference = session.tables.header.reference_speed();
  const bool has_reference = reference >= 0 && static_cast<std::size_t>(reference) < channels.size();
  if (has_reference && is_moving_speed(session, static_cast<std::size_t>(reference))) return 'Y';
  char result = 'N';
  std::optional<std::size_t> choice;
  for (std::size_t i = 0; i < channels.size(); ++i) {
    if (session.tables.is_reference_speed(i) || !is_moving_speed(session, i)) continue;
    if (result == 'N') {
      result = 'd';
      choice = i;
      continue;
    }
    result = 'D';
    if (!select) break;
    if (channels[i].record.name_view() == "GPS_Speed") {
      result = 'G';
      choice = i;
      break;
    }
  }
  if (select && choice) set_reference_speed(session, static_cast<i32>(*choice));
  return result;
}

bool positions_are_accurate(const WmpSession& session) {
  for (std::size_t i = 0; i < session.tables.channels.size(); ++i) {
    const bool is_accuracy = session.tables.channels[i].record.name_view() == "GPS_PosAccuracy";
    if (is_accuracy && !is_accurate(session.store.values(i))) return false;
  }
  return true;
}

bool set_reference_speed(WmpSession& session, i32 index) {
  WmpMainHeader& header = session.tables.header;
  if (index < 0 || static_cast<std::size_t>(index) >= session.tables.channels.size()) return false;
  const i16 old_reference = header.reference_speed();
  if (index == old_reference) return true;
  if (!session.tables.channels[static_cast<std::size_t>(index)].is_speed()) return false;
  header.set_reference_speed(static_cast<i16>(index));
  if (session.rebuild_distances()) return true;
  header.set_reference_speed(old_reference);
  session.rebuild_distances();
  return false;
}

}  // namespace traguardo
