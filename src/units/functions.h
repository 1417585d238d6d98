// SPDX-License-Identifier: MIT
// The taxonomy at work: names, units and conversions of a function word, and the converter of a channel.
#pragma once

#include <map>
#include <memory>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "units/catalogue.h"
#include "units/channel_record.h"
#include "units/fid.h"
#include "units/i_converter.h"
#include "units/packet_tables.h"
#include "units/unit_of_measure.h"
#include "units/value_text.h"

namespace traguardo {

// What FindChannelByFid is told of the device whose channels it searches.
struct SDeviceDescription {
  bool is_known = false;
  std::vector<u32> numbers;  // Serial numbers.
};

// A sub-channel of a packet, or a time that a display works out of lap packets.
struct SubChannel {
  u32 fid = 0;
  u32 byte_offset = 0;
  i32 format = 0;  // kSMPL_FMT_VOID: worked out of more than one packet, in no place of a sample.
  std::string short_name;
  std::string long_name;
};

// The key names of each enumeration of the function word, in table order.
struct KeyLists {
  std::vector<std::string> physical_quantities, objects, details, packet_specs, positions, in_out, left_right,
      front_rear, up_down;
};

// Nothing here reports an error: an unknown function has empty names, an empty unit and the identity as its conversion.
class IFunzioni {
 public:
  virtual ~IFunzioni() = default;

  // The first record of the channel list that matches the pattern `fid`; null if none does. A record with a device
  // serial counts only if the device is known and lists that number.
  virtual const ChannelRecord* FindChannelByFid(u32 fid) const = 0;
  // At most 31 characters.
  virtual std::string GetShortName(u32 fid) const = 0;
  // with_undefined: shows also the parts that the word leaves undefined.
  virtual std::string GetLongName(u32 fid, bool with_undefined) const = 0;
  // The word of the first row of the main table with the same quantity and the same object, or object 0; 0 if none.
  virtual u32 GetCatalogueFid(u32 fid) const = 0;
  // The first unit of the function's row; empty without a row.
  virtual std::string GetUnitName(u32 fid) const = 0;
  // 0 for an unknown key.
  virtual u32 FidFromKey(std::string_view key) const = 0;
  // Null for an unknown key.
  virtual const NamedChannelRow* NamedChannelFromKey(std::string_view key) const = 0;
  // The row of the named tables with exactly this word, or null.
  virtual const NamedChannelRow* GetNamedChannel(u32 fid) const = 0;
  // Walks over the tables; null at the end. The external walk leaves out what a display can't ask for.
  virtual const NamedChannelRow* FirstBasicChannel() = 0;
  virtual const NamedChannelRow* NextBasicChannel() = 0;
  virtual const NamedChannelRow* FirstExternalChannel() = 0;
  virtual const NamedChannelRow* NextExternalChannel() = 0;
  // Number of the GPS field or lap field that a word stands for; -1 for other words.
  virtual i32 GpsFieldOfFid(u32 fid) const = 0;
  virtual i32 LapFieldOfFid(u32 fid) const = 0;
  virtual void ListBasicChannels(std::vector<const NamedChannelRow*>* out) const = 0;
  virtual void ListDerivedChannels(std::vector<const NamedChannelRow*>* out) const = 0;
  // The unit that stands for this name, or the function's first one if there is no such name.
  virtual std::string CanonicalUnit(u32 fid, std::string_view unit) const = 0;
  // `decimals` within the unit's limits, else the unit's default.
  virtual i32 ClampDecimals(u32 fid, std::string_view unit, i32 decimals) const = 0;
  virtual i32 DefaultDecimals(u32 fid, std::string_view unit) const = 0;
  virtual i32 MostDecimals(u32 fid, std::string_view unit) const = 0;
  virtual i32 LeastDecimals(u32 fid, std::string_view unit) const = 0;
  // The value of a channel at rest.
  virtual float RestValue(u32 fid) const = 0;
  // For a picker of units: the units of a row without their aliases; all names of a row; the words that a row and its
  // positions stand for; its positions.
  virtual void ListUnits(u32 fid, std::vector<std::string>* out) const = 0;
  virtual void fill_unit_set(u32 fid, std::set<std::string>* out) const = 0;
  virtual void fill_fid_set(u32 fid, std::set<u32>* out) const = 0;
  virtual void ListPositions(u32 fid, std::vector<PositionRow>* out) const = 0;
  // Every unit set that holds the unit.
  virtual void FindUnitSets(std::string_view unit, std::vector<UnitSet>* out) const = 0;
  // The row of a unit by its name or an alias of it; the function's first unit if it isn't in the set; the empty unit
  // if the function has no row.
  virtual UnitOfMeasure GetUnitRow(u32 fid, std::string_view unit) const = 0;
  virtual UnitConversion GetConversion(u32 fid, std::string_view from_unit, std::string_view to_unit) const = 0;
  // From the named tables; false, with nothing changed, for a word that isn't in them.
  virtual bool GetChannelCodes(u32 fid, i32* code, double* divisor, std::string* unit) const = 0;
  // Sub-channels of each kind of packet. `spec` is a FID_SPEC_* value.
  virtual void ListLapSubChannels(u32 spec, std::vector<SubChannel>* out) const = 0;
  virtual void ListGpsSubChannels(u32 spec, std::vector<SubChannel>* out) const = 0;
  virtual void ListKestrelSubChannels(std::vector<SubChannel>* out) const = 0;
  virtual void ListTotalOdometerSubChannels(std::vector<SubChannel>* out) const = 0;
  virtual void ListResettableOdometerSubChannels(std::vector<SubChannel>* out) const = 0;
  virtual void ListMyLapsSubChannels(std::vector<SubChannel>* out) const = 0;
  virtual void ListBestTimeSubChannels(std::vector<SubChannel>* out) const = 0;
  virtual void ListRollTimeSubChannels(std::vector<SubChannel>* out) const = 0;
  // The long name or the key of a value; empty beyond the family.
  virtual std::string PhysicalName(u32 value) const = 0;
  virtual std::string ObjectName(u32 value) const = 0;
  virtual std::string PositionName(u32 value) const = 0;
  virtual std::string PhysicalKey(u32 value) const = 0;
  virtual std::string ObjectKey(u32 value) const = 0;
  // From each physical quantity to its long name.
  virtual void FillPhysicalMap(std::map<u32, std::string>* out) const = 0;
  // The value of a key; 0 for an unknown one.
  virtual u32 PhysicalFromKey(std::string_view key) const = 0;
  virtual u32 ObjectFromKey(std::string_view key) const = 0;
  virtual u32 PositionFromKey(std::string_view key) const = 0;
  virtual u32 FrontRearFromKey(std::string_view key) const = 0;
  // The converter of a channel for a function and its unit (GetUnitRow). Ask its IsValido() before use.
  // byte_offset: where the sample begins in what the converter will be given.
  // significant_digits: digits that a number may take. width: characters of the field for times.
  virtual std::unique_ptr<IConverter> CreateConverter(const ChannelRecord& record, u32 fid, const UnitOfMeasure& unit,
                                                      u32 byte_offset, int significant_digits, int width) const = 0;
  virtual void ListKeys(KeyLists* out) const = 0;
};

// The tables are constant and shared. The only state of an object are the cursors of its two walks.
class CFunzioni final : public IFunzioni {
 public:
  CFunzioni() = default;
  // `device` (may be null) and `channels` are borrowed and must outlive the object.
  CFunzioni(const SDeviceDescription* device, std::span<const ChannelRecord> channels)
      : device_(device), channels_(channels) {}

  const ChannelRecord* FindChannelByFid(u32 fid) const override;
  std::string GetShortName(u32 fid) const override;
  std::string GetLongName(u32 fid, bool with_undefined = false) const override;
  u32 GetCatalogueFid(u32 fid) const override;
  std::string GetUnitName(u32 fid) const override;
  u32 FidFromKey(std::string_view key) const override;
  const NamedChannelRow* NamedChannelFromKey(std::string_view key) const override;
  const NamedChannelRow* GetNamedChannel(u32 fid) const override;
  const NamedChannelRow* FirstBasicChannel() override;
  const NamedChannelRow* NextBasicChannel() override;
  const NamedChannelRow* FirstExternalChannel() override;
  const NamedChannelRow* NextExternalChannel() override;
  i32 GpsFieldOfFid(u32 fid) const override;
  i32 LapFieldOfFid(u32 fid) const override;
  void ListBasicChannels(std::vector<const NamedChannelRow*>* out) const override;
  void ListDerivedChannels(std::vector<const NamedChannelRow*>* out) const override;
  std::string CanonicalUnit(u32 fid, std::string_view unit) const override;
  i32 ClampDecimals(u32 fid, std::string_view unit, i32 decimals) const override;
  i32 DefaultDecimals(u32 fid, std::string_view unit) const override;
  i32 MostDecimals(u32 fid, std::string_view unit) const override;
  i32 LeastDecimals(u32 fid, std::string_view unit) const override;
  float RestValue(u32 fid) const override;
  void ListUnits(u32 fid, std::vector<std::string>* out) const override;
  void fill_unit_set(u32 fid, std::set<std::string>* out) const override;
  void fill_fid_set(u32 fid, std::set<u32>* out) const override;
  void ListPositions(u32 fid, std::vector<PositionRow>* out) const override;
  void FindUnitSets(std::string_view unit, std::vector<UnitSet>* out) const override;
  UnitOfMeasure GetUnitRow(u32 fid, std::string_view unit) const override;
  UnitConversion GetConversion(u32 fid, std::string_view from_unit, std::string_view to_unit) const override;
  bool GetChannelCodes(u32 fid, i32* code, double* divisor, std::string* unit) const override;
  void ListLapSubChannels(u32 spec, std::vector<SubChannel>* out) const override;
  void ListGpsSubChannels(u32 spec, std::vector<SubChannel>* out) const override;
  void ListKestrelSubChannels(std::vector<SubChannel>* out) const override;
  void ListTotalOdometerSubChannels(std::vector<SubChannel>* out) const override;
  void ListResettableOdometerSubChannels(std::vector<SubChannel>* out) const override;
  void ListMyLapsSubChannels(std::vector<SubChannel>* out) const override;
  void ListBestTimeSubChannels(std::vector<SubChannel>* out) const override;
  void ListRollTimeSubChannels(std::vector<SubChannel>* out) const override;
  std::string PhysicalName(u32 value) const override;
  std::string ObjectName(u32 value) const override;
  std::string PositionName(u32 value) const override;
  std::string PhysicalKey(u32 value) const override;
  std::string ObjectKey(u32 value) const override;
  void FillPhysicalMap(std::map<u32, std::string>* out) const override;
  u32 PhysicalFromKey(std::string_view key) const override;
  u32 ObjectFromKey(std::string_view key) const override;
  u32 PositionFromKey(std::string_view key) const override;
  u32 FrontRearFromKey(std::string_view key) const override;
  std::unique_ptr<IConverter> CreateConverter(const ChannelRecord& record, u32 fid, const UnitOfMeasure& unit,
                                              u32 byte_offset, int significant_digits, int width) const override;
  void ListKeys(KeyLists* out) const override;

  // As above, with every display setting in the caller's hand, and by the name of a unit.
  std::unique_ptr<IConverter> CreateConverter(const ChannelRecord& record, u32 fid, const UnitOfMeasure& unit,
                                              u32 byte_offset, const DisplaySettings& display) const;
  std::unique_ptr<IConverter> CreateConverter(const ChannelRecord& record, u32 fid, std::string_view unit,
                                              u32 byte_offset, int significant_digits, int width) const;

  // The row of a function in the main table: the first with its quantity and object (or object 0) that also has its
  // position (or position 0), else the first that agrees in quantity and object. Null if none does.
  static const FunctionRow* find_row(u32 fid);

 private:
  const SDeviceDescription* device_ = nullptr;
  std::span<const ChannelRecord> channels_;
  std::size_t basic_cursor_ = 0;
  std::size_t external_cursor_ = 0;
};

}  // namespace traguardo
