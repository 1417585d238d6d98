// SPDX-License-Identifier: MIT
// Physical values, one channel behind the other, directly behind the tables. They go back through the inverse of their
// sensor's formula, so that one load path serves every version; sensor and parameters may become others by that.
#include <algorithm>

#include "legacy/file/sample_form.h"
#include "legacy/file/table_repair.h"
#include "legacy/file/wmp_file.h"
#include "legacy/file/wmp_tables.h"
#include "legacy/sensors/sensors.h"

namespace traguardo {
namespace {

void measure(const CFileWMP& file, WmpTables* tables) {
  const u64 records = record_bytes(*tables);
  const u64 held = file.bytes_left() > records ? file.bytes_left() - records : 0;
  tables->raw_capacity = std::min<u64>(held, tables->header.value_area_size()) / sizeof(float);
}

bool read(CFileWMP* file, WmpTables* tables, const CSensori& sensors, std::vector<u16>* words, u32*) {
  const std::vector<float> values = file->read_floats(total_samples(*tables));
  words->assign(values.size(), 0);
  std::size_t first = 0;
  for (WmpChannel& channel : tables->channels) {
    WmpChannelRecord& record = channel.record;
    const std::size_t count = record.sample_count();
    u16 sensor_id = record.sensor_id();
    u16 measure_class = record.measure_class();
    std::array<float, 5> parameters = record.parameters();
    sensors.RicavaCampioni(&sensor_id, &measure_class, std::span(values).subspan(first, count),
                           std::span(*words).subspan(first, count), &parameters);
    record.set_sensor_id(sensor_id);
    record.set_measure_class(measure_class);
    record.set_parameters(parameters);
    first += count;
  }
  // Only now is it known which channels are speeds. The last one counts.
  for (std::size_t i = 0; i < tables->channels.size(); ++i) {
    if (tables->channels[i].is_speed()) tables->header.set_reference_speed(static_cast<i16>(i));
  }
  return true;
}

}  // namespace

constexpr SampleForm kFloatArea{false, measure, limit_counts_in_a_row, read};

}  // namespace traguardo
