// Versions 500 and 550: the long header, and an extension behind every channel and lap record. 500 keeps its samples
// only as a dump of the logger's memory; 550 keeps those of two channels, in areas of 64 KiB.
#include <algorithm>

#include "legacy/file/wmp_messages.h"
#include "legacy/wmp_session.h"

namespace traguardo {
namespace {

constexpr u64 kAreaSize = 65536;
constexpr std::size_t kAlignedAreas = 2;

}  // namespace

bool CWMP::ReadWampFileVers500(const std::wstring& path, bool tables_only, u32* error) {
  if (!read_tables_500(path, error)) return false;
  if (!tables_only) {
    std::vector<u16> words;
    if (!rebuild_raw_words(configuration_.dump_offset(), &words, error)) return fail_reading(*error, error);
    words.resize(std::min<std::size_t>(words.size(), header_.raw_area_size() / sizeof(u16)));
    make_value_area();
    take_raw_area(std::move(words));
  }
  close_file();
  return true;
}

bool CWMP::ReadWampFileVers550(const std::wstring& path, bool tables_only, u32* error) {
  if (!read_tables_500(path, error)) return false;
  if (!tables_only) {
    std::vector<u16> words;
    for (std::size_t i = 0; i < std::min(logged_count_, kAlignedAreas); ++i) {
      seek(aligned_areas_start() + i * kAreaSize);
      const std::size_t count = channels_[i].sample_count();
      std::vector<u16> area = read_words(count);
      area.resize(count);
      words.insert(words.end(), area.begin(), area.end());
    }
    make_value_area();
    take_raw_area(std::move(words));
  }
  close_file();
  return true;
}

bool CWMP::read_tables_500(const std::wstring& path, u32* error) {
  if (!reopen(path, error)) return false;
  if (!read_plain_head()) return fail_reading(kMsgWrongLength, error);
  take_real_length();
  const u64 dump =
      header_.version() == 500 ? u64{configuration_.dump_offset()} : aligned_areas_start() + kAlignedAreas * kAreaSize;
  dump_bytes_ = file_length() > dump ? file_length() - dump : 0;
  // A word of the dump is one sample at most. (The two areas of version 550 are limited one by one.)
  raw_capacity_ = dump_bytes_ / sizeof(u16);

  const u64 tables_at = position();
  if (!read_channel_pairs()) return fail_reading(kMsgWrongLength, error);
  normalise_counts();
  seek(tables_at);
  if (!read_channel_pairs()) return fail_reading(kMsgWrongLength, error);
  normalise_tables();
  if (!read_lap_pairs()) return fail_reading(kMsgWrongLength, error);
  normalise_laps();
  agree_run_table();
  measure_runs();
  return true;
}

// Where the raw words of the first channel lie; those of the second one follow one area later, the dump behind both.
u64 CWMP::aligned_areas_start() const {
  const u64 tables = 256 * (u64{stated_laps()} + 4 * u64{stated_channels()}) + 2047;
  return tables / kAreaSize * kAreaSize + kAreaSize;
}

}  // namespace traguardo
