// SPDX-License-Identifier: MIT
// Any session as the regulation calculators see it: they were made for the older family, whose channels have even
// rates, and work here on the merged view of whatever file a person chose.
//
// A logged channel stands on an even grid at its own mean rate, to whole milliseconds, from the start of the file on.
//
// A run is a session with laps: from the start of its first lap, over the start of its last lap less that, plus the
// last lap's time, under the session's number. A file without any lap is one run, number 1, over its whole length.
#pragma once

#include <functional>
#include <span>
#include <string>
#include <vector>

#include "inside.h"
#include "regulation/session_view.h"

namespace traguardo::tool {

class MergedSession : public SessionView {
 public:
  // session: borrowed, for the life of the object. working_folder: without a trailing slash. wanted: whether the
  // samples of a channel are brought into memory; the others are known by name alone, so that a long session of many
  // channels stays where it is. Throws Failure for times that no grid can hold.
  MergedSession(const Session& session, std::wstring working_folder,
                const std::function<bool(const std::string& name)>& wanted);

  // A channel for a calculator to fill, behind the logged ones; its place. Every sample is not-a-number until then, and
  // it is as long as the file and the logged samples warrant.
  std::size_t add_output(const std::string& name, u32 period_ms);

  // --- SessionView
  std::size_t channel_count() const override { return rows_.size(); }
  SessionChannel channel(std::size_t index) const override;
  std::string channel_unit(std::size_t index) const override { return rows_[index].unit; }
  std::span<float> output_samples(std::size_t index) override { return rows_[index].samples; }
  std::vector<SessionRun> runs() const override;
  std::string racer() const override { return file_.view->GetNomePilota(); }
  // The ID of the first device that identified itself as the logger, 0 without one.
  std::string logger_id() const override;
  std::wstring session_file_name() const override;
  std::wstring session_path() const override;
  std::vector<std::wstring> input_paths() const override;
  std::wstring working_folder() const override { return working_folder_; }

 private:
  struct Row {
    std::string name;
    std::string unit;
    u32 period_ms = 1000;
    u32 frequency_hz = 1;
    std::vector<float> samples;
  };

  void fill(CSuperChannel& channel, Row* row) const;

  const SFileQLT& file_;
  std::wstring working_folder_;
  std::vector<Row> rows_;
};

// The samples of a channel that lie in a run.
std::span<const float> samples_in(const SessionChannel& channel, const SessionRun& run);

}  // namespace traguardo::tool
