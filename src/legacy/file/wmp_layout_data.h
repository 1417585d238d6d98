// The shape of a legacy file by version: what `CWMP::ApriFile` and the version readers walk.
#pragma once

#include <span>

#include "support/bytes.h"

namespace traguardo {

// The version readers of `CWMP`: kVers320 is `ReadWampFileVers320`, and so on.
enum class WmpReader : u8 { kVers320, kVers400, kVers500, kVers550, kVers600, kVers700 };

// How the samples lie in the file.
enum class WmpSampleForm : u8 {
  kFloatArea,     // f32 physical values, channel behind channel
  kRawArea,       // u16 words, channel behind channel
  kDump,          // a dump of the logger's memory only
  kAlignedAreas,  // two raw channels in 64 KiB aligned areas
};

// Sizes in bytes of what the file holds, in file order for the versions without block heads; 0 for what a version
// doesn't have. A version without a row is refused. With block heads the groups are: main header with configuration,
// names with extended names, identity; then each channel, lap, run and extra record under a head of its own, a record
// and its extension under one.
struct WmpVersionRow {
  u16 version;
  WmpReader reader;
  u16 block_head;
  u16 main_header;
  u16 configuration;
  u16 identity;
  u16 names;
  u16 extended_names;
  u16 channel_record;
  u16 channel_extension;
  u16 lap_record;
  u16 lap_extension;
  u16 run_record;
  u16 extra_record;
  WmpSampleForm samples;
};

// Sample rates by the rate index of a channel record. Frequency and period are taken from here, never computed from
// each other. An index beyond the table gives frequency 0 and period 32000.
struct SampleRateRow {
  u32 logger_code;
  u32 frequency_hz;
  u32 period_ms;
};

// What of a channel record of versions 100 to 320 goes into the record of today. A field that becomes wider is a
// number.
struct OldRecordCopyRow {
  u16 from;  // offset in the 98-byte record
  u16 from_width;
  u16 to;  // offset in the 668-byte record
  u16 to_width;
};

std::span<const WmpVersionRow> wmp_versions();
std::span<const SampleRateRow> sample_rates();
std::span<const OldRecordCopyRow> old_record_copies();

// The letter behind the software text, by the low four bits of the software version; NUL for no letter.
std::span<const char, 16> software_letters();

}  // namespace traguardo
