// SPDX-License-Identifier: MIT
// CFunzioni: the channels that are known by name, and the sub-channels of packets.
#include <algorithm>

#include "units/functions.h"
#include "units/sample_formats.h"

namespace traguardo {
namespace {

using NamedChannels = std::span<const NamedChannelRow>;

// In the order in which they are searched.
template <typename Predicate>
const NamedChannelRow* find_named_channel(Predicate fits) {
  for (const NamedChannels table :
       {catalogue::basic_channels(), catalogue::external_channels(), catalogue::derived_channels()}) {
    const auto row = std::find_if(table.begin(), table.end(), fits);
    if (row != table.end()) return &*row;
  }
  return nullptr;
}

// External channels that come from the GPS part (0xE0..) or the video part (0xB0..), without date, time, clocks, states
// and odometers.
bool is_walked(const NamedChannelRow& row) {
  const u32 source = static_cast<u32>(row.code) >> 8;
  const u32 field = static_cast<u32>(row.code) & 0xFF;
  if (source != 0xB0 && source != 0xE0) return false;
  return field < 7 || (field > 11 && !(field >= 17 && field <= 19));
}

struct FieldOfFid {
  u32 fid;
  i32 field;
};
constexpr FieldOfFid kGpsFields[] = {{0xB8A07, 1}, {0xB8A87, 2},  {0xB8107, 3},
                                     {0xB950B, 9}, {0xB940B, 15}, {0xB8008, 16}};
constexpr FieldOfFid kLapFields[] = {{0xB898B, 2}, {0xB8992, 0}};

i32 field_in(std::span<const FieldOfFid> fields, u32 fid) {
  for (const FieldOfFid& row : fields) {
    if (row.fid == fid) return row.field;
  }
  return -1;
}

void list_rows(NamedChannels table, std::vector<const NamedChannelRow*>* out) {
  for (const NamedChannelRow& row : table) out->push_back(&row);
}

// Times of a lap under the names that a display has for them.
struct LapTimeName {
  u32 fid;
  const char* short_name;
};
constexpr LapTimeName kLapTimes[] = {
    {fid::make(FID_PHI_TIME, FID_OBJ_LAP), "LapT"},
    {fid::make(FID_PHI_TIME, FID_OBJ_RUNNING_LAP), "RunT"},
    {fid::make(FID_PHI_TIME, FID_OBJ_RUNNING_SESSION), "RlST"},
    {fid::make(FID_PHI_TIME, FID_OBJ_PREDICTIVE), "PreT"},
    {fid::make(FID_PHI_TIME, FID_OBJ_PREDICTIVE_VS_BEST_DIFF), "PT+-"},
    {fid::make(FID_PHI_TIME, FID_OBJ_DIFF_BEST_LAP_OF_TODAY), "PT+-"},
    {fid::make(FID_PHI_TIME, FID_OBJ_DIFF_BEST_LAP_TO_SPECIFY), "PT+-"},
    {fid::make(FID_PHI_TIME, FID_OBJ_BEST_LAP), "best"},
};

std::string short_name_of(const CFunzioni& functions, u32 fid) {
  for (const LapTimeName& time : kLapTimes) {
    if (time.fid == fid) return time.short_name;
  }
  return functions.GetShortName(fid);
}

// A row without names is called after its function. Reserved places are left out.
void list_sub_channels(const CFunzioni& functions, PacketTable table, std::vector<SubChannel>* out) {
  for (const SubChannelRow& row : table) {
    if (row.fid == 0) continue;
    const bool has_name = *row.short_name != '\0';
    out->push_back({row.fid, row.byte_offset, row.format, has_name ? row.short_name : short_name_of(functions, row.fid),
                    has_name ? row.long_name : functions.GetLongName(row.fid)});
  }
}

// The times that a display works out of lap packets, where the packet doesn't carry them itself.
void list_lap_times(const CFunzioni& functions, std::vector<SubChannel>* out) {
  for (const LapTimeName& time : kLapTimes) {
    const bool is_in_packet =
        std::any_of(out->begin(), out->end(), [&time](const SubChannel& s) { return s.fid == time.fid; });
    if (!is_in_packet) {
      out->push_back({time.fid, 0, kSMPL_FMT_VOID, time.short_name, functions.GetLongName(time.fid)});
    }
  }
}

// A packet of which there is one kind.
void list_packet(const CFunzioni& functions, u32 object, std::vector<SubChannel>* out) {
  list_sub_channels(functions, packets::table_of_kind(object, packets::kAnyPosition, packets::kAnyFormat), out);
}

}  // namespace

u32 CFunzioni::FidFromKey(std::string_view key) const {
  if (const NamedChannelRow* row = NamedChannelFromKey(key)) return row->fid;
  for (const KeyRow& row : catalogue::keys()) {
    if (key == row.key) return row.fid;
  }
  return 0;
}

const NamedChannelRow* CFunzioni::NamedChannelFromKey(std::string_view key) const {
  return find_named_channel([key](const NamedChannelRow& row) { return key == row.key; });
}

const NamedChannelRow* CFunzioni::GetNamedChannel(u32 fid) const {
  return find_named_channel([fid](const NamedChannelRow& row) { return row.fid == fid; });
}

const NamedChannelRow* CFunzioni::FirstBasicChannel() {
  basic_cursor_ = 0;
  return NextBasicChannel();
}

const NamedChannelRow* CFunzioni::NextBasicChannel() {
  const NamedChannels table = catalogue::basic_channels();
  return basic_cursor_ < table.size() ? &table[basic_cursor_++] : nullptr;
}

const NamedChannelRow* CFunzioni::FirstExternalChannel() {
  external_cursor_ = 0;
  return NextExternalChannel();
}

const NamedChannelRow* CFunzioni::NextExternalChannel() {
  const NamedChannels table = catalogue::external_channels();
  while (external_cursor_ < table.size()) {
    const NamedChannelRow& row = table[external_cursor_++];
    if (is_walked(row)) return &row;
  }
  return nullptr;
}

i32 CFunzioni::GpsFieldOfFid(u32 fid) const {
  return field_in(kGpsFields, fid);
}
i32 CFunzioni::LapFieldOfFid(u32 fid) const {
  return field_in(kLapFields, fid);
}

void CFunzioni::ListBasicChannels(std::vector<const NamedChannelRow*>* out) const {
  list_rows(catalogue::basic_channels(), out);
}

void CFunzioni::ListDerivedChannels(std::vector<const NamedChannelRow*>* out) const {
  list_rows(catalogue::derived_channels(), out);
}

bool CFunzioni::GetChannelCodes(u32 fid, i32* code, double* divisor, std::string* unit) const {
  const NamedChannelRow* row = GetNamedChannel(fid);
  if (row == nullptr) return false;
  *code = row->code;
  *divisor = row->divisor;
  *unit = row->unit;
  return true;
}

void CFunzioni::ListLapSubChannels(u32 spec, std::vector<SubChannel>* out) const {
  std::vector<SubChannel> list;
  list_sub_channels(*this, packets::table_of_kind(FID_DETTAGLI_LAPTIME, spec, packets::kAnyFormat), &list);
  if (!list.empty()) list_lap_times(*this, &list);
  out->insert(out->end(), list.begin(), list.end());
}

void CFunzioni::ListGpsSubChannels(u32 spec, std::vector<SubChannel>* out) const {
  list_sub_channels(*this, packets::table_of_kind(FID_DETTAGLI_GPS, spec, packets::kAnyFormat), out);
}

void CFunzioni::ListKestrelSubChannels(std::vector<SubChannel>* out) const {
  list_packet(*this, FID_DETTAGLI_MISURE_KESTREL_BASE, out);
}

void CFunzioni::ListTotalOdometerSubChannels(std::vector<SubChannel>* out) const {
  list_packet(*this, FID_DETTAGLI_TOTAL_ODOMETER, out);
}

void CFunzioni::ListResettableOdometerSubChannels(std::vector<SubChannel>* out) const {
  list_packet(*this, FID_DETTAGLI_RESETTABLE_ODOMETER, out);
}

void CFunzioni::ListMyLapsSubChannels(std::vector<SubChannel>* out) const {
  for (const i32 format : {kSMPL_FMT_MYLAPS_LAPTIME, kSMPL_FMT_MYLAPS_GAP, kSMPL_FMT_MYLAPS_PERSONAL}) {
    list_sub_channels(*this, packets::table_of_kind(FID_DETTAGLI_MYLAPS_LAPTIME, 0, format), out);
  }
}

void CFunzioni::ListBestTimeSubChannels(std::vector<SubChannel>* out) const {
  list_packet(*this, FID_DETTAGLI_BEST_TIME, out);
}

void CFunzioni::ListRollTimeSubChannels(std::vector<SubChannel>* out) const {
  list_packet(*this, FID_DETTAGLI_ROLL_TIME, out);
}

}  // namespace traguardo
