// SPDX-License-Identifier: MIT
#include "units/packet_tables.h"

#include "units/fid.h"
#include "units/sample_formats.h"

namespace traguardo::packets {
namespace {

PacketTable lap_table(u32 spec) {
  switch (spec) {
    case FID_SPEC_LAPTIME_ZEP2G:
    case FID_SPEC_LAPTIME_ZEP2Gv2:
      return lap_2g();
    case FID_SPEC_LAPTIME_ZEP2Gv3:
      return lap_2g_v3();
    case FID_SPEC_LAPTIME_ZEP1G:
      return lap_1g();
    default:
      return {};
  }
}

PacketTable gps_table(u32 spec) {
  if (spec == FID_SPEC_GPS_ZEPNAVSOL) return gps_zep();
  return spec == FID_SPEC_GPS_UBXNAVSOL ? gps_ubx() : PacketTable{};
}

PacketTable timing_table(i32 format) {
  switch (format) {
    case kSMPL_FMT_MYLAPS_GAP:
      return mylaps_gap();
    case kSMPL_FMT_MYLAPS_PERSONAL:
      return mylaps_personal();
    default:
      return mylaps_lap_time();
  }
}

}  // namespace

PacketTable table_of(u32 packet_fid, i32 format) {
  if (fid::quantity(packet_fid) != FID_PHI_PACKAGE) return {};
  switch (fid::object(packet_fid)) {
    case FID_DETTAGLI_LAPTIME:
      return lap_table(fid::position(packet_fid));
    case FID_DETTAGLI_GPS:
      return gps_table(fid::position(packet_fid));
    case FID_DETTAGLI_MISURE_KESTREL_BASE:
      return kestrel_measures();
    case FID_DETTAGLI_TOTAL_ODOMETER:
      return total_odometer();
    case FID_DETTAGLI_RESETTABLE_ODOMETER:
      return resettable_odometer();
    case FID_DETTAGLI_MYLAPS_LAPTIME:
      return timing_table(format);
    case FID_DETTAGLI_BEST_TIME:
      return best_time();
    case FID_DETTAGLI_ROLL_TIME:
      return roll_time();
    default:
      return {};
  }
}

}  // namespace traguardo::packets
