// Versions 600 and 700: every group of records stands under a head with the sum of its bytes. 700 is read as 600 is,
// but writes nothing to the event log.
#include <numeric>

#include "legacy/file/wmp_messages.h"
#include "legacy/wmp_session.h"
#include "support/event_log.h"

namespace traguardo {
namespace {

template <typename Record>
u32 byte_sum(const Record& record) {
  return std::accumulate(record.bytes(), record.bytes() + Record::kSize, u32{0});
}

}  // namespace

bool CWMP::ReadWampFileVers600(const std::wstring& path, bool tables_only, u32* error) {
  return read_block_form(path, tables_only, true, error);
}

bool CWMP::ReadWampFileVers700(const std::wstring& path, bool tables_only, u32* error) {
  return read_block_form(path, tables_only, false, error);
}

bool CWMP::read_block_form(const std::wstring& path, bool tables_only, bool tells_log, u32* error) {
  if (!reopen(path, error)) return false;
  if (!read_blocks()) return fail_reading(kMsgChecksum, error);
  take_real_length();
  const u64 groups =
      u64{stated_channels()} * (WmpBlockHead::kSize + WmpChannelRecord::kSize + WmpChannelExtension::kSize) +
      u64{stated_laps()} * (WmpBlockHead::kSize + WmpLapRecord::kSize + WmpLapExtension::kSize) +
      u64{configuration_.run_count()} * (WmpBlockHead::kSize + WmpRunRecord::kSize) +
      u64{configuration_.extra_count()} * (WmpBlockHead::kSize + WmpExtraRecord::kSize);
  raw_capacity_ = bytes_left() > groups ? (bytes_left() - groups) / sizeof(u16) : 0;

  const u64 tables_at = position();
  if (!read_channel_groups()) return fail_reading(kMsgChecksum, error);
  normalise_counts();
  seek(tables_at);
  if (!read_channel_groups()) return fail_reading(kMsgChecksum, error);
  normalise_tables();
  if (tells_log) {
    const std::string test_name = names_.test_name();
    TRAGUARDO_LOG("CWMP::ReadWampFileVers600", "%s [%d] INFO = \n%s\n\n", test_name);
  }
  if (!read_lap_groups()) return fail_reading(kMsgChecksum, error);
  if (tells_log) log_laps();
  normalise_laps();
  if (!read_run_groups()) return fail_reading(kMsgChecksum, error);
  if (agree_run_table()) changed_ = true;
  measure_runs();
  if (!read_extra_groups()) return fail_reading(kMsgChecksum, error);
  find_best_laps();
  if (!tables_only) {
    make_value_area();
    take_raw_area(read_words(header_.raw_area_size() / sizeof(u16)));
  }
  close_file();
  return true;
}

template <typename First>
bool CWMP::read_group(First* first, bool* sound) {
  WmpBlockHead head;
  if (!read_record(&head) || !read_record(first)) return false;
  if (head.checksum() != byte_sum(*first)) *sound = false;
  return true;
}

template <typename First, typename Second>
bool CWMP::read_group(First* first, Second* second, bool* sound) {
  WmpBlockHead head;
  if (!read_record(&head) || !read_record(first) || !read_record(second)) return false;
  if (head.checksum() != byte_sum(*first) + byte_sum(*second)) *sound = false;
  return true;
}

// False if a checksum differs or the file ends within the blocks.
bool CWMP::read_blocks() {
  bool sound = true;
  if (!read_group(&header_, &configuration_, &sound) || !read_group(&names_, &extended_names_, &sound) ||
      !read_group(&identity_, &sound)) {
    return false;
  }
  // The version in the first head is the one that decided.
  header_.set_version(version_);
  return sound;
}

bool CWMP::read_channel_groups() {
  const std::size_t count = stated_channels();
  channels_.clear();
  if (!holds(count, WmpBlockHead::kSize + WmpChannelRecord::kSize + WmpChannelExtension::kSize)) return false;
  channels_.resize(count);
  extensions_.assign(count, WmpChannelExtension());
  bool sound = true;
  for (std::size_t i = 0; i < count; ++i) {
    if (!read_group(&channels_[i], &extensions_[i], &sound)) return false;
  }
  shape_tables();
  return sound;
}

bool CWMP::read_lap_groups() {
  const std::size_t count = stated_laps();
  laps_.clear();
  if (!holds(count, WmpBlockHead::kSize + WmpLapRecord::kSize + WmpLapExtension::kSize)) return false;
  laps_.resize(count);
  lap_extensions_.assign(count, WmpLapExtension());
  bool sound = true;
  for (std::size_t i = 0; i < count; ++i) {
    if (!read_group(&laps_[i], &lap_extensions_[i], &sound)) return false;
  }
  return sound;
}

bool CWMP::read_run_groups() {
  const std::size_t count = configuration_.run_count();
  runs_.clear();
  if (!holds(count, WmpBlockHead::kSize + WmpRunRecord::kSize)) return false;
  runs_.reserve(count);
  bool sound = true;
  for (std::size_t i = 0; i < count; ++i) {
    WmpRun run;
    run.record = std::make_unique<WmpRunRecord>();
    if (!read_group(run.record.get(), &sound)) return false;
    run.number = run.record->number();
    runs_.push_back(std::move(run));
  }
  return sound;
}

bool CWMP::read_extra_groups() {
  bool sound = true;
  for (u32 i = 0; i < configuration_.extra_count(); ++i) {
    WmpExtraRecord record;
    if (!read_group(&record, &sound)) return false;
  }
  return sound;
}

// How far the true lap times run away from the lap times, lap by lap.
void CWMP::log_laps() const {
  u32 accumulated = 0;
  u32 true_end = 0;
  for (const WmpLapRecord& lap : laps_) {
    const u32 difference = lap.time_ms() - lap.true_time_ms();
    true_end += lap.true_time_ms();
    TRAGUARDO_LOG("CWMP::ReadWampFileVers600",
                  "%s [%d] INFO = Lap %d / %u -> tsulgiro %u dwTempoGiroVero %u diff (accum) %ld (%d) lunghezza %u "
                  "lunghezzaVera %u\n\n",
                  lap.number(), lap.run(), lap.time_ms(), lap.true_time_ms(), static_cast<i32>(difference),
                  static_cast<i32>(accumulated), lap.start_ms() + lap.time_ms(), true_end);
    accumulated += difference;
  }
}

}  // namespace traguardo
