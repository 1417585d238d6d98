// SPDX-License-Identifier: MIT
#include "units/functions.h"

#include <algorithm>

#include "units/converter.h"
#include "units/text_format.h"

namespace traguardo {
namespace {

using Names = std::span<const NameRow>;

// Beyond these values the short name leaves the field out.
constexpr u32 kDetailsEnd = 12;
constexpr u32 kPositionsEnd = 26;
constexpr u32 kObjectsEnd = 73;
// The buffer that displays keep for a short name, without its end.
constexpr std::size_t kLongestShortName = 31;

const NameRow* row_of_value(Names names, u32 value) {
  const auto row = std::find_if(names.begin(), names.end(), [value](const NameRow& r) { return r.value == value; });
  return row == names.end() ? nullptr : &*row;
}

std::string short_name_of(Names names, u32 value) {
  const NameRow* row = row_of_value(names, value);
  return row == nullptr ? "" : row->short_name;
}

std::string long_name_of(Names names, u32 value) {
  const NameRow* row = row_of_value(names, value);
  return row == nullptr ? "" : row->long_name;
}

std::string key_of(Names names, u32 value) {
  const NameRow* row = row_of_value(names, value);
  return row == nullptr ? "" : row->key;
}

u32 value_of_key(Names names, std::string_view key) {
  const auto row = std::find_if(names.begin(), names.end(), [key](const NameRow& r) { return key == r.key; });
  return row == names.end() ? 0 : row->value;
}

std::vector<std::string> keys_of(Names names) {
  std::vector<std::string> keys;
  for (const NameRow& row : names) keys.emplace_back(row.key);
  return keys;
}

// Collects the parts of a long name, each followed by a blank.
class LongName {
 public:
  explicit LongName(bool with_undefined) : with_undefined_(with_undefined) {}

  void append(Names names, u32 value) {
    if (value == 0 && !with_undefined_) return;
    const std::string part = long_name_of(names, value);
    if (!part.empty() || with_undefined_) text_ += part + " ";
  }
  void append_number(u32 number) { text_ += std::to_string(number); }
  const std::string& text() const { return text_; }

 private:
  bool with_undefined_;
  std::string text_;
};

std::string long_name_of_parts(u32 word, bool with_undefined) {
  LongName name(with_undefined);
  name.append(catalogue::physical_quantities(), fid::quantity(word));
  if (fid::quantity(word) == FID_PHI_PACKAGE) {
    if (fid::object(word) < kDetailsEnd) name.append(catalogue::details(), fid::object(word));
    if (fid::position(word) < kPositionsEnd) name.append(catalogue::positions(), fid::position(word));
  } else if (fid::object(word) < kObjectsEnd) {
    name.append(catalogue::objects(), fid::object(word));
  }
  name.append(catalogue::in_out(), fid::in_out(word));
  if (fid::is_numbered(word)) {
    name.append_number(fid::number(word));
  } else {
    name.append(catalogue::left_right(), fid::left_right(word));
    name.append(catalogue::front_rear(), fid::front_rear(word));
    name.append(catalogue::up_down(), fid::up_down(word));
  }
  return name.text();
}

const FunctionRow* first_row(u32 quantity, u32 object) {
  for (const FunctionRow& row : catalogue::functions()) {
    if (fid::quantity(row.fid) == quantity && fid::object(row.fid) == object) return &row;
  }
  return nullptr;
}

// The long name of a row for a word whose position may have a name of its own.
std::string long_name_in_row(const FunctionRow& row, u32 word) {
  for (const PositionRow& position : row.positions) {
    if (position.position == fid::position(word)) return position.long_name;
  }
  return row.long_name;
}

bool is_listed(const SDeviceDescription* device, u32 number) {
  return device != nullptr && device->is_known &&
         std::find(device->numbers.begin(), device->numbers.end(), number) != device->numbers.end();
}

}  // namespace

const ChannelRecord* CFunzioni::FindChannelByFid(u32 fid) const {
  for (const ChannelRecord& record : channels_) {
    const bool is_of_a_device = record.device_serial() != 0;
    if (is_of_a_device && !is_listed(device_, record.device_serial())) continue;
    if (fid::matches(record.fp_code(), fid)) return &record;
  }
  return nullptr;
}

std::string CFunzioni::GetShortName(u32 fid) const {
  if (const NamedChannelRow* row = GetNamedChannel(fid)) return row->short_name;
  std::string name = short_name_of(catalogue::physical_quantities(), fid::quantity(fid));
  if (fid::quantity(fid) == FID_PHI_PACKAGE) {
    if (fid::object(fid) < kDetailsEnd) name += short_name_of(catalogue::details(), fid::object(fid));
    if (fid::position(fid) < kPositionsEnd) name += short_name_of(catalogue::positions(), fid::position(fid));
  } else if (fid::object(fid) < kObjectsEnd) {
    name += short_name_of(catalogue::objects(), fid::object(fid));
  }
  name += short_name_of(catalogue::in_out(), fid::in_out(fid));
  if (fid::is_numbered(fid)) {
    name += std::to_string(fid::number(fid));
  } else {
    name += short_name_of(catalogue::left_right(), fid::left_right(fid));
    name += short_name_of(catalogue::front_rear(), fid::front_rear(fid));
    name += short_name_of(catalogue::up_down(), fid::up_down(fid));
  }
  return name.substr(0, kLongestShortName);
}

std::string CFunzioni::GetLongName(u32 fid, bool with_undefined) const {
  if (const NamedChannelRow* row = GetNamedChannel(fid)) return row->long_name;
  for (const KeyRow& row : catalogue::keys()) {
    if (row.fid == fid) return row.long_name;
  }
  if (const FunctionRow* row = first_row(fid::quantity(fid), fid::object(fid))) return long_name_in_row(*row, fid);
  if (const FunctionRow* row = first_row(fid::quantity(fid), FID_OBJ_UNDEFINED)) return row->long_name;
  return long_name_of_parts(fid, with_undefined);
}

u32 CFunzioni::GetCatalogueFid(u32 fid) const {
  for (const FunctionRow& row : catalogue::functions()) {
    const u32 object = fid::object(row.fid);
    const bool object_fits = object == fid::object(fid) || object == FID_OBJ_UNDEFINED;
    if (fid::quantity(row.fid) == fid::quantity(fid) && object_fits) return row.fid;
  }
  return 0;
}

std::string CFunzioni::PhysicalName(u32 value) const {
  return long_name_of(catalogue::physical_quantities(), value);
}
std::string CFunzioni::ObjectName(u32 value) const {
  return long_name_of(catalogue::objects(), value);
}
std::string CFunzioni::PositionName(u32 value) const {
  return long_name_of(catalogue::positions(), value);
}
std::string CFunzioni::PhysicalKey(u32 value) const {
  return key_of(catalogue::physical_quantities(), value);
}
std::string CFunzioni::ObjectKey(u32 value) const {
  return key_of(catalogue::objects(), value);
}

void CFunzioni::FillPhysicalMap(std::map<u32, std::string>* out) const {
  for (const NameRow& row : catalogue::physical_quantities()) out->insert_or_assign(row.value, row.long_name);
}

u32 CFunzioni::PhysicalFromKey(std::string_view key) const {
  return value_of_key(catalogue::physical_quantities(), key);
}
u32 CFunzioni::ObjectFromKey(std::string_view key) const {
  return value_of_key(catalogue::objects(), key);
}
u32 CFunzioni::PositionFromKey(std::string_view key) const {
  return value_of_key(catalogue::positions(), key);
}
u32 CFunzioni::FrontRearFromKey(std::string_view key) const {
  return value_of_key(catalogue::front_rear(), key);
}

void CFunzioni::ListKeys(KeyLists* out) const {
  *out = {keys_of(catalogue::physical_quantities()), keys_of(catalogue::objects()),    keys_of(catalogue::details()),
          keys_of(catalogue::packet_specs()),        keys_of(catalogue::positions()),  keys_of(catalogue::in_out()),
          keys_of(catalogue::left_right()),          keys_of(catalogue::front_rear()), keys_of(catalogue::up_down())};
}

std::unique_ptr<IConverter> CFunzioni::CreateConverter(const ChannelRecord& record, u32 fid, const UnitOfMeasure& unit,
                                                       u32 byte_offset, const DisplaySettings& display) const {
  return std::make_unique<CConverter>(record, fid, unit, byte_offset, display);
}

std::unique_ptr<IConverter> CFunzioni::CreateConverter(const ChannelRecord& record, u32 fid, const UnitOfMeasure& unit,
                                                       u32 byte_offset, int significant_digits, int width) const {
  DisplaySettings display;
  display.significant_digits = significant_digits;
  display.width = width;
  return CreateConverter(record, fid, unit, byte_offset, display);
}

std::unique_ptr<IConverter> CFunzioni::CreateConverter(const ChannelRecord& record, u32 fid, std::string_view unit,
                                                       u32 byte_offset, int significant_digits, int width) const {
  return CreateConverter(record, fid, GetUnitRow(fid, unit), byte_offset, significant_digits, width);
}

}  // namespace traguardo
