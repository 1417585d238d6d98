// Random formulas out of the grammar, and a second way to compute them: a plain walk over the tree that the formula was
// written from, with operations by name and in single precision at the same places. The property test and the fuzzer
// hold the interpreter against it.
#pragma once

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <limits>
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

  // What the function remembers between samples.
  float memory = 0.0F;
  float low = 1e20F;
  float high = -1e20F;
  i64 first_gear = 0;
  i64 last_gear = 0;
  std::vector<u32> bins = std::vector<u32>(50);
  std::vector<float> centres;
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

  FormulaNode expression(int depth) {
    FormulaNode left = signed_term(depth);
    while (chance(3)) {
      const std::string sign = chance(2) ? "+" : "-";
      put(sign);
      left = binary(sign, std::move(left), signed_term(depth));
    }
    return left;
  }
  FormulaNode signed_term(int depth) {
    if (!chance(5)) return term(depth);
    put("-");
    return binary("*", term(depth), literal(-1.0F));
  }
  FormulaNode term(int depth) {
    FormulaNode left = power(depth);
    while (chance(4)) {
      const std::string sign = chance(2) ? "*" : "/";
      put(sign);
      left = binary(sign, std::move(left), power(depth));
    }
    return left;
  }
  FormulaNode power(int depth) {
    FormulaNode left = primary(depth);
    while (chance(8)) {
      put("^");
      left = binary("^", std::move(left), primary(depth));
    }
    return left;
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
        {"sqrt", 1},     {"exp", 1},       {"log", 1},     {"ln", 1},         {"sin", 1},         {"cos", 1},
        {"tan", 1},      {"asin", 1},      {"acos", 1},    {"atan", 1},       {"abs", 1},         {"deriv", 1},
        {"integ", 1},    {"lap_integ", 1}, {"min", 2},     {"med", 2},        {"max", 2},         {"high_pass", 2},
        {"low_pass", 2}, {"band_pass", 3}, {"bit_and", 2}, {"bit_or", 2},     {"bit_xor", 2},     {"time", 0},
        {"gear", 4},     {"slip", 2},      {"GT", 2},      {"bike_angle", 2}, {"bike_acclat", 2}, {"bike_cornrad", 2},
        {"GE", 2},       {"LT", 2},        {"LE", 2},      {"EQ", 2},         {"NE", 2},          {"IF", 3},
        {"atan2", 2}};
    const Signature& chosen = kFunctions[choices_(37)];
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
    passes_ = passes_of(tree_);
    smooth_ = smooths(tree_);
    load_inputs();
    std::vector<float> result(target_.samples.size());
    for (pass_ = 0; pass_ < passes_; ++pass_) {
      if (pass_ == 2) each_node(tree_, [](FormulaNode& node) { find_centres(node); });
      each_node(tree_, [](FormulaNode& node) {
        if (node.what != "slip") node.memory = 0.0F;
      });
      if (smooth_) {
        for (std::vector<float>& input : inputs_) smooth_input(&input);
      }
      std::size_t lap = 0;
      for (index_ = 0; index_ < result.size(); ++index_) {
        const double time_ms = static_cast<double>(index_ + 1) * target_.period_ms;
        if (lap + 1 < session_.laps.size() && time_ms > session_.laps[lap].start_ms + session_.laps[lap].duration_ms) {
          ++lap;
          each_node(tree_, [](FormulaNode& node) {
            if (node.what == "lap_integ" || node.what == "time") node.memory = 0.0F;
          });
        }
        result[index_] = evaluate(tree_);
      }
    }
    return result;
  }

 private:
  static void each_node(FormulaNode& node, const std::function<void(FormulaNode&)>& action) {
    for (FormulaNode& argument : node.arguments) each_node(argument, action);
    action(node);
  }
  // Of `gear` and `slip` the one that the code reaches first decides: arguments come before their function.
  static int passes_of(FormulaNode& tree) {
    int passes = 1;
    each_node(tree, [&passes](FormulaNode& node) {
      if (passes == 1 && node.what == "gear") passes = 3;
      if (passes == 1 && node.what == "slip") passes = 2;
    });
    return passes;
  }
  static bool smooths(FormulaNode& tree) {
    bool found = false;
    each_node(tree, [&found](FormulaNode& node) {
      if (node.what == "gear" || node.what == "slip" || node.what.starts_with("bike_")) found = true;
    });
    return found;
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
  void smooth_input(std::vector<float>* input) const {
    const std::vector<float> raw = *input;
    const std::size_t half = 1000 / target_.period_ms / 2;
    for (std::size_t i = half; i + half < raw.size() && raw.size() >= half + 2; ++i) {
      float sum = 0.0F;
      for (std::size_t j = i - half; j <= i + half; ++j) sum += raw[j];
      (*input)[i] = sum / static_cast<float>(2 * half + 1);
    }
  }

  static u32 bits(float value) {
    if (!(std::fabs(value) < 9.2e18F)) return 0;
    return static_cast<u32>(static_cast<i64>(value));
  }
  static float acclat(float speed, float gyro) { return (gyro * 6.28F / 360.0F) * (speed / 3.6F) / 9.806F; }
  static float lean(float speed, float gyro) {
    const float u = std::atan(acclat(speed, gyro)) * 360.0F / 6.28F;
    const float p = std::fabs(u);
    double y = 2.339e-7 * static_cast<double>(std::pow(p, 5.0F));
    y -= 5.105e-5 * static_cast<double>(std::pow(p, 4.0F));
    y += 0.003449 * static_cast<double>(std::pow(p, 3.0F));
    y -= 0.06548 * static_cast<double>(std::pow(p, 2.0F));
    y += 0.6076 * static_cast<double>(p);
    if (!(u > 0.0F)) y = -y;
    return static_cast<float>(std::isnan(y) ? y : std::clamp(y, -70.0, 70.0));
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
        {"bike_angle", [](const auto& x) { return lean(x[0], x[1]); }},
        {"bike_acclat", [](const auto& x) { return acclat(x[0], x[1]); }},
        {"bike_cornrad", [](const auto& x) { return (x[0] / 3.6F) / (x[1] * 6.28F / 360.0F); }},
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
    if (node.what == "time") return std::exchange(node.memory, node.memory + step_);
    return node.what == "slip" ? slip(node, v[0], v[1]) : gear(node, v);
  }

  float slip(FormulaNode& node, float rpm, float speed) const {
    if (pass_ > 0) return speed > 0.1F && node.memory > 0.0F ? rpm / speed / node.memory : 0.0F;
    float ratio = 0.0F;
    if (rpm > 100.0F && speed > 0.1F) ratio = rpm / speed;
    node.memory = (static_cast<float>(index_) * node.memory + ratio) / static_cast<float>(index_ + 1);
    return ratio;
  }

  static i64 whole(float value) {
    return std::fabs(value) < 2147483648.0F ? static_cast<i64>(value) : std::numeric_limits<i32>::min();
  }

  float gear(FormulaNode& node, const std::vector<float>& v) const {
    float ratio = 0.0F;
    if (v[0] > 1500.0F && v[1] > 7.0F) ratio = v[1] / v[0];
    if (pass_ == 0) {
      if (ratio < node.low) node.low = ratio;
      if (ratio > node.high) node.high = ratio;
      node.first_gear = whole(v[2]);
      node.last_gear = whole(v[3]);
      return ratio;
    }
    if (pass_ == 1) {
      const float place = (ratio - node.low) / (node.high - node.low) * 50.0F;
      if (place > -1.0F && place < 50.0F) ++node.bins[static_cast<std::size_t>(std::max(place, 0.0F))];
      return ratio;
    }
    i64 number = node.first_gear;
    for (std::size_t k = 0; k < 9 && number < node.last_gear; ++k, ++number) {
      if ((node.centres[k] + node.centres[k + 1]) / 2.0F > ratio) break;
    }
    return static_cast<float>(number);
  }

  // A bin is a peak if it has samples, more than its right neighbour and no fewer than its left one; bin 0 never is.
  // The highest peaks, the lower bin first among equals, are the gears; bin 0 stands in for those that are missing.
  static void find_centres(FormulaNode& node) {
    if (node.what != "gear") return;
    struct Peak {
      std::size_t bin;
      u32 count;
    };
    std::vector<u32> counts = node.bins;
    counts[0] = 0;
    std::vector<Peak> peaks;
    for (std::size_t i = 1; i < 50; ++i) {
      const u32 right = i < 49 ? counts[i + 1] : 0;
      const bool tops_right = i == 49 || counts[i] > right;
      if (counts[i] > 0 && tops_right && counts[i - 1] <= counts[i]) peaks.push_back({i, counts[i]});
    }
    std::stable_sort(peaks.begin(), peaks.end(), [](const Peak& a, const Peak& b) { return a.count > b.count; });
    const i64 wanted = std::clamp<i64>(node.last_gear - node.first_gear + 1, 0, 10);
    std::vector<std::size_t> bins;
    for (std::size_t i = 0; i < static_cast<std::size_t>(wanted); ++i)
      bins.push_back(i < peaks.size() ? peaks[i].bin : 0);
    std::sort(bins.begin(), bins.end());
    bins.resize(10, 0);
    node.centres.clear();
    for (const std::size_t bin : bins) {
      node.centres.push_back((node.high - node.low) * (static_cast<float>(bin) + 0.5F) / 50.0F + node.low);
    }
  }

  FormulaNode& tree_;
  const MemoryMathSession& session_;
  const MemoryMathSession::Channel& target_;
  std::vector<std::vector<float>> inputs_;
  float step_ = 0.0F;
  int passes_ = 1;
  int pass_ = 0;
  bool smooth_ = false;
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
