// SPDX-License-Identifier: MIT
#include "legacy/file/table_reader.h"

#include <algorithm>
#include <limits>
#include <numeric>

#include "legacy/file/sample_form.h"
#include "legacy/file/sample_rate.h"
#include "legacy/file/table_repair.h"
#include "legacy/file/wmp_messages.h"
#include "support/event_log.h"

namespace traguardo {
namespace {

template <typename Record>
u32 byte_sum(const Record& record) {
  return std::accumulate(record.bytes(), record.bytes() + Record::kSize, u32{0});
}

// The record of today of a channel of the first versions. Its measure class comes with its raw words.
WmpChannelRecord modern_record(const WmpOldChannelRecord& from, u32 duration_ms) {
  WmpChannelRecord to;
  for (const OldRecordCopyRow& copy : old_record_copies()) {
    std::memcpy(to.bytes() + copy.to, from.bytes() + copy.from, copy.width);
  }
  to.set_origin(WmpChannelRecord::kOriginMeasured);
  to.set_rate_index(from.rate_index());
  to.set_sample_count(duration_ms / sample_rate_of(from.rate_index()).period_ms);
  to.set_user_gain(1.0F);
  return to;
}

}  // namespace

// --- Records and groups

template <typename... Records>
bool TableReader::read_records(u16 head_size, Records*... records) {
  WmpBlockHead head;
  if (head_size > 0 && !file_->read_record(&head)) return false;
  if (!(file_->read_record(records) && ...)) return false;
  if (head_size > 0 && head.checksum() != (byte_sum(*records) + ...)) sums_agree_ = false;
  return true;
}

// --- The head

// What a short file lacks reads as zero, for head_error() to refuse.
u32 TableReader::read_head() {
  file_->read_up_to(tables_->header.bytes(), WmpMainHeader::kSize);
  tables_->version = find_wmp_version(tables_->header.version());
  if (tables_->version == nullptr) return kMsgUnknownVersion;
  if (row().block_head > 0) {
    file_->seek(0);
    if (!read_blocks()) return kMsgChecksum;
  } else {
    if (row().configuration > 0) file_->read_up_to(tables_->configuration.bytes(), WmpConfigurationBlock::kSize);
    file_->read_up_to(tables_->names.bytes(), WmpNamesBlock::kSize);
    if (row().extended_names > 0) file_->read_up_to(tables_->extended_names.bytes(), WmpExtendedNamesBlock::kSize);
  }
  return head_error();
}

// False if a checksum differs or the file ends within the blocks.
bool TableReader::read_blocks() {
  const u16 head = row().block_head;
  sums_agree_ = true;
  if (!read_records(head, &tables_->header, &tables_->configuration) ||
      !read_records(head, &tables_->names, &tables_->extended_names) || !read_records(head, &tables_->identity)) {
    return false;
  }
  // The version in the first head is the one that decided.
  tables_->header.set_version(row().version);
  return sums_agree_;
}

// Of the versions without block heads.
bool TableReader::read_plain_blocks() {
  return file_->read_record(&tables_->header) &&
         (row().configuration == 0 || file_->read_record(&tables_->configuration)) &&
         file_->read_record(&tables_->names) &&
         (row().extended_names == 0 || file_->read_record(&tables_->extended_names));
}

// Why the head forbids to read the file, in the order of the checks.
u32 TableReader::head_error() const {
  const WmpMainHeader& header = tables_->header;
  const bool stores_runs = row().run_record > 0;
  if (header.signature() != kWmpSignature) return kMsgUnknownSignature;
  if (!stores_runs && header.file_length() != file_->file_length()) return kMsgWrongLength;
  if (header.lap_count() < 1) return kMsgNoLaps;
  if (stores_runs && tables_->configuration.run_count() == 0) return kMsgNoRun;
  if (!stores_runs && header.channel_count() < 1) return kMsgNoMeasure;
  if (stores_runs && header.channel_count() < 1) return kMsgAllOk;
  if (header.value_area_size() == 0) return kMsgNoData;
  if (row().samples->holds_raw_words && header.raw_area_size() == 0) return kMsgNoData;
  return kMsgAllOk;
}

void TableReader::take_real_length() {
  tables_->stored_length = file_->file_length();
  const u32 real = static_cast<u32>(std::min<u64>(file_->file_length(), std::numeric_limits<u32>::max()));
  if (tables_->header.file_length() == real) return;
  tables_->header.set_file_length(real);
  tables_->changed = true;
}

// --- The walk

u32 TableReader::read(const WmpVersionRow& file_row, bool tables_only, std::vector<u16>* words) {
  tables_->version = &file_row;
  const bool has_heads = file_row.block_head > 0;
  const u32 refusal = has_heads ? kMsgChecksum : kMsgWrongLength;
  if (!(has_heads ? read_blocks() : read_plain_blocks())) return refusal;
  take_real_length();
  file_row.samples->measure(*file_, tables_);
  if (!read_tables(file_row)) return refusal;
  u32 error = kMsgAllOk;
  if (!tables_only && !file_row.samples->read(file_, tables_, sensors_, words, &error)) return error;
  return kMsgAllOk;
}

bool TableReader::read_tables(const WmpVersionRow& file_row) {
  const bool is_old = file_row.channel_record == WmpOldChannelRecord::kSize;
  u64 dropped_bytes = 0;
  if (file_row.may_have_old_formulas && !drop_old_formulas(&dropped_bytes)) return false;
  if (!(is_old ? read_old_channels() : read_channels())) return false;
  repair_counts(tables_);
  repair_channels(tables_);
  if (file_row.tells_log) {
    const std::string test_name = tables_->names.test_name();
    TRAGUARDO_LOG("CWMP::ReadWampFileVers600", "%s [%d] INFO = \n%s\n\n", test_name);
  }
  file_->seek(file_->position() + dropped_bytes);
  if (!read_laps()) return false;
  if (is_old) modernise_old_laps();
  if (file_row.tells_log) log_laps();
  repair_laps(tables_);
  if (!read_runs()) return false;
  if (repair_runs(tables_) && file_row.run_record > 0) tables_->changed = true;
  if (!read_extras()) return false;
  find_best_laps(tables_);
  return true;
}

// --- Channels

bool TableReader::read_channels() {
  const std::size_t count = tables_->stated_channels();
  const u64 size = u64{row().block_head} + row().channel_record + row().channel_extension;
  tables_->channels.clear();
  if (!file_->holds(count, size)) return false;
  tables_->channels.resize(count);
  sums_agree_ = true;
  for (WmpChannel& channel : tables_->channels) {
    const bool is_read = row().channel_extension > 0
                             ? read_records(row().block_head, &channel.record, &channel.extension)
                             : read_records(row().block_head, &channel.record);
    if (!is_read) return false;
  }
  const std::size_t logged = static_cast<std::size_t>(std::max<i16>(tables_->header.logged_count(), 0));
  tables_->logged_count = std::min(logged, count);
  return sums_agree_;
}

// Versions 100, 200 and 320: the tables become those of the version that has taken over their samples as raw words.
// Derived channels don't outlive that.
bool TableReader::read_old_channels() {
  WmpMainHeader& header = tables_->header;
  std::vector<WmpOldChannelRecord> old_channels;
  if (!file_->read_table(&old_channels, tables_->stated_channels())) return false;
  const std::size_t logged = static_cast<std::size_t>(std::max<i16>(header.logged_count(), 0));
  tables_->channels.resize(std::min(logged, old_channels.size()));
  for (std::size_t i = 0; i < tables_->channels.size(); ++i) {
    tables_->channels[i].record = modern_record(old_channels[i], header.duration_ms());
  }
  tables_->logged_count = tables_->channels.size();
  header.set_channel_count(static_cast<i16>(tables_->channels.size()));
  header.set_logged_count(static_cast<i16>(tables_->channels.size()));
  header.set_derived_count(0);

  tables_->version->samples->limit_counts(tables_);
  const u32 raw_size = static_cast<u32>(sizeof(u16) * total_samples(*tables_));
  header.set_version(row().becomes);
  tables_->version = find_wmp_version(row().becomes);
  header.set_raw_area_size(raw_size);
  header.set_value_area_size(2 * raw_size);
  header.set_reference_speed(-1);
  update_file_length(tables_);
  tables_->stored_length = header.file_length();
  return true;
}

// Formulas of an older kind can't be computed any more. The first derived record tells which kind the file has; the old
// ones go, and the counts with them. The file stands where it stood.
bool TableReader::drop_old_formulas(u64* dropped_bytes) {
  WmpMainHeader& header = tables_->header;
  repair_counts(tables_);
  if (header.derived_count() < 1) return true;
  const u64 tables_at = file_->position();
  if (!read_channels()) return false;
  file_->seek(tables_at);
  const std::size_t logged = tables_->logged_count;
  if (logged >= tables_->channels.size() || tables_->channels[logged].record.math_generation() == 1) return true;
  *dropped_bytes = (tables_->channels.size() - logged) * u64{row().channel_record};
  tables_->channels.resize(logged);
  header.set_channel_count(static_cast<i16>(logged));
  header.set_derived_count(0);
  header.set_value_area_size(2 * header.raw_area_size());
  if (header.reference_speed() >= header.channel_count()) header.set_reference_speed(tables_->first_speed());
  update_file_length(tables_);
  TRAGUARDO_LOG("CWMP::ReadWampFileVers400", "%s [%d] INFO = Eliminati i canali matematici !!\n\n");
  return true;
}

// --- Laps, runs and what stands behind them

bool TableReader::read_laps() {
  const std::size_t count = tables_->stated_laps();
  tables_->laps.clear();
  if (!file_->holds(count, u64{row().block_head} + row().lap_record + row().lap_extension)) return false;
  tables_->laps.resize(count);
  sums_agree_ = true;
  WmpLapExtension extension;
  for (WmpLapRecord& lap : tables_->laps) {
    const bool is_read = row().lap_extension > 0 ? read_records(row().block_head, &lap, &extension)
                                                 : read_records(row().block_head, &lap);
    if (!is_read) return false;
  }
  return sums_agree_;
}

bool TableReader::read_runs() {
  tables_->runs.clear();
  if (row().run_record == 0) return true;
  const std::size_t count = tables_->configuration.run_count();
  if (!file_->holds(count, u64{row().block_head} + row().run_record)) return false;
  tables_->runs.resize(count);
  sums_agree_ = true;
  for (WmpRun& run : tables_->runs) {
    run.record = std::make_unique<WmpRunRecord>();
    if (!read_records(row().block_head, run.record.get())) return false;
    run.number = run.record->number();
  }
  return sums_agree_;
}

bool TableReader::read_extras() {
  if (row().extra_record == 0) return true;
  sums_agree_ = true;
  WmpExtraRecord extra;
  for (u32 i = 0; i < tables_->configuration.extra_count(); ++i) {
    if (!read_records(row().block_head, &extra)) return false;
  }
  return sums_agree_;
}

// The first loggers had one run, and some did not count its laps.
void TableReader::modernise_old_laps() {
  const bool uncounted = !tables_->laps.empty() && tables_->laps.front().number() == 0;
  i16 number = 0;
  for (WmpLapRecord& lap : tables_->laps) {
    if (uncounted) lap.set_number(++number);
    lap.set_true_time_ms(lap.time_ms());
  }
}

// How far the true lap times run away from the lap times, lap by lap.
void TableReader::log_laps() const {
  u32 accumulated = 0;
  u32 true_end = 0;
  for (const WmpLapRecord& lap : tables_->laps) {
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
