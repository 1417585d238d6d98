// The reader of the .qlt family, cut by theme: logger_parser.cpp drives the parse, header_tags.cpp takes the
// tags that describe the session, channel_table.cpp builds the tables, data_stream.cpp and chunks.cpp decode what lies
// between the tags, lap_book.cpp turns marks into laps, report.cpp and debug_tags.cpp leave behind what was seen.
#pragma once

#include <limits>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "logger/channel_descriptor.h"
#include "logger/channel_names.h"
#include "logger/chunk_assembler.h"
#include "logger/clock_watch.h"
#include "logger/error_list.h"
#include "logger/input_file.h"
#include "logger/lap_book.h"
#include "logger/losses.h"
#include "logger/qlt_channel.h"
#include "logger/tag_decoder.h"
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
  bool WantsBytesOf(const SAtomTag& tag) const override;
  bool OnTag(const SAtomTag& tag) override;
  u32 OnUntaggedBytes(u32 offset) override;

  // Names of tags whose payloads are wanted, each with the suffix of the file that they go to.
  void SetTagDiDebug(const std::map<std::string, std::string>& requests);
  // Channels to read; empty for all.
  void SetCanaliVoluti(std::set<std::string> names) { wanted_channels_ = std::move(names); }

  // Looks through the stream once before it is read, so that a clock which all behind it contradict costs its own frame
  // and nothing else.
  void SetRecoverClock(bool recover) { recover_clock_ = recover; }

  const Losses& losses() const { return losses_; }
  // For those who look inside: what the walk refused. The chunk streams stay for as long as the reader.
  const ErrorList& errors_in_s() const { return errors_s_; }
  const ErrorList& errors_in_m() const { return errors_m_; }
  const ErrorList& errors_in_a() const { return errors_a_; }
  const ErrorList& errors_in_g() const { return errors_g_; }
  const ErrorList& errors_in_c() const { return errors_c_; }
  const ErrorList& errors_in_file() const { return errors_file_; }
  const std::map<u32, CanMsgAssembler>& assemblers() const { return assemblers_; }
  const SStatLap& lap_statistics() const { return laps_.statistics(); }

 private:
  // Shows what no getter has to hand out.
  friend class ParseReport;

  // --- logger_parser.cpp
  bool FindWrongClocks();
  bool Walk();
  void RunAfterWalkSteps();
  void HandOverChannels();
  // False if a store could not be brought to the disk.
  bool FinishStores();
  void DropTables();
  // Tells the sink how far the walk is; false when it wants to stop.
  bool ReportProgress(u64 position) { return progress_ == nullptr || TellSink(position); }
  bool TellSink(u64 position);
  void TellSinkTheEnd(bool good);

  // --- header_tags.cpp
  // A tag that waits for the end of the walk.
  struct KeptTag {
    explicit KeptTag(const SAtomTag& tag) : name(tag.name), payload(tag.payload, tag.payload + tag.payloadSize) {}
    std::string name;
    std::vector<u8> payload;
  };
  bool IsHeaderTag(const SAtomTag& tag);
  void WatchClockOf(const SAtomTag& tag);
  void AddGpsTag(const SAtomTag& tag);
  void ExtractDateAndTime();
  void ExtractIdents(const std::vector<KeptTag>& tags, IdentMap* idents);
  void ExtractEcuInfo();

  // --- channel_table.cpp
  bool TakeConfiguration(const SAtomTag& tag);
  bool GeneraMappeSCanale(const SAtomTag& configuration);
  void TakeDescriptors(const SAtomTag& configuration);
  enum class Entry { kTaken, kSkipped, kFailed };
  Entry TakeChannelRecord(const ChannelRecord& record, ChannelNames* names);
  std::unique_ptr<CCanaleQLT> KeptObject(const ChannelRecord& record);
  std::unique_ptr<CCanaleQLT> PacketObject(const ChannelRecord& record);
  bool GiveChannel(CCanaleQLT* object, const std::string& name);
  void SetProperties(CCanaleQLT* object, const std::string& name);
  void Enter(u16 index, std::unique_ptr<CCanaleQLT> object);
  void AssignConverters();
  void AssignConverter(CCanaleQLT* object);

  // --- data_stream.cpp
  struct Frame {
    const u8* at;  // the opening parenthesis; kLookAhead bytes follow, or all that are left
    u64 left;      // bytes from there to the end of the file, or of the buffer that it was rebuilt in
    u64 position;  // file offset that errors are reported under
    bool rebuilt;  // stands in a buffer of its own, not in the file
    u64 offset_of(const u8* bytes) const { return rebuilt ? position : position + static_cast<u64>(bytes - at); }
  };
  static constexpr u64 kLookAhead = 4096;
  u32 DecodeStretch(u32 offset);
  u32 PassGarbage(const u8* bytes, u64 at);
  u64 DecodePlainRun(const u8* bytes, u64 ready);
  u32 DecodeFrame(u8 letter, const Frame& frame);
  u32 DecodeS(Frame frame);
  u32 DecodeM(Frame frame);
  u32 DecodeA(const Frame& frame);
  u32 DecodeG(const Frame& frame);
  // Whether a frame of that length is all there, with its closing parenthesis; its bytes then stand in one piece.
  bool Closes(Frame* frame, u64 length) {
    if (length > frame->left) return false;
    if (length > kLookAhead && !frame->rebuilt) return ClosesFarAway(frame, length);
    return frame->at[length - 1] == ')';
  }
  bool ClosesFarAway(Frame* frame, u64 length);
  u32 DecodePlaces(Frame frame, const DescriptorTable& table, ErrorList* errors, void (SStatMisura::*count_sample)());
  ChannelDescriptor* FindDescriptor(const DescriptorTable& table, u16 index);
  u32 Reject(u64 position, ErrorList* errors, u64 Losses::*cause);
  bool BelievesClock(u64 position, u64 time, u64 last);
  // Bytes from a position to the next frame or tag whose clock was taken back: 0 there.
  u64 ToNextTakenBack(u64 position) {
    while (*next_taken_back_ < position) ++next_taken_back_;
    return *next_taken_back_ - position;
  }
  void Raise(u64 time) { highest_time_ = std::max(highest_time_, time); }
  bool CoversEmptySamples(u64 samples);
  const std::vector<ChannelDescriptor::Place>& BelievedPlaces(const ChannelDescriptor& descriptor) {
    return CoversEmptySamples(descriptor.empty_places()) ? descriptor.places() : descriptor.places_with_bytes();
  }
  u32 StoreFailed();
  CCanaleQLT* ChannelAt(u16 index) const { return index < by_index_.size() ? by_index_[index].object : nullptr; }
  ChannelEntry* EntryAt(u16 index) {
    return index < by_index_.size() && by_index_[index].object != nullptr ? &by_index_[index] : nullptr;
  }

  // --- chunks.cpp
  u32 DecodeChunk(const Frame& frame, bool has_length);
  bool Rebuild(const ChunkHeader& header, CanMsgAssembler* assembler, u64* failed_index);

  // --- report.cpp, debug_tags.cpp
  void WriteReport(const std::wstring& path);
  void SalvaTagDiDebugSePresenti();
  void CollectDebugTag(const SAtomTag& tag);

  InputFile input_;
  u32 size_ = 0;
  bool refused_ = false;
  const LoggerReportOptions options_;
  IProgress* progress_ = nullptr;
  int progress_handle_ = 0;

  u32 tag_count_ = 0;
  std::vector<KeptTag> time_tags_;
  std::vector<KeptTag> main_ident_tags_;
  std::vector<KeptTag> net_ident_tags_;
  std::vector<KeptTag> ecu_tags_;
  bool has_track_record_ = false;

  // The tables that the stream is decoded against.
  std::vector<std::unique_ptr<CCanaleQLT>> s_channels_;  // by index; null where there is none
  std::vector<ChannelEntry> by_index_;                   // the same, for the decoder
  DescriptorTable acquisitions_;
  DescriptorTable groups_;
  std::map<u32, CanMsgAssembler> assemblers_;
  std::set<std::string> wanted_channels_;
  std::set<u16> without_converter_;  // objects that AssignConverters has not looked at yet
  u64 table_generation_ = 1;         // rises with every change of the channel table

  u64 highest_time_ = 0;  // microseconds
  u64 first_time_ = 0;
  Losses losses_;
  u64 known_end_ = 0;  // behind what the walk has been through
  bool recover_clock_ = false;
  std::unique_ptr<ClockWatch> clock_watch_;  // while nothing but clocks is looked at
  // Rising positions, and one that no file reaches.
  std::vector<u64> taken_back_{std::numeric_limits<u64>::max()};
  std::vector<u64>::const_iterator next_taken_back_ = taken_back_.begin();
  // What was taken so far of claims that cost a file nothing: samples without bytes, places of descriptors looked up.
  u64 empty_samples_ = 0;
  u64 resolved_places_ = 0;
  ErrorList errors_s_, errors_m_, errors_a_, errors_g_, errors_c_, errors_file_;

  LapBook laps_{this, &highest_time_};

  struct DebugTag {
    std::string suffix;
    std::vector<u8> payloads;
  };
  std::map<std::string, DebugTag> debug_tags_;
};

}  // namespace traguardo
