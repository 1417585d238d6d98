// SPDX-License-Identifier: MIT
// Lap marks become laps and splits. A mark says what the logger knew at that moment, and marks repeat, so what counts
// is decided here.
#pragma once

#include <memory>

#include "logger/lap_statistics.h"
#include "logger/qlt_channel.h"
#include "logger/tag_decoder.h"
#include "model/parser.h"

namespace traguardo {

class LapBook : public ILapReceiver {
 public:
  // Laps go to the session; `now` is the reader's time, microseconds. Both are borrowed.
  LapBook(CParser* session, const u64* now) : session_(*session), now_(*now) {}

  // Before the first mark. keep_lines: a printable line of each mark is wanted.
  void begin(bool keep_lines);
  void take_tag(const SAtomTag& tag);
  // One lap record of the 32-byte and of the 20-byte form, with the file offset that it is reported under. Another size
  // is noted and changes nothing.
  void LapRecord32(const u8* record, u32 size, u64 offset) override;
  void LapRecord20(const u8* record, u32 size, u64 offset) override;
  // The data behind the last mark would otherwise belong to no lap. `sessions`: those of the session.
  void add_closing_lap(const SessionMap& sessions, u64 first_time);

  const SStatLap& statistics() const { return *statistics_; }

 private:
  // Counters and offsets only.
  struct Counters : SStatLap {
    void Aggiungi20(u64, u32, const LapRecord&) override {}
    void Aggiungi32(u64, u32, const LapRecord&) override {}
  };

  void note_bad_size(u64 offset);
  void RegistraLap(const LapRecord& record, u64 offset);
  void register_lap_mark(const LapRecord& record, u64 mark_time, u64 offset);
  void GestioneSplit(SRkLap* lap, const LapRecord& record, u64 mark_time, u64 offset);
  void hand_to_statistics(const LapRecord& record, u64 offset);

  CParser& session_;
  const u64& now_;
  u8 last_session_ = 0;
  u16 last_lap_number_ = 0;
  SRkLap* last_lap_ = nullptr;
  bool keeps_lines_ = false;
  std::unique_ptr<SStatLap> statistics_ = std::make_unique<Counters>();
};

}  // namespace traguardo
