// SPDX-License-Identifier: MIT
// What a legacy file says in texts and codes: the date, the venue type, and the texts of runs that nobody edited.
#pragma once

#include <ctime>
#include <string>
#include <string_view>

#include "legacy/texts/session_texts_data.h"
#include "support/bytes.h"

namespace traguardo {

// "day-month-year hour:minute:second". Fields that the text lacks stay 0; a year below 90 is of the years from 2000 on,
// every other counts from 1900, up to 2100; every field is held to its range. Days of week and year and the daylight
// flag stay 0.
std::tm parse_session_date(std::string_view text);

// Empty for a code that no text belongs to.
std::string venue_type_text(u32 code);

// The text that stands at `offset` of a section of a run until somebody edits it; empty where there is none.
std::string run_default_text(RunSection section, u16 offset, u16 run_number);

}  // namespace traguardo
