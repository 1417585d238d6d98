#include "legacy/sensors/conversion_sensors_data.h"

namespace traguardo {
namespace {

// clang-format off
constexpr MeasureClassRow kLoadMeasureClasses[] = {
    // sensor_id, measure_class
    {   0, 4},
    {   1, 3},
    {   2, 3},
    {  38, 3},
    {  49, 3},
    {  50, 3},
    {  93, 3},
    { 111, 3},
    {3001, 3},
};

constexpr RepairPassRow kRepairPasses[] = {
    // sensor_id, filter
    { 10, RepairFilter::kFir},
    { 78, RepairFilter::kFir},
    { 79, RepairFilter::kFir},
    {198, RepairFilter::kFir},
    {405, RepairFilter::kFir},
    {413, RepairFilter::kFir},
    {414, RepairFilter::kFir},
    { 42, RepairFilter::kFir},
    { 91, RepairFilter::kMovingAverage},
    { 92, RepairFilter::kMovingAverage},
    { 95, RepairFilter::kMovingAverage},
    { 96, RepairFilter::kMovingAverage},
};

constexpr i32 kThermocoupleSensors[] = {
    3,
    4,
    5,
    6,
};

constexpr i32 kColdJunctionSensors[] = {
    45,
    75,
};
// clang-format on

}  // namespace

std::span<const MeasureClassRow> load_measure_classes() {
  return kLoadMeasureClasses;
}
std::span<const RepairPassRow> repair_passes() {
  return kRepairPasses;
}
std::span<const i32> thermocouple_sensors() {
  return kThermocoupleSensors;
}
std::span<const i32> cold_junction_sensors() {
  return kColdJunctionSensors;
}

}  // namespace traguardo
