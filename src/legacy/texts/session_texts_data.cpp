// SPDX-License-Identifier: MIT
#include "legacy/texts/session_texts_data.h"

namespace traguardo {
namespace {

// clang-format off
constexpr VenueTypeRow kVenueTypes[] = {
    // code, text
    { 0, "Generic testing"},
    { 1, "Qualifying testing"},
    { 2, "Warm-up"},
    { 3, "Race"},
    { 4, "Heat Race"},
    { 5, "1st Race"},
    { 6, "2nd Race"},
    { 7, "Superpole"},
    { 8, "Pre-final"},
    { 9, "Final"},
    {10, "1st Final"},
    {11, "2nd Final"},
    {12, "Practice 1"},
    {13, "Practice 2"},
    {14, "Practice 3"},
    {15, "Practice 4"},
    {16, "Qualifying 1"},
    {17, "Qualifying 2"},
    {18, "Qualifying 3"},
    {19, "Qualifying 4"},
    {20, "Top-Six"},
    {21, "Test "},
    {22, "Test 1"},
    {23, "Test 2"},
    {24, "Test 3"},
    {25, "Test 4"},
    {26, "Test 5"},
    {27, "Test 6"},
    {28, "Qualifying"},
    {29, "3rd Race"},
    {30, "3rd Final"},
    {31, "Heat"},
    {32, "Heat 1"},
    {33, "Heat 2"},
    {34, "Heat 3"},
    {35, "Engine Test"},
    {36, "Outing"},
    {37, "Track Outing"},
    {38, "A-Main"},
    {39, "B-Feature"},
    {40, "Hot Laps"},
    {41, "Dyno"},
};

constexpr RunDefaultTextRow kRunDefaultTexts[] = {
    // section, offset, width, text
    {RunSection::kRun,       67,  40, "Run %d"},
    {RunSection::kRun,      107, 250, "Insert here your run comments."},
    {RunSection::kReadings, 107, 250, "Insert here your run readings comments."},
    {RunSection::kSettings, 107, 250, "Insert here your run settings comments."},
    {RunSection::kTimeSlip, 107, 250, "Insert here your time slip comments."},
    {RunSection::kWeather,  107, 250, "Insert here your weather information comments."},
};
// clang-format on

}  // namespace

std::span<const VenueTypeRow> venue_types() {
  return kVenueTypes;
}
std::span<const RunDefaultTextRow> run_default_texts() {
  return kRunDefaultTexts;
}

}  // namespace traguardo
