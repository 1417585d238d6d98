// Versions 100, 200 and 320 keep physical values. Their tables become those of a version 451 file, and their values the
// raw words that the normal load path expects.
#include <algorithm>

#include "legacy/file/sample_rate.h"
#include "legacy/file/wmp_messages.h"
#include "legacy/sensors/sensors.h"
#include "legacy/wmp_session.h"

namespace traguardo {

bool CWMP::ReadWampFileVers320(const std::wstring& path, bool tables_only, u32* error) {
  if (!reopen(path, error)) return false;
  std::vector<WmpOldChannelRecord> old_channels;
  if (!read_plain_head() || !read_table(&old_channels, stated_channels()) || !read_laps()) {
    return fail_reading(kMsgWrongLength, error);
  }
  const std::vector<float> floats = read_floats(header_.value_area_size() / sizeof(float));
  close_file();

  number_old_laps();
  raw_capacity_ = floats.size();
  convert_old_channels(old_channels);
  convert_old_header();
  for (WmpLapRecord& lap : laps_) lap.set_true_time_ms(lap.time_ms());
  normalise_counts();
  normalise_tables();
  normalise_laps();
  agree_run_table();
  measure_runs();
  if (!tables_only) recover_raw_words(floats);

  const i16 reference = header_.reference_speed();
  if (reference < 0 || static_cast<std::size_t>(reference) >= channels_.size()) {
    for (std::size_t i = 0; i < channels_.size(); ++i) {
      if (channels_[i].measure_class() == WmpChannelRecord::kClassSpeed) {
        header_.set_reference_speed(static_cast<i16>(i));
      }
    }
  }
  return true;
}

// Old loggers had one run, and some did not count its laps.
void CWMP::number_old_laps() {
  const bool uncounted = !laps_.empty() && laps_.front().number() == 0;
  i16 number = 0;
  for (WmpLapRecord& lap : laps_) {
    lap.set_run(1);
    if (uncounted) lap.set_number(++number);
  }
}

// The logged channels as records of today. Their measure class comes with the raw words.
void CWMP::convert_old_channels(const std::vector<WmpOldChannelRecord>& old_channels) {
  const std::size_t logged = static_cast<std::size_t>(std::max<i16>(header_.logged_count(), 0));
  channels_.assign(std::min(logged, old_channels.size()), WmpChannelRecord());
  for (std::size_t i = 0; i < channels_.size(); ++i) {
    const WmpOldChannelRecord& from = old_channels[i];
    WmpChannelRecord& to = channels_[i];
    to.copy_name_and_unit(from.name_and_unit());
    to.set_first_word(from.first_word());
    to.set_second_word(from.second_word());
    to.set_origin(WmpChannelRecord::kOriginMeasured);
    to.set_filter_word(0);
    to.set_sensor_id(from.sensor_id());
    to.set_rate_index(from.rate_index());
    to.set_sample_count(header_.duration_ms() / sample_rate_of(from.rate_index()).period_ms);
    to.copy_display_range(from.display_range());
    to.copy_second_range(from.second_range());
    to.copy_parameters(from.parameters());
    to.set_user_gain(1.0F);
    to.set_user_offset(0.0F);
  }
  header_.set_channel_count(static_cast<i16>(channels_.size()));
  header_.set_logged_count(static_cast<i16>(channels_.size()));
  header_.set_derived_count(0);
  shape_tables();
}

void CWMP::convert_old_header() {
  limit_logged_counts();
  const u32 raw_size = static_cast<u32>(sizeof(u16) * total_samples());
  header_.set_version(451);
  header_.set_raw_area_size(raw_size);
  header_.set_value_area_size(2 * raw_size);
  header_.set_reference_speed(-1);
  update_file_length();
  stored_length_ = header_.file_length();
}

// The values go back through the inverse of their sensor's formula; the sensor id may become another one by that.
void CWMP::recover_raw_words(std::span<const float> floats) {
  make_value_area();
  std::vector<u16> words(first_sample_.back());
  for (std::size_t i = 0; i < channels_.size(); ++i) {
    WmpChannelRecord& record = channels_[i];
    const std::size_t first = first_sample_[i];
    const std::size_t count = first_sample_[i + 1] - first;
    u16 sensor_id = record.sensor_id();
    u16 measure_class = record.measure_class();
    std::array<float, 5> parameters = record.parameters();
    sensors_->RicavaCampioni(&sensor_id, &measure_class, floats.subspan(first, count),
                             std::span<u16>(words).subspan(first, count), &parameters);
    record.set_sensor_id(sensor_id);
    record.set_measure_class(measure_class);
    record.set_parameters(parameters);
  }
  take_raw_area(std::move(words));
}

}  // namespace traguardo
