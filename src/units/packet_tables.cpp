// SPDX-License-Identifier: MIT
#include "units/packet_tables.h"

#include "units/fid.h"

namespace traguardo::packets {

PacketTable table_of(u32 packet_fid, i32 format) {
  if (fid::quantity(packet_fid) != FID_PHI_PACKAGE) return {};
  return table_of_kind(fid::object(packet_fid), fid::position(packet_fid), format);
}

PacketTable table_of_kind(u32 object, u32 position, i32 format) {
  for (const PacketRow& row : all()) {
    const bool fits = row.object == object && (row.position == kAnyPosition || row.position == position) &&
                      (row.format == kAnyFormat || row.format == format);
    if (fits) return row.fields;
  }
  return {};
}

}  // namespace traguardo::packets
