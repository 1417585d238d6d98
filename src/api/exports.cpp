// SPDX-License-Identifier: MIT
#include "api/exports.h"

#include "api/calls.h"

using traguardo::CSuperChannel;
using traguardo::FileInUse;
using traguardo::find_lap;
using traguardo::guarded;
using traguardo::LapLookup;
using traguardo::SFileQLT;
using traguardo::SRkLap;
using traguardo::text_of_file;
using traguardo::u32;
using traguardo::use_file;
using traguardo::with_file;
using traguardo::with_lap;

namespace {

constexpr double kSecondsPerMicrosecond = 1e-6;

const char* text_of(int handle, const std::string& (traguardo::CSuperParser::*getter)() const) {
  return text_of_file(handle, [&](const SFileQLT& file) { return ((*file.view).*getter)().c_str(); });
}

CSuperChannel* channel_of(const SFileQLT& file, int channel) {
  const auto& channels = file.view->GetCanali();
  const u32 index = static_cast<u32>(channel);
  return index < channels.size() ? channels[index].get() : nullptr;
}

// A text that belongs to a channel; null for one that isn't there.
template <typename Getter>
const char* channel_text(int handle, int channel, Getter&& getter) {
  return text_of_file(handle, [&](const SFileQLT& file) -> const char* {
    const CSuperChannel* found = channel_of(file, channel);
    return found == nullptr ? nullptr : getter(*found).c_str();
  });
}

// What `work` makes of a channel, or the code that says why there is none.
template <typename Work>
int with_channel(int handle, int channel, Work&& work) {
  return with_file(handle, [&](const SFileQLT& file) {
    CSuperChannel* found = channel_of(file, channel);
    return found == nullptr ? traguardo::kNoChannel : static_cast<int>(work(*found));
  });
}

// The same for a channel and the time range of a lap, microseconds; with the codes of the lap functions.
template <typename Work>
int with_lap_channel(int handle, int lap, int channel, Work&& work) {
  return with_lap(handle, lap, [&](const SFileQLT& file, traguardo::u64 from, traguardo::u64 to) {
    CSuperChannel* const found = channel_of(file, channel);
    return found == nullptr ? traguardo::kLapNoChannel : static_cast<int>(work(*found, from, to));
  });
}

}  // namespace

int open_file(const char* path) {
  return guarded(traguardo::kOpenUnreadable, [&] { return traguardo::open_file_with_progress(path, nullptr); });
}

int close_file_i(int handle) {
  return guarded(traguardo::kNoHandle, [&] { return traguardo::close_file(handle); });
}

int close_file_n(const char* path) {
  if (path == nullptr) return traguardo::kCloseNotOpen;
  return guarded(traguardo::kCloseNotOpen, [&] { return traguardo::close_file(path); });
}

// The compiler's own stamps have the form that hosts expect, and follow SOURCE_DATE_EPOCH.
const char* get_library_date(void) {
  return __DATE__;
}

const char* get_library_time(void) {
  return __TIME__;
}

const char* get_vehicle_name(int handle) {
  return text_of(handle, &traguardo::CSuperParser::GetNomeVeicolo);
}

const char* get_track_name(int handle) {
  return text_of(handle, &traguardo::CSuperParser::GetNomeTracciato);
}

const char* get_racer_name(int handle) {
  return text_of(handle, &traguardo::CSuperParser::GetNomePilota);
}

const char* get_championship_name(int handle) {
  return text_of(handle, &traguardo::CSuperParser::GetNomeCampionato);
}

const char* get_venue_type_name(int handle) {
  return text_of(handle, &traguardo::CSuperParser::GetNomeTipoVenue);
}

const struct tm* get_date_and_time(int handle) {
  return guarded<const struct tm*>(nullptr, [&] {
    const FileInUse file = use_file(handle);
    return file ? file->view->GetDataOra() : nullptr;
  });
}

int get_laps_count(int handle) {
  return with_file(handle, [](const SFileQLT& file) { return static_cast<int>(file.laps.size()); });
}

int get_lap_info(int handle, int lap, double* start, double* duration) {
  return with_file(handle, [&](const SFileQLT& file) {
    const SRkLap* found = nullptr;
    if (start == nullptr || duration == nullptr) return traguardo::kNothingWritten;
    if (find_lap(file, lap, &found) != LapLookup::kFound) return 0;
    *start = static_cast<double>(found->start) * kSecondsPerMicrosecond;
    *duration = static_cast<double>(found->duration) * kSecondsPerMicrosecond;
    return 1;
  });
}

int get_channels_count(int handle) {
  return with_file(handle, [](const SFileQLT& file) { return static_cast<int>(file.view->GetCanali().size()); });
}

const char* get_channel_name(int handle, int channel) {
  return channel_text(
      handle, channel, [](const CSuperChannel& found) -> const auto& { return found.GetNome(); });
}

const char* get_channel_units(int handle, int channel) {
  return channel_text(
      handle, channel, [](const CSuperChannel& found) -> const auto& { return found.GetUnita(); });
}

int get_channel_samples_count(int handle, int channel) {
  return with_channel(handle, channel, [](CSuperChannel& found) { return found.GetNumValori(); });
}

int get_channel_samples(int handle, int channel, double* times, double* values, int count) {
  return with_channel(handle, channel, [&](CSuperChannel& found) {
    return times == nullptr || values == nullptr ? 0U : found.GetValori(times, values, count);
  });
}

int get_lap_channel_samples_count(int handle, int lap, int channel) {
  return with_lap_channel(handle, lap, channel, [](CSuperChannel& found, traguardo::u64 from, traguardo::u64 to) {
    return found.GetNumValoriRange(from, to);
  });
}

int get_lap_channel_samples(int handle, int lap, int channel, double* times, double* values, int count) {
  return with_lap_channel(handle, lap, channel, [&](CSuperChannel& found, traguardo::u64 from, traguardo::u64 to) {
    return times == nullptr || values == nullptr ? 0U : found.GetValoriRange(from, to, times, values, count);
  });
}
