// SPDX-License-Identifier: MIT
// A logger file from its bytes to its reader, in a folder of its own.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "helpers/temp_folder.h"
#include "helpers/wire.h"
#include "logger/logger_parser.h"
#include "model/parsed_channel.h"

namespace traguardo::test {

struct StoredSample {
  u64 time;  // microseconds
  float value;
  bool operator==(const StoredSample&) const = default;
};
inline std::ostream& operator<<(std::ostream& out, const StoredSample& sample) {
  return out << "{" << sample.time << ", " << sample.value << "}";
}

class ParsedSession {
 public:
  explicit ParsedSession(const Bytes& bytes, const LoggerReportOptions& options = {}, IProgress* progress = nullptr,
                         bool recover_clock = false) {
    folder_.write("a.qlt", bytes);
    reader_ = std::make_unique<CParserZep_2Gv4>(folder_.wide("a.qlt"), options);
    reader_->SetMantieniCostanti(false);
    reader_->set_recover_clock(recover_clock);
    good_ = reader_->ParsaFile(progress);
  }

  bool good() const { return good_; }
  CParserZep_2Gv4& reader() { return *reader_; }
  const TempFolder& folder() const { return folder_; }
  void close() { reader_.reset(); }

  std::vector<std::string> channel_names() const {
    std::vector<std::string> names;
    for (const auto& channel : reader_->GetCanali()) names.push_back(channel->GetNome());
    return names;
  }
  CParsedChannel* channel(const std::string& name) const {
    for (const auto& channel : reader_->GetCanali()) {
      if (channel->GetNome() == name) return static_cast<CParsedChannel*>(channel.get());
    }
    return nullptr;
  }
  std::vector<StoredSample> samples(const std::string& name) const {
    CParsedChannel* found = channel(name);
    if (found == nullptr) return {};
    std::vector<SChannelRecord> records(static_cast<std::size_t>(found->GetNumValori()));
    found->GetRecord(records.data(), records.size());
    std::vector<StoredSample> samples;
    for (const SChannelRecord& record : records) samples.push_back({record.time(), record.value()});
    return samples;
  }

 private:
  TempFolder folder_;
  std::unique_ptr<CParserZep_2Gv4> reader_;
  bool good_ = false;
};

}  // namespace traguardo::test
