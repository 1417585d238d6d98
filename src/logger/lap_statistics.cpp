#include "logger/lap_statistics.h"

#include <cstdio>

namespace traguardo {

namespace {

std::string time_text(const char* word, i64 ms) {
  char text[96];
  // The remainders of a negative time print as their magnitude: the sign stands in front, once.
  const u64 size = static_cast<u64>(ms < 0 ? -ms : ms);
  std::snprintf(text, sizeof text, " %s %10lld (%s%llu:%02llu:%03llu)", word, static_cast<long long>(ms),
                ms < 0 ? "-" : "", static_cast<unsigned long long>(size / 60000),
                static_cast<unsigned long long>(size / 1000 % 60), static_cast<unsigned long long>(size % 1000));
  return text;
}

}  // namespace

void SStatLap::Aggiungi20(u64 offset, u32 time_ms, const LapRecord& record) { Keep(offset, time_ms, record); }

void SStatLap::Aggiungi32(u64 offset, u32 time_ms, const LapRecord& record) { Keep(offset, time_ms, record); }

void SStatLap::Keep(u64 offset, u32 time_ms, const LapRecord& record) {
  char text[96];
  std::snprintf(text, sizeof text, " 0x%010llx, mclk %10u [ %3u%3u%3u]", static_cast<unsigned long long>(offset),
                time_ms, record.session(), record.lap(), record.split());
  lines.push_back(text + time_text("lapTime", record.lap_time_ms()) + time_text("splitTime", record.split_time_ms()));
  mark_times_ms.push_back(time_ms);
}

}  // namespace traguardo
