// SPDX-License-Identifier: MIT
// What a formula costs: nanoseconds per instruction of the interpreter, and whole channels through the manager.
//
//   bench_math --benchmark_counters_tabular=true
//
// per_instruction is to stay below 20 ns (50 million simple operations per second), ComputeChannel/ten_operations below
// 50 ms for an hour at 100 Hz.

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "math/filters.h"
#include "math/interpreter.h"
#include "math/math_channel_manager.h"
#include "math/math_parser.h"
#include "math/session_view.h"
#include "math/tokenizer.h"
#include "units/user_units_manager.h"

namespace traguardo {
namespace {

constexpr u32 kRateHz = 100;
constexpr std::size_t kHour = 3600 * kRateHz;

std::vector<float> wave(std::size_t count, float scale) {
  std::vector<float> values(count);
  for (std::size_t i = 0; i < count; ++i) values[i] = scale * (1.0F + static_cast<float>(i % 977) / 977.0F);
  return values;
}

// An hour of speed, engine and gyro, and the channel to compute.
class HourSession : public IMathSession {
 public:
  HourSession() : sources_{wave(kHour, 90.0F), wave(kHour, 5000.0F), wave(kHour, 20.0F)}, result_(kHour) {}

  std::size_t channel_count() const override { return 3; }
  std::string_view channel_name(std::size_t index) const override {
    constexpr std::string_view kNames[] = {"Speed #1", "Engine", "Gyro"};
    return kNames[index];
  }
  std::string_view Formula(std::size_t) const override { return {}; }
  double period_ms(std::size_t) const override { return 1000.0 / kRateHz; }
  u32 frequency_hz(std::size_t) const override { return kRateHz; }
  std::span<float> Samples(std::size_t) override { return result_; }
  std::size_t lap_count() const override { return 40; }
  SMathLap Lap(std::size_t index) const override { return {90'000.0 * static_cast<double>(index), 90'000.0}; }
  void fill_input(std::size_t source, std::size_t, std::size_t first, std::span<float> out) override {
    resample_linear(sources_[source], 1000 / kRateHz, 1000 / kRateHz, first, out);
  }

 private:
  std::vector<float> sources_[3];
  std::vector<float> result_;
};

std::size_t instruction_count(CMathParser& parser) {
  std::size_t count = 0;
  for (parser.Rewind(); parser.HasMore(); parser.Next()) ++count;
  return count;
}

void Instruction(benchmark::State& state, const std::string& formula) {
  CUserUnitsOfMeasureMgr units;
  CTokenizer tokenizer(254, "+-*/^(),. ", "_#", "+-*/^(),");
  CMathParser parser(tokenizer);
  CInterpreter interpreter(tokenizer, parser, units);
  tokenizer.AddSymbol(kTokenChannel, "a", 0);
  tokenizer.AddSymbol(kTokenChannel, "b", 1);
  i32 code = 0;
  u16 position = 0;
  u16 length = 0;
  if (!tokenizer.Tokenize(formula, &code, &position, &length) || !parser.Compile(&code, &position)) {
    state.SkipWithError("The formula doesn't compile");
    return;
  }
  interpreter.SetStackSize(128);
  interpreter.ResetState(true);
  interpreter.SetTimeStep(0.01F);
  const std::vector<float> a = wave(4096, 90.0F);
  const std::vector<float> b = wave(4096, 20.0F);
  const std::size_t instructions = instruction_count(parser);
  std::size_t i = 0;
  for (auto _ : state) {
    const InputCursor inputs[] = {{&a[i & 4095]}, {&b[i & 4095]}};
    float value = 0.0F;
    interpreter.Execute(0, inputs, &value);
    benchmark::DoNotOptimize(value);
    ++i;
  }
  const double executed = static_cast<double>(state.iterations()) * static_cast<double>(instructions);
  state.counters["instructions_per_second"] = benchmark::Counter(executed, benchmark::Counter::kIsRate);
  state.counters["per_instruction"] =
      benchmark::Counter(executed, benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void ComputeChannel(benchmark::State& state, const std::string& formula) {
  CUserUnitsOfMeasureMgr units;
  CGestMathChan manager(units, L"");
  HourSession session;
  for (auto _ : state) {
    if (!manager.compute_formula(formula, session, 3)) state.SkipWithError("The formula doesn't compile");
    benchmark::DoNotOptimize(session.Samples(3).data());
  }
  state.SetItemsProcessed(state.iterations() * static_cast<i64>(kHour));
}

void Filter(benchmark::State& state) {
  std::vector<float> values = wave(kHour, 90.0F);
  for (auto _ : state) {
    if (state.range(0) == 0) {
      CFiltri::FiltraFir(values.data(), values.size());
    } else {
      CFiltri::MediaMobile(values.data(), values.size(), static_cast<std::size_t>(state.range(0)));
    }
    benchmark::DoNotOptimize(values.data());
  }
  state.SetItemsProcessed(state.iterations() * static_cast<i64>(kHour));
}

BENCHMARK_CAPTURE(Instruction, one_operation, "a+b");
BENCHMARK_CAPTURE(Instruction, ten_operations, "(a+b)*2-a/3+(b-1)*(a*0.5+b)-a");
BENCHMARK_CAPTURE(Instruction, comparisons, "IF(GT(a,b),max(a,2),min(b,3))");
BENCHMARK_CAPTURE(Instruction, state_functions, "deriv(a)+integ(b)+lap_integ(a)+time()");
BENCHMARK_CAPTURE(Instruction, transcendental, "sin(a)+sqrt(b)");

BENCHMARK_CAPTURE(ComputeChannel, ten_operations, "(Speed #1+Engine)*2-Gyro/3+(Engine-1)*(Gyro*0.5+Speed #1)-Gyro")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(ComputeChannel, acceleration, "deriv(Speed #1*0.2777778)/9.806")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(ComputeChannel, slip, "slip(Engine,Speed #1)")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(ComputeChannel, gear, "gear(Engine,Speed #1,1,6)")->Unit(benchmark::kMillisecond);

// 0: the FIR filter; else the moving average of that half width.
BENCHMARK(Filter)->Arg(0)->Arg(3)->Arg(50)->Arg(500)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace traguardo

BENCHMARK_MAIN();
