// SPDX-License-Identifier: MIT
// One small function per formula: constants first, then one loop over the words. All of it is single precision unless
// it says otherwise, and keeps the order of the operations: powers first, then their coefficients, sums from left to
// right. The last bit of a value depends on it.
#include "legacy/sensors/sensor_formulas.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <optional>

#include "legacy/sensors/raw_word.h"
#include "legacy/sensors/sensor_curves.h"
#include "legacy/sensors/sensor_database.h"
#include "legacy/sensors/sensor_gears.h"

namespace traguardo {
namespace {

// Volts at the converter per count.
constexpr float kVoltsPerCount = 0.0012207031F;
constexpr float kMillivoltsPerCount = 1.2207031F;
// 12 bits of the converter, of which this is one part.
constexpr float kPartOfFullScale = 0.00024414063F;

template <typename ValueOfWord>
void convert_words(const FormulaCall& call, ValueOfWord value_of) {
  const u16* const raw = call.raw.data();
  float* const out = call.out.data();
  const std::size_t count = call.raw.size();
  if (call.sensor.conversion.tests_validity) {
    for (std::size_t i = 0; i < count; ++i) out[i] = is_value(raw[i]) ? value_of(raw[i]) : 0.0F;
  } else {
    for (std::size_t i = 0; i < count; ++i) out[i] = value_of(raw[i]);
  }
}

// Where the channel's calibration leaves no scale, every sample is the offset, the invalid ones too.
void fill_with_offset(const FormulaCall& call) {
  std::fill_n(call.out.begin(), call.raw.size(), call.o);
}

// A metric value in the user's unit, for the one system choice that the sensor listens to.
class UserSystem {
 public:
  explicit UserSystem(const FormulaCall& call)
      : fahrenheit_(call.sensor.conversion.choice == SystemChoice::kTemperature && call.imperial.imperial_temperature),
        psi_(call.sensor.conversion.choice == SystemChoice::kPressure && call.imperial.imperial_pressure),
        mph_(call.sensor.conversion.choice == SystemChoice::kSpeed && call.imperial.imperial_speed) {}

  float operator()(float value) const {
    if (fahrenheit_) return value * 9.0F / 5.0F + 32.0F;
    if (psi_) return value * 14.5039F;
    if (mph_) return value * 0.6213712F;
    return value;
  }

 private:
  bool fahrenheit_;
  bool psi_;
  bool mph_;
};

template <typename Row>
std::span<const Row> rows_of_sensor(std::span<const Row> rows, i32 sensor_id) {
  const auto is_of_sensor = [sensor_id](const Row& row) { return row.sensor_id == sensor_id; };
  const auto first = std::find_if(rows.begin(), rows.end(), is_of_sensor);
  const auto last = std::find_if_not(first, rows.end(), is_of_sensor);
  return {first, last};
}

void plain(const FormulaCall& call) {
  const float k = call.k;
  const float o = call.o;
  convert_words(call, [=](u16 word) { return unsigned_word(word) * k + o; });
}

// --- Pulses

// Nothing for a parameter that is no index of the table.
std::optional<float> pulse_ratio(float parameter) {
  const std::span<const float> ratios = pulse_ratios();
  if (!(parameter >= 0.0F && parameter <= static_cast<float>(ratios.size() - 1))) return std::nullopt;
  return ratios[static_cast<std::size_t>(parameter)];
}

void engine_pulses(const FormulaCall& call) {
  float k = call.k;
  const float o = call.o;
  const std::optional<float> logged = pulse_ratio(call.p[0]);
  const std::optional<float> current = pulse_ratio(call.p[3]);
  // A channel that was logged with an index beyond the table keeps its scale: there is no ratio to correct by.
  if (logged && current && call.p[2] == kRecalibrated) k = k * *logged / *current;
  convert_words(call, [=](u16 word) { return unsigned_word(word) * k + o; });
}

void wheel_speed(const FormulaCall& call) {
  float k = call.k;
  const float o = call.o;
  const auto& p = call.p;
  if (p[4] > 0.0F && p[3] > 0.0F && p[2] == kRecalibrated) k = k * (p[1] / p[4]) * (p[3] / p[0]);
  k = UserSystem(call)(k);
  convert_words(call, [=](u16 word) { return unsigned_word(word) / 10.0F * k + o; });
}

void shaft_pulses(const FormulaCall& call) {
  float k = call.k;
  const float o = call.o;
  const auto& p = call.p;
  if (p[2] == kRecalibrated) k = p[4] == 0.0F ? 0.0F : k * p[1] / p[4];
  convert_words(call, [=](u16 word) { return signed_word(word) * k + o; });
}

// --- Lines through the user's points

void counted_span(const FormulaCall& call) {
  const float zero = call.p[0];
  const float k = call.k;
  const float o = call.o;
  float width = call.p[2] - call.p[0];
  if (call.p[1] != 0.0F) width = width / call.p[1];
  if (width == 0.0F) return fill_with_offset(call);
  convert_words(call, [=](u16 word) { return (signed_word(word) - zero) * k / width + o; });
}

void two_sided_span(const FormulaCall& call) {
  const float zero = call.p[0];
  const float bottom_width = call.p[1] - zero;
  const float bottom_value = call.p[2];
  const float top_width = call.p[3] - zero;
  const float top_value = call.p[4];
  const float k = call.k;
  const float o = call.o;
  convert_words(call, [=](u16 word) {
    const float above_zero = signed_word(word) - zero;
    const bool on_top_side = (above_zero > 0.0F && top_width > 0.0F) || (above_zero < 0.0F && top_width < 0.0F);
    const float width = on_top_side ? top_width : bottom_width;
    const float value = width == 0.0F ? 0.0F : above_zero / width * (on_top_side ? top_value : bottom_value);
    return value * k + o;
  });
}

void two_point_line(const FormulaCall& call) {
  const auto& p = call.p;
  if (p[2] == p[0]) return fill_with_offset(call);
  const float per_count = call.sensor.conversion.constant;
  const float slope = (p[3] - p[1]) / (p[2] - p[0]);
  const float level = p[1] - slope * p[0];
  const float k = call.k;
  const float o = call.o;
  convert_words(call, [=](u16 word) { return (signed_word(word) * per_count * slope + level) * k + o; });
}

void multiplier(const FormulaCall& call) {
  const float factor = call.p[0];
  const float k = call.k;
  const float o = call.o;
  convert_words(call, [=](u16 word) { return signed_word(word) * factor * k + o; });
}

void potentiometer(const FormulaCall& call) {
  const auto& p = call.p;
  if (p[2] == 0.0F) return fill_with_offset(call);
  const float zero = p[0];
  const float scale = p[1] / p[2] * call.k;
  const float o = call.o;
  convert_words(call, [=](u16 word) { return (signed_word(word) - zero) * scale + o; });
}

void unsigned_range(const FormulaCall& call) {
  const float low = call.p[0];
  const float step = (call.p[1] - call.p[0]) / 65535.0F;
  const float k = call.k;
  const float o = call.o;
  convert_words(call, [=](u16 word) { return (unsigned_word(word) * step + low) * k + o; });
}

void user_polynomial(const FormulaCall& call) {
  const float p0 = call.p[0];
  const float p1 = call.p[1];
  const float p2 = call.p[2];
  const float p3 = call.p[3];
  const float p4 = call.p[4];
  const float k = call.k;
  const float o = call.o;
  convert_words(call, [=](u16 word) {
    const float m = signed_word(word) * kMillivoltsPerCount;
    return (m * p1 + p0 + m * m * p2 + m * m * m * p3 + m * m * m * m * p4) * k + o;
  });
}

// --- Accelerations and rotations

constexpr float kCountsPerG = 437.0F;

void acceleration(const FormulaCall& call) {
  const float zero = call.p[0];
  const float k = call.k;
  const float o = call.o;
  convert_words(call, [=](u16 word) { return (signed_word(word) - zero) * k / kCountsPerG + o; });
}

void reversed_acceleration(const FormulaCall& call) {
  const float zero = call.p[0];
  const float k = call.k;
  const float o = call.o;
  convert_words(call, [=](u16 word) { return o - (signed_word(word) - zero) * k / kCountsPerG; });
}

void gyro(const FormulaCall& call) {
  const float zero = call.p[0];
  const float scale = call.k * kVoltsPerCount / 0.028082998F;
  const float o = call.o;
  convert_words(call, [=](u16 word) { return (signed_word(word) - zero) * scale + o; });
}

// --- Polynomials in volts

float polynomial(const WordPolynomialRow& row, float v) {
  return v * row.c1 + row.c0 + v * v * row.c2 + v * v * v * row.c3 + v * v * v * v * row.c4;
}

void piecewise_lambda(const FormulaCall& call) {
  const std::span<const WordPolynomialRow> pieces = rows_of_sensor(word_polynomials(), call.sensor.id);
  const float k = call.k;
  const float o = call.o;
  convert_words(call, [=](u16 word) {
    const float m = signed_word(word) * kVoltsPerCount * 1000.0F;
    std::size_t piece = 0;
    while (piece + 1 < pieces.size() && m >= pieces[piece].below) ++piece;
    return polynomial(pieces[piece], m) * k + o;
  });
}

void volts_polynomial(const FormulaCall& call) {
  const WordPolynomialRow row = rows_of_sensor(word_polynomials(), call.sensor.id).front();
  const UserSystem user(call);
  const float k = call.k;
  const float o = call.o;
  convert_words(call, [=](u16 word) { return user(polynomial(row, signed_word(word) * kVoltsPerCount)) * k + o; });
}

// The whole row in double precision; only the result is single.
void double_polynomial(const FormulaCall& call) {
  const std::span<const DoublePolynomialRow> pieces = rows_of_sensor(double_polynomials(), call.sensor.id);
  const double k = static_cast<double>(call.k);
  const double o = static_cast<double>(call.o);
  convert_words(call, [=](u16 word) {
    const double r = static_cast<double>(signed_word(word)) * 0.001220703125;
    std::size_t piece = 0;
    while (piece + 1 < pieces.size() && r > pieces[piece].up_to) ++piece;
    const DoublePolynomialRow& row = pieces[piece];
    const double value = r * row.c1 + row.c0 + r * r * row.c2 + r * r * r * row.c3;
    return static_cast<float>(value * k + o);
  });
}

// --- Speeds, temperatures and voltages of one kind each

void pitot_tube(const FormulaCall& call) {
  const auto& p = call.p;
  if (p[2] == p[0]) return fill_with_offset(call);
  const UserSystem user(call);
  const float zero = p[0];
  const float pressure = p[1];
  const float width = p[2] - p[0];
  const float o = call.o;
  const float speed_at_one = user(p[3] * 50.399998F * call.k);
  const float slowest = user(15.0F * call.k);
  convert_words(call, [=](u16 word) {
    const float ratio = (signed_word(word) - zero) * pressure / width;
    const double positive = ratio > 0.0F ? static_cast<double>(ratio) : 0.0;
    const float speed = static_cast<float>(std::sqrt(positive)) * speed_at_one;
    return (speed < slowest ? 0.0F : speed) + o;
  });
}

void cold_junction(const FormulaCall& call) {
  const UserSystem user(call);
  const float k = call.k;
  const float o = call.o;
  convert_words(call, [=](u16 word) { return user((signed_word(word) - 2173.0F) * 0.125F - 10.0F) * k + o; });
}

void offset_temperature(const FormulaCall& call) {
  const UserSystem user(call);
  const float k = call.k;
  const float o = call.o;
  convert_words(call, [=](u16 word) { return user((1040.0F - signed_word(word)) / 4.9152F + 25.0F) * k + o; });
}

void temperature_word(const FormulaCall& call) {
  const UserSystem user(call);
  const float counts_per_degree = call.sensor.conversion.constant;
  const float k = call.k;
  const float o = call.o;
  convert_words(call, [=](u16 word) { return user(signed_word(word) / counts_per_degree) * k + o; });
}

void battery_wide(const FormulaCall& call) {
  const float scale = call.k * 22.5F * kPartOfFullScale;
  const float o = call.o;
  convert_words(call, [=](u16 word) { return signed_word(word) * scale + o; });
}

void battery_narrow(const FormulaCall& call) {
  const float k = call.k;
  const float o = call.o;
  convert_words(call, [=](u16 word) { return signed_word(word) * kPartOfFullScale * 12.25F * k + o; });
}

// --- Curves

// A thermocouple's curve is that of its positive side; the other side mirrors it.
void thermocouple(const FormulaCall& call) {
  const SensorCurveRow& curve = call.data_base.curve(call.sensor.conversion.curve);
  const UserSystem user(call);
  const float k = call.k;
  const float o = call.o;
  convert_words(call, [=, &curve](u16 word) {
    const float x = signed_word(word);
    const float sign = x < 0.0F ? -1.0F : 1.0F;
    return user(sign * curve_value(curve, std::fabs(x))) * k + o;
  });
}

void curve_by_divisor(const FormulaCall& call) {
  const SensorCurveRow& curve = call.data_base.curve(call.sensor.conversion.curve);
  const UserSystem user(call);
  const float divisor = call.sensor.conversion.constant;
  const float k = call.k;
  const float o = call.o;
  convert_words(call, [=, &curve](u16 word) { return user(curve_value(curve, signed_word(word)) / divisor) * k + o; });
}

void curve_by_scale(const FormulaCall& call) {
  const SensorCurveRow& curve = call.data_base.curve(call.sensor.conversion.curve);
  const float scale = UserSystem(call)(call.k * 0.001F);
  const float o = call.o;
  convert_words(call, [=, &curve](u16 word) { return curve_value(curve, signed_word(word)) * scale + o; });
}

// --- Which function runs a formula

struct FormulaFunction {
  SensorFormula formula;
  void (*run)(const FormulaCall& call);
};

constexpr FormulaFunction kFormulaFunctions[] = {
    {SensorFormula::kPlain, plain},
    {SensorFormula::kEnginePulses, engine_pulses},
    {SensorFormula::kWheelSpeed, wheel_speed},
    {SensorFormula::kThermocouple, thermocouple},
    {SensorFormula::kSpan, counted_span},
    {SensorFormula::kTwoSidedSpan, two_sided_span},
    {SensorFormula::kAcceleration, acceleration},
    {SensorFormula::kReversedAcceleration, reversed_acceleration},
    {SensorFormula::kPiecewiseLambda, piecewise_lambda},
    {SensorFormula::kTwoPointLine, two_point_line},
    {SensorFormula::kMultiplier, multiplier},
    {SensorFormula::kPotentiometer, potentiometer},
    {SensorFormula::kPitotTube, pitot_tube},
    {SensorFormula::kGyro, gyro},
    {SensorFormula::kColdJunction, cold_junction},
    {SensorFormula::kVoltsPolynomial, volts_polynomial},
    {SensorFormula::kDoublePolynomial, double_polynomial},
    {SensorFormula::kUnsignedWord, plain},
    {SensorFormula::kBatteryWide, battery_wide},
    {SensorFormula::kOffsetTemperature, offset_temperature},
    {SensorFormula::kBatteryNarrow, battery_narrow},
    {SensorFormula::kShaftPulses, shaft_pulses},
    {SensorFormula::kCurve, curve_by_divisor},
    {SensorFormula::kCurveByScale, curve_by_scale},
    {SensorFormula::kUserPolynomial, user_polynomial},
    {SensorFormula::kGearByThresholds, convert_gear_by_thresholds},
    {SensorFormula::kTemperatureWord, temperature_word},
    {SensorFormula::kGearByNearest, convert_gear_by_nearest},
    {SensorFormula::kRange, unsigned_range},
};

// The table is indexed by the formula.
constexpr bool stands_in_order() {
  for (std::size_t i = 0; i < std::size(kFormulaFunctions); ++i) {
    if (static_cast<std::size_t>(kFormulaFunctions[i].formula) != i) return false;
  }
  return std::size(kFormulaFunctions) == static_cast<std::size_t>(SensorFormula::kRange) + 1;
}
static_assert(stands_in_order());

}  // namespace

void run_sensor_formula(const FormulaCall& call) {
  kFormulaFunctions[static_cast<std::size_t>(call.sensor.conversion.formula)].run(call);
}

}  // namespace traguardo
