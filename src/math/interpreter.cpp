// SPDX-License-Identifier: MIT
#include "math/interpreter.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "math/math_parser.h"
#include "math/tokenizer.h"
#include "units/user_units_manager.h"

namespace traguardo {
namespace {

// Results are compared bit for bit: operations stand in their order, in single precision, with these very constants.
constexpr float kFullTurnRadians = 6.28F;  // Not 2 pi: kept as it always was.
constexpr float kFullTurnDegrees = 360.0F;
constexpr float kGravity = 9.806F;
constexpr double kLargestLeanDegrees = 70.0;
constexpr float kSlipLowestRpm = 100.0F;
constexpr float kSlipLowestSpeed = 0.1F;
constexpr float kGearLowestRpm = 1500.0F;
constexpr float kGearLowestSpeed = 7.0F;

using UnaryFunction = double (*)(double);
// By opcode from kOpSqrt to kOpAbs; in double precision, narrowed afterwards.
constexpr UnaryFunction kUnaryFunctions[] = {
    [](double x) { return std::sqrt(x); },   // sqrt
    [](double x) { return std::exp(x); },    // exp
    [](double x) { return std::log10(x); },  // log
    [](double x) { return std::log(x); },    // ln
    [](double x) { return std::sin(x); },    // sin
    [](double x) { return std::cos(x); },    // cos
    [](double x) { return std::tan(x); },    // tan
    [](double x) { return std::asin(x); },   // asin
    [](double x) { return std::acos(x); },   // acos
    [](double x) { return std::atan(x); },   // atan
    [](double x) { return std::fabs(x); },   // abs
};

float truth(bool value) {
  return value ? 1.0F : 0.0F;
}

// The interpreter's stack while a walk of the code works on it.
struct LocalStack {
  float* values;
  std::size_t capacity;
  std::size_t top;

  bool push(float value) {
    if (top == capacity) return false;
    values[top++] = value;
    return true;
  }
  template <typename Operation>
  bool combine(Operation operation) {
    if (top < 2) {
      top = 0;
      return false;
    }
    --top;
    values[top - 1] = operation(values[top - 1], values[top]);
    return true;
  }
};

}  // namespace

CInterpreter::CInterpreter(const CTokenizer& tokenizer, CMathParser& parser, const IUserUnitOfMeasureManager& units)
    : tokenizer_(tokenizer), parser_(parser), units_(units) {}

void CInterpreter::SetStackSize(std::size_t count) {
  stack_.assign(count, 0.0F);
  top_ = 0;
}

void CInterpreter::ResetState(bool first_pass) {
  deriv_.reset();
  integ_.reset();
  ResetLap();
  if (!first_pass) return;
  slip_.reset();
  gear_.reset();
}

void CInterpreter::ResetLap() {
  lap_integ_.reset();
  time_.reset();
}

void CInterpreter::rewind_slots() {
  deriv_.next = 0;
  integ_.next = 0;
  lap_integ_.next = 0;
  time_.next = 0;
  slip_.next = 0;
  gear_.next = 0;
}

bool CInterpreter::Execute(u16 pass, std::span<const InputCursor> inputs, float* value) {
  pass_ = pass;
  rewind_slots();
  parser_.Rewind();
  if (walk(parser_.Code(), inputs) && Pop(value)) return true;
  *value = top_ > 0 ? stack_[top_ - 1] : 0.0F;
  return false;
}

// Every sample goes through this loop once per formula, so it is written for speed. The stack's top is a local
// variable, which the compiler keeps in a register; only a call of a function needs it in top_. And each case adds the
// length of its own instruction, as a constant: if one statement behind the switch looked the length up, the processor
// could not fetch the next instruction before it has looked at this one's opcode. Code of the parser holds whole
// instructions, so that none reads beyond the end.
bool CInterpreter::walk(std::span<const u8> code, std::span<const InputCursor> inputs) {
  LocalStack stack{stack_.data(), stack_.size(), top_};
  const u8* at = code.data();
  const u8* const end = at + code.size();
  bool good = true;
  while (good && at < end) {
    const Instruction instruction{at};
    const u8 opcode = instruction.opcode();
    if (opcode >= kOpcodeCount) break;
    switch (opcode) {
      case kOpNumber:
        at += kOpcodeLengths[kOpNumber];
        good = stack.push(instruction.number());
        break;
      case kOpConstant:
        at += kOpcodeLengths[kOpConstant];
        good = instruction.index() < tokenizer_.constant_count() &&
               stack.push(tokenizer_.constant_value(instruction.index()));
        break;
      case kOpOtherSymbol:
      case kOpChannel:
      case kOpMathChannel:
        at += kOpcodeLengths[kOpMathChannel];
        good = instruction.index() < inputs.size() && stack.push(*inputs[instruction.index()].sample);
        break;
      case kOpAdd:
        at += kOpcodeLengths[kOpAdd];
        good = stack.combine([](float a, float b) { return a + b; });
        break;
      case kOpSubtract:
        at += kOpcodeLengths[kOpSubtract];
        good = stack.combine([](float a, float b) { return a - b; });
        break;
      case kOpMultiply:
        at += kOpcodeLengths[kOpMultiply];
        good = stack.combine([](float a, float b) { return a * b; });
        break;
      case kOpDivide:
        at += kOpcodeLengths[kOpDivide];
        good = stack.combine([](float a, float b) { return b == 0.0F ? 0.0F : a / b; });
        break;
      case kOpPower:
        at += kOpcodeLengths[kOpPower];
        good = stack.combine([](float a, float b) { return std::pow(a, b); });
        break;
      default:
        at += kOpcodeLengths[kOpSqrt];
        top_ = stack.top;
        good = call(opcode);
        stack.top = top_;
        break;
    }
  }
  top_ = stack.top;
  return good;
}

bool CInterpreter::pop_two(float* first, float* second) {
  if (top_ < 2) {
    top_ = 0;
    return false;
  }
  *second = stack_[--top_];
  *first = stack_[--top_];
  return true;
}

bool CInterpreter::call(u8 opcode) {
  if (opcode <= kOpAbs) return call_unary(opcode);
  switch (opcode) {
    case kOpDeriv:
      return call_deriv();
    case kOpInteg:
      return call_integral(integ_);
    case kOpLapInteg:
      return call_integral(lap_integ_);
    case kOpBandPass:
      return call_band_pass();
    case kOpTime:
      return call_time();
    case kOpGear:
      return call_gear();
    case kOpSlip:
      return call_slip();
    case kOpIf:
      return call_if();
    default:
      return call_binary(opcode);
  }
}

bool CInterpreter::call_unary(u8 opcode) {
  float x = 0.0F;
  if (!Pop(&x)) return false;
  return Push(static_cast<float>(kUnaryFunctions[opcode - kOpSqrt](static_cast<double>(x))));
}

bool CInterpreter::call_binary(u8 opcode) {
  float a = 0.0F;
  float b = 0.0F;
  if (!pop_two(&a, &b)) return false;
  switch (opcode) {
    case kOpMin:
      return Push(a < b ? a : b);
    case kOpMed:
      return Push((a + b) * 0.5F);
    case kOpMax:
      return Push(a > b ? a : b);
    case kOpHighPass:
      return Push(a > b ? a : 0.0F);
    case kOpLowPass:
      return Push(b > a ? a : 0.0F);
    case kOpBitAnd:
      return Push(static_cast<float>(truncate_to_u32(a) & truncate_to_u32(b)));
    case kOpBitOr:
      return Push(static_cast<float>(truncate_to_u32(a) | truncate_to_u32(b)));
    case kOpBitXor:
      return Push(static_cast<float>(truncate_to_u32(a) ^ truncate_to_u32(b)));
    case kOpBikeAngle:
      return Push(lean_angle(a, b));
    case kOpBikeAccLat:
      return Push(lateral_acceleration(a, b));
    case kOpBikeCornRad:
      return Push(cornering_radius(a, b));
    case kOpGreater:
      return Push(truth(a > b));
    case kOpGreaterEqual:
      return Push(truth(a >= b));
    case kOpLower:
      return Push(truth(a < b));
    case kOpLowerEqual:
      return Push(truth(a <= b));
    case kOpEqual:
      return Push(truth(a == b));
    case kOpNotEqual:
      return Push(truth(a != b));
    case kOpAtan2:
      return Push(std::atan2(b, a));  // The second parameter is the ordinate.
    default:
      return false;
  }
}

bool CInterpreter::call_deriv() {
  float x = 0.0F;
  float* previous = deriv_.take();
  if (previous == nullptr || !Pop(&x)) return false;
  const float slope = (x - *previous) / time_step_;
  *previous = x;
  return Push(slope);
}

// The result lags the sum by one sample.
bool CInterpreter::call_integral(Family<float>& family) {
  float x = 0.0F;
  float* sum = family.take();
  if (sum == nullptr || !Pop(&x)) return false;
  const float before = *sum;
  *sum = before + x * time_step_;
  return Push(before);
}

bool CInterpreter::call_time() {
  float* seconds = time_.take();
  if (seconds == nullptr) return false;
  const float before = *seconds;
  *seconds = before + time_step_;
  return Push(before);
}

bool CInterpreter::call_band_pass() {
  float x = 0.0F;
  float low = 0.0F;
  float high = 0.0F;
  if (!Pop(&high) || !pop_two(&x, &low)) return false;
  return Push(x > low && high > x ? x : 0.0F);
}

bool CInterpreter::call_if() {
  float condition = 0.0F;
  float if_true = 0.0F;
  float if_false = 0.0F;
  if (!Pop(&if_false) || !pop_two(&condition, &if_true)) return false;
  return Push(condition == 0.0F ? if_false : if_true);
}

float CInterpreter::lateral_acceleration(float speed, float gyro) const {
  const float speed_factor = static_cast<float>(units_.GetSpeedFactor());
  return (gyro * kFullTurnRadians / kFullTurnDegrees) * (speed / speed_factor) / kGravity;
}

float CInterpreter::cornering_radius(float speed, float gyro) const {
  const float speed_factor = static_cast<float>(units_.GetSpeedFactor());
  const float length_factor = static_cast<float>(units_.GetLengthFactor());
  return (speed / speed_factor) / (gyro * kFullTurnRadians / kFullTurnDegrees) / length_factor;
}

// The curve is in double precision, over powers in single precision.
float CInterpreter::lean_angle(float speed, float gyro) const {
  const float u = std::atan(lateral_acceleration(speed, gyro)) * kFullTurnDegrees / kFullTurnRadians;
  const float p = std::fabs(u);
  const auto power = [p](float exponent) { return static_cast<double>(std::pow(p, exponent)); };
  const double y = 2.339e-7 * power(5.0F) - 5.105e-5 * power(4.0F) + 0.003449 * power(3.0F) - 0.06548 * power(2.0F) +
                   0.6076 * static_cast<double>(p);
  double angle = u > 0.0F ? y : -y;
  if (angle > kLargestLeanDegrees) angle = kLargestLeanDegrees;
  if (angle < -kLargestLeanDegrees) angle = -kLargestLeanDegrees;
  return static_cast<float>(angle);
}

// Pass 0 finds the mean ratio over all samples, zeros included; later passes divide by it.
bool CInterpreter::call_slip() {
  float rpm = 0.0F;
  float speed = 0.0F;
  float* mean = slip_.take();
  if (mean == nullptr || !pop_two(&rpm, &speed)) return false;
  if (pass_ == 0) {
    const float ratio = rpm > kSlipLowestRpm && speed > kSlipLowestSpeed ? rpm / speed : 0.0F;
    const float count = static_cast<float>(u64{sample_index_} + 1);
    *mean = (static_cast<float>(sample_index_) * *mean + ratio) / count;
    return Push(ratio);
  }
  return Push(speed > kSlipLowestSpeed && *mean > 0.0F ? rpm / speed / *mean : 0.0F);
}

// Pass 0 finds the range of the ratio, pass 1 how often each stretch of it occurs, pass 2 tells the gear.
bool CInterpreter::call_gear() {
  float rpm = 0.0F;
  float speed = 0.0F;
  float lowest_gear = 0.0F;
  float highest_gear = 0.0F;
  GearSlot* slot = gear_.take();
  if (slot == nullptr || !pop_two(&lowest_gear, &highest_gear) || !pop_two(&rpm, &speed)) return false;
  const float ratio = rpm > kGearLowestRpm && speed > kGearLowestSpeed ? speed / rpm : 0.0F;
  if (pass_ == 0) {
    slot->lowest_ratio = std::min(slot->lowest_ratio, ratio);
    slot->highest_ratio = std::max(slot->highest_ratio, ratio);
    slot->lowest_gear = truncate_to<i32>(lowest_gear);
    slot->highest_gear = truncate_to<i32>(highest_gear);
    return Push(ratio);
  }
  if (pass_ == 1) {
    const float place = (ratio - slot->lowest_ratio) / (slot->highest_ratio - slot->lowest_ratio) * 50.0F;
    const i32 bin = truncate_to<i32>(place);
    // The highest ratio itself falls behind the last bin, and isn't counted.
    if (bin >= 0 && bin < static_cast<i32>(kBinCount)) ++slot->histogram[static_cast<std::size_t>(bin)];
    return Push(ratio);
  }
  return Push(gear_number(*slot, ratio));
}

float CInterpreter::gear_number(const GearSlot& slot, float ratio) const {
  const i64 steps = std::min<i64>(i64{slot.highest_gear} - slot.lowest_gear, kGearCount - 1);
  i64 passed = 0;
  while (passed < steps) {
    const std::size_t k = static_cast<std::size_t>(passed);
    if ((slot.centres[k] + slot.centres[k + 1]) / 2.0F > ratio) break;
    ++passed;
  }
  return static_cast<float>(slot.lowest_gear + passed);
}

void CInterpreter::ComputeGearCentres() {
  for (GearSlot& slot : gear_.slots) find_centres(slot);
}

void CInterpreter::find_centres(GearSlot& slot) {
  std::array<u32, kBinCount>& bins = slot.histogram;
  // Bin 0 holds the samples without a ratio. Of the others only peaks stay, of a plateau its last bin.
  bins[0] = 0;
  for (std::size_t i = 0; i + 1 < kBinCount; ++i) {
    if (bins[i] <= bins[i + 1]) bins[i] = 0;
  }
  for (std::size_t i = kBinCount - 1; i > 0; --i) {
    if (bins[i] <= bins[i - 1]) bins[i] = 0;
  }

  // The highest peaks, one by one. The count of a chosen bin, raised by one, becomes the limit below which the next is
  // looked for: a second peak of the same height stays eligible, the chosen one doesn't. Without a peak it is bin 0.
  const i64 gears = std::clamp<i64>(i64{slot.highest_gear} - slot.lowest_gear + 1, 0, kGearCount);
  std::array<std::size_t, kGearCount> chosen{};
  u32 limit = std::numeric_limits<u32>::max();
  for (std::size_t pick = 0; pick < static_cast<std::size_t>(gears); ++pick) {
    std::size_t best = 0;
    for (std::size_t i = 1; i < kBinCount; ++i) {
      if (bins[i] > bins[best] && bins[i] < limit) best = i;
    }
    limit = ++bins[best];
    chosen[pick] = best;
  }
  std::sort(chosen.begin(), chosen.begin() + gears);

  for (std::size_t i = 0; i < kGearCount; ++i) {
    slot.centres[i] =
        (slot.highest_ratio - slot.lowest_ratio) * (static_cast<float>(chosen[i]) + 0.5F) / 50.0F + slot.lowest_ratio;
  }
}

}  // namespace traguardo
