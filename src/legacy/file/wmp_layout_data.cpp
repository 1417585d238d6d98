// SPDX-License-Identifier: MIT
#include "legacy/file/wmp_layout_data.h"

#include "legacy/file/sample_form.h"

namespace traguardo {
namespace {

using enum RunNumbers;

// clang-format off
constexpr WmpVersionRow kWmpVersions[] = {
    // version, block_head, main_header, configuration, identity, names, extended_names, channel_record,
    // channel_extension, lap_record, lap_extension, run_record, extra_record, samples, becomes, raw_area_fills_file,
    // fixed_areas, may_have_old_formulas, runs, lap_times_from_samples, has_serial, tells_log
    {100,  0, 150,   0,   0, 360,   0,  98,   0, 134,   0,    0,  0, &kFloatArea,    451, true,       0, false, kNone,        false, false, false},
    {200,  0, 150,   0,   0, 360,   0,  98,   0, 134,   0,    0,  0, &kFloatArea,    451, true,       0, false, kNone,        false, false, false},
    {320,  0, 150,   0,   0, 360,   0,  98,   0, 134,   0,    0,  0, &kFloatArea,    451, true,       0, false, kNone,        false, false, false},
    {400,  0, 150,   0,   0, 360,   0, 668,   0, 134,   0,    0,  0, &kRawArea,      400, true,       0, true,  kNone,        false, false, false},
    {450,  0, 150,   0,   0, 360,   0, 668,   0, 134,   0,    0,  0, &kRawArea,      450, true,       0, true,  kNone,        false, false, false},
    {451,  0, 150,   0,   0, 360,   0, 668,   0, 134,   0,    0,  0, &kRawArea,      451, true,       0, true,  kNone,        false, false, false},
    {500,  0, 150, 874,   0, 360, 664, 668, 356, 134, 122,    0,  0, &kMemoryDump,   500, false,  65536, false, kOfLateFiles, true,  true,  false},
    {550,  0, 150, 874,   0, 360, 664, 668, 356, 134, 122,    0,  0, &kAlignedAreas, 550, false, 196608, false, kOfLateFiles, false, true,  false},
    {600, 32, 150, 874, 128, 360, 664, 668, 356, 134, 122, 4096, 64, &kRawArea,      600, false,      0, false, kStored,      false, true,  true},
    {700, 32, 150, 874, 128, 360, 664, 668, 356, 134, 122, 4096, 64, &kRawArea,      700, false,      0, false, kStored,      false, true,  false},
};

constexpr SampleRateRow kSampleRates[] = {
    // logger_code, frequency_hz, period_ms
    {  0,    1,  1000},
    {  1,    2,   500},
    {  2,   10,   100},
    {  3,   20,    50},
    {  4,   50,    20},
    {  5,  100,    10},
    {  6,  200,     5},
    {  7,  500,     2},
    {  8, 1000,     1},
    {  9,    5,   200},
    { 10,    0, 32000},
    { 11,    4,   250},
    { 12,    8,   125},
    {102,   10,   100},
    {110,    0, 32000},
};

constexpr OldRecordCopyRow kOldRecordCopies[] = {
    // from, width, to
    { 0, 20,  0},
    {20, 10, 20},
    {30,  2, 30},
    {32,  2, 34},
    {36,  2, 64},
    {38,  8, 76},
    {50,  8, 84},
    {58, 20, 92},
};

constexpr char kSoftwareLetters[] = {
    '\0', 'G', 'H', 'I', 'J', 'K', 'L', 'M', 'N', 'O', 'A', 'B', 'C', 'D', 'E', 'F',
};
// clang-format on

}  // namespace

std::span<const WmpVersionRow> wmp_versions() {
  return kWmpVersions;
}
const WmpVersionRow* find_wmp_version(u16 version) {
  for (const WmpVersionRow& row : kWmpVersions) {
    if (row.version == version) return &row;
  }
  return nullptr;
}
std::span<const SampleRateRow> sample_rates() {
  return kSampleRates;
}
std::span<const OldRecordCopyRow> old_record_copies() {
  return kOldRecordCopies;
}
std::span<const char, 16> software_letters() {
  return kSoftwareLetters;
}

}  // namespace traguardo
