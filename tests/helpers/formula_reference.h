// SPDX-License-Identifier: MIT
// Random formulas out of the grammar, and a second way to compute them: a plain walk over the tree that the formula was
// written from, with operations by name and in single precision at the same places. The property test and the fuzzer
// hold the interpreter against it. Functions that need more than one pass or smoothed inputs (`gear`, `slip`, `bike_`)
// are left out; they are followed by hand in the tests of the interpreter.
#pragma once

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <iterator>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "helpers/math_session.h"

namespace traguardo::test {

// Where a generator takes its decisions from: a number below `bound`, which is above 0.
using Choices = std::function<u32(u32 bound)>;

struct FormulaNode {
  std::string what;  // A function's name, an operator, "number" or "channel".
  float number = 0.0F;
  std::size_t channel = 0;
  std::vector<FormulaNode> arguments;

  float memory = 0.0F;  // what the function remembers between samples
};

struct GeneratedFormula {
  std::string text;
  FormulaNode tree;
};

class FormulaGenerator {
 public:
  FormulaGenerator(Choices choices, std::vector<std::string> channels)
      : choices_(std::move(choices)), channels_(std::move(channels)) {}

  GeneratedFormula generate() {
    text_.clear();
    FormulaNode tree = expression(4);
    return {text_, std::move(tree)};
  }

 private:
  bool chance(u32 in) { return choices_(in) == in - 1; }
  void blank() {
    if (chance(6)) text_ += ' ';
  }
  void put(const std::string& text) {
    blank();
    text_ += text;
    blank();
  }
  static FormulaNode binary(std::string what, FormulaNode left, FormulaNode right) {
    FormulaNode node;
    node.what = std::move(what);
    node.arguments.push_back(std::move(left));
    node.arguments.push_back(std::move(right));
    return node;
  }
  static FormulaNode literal(float value) {
    FormulaNode node;
    node.what = "number";
    node.number = value;
    return node;
  }

  FormulaNode expression(int depth) { return chain(0, depth); }
  // Levels of precedence: sums, products, powers. The operands of a sum may carry a sign.
  FormulaNode chain(std::size_t level, int depth) {
    static const std::vector<std::string> kOperators[] = {{"-", "+"}, {"/", "*"}, {"^"}};
    if (level == std::size(kOperators)) return primary(depth);
    FormulaNode left = operand(level, depth);
    while (chance(static_cast<u32>(3 + 2 * level))) {
      const std::string sign = kOperators[level][choices_(static_cast<u32>(kOperators[level].size()))];
      put(sign);
      left = binary(sign, std::move(left), operand(level, depth));
    }
    return left;
  }
  FormulaNode operand(std::size_t level, int depth) {
    if (level > 0 || !chance(5)) return chain(level + 1, depth);
    put("-");
    return binary("*", chain(level + 1, depth), literal(-1.0F));
  }
  FormulaNode primary(int depth) {
    switch (choices_(depth > 0 ? 5 : 2)) {
      case 0:
        return number();
      case 1:
        return channel();
      case 2: {
        put("(");
        FormulaNode inner = expression(depth - 1);
        put(")");
        return inner;
      }
      default:
        return function(depth - 1);
    }
  }
  FormulaNode number() {
    static const char* const kTexts[] = {"0", "1", "2",    "0.5",   ".25",   "3.",       "10",         "100",
                                         "6", "7", "1500", "0.001", "9.806", "16777217", "4294967295", "0.1.2"};
    std::string text = kTexts[choices_(16)];
    if (chance(4)) text = std::to_string(choices_(100000)) + "." + std::to_string(choices_(100000));
    put(text);
    return literal(std::strtof(text.c_str(), nullptr));
  }
  FormulaNode channel() {
    FormulaNode node;
    node.what = "channel";
    node.channel = choices_(static_cast<u32>(channels_.size()));
    put(channels_[node.channel]);
    return node;
  }
  FormulaNode function(int depth) {
    struct Signature {
      const char* name;
      int parameters;
    };
    static const Signature kFunctions[] = {
        {"sqrt", 1},     {"exp", 1},       {"log", 1},     {"ln", 1},     {"sin", 1},     {"cos", 1},
        {"tan", 1},      {"asin", 1},      {"acos", 1},    {"atan", 1},   {"abs", 1},     {"deriv", 1},
        {"integ", 1},    {"lap_integ", 1}, {"min", 2},     {"med", 2},    {"max", 2},     {"high_pass", 2},
        {"low_pass", 2}, {"band_pass", 3}, {"bit_and", 2}, {"bit_or", 2}, {"bit_xor", 2}, {"time", 0},
        {"GT", 2},       {"GE", 2},        {"LT", 2},      {"LE", 2},     {"EQ", 2},      {"NE", 2},
        {"IF", 3},       {"atan2", 2}};
    const Signature& chosen = kFunctions[choices_(static_cast<u32>(std::size(kFunctions)))];
    FormulaNode node;
    node.what = chosen.name;
    put(chosen.name);
    put("(");
    for (int i = 0; i < chosen.parameters; ++i) {
      if (i > 0) put(",");
      node.arguments.push_back(expression(depth));
    }
    put(")");
    return node;
  }

  Choices choices_;
  std::vector<std::string> channels_;
  std::string text_;
};

// Metric units. Values of the target channel as the passes over the session should give them.
class FormulaReference {
 public:
  FormulaReference(FormulaNode& tree, const MemoryMathSession& session, std::size_t target)
      : tree_(tree), session_(session), target_(session.channels[target]) {}

  std::vector<float> compute() {
    step_ = static_cast<float>(target_.period_ms / 1000.0);
    load_inputs();
    std::vector<float> result(target_.samples.size());
    std::size_t lap = 0;
    for (index_ = 0; index_ < result.size(); ++index_) {
      const double time_ms = static_cast<double>(index_ + 1) * target_.period_ms;
      if (lap + 1 < session_.laps.size() && time_ms > session_.laps[lap].start_ms + session_.laps[lap].duration_ms) {
        ++lap;
        start_lap(tree_);
      }
      result[index_] = evaluate(tree_);
    }
    return result;
  }

 private:
  static void start_lap(FormulaNode& node) {
    for (FormulaNode& argument : node.arguments) start_lap(argument);
    if (node.what == "lap_integ" || node.what == "time") node.memory = 0.0F;
  }

  void load_inputs() {
    inputs_.clear();
    for (const MemoryMathSession::Channel& source : session_.channels) {
      std::vector<float> input(target_.samples.size(), 0.0F);
      for (std::size_t i = 0; i < input.size(); ++i) {
        const std::size_t time_ms = i * target_.period_ms;
        const std::size_t k = time_ms / source.period_ms;
        const std::size_t rest_ms = time_ms % source.period_ms;
        if (k >= source.samples.size() || (rest_ms > 0 && k + 1 >= source.samples.size())) continue;
        input[i] = source.samples[k];
        if (rest_ms == 0 && target_.period_ms == source.period_ms) continue;
        const float next = source.samples[std::min(k + 1, source.samples.size() - 1)];
        input[i] += (next - source.samples[k]) * (static_cast<float>(rest_ms) / static_cast<float>(source.period_ms));
      }
      inputs_.push_back(std::move(input));
    }
  }
  static u32 bits(float value) {
    if (!(std::fabs(value) < 9.2e18F)) return 0;
    return static_cast<u32>(static_cast<i64>(value));
  }

  float evaluate(FormulaNode& node) {
    if (node.what == "number") return node.number;
    if (node.what == "channel") return inputs_[node.channel][index_];
    std::vector<float> values;
    for (FormulaNode& argument : node.arguments) values.push_back(evaluate(argument));
    return apply(node, values);
  }

  float apply(FormulaNode& node, const std::vector<float>& v) {
    using Plain = std::function<float(const std::vector<float>&)>;
    static const auto in_double = [](double (*function)(double)) -> Plain {
      return
          [function](const std::vector<float>& x) { return static_cast<float>(function(static_cast<double>(x[0]))); };
    };
    static const std::map<std::string, Plain> kPlain = {
        {"+", [](const auto& x) { return x[0] + x[1]; }},
        {"-", [](const auto& x) { return x[0] - x[1]; }},
        {"*", [](const auto& x) { return x[0] * x[1]; }},
        {"/", [](const auto& x) { return x[1] != 0.0F ? x[0] / x[1] : 0.0F; }},
        {"^", [](const auto& x) { return std::pow(x[0], x[1]); }},
        {"sqrt", in_double(std::sqrt)},
        {"exp", in_double(std::exp)},
        {"log", in_double(std::log10)},
        {"ln", in_double(std::log)},
        {"sin", in_double(std::sin)},
        {"cos", in_double(std::cos)},
        {"tan", in_double(std::tan)},
        {"asin", in_double(std::asin)},
        {"acos", in_double(std::acos)},
        {"atan", in_double(std::atan)},
        {"abs", [](const auto& x) { return std::fabs(x[0]); }},
        {"min", [](const auto& x) { return x[0] < x[1] ? x[0] : x[1]; }},
        {"med", [](const auto& x) { return (x[0] + x[1]) * 0.5F; }},
        {"max", [](const auto& x) { return x[0] > x[1] ? x[0] : x[1]; }},
        {"high_pass", [](const auto& x) { return x[0] > x[1] ? x[0] : 0.0F; }},
        {"low_pass", [](const auto& x) { return x[0] < x[1] ? x[0] : 0.0F; }},
        {"band_pass", [](const auto& x) { return x[1] < x[0] && x[0] < x[2] ? x[0] : 0.0F; }},
        {"bit_and", [](const auto& x) { return static_cast<float>(bits(x[0]) & bits(x[1])); }},
        {"bit_or", [](const auto& x) { return static_cast<float>(bits(x[0]) | bits(x[1])); }},
        {"bit_xor", [](const auto& x) { return static_cast<float>(bits(x[0]) ^ bits(x[1])); }},
        {"GT", [](const auto& x) { return x[0] > x[1] ? 1.0F : 0.0F; }},
        {"GE", [](const auto& x) { return x[0] >= x[1] ? 1.0F : 0.0F; }},
        {"LT", [](const auto& x) { return x[0] < x[1] ? 1.0F : 0.0F; }},
        {"LE", [](const auto& x) { return x[0] <= x[1] ? 1.0F : 0.0F; }},
        {"EQ", [](const auto& x) { return x[0] == x[1] ? 1.0F : 0.0F; }},
        {"NE", [](const auto& x) { return x[0] == x[1] ? 0.0F : 1.0F; }},
        {"IF", [](const auto& x) { return x[0] == 0.0F ? x[2] : x[1]; }},
        {"atan2", [](const auto& x) { return std::atan2(x[1], x[0]); }},
    };
    if (const auto plain = kPlain.find(node.what); plain != kPlain.end()) return plain->second(v);
    if (node.what == "deriv") {
      const float before = std::exchange(node.memory, v[0]);
      return (v[0] - before) / step_;
    }
    if (node.what == "integ" || node.what == "lap_integ") return std::exchange(node.memory, node.memory + v[0] * step_);
    return std::exchange(node.memory, node.memory + step_);  // time
  }

  FormulaNode& tree_;
  const MemoryMathSession& session_;
  const MemoryMathSession::Channel& target_;
  std::vector<std::vector<float>> inputs_;
  float step_ = 0.0F;
  std::size_t index_ = 0;
};

// Equal bit for bit; a not-a-number equals any other.
inline bool same_value(float a, float b) {
  if (std::isnan(a) || std::isnan(b)) return std::isnan(a) && std::isnan(b);
  return std::bit_cast<u32>(a) == std::bit_cast<u32>(b);
}

// Channels with names that the language makes interesting, and samples of a drive: standing, revving, changing gears.
// The last one is the target.
inline MemoryMathSession random_math_session(const Choices& choices) {
  MemoryMathSession session;
  const u32 periods[] = {10, 20, 50, 100, 1000};
  const auto samples = [&choices](u32 scale, u32 offset) {
    std::vector<float> values(choices(90));
    u32 level = choices(scale + 1);
    for (float& value : values) {
      if (choices(8) == 0) level = choices(scale + 1);
      value = static_cast<float>(level) - static_cast<float>(offset) + static_cast<float>(choices(8)) * 0.125F;
    }
    return values;
  };
  session.add("Speed #1", periods[choices(5)], samples(300, 0));
  session.add("Engine", periods[choices(5)], samples(9000, 0));
  session.add("Lateral acc.", periods[choices(5)], samples(8, 4));
  session.add("_x1", periods[choices(5)], samples(100000, 50000));
  session.add("Result", periods[choices(5)], std::vector<float>(choices(120)));
  double start_ms = 0.0;
  for (u32 lap = choices(5); lap > 0; --lap) {
    const double duration_ms = choices(40) * 50;
    session.laps.push_back({start_ms, duration_ms});
    start_ms += duration_ms;
  }
  return session;
}

}  // namespace traguardo::test
