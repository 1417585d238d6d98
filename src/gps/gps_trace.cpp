// SPDX-License-Identifier: MIT
#include "gps/gps_trace.h"

namespace traguardo {

u32 gps_channel_index(std::string_view name) {
  u32 index = 0;
  while (index < kGpsChannelCount && name != kGpsChannels[index].name) ++index;
  return index;
}

const char* gps_channel_name(u32 index) {
  return index < kGpsChannelCount ? kGpsChannels[index].name : "";
}

}  // namespace traguardo
