// SPDX-License-Identifier: MIT
// Channels that no logger recorded: which ones a session gains, how they are computed, and when they are computed
// again.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "legacy/texts/wmp_measure.h"
#include "opened_session.h"

namespace traguardo::test {
namespace {

constexpr u16 k10Hz = 2;
constexpr u16 k100Hz = 5;
constexpr u16 kSpeedClass = 3;
constexpr u32 kGearedDevice = 48;
constexpr u32 kScaledDevice = 18;

using Names = std::vector<std::string>;

Names names_of(const WmpSession& session) {
  Names names;
  for (std::size_t i = 0; i < session.tables.channels.size(); ++i)
    names.push_back(session.tables.channels[i].record.name());
  return names;
}

std::size_t place_of(const WmpSession& session, const std::string& name) {
  const Names names = names_of(session);
  return static_cast<std::size_t>(std::find(names.begin(), names.end(), name) - names.begin());
}

std::vector<float> values_of(OpenedSession& opened, const std::string& name) {
  return opened.values(place_of(opened.session(), name));
}

// A second of engine and shaft at 100 Hz, in two runs that leave its last tenth uncovered.
wmp::File shaft_file(u32 device) {
  std::vector<u16> engine;
  std::vector<u16> shaft;
  for (u16 i = 0; i < 100; ++i) {
    engine.push_back(static_cast<u16>(3000 + 10 * i));
    shaft.push_back(static_cast<u16>(1000 + 7 * i + 3 * (i % 5)));
  }
  wmp::File file;
  file.version = 600;
  file.device_code = device;
  file.logged = {plain_channel("Engine", engine, k100Hz), plain_channel("Shaft", shaft, k100Hz)};
  file.logged[0].sensor = 0;
  file.logged[1].sensor = 77;
  file.laps = {wmp::Lap{400, 1, 1}, wmp::Lap{200, 1, 2}, wmp::Lap{300, 2, 1}};
  file.runs = {wmp::Run{1, 30, 12, 2000.75F, ""}, wmp::Run{2, 11, 99, 1800.5F, ""}};
  return file;
}

wmp::Channel formula_channel(const std::string& name, const std::string& formula, u16 rate = k100Hz) {
  wmp::Channel channel = plain_channel(name, {}, rate);
  channel.formula = formula;
  channel.origin = 0;
  return channel;
}

wmp::Channel kind_channel(const std::string& name, u16 kind, u16 rate = k100Hz) {
  wmp::Channel channel = plain_channel(name, {}, rate);
  channel.kind = kind;
  return channel;
}

// Opens the session again with one more file in the application folder.
bool open_with(OpenedSession& opened, const std::string& name, const std::string& text) {
  opened.folder().write(name, text);
  return opened.open("session.wmp", Load::kEverything);
}

std::size_t count_of(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

// --- Which channels a session gains

TEST(SynthesisedChannels, FollowTheDevice) {
  const Names logged = {"Engine rpm", "Shaft rpm"};
  Names geared = logged;
  geared.insert(geared.end(), {"Speed km/h", "CVT ", "Drive %", "Linear g"});
  Names scaled = logged;
  scaled.push_back("SpeedCalc km/h");
  const std::pair<u32, Names> devices[] = {{48, geared}, {56, geared},  {59, geared},  {60, geared}, {18, scaled},
                                           {70, scaled}, {317, scaled}, {318, scaled}, {47, logged}, {0, logged}};
  for (const auto& [device, wanted] : devices) {
    SoundSession opened(shaft_file(device));
    Names found;
    for (const auto& measure : opened.session().measures) {
      found.push_back(measure->name() + ' ' + narrow_low_bytes(measure->unit_text()));
    }
    EXPECT_EQ(found, wanted) << device;
  }
  wmp::File file = shaft_file(kGearedDevice);
  file.function_ids = false;
  SoundSession opened(file);
  const WmpTables& tables = opened.session().tables;
  EXPECT_EQ(std::pair(tables.function_id(5), tables.second_function_id(5)), std::pair(2U, 11U));
  EXPECT_EQ(tables.channels[2].record.formula(), "(Shaft / 60000) * 12 * 2000 * 3.6000 / 30");
  EXPECT_EQ(tables.channels[5].extension.decimals(), 2);
  // The last candidate isn't a speed, so the first speed of the table stands.
  EXPECT_EQ(tables.header.reference_speed(), 2);
}

TEST(SynthesisedChannels, AnUnknownDriveIsTheUsualOne) {
  wmp::File file = shaft_file(kGearedDevice);
  file.runs = {wmp::Run{}, wmp::Run{2, 0, 0, 0.0F, ""}};
  SoundSession opened(file);
  EXPECT_EQ(opened.session().tables.channels[2].record.formula(), "(Shaft / 60000) * 18 * 1524 * 3.6000 / 80");
  // Linear has no usual drive: nothing to divide by.
  EXPECT_EQ(values_of(opened, "Linear"), std::vector<float>(100, 0.0F));
}

TEST(SynthesisedChannels, AnUntouchedShaftIsSetUp) {
  // Device, first two parameters as stored and behind.
  const std::tuple<u32, float, float, float, float> cases[] = {{kGearedDevice, 0, 0, 0, 4},
                                                               {kGearedDevice, 2000, 3, 2000, 3},
                                                               {kScaledDevice, 1500, 0, 40, 0},
                                                               {kScaledDevice, 1000, 0, 1000, 0}};
  for (const auto& [device, first, second, first_behind, second_behind] : cases) {
    wmp::File file = shaft_file(device);
    file.logged[1].parameters = {first, second};
    SoundSession opened(file);
    const WmpChannelRecord& shaft = opened.session().tables.channels[1].record;
    EXPECT_EQ(std::pair(shaft.parameter(0), shaft.parameter(1)), std::pair(first_behind, second_behind)) << first;
  }
}

TEST(SynthesisedChannels, AStoredSpeedStays) {
  wmp::File file = shaft_file(kGearedDevice);
  file.derived = {formula_channel("Speed", "Shaft * 2")};
  SoundSession opened(file);
  EXPECT_EQ(names_of(opened.session()), (Names{"Engine", "Shaft", "Speed", "CVT", "Drive", "Linear"}));
  EXPECT_EQ(opened.session().tables.channels[2].record.formula(), "Shaft * 2");
  // A stored channel of another kind's name gets the formula of that kind.
  file.derived = {formula_channel("cvt", "Shaft * 2")};
  SoundSession renamed(file);
  EXPECT_EQ(names_of(renamed.session()), (Names{"Engine", "Shaft", "cvt", "Speed", "Drive", "Linear"}));
  EXPECT_EQ(renamed.values(2)[50], 3500.0F / 1350.0F);
}

TEST(SynthesisedChannels, AMissingInputIsALineInTheLog) {
  // The only channel is neither shaft nor engine.
  wmp::File file = shaft_file(0);
  file.logged.pop_back();
  file.logged[0].name = "Revs";
  const std::tuple<u32, std::string, std::vector<std::string>> cases[] = {
      {kGearedDevice, "any.txt", {"4605", "4655", "4678", "4701"}},
      {kScaledDevice, "any.txt", {"4743"}},
      {0, "FMI-limiter.txt", {"4887"}}};
  for (const auto& [device, configuration, lines] : cases) {
    file.device_code = device;
    SoundSession opened(file, Load::kTablesOnly);
    const LogFile log;
    ASSERT_TRUE(open_with(opened, configuration, ""));
    EXPECT_EQ(names_of(opened.session()), (Names{"Revs"}));
    EXPECT_EQ(count_of(log.text(), "INFO = ZEP: Wrong math channel insertion attempt!"), lines.size());
    for (const std::string& line : lines) {
      EXPECT_EQ(count_of(log.text(), "CWMP::AssicuraPresenzaCanaleMatematico [" + line + "]"), 1U) << log.text();
    }
  }
  SoundSession opened(shaft_file(0));
  const LogFile log;
  opened.reader().AssicuraPresenzaCanaleMatematico(13, true);
  EXPECT_EQ(count_of(log.text(), "[4910]"), 1U);
}

// --- Run by run

TEST(RunCalculations, LinearIsTheSmoothedRiseOfEachRun) {
  SoundSession opened(shaft_file(kGearedDevice));
  const std::vector<float> shaft = values_of(opened, "Shaft");
  std::vector<float> wanted(100, 0.0F);
  const auto add_run = [&](std::size_t first, std::size_t end, float low_teeth, float high_teeth, float wheel_mm) {
    const float factor = low_teeth * 0.016666668F * wheel_mm * 0.101973176F / (high_teeth * 10.0F);
    std::vector<float> rise(end - first, 0.0F);
    for (std::size_t i = 1; i < rise.size(); ++i) rise[i] = (shaft[first + i] - shaft[first + i - 1]) * factor;
    for (std::size_t i = 0; i < rise.size(); ++i) {
      float mean = rise[i];
      if (i >= 3 && i + 3 < rise.size()) {
        mean = 0.0F;
        for (std::size_t j = i - 3; j <= i + 3; ++j) mean += rise[j];
        mean /= 7.0F;
      }
      wanted[first + i] = mean;
    }
  };
  add_run(0, 60, 12, 30, 2000);
  add_run(60, 90, 11, 99, 1800);
  EXPECT_EQ(values_of(opened, "Linear"), wanted);
}

TEST(RunCalculations, SpeedsAndRatiosOfEngineAndShaft) {
  SoundSession geared(shaft_file(kGearedDevice));
  wmp::File file = shaft_file(kScaledDevice);
  file.logged[1].parameters[0] = 62.5F;
  SoundSession scaled(file);
  const std::vector<float> engine = values_of(geared, "Engine");
  const std::vector<float> shaft = values_of(geared, "Shaft");
  const std::vector<float> speed = values_of(geared, "Speed");
  const std::vector<float> cvt = values_of(geared, "CVT");
  const std::vector<float> drive = values_of(geared, "Drive");
  const std::vector<float> scaled_speed = values_of(scaled, "SpeedCalc");
  const float scale = geared.session().speed_scale;
  ASSERT_EQ(std::pair(speed.size(), scaled_speed.size()), (std::pair<std::size_t, std::size_t>(100, 100)));
  for (std::size_t i = 0; i < 100; ++i) {
    SCOPED_TRACE(i);
    // The first run's gears and each run's wheel.
    const float wheel = i < 60 ? 2000.0F : 1800.0F;
    EXPECT_EQ(speed[i], i < 90 ? shaft[i] / 60000.0F * 12.0F * wheel * (1.0F / scale) / 30.0F : 0.0F);
    EXPECT_EQ(scaled_speed[i], i < 90 ? shaft[i] / 62.5F : 0.0F);
    // Formulas know no runs.
    EXPECT_EQ(cvt[i], engine[i] / shaft[i]);
    EXPECT_EQ(drive[i], (1.0F - ((engine[i] - shaft[i]) / engine[i])) * 100.0F);
  }
}

// --- Configuration files

TEST(ConfiguredChannels, BoostLimitBringsSixChannels) {
  SoundSession opened(shaft_file(0), Load::kTablesOnly);
  ASSERT_TRUE(open_with(opened, "FIA.txt", "{\nracer=Somebody else\n}\n"));
  EXPECT_EQ(names_of(opened.session()),
            (Names{"Engine", "Shaft", "FlagFIA", "LimitFIA", "ValFIA", "IntegFIA", "Ctr30FIA", "Ctr100FIA"}));
  for (std::size_t i = 2; i < 8; ++i) EXPECT_EQ(opened.values(i), std::vector<float>(100, 0.0F));
  EXPECT_EQ(count_of(opened.folder().read("FIA_comp_output.txt"), "No matching vehicle"), 2U) << "one line a run";

  // A stored one of another rate is made anew, at its place among the others.
  wmp::File file = shaft_file(0);
  file.derived = {kind_channel("ValFIA", 8, k10Hz), kind_channel("Ctr30FIA", 10)};
  SoundSession stored(file, Load::kTablesOnly);
  ASSERT_TRUE(open_with(stored, "FIA.txt", ""));
  EXPECT_EQ(names_of(stored.session()),
            (Names{"Engine", "Shaft", "Ctr30FIA", "FlagFIA", "LimitFIA", "ValFIA", "IntegFIA", "Ctr100FIA"}));
  EXPECT_EQ(stored.values(5).size(), 100U);
}

TEST(ConfiguredChannels, EachOutputOfTheBoostLimitHasItsChannel) {
  wmp::File file = shaft_file(0);
  file.laps = {wmp::Lap{1000}};
  file.runs = {wmp::Run{}};
  file.logged.push_back(plain_channel("Boost", std::vector<u16>(100, 2005), k100Hz));
  file.logged.push_back(plain_channel("Throttle", std::vector<u16>(100, 100), k100Hz));
  SoundSession opened(file, Load::kTablesOnly);
  opened.folder().write("limits.txt", std::string("1000=1\n9000=1\n"));
  ASSERT_TRUE(
      open_with(opened, "FIA.txt",
                "BarometricPressure=1.01\nRPM=Engine\nPboost=Boost\nThrottle=Throttle\nMaxPboost=limits.txt\n"));
  // 1005 mbar above the limit add 10.05 a sample, so that the triggers of 30 and 100 are crossed once each.
  const std::tuple<const char*, std::size_t, float, float> wanted[] = {
      {"LimitFIA", 50, 1000.0F, 0.01F}, {"ValFIA", 50, 2005.0F, 0.01F}, {"IntegFIA", 49, 502.5F, 0.1F},
      {"Ctr30FIA", 99, 1.0F, 0.0F},     {"Ctr100FIA", 99, 1.0F, 0.0F},  {"FlagFIA", 5, 0.0F, 0.0F},
      {"FlagFIA", 99, 1.0F, 0.0F}};
  for (const auto& [name, at, value, tolerance] : wanted) {
    EXPECT_NEAR(values_of(opened, name)[at], value, tolerance) << name << ' ' << at;
  }
}

TEST(ConfiguredChannels, TheLimiterIsComputedWhenAddedAndWhenAssured) {
  std::vector<u16> engine(100, 4000);
  std::fill_n(engine.begin(), 50, u16{2000});
  wmp::File file = shaft_file(0);
  file.device_id = 77;
  file.logged = {plain_channel("Engine", engine, k100Hz)};
  file.laps = {wmp::Lap{1000}};
  file.runs = {wmp::Run{}};
  SoundSession opened(file, Load::kTablesOnly);
  ASSERT_TRUE(open_with(opened, "FMI-limiter.txt", "{\nid=77\nlimiter=3000\npts_number=3\nthreshold=5000\n}\n"));
  EXPECT_EQ(names_of(opened.session()), (Names{"Engine", "FMI_Limiter"}));
  // From the third sample above the limit on, ten milliseconds each.
  EXPECT_EQ(opened.values(1)[51], 0.0F);
  EXPECT_NEAR(opened.values(1)[99], 0.48F, 1e-4F);
  EXPECT_EQ(count_of(opened.folder().read("FMI-output.txt"), "seconds over limiter for logger id 77"), 2U);
  // The exporter comes last, so that it knows what was added.
  ASSERT_TRUE(open_with(opened, "Exporter.txt", "ch=FMI_Limiter\nch=Engine\n"));
  EXPECT_TRUE(opened.folder().read("session.wmp.export.csv").starts_with("FMI_Limiter, Engine, "));
}

// --- Formulas

TEST(FormulaChannels, AreComputedAgainWithEachChannelThatIsAdded) {
  wmp::File file = shaft_file(0);
  file.derived = {formula_channel("Early", "Late + 1"), formula_channel("Late", "Engine * 2"),
                  formula_channel("Uses", "CVT * 2")};
  file.derived[2].gain = 2;
  file.derived[2].offset = 1;
  SoundSession alone(file);
  EXPECT_EQ(alone.values(2), std::vector<float>(100, 1.0F)) << "what stands behind has no values yet";
  EXPECT_EQ(alone.values(3)[7], 6140.0F);
  EXPECT_EQ(alone.values(4), std::vector<float>(100, 1.0F)) << "0.0, and the channel's own offset";
  file.device_code = kGearedDevice;
  SoundSession again(file);
  EXPECT_EQ(again.values(2)[7], 6141.0F);
  EXPECT_EQ(again.values(4)[50], (3500.0F / 1350.0F * 2.0F) * 2.0F + 1.0F) << "gain and offset count once";
}

TEST(FormulaChannels, AChannelOfStepsStaysOnItsEarlierSample) {
  wmp::File file;
  file.logged = {plain_channel("Steps", {0, 10, 20}, k10Hz), plain_channel("Long", std::vector<u16>(40, 1), k100Hz)};
  file.derived = {formula_channel("Held", "Steps + 0")};
  Bytes bytes = wmp::build(file);
  bytes[wmp::first_channel_at(600) + 668 + 110] = 1;
  wmp::reseal_channel(&bytes, 0);
  OpenedSession opened(bytes);
  const std::vector<float> held = opened.values(2);
  ASSERT_EQ(held.size(), 40U);
  // Nothing behind the last sample.
  for (std::size_t i = 0; i < 40; ++i) EXPECT_EQ(held[i], i <= 20 ? static_cast<float>(i / 10 * 10) : 0.0F) << i;
}

TEST(DerivedChannels, WhatCannotBeComputedIsZero) {
  wmp::File file = shaft_file(0);
  file.derived = {formula_channel("Nobody's kind", "Engine"), formula_channel("Broken", "Engine +")};
  file.derived[0].kind = 99;
  // Kinds without their configuration file, and without a shaft that is logged.
  file.logged.pop_back();
  for (u16 kind = 4; kind <= 12; ++kind) file.derived.push_back(kind_channel("K" + std::to_string(kind), kind));
  file.derived.push_back(formula_channel("Shaft", "Engine"));
  file.derived.back().sensor = 77;
  SoundSession opened(file);
  EXPECT_EQ(opened.values(1), opened.values(0)) << "a kind that nobody knows is a formula";
  for (std::size_t i = 2; i < 12; ++i) EXPECT_EQ(opened.values(i), std::vector<float>(100, 0.0F)) << i;
  EXPECT_EQ(opened.folder().names(), (Names{"session.bak", "session.wmp"}));
}

// --- Definitions of the math manager

TEST(Definitions, AreEnteredUpdatedOrLeftAlone) {
  wmp::File file = shaft_file(0);
  file.derived = {kind_channel("EXISTS", 5), formula_channel("kept", "Shaft")};
  file.derived[0].parameters = {1, 2, 3, 4, 5};
  file.derived[0].function_id = 12;
  file.derived[0].second_function_id = 34;
  SoundSession opened(file, Load::kTablesOnly);
  std::filesystem::create_directory(opened.folder().path() / "MATHCHANNELS");
  const std::string name = (std::filesystem::path("MATHCHANNELS") / "ZEP_TWMATH_2.ZMC").string();
  ASSERT_TRUE(open_with(opened, name,
                        "traguardo math channels 1\n"
                        "channel Sum\nunit x\nenabled 1\nfrequency 5\nrange -1 5\nformula Engine + Shaft\n"
                        "description both\ndecimals 3\nfunction 7 8\nfilter 1024\n"
                        "channel Off\nenabled 0\nformula Engine\n"
                        "channel exists\nenabled 1\nupdate 1\nfrequency 2\nformula Engine / 2\n"
                        "channel Kept\nenabled 1\nformula Engine\n"));
  WmpSession& session = opened.session();
  EXPECT_EQ(names_of(session), (Names{"Engine", "Shaft", "exists", "kept", "Sum"}));

  EXPECT_EQ(session.tables.channels[2].record.formula(), "Engine / 2");
  EXPECT_EQ(session.tables.channels[2].record.computation_kind(), 0);
  EXPECT_EQ(session.tables.channels[2].record.parameters(), (std::array<float, 5>{}));
  EXPECT_EQ(std::pair(session.tables.function_id(2), session.tables.second_function_id(2)), std::pair(12U, 34U));
  EXPECT_EQ(opened.values(2), (std::vector<float>{1500, 1550, 1600, 1650, 1700, 1750, 1800, 1850, 1900, 1950}));

  EXPECT_EQ(opened.values(3), opened.values(1));

  const WmpChannelRecord& sum = session.tables.channels[4].record;
  EXPECT_EQ(sum.unit_text() + sum.second_formula(), "xboth");
  EXPECT_EQ(std::tuple(sum.origin(), sum.filter_word(), sum.display_minimum()), std::tuple(0U, 1024, -1.0F));
  EXPECT_EQ(session.tables.channels[4].extension.decimals(), 3);
  EXPECT_EQ(std::pair(session.tables.function_id(4), session.tables.second_function_id(4)), std::pair(7U, 8U));
  EXPECT_EQ(opened.values(4)[10], 3100.0F + 1070.0F);
}

SMathChannel definition_of(const std::string& name, u16 channel_class, bool candidate) {
  SMathChannel definition;
  definition.name = name;
  definition.formula = "Engine";
  definition.channel_class = channel_class;
  definition.frequency_code = k100Hz;
  definition.flags[0] = candidate ? 1 : 0;
  return definition;
}

TEST(Definitions, CandidatesBecomeTheReference) {
  SoundSession opened(shaft_file(0));
  WmpSession& session = opened.session();
  ASSERT_EQ(session.tables.header.reference_speed(), -1);
  ASSERT_TRUE(add_definition(session, definition_of("Plain", kSpeedClass, false), 0));
  EXPECT_EQ(session.tables.header.reference_speed(), -1) << "no candidate";
  ASSERT_TRUE(add_definition(session, definition_of("Fast", kSpeedClass, true), 0));
  EXPECT_EQ(session.tables.header.reference_speed(), 3);
  // About 3500 km/h for a second; the table was made again when the values had come.
  EXPECT_NEAR(session.distances.at(1000), 970.0F, 10.0F);
  ASSERT_TRUE(add_definition(session, definition_of("Other", 1, true), 0));
  EXPECT_EQ(session.tables.header.reference_speed(), 2) << "the first speed of the table";

  EXPECT_FALSE(delete_derived_channel(session, 1));
  EXPECT_FALSE(delete_derived_channel(session, 9));
  ASSERT_TRUE(delete_derived_channel(session, 2));
  EXPECT_EQ(session.tables.header.reference_speed(), -1);
  EXPECT_TRUE(session.distances.entries().empty());
  EXPECT_EQ(names_of(session), (Names{"Engine", "Shaft", "Fast", "Other"}));
  EXPECT_EQ(opened.values(3), opened.values(0));
  EXPECT_EQ(find_derived_channel(session.tables, "oTHER"), 3U);
  EXPECT_FALSE(find_derived_channel(session.tables, "Engine")) << "logged";
}

}  // namespace
}  // namespace traguardo::test
