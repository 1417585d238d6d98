// SPDX-License-Identifier: MIT
// A legacy session as the regulation calculators see it.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "regulation/session_view.h"

namespace traguardo {

struct WmpSession;

class RegulationView : public SessionView {
 public:
  // Borrowed, for the life of the object.
  explicit RegulationView(WmpSession* session) : session_(session) {}

  std::size_t channel_count() const override;
  SessionChannel channel(std::size_t index) const override;
  std::string channel_unit(std::size_t index) const override;
  std::span<float> output_samples(std::size_t index) override;
  std::vector<SessionRun> runs() const override;
  std::string racer() const override;
  std::string logger_id() const override;
  std::wstring session_file_name() const override;
  std::wstring session_path() const override;
  std::vector<std::wstring> input_paths() const override;
  std::wstring working_folder() const override;

 private:
  WmpSession* session_;
};

}  // namespace traguardo
