// SPDX-License-Identifier: MIT
// The reader of the .qlt family: it drives the walk and hands tags and bytes to who knows them: a ChannelTable, a
// FrameDecoder, a LapBook. header_tags.cpp takes the tags that describe the session, report.cpp and debug_tags.cpp
// leave behind what was seen.
#pragma once

#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "logger/channel_table.h"
#include "logger/frame_decoder.h"
#include "logger/input_file.h"
#include "logger/lap_book.h"
#include "logger/losses.h"
#include "logger/reader_clock.h"
#include "logger/tag_decoder.h"
#include "logger/walk_progress.h"
#include "model/parser.h"

namespace traguardo {

// What the reader leaves behind beside the session; all off for hosts.
struct LoggerReportOptions {
  bool measure_statistics = false;
  bool lap_statistics = false;
  bool gps_statistics = false;
  bool gps_samples = false;

  bool any() const { return measure_statistics || lap_statistics || gps_statistics || gps_samples; }
};

class CParserZep_2Gv4 : public CParser, public IExternalHelper {
 public:
  // Opens the file at once; ParsaFile reports if that failed. `expanded`: the file itself, where it lies under no name.
  CParserZep_2Gv4(const std::wstring& path, const LoggerReportOptions& options, platform::File expanded = {});
  ~CParserZep_2Gv4() override;

  bool ParsaFile(IProgress* progress) override;
  // ParsaFile shall give false: what the file was to be read from could not be made.
  void refuse(ParseFailure failure) {
    set_failure(failure);
    refused_ = true;
  }

  // --- IExternalHelper
  bool wants_bytes_of(const SAtomTag& tag) const override;
  bool OnTag(const SAtomTag& tag) override;
  u32 OnUntaggedBytes(u32 offset) override;

  // Names of tags whose payloads are wanted, each with the suffix of the file that they go to.
  void SetTagDiDebug(const std::map<std::string, std::string>& requests);
  // Channels to read; empty for all.
  void SetCanaliVoluti(std::set<std::string> names) { table_.set_wanted(std::move(names)); }

  // Looks through the stream once before it is read, so that a clock which all behind it contradict costs its own frame
  // and nothing else.
  void set_recover_clock(bool recover) { recover_clock_ = recover; }

  const Losses& losses() const { return decoder_.losses(); }
  // For those who look inside: what the walk refused. The chunk streams stay for as long as the reader.
  const ErrorList& errors_in_s() const { return decoder_.errors().s; }
  const ErrorList& errors_in_m() const { return decoder_.errors().m; }
  const ErrorList& errors_in_a() const { return decoder_.errors().a; }
  const ErrorList& errors_in_g() const { return decoder_.errors().g; }
  const ErrorList& errors_in_c() const { return decoder_.errors().c; }
  const ErrorList& errors_in_file() const { return decoder_.errors().file; }
  const std::map<u32, CanMsgAssembler>& assemblers() const { return decoder_.assemblers(); }
  const LoggerReportOptions& options() const { return options_; }
  const ChannelTable& table() const { return table_; }
  const std::vector<std::pair<std::string, std::string>>& ecu_info() const { return ecu_info_; }
  bool has_track_record() const { return has_track_record_; }
  const i32* track_reference() const { return track_reference_; }
  using CParser::traces;
  const SStatLap& lap_statistics() const { return laps_.statistics(); }

 private:
  // --- logger_parser.cpp
  bool find_wrong_clocks();
  bool Walk();
  void run_after_walk_steps();
  void hand_over_channels();
  // False if a store could not be brought to the disk.
  bool finish_stores();

  // --- header_tags.cpp
  // A tag that waits for the end of the walk.
  struct KeptTag {
    explicit KeptTag(const SAtomTag& tag) : name(tag.name), payload(tag.payload, tag.payload + tag.payloadSize) {}
    std::string name;
    std::vector<u8> payload;
  };
  bool is_header_tag(const SAtomTag& tag);
  void watch_clock_of(const SAtomTag& tag);
  void add_gps_tag(const SAtomTag& tag);
  void extract_date_and_time();
  void extract_idents(const std::vector<KeptTag>& tags, IdentMap* idents);
  void extract_ecu_info();

  // --- report.cpp, debug_tags.cpp
  void write_report(const std::wstring& path);
  void SalvaTagDiDebugSePresenti();
  void collect_debug_tag(const SAtomTag& tag);

  InputFile input_;
  u32 size_ = 0;
  bool refused_ = false;
  const LoggerReportOptions options_;
  WalkProgress walk_progress_{size_};

  u32 tag_count_ = 0;
  std::vector<KeptTag> time_tags_;
  std::vector<KeptTag> main_ident_tags_;
  std::vector<KeptTag> net_ident_tags_;
  std::vector<KeptTag> ecu_tags_;
  bool has_track_record_ = false;

  u64 first_time_ = 0;
  u64 known_end_ = 0;  // behind what the walk has been through
  bool recover_clock_ = false;
  ReaderClock clock_;
  LapBook laps_{this, &clock_.now()};
  ChannelTable table_{this, &laps_, &input_, size_, options_.measure_statistics};
  FrameDecoder decoder_{&input_, size_, &table_, &clock_, &walk_progress_};

  struct DebugTag {
    std::string suffix;
    std::vector<u8> payloads;
  };
  std::map<std::string, DebugTag> debug_tags_;
};

}  // namespace traguardo
