// SPDX-License-Identifier: MIT
// What a channel index of the stream stands for: a value to convert and store, a packet to hand on, or something to
// read over. One object per entry of the channel table.
#pragma once

#include <array>
#include <memory>
#include <string>

#include "gps/gps_samples.h"
#include "logger/sample_statistics.h"
#include "model/parsed_channel.h"
#include "units/channel_record.h"
#include "units/i_converter.h"
#include "units/sample_formats.h"
#include "units/sample_reader.h"

namespace traguardo {

class CCanaleQLT : public IConverter, public SStatMisura {
 public:
  // What became of a converted sample.
  enum Esito { kBuono = 0, kRifiutato = 1, kMemoriaFinita = 2 };

  explicit CCanaleQLT(const ChannelRecord& record) { set_record(record); }
  CCanaleQLT(const CCanaleQLT&) = delete;
  CCanaleQLT& operator=(const CCanaleQLT&) = delete;
  ~CCanaleQLT() override;

  // --- IConverter: while a channel has no converter of its own it is its own, and every sample reads 0.0.
  bool ConvertiValido(const u8* sample, float* out) const override;
  bool ConvertiTesto(const u8* sample, std::wstring* out) override;
  bool IsValido() const override { return true; }
  float Converti(const u8* sample) const override;
  void SetNumDecimali(int) override {}

  // One sample at `time`, microseconds. `offset` is the file offset that the sample is reported under.
  virtual Esito ConvertiAndAddValore(u64 time, const u8* sample, u64 offset);
  // `count` samples from `time` on, one period apart.
  virtual Esito ConvertiAndAddValori(u64 time, u32 count, const u8* samples);
  void ContaS() override {}
  void ContaM() override {}
  void ContaA() override {}
  void ContaG() override {}

  const ChannelRecord& record() const { return record_; }
  u32 sample_size() const { return sample_size_; }
  // Also drops the converter, which was made from the old record.
  void set_record(const ChannelRecord& record);

  CParsedChannel* channel() const { return channel_; }
  void set_channel(std::unique_ptr<CParsedChannel> channel);
  // The channel goes to its new owner and stays this object's target.
  std::unique_ptr<CParsedChannel> hand_over_channel() { return std::move(owned_channel_); }

  // The reader of a channel whose samples are plain values with all their bytes, for the decode loop.
  bool has_bare_reader() const { return channel_ != nullptr && static_cast<bool>(reader_); }
  const SampleReader& bare_reader() const { return reader_; }
  static Esito outcome_of(CParsedChannel::Esito added) {
    if (added == CParsedChannel::kRefused) return kRifiutato;
    return added == CParsedChannel::kOutOfMemory ? kMemoriaFinita : kBuono;
  }
  // `reader`: the converter's bare reader, where it has one and samples have all the bytes that it reads.
  void set_converter(std::unique_ptr<IConverter> converter, const SampleReader& reader);

  // Null while nobody asked for them: then nothing is counted and no offset kept.
  SStatMisura* statistics() const { return statistics_; }
  void install_statistics() {
    if (separate_statistics_ == nullptr) separate_statistics_ = std::make_unique<SStatMisura>();
    statistics_ = separate_statistics_.get();
  }
  // Without an object of their own the statistics are this one: it keeps the offsets of refused samples and counts
  // none.
  void install_offsets_only() { statistics_ = this; }

 protected:
  // The bytes of a sample as its format wants them: as they are, or a copy with zeros behind their end where the record
  // gives a sample fewer bytes than its format has.
  using CoveredSample = std::array<u8, kLongestStandardSample>;
  const u8* covered(const u8* sample, u32 wanted, CoveredSample* copy) const;

 private:
  float value_of(const u8* sample) const;

  ChannelRecord record_;
  u32 sample_size_ = 0;
  u64 period_ = 0;
  u32 format_size_ = 0;
  CParsedChannel* channel_ = nullptr;
  std::unique_ptr<CParsedChannel> owned_channel_;
  std::unique_ptr<IConverter> converter_;
  SampleReader reader_;
  std::unique_ptr<SStatMisura> separate_statistics_;
  SStatMisura* statistics_ = nullptr;
};

// A receiver's records for a GPS trace.
class CCanaleQLT_GPS : public CCanaleQLT {
 public:
  CCanaleQLT_GPS(const ChannelRecord& record, CGPSSamples* trace) : CCanaleQLT(record), trace_(trace) {}
  Esito ConvertiAndAddValore(u64 time, const u8* sample, u64 offset) override;
  Esito ConvertiAndAddValori(u64 time, u32 count, const u8* samples) override;

 private:
  CGPSSamples* trace_;
};

// Where lap records of the stream go.
class ILapReceiver {
 public:
  virtual ~ILapReceiver() = default;
  virtual void LapRecord32(const u8* record, u32 size, u64 offset) = 0;
  virtual void LapRecord20(const u8* record, u32 size, u64 offset) = 0;
};

class CCanaleQLT_Lap_v2 : public CCanaleQLT {
 public:
  CCanaleQLT_Lap_v2(const ChannelRecord& record, ILapReceiver* laps) : CCanaleQLT(record), laps_(laps) {}
  Esito ConvertiAndAddValore(u64 time, const u8* sample, u64 offset) override;
  Esito ConvertiAndAddValori(u64 time, u32 count, const u8* samples) override;

 private:
  ILapReceiver* laps_;
};

class CCanaleQLT_Lap_v3 : public CCanaleQLT {
 public:
  CCanaleQLT_Lap_v3(const ChannelRecord& record, ILapReceiver* laps) : CCanaleQLT(record), laps_(laps) {}
  Esito ConvertiAndAddValore(u64 time, const u8* sample, u64 offset) override;
  Esito ConvertiAndAddValori(u64 time, u32 count, const u8* samples) override;

 private:
  ILapReceiver* laps_;
};

// Packets that carry nothing into the session: every lap time comes from the lap marks. `class_name` is the one that
// the log names.
class CCanaleQLT_DroppedPacket : public CCanaleQLT {
 public:
  CCanaleQLT_DroppedPacket(const ChannelRecord& record, const char* class_name)
      : CCanaleQLT(record), class_name_(class_name) {}
  Esito ConvertiAndAddValore(u64, const u8*, u64) override { return kBuono; }
  Esito ConvertiAndAddValori(u64 time, u32 count, const u8* samples) override;

 protected:
  const char* class_name_;
};

class CCanaleQLT_TotalOdometer : public CCanaleQLT_DroppedPacket {
 public:
  explicit CCanaleQLT_TotalOdometer(const ChannelRecord& record)
      : CCanaleQLT_DroppedPacket(record, "CCanaleQLT_TotalOdometer") {}
};

class CCanaleQLT_ResettableOdometer : public CCanaleQLT_DroppedPacket {
 public:
  explicit CCanaleQLT_ResettableOdometer(const ChannelRecord& record)
      : CCanaleQLT_DroppedPacket(record, "CCanaleQLT_ResettableOdometer") {}
};

class CCanaleQLT_BestTime : public CCanaleQLT_DroppedPacket {
 public:
  explicit CCanaleQLT_BestTime(const ChannelRecord& record) : CCanaleQLT_DroppedPacket(record, "CCanaleQLT_BestTime") {}
};

class CCanaleQLT_RollingTime : public CCanaleQLT_DroppedPacket {
 public:
  explicit CCanaleQLT_RollingTime(const ChannelRecord& record)
      : CCanaleQLT_DroppedPacket(record, "CCanaleQLT_RollingTime") {}
};

// Packets of a kind that nobody reads: worth a line in the log, each.
class CCanaleQLT_IgnoredPacket : public CCanaleQLT_DroppedPacket {
 public:
  explicit CCanaleQLT_IgnoredPacket(const ChannelRecord& record)
      : CCanaleQLT_DroppedPacket(record, "CCanaleQLT_IgnoredPacket") {}
  Esito ConvertiAndAddValore(u64 time, const u8* sample, u64 offset) override;
};

}  // namespace traguardo
