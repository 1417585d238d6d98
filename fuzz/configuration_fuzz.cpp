// SPDX-License-Identifier: MIT
// The text files that a user writes: the first byte says which of them holds the rest; the others are sound. All that
// reads them runs over a session of two runs.

#include <cmath>

#include "math/math_channel_manager.h"
#include "regulation/calculator.h"
#include "regulation/fake_session.h"
#include "units/user_units_manager.h"
#include "whole_file.h"

using namespace traguardo;

namespace {

enum Chosen : std::size_t { kBoost, kLimits, kLimiter, kExporter, kTable, kDefinitions };
constexpr const char* kNames[] = {"FIA.txt",
                                  "limits.txt",
                                  "FMI-limiter.txt",
                                  "Exporter.txt",
                                  "user/et_prediction/Default.etp",
                                  "MATHCHANNELS/ZEP_TWMATH_2.ZMC"};
constexpr const char* kSound[] = {
    R"({
racer=Anna Rossi
BarometricPressure=0.985
RPM=Engine
Pboost=Boost
Pboost2nd=Boost 2
Throttle=TPS
MaxPboost=limits.txt
filtering=zep_fir_50
}
)",
    "3000=1.1\n5000=1.4\n8000=1.6\n",
    "{\nid=70012\nlimiter=6000\npts_number=4\nthreshold=2000\n}\n",
    "frq=50\n{\nracer=Anna Rossi\nch=Speed\nch=Engine\n}\n",
    "",
    "traguardo math channels 1\n",
};

test::FakeSession session_of_two_runs() {
  test::FakeSession session;
  session.folder = test::folder_of(fuzz::folder());
  const auto wave = [](float low, float high) {
    std::vector<float> samples(600);
    for (std::size_t i = 0; i < samples.size(); ++i) {
      samples[i] = low + (high - low) * (0.5F + 0.5F * std::sin(static_cast<float>(i) / 40.0F));
    }
    return samples;
  };
  session.add("Engine", 10, wave(1000, 9000), "rpm");
  session.add("Boost", 10, wave(900, 2500), "mbar");
  session.add("Boost 2", 20, wave(900, 2500), "mbar");
  session.add("TPS", 10, wave(0, 100), "%");
  session.add("Speed", 50, wave(0, 120), "mph");
  for (const char* output : {"1", "2", "3", "4", "5", "6", "7"}) session.add(output, 10, std::vector<float>(600));
  session.run_list = {{1, 0, 3000}, {2, 3000, 3000}};
  return session;
}

// The calculator that reads the file.
void check_calculators(test::FakeSession& session, std::size_t chosen) {
  RegulationCalculator calculator(&session, {}, 0, session.folder + L"/");
  if (chosen == kBoost || chosen == kLimits) calculator.compute_boost_limit({5, 6, 7, 8, 9, 10});
  if (chosen == kLimiter) calculator.compute_limiter(11);
  if (chosen == kExporter) calculator.export_channels();
}

void check_table(const test::FakeSession& session) {
  ElapsedTimePrediction prediction(session.folder + L"/");
  const std::vector<float>& speeds = session.channels[4].samples;
  std::vector<float> distances(speeds.size());
  integrate_distance(speeds, 50, 1.0F, kFeetPerSecond, 0, distances);
  PredictionInput input{distances, speeds, 0, 50, {}};
  for (const u32 length : {330U, 660U, 1320U}) {
    input.length_ft = length;
    prediction.predict(input);
  }
  prediction.store_run("c", "r", input);
  const RunMarks marks{100, {2000, 4000, 6000, 8000, 10000}};
  calibrate_run(speeds, 50, 0, marks, &prediction);
}

// What is read and written comes out as it was written.
void check_definitions(const test::FakeSession& session) {
  const CUserUnitsOfMeasureMgr units;
  CGestMathChan manager(units, session.folder);
  manager.LoadMathChannels();
  manager.save_math_channels(L"1");
  const std::string once = fuzz::folder().read("MATHCHANNELS/1");
  manager.LoadMathChannels(L"1");
  manager.save_math_channels(L"2");
  fuzz::check(fuzz::folder().read("MATHCHANNELS/2") == once);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::size_t chosen = data[0] % std::size(kNames);
  const test::TempFolder& folder = fuzz::folder();
  for (const char* below : {"user/et_prediction", "MATHCHANNELS"}) {
    std::filesystem::create_directories(folder.path() / below);
  }
  for (std::size_t i = 0; i < std::size(kNames); ++i) {
    if (i != chosen) folder.write(kNames[i], std::string(kSound[i]));
  }
  if (chosen != kTable) std::filesystem::remove(folder.path() / kNames[kTable]);
  folder.write(kNames[chosen], std::string(reinterpret_cast<const char*>(data) + 1, size - 1));
  test::FakeSession session = session_of_two_runs();
  check_calculators(session, chosen);
  if (chosen == kTable) check_table(session);
  if (chosen == kDefinitions) check_definitions(session);
  std::filesystem::remove(folder.path() / "FMI-output.txt");
  return 0;
}
