// SPDX-License-Identifier: MIT
// Texts that a legacy file stores as codes, or that stand in it unless somebody edited them.
#pragma once

#include <span>

#include "support/bytes.h"

namespace traguardo {

// `CParserWMP::ParsaFile`: text of the venue type code of the extended names block. A code without a row gives the
// empty text.
struct VenueTypeRow {
  u32 code;
  const char* text;
};

// Default texts of a run record and of its four sections; for whoever writes such a file, no reader fills them in.
enum class RunSection : u8 { kRun, kReadings, kSettings, kTimeSlip, kWeather };
struct RunDefaultTextRow {
  RunSection section;
  u16 offset;        // in the section; kRun is the run record itself
  u16 width;         // bytes
  const char* text;  // that of the run name is a format with the run number
};

std::span<const VenueTypeRow> venue_types();
std::span<const RunDefaultTextRow> run_default_texts();

}  // namespace traguardo
