// SPDX-License-Identifier: MIT
#include "units/user_units_manager.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <new>

#include "support/event_log.h"

namespace traguardo {
namespace {

constexpr u32 kSpeedFid = FID_PHI_SPEED;
constexpr u32 kTemperatureFid = FID_PHI_TEMPERATURE;
constexpr u32 kPressureFid = FID_PHI_PRESSURE;
constexpr u32 kOdometerFid = fid::make(FID_PHI_DISTANCE, FID_OBJ_TOTAL_ODOMETER);
// Functions that have an entry from the start.
constexpr u32 kFirstEntries[] = {
    kSpeedFid,
    kTemperatureFid,
    kPressureFid,
    fid::make(FID_PHI_PRESSURE, FID_OBJ_BRAKE_FLUID),
    fid::make(FID_PHI_PRESSURE, FID_OBJ_OIL),
};

LengthSettings metric_length() {
  return {.speed_factor = 3.6,
          .inverse_speed_factor = 1.0 / 3.6,
          .length_factor = 1.0,
          .inverse_length_factor = 1.0,
          .long_distance_factor = 1.0,
          .small_length_factor = 1.0,
          .mass_factor = 1.0,
          .area_factor = 1.0,
          .speed_unit = "km/h",
          .mass_unit = "kg",
          .area_unit = "m^2",
          .length_unit = "m",
          .bracketed_length_unit = "[m]",
          .small_length_unit = "mm",
          .bracketed_small_length_unit = "[mm]",
          .small_length_format = "%.0f",
          .speed_format = "%.1f",
          .long_distance_format = "%.1f",
          .distance_code = 201,
          .consumption_pair = 3.6};
}

LengthSettings imperial_length() {
  return {.speed_factor = 2.2369363,
          .inverse_speed_factor = 1.0 / 2.2369363,
          .length_factor = 0.3048,
          .inverse_length_factor = 1.0 / 0.3048,
          .long_distance_factor = 1.609344,
          .small_length_factor = 25.4,
          .mass_factor = 0.4535924,
          .area_factor = 0.09290304,
          .speed_unit = "mph",
          .mass_unit = "lb",
          .area_unit = "feet^2",
          .length_unit = "feet",
          .bracketed_length_unit = "[feet]",
          .small_length_unit = "in",
          .bracketed_small_length_unit = "[inches]",
          .small_length_format = "%.2f",
          .speed_format = "%.1f",
          .long_distance_format = "%.0f",
          .distance_code = 203,
          .consumption_pair = 0.6818182};
}

TemperatureSettings temperature_settings(bool imperial) {
  if (imperial) return {.scale = 1.8, .offset = 32.0, .unit = "F", .code = 102, .format = "%.0f"};
  return {.scale = 1.0, .offset = 0.0, .unit = "C", .code = 100, .format = "%.0f"};
}

PressureSettings pressure_settings(bool imperial) {
  if (imperial) return {.factor = 14.5039, .unit = "PSI", .format = "%.2f", .coarse_format = "%.0f"};
  return {.factor = 1.0, .unit = "bar", .format = "%.3f", .coarse_format = "%.1f"};
}

// By the letters of the name alone: "psi" doesn't count, "inHg" does.
bool counts_as_imperial(std::string_view unit) {
  if (unit == "F") return true;
  for (const std::string_view sign : {"mph", "mi", "ft", "in"}) {
    if (unit.find(sign) <= 1) return true;
  }
  return false;
}

// To a whole number in the target unit, up or down by which of the two lies nearer in the source unit.
double round_to_whole(double converted, double source, double scale) {
  const double magnitude = std::fabs(converted);
  const double up = std::floor(magnitude + 0.5);
  const double down = std::ceil(magnitude - 0.5);
  return magnitude - source / scale > up / scale - source ? up : down;
}

void tell_change(bool is_changed, u32* changed) {
  if (changed != nullptr) *changed = is_changed ? *changed | kSystemChanged : *changed & ~kSystemChanged;
}

// Two threads that open their first files at a time make one manager.
struct Instance {
  std::mutex lock;
  std::unique_ptr<CUserUnitsOfMeasureMgr> manager;
};
Instance& instance() {
  static Instance made_once;
  return made_once;
}

}  // namespace

CUserUnitsOfMeasureMgr* CUserUnitsOfMeasureMgr::GetInstance() {
  const std::scoped_lock held(instance().lock);
  if (instance().manager == nullptr) instance().manager = std::make_unique<CUserUnitsOfMeasureMgr>();
  return instance().manager.get();
}

void CUserUnitsOfMeasureMgr::Release() {
  const std::scoped_lock held(instance().lock);
  instance().manager.reset();
}

CUserUnitsOfMeasureMgr::CUserUnitsOfMeasureMgr()
    : length_(metric_length()), temperature_(temperature_settings(false)), pressure_(pressure_settings(false)) {
  for (const u32 fid : kFirstEntries) AssicuraPresenzaIniFunzione(fid);
  default_units_ = {length_.speed_unit,        length_.mass_unit, length_.area_unit, length_.length_unit,
                    length_.small_length_unit, temperature_.unit, pressure_.unit};
  for (const FunctionRow& row : catalogue::functions()) {
    reference_units_.emplace(row.fid, functions_.GetUnitName(row.fid));
  }
}

CUserUnitsAndNDecPerFID* CUserUnitsOfMeasureMgr::AssicuraPresenzaIniFunzione(u32 fid) {
  const u32 catalogue_fid = functions_.GetCatalogueFid(fid);
  const std::scoped_lock held(entries_lock_);
  std::unique_ptr<CUserUnitsAndNDecPerFID>& entry = per_function_[catalogue_fid];
  if (entry == nullptr) entry = std::make_unique<CUserUnitsAndNDecPerFID>(functions_, catalogue_fid);
  return entry.get();
}

CUserAutoCalValuesPerChName* CUserUnitsOfMeasureMgr::AssicuraPresenzaIniCanale(std::string_view name) {
  const std::scoped_lock held(entries_lock_);
  std::unique_ptr<CUserAutoCalValuesPerChName>& entry = per_channel_[std::string(name)];
  if (entry == nullptr) entry = std::make_unique<CUserAutoCalValuesPerChName>(std::string(name));
  return entry.get();
}

bool CUserUnitsOfMeasureMgr::SetUnitaScelta(u32 fid, std::string_view unit) {
  CUserUnitsAndNDecPerFID* entry = AssicuraPresenzaIniFunzione(fid);
  if (entry == nullptr || !entry->SetUnitaScelta(unit)) {
    TRAGUARDO_LOG("CUserUnitsOfMeasureMgr::SetUnitaScelta", "%s [%d] ERROR = Bad param or can't alloc memory\n");
    return false;
  }
  switch_system(entry->fid(), counts_as_imperial(unit));
  return true;
}

void CUserUnitsOfMeasureMgr::switch_system(u32 catalogue_fid, bool imperial) {
  if (catalogue_fid == kSpeedFid) SetLengthSystem(imperial, nullptr);
  if (catalogue_fid == kTemperatureFid) SetTemperatureSystem(imperial, nullptr);
  if (catalogue_fid == kPressureFid) SetPressureSystem(imperial, nullptr);
}

bool CUserUnitsOfMeasureMgr::SetNumDecimaliDefault(u32 fid, std::string_view unit, i32 decimals) {
  CUserUnitsAndNDecPerFID* entry = AssicuraPresenzaIniFunzione(fid);
  if (entry == nullptr || !entry->SetNumDecimaliDefault(unit, decimals)) {
    TRAGUARDO_LOG("CUserUnitsOfMeasureMgr::SetNumDecimaliDefault", "%s [%d] ERROR = Bad param or can't alloc memory\n");
    return false;
  }
  return true;
}

bool CUserUnitsOfMeasureMgr::SetValoreAutoCal(std::string_view channel, std::string_view key, float value) {
  CUserAutoCalValuesPerChName* entry = AssicuraPresenzaIniCanale(channel);
  if (entry == nullptr) {
    TRAGUARDO_LOG("CUserUnitsOfMeasureMgr::SetValoreAutoCal", "%s [%d] ERROR = Bad param or can't alloc memory\n");
    return false;
  }
  entry->SetValoreAutoCal(key, value);
  return true;
}

float CUserUnitsOfMeasureMgr::GetValoreAutoCal(std::string_view channel, std::string_view key) const {
  const std::scoped_lock held(entries_lock_);
  const auto entry = per_channel_.find(channel);
  return entry == per_channel_.end() ? 0.0F : entry->second->GetValoreAutoCal(key);
}

bool CUserUnitsOfMeasureMgr::GetElencoNdecInFID(u32 fid, std::vector<std::pair<std::string, i32>>* out) {
  const CUserUnitsAndNDecPerFID* entry = AssicuraPresenzaIniFunzione(fid);
  if (entry == nullptr || out == nullptr) {
    TRAGUARDO_LOG("CUserUnitsOfMeasureMgr::GetElencoNdecInFID", "%s [%d] ERROR = Bad param or can't alloc memory\n");
    return false;
  }
  for (const std::string& unit : entry->units()) out->emplace_back(unit, entry->GetNumDecimaliDefault(unit));
  return true;
}

bool CUserUnitsOfMeasureMgr::GetElencoUnitaInNomiCanali(NameTextPairs* out) const {
  if (out == nullptr) {
    TRAGUARDO_LOG("CUserUnitsOfMeasureMgr::GetElencoUnitaInNomiCanali",
                  "%s [%d] ERROR = Bad param or can't alloc memory\n");
    return false;
  }
  for (const TextMap& units : channel_units_) out->insert(out->end(), units.begin(), units.end());
  return true;
}

void CUserUnitsOfMeasureMgr::SetLengthSystem(bool imperial, u32* changed) {
  tell_change(length_imperial_ != imperial, changed);
  length_imperial_ = imperial;
  length_ = imperial ? imperial_length() : metric_length();
}

void CUserUnitsOfMeasureMgr::SetTemperatureSystem(bool imperial, u32* changed) {
  tell_change(temperature_imperial_ != imperial, changed);
  temperature_imperial_ = imperial;
  temperature_ = temperature_settings(imperial);
}

void CUserUnitsOfMeasureMgr::SetPressureSystem(bool imperial, u32* changed) {
  tell_change(pressure_imperial_ != imperial, changed);
  pressure_imperial_ = imperial;
  pressure_ = pressure_settings(imperial);
}

void CUserUnitsOfMeasureMgr::ListChannelUnits(ChannelUnitKind kind, NameTextPairs* out) const {
  const TextMap& units = channel_units(kind);
  out->insert(out->end(), units.begin(), units.end());
}

std::string CUserUnitsOfMeasureMgr::GetChannelUnit(ChannelUnitKind kind, std::string_view channel) const {
  const TextMap& units = channel_units(kind);
  const auto unit = units.find(channel);
  return unit == units.end() ? "" : unit->second;
}

void CUserUnitsOfMeasureMgr::SetChannelUnit(ChannelUnitKind kind, std::string_view channel, std::string_view unit) {
  channel_units_[static_cast<std::size_t>(kind)].insert_or_assign(std::string(channel), std::string(unit));
}

double CUserUnitsOfMeasureMgr::Convert(u32 fid, std::string_view from, std::string_view to, double value,
                                       bool round) const {
  const UnitConversion conversion = functions_.GetConversion(fid, from, to);
  const double scale = conversion.scale;
  const double x = scale * value + static_cast<double>(conversion.offset);
  const double whole = std::floor(x);
  const double steps = (x - whole) * 10000.0;
  const double converted = steps > 1.0 ? whole + std::floor(steps + 1.0) / 10000.0 : whole;
  return round && whole > 10.0 ? round_to_whole(converted, value, scale) : converted;
}

void CUserUnitsOfMeasureMgr::FormatDistance(double metres, std::string* out) {
  out->clear();
  const CUserUnitsAndNDecPerFID* entry = AssicuraPresenzaIniFunzione(kOdometerFid);
  if (entry == nullptr) return;
  const std::string& unit = entry->GetChosenUnit();
  const UnitConversion conversion = functions_.GetConversion(kOdometerFid, "km", unit);
  const double shown = metres * 0.001 * static_cast<double>(conversion.scale);
  char text[400];  // The longest double has 309 digits before its point.
  const int length = std::snprintf(text, sizeof text, "%.*f", entry->GetNumDecimaliDefault(unit), shown);
  if (length > 0) out->assign(text, std::min(static_cast<std::size_t>(length), sizeof text - 1));
}

double CUserUnitsOfMeasureMgr::ConvertExact(Quantity quantity, std::string_view from, std::string_view to,
                                            double value) const {
  return convert_exact(quantity, from, to, value);
}

double CUserUnitsOfMeasureMgr::ExactFactor(Quantity quantity, std::string_view from, std::string_view to) const {
  return exact_factor(quantity, from, to);
}

std::string CUserUnitsOfMeasureMgr::reference_unit(u32 fid) const {
  const auto unit = reference_units_.find(functions_.GetCatalogueFid(fid));
  return unit == reference_units_.end() ? "" : unit->second;
}

}  // namespace traguardo
