// Versions 400, 450 and 451: the short header, channel records of 668 bytes, raw words one channel behind the other.
// And what all readers without block heads share.
#include <algorithm>
#include <limits>

#include "legacy/file/wmp_messages.h"
#include "legacy/wmp_session.h"
#include "support/event_log.h"

namespace traguardo {

bool CWMP::ReadWampFileVers400(const std::wstring& path, bool tables_only, u32* error) {
  if (!reopen(path, error)) return false;
  if (!read_plain_head()) return fail_reading(kMsgWrongLength, error);
  take_real_length();
  const u64 tables = WmpChannelRecord::kSize * stated_channels() + WmpLapRecord::kSize * stated_laps();
  raw_capacity_ = bytes_left() > tables ? (bytes_left() - tables) / sizeof(u16) : 0;
  normalise_counts();

  const u64 tables_at = position();
  std::size_t dropped = 0;
  if (!drop_old_math_channels(&dropped)) return fail_reading(kMsgWrongLength, error);
  seek(tables_at);
  if (!read_channel_records()) return fail_reading(kMsgWrongLength, error);
  normalise_counts();
  seek(tables_at);
  if (!read_channel_records()) return fail_reading(kMsgWrongLength, error);
  normalise_tables();
  if (dropped > 0) {
    TRAGUARDO_LOG("CWMP::ReadWampFileVers400", "%s [%d] INFO = Eliminati i canali matematici !!\n\n");
    seek(position() + dropped * WmpChannelRecord::kSize);
  }
  if (!read_laps()) return fail_reading(kMsgWrongLength, error);
  for (WmpLapRecord& lap : laps_) lap.set_run(1);
  normalise_laps();
  agree_run_table();
  measure_runs();
  if (!tables_only) {
    make_value_area();
    take_raw_area(read_words(header_.raw_area_size() / sizeof(u16)));
  }
  close_file();
  return true;
}

// Math channels of an older kind can't be computed any more. The first derived record tells which kind the file has;
// the old ones go, and the counts with them.
bool CWMP::drop_old_math_channels(std::size_t* dropped) {
  *dropped = 0;
  if (header_.derived_count() < 1) return true;
  if (!read_channel_records()) return false;
  if (logged_count_ >= channels_.size() || channels_[logged_count_].math_generation() == 1) return true;
  *dropped = channels_.size() - logged_count_;
  channels_.resize(logged_count_);
  header_.set_channel_count(static_cast<i16>(logged_count_));
  header_.set_derived_count(0);
  header_.set_value_area_size(2 * header_.raw_area_size());
  if (header_.reference_speed() >= header_.channel_count()) {
    const auto first_speed = std::find_if(channels_.begin(), channels_.end(), [](const WmpChannelRecord& record) {
      return record.measure_class() == WmpChannelRecord::kClassSpeed;
    });
    header_.set_reference_speed(first_speed == channels_.end() ? i16{-1}
                                                               : static_cast<i16>(first_speed - channels_.begin()));
  }
  update_file_length();
  return true;
}

bool CWMP::reopen(const std::wstring& path, u32* error) {
  clear_tables();
  if (open_file(path)) return true;
  *error = kMsgErrorOpening;
  return false;
}

bool CWMP::fail_reading(u32 code, u32* error) {
  close_file();
  clear_tables();
  *error = code;
  return false;
}

void CWMP::take_real_length() {
  stored_length_ = file_length();
  const u32 real = static_cast<u32>(std::min<u64>(file_length(), std::numeric_limits<u32>::max()));
  if (header_.file_length() == real) return;
  header_.set_file_length(real);
  changed_ = true;
}

// Counts of the header, as far as they can be meant: a negative one is none.
std::size_t CWMP::stated_channels() const {
  return static_cast<std::size_t>(std::max<i16>(header_.channel_count(), 0));
}
std::size_t CWMP::stated_laps() const {
  return static_cast<std::size_t>(std::max<i16>(header_.lap_count(), 0));
}

// Header and blocks of the versions without block heads.
bool CWMP::read_plain_head() {
  if (!read_record(&header_)) return false;
  const bool is_long = header_.version() >= 500;
  if (is_long && !read_record(&configuration_)) return false;
  if (!read_record(&names_)) return false;
  return !is_long || read_record(&extended_names_);
}

bool CWMP::read_channel_records() {
  if (!read_table(&channels_, stated_channels())) return false;
  shape_tables();
  return true;
}

bool CWMP::read_channel_pairs() {
  const std::size_t count = stated_channels();
  channels_.clear();
  if (!holds(count, WmpChannelRecord::kSize + WmpChannelExtension::kSize)) return false;
  channels_.resize(count);
  extensions_.assign(count, WmpChannelExtension());
  for (std::size_t i = 0; i < count; ++i) {
    if (!read_record(&channels_[i]) || !read_record(&extensions_[i])) return false;
  }
  shape_tables();
  return true;
}

bool CWMP::read_laps() {
  return read_table(&laps_, stated_laps());
}

bool CWMP::read_lap_pairs() {
  const std::size_t count = stated_laps();
  laps_.clear();
  if (!holds(count, WmpLapRecord::kSize + WmpLapExtension::kSize)) return false;
  laps_.resize(count);
  lap_extensions_.assign(count, WmpLapExtension());
  for (std::size_t i = 0; i < count; ++i) {
    if (!read_record(&laps_[i]) || !read_record(&lap_extensions_[i])) return false;
  }
  return true;
}

}  // namespace traguardo
