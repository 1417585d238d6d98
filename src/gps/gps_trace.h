// SPDX-License-Identifier: MIT
// gps/ holds what a logger's GPS receivers said: traces of records, their good ones as channels on an even grid and as
// they are. It includes support, geodesy and units; readers (model, logger, legacy) fill traces, the
// exported functions (api) ask them.
#pragma once

#include <array>
#include <ctime>
#include <string>
#include <string_view>
#include <vector>

#include "geodesy/geodesy.h"
#include "gps/gps_record.h"
#include "support/bytes.h"
#include "support/platform/platform.h"

namespace traguardo {

class GpsGrid;

// --- The derived channels ------------------------------------------------------------------------------------------

inline constexpr u32 kGpsChannelCount = 15;

// An index into the table is the channel's identity.
enum GpsChannel : u32 {
  kGpsSpeed,
  kGpsNsat,
  kGpsLatAcc,
  kGpsLonAcc,
  kGpsSlope,
  kGpsHeading,
  kGpsGyro,
  kGpsAltitude,
  kGpsPosAccuracy,
  kGpsSpdAccuracy,
  kGpsLatitude,
  kGpsLongitude,
  kGpsRadius,
  kGpsEast,
  kGpsNorth,
};

struct GpsChannelDefinition {
  const char* name;
  const char* unit;
  u32 function_code;
  u32 flags;
};

extern const std::array<GpsChannelDefinition, kGpsChannelCount> kGpsChannels;

// The index of the channel of that name; kGpsChannelCount for an unknown one.
u32 gps_channel_index(std::string_view name);
// Empty for an index outside the table; never null.
const char* gps_channel_name(u32 index);

// One derived channel with a value for each point of a grid.
struct SGpsChannelOut {
  std::string name;
  std::string unit;
  u32 function_code = 0;
  u32 flags = 0;
  // Over the values that are numbers; both 0 where there is none.
  float smallest = 0.0F;
  float largest = 0.0F;
  std::vector<float> values;
};

// --- One trace -----------------------------------------------------------------------------------------------------

// A place, earth-centred in metres and geodetic. All zero stands for none.
struct GpsCentre {
  double x_m = 0.0;
  double y_m = 0.0;
  double z_m = 0.0;
  double latitude_deg = 0.0;
  double longitude_deg = 0.0;
  double altitude_m = 0.0;
};

class IRkGpsTrace {
 public:
  virtual ~IRkGpsTrace() = default;

  // Appends a pointer to each good record, in order. They hold until a record is added or the trace goes.
  virtual void GetGoodSamplePointers(std::vector<const SGpsRecord*>& samples) const = 0;
  // The derived channels at `start`, `start` + `step`, ... up to the last good record, and from there on until there
  // are `end` / `step` values; all in microseconds. channels: empty, or kGpsChannelCount entries, else nothing happens.
  // Memory grows with the time that the grid spans: use GetGrid where a file decides on it.
  // REQUIRES: step is not 0.
  virtual void GetChannels(u64 step, u64 start, u64 end, std::vector<SGpsChannelOut>& channels,
                           std::vector<u64>& times) = 0;
  // Mean of the receiver's position accuracy over the good records, in cm; 0.0 without any.
  virtual double GetQuality() const = 0;
  // Mean position of the good records in metres; zero until channels or a grid have been asked for.
  virtual const Ecef& GetMean() const = 0;
  // Middle of the box around the good records, worked out at the first call; zero without good records.
  virtual const GpsCentre& GetCentre() = 0;
  // The place whose axes the local positions and velocities use. Without effect once channels or a grid have been asked
  // for; a latitude or longitude of exactly 0 counts as none, and the centre is taken instead.
  virtual void SetReference(const GpsCentre& reference) = 0;
  // Date and time of the first good record, in GPS time (no leap seconds); false without a good record. A time before
  // 1970, which the home platform can't convert, leaves all fields zero.
  virtual bool GetFirstFixTime(std::tm& when) const = 0;
  // Appends the good records to a block of `heap`, which it replaces by a longer one; buffer may be null with a count
  // of 0. Without memory both stay as they are.
  virtual void GetGoodSamples(platform::HeapHandle heap, SGpsRecord*& buffer, u32& count) const = 0;

  // The same grid as that of GetChannels, with values worked out when they are asked for. It outlives the trace.
  virtual GpsGrid grid(u64 step, u64 start, u64 end) = 0;
};

}  // namespace traguardo
