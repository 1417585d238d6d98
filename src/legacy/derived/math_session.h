// SPDX-License-Identifier: MIT
// A legacy session as the formula language sees it.
#pragma once

#include <cstddef>
#include <span>
#include <string_view>

#include "math/session_view.h"

namespace traguardo {

struct WmpSession;

class WmpMathSession : public IMathSession {
 public:
  // Borrowed; its channel table must not change while a formula is computed.
  explicit WmpMathSession(WmpSession* session) : session_(session) {}

  std::size_t channel_count() const override;
  std::string_view channel_name(std::size_t index) const override;
  u64 names_version() const override;
  std::string_view Formula(std::size_t target) const override;
  double period_ms(std::size_t target) const override;
  u32 frequency_hz(std::size_t target) const override;
  std::span<float> Samples(std::size_t target) override;
  std::size_t lap_count() const override;
  // Ends with the lap time, which a host doesn't see where there is a true one.
  SMathLap Lap(std::size_t index) const override;
  // A channel of steps stays on its earlier sample between two.
  void fill_input(std::size_t source, std::size_t target, std::size_t first, std::span<float> out) override;

 private:
  WmpSession* session_;
};

}  // namespace traguardo
