// SPDX-License-Identifier: MIT
// Runs the code of a formula once per sample on a stack of 32-bit floats, and keeps what functions remember from sample
// to sample. One thread at a time.
#pragma once

#include <array>
#include <span>
#include <vector>

#include "support/bytes.h"

namespace traguardo {

class CMathParser;
class CTokenizer;
class IUserUnitOfMeasureManager;

// The sample under the cursor of one input slot.
struct InputCursor {
  const float* sample;
};

class CInterpreter {
 public:
  // More occurrences of one family of functions than a formula can hold.
  static constexpr std::size_t kSlotCount = 50;

  // Borrows all three for its life; the units are asked for their factors at every call of a `bike_` function.
  CInterpreter(const CTokenizer& tokenizer, CMathParser& parser, const IUserUnitOfMeasureManager& units);

  // The only memory that it takes: do this once per pass, not per sample. The stack is empty afterwards.
  void SetStackSize(std::size_t count);
  // At the start of each pass; first_pass also clears what `slip` and `gear` carry from pass to pass.
  void ResetState(bool first_pass);
  // At each new lap: what `lap_integ` and `time` have summed up.
  void ResetLap();
  void SetTimeStep(float seconds) { time_step_ = seconds; }
  void SetSampleIndex(u32 index) { sample_index_ = index; }

  // One walk of the code. inputs: by the slot numbers in the code. False if the stack ran empty or over, which code of
  // the parser doesn't do; `value` is then the top of the stack, 0.0 if there is none.
  bool Execute(u16 pass, std::span<const InputCursor> inputs, float* value);
  // Between the second and the third pass of a `gear` formula.
  void ComputeGearCentres();

  bool Push(float value) {
    if (top_ == stack_.size()) return false;
    stack_[top_++] = value;
    return true;
  }
  bool Pop(float* value) {
    if (top_ == 0) return false;
    *value = stack_[--top_];
    return true;
  }

 private:
  static constexpr std::size_t kBinCount = 50;
  static constexpr std::size_t kGearCount = 10;

  // One family of functions: a slot for each occurrence in the formula, in the order in which the code reaches them.
  template <typename Slot>
  struct Family {
    std::array<Slot, kSlotCount> slots{};
    std::size_t next = 0;

    Slot* take() { return next < kSlotCount ? &slots[next++] : nullptr; }
    void reset() { slots.fill(Slot{}); }
  };
  struct GearSlot {
    i32 lowest_gear = 0;
    i32 highest_gear = 0;
    float lowest_ratio = 1e20F;
    float highest_ratio = -1e20F;
    std::array<u32, kBinCount> histogram{};
    std::array<float, kGearCount> centres{};
  };

  void rewind_slots();
  // False if the stack doesn't allow an instruction or there is no such slot, input or function.
  bool walk(std::span<const u8> code, std::span<const InputCursor> inputs);
  bool call(u8 opcode);
  bool call_unary(u8 opcode);
  bool call_binary(u8 opcode);
  bool call_integral(Family<float>& family);
  bool call_deriv();
  bool call_time();
  bool call_band_pass();
  bool call_if();
  bool call_slip();
  bool call_gear();
  float gear_number(const GearSlot& slot, float ratio) const;
  static void find_centres(GearSlot& slot);
  bool pop_two(float* first, float* second);
  float lateral_acceleration(float speed, float gyro) const;
  float cornering_radius(float speed, float gyro) const;
  float lean_angle(float speed, float gyro) const;

  const CTokenizer& tokenizer_;
  CMathParser& parser_;
  const IUserUnitOfMeasureManager& units_;
  std::vector<float> stack_;
  std::size_t top_ = 0;
  float time_step_ = 0.0F;
  u16 pass_ = 0;
  u32 sample_index_ = 0;

  Family<float> deriv_;      // The previous input.
  Family<float> integ_;      // The sum so far.
  Family<float> lap_integ_;  // The sum so far in this lap.
  Family<float> time_;       // Seconds so far in this lap.
  Family<float> slip_;       // The mean ratio.
  Family<GearSlot> gear_;
};

}  // namespace traguardo
