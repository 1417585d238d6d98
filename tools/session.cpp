#include "session.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <system_error>
#include <utility>

#include "api/exports.h"
#include "failure.h"
#include "input_file.h"
#include "progress.h"
#include "text.h"

namespace traguardo::tool {

namespace {

// Where the reader of the older family seeks the GPS trace of a session; empty for other files.
std::string trace_file_of(const std::string& path) {
  constexpr std::size_t kExtensionLength = 3;
  std::string ending = path.substr(path.size() - std::min(path.size(), kExtensionLength + 1));
  for (char& c : ending) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return ending == ".wmp" ? path.substr(0, path.size() - kExtensionLength) + "jts" : std::string();
}

std::string reason_not_opened(const std::string& path, int result) {
  const std::string trace_file = trace_file_of(path);
  std::error_code problem;
  if (!trace_file.empty() && !std::filesystem::exists(trace_file, problem)) {
    return fmt::format("its trace file is missing, which was sought as {}", trace_file);
  }
  switch (result) {
    case 0:
      return "no session can be read from it, or its folder can't be written to";
    case -2:
      return "not a kind of session file that can be read (.qlt, .qlc, .wmp)";
    default:
      return fmt::format("the library gave up with code {}", result);
  }
}

std::string owned(const char* text) {
  return text == nullptr ? std::string() : std::string(text);
}

std::size_t size_of(int count) {
  return count > 0 ? static_cast<std::size_t>(count) : 0;
}

int count_in(int handle, const Channel& channel, std::optional<int> lap) {
  switch (channel.kind) {
    case ChannelKind::logged:
      return lap ? get_lap_channel_samples_count(handle, *lap, channel.index)
                 : get_channel_samples_count(handle, channel.index);
    case ChannelKind::gps:
      return lap ? get_lap_GPS_channel_samples_count(handle, *lap, channel.index)
                 : get_GPS_channel_samples_count(handle, channel.index);
    case ChannelKind::gps_raw:
      return lap ? get_lap_GPS_raw_channel_samples_count(handle, *lap, channel.index)
                 : get_GPS_raw_channel_samples_count(handle, channel.index);
  }
  return 0;
}

int fill_from(int handle, const Channel& channel, std::optional<int> lap, double* times, double* values, int count) {
  switch (channel.kind) {
    case ChannelKind::logged:
      return lap ? get_lap_channel_samples(handle, *lap, channel.index, times, values, count)
                 : get_channel_samples(handle, channel.index, times, values, count);
    case ChannelKind::gps:
      return lap ? get_lap_GPS_channel_samples(handle, *lap, channel.index, times, values, count)
                 : get_GPS_channel_samples(handle, channel.index, times, values, count);
    case ChannelKind::gps_raw:
      return lap ? get_lap_GPS_raw_channel_samples(handle, *lap, channel.index, times, values, count)
                 : get_GPS_raw_channel_samples(handle, channel.index, times, values, count);
  }
  return 0;
}

const Channel* find_by_name(const std::vector<Channel>& channels, const std::string& name) {
  // What a terminal shows can be typed, also where the file has other bytes.
  const auto found = std::find_if(channels.begin(), channels.end(), [&name](const Channel& channel) {
    return channel.name == name || to_utf8(channel.name) == name;
  });
  return found == channels.end() ? nullptr : &*found;
}

}  // namespace

Session::Session(std::string path) : path_(std::move(path)) {
  require_readable(path_);
  handle_ = open_with_progress(path_);
  if (handle_ <= 0) throw Failure(fmt::format("cannot open {}: {}", path_, reason_not_opened(path_, handle_)));
}

Session::~Session() {
  close_file_i(handle_);
}

std::string Session::vehicle() const {
  return owned(get_vehicle_name(handle_));
}
std::string Session::track() const {
  return owned(get_track_name(handle_));
}
std::string Session::racer() const {
  return owned(get_racer_name(handle_));
}
std::string Session::championship() const {
  return owned(get_championship_name(handle_));
}
std::string Session::venue_type() const {
  return owned(get_venue_type_name(handle_));
}

std::tm Session::date() const {
  const std::tm* const date = get_date_and_time(handle_);
  return date == nullptr ? std::tm{} : *date;
}

std::vector<Lap> Session::laps() const {
  std::vector<Lap> laps;
  const int count = get_laps_count(handle_);
  for (int i = 0; i < count; ++i) {
    Lap lap;
    lap.number = i + kFirstLapNumber;
    if (get_lap_info(handle_, i, &lap.start_s, &lap.duration_s) == 1) laps.push_back(lap);
  }
  return laps;
}

int Session::lap_index(int number) const {
  const int count = std::max(0, get_laps_count(handle_));
  const int index = number - kFirstLapNumber;
  if (index < 0 || index >= count) throw Failure(fmt::format("no lap {} in {}, which has {}", number, path_, count));
  return index;
}

std::vector<Channel> Session::logged_channels() const {
  std::vector<Channel> channels;
  const int count = get_channels_count(handle_);
  channels.reserve(static_cast<std::size_t>(std::max(count, 0)));
  for (int i = 0; i < count; ++i) {
    channels.push_back(
        {ChannelKind::logged, i, owned(get_channel_name(handle_, i)), owned(get_channel_units(handle_, i))});
  }
  return channels;
}

const std::vector<Channel>& Session::gps_channels() {
  if (!gps_) {
    gps_.emplace();
    const int count = get_GPS_channels_count(handle_);
    for (int i = 0; i < count; ++i) {
      gps_->push_back(
          {ChannelKind::gps, i, owned(get_GPS_channel_name(handle_, i)), owned(get_GPS_channel_units(handle_, i))});
    }
  }
  return *gps_;
}

const std::vector<Channel>& Session::gps_raw_channels() {
  if (!gps_raw_) {
    gps_raw_.emplace();
    const int count = get_GPS_raw_channels_count(handle_);
    // A trace without a single good record lists its channels, but none of them can be asked for.
    const bool has_samples = count > 0 && get_GPS_raw_channel_samples_count(handle_, 0) > 0;
    for (int i = 0; has_samples && i < count; ++i) {
      gps_raw_->push_back({ChannelKind::gps_raw, i, owned(get_GPS_raw_channel_name(handle_, i)),
                           owned(get_GPS_raw_channel_units(handle_, i))});
    }
  }
  return *gps_raw_;
}

Channel Session::find_channel(const std::string& name) {
  const std::vector<Channel> logged = logged_channels();
  const Channel* found = find_by_name(logged, name);
  if (found == nullptr) found = find_by_name(gps_channels(), name);
  if (found == nullptr) found = find_by_name(gps_raw_channels(), name);
  if (found == nullptr) throw Failure(fmt::format("no channel \"{}\" in {}", name, path_));
  return *found;
}

int Session::sample_count(const Channel& channel) const {
  return std::max(0, count_in(handle_, channel, std::nullopt));
}

void Session::read(const Channel& channel, std::optional<int> lap, Samples& samples) const {
  const int count = count_in(handle_, channel, lap);
  samples.times_s.resize(size_of(count));
  samples.values.resize(size_of(count));
  int written = 0;
  if (count > 0) written = fill_from(handle_, channel, lap, samples.times_s.data(), samples.values.data(), count);
  samples.times_s.resize(std::min(samples.times_s.size(), size_of(written)));
  samples.values.resize(samples.times_s.size());
  if (channel.kind == ChannelKind::gps && !lap) {
    for (double& time : samples.times_s) time /= 1000;  // the one place where the library counts in milliseconds
  }
}

std::string iso_date(const std::tm& date) {
  return fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}", date.tm_year + 1900, date.tm_mon + 1, date.tm_mday,
                     date.tm_hour, date.tm_min, date.tm_sec);
}

}  // namespace traguardo::tool
