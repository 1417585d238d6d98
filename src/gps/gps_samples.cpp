// SPDX-License-Identifier: MIT
#include "gps/gps_samples.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <limits>

#include "geodesy/geodesy.h"
#include "gps/derived_channels.h"
#include "support/event_log.h"

namespace traguardo {
namespace {

constexpr u64 kMicrosecondsPerMillisecond = 1000;
constexpr u64 kClockLeadMs = 1000;           // how far a record may run ahead of the reader's clock
constexpr std::size_t kSettledRecords = 30;  // from here on a clock that runs back no longer clears the trace
constexpr u32 kWeekMs = 604800000;
constexpr i64 kGpsEpoch = 315964800;  // January 6, 1980, in seconds since 1970

i64 floor_divided(i64 value, i64 divisor) {
  const i64 quotient = value / divisor;
  return value % divisor < 0 ? quotient - 1 : quotient;
}

// Seconds since 1970 on the receiver's own clock, which knows no leap seconds.
i64 seconds_since_1970(const SGpsRecord& record) {
  const i64 ms = i64{record.week()} * i64{kWeekMs} + i64{record.time_of_week_ms()};
  const i64 seconds = floor_divided(ms, 1000);
  const i64 ns = (ms - seconds * 1000) * 1000000 + i64{record.fractional_ns()};
  return kGpsEpoch + seconds + floor_divided(ns, 1000000000);
}

std::tm broken_down(i64 seconds) {
  using std::chrono::days;
  using std::chrono::January;
  using std::chrono::sys_days;
  constexpr i64 kSecondsPerDay = 86400;
  const sys_days day{days{seconds / kSecondsPerDay}};
  const int second_of_day = static_cast<int>(seconds % kSecondsPerDay);
  const std::chrono::year_month_day date{day};
  std::tm when{};
  when.tm_year = static_cast<int>(date.year()) - 1900;
  when.tm_mon = static_cast<int>(static_cast<unsigned>(date.month())) - 1;
  when.tm_mday = static_cast<int>(static_cast<unsigned>(date.day()));
  when.tm_hour = second_of_day / 3600;
  when.tm_min = second_of_day / 60 % 60;
  when.tm_sec = second_of_day % 60;
  when.tm_wday = static_cast<int>(std::chrono::weekday{day}.c_encoding());
  when.tm_yday = static_cast<int>((day - sys_days{date.year() / January / 1}).count());
  return when;
}

// Middle of the smallest and the largest of a coordinate in cm, in metres.
struct Extent {
  i32 smallest = std::numeric_limits<i32>::max();
  i32 largest = std::numeric_limits<i32>::min();

  void take(i32 cm) {
    smallest = std::min(smallest, cm);
    largest = std::max(largest, cm);
  }
  // A wide sum: damaged positions may lie so far out that the two don't fit together into 32 bits.
  double middle_m() const { return static_cast<double>(i64{smallest} + i64{largest}) * 0.005; }
};

}  // namespace

// --- Into the store ------------------------------------------------------------------------------------------------

bool CGPSSamples::AddRecord(u64 time_us, const u8* bytes, u32 size, u64 file_offset) {
  if (size != SGpsRecord::kSize) {
    statistics_.wrong_sizes.push_back(static_cast<u32>(file_offset));
    return false;
  }
  const SGpsRecord record = SGpsRecord::from_bytes(bytes);
  if (record == last_record_) return false;
  if (record.logger_time_ms() > time_us / kMicrosecondsPerMillisecond + kClockLeadMs) {
    const float highest_time_ms = static_cast<float>(static_cast<double>(time_us) / 1000.0);
    statistics_.clock_errors.push_back({record.logger_time_ms(), double{highest_time_ms}, file_offset});
    last_record_ = record;
    return false;
  }
  Store(record);
  return true;
}

bool CGPSSamples::AddRecordNoClock(const SGpsRecord& record) {
  if (record == last_record_) return false;
  Store(record);
  return true;
}

void CGPSSamples::Store(const SGpsRecord& record) {
  records_.push_back(record);
  if (record.is_good()) {
    // A logger's clock settles soon after the start. What came in before, this record with it, is on the old clock.
    if (record.logger_time_ms() < last_record_.logger_time_ms() && records_.size() < kSettledRecords) {
      records_.clear();
      ++statistics_.resets;
    }
    ++statistics_.good_records;
  } else {
    ++statistics_.bad_fixes[record.fix_type()];
  }
  last_record_ = record;
}

// --- Times ---------------------------------------------------------------------------------------------------------

u64 CGPSSamples::GetLastTime() const {
  return records_.empty() ? 0 : records_.back().logger_time_ms() * kMicrosecondsPerMillisecond;
}

u64 CGPSSamples::GetFirstTime() const {
  if (records_.empty()) return std::numeric_limits<u64>::max();
  return records_.front().logger_time_ms() * kMicrosecondsPerMillisecond;
}

void CGPSSamples::GetLastGpsTime(i16& week, u32& time_of_week_ms) const {
  week = records_.empty() ? i16{0} : records_.back().week();
  time_of_week_ms = records_.empty() ? 0 : records_.back().time_of_week_ms();
}

void CGPSSamples::ShiftTime(u64 from, u64 to) {
  const i64 shift_ms = static_cast<i64>(to - from) / 1000;
  for (SGpsRecord& record : records_) {
    record.set_logger_time_ms(record.logger_time_ms() + static_cast<u32>(shift_ms));
  }
}

void CGPSSamples::RiallineaGps(u32 reference_ms, i16 week, u32 time_of_week_ms) {
  for (SGpsRecord& record : records_) {
    u32 time_of_week = record.logger_time_ms() - reference_ms + time_of_week_ms;
    i32 record_week = week;
    while (time_of_week > kWeekMs) {
      time_of_week -= kWeekMs;
      ++record_week;
    }
    record.set_week(static_cast<i16>(record_week));
    record.set_time_of_week_ms(time_of_week);
  }
}

bool CGPSSamples::GetFirstFixTime(std::tm& when) const {
  const auto first = std::find_if(records_.begin(), records_.end(), [](const SGpsRecord& r) { return r.is_good(); });
  if (first == records_.end()) return false;
  const i64 seconds = seconds_since_1970(*first);
  when = seconds < 0 ? std::tm{} : broken_down(seconds);
  return true;
}

// --- Out of the store ----------------------------------------------------------------------------------------------

void CGPSSamples::GetGoodSamplePointers(std::vector<const SGpsRecord*>& samples) const {
  for (const SGpsRecord& record : records_) {
    if (record.is_good()) samples.push_back(&record);
  }
}

void CGPSSamples::GetGoodSamples(platform::HeapHandle heap, SGpsRecord*& buffer, u32& count) const {
  std::vector<const SGpsRecord*> good;
  GetGoodSamplePointers(good);
  const u64 total = u64{count} + good.size();
  void* block = nullptr;
  if (total <= std::numeric_limits<u32>::max()) {
    block = platform::heap_allocate(heap, static_cast<std::size_t>(total * SGpsRecord::kSize));
  }
  if (block == nullptr) {
    TRAGUARDO_LOG("CGPSSamples::GetGoodSamples", "%s [%d] ERROR = Can't alloc\n");
    return;
  }
  u8* out = static_cast<u8*>(block);
  if (buffer != nullptr) {
    std::memcpy(out, buffer, std::size_t{count} * SGpsRecord::kSize);
    platform::heap_free(heap, buffer);
  }
  out += std::size_t{count} * SGpsRecord::kSize;
  for (const SGpsRecord* record : good) {
    std::memcpy(out, record->bytes.data(), SGpsRecord::kSize);
    out += SGpsRecord::kSize;
  }
  buffer = static_cast<SGpsRecord*>(block);
  count = static_cast<u32>(total);
}

double CGPSSamples::GetQuality() const {
  double sum_cm = 0.0;
  u64 count = 0;
  for (const SGpsRecord& record : records_) {
    if (!record.is_good()) continue;
    sum_cm += record.position_accuracy_cm();
    ++count;
  }
  return count == 0 ? 0.0 : sum_cm / static_cast<double>(count);
}

const GpsCentre& CGPSSamples::GetCentre() {
  const bool all_zero = centre_.x_m == 0.0 && centre_.y_m == 0.0 && centre_.z_m == 0.0 && centre_.latitude_deg == 0.0 &&
                        centre_.longitude_deg == 0.0 && centre_.altitude_m == 0.0;
  if (all_zero) find_centre();
  return centre_;
}

void CGPSSamples::find_centre() {
  Extent x;
  Extent y;
  Extent z;
  bool has_good = false;
  for (const SGpsRecord& record : records_) {
    if (!record.is_good()) continue;
    x.take(record.ecef_x_cm());
    y.take(record.ecef_y_cm());
    z.take(record.ecef_z_cm());
    has_good = true;
  }
  if (!has_good) return;
  const Ecef middle{x.middle_m(), y.middle_m(), z.middle_m()};
  const Geodetic geodetic = geodetic_by_iteration(middle);
  centre_ = {middle.x, middle.y, middle.z, geodetic.latitude_deg, geodetic.longitude_deg, geodetic.height_m};
}

void CGPSSamples::find_means() {
  good_count_ = 0;
  Ecef sum;
  for (const SGpsRecord& record : records_) {
    if (!record.is_good()) continue;
    const Ecef position = record.position_m();
    sum.x += position.x;
    sum.y += position.y;
    sum.z += position.z;
    ++good_count_;
  }
  if (good_count_ == 0) return;
  mean_ = {sum.x / good_count_, sum.y / good_count_, sum.z / good_count_};
  geodetic_mean_ = geodetic_in_one_step(mean_);
}

// --- Derived channels ----------------------------------------------------------------------------------------------

const std::shared_ptr<const GpsRows>& CGPSSamples::Rows() {
  if (rows_ != nullptr) return rows_;
  find_means();
  if (good_count_ == 0) return rows_;
  if (centre_.latitude_deg == 0.0 || centre_.longitude_deg == 0.0) find_centre();
  if (reference_.latitude_deg == 0.0 || reference_.longitude_deg == 0.0) reference_ = centre_;
  rows_ = std::make_shared<const GpsRows>(build_gps_rows(records_, reference_));
  return rows_;
}

void CGPSSamples::GetChannels(u64 step, u64 start, u64 end, std::vector<SGpsChannelOut>& channels,
                              std::vector<u64>& times) {
  if (!prepare_gps_channels(channels)) return;
  times.clear();
  const std::shared_ptr<const GpsRows>& rows = Rows();
  if (rows != nullptr) fill_gps_channels(*rows, step, start, end, channels, times);
}

GpsGrid CGPSSamples::grid(u64 step, u64 start, u64 end) {
  return {Rows(), step, start, end};
}

}  // namespace traguardo
