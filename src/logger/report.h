// SPDX-License-Identifier: MIT
// The diagnostics report of one parsed file: its tables, counters and error lists as plain text.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "gps/gps_record.h"
#include "gps/gps_statistics.h"
#include "logger/channel_descriptor.h"
#include "logger/mark_times.h"
#include "logger/report_text.h"
#include "logger/sample_statistics.h"
#include "model/rk_parser.h"

namespace traguardo {

class CParserZep_2Gv4;

// One function per section, in the order of the text. Every section opens with a line end: it ends the line that the
// section before it left open, and is a blank line otherwise.
class ParseReport {
 public:
  // The reader is borrowed, at the end of its parse.
  ParseReport(CParserZep_2Gv4* reader, std::wstring path) : reader_(*reader), path_(std::move(path)) {}

  // Replaces what stands at the path, if the reader was asked for any report. A report that can't be written is left
  // out.
  void Write();

 private:
  void Idents();
  void idents_of(const IdentMap& idents, std::string_view first_label);
  void Ident(const SIdentRecord& record, std::string_view label);
  void Version(std::string_view label, const u8* version);
  void Tables();
  void descriptor_section(std::string_view title, const std::map<u16, std::unique_ptr<ChannelDescriptor>>& table);
  void channel_row(u16 key, const CCanaleQLT& channel);
  void chunk_streams();
  void ecu_information();
  void user_information();
  void track_information();
  void track_record();
  void channel_rates();
  void channel_counters(const SStatMisura& statistics);
  void frame_errors();
  void Laps();
  void gps_statistics(const SStatGPS& statistics);
  void gps_listing(const std::vector<SGpsRecord>& records, const MarkTimes& marks);
  void gps_line(const SGpsRecord& record, const SGpsRecord& before);

  void title(std::string_view title) { text_.line_end().Text(title).line_end(); }
  void Line(std::string_view label, std::string_view text) { text_.Text(label).Text(text).line_end(); }
  void count_line(std::string_view label, u64 count, u64 total) {
    text_.Text(label).Number(count).percentage(count, total).line_end();
  }
  template <typename Offset>
  void offset_line(const std::vector<Offset>& offsets);

  // Sends what is composed to the disk once it is large: a row of a table can be a hundred times as long as the two
  // bytes of the file that ask for it.
  void spill_when_large();
  void spill();

  CParserZep_2Gv4& reader_;
  const std::wstring path_;
  ReportText text_;
  bool is_begun_ = false;
  bool is_writable_ = true;
};

}  // namespace traguardo
