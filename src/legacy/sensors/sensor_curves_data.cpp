// SPDX-License-Identifier: MIT
#include "legacy/sensors/sensor_curves_data.h"

namespace traguardo {
namespace {

// clang-format off
// raw, value
constexpr CurvePoint kCurve1[] = {
    {   0,    0},
    { 132,   40},
    { 268,   80},
    { 403,  120},
    { 667,  200},
    {1000,  300},
    {1343,  400},
    {1691,  500},
    {2040,  600},
    {2386,  700},
    {2726,  800},
    {3058,  900},
    {3381, 1000},
    {4001, 1200},
    {4293, 1300},
};

constexpr CurvePoint kCurve2[] = {
    {2071,   12},
    {1716,   21},
    {1392,   31},
    {1103,   41},
    { 848,   51},
    { 655,   61},
    { 511,   70},
    { 389,   80},
    { 338,   85},
    { 289,   91},
    { 263,   95},
    { 241,  100},
};

constexpr CurvePoint kCurve3[] = {
    {2200,   14},
    {1952,   20},
    {1730,   25},
    {1513,   30},
    {1147,   40},
    { 999,   45},
    { 856,   50},
    { 742,   55},
    { 634,   60},
    { 548,   65},
    { 471,   70},
    { 409,   75},
    { 353,   80},
    { 309,   85},
    { 268,   90},
};

constexpr CurvePoint kCurve4[] = {
    {2634,    0},
    {2195,   10},
    {1767,   20},
    {1568,   25},
    {1383,   30},
    {1062,   40},
    { 806,   50},
    { 608,   60},
    { 460,   70},
    { 350,   80},
};

constexpr CurvePoint kCurve5[] = {
    {1148,    0},
    {1673,   20},
    {2122,   40},
    {2572,   60},
    {2959,   80},
    {3321,  100},
};

constexpr CurvePoint kCurve6[] = {
    {3136,    0},
    {2989,   10},
    {2817,   20},
    {2579,   30},
    {2285,   40},
    {1990,   50},
    {1695,   60},
    {1399,   70},
    {1154,   80},
    { 927,   90},
    { 747,  100},
    { 675,  104},
};

constexpr CurvePoint kCurve7[] = {
    {1911,  544},
    {4058, 1039},
};

constexpr CurvePoint kCurve8[] = {
    {1320,   14},
    {1171,   20},
    {1038,   25},
    { 908,   30},
    { 688,   40},
    { 599,   45},
    { 513,   50},
    { 445,   55},
    { 380,   60},
    { 329,   65},
    { 282,   70},
    { 245,   75},
    { 212,   80},
    { 185,   85},
    { 161,   90},
};

constexpr CurvePoint kCurve9[] = {
    { 647,  -70},
    {3891,   70},
};

constexpr CurvePoint kCurve10[] = {
    { 724,  -70},
    {3620,   70},
};

constexpr SensorCurveRow kSensorCurves[] = {
    // number, rising, points
    { 1, true,  kCurve1},
    { 2, false, kCurve2},
    { 3, false, kCurve3},
    { 4, false, kCurve4},
    { 5, true,  kCurve5},
    { 6, false, kCurve6},
    { 7, true,  kCurve7},
    { 8, false, kCurve8},
    { 9, true,  kCurve9},
    {10, true,  kCurve10},
};
// clang-format on

}  // namespace

std::span<const SensorCurveRow> sensor_curves() {
  return kSensorCurves;
}

}  // namespace traguardo
