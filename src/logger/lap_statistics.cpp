// SPDX-License-Identifier: MIT
#include "logger/lap_statistics.h"

#include "logger/report_text.h"

namespace traguardo {

namespace {

// Quotients and remainders keep the sign of a negative time.
void append_time(ReportText* line, std::string_view word, i64 ms) {
  line->Text(" ").Text(word).Text(" ").Number(ms, 10);
  line->Text(" (").Number(ms / 60000).Text(":").Digits(ms / 1000 % 60, 2).Text(":").Digits(ms % 1000, 3).Text(")");
}

}  // namespace

void SStatLap::Aggiungi20(u64 offset, u32 time_ms, const LapRecord& record) {
  keep(offset, time_ms, record);
}

void SStatLap::Aggiungi32(u64 offset, u32 time_ms, const LapRecord& record) {
  keep(offset, time_ms, record);
}

void SStatLap::keep(u64 offset, u32 time_ms, const LapRecord& record) {
  ReportText line;
  line.listed_offset(offset).Text(" mclk ").Number(time_ms, 10);
  line.Text(" [ ").Number(record.session(), 3).Number(record.lap(), 3).Number(record.split(), 3).Text("]");
  append_time(&line, "lapTime", record.lap_time_ms());
  append_time(&line, "splitTime", record.split_time_ms());
  lines.push_back(line.text());
  mark_times_ms.push_back(time_ms);
}

}  // namespace traguardo
