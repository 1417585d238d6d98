// SPDX-License-Identifier: MIT
// A session in memory for the formula language: its channels, the last of them usually the one to compute.
#pragma once

#include <string>
#include <vector>

#include "math/session_view.h"

namespace traguardo::test {

class MemoryMathSession : public IMathSession {
 public:
  struct Channel {
    std::string name;
    u32 period_ms = 100;
    std::vector<float> samples;
    std::string formula;
  };

  std::vector<Channel> channels;
  std::vector<SMathLap> laps;
  std::vector<std::size_t> filled;  // Sources that were asked for, in order.

  std::size_t add(std::string name, u32 period_ms, std::vector<float> samples, std::string formula = "") {
    channels.push_back({std::move(name), period_ms, std::move(samples), std::move(formula)});
    return channels.size() - 1;
  }

  std::size_t channel_count() const override { return channels.size(); }
  std::string_view channel_name(std::size_t index) const override { return channels[index].name; }
  std::string_view Formula(std::size_t target) const override { return channels[target].formula; }
  double period_ms(std::size_t target) const override { return channels[target].period_ms; }
  u32 frequency_hz(std::size_t target) const override { return 1000 / channels[target].period_ms; }
  std::span<float> Samples(std::size_t target) override { return channels[target].samples; }
  std::size_t lap_count() const override { return laps.size(); }
  SMathLap Lap(std::size_t index) const override { return laps[index]; }
  void fill_input(std::size_t source, std::size_t target, std::size_t first, std::span<float> out) override {
    filled.push_back(source);
    resample_linear(channels[source].samples, channels[source].period_ms, channels[target].period_ms, first, out);
  }
};

}  // namespace traguardo::test
