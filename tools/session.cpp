// SPDX-License-Identifier: MIT
#include "session.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <list>
#include <system_error>
#include <utility>

#include "api/exports.h"
#include "api/open_failure.h"
#include "channel_names.h"
#include "failure.h"
#include "input_file.h"
#include "inputs.h"
#include "inside.h"
#include "paths.h"
#include "progress.h"
#include "support/platform/process.h"
#include "text.h"
#include "unit_choice.h"
#include "wildcard.h"

namespace traguardo::tool {

namespace {

namespace fs = std::filesystem;

constexpr const char* kStoreFolder = "TRAGUARDO_STORE_FOLDER";

std::string reason_not_opened(const std::string& path) {
  if (lower_ending(path) == ".wmp") {
    const std::string trace = trace_file_of(path);
    std::error_code problem;
    if (!fs::exists(path_of(trace), problem)) {
      return fmt::format("its trace file is missing, which was sought as {}", trace);
    }
    const std::string reason = reason_not_readable(trace);
    if (!reason.empty()) return fmt::format("its trace file {} can't be read: {}", trace, reason);
  }
  switch (last_open_failure()) {
    case OpenFailure::kNoSuchFile:
      return "No such file or directory";
    case OpenFailure::kUnknownKind:
      return "not a kind of session file that can be read (.qlt, .qlc, .wmp)";
    case OpenFailure::kNoSession:
      return "no session can be read from it";
    case OpenFailure::kNoStore:
      return fmt::format("no room or no place for its samples in {}", store_folder(path));
    case OpenFailure::kNoMemory:
      return "out of memory";
    case OpenFailure::kNotReadable:
    case OpenFailure::kNone:
      break;
  }
  return "it can't be read";
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
      break;  // read_grid
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
      break;  // read_grid
    case ChannelKind::gps_raw:
      return lap ? get_lap_GPS_raw_channel_samples(handle, *lap, channel.index, times, values, count)
                 : get_GPS_raw_channel_samples(handle, channel.index, times, values, count);
  }
  return 0;
}

Channel channel_of(ChannelKind kind, int index, const char* name, const char* unit) {
  return {kind, index, to_utf8(owned(name)), readable_unit(owned(unit))};
}

std::vector<std::string> names_of(const std::vector<Channel>& channels) {
  std::vector<std::string> names;
  names.reserve(channels.size());
  for (const Channel& channel : channels) names.push_back(channel.name);
  return names;
}

// Into the channel's unit, in the 32 bits that values have.
void convert(const Channel& channel, std::vector<double>& values) {
  if (channel.scale == 1 && channel.offset == 0) return;
  for (double& value : values) {
    value = static_cast<double>(static_cast<float>(value * channel.scale + channel.offset));
  }
}

}  // namespace

void refuse_printing_onto(const std::string& session) {
  Inputs inputs;
  inputs.add_session(session);
  inputs.refuse("-");
}

void choose_store_folder(const std::string& session) {
  std::error_code problem;
  std::string folder = folder_of(session);
  if (!platform::can_make_files_in(platform::path_from_host_bytes(folder))) {
    folder = bytes_of(fs::temp_directory_path(problem));
    if (problem) return;
  }
  platform::set_environment_if_unset(kStoreFolder, folder);
}

std::string store_folder(const std::string& session) {
  const std::string chosen = platform::environment(kStoreFolder);
  return chosen.empty() ? folder_of(session) : chosen;
}

std::string folder_of(const std::string& path) {
  const std::string folder = bytes_of(path_of(path).parent_path());
  return folder.empty() ? "." : folder;
}

Session::Session(const std::string& path, bool recover) : path_(path) {
  require_readable(path_);
  refuse_printing_onto(path_);
  choose_store_folder(path_);
  // The reader of the older family copies a session beside itself, as programs of its time want; nobody asked for that.
  std::list<std::string> reader_options{"wmp-copy=0"};
  if (recover) reader_options.emplace_back(kRecoverClock);
  handle_ = open_with_progress(path_, reader_options);
  if (handle_ <= 0) throw Failure(fmt::format("cannot open {}: {}", path_, reason_not_opened(path_)));
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
    if (get_lap_info(handle_, i, &lap.start_s, &lap.duration_s) != 1) continue;
    lap.finished = was_lap_finished(*this, i);
    laps.push_back(lap);
  }
  return laps;
}

std::vector<Channel> Session::logged_channels() const {
  std::vector<Channel> channels;
  const int count = get_channels_count(handle_);
  channels.reserve(static_cast<std::size_t>(std::max(count, 0)));
  for (int i = 0; i < count; ++i) {
    channels.push_back(channel_of(ChannelKind::logged, i, get_channel_name(handle_, i), get_channel_units(handle_, i)));
  }
  return channels;
}

const std::vector<Channel>& Session::gps_channels() {
  if (!gps_) {
    gps_.emplace();
    const int count = get_GPS_channels_count(handle_);
    for (int i = 0; i < count; ++i) {
      gps_->push_back(
          channel_of(ChannelKind::gps, i, get_GPS_channel_name(handle_, i), get_GPS_channel_units(handle_, i)));
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
      gps_raw_->push_back(channel_of(ChannelKind::gps_raw, i, get_GPS_raw_channel_name(handle_, i),
                                     get_GPS_raw_channel_units(handle_, i)));
    }
  }
  return *gps_raw_;
}

std::vector<Channel> Session::channels() {
  std::vector<Channel> channels = logged_channels();
  const std::vector<Channel>& gps = gps_channels();
  channels.insert(channels.end(), gps.begin(), gps.end());
  return channels;
}

std::vector<Channel> Session::channels_by_name(const std::string& wanted) {
  // What a logged channel is called exactly needs no GPS.
  const std::vector<Channel> logged = logged_channels();
  for (const Channel& channel : logged) {
    if (channel.name == wanted) return {channel};
  }
  std::vector<Channel> found;
  for (const std::vector<Channel>& list : {channels(), gps_raw_channels()}) {
    for (const std::size_t place : named(wanted, names_of(list), path_)) found.push_back(list[place]);
    if (!found.empty()) break;
  }
  return found;
}

std::vector<Channel> Session::find_channels(const std::string& name) {
  // What a terminal shows can be typed, also where the file has other bytes.
  const std::string wanted = to_utf8(name);
  std::vector<Channel> found = channels_by_name(wanted);
  const std::size_t sign = wanted.rfind('=');
  if (found.empty() && sign != std::string::npos) {
    found = channels_by_name(wanted.substr(0, sign));
    for (Channel& channel : found) {
      const CParsedChannel* const parsed = parsed_channel_of(*this, channel);
      const UnitChange change =
          change_of_unit(parsed == nullptr ? 0 : parsed->GetFid(), channel.unit, wanted.substr(sign + 1), channel.name);
      channel.unit = change.unit;
      channel.scale = change.scale;
      channel.offset = change.offset;
    }
  }
  if (!found.empty()) return found;
  const std::string bare = wanted.substr(0, sign);
  const bool is_pattern = has_wildcard(bare) || bare.starts_with('#');
  throw Failure(fmt::format("no channel \"{}\" in {}{}", bare, path_,
                            is_pattern ? "" : question_about_names(bare, names_of(channels()))));
}

Channel Session::find_channel(const std::string& wanted) {
  const std::vector<Channel> found = find_channels(wanted);
  if (found.size() > 1) refuse_several(to_utf8(wanted), names_of(found), path_);
  return found.front();
}

std::vector<Channel> find_all_channels(Session& session, const std::vector<std::string>& names) {
  std::vector<Channel> channels;
  if (names.empty()) channels = session.channels();
  for (const std::string& name : names) {
    const std::vector<Channel> found = session.find_channels(name);
    channels.insert(channels.end(), found.begin(), found.end());
  }
  if (channels.empty()) throw Failure(fmt::format("no channels in {}", session.path()));
  return channels;
}

double Session::duration_s() const {
  const SFileQLT& file = inside_of(*this);
  std::optional<double> end_s;
  for (const auto& channel : file.view->GetCanali()) {
    const std::optional<double> last_s = last_time_s(*channel);
    if (last_s) end_s = std::max(end_s.value_or(0), *last_s);
  }
  if (end_s) return *end_s;
  const std::vector<const SGpsRecord*> solutions = gps_solutions_of(file);
  return solutions.empty() ? 0 : solutions.back()->logger_time_ms() * 0.001;
}

std::size_t Session::gps_channel_count() const {
  return gps_solution_count() == 0 ? 0 : kGpsChannelCount;
}

std::size_t Session::gps_solution_count() const {
  return gps_solutions_of(inside_of(*this)).size();
}

std::uint64_t Session::sample_count(const Channel& channel, std::optional<int> lap) const {
  if (channel.kind == ChannelKind::gps) return grid_slice_of(inside_of(*this), lap).count;
  return size_of(count_in(handle_, channel, lap));
}

void Session::read(const Channel& channel, std::optional<int> lap, Samples& samples) const {
  const int count = count_in(handle_, channel, lap);
  samples.times_s.resize(size_of(count));
  samples.values.resize(size_of(count));
  int written = 0;
  if (count > 0) written = fill_from(handle_, channel, lap, samples.times_s.data(), samples.values.data(), count);
  samples.times_s.resize(std::min(samples.times_s.size(), size_of(written)));
  samples.values.resize(samples.times_s.size());
  convert(channel, samples.values);
}

void Session::read_in_pieces(const Channel& channel, const std::vector<Lap>& laps, const TakeSamples& take) const {
  if (laps.empty()) read_pieces_of(channel, std::nullopt, take);
  for (const Lap& lap : laps) {
    if (!read_pieces_of(channel, lap.index(), take)) return;
  }
}

// False if `take` had enough.
bool Session::read_pieces_of(const Channel& channel, std::optional<int> lap, const TakeSamples& take) const {
  if (channel.kind == ChannelKind::gps) return read_grid(channel, lap, take);
  // As many as the file has bytes for.
  Samples samples;
  read(channel, lap, samples);
  return take(samples);
}

bool Session::read_grid(const Channel& channel, std::optional<int> lap, const TakeSamples& take) const {
  constexpr std::uint64_t kPiece = 1 << 16;
  const SFileQLT& file = inside_of(*this);
  const LapSlice slice = grid_slice_of(file, lap);
  // The whole channel has its times by way of milliseconds, as the library gives them out.
  const GpsTimeUnit unit = lap ? GpsTimeUnit::kSeconds : GpsTimeUnit::kMilliseconds;
  Samples piece;
  for (std::uint64_t done = 0; done < slice.count;) {
    const std::uint64_t count = std::min(kPiece, slice.count - done);
    piece.times_s.resize(static_cast<std::size_t>(count));
    piece.values.resize(static_cast<std::size_t>(count));
    const std::uint64_t written = file.gps.grid().fill(static_cast<u32>(channel.index), slice.first + done, count, unit,
                                                       piece.times_s.data(), piece.values.data());
    if (written != count) return true;
    if (unit == GpsTimeUnit::kMilliseconds) {
      for (double& time : piece.times_s) time /= 1000;
    }
    convert(channel, piece.values);
    if (!take(piece)) return false;
    done += count;
  }
  return true;
}

std::string iso_date(const std::tm& date) {
  return fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}", date.tm_year + 1900, date.tm_mon + 1, date.tm_mday,
                     date.tm_hour, date.tm_min, date.tm_sec);
}

}  // namespace traguardo::tool
