// SPDX-License-Identifier: MIT
// The calibration values that are kept for one channel name.
#pragma once

#include <map>
#include <string>
#include <string_view>

namespace traguardo {

class CUserAutoCalValuesPerChName {
 public:
  explicit CUserAutoCalValuesPerChName(std::string channel_name) : channel_name_(std::move(channel_name)) {}
  virtual ~CUserAutoCalValuesPerChName() = default;

  // 0.0 for a key without a value.
  virtual float GetValoreAutoCal(std::string_view key) const;
  virtual void SetValoreAutoCal(std::string_view key, float value);

  const std::string& channel_name() const { return channel_name_; }

 private:
  std::string channel_name_;
  std::map<std::string, float, std::less<>> values_;
};

}  // namespace traguardo
