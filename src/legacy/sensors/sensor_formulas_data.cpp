// SPDX-License-Identifier: MIT
#include "legacy/sensors/sensor_formulas_data.h"

#include <limits>

namespace traguardo {
namespace {

constexpr float kNoLimit = std::numeric_limits<float>::infinity();
constexpr double kNoDoubleLimit = std::numeric_limits<double>::infinity();

// clang-format off
constexpr WordPolynomialRow kWordPolynomials[] = {
    // sensor_id, below, c0, c1, c2, c3, c4
    {12,   120.0f,    1.39803f, -0.00850618f,  4.44224e-5f,        0.0f,        0.0f},
    {12,   740.0f,   0.990601f, 0.000150707f, -2.59702e-7f,        0.0f,        0.0f},
    {12, kNoLimit,   -3.36867f,   0.0124237f, -8.88982e-6f,        0.0f,        0.0f},
    {52, kNoLimit, -0.3501648f,   1.4955662f,  -0.3378383f,  0.1146052f, -0.0105788f},
    {53, kNoLimit,  -0.399594f,     1.46812f,    0.544192f,  -0.150724f,   0.020045f},
    {55, kNoLimit,    125.782f,    -58.3649f,     8.83473f,  -0.104499f,        0.0f},
    {59, kNoLimit,   154.0259f,   -104.2671f,    46.17218f,  -9.889624f,     0.7854f},
    {60, kNoLimit,   184.6464f,   -139.0944f,    68.66177f,  -15.35789f,   1.223773f},
    {61, kNoLimit,   217.5816f,   -173.7124f,    100.0006f,  -25.64879f,   2.284663f},
    {89, kNoLimit, -0.1193169f,  0.48277232f,  -0.0135828f, 0.00542116f,        0.0f},
};

constexpr DoublePolynomialRow kDoublePolynomials[] = {
    // sensor_id, up_to, c0, c1, c2, c3
    {58,            3.0, -4.94241, 14.9778996,  -5.41755, 0.864796},
    {58, kNoDoubleLimit,  66.1258,   -29.3889, -0.393661,  1.48777},
};

constexpr float kPulseRatios[] = {
    1.0f,
    2.0f,
    3.0f,
    4.0f,
    6.0f,
    0.5f,
    5.0f,
};
// clang-format on

}  // namespace

std::span<const WordPolynomialRow> word_polynomials() {
  return kWordPolynomials;
}
std::span<const DoublePolynomialRow> double_polynomials() {
  return kDoublePolynomials;
}
std::span<const float> pulse_ratios() {
  return kPulseRatios;
}

}  // namespace traguardo
