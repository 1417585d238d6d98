#include "api/exports.h"

#include "api/file_table.h"

using traguardo::CSuperChannel;
using traguardo::find_file;
using traguardo::find_lap;
using traguardo::LapLookup;
using traguardo::SFileQLT;
using traguardo::SRkLap;
using traguardo::u32;

namespace {

constexpr double kSecondsPerMicrosecond = 1e-6;
constexpr int kNoHandle = -1;
constexpr int kNoView = -2;
constexpr int kNoChannel = -3;
// The lap functions have codes of their own.
constexpr int kLapNoLap = -1;
constexpr int kLapNoChannel = -2;

const char* text_of(int handle, const std::string& (traguardo::CSuperParser::*getter)() const) {
  const SFileQLT* file = find_file(handle);
  if (file == nullptr) return nullptr;
  return file->view == nullptr ? "" : ((*file->view).*getter)().c_str();
}

CSuperChannel* channel_of(const SFileQLT& file, int channel) {
  const auto& channels = file.view->GetCanali();
  const u32 index = static_cast<u32>(channel);
  return index < channels.size() ? channels[index].get() : nullptr;
}

CSuperChannel* channel_of(int handle, int channel) {
  const SFileQLT* file = find_file(handle);
  return file == nullptr || file->view == nullptr ? nullptr : channel_of(*file, channel);
}

// The channel and the range of a lap, or the result that the lap functions give instead.
struct LapChannel {
  int result = 0;
  CSuperChannel* channel = nullptr;
  traguardo::u64 from = 0;
  traguardo::u64 to = 0;
};

LapChannel lap_channel_of(int handle, int lap, int channel) {
  const SFileQLT* file = find_file(handle);
  if (file == nullptr) return {kNoHandle};
  if (file->view == nullptr) return {kNoView};
  const SRkLap* found = nullptr;
  switch (find_lap(*file, lap, &found)) {
    case LapLookup::kNoSession:
      return {0};
    case LapLookup::kNoLap:
      return {kLapNoLap};
    case LapLookup::kFound:
      break;
  }
  CSuperChannel* const super = channel_of(*file, channel);
  if (super == nullptr) return {kLapNoChannel};
  return {0, super, found->start, found->start + found->duration};
}

}  // namespace

int open_file(const char* path) {
  return traguardo::open_file_with_progress(path, nullptr);
}

int close_file_i(int handle) {
  return traguardo::close_file(handle);
}

int close_file_n(const char* path) {
  constexpr int kNotOpen = -2;
  if (path == nullptr) return kNotOpen;
  for (const auto& [handle, file] : traguardo::open_files()) {
    if (file.path == path) return traguardo::close_file(handle);
  }
  return kNotOpen;
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
  const SFileQLT* file = find_file(handle);
  return file == nullptr || file->view == nullptr ? nullptr : file->view->GetDataOra();
}

int get_laps_count(int handle) {
  const SFileQLT* file = find_file(handle);
  if (file == nullptr) return kNoHandle;
  if (file->view == nullptr) return kNoView;
  std::size_t laps = 0;
  for (const auto& [number, session] : file->view->GetSessioni()) {
    if (session != nullptr) laps += session->lap_count;
  }
  return static_cast<int>(laps);
}

int get_lap_info(int handle, int lap, double* start, double* duration) {
  const SFileQLT* file = find_file(handle);
  if (file == nullptr) return kNoHandle;
  if (file->view == nullptr) return kNoView;
  const SRkLap* found = nullptr;
  if (find_lap(*file, lap, &found) != LapLookup::kFound) return 0;
  if (start != nullptr) *start = static_cast<double>(found->start) * kSecondsPerMicrosecond;
  if (duration != nullptr) *duration = static_cast<double>(found->duration) * kSecondsPerMicrosecond;
  return 1;
}

int get_channels_count(int handle) {
  const SFileQLT* file = find_file(handle);
  if (file == nullptr) return kNoHandle;
  return file->view == nullptr ? kNoView : static_cast<int>(file->view->GetCanali().size());
}

const char* get_channel_name(int handle, int channel) {
  const CSuperChannel* found = channel_of(handle, channel);
  return found == nullptr ? nullptr : found->GetNome().c_str();
}

const char* get_channel_units(int handle, int channel) {
  const CSuperChannel* found = channel_of(handle, channel);
  return found == nullptr ? nullptr : found->GetUnita().c_str();
}

int get_channel_samples_count(int handle, int channel) {
  const SFileQLT* file = find_file(handle);
  if (file == nullptr) return kNoHandle;
  if (file->view == nullptr) return kNoView;
  CSuperChannel* found = channel_of(*file, channel);
  return found == nullptr ? kNoChannel : static_cast<int>(found->GetNumValori());
}

int get_channel_samples(int handle, int channel, double* times, double* values, int count) {
  const SFileQLT* file = find_file(handle);
  if (file == nullptr) return kNoHandle;
  if (file->view == nullptr) return kNoView;
  CSuperChannel* found = channel_of(*file, channel);
  return found == nullptr ? kNoChannel : static_cast<int>(found->GetValori(times, values, count));
}

int get_lap_channel_samples_count(int handle, int lap, int channel) {
  const LapChannel found = lap_channel_of(handle, lap, channel);
  return found.channel == nullptr ? found.result
                                  : static_cast<int>(found.channel->GetNumValoriRange(found.from, found.to));
}

int get_lap_channel_samples(int handle, int lap, int channel, double* times, double* values, int count) {
  const LapChannel found = lap_channel_of(handle, lap, channel);
  return found.channel == nullptr
             ? found.result
             : static_cast<int>(found.channel->GetValoriRange(found.from, found.to, times, values, count));
}
