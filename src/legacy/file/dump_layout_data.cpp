// SPDX-License-Identifier: MIT
#include "legacy/file/dump_layout_data.h"

namespace traguardo {
namespace {

// clang-format off
constexpr DeviceLayoutRow kDeviceLayouts[] = {
    // device_code, layout_key
    {   21,  4},
    {   33,  4},
    {   22,  9},
    {   23,  9},
    {   44,  9},
    {   24, 10},
    {   25, 10},
    {   41, 10},
    {   43, 10},
    {   46, 10},
    {10001, 10},
    {10002, 10},
    {   26, -1},
    {   30, -1},
    {   31, -1},
    {   32, -1},
    {   48, -1},
    {   81, -1},
    {   82, -1},
    {   83, -1},
    { 9999, -1},
    {   27,  6},
    {   28,  6},
    {   29,  6},
    {   34,  6},
    {   35,  6},
    {   36,  6},
    {   37,  7},
    {   38,  7},
    {   42,  7},
    {   49,  7},
    {   50,  7},
};

constexpr DumpLayoutRow kDumpLayouts[] = {
    // layout_key, channel_flags, schedule, sensors, extended_sensors, extended_flags, further_flags
    { 3, {0, 212}, {200, 5000}, {6144, 1440}, {0, 0},       {0, 0},      {0, 0}},
    { 5, {0, 212}, {200, 5000}, {6144, 1440}, {0, 0},       {0, 0},      {0, 0}},
    { 9, {0, 212}, {200, 5000}, {6144, 1440}, {0, 0},       {0, 0},      {0, 0}},
    {10, {0, 212}, {200, 5000}, {6144, 1440}, {0, 0},       {0, 0},      {0, 0}},
    { 7, {0, 212}, {200, 2000}, {6144, 1440}, {2208, 3840}, {7696, 192}, {7952, 192}},
};

constexpr ScheduleRow kSchedules[] = {
    // family, length, long_length, extended
    {              5,  500,  500, false},
    {              9,  500,  500, false},
    {             10,  500,  500, false},
    {              7, 1000, 1000, true},
    {kAnyOtherFamily, 4000, 5000, false},
};
// clang-format on

}  // namespace

std::span<const DeviceLayoutRow> device_layouts() {
  return kDeviceLayouts;
}
std::span<const DumpLayoutRow> dump_layouts() {
  return kDumpLayouts;
}
std::span<const ScheduleRow> schedules() {
  return kSchedules;
}

}  // namespace traguardo
