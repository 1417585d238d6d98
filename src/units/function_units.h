// SPDX-License-Identifier: MIT
// The user's choice of unit and decimals for one function.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "units/functions.h"

namespace traguardo {

class CUserUnitsAndNDecPerFID {
 public:
  // Chooses the first unit of the function. `functions` is borrowed.
  CUserUnitsAndNDecPerFID(const CFunzioni& functions, u32 fid);
  virtual ~CUserUnitsAndNDecPerFID() = default;

  virtual const std::string& GetLongName() const { return long_name_; }
  virtual const std::string& GetChosenUnit() const { return chosen_unit_; }
  // Refuses a unit that isn't in the function's list, with a line in the log.
  virtual bool SetUnitaScelta(std::string_view unit);
  virtual i32 GetMostDecimals(std::string_view unit) const;
  virtual i32 GetLeastDecimals(std::string_view unit) const;
  // The decimals set for the unit, else the unit's own default; 0, with a line in the log, for a unit without a row.
  virtual i32 GetNumDecimaliDefault(std::string_view unit) const;
  // Refuses a unit that isn't in the list and decimals outside the unit's limits, each with a line in the log.
  virtual bool SetNumDecimaliDefault(std::string_view unit, i32 decimals);

  u32 fid() const { return fid_; }
  const std::vector<std::string>& units() const { return units_; }

 private:
  bool has_unit(std::string_view unit) const;

  const CFunzioni& functions_;
  u32 fid_;
  std::string long_name_;
  std::string chosen_unit_;
  std::map<std::string, i32, std::less<>> decimals_;
  std::vector<std::string> units_;
};

}  // namespace traguardo
