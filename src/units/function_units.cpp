// SPDX-License-Identifier: MIT
#include "units/function_units.h"

#include <algorithm>

#include "support/event_log.h"

namespace traguardo {

CUserUnitsAndNDecPerFID::CUserUnitsAndNDecPerFID(const CFunzioni& functions, u32 fid)
    : functions_(functions),
      fid_(fid),
      long_name_(functions.GetLongName(fid)),
      chosen_unit_(functions.GetUnitName(fid)) {
  functions.ListUnits(fid, &units_);
}

bool CUserUnitsAndNDecPerFID::SetUnitaScelta(std::string_view unit) {
  if (!has_unit(unit)) {
    TRAGUARDO_LOG("CUserUnitsAndNDecPerFID::SetUnitaScelta", "%s [%d] ERROR = Bad unit requested\n");
    return false;
  }
  chosen_unit_ = unit;
  return true;
}

i32 CUserUnitsAndNDecPerFID::GetMostDecimals(std::string_view unit) const {
  return functions_.MostDecimals(fid_, unit);
}

i32 CUserUnitsAndNDecPerFID::GetLeastDecimals(std::string_view unit) const {
  return functions_.LeastDecimals(fid_, unit);
}

i32 CUserUnitsAndNDecPerFID::GetNumDecimaliDefault(std::string_view unit) const {
  const auto set = decimals_.find(unit);
  if (set != decimals_.end()) return set->second;
  const UnitOfMeasure row = functions_.GetUnitRow(fid_, unit);
  if (row.name.empty()) {
    TRAGUARDO_LOG("CUserUnitsAndNDecPerFID::GetNumDecimaliDefault", "%s [%d] ERROR = Bad data\n");
    return 0;
  }
  return row.default_decimals;
}

bool CUserUnitsAndNDecPerFID::SetNumDecimaliDefault(std::string_view unit, i32 decimals) {
  const UnitOfMeasure row = functions_.GetUnitRow(fid_, unit);
  if (row.name.empty()) {
    TRAGUARDO_LOG("CUserUnitsAndNDecPerFID::SetNumDecimaliDefault", "%s [%d] ERROR = Bad data\n");
    return false;
  }
  if (!has_unit(unit)) {
    TRAGUARDO_LOG("CUserUnitsAndNDecPerFID::SetNumDecimaliDefault", "%s [%d] ERROR = Bad unit requested\n");
    return false;
  }
  if (decimals < row.least_decimals || decimals > row.most_decimals) {
    TRAGUARDO_LOG("CUserUnitsAndNDecPerFID::SetNumDecimaliDefault", "%s [%d] ERROR = Bad ndec requested\n");
    return false;
  }
  decimals_.insert_or_assign(std::string(unit), decimals);
  return true;
}

bool CUserUnitsAndNDecPerFID::has_unit(std::string_view unit) const {
  return std::find(units_.begin(), units_.end(), unit) != units_.end();
}

}  // namespace traguardo
