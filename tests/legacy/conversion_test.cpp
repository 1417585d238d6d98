// The steps of the chain from raw words to a host's values, each on plain arrays.
#include <gtest/gtest.h>

#include <algorithm>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include "legacy/sensors/sample_conversion.h"

namespace traguardo {
namespace {

using Values = std::vector<float>;

TEST(SampleConversion, StoredUnits) {
  constexpr SystemChoices kMetric{};
  constexpr SystemChoices kImperial{true, true, true};
  constexpr SystemChoices kImperialSpeed{true, false, false};
  constexpr SystemChoices kImperialTemperature{false, true, false};
  constexpr SystemChoices kImperialPressure{false, false, true};
  // The stored unit, the target that the user wants, the user's systems, a value before and after.
  const std::tuple<std::string_view, std::string_view, SystemChoices, float, float> cases[] = {
      {"C", "\260F", kMetric, 21.5F, 0x1.1accccp+6F},
      {"\260C", "", kImperialTemperature, 100.0F, 212.0F},
      {"\260C", "", kImperialSpeed, 100.0F, 100.0F},
      {"\260F", "", kMetric, 70.0F, 0x1.51c71cp+4F},
      {"mm", "", kImperialSpeed, 100.0F, 0x1.f7efep+1F},
      {"mV", "V", kMetric, 5000.0F, 5000.0F * 0.001F},
      {"km/h", "", kImperialSpeed, 90.0F, 0x1.bf6324p+5F},
      {"km/h", "", kImperialPressure, 90.0F, 90.0F},
      {"psi", "mbar", kMetric, 100.0F, 0x1.aeeb28p+12F},
      {"mbar", "", kImperialPressure, 2000.0F, 0x1.d01ff2p+4F},
      {"UKgal", "l", kMetric, 2.0F, 0x1.22f338p+3F},
      {"deg/s", "rpm", kMetric, 3.0F, 0x1.00015p-1F},
      // Only whole texts name a unit or a target.
      {"bars", "", kImperial, 2.0F, 2.0F},
  };
  for (const auto& [unit, wanted, choices, value, converted] : cases) {
    Values values = {value, 0.0F};
    const StoredUnitRuleRow* rule = find_stored_unit_rule(unit, wanted, choices);
    if (rule != nullptr) apply_stored_unit_rule(*rule, values);
    EXPECT_EQ(values[0], converted) << unit << " to " << wanted;
  }
}

TEST(SampleConversion, ColdJunctionAddsTheTemperatureOfItsTime) {
  const Values junction = {20, 21, 22};
  struct Case {
    const char* what;
    u32 period_ms;
    u32 duration_ms;
    float zero;
    Values expected;
  };
  const Case cases[] = {
      {"each temperature holds for its period", 500, 10000, 0, {120, 220, 321, 421, 522}},
      {"ends with the session", 500, 1500, 0, {120, 220, 321, 400, 500}},
      {"less the offset that the thermocouple has already", 500, 10000, 32, {88, 188, 289, 389, 490}},
      {"ends with the junction's values", 1000, 10000, 0, {120, 221, 322, 400, 500}},
  };
  for (const Case& c : cases) {
    Values values = {100, 200, 300, 400, 500};
    add_cold_junction(values, c.period_ms, junction, 1000, c.duration_ms, c.zero);
    EXPECT_EQ(values, c.expected) << c.what;
  }
  // The time of sample 134218 is the first one at or behind the longest duration; it doesn't wrap around to 0.
  Values slow(140000, 0.0F);
  add_cold_junction(slow, 32000, Values(140000, 1.0F), 32000, 0xFFFFFFFF, 0.0F);
  EXPECT_EQ(std::count(slow.begin(), slow.end(), 1.0F), 134218);
}

// `count` times `value`.
Values run(std::size_t count, float value) {
  return Values(count, value);
}
Values operator+(Values a, const Values& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}
// From 1, a step of 1 a sample: no two are equal.
Values rising(std::size_t count) {
  Values values(count);
  for (std::size_t i = 0; i < count; ++i) values[i] = static_cast<float>(i + 1);
  return values;
}

TEST(FlatRuns, BecomeRamps) {
  Values ramp_of_25 = run(7, 10);
  // Samples 6 to 24 are the 19 that fall short of a window of 20; 38 lies two a sample above.
  for (int j = 1; j <= 18; ++j) ramp_of_25.push_back(10.0F + 2.0F * static_cast<float>(j));
  struct Case {
    const char* what;
    u32 period_ms;
    Values before;
    Values after;
  };
  const Case cases[] = {
      {"three and the value behind", 100, Values{10, 10, 10, 16} + rising(30), Values{10, 12, 14, 16} + rising(30)},
      {"a longer run keeps its head", 100, run(25, 10) + Values{48} + rising(30), ramp_of_25 + Values{48} + rising(30)},
      {"the last start that counts", 100, Values{2, 3, 5, 5, 8} + rising(18), Values{2, 3, 5, 6.5F, 8} + rising(18)},
      {"the first that doesn't", 100, Values{2, 3, 4, 5, 5, 8} + rising(17), Values{2, 3, 4, 5, 5, 8} + rising(17)},
      {"a window of samples is too few", 100, Values{5, 5, 8} + rising(17), Values{5, 5, 8} + rising(17)},
      {"one more is enough", 100, Values{5, 5, 8} + rising(18), Values{5, 6.5F, 8} + rising(18)},
      {"at 2 Hz runs of up to three", 500, Values{5, 5, 8} + run(4, 9) + Values{12, 13, 14, 15, 16},
       Values{5, 6.5F, 8, 9, 9, 10, 11} + Values{12, 13, 14, 15, 16}},
  };
  for (const Case& c : cases) {
    Values values = c.before;
    repair_flat_runs(values, c.period_ms);
    EXPECT_EQ(values, c.after) << c.what;
  }
}

TEST(SampleConversion, SmoothingPassesOfAFilterWord) {
  const std::pair<u16, i32> cases[] = {{0, 0},      {1, 1},      {10, 10},    {11, 0},     {15, 0},
                                       {16, 0},     {31, 0},     {0x21, 1},   {0x8001, 1}, {0x0401, 0},
                                       {0x040A, 0}, {0xFBE2, 2}, {0xFFE2, 0}, {0x03EA, 10}};
  for (const auto& [word, passes] : cases) EXPECT_EQ(smoothing_passes(word), passes) << word;
}

TEST(SampleConversion, Statistics) {
  struct Case {
    const char* what;
    Values values;
    bool bounded;
    float minimum;
    float mean;
    float maximum;
  };
  const Case cases[] = {
      {"plain", {2, -1, 3, 0}, false, -1.0F, 1.0F, 3.0F},
      // The minimum of what is above 0; the sum of 2, -1 and 0, over all four.
      {"bounded", {2, -1, 3, 0}, true, 2.0F, 0.25F, 3.0F},
      {"no values, bounded", {}, true, 0.0F, 0.0F, 0.0F},
  };
  for (const Case& c : cases) {
    const ValueStatistics found = value_statistics(c.values, c.bounded);
    EXPECT_EQ(std::tuple(found.minimum, found.mean, found.maximum), std::tuple(c.minimum, c.mean, c.maximum)) << c.what;
  }
}

}  // namespace
}  // namespace traguardo
