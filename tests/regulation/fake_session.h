// SPDX-License-Identifier: MIT
// A session made by hand, for tests of the calculators, and what goes with it: signals and whole expected files.
#pragma once

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "helpers/temp_folder.h"
#include "regulation/session_view.h"
#include "support/platform/platform.h"

namespace traguardo::test {

class FakeSession : public SessionView {
 public:
  struct Channel {
    std::string name;
    u32 period_ms = 0;
    std::vector<float> samples;
    std::string unit;
  };

  // Gives the place of the new channel.
  std::size_t add(const std::string& name, u32 period_ms, std::vector<float> samples, const std::string& unit = "") {
    channels.push_back({name, period_ms, std::move(samples), unit});
    return channels.size() - 1;
  }
  std::vector<float>& samples(std::size_t index) { return channels[index].samples; }

  std::size_t channel_count() const override { return channels.size(); }
  SessionChannel channel(std::size_t index) const override {
    const Channel& row = channels[index];
    SessionChannel seen;
    seen.name = row.name;
    seen.period_ms = row.period_ms;
    seen.frequency_hz = row.period_ms == 0 ? 0 : 1000 / row.period_ms;
    seen.samples = row.samples;
    return seen;
  }
  std::string channel_unit(std::size_t index) const override { return channels[index].unit; }
  std::span<float> output_samples(std::size_t index) override { return channels[index].samples; }
  std::vector<SessionRun> runs() const override { return run_list; }
  std::string racer() const override { return racer_name; }
  std::string logger_id() const override { return "70012"; }
  std::wstring session_file_name() const override { return L"Imola.wmp"; }
  std::wstring session_path() const override { return platform::path_in_folder(folder, session_file_name()); }
  std::wstring working_folder() const override { return folder; }

  std::vector<Channel> channels;
  std::vector<SessionRun> run_list;
  std::string racer_name = "Anna Rossi";
  std::wstring folder;
};

inline std::wstring folder_of(const TempFolder& temp) {
  return platform::path_from_host_bytes(temp.path().string());
}

// Levels between two bounds, each held for some samples. The same on every platform.
inline std::vector<float> wandering(std::mt19937* random, std::size_t count, float lowest, float highest,
                                    std::size_t hold) {
  std::vector<float> samples(count);
  float level = 0.0F;
  for (std::size_t i = 0; i < count; ++i) {
    if (i % hold == 0) level = lowest + (highest - lowest) * (static_cast<float>((*random)() >> 8) / 16777216.0F);
    samples[i] = level;
  }
  return samples;
}

inline std::string without_carriage_returns(std::string text) {
  text.erase(std::remove(text.begin(), text.end(), '\r'), text.end());
  return text;
}

// A report as it was written, whatever the line ends of the platform.
inline std::string report_of(const TempFolder& temp, const std::string& name) {
  return without_carriage_returns(temp.read(name));
}

// An expected file, with a path in place of "@PATH@".
inline std::string expected_file(const std::string& name, const std::wstring& path = L"") {
  std::ifstream stream(std::string(TRAGUARDO_TEST_DATA) + "/regulation/" + name, std::ios::binary);
  std::string text =
      without_carriage_returns({std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()});
  const std::string mark = "@PATH@";
  const std::size_t at = text.find(mark);
  if (at != std::string::npos) text.replace(at, mark.size(), platform::host_bytes_from_path(path));
  return text;
}

}  // namespace traguardo::test
