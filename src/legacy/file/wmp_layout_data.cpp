#include "legacy/file/wmp_layout_data.h"

namespace traguardo {
namespace {

// clang-format off
constexpr WmpVersionRow kWmpVersions[] = {
    // version, reader, block_head, main_header, configuration, identity, names, extended_names, channel_record,
    // channel_extension, lap_record, lap_extension, run_record, extra_record, samples
    {100, WmpReader::kVers320,  0, 150,   0,   0, 360,   0,  98,   0, 134,   0,    0,  0, WmpSampleForm::kFloatArea},
    {200, WmpReader::kVers320,  0, 150,   0,   0, 360,   0,  98,   0, 134,   0,    0,  0, WmpSampleForm::kFloatArea},
    {320, WmpReader::kVers320,  0, 150,   0,   0, 360,   0,  98,   0, 134,   0,    0,  0, WmpSampleForm::kFloatArea},
    {400, WmpReader::kVers400,  0, 150,   0,   0, 360,   0, 668,   0, 134,   0,    0,  0, WmpSampleForm::kRawArea},
    {450, WmpReader::kVers400,  0, 150,   0,   0, 360,   0, 668,   0, 134,   0,    0,  0, WmpSampleForm::kRawArea},
    {451, WmpReader::kVers400,  0, 150,   0,   0, 360,   0, 668,   0, 134,   0,    0,  0, WmpSampleForm::kRawArea},
    {500, WmpReader::kVers500,  0, 150, 874,   0, 360, 664, 668, 356, 134, 122,    0,  0, WmpSampleForm::kDump},
    {550, WmpReader::kVers550,  0, 150, 874,   0, 360, 664, 668, 356, 134, 122,    0,  0, WmpSampleForm::kAlignedAreas},
    {600, WmpReader::kVers600, 32, 150, 874, 128, 360, 664, 668, 356, 134, 122, 4096, 64, WmpSampleForm::kRawArea},
    {700, WmpReader::kVers700, 32, 150, 874, 128, 360, 664, 668, 356, 134, 122, 4096, 64, WmpSampleForm::kRawArea},
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
    // from, from_width, to, to_width
    { 0, 20,  0, 20},
    {20, 10, 20, 10},
    {30,  2, 30,  4},
    {32,  2, 34,  4},
    {36,  2, 64,  2},
    {38,  8, 76,  8},
    {50,  8, 84,  8},
    {58, 20, 92, 20},
};

constexpr char kSoftwareLetters[] = {
    '\0',
    'G',
    'H',
    'I',
    'J',
    'K',
    'L',
    'M',
    'N',
    'O',
    'A',
    'B',
    'C',
    'D',
    'E',
    'F',
};
// clang-format on

}  // namespace

std::span<const WmpVersionRow> wmp_versions() {
  return kWmpVersions;
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
