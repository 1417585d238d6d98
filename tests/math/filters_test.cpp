// SPDX-License-Identifier: MIT
#include "math/filters.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <random>
#include <tuple>
#include <vector>

#include "math/frequency_utils.h"

namespace traguardo {
namespace {

std::vector<float> noise(std::size_t count, u32 seed) {
  std::mt19937 random(seed);
  std::vector<float> values(count);
  for (float& value : values) value = static_cast<float>(random() % 20001) * 0.01F - 60.0F;
  return values;
}

void expect_same(const std::vector<float>& values, const std::vector<float>& expected) {
  ASSERT_EQ(values.size(), expected.size());
  for (std::size_t i = 0; i < values.size(); ++i) {
    ASSERT_EQ(values[i], expected[i]) << i;
  }
}

// Both halves of the filter written out: the sum itself and the search for its delay.
std::vector<float> fir_by_direct_sums(const std::vector<float>& v) {
  const float raw[] = {0.00424066F, 0.02649283F,  0.01765185F,  -0.07147145F, -0.03242356F, 0.3044619F, 0.53965306F,
                       0.3044619F,  -0.03242356F, -0.07147145F, 0.01765185F,  0.02649283F,  0.00424066F};
  const std::size_t n = v.size();
  std::vector<float> o = v;
  for (std::size_t i = 13; i < n; ++i) {
    o[i] = 0.0F;
    for (std::size_t j = 0; j <= 12; ++j) o[i] += raw[j] / 1.0375574F * v[i - j];
  }
  std::size_t shift = 0;
  float best = 0.0F;
  for (std::size_t s = 0; s <= 12; ++s) {
    float sum = 0.0F;
    for (std::size_t j = 0; j <= n - 14; ++j) sum += o[j + s] * v[j];
    if (sum > best) {
      best = sum;
      shift = s;
    }
  }
  for (std::size_t i = 0; i < n; ++i) o[i] = i + shift < n ? o[i + shift] : o[n - shift - 1];
  return o;
}

TEST(Filters, FirIsTheDirectSumMovedByItsDelay) {
  for (const std::size_t count : {15U, 16U, 27U, 300U}) {
    for (u32 seed = 0; seed < 8; ++seed) {
      std::vector<float> values = noise(count, seed);
      const std::vector<float> expected = fir_by_direct_sums(values);
      CFiltri::FiltraFir(values.data(), values.size());
      expect_same(values, expected);
    }
  }
}

TEST(Filters, FirLeavesShortChannelsAsTheyAre) {
  std::vector<float> shortest = noise(14, 1);
  const std::vector<float> before = shortest;
  CFiltri::FiltraFir(shortest.data(), shortest.size());
  expect_same(shortest, before);
}

TEST(Filters, MovingAverageIsTheMeanOfItsNeighbourhood) {
  const auto averaged = [](std::vector<float> values, std::size_t half_width) {
    CFiltri::MediaMobile(values.data(), values.size(), half_width);
    return values;
  };
  EXPECT_EQ(averaged({1, 5, 3, 7, 2}, 1), (std::vector<float>{1, 3, 5, 4, 2}));
  EXPECT_EQ(averaged({9, 1, 1, 9}, 3), (std::vector<float>{9, 1, 1, 9}));
  EXPECT_EQ(averaged({}, 0), std::vector<float>{});
  for (const std::size_t half_width : {0U, 1U, 2U, 7U, 50U}) {
    for (const std::size_t count : {1U, 3U, 17U, 33U, 101U, 102U, 400U}) {
      const std::vector<float> values = noise(count, static_cast<u32>(count + half_width));
      std::vector<float> expected = values;
      for (std::size_t i = half_width; count >= half_width + 2 && i + half_width < count; ++i) {
        float sum = 0.0F;
        for (std::size_t j = i - half_width; j <= i + half_width; ++j) sum += values[j];
        expected[i] = sum / static_cast<float>(2 * half_width + 1);
      }
      expect_same(averaged(values, half_width), expected);
    }
  }
}

TEST(Filters, GenericFiltersAddToWhatIsThere) {
  const float in[] = {1, 2, 3, 4, 5};
  const float b[] = {2, -1};
  const float a[] = {0, -0.5F};
  std::vector<float> out(5, 10.0F);
  CFiltri::FirGenerico(in, 5, out.data(), b, 2);
  expect_same(out, {1, 2, 14, 15, 16});  // 10 + 2 * 3 - 2, and so on.
  out.assign(5, 0.0F);
  CFiltri::IirGenerico(in, 5, out.data(), b, a, 2);
  expect_same(out, {1, 2, 5, 7.5F, 9.75F});  // 2 * 3 - 2 + 0.5 * 2, and so on.
}

// The squared gain of a Butterworth low pass is 1 / (1 + (tan(pi f / fs) / tan(pi fc / fs)) ^ (2 order)).
TEST(Filters, ButterworthHasItsFrequencyResponse) {
  constexpr double kRate = 100.0;
  for (const u32 order : {2U, 6U}) {
    for (const double cut_off : {5.0, 30.0}) {
      for (const double frequency : {1.0, 12.0, 40.0}) {
        constexpr std::size_t kCount = 2000;
        std::vector<float> values(kCount);
        const auto phase = [frequency](std::size_t i) {
          return 2.0 * std::numbers::pi * frequency / kRate * static_cast<double>(i);
        };
        for (std::size_t i = 0; i < kCount; ++i) values[i] = static_cast<float>(std::sin(phase(i)));
        CFiltri::PassaBasso(values.data(), kCount, static_cast<float>(kRate), static_cast<float>(cut_off), order);
        // Amplitude over whole periods, behind the transient.
        double in_phase = 0.0;
        double quadrature = 0.0;
        for (std::size_t i = 1000; i < kCount; ++i) {
          in_phase += static_cast<double>(values[i]) * std::sin(phase(i)) / 500.0;
          quadrature += static_cast<double>(values[i]) * std::cos(phase(i)) / 500.0;
        }
        const double ratio =
            std::tan(std::numbers::pi * frequency / kRate) / std::tan(std::numbers::pi * cut_off / kRate);
        const double gain = 1.0 / std::sqrt(1.0 + std::pow(ratio, 2.0 * order));
        EXPECT_NEAR(std::hypot(in_phase, quadrature), gain, 2e-4) << order << ' ' << cut_off << ' ' << frequency;
      }
    }
  }
}

TEST(FrequencyCodes, TheHighestRateThatIsNotAbove) {
  // Rate, whether there is one, code and period.
  const std::tuple<i16, bool, u16, u16> cases[] = {
      {-5, true, 10, 32000}, {3, true, 1, 500}, {5, true, 9, 200}, {999, true, 7, 2}, {1001, false, 65535, 0}};
  for (const auto& [hz, found, wanted_code, wanted_period_ms] : cases) {
    u16 code = 1;
    u16 period_ms = 1;
    EXPECT_EQ(CFreqUtils().find_rate(hz, &code, &period_ms), found) << hz;
    EXPECT_EQ(std::pair(code, period_ms), std::pair(wanted_code, wanted_period_ms)) << hz;
  }
}

}  // namespace
}  // namespace traguardo
