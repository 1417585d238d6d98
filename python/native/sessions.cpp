// SPDX-License-Identifier: MIT
// Opening and closing for Python, and what the records of laps and channels say.
#include <algorithm>
#include <cstring>
#include <limits>
#include <list>
#include <map>
#include <mutex>
#include <string>

#include "api/calls.h"
#include "api/open_failure.h"
#include "legacy/wmp_parser.h"
#include "native/python_api.h"
#include "support/host_folders.h"
#include "support/platform/platform.h"
#include "support/platform/process.h"

using traguardo::CParsedChannel;
using traguardo::guarded;
using traguardo::OpenFailure;
using traguardo::SFileQLT;

namespace {

// How often tg_keep was called for a handle. Never destroyed: streams may be released while the process ends.
struct KeptFiles {
  std::mutex lock;
  std::map<int, int> times;
};

KeptFiles& kept_files() {
  static KeptFiles* const made_once = new KeptFiles;
  return *made_once;
}

std::wstring path_of(const char* bytes) {
  return bytes == nullptr ? std::wstring() : traguardo::platform::path_from_host_bytes(bytes);
}

int number_of(OpenFailure failure) {
  switch (failure) {
    case OpenFailure::kNoSuchFile:
      return TG_OPEN_NO_FILE;
    case OpenFailure::kUnknownKind:
      return TG_OPEN_UNKNOWN_KIND;
    case OpenFailure::kNoSession:
      return TG_OPEN_NO_SESSION;
    case OpenFailure::kNoStore:
      return TG_OPEN_NO_STORE;
    case OpenFailure::kNoMemory:
      return TG_OPEN_NO_MEMORY;
    case OpenFailure::kNone:
    case OpenFailure::kNotReadable:
      break;
  }
  return TG_OPEN_NOT_READABLE;
}

// `take` gets every channel of the reader that the view shows under this index: those of one name. How many they are.
template <typename Take>
int each_record(const SFileQLT& file, int channel, Take&& take) {
  const auto& shown = file.view->GetCanali();
  if (channel < 0 || static_cast<std::size_t>(channel) >= shown.size()) return 0;
  const std::string& name = shown[static_cast<std::size_t>(channel)]->GetNome();
  int found = 0;
  for (const auto& read : file.reader->GetCanali()) {
    const auto* const record = dynamic_cast<const CParsedChannel*>(read.get());
    if (record == nullptr || record->GetNome() != name) continue;
    take(*record, found == 0);
    ++found;
  }
  return found;
}

}  // namespace

void tg_choose_home(const char* folder) {
  guarded(0, [&] {
    traguardo::choose_home_folder(path_of(folder));
    return 0;
  });
}

int tg_can_make_files_in(const char* folder) {
  return guarded(0, [&] { return static_cast<int>(traguardo::platform::can_make_files_in(path_of(folder))); });
}

int tg_trace_path(const char* session, char* out, int room) {
  return guarded(0, [&] {
    const std::string path =
        traguardo::platform::host_bytes_from_path(traguardo::CParserWMP::trace_path_of(path_of(session)));
    const std::size_t length = std::min(path.size(), static_cast<std::size_t>(std::max(room, 1)) - 1);
    std::memcpy(out, path.data(), length);
    out[length] = 0;
    return static_cast<int>(length);
  });
}

int tg_open(const char* path, int recover_clock, const char* store_folder, int* failure) {
  *failure = TG_OPEN_NO_MEMORY;
  return guarded(0, [&] {
    const traguardo::StoreFolderOfThread stores(path_of(store_folder));
    const std::list<std::string> options{"recover-clock=1"};
    const int handle = traguardo::open_file_with_progress(path, nullptr, recover_clock != 0 ? &options : nullptr);
    *failure = handle > 0 ? 0 : number_of(traguardo::last_open_failure());
    return handle;
  });
}

void tg_keep(int handle) {
  guarded(0, [&] {
    const std::scoped_lock held(kept_files().lock);
    return ++kept_files().times[handle];
  });
}

void tg_close(int handle) {
  guarded(0, [&] {
    {
      const std::scoped_lock held(kept_files().lock);
      const auto kept = kept_files().times.find(handle);
      if (kept != kept_files().times.end()) {
        if (--kept->second == 0) kept_files().times.erase(kept);
        return 0;
      }
    }
    return traguardo::close_file(handle);
  });
}

int tg_lap_finished(int handle, int lap) {
  const int finished = traguardo::with_file(handle, [&](const SFileQLT& file) {
    const traguardo::SRkLap* found = nullptr;
    return static_cast<int>(traguardo::find_lap(file, lap, &found) == traguardo::LapLookup::kFound &&
                            found->lap_number != 0 && found->counts);
  });
  return static_cast<int>(finished == 1);
}

int tg_channel_record(int handle, int channel, double* rate_hz, double* end_s, int* is_held, int* is_speed) {
  *rate_hz = 0;
  *end_s = 0;
  const int found = traguardo::with_file(handle, [&](const SFileQLT& file) {
    return each_record(file, channel, [&](const CParsedChannel& record, bool is_first) {
      *rate_hz = std::max(*rate_hz, static_cast<double>(record.GetFrequenza()));
      *end_s = std::max(*end_s, static_cast<double>(record.GetUltimoTempo()) * 1e-6);
      if (!is_first) return;
      *is_held = static_cast<int>(record.GetTieniUltimoValore());
      *is_speed = static_cast<int>(record.IsVelocita());
    });
  });
  return static_cast<int>(found > 0);
}

int tg_values_at(const double* times, const double* values, int64_t samples, int is_held, const double* at,
                 int64_t count, double* out) {
  constexpr double kNothing = std::numeric_limits<double>::quiet_NaN();
  int64_t next = 0;  // the first sample behind the time
  for (int64_t i = 0; i < count; ++i) {
    while (next < samples && times[next] <= at[i]) {
      if (next > 0 && times[next] < times[next - 1]) return 0;
      ++next;
    }
    const bool is_at_sample = next > 0 && times[next - 1] == at[i];
    if (next > 0 && (is_held != 0 || is_at_sample)) {
      out[i] = values[next - 1];
    } else if (next == 0 || next == samples) {
      out[i] = kNothing;
    } else {
      const double span = times[next] - times[next - 1];
      out[i] = (at[i] - times[next - 1]) * (values[next] - values[next - 1]) / span + values[next - 1];
    }
  }
  // What stands behind the last time could still belong before it.
  for (next = std::max<int64_t>(next, 1); next < samples; ++next) {
    if (times[next] < times[next - 1]) return 0;
  }
  return 1;
}
