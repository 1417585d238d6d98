// SPDX-License-Identifier: MIT
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

}  // namespace
}  // namespace traguardo
