// SPDX-License-Identifier: MIT
// The store behind a trace: records as they came, good and bad, and what is worked out from the good ones on demand.
#pragma once

#include <memory>
#include <vector>

#include "gps/gps_grid.h"
#include "gps/gps_record.h"
#include "gps/gps_statistics.h"
#include "gps/gps_trace.h"

namespace traguardo {

// Filled while a file is parsed, then only read: records that come in after channels or a grid have been asked for
// don't reach these.
class CGPSSamples : public IRkGpsTrace {
 public:
  void GetGoodSamplePointers(std::vector<const SGpsRecord*>& samples) const override;
  void GetChannels(u64 step, u64 start, u64 end, std::vector<SGpsChannelOut>& channels,
                   std::vector<u64>& times) override;
  double GetQuality() const override;
  const Ecef& GetMean() const override { return mean_; }
  const GpsCentre& GetCentre() override;
  void SetReference(const GpsCentre& reference) override { reference_ = reference; }
  bool GetFirstFixTime(std::tm& when) const override;
  void GetGoodSamples(platform::HeapHandle heap, SGpsRecord*& buffer, u32& count) const override;
  GpsGrid grid(u64 step, u64 start, u64 end) override;

  // time_us: the highest time of the reader, or the time of the frame that holds the record. True if the record was
  // stored, also where it thereby cleared the trace; false for a wrong size, a copy of the record before, or a clock of
  // more than a second ahead of time_us. `file_offset`: where the statistics say that it stood. REQUIRES: `size`
  // readable bytes.
  bool AddRecord(u64 time_us, const u8* bytes, u32 size, u64 file_offset);
  // The same without the test of the clock.
  bool AddRecordNoClock(const SGpsRecord& record);

  bool HasSamples() const { return !records_.empty(); }
  // Logger times in microseconds of the last and the first record; 0 and all ones without records.
  u64 GetLastTime() const;
  u64 GetFirstTime() const;
  // Of the last record; 0 without records.
  void GetLastGpsTime(i16& week, u32& time_of_week_ms) const;
  // Moves the logger times by (to - from) microseconds, in whole milliseconds.
  void ShiftTime(u64 from, u64 to);
  // Gives the records a GPS clock that goes on from week and time of week, which are those at the logger time
  // `reference`.
  void RiallineaGps(u32 reference_ms, i16 week, u32 time_of_week_ms);

  const std::vector<SGpsRecord>& records() const { return records_; }
  const SStatGPS& statistics() const { return statistics_; }
  // Of the mean position of GetMean.
  const Geodetic& geodetic_mean() const { return geodetic_mean_; }

 private:
  void Store(const SGpsRecord& record);
  const std::shared_ptr<const GpsRows>& Rows();
  void find_means();
  void find_centre();

  SGpsRecord last_record_;  // the one passed last, stored or not
  std::vector<SGpsRecord> records_;
  u32 good_count_ = 0;
  Ecef mean_;
  Geodetic geodetic_mean_;
  GpsCentre centre_;
  GpsCentre reference_;
  std::shared_ptr<const GpsRows> rows_;  // null until asked for, and while there is no good record
  SStatGPS statistics_;
};

// The trace that readers make.
class CGPSSamplesLibXml2 : public CGPSSamples {
 public:
  ~CGPSSamplesLibXml2() override = default;
};

}  // namespace traguardo
