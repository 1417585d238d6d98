// SPDX-License-Identifier: MIT
#include "logger/lap_book.h"

#include "support/event_log.h"

namespace traguardo {

namespace {

constexpr u64 kMicrosecondsPerMillisecond = 1000;
constexpr u8 kNewRun = 1;
constexpr u8 kClosingLapDue = 2;
constexpr u8 kClosingLapKinds[2] = {7, 10};

u64 microseconds(i64 ms) {
  return static_cast<u64>(ms) * kMicrosecondsPerMillisecond;
}

}  // namespace

void LapBook::begin(bool keep_lines) {
  keeps_lines_ = keep_lines;
  if (keep_lines) statistics_ = std::make_unique<SStatLap>();
  last_session_ = 0;
  last_lap_number_ = 0;
  last_lap_ = nullptr;
}

void LapBook::take_tag(const SAtomTag& tag) {
  const u64 offset = u64{tag.offset} + kTagOpeningSize;
  if (tag.version == 3) {
    LapRecord20(tag.payload, tag.payloadSize, offset);
  } else if (tag.version == 2) {
    LapRecord32(tag.payload, tag.payloadSize, offset);
  } else if (tag.payloadSize == LapRecord::kSizeV1) {
    RegistraLap(LapRecord(tag.payload, LapRecord::kSizeV1), offset);
  } else {
    note_bad_size(offset);
  }
}

// Kept only where it will be printed, so that memory doesn't grow with damage.
void LapBook::note_bad_size(u64 offset) {
  if (keeps_lines_) statistics_->bad_size_offsets.push_back(offset);
}

void LapBook::LapRecord32(const u8* record, u32 size, u64 offset) {
  if (size == LapRecord::kSizeV2) {
    RegistraLap(LapRecord(record, size), offset);
  } else {
    note_bad_size(offset);
  }
}

void LapBook::LapRecord20(const u8* record, u32 size, u64 offset) {
  if (size == LapRecord::kSizeV3) {
    RegistraLap(LapRecord(record, size), offset);
  } else {
    note_bad_size(offset);
  }
}

void LapBook::RegistraLap(const LapRecord& record, u64 offset) {
  const u64 mark_time = record.time_ms() != 0 ? u64{record.time_ms()} * kMicrosecondsPerMillisecond : now_;
  if (record.split() == 0) {
    register_lap_mark(record, mark_time, offset);
    return;
  }
  if (record.time_ms() == 0) return;
  // A split belongs to the lap that is being driven, one behind those completed.
  if (SRkLap* lap = session_.GetGiro(record.session(), record.lap() + 1)) GestioneSplit(lap, record, mark_time, offset);
}

void LapBook::register_lap_mark(const LapRecord& record, u64 mark_time, u64 offset) {
  const bool is_new_run = record.lap() == 1 && record.kind(1) == kNewRun;
  if (record.session() <= last_session_ && record.lap() <= last_lap_number_ && !is_new_run) {
    hand_to_statistics(record, offset);
    ++statistics_->repeated_laps;
    return;
  }
  SRkLap* lap = session_.GetGiro(record.session(), record.lap());
  if (lap == nullptr) {
    ++statistics_->bad_allocs;
    return;
  }
  lap->end = mark_time;
  lap->marker_time = mark_time;
  lap->duration = microseconds(record.lap_time_ms());
  lap->start = lap->end - lap->duration;
  lap->session_byte = record.session();
  lap->split_byte = 0;
  lap->lap_number = record.lap();
  lap->kind[0] = record.kind(0);
  lap->kind[1] = record.kind(1);
  last_lap_ = lap;
  last_session_ = record.session();
  last_lap_number_ = record.lap();
  hand_to_statistics(record, offset);
  // The stretch from the last split to the line gets a split of its own.
  if (!lap->splits.empty()) GestioneSplit(lap, record, mark_time, offset);
}

void LapBook::GestioneSplit(SRkLap* lap, const LapRecord& record, u64 mark_time, u64 offset) {
  if (lap->splits.contains(record.split())) {
    ++statistics_->repeated_splits;
    TRAGUARDO_LOG("CParserZep_2Gv4::GestioneSplit", "%s [%d] ERROR = Repeating split\n");
    return;
  }
  auto split = std::make_unique<SRkSplit>();
  const u64 split_time = u64{record.split_time_ms()} * kMicrosecondsPerMillisecond;
  if (lap->splits.empty()) {
    split->duration = split_time;
    split->split_number = record.split();
    split->start =
        last_lap_ != nullptr ? last_lap_->end : u64{record.time_ms()} * kMicrosecondsPerMillisecond - split->duration;
  } else {
    const SRkSplit& lowest = *lap->splits.begin()->second;
    const SRkSplit& highest = *lap->splits.rbegin()->second;
    split->start = highest.end;
    if (record.split() != 0) {
      split->duration = split_time + lowest.start - highest.end;
      split->split_number = record.split();
    } else {
      split->duration = microseconds(i64{record.lap_time_ms()} - i64{record.split_time_ms()});
      split->split_number = static_cast<u8>(lap->splits.rbegin()->first + 1);
    }
  }
  split->end = split->start + split->duration;
  split->marker_time = mark_time;
  split->lap_number = record.lap();
  const u8 number = split->split_number;
  lap->splits[number] = std::move(split);
  last_session_ = record.session();
  last_lap_number_ = record.lap();
  hand_to_statistics(record, offset);
}

void LapBook::hand_to_statistics(const LapRecord& record, u64 offset) {
  const u32 time_ms = record.time_ms() != 0
                          ? record.time_ms()
                          : static_cast<u32>((now_ + kMicrosecondsPerMillisecond / 2) / kMicrosecondsPerMillisecond);
  if (record.size() == LapRecord::kSizeV3) {
    statistics_->Aggiungi20(offset, time_ms, record);
  } else {
    statistics_->Aggiungi32(offset, time_ms, record);
  }
}

void LapBook::add_closing_lap(const SessionMap& sessions, u64 first_time) {
  i32 session_number = 0;
  i32 highest_lap = 0;
  bool closing_lap_due = false;
  for (const auto& [number, session] : sessions) {
    session_number = number;
    highest_lap = 0;
    for (const auto& [lap_number, lap] : session->laps) {
      if (lap == nullptr || lap->end == 0) continue;
      highest_lap = lap_number;
      closing_lap_due = lap->kind[1] == kClosingLapDue;
    }
  }
  if (highest_lap != 0 && !closing_lap_due) return;
  SRkLap* lap = session_.GetGiro(session_number, highest_lap + 1);
  if (lap == nullptr) return;
  lap->start = last_lap_ != nullptr ? last_lap_->end : first_time;
  lap->duration = now_ - lap->start;
  lap->end = lap->start + lap->duration;
  lap->marker_time = now_;
  lap->kind[0] = kClosingLapKinds[0];
  lap->kind[1] = kClosingLapKinds[1];
}

}  // namespace traguardo
