// SPDX-License-Identifier: MIT
#include "logger/qlt_channel.h"

#include <algorithm>
#include <utility>

#include "support/event_log.h"

namespace traguardo {

namespace {

void log_misplaced(const std::string& class_name, const char* operation) {
  TRAGUARDO_LOG(class_name + "::" + operation, "%s [%d] ERROR = Not supposed to be here!\n");
}

}  // namespace

CCanaleQLT::~CCanaleQLT() = default;

bool CCanaleQLT::ConvertiValido(const u8*, float* out) const {
  *out = 0.0F;
  return true;
}

bool CCanaleQLT::ConvertiTesto(const u8*, std::wstring* out) {
  out->clear();
  return true;
}

float CCanaleQLT::Converti(const u8*) const {
  return 0.0F;
}

void CCanaleQLT::set_record(const ChannelRecord& record) {
  record_ = record;
  sample_size_ = record.sample_size();
  period_ = record.period_us();
  format_size_ = standard_sample_size(record.format());
  converter_.reset();
  reader_ = {};
}

void CCanaleQLT::set_channel(std::unique_ptr<CParsedChannel> channel) {
  owned_channel_ = std::move(channel);
  channel_ = owned_channel_.get();
}

void CCanaleQLT::set_converter(std::unique_ptr<IConverter> converter, const SampleReader& reader) {
  reader_ = reader;
  // A channel has one or the other: a file may list 65,536 of them.
  converter_ = reader ? nullptr : std::move(converter);
}

float CCanaleQLT::value_of(const u8* sample) const {
  if (reader_) return reader_(sample);
  CoveredSample copy;
  return converter_ != nullptr ? converter_->Converti(covered(sample, format_size_, &copy)) : 0.0F;
}

const u8* CCanaleQLT::covered(const u8* sample, u32 wanted, CoveredSample* copy) const {
  if (sample_size_ >= wanted) return sample;
  copy->fill(0);
  std::copy(sample, sample + sample_size_, copy->begin());
  return copy->data();
}

CCanaleQLT::Esito CCanaleQLT::ConvertiAndAddValore(u64 time, const u8* sample, u64) {
  if (channel_ == nullptr) return kBuono;
  return outcome_of(channel_->AddValore(time, value_of(sample)));
}

CCanaleQLT::Esito CCanaleQLT::ConvertiAndAddValori(u64 time, u32 count, const u8* samples) {
  if (channel_ == nullptr) return kBuono;
  Esito outcome = kBuono;
  for (u32 i = 0; i < count; ++i, samples += sample_size_, time += period_) {
    const Esito one = outcome_of(channel_->AddValore(time, value_of(samples)));
    if (one == kMemoriaFinita) return one;
    if (one == kRifiutato) outcome = kRifiutato;
  }
  return outcome;
}

CCanaleQLT::Esito CCanaleQLT_GPS::ConvertiAndAddValore(u64 time, const u8* sample, u64 offset) {
  // A sample that ends before its fix type tells no position, and may not become a record many times its size.
  constexpr u32 kEndOfFixType = 15;
  if (sample_size() < kEndOfFixType) {
    trace_->AddRecord(time, sample, sample_size(), offset);
  } else {
    CoveredSample copy;
    trace_->AddRecord(time, covered(sample, SGpsRecord::kSize, &copy), SGpsRecord::kSize, offset);
  }
  return kBuono;
}

CCanaleQLT::Esito CCanaleQLT_GPS::ConvertiAndAddValori(u64, u32, const u8*) {
  log_misplaced("CCanaleQLT_GPS", "ConvertiAndAddValori");
  return kBuono;
}

CCanaleQLT::Esito CCanaleQLT_Lap_v2::ConvertiAndAddValore(u64, const u8* sample, u64 offset) {
  laps_->LapRecord32(sample, sample_size(), offset);
  return kBuono;
}

CCanaleQLT::Esito CCanaleQLT_Lap_v2::ConvertiAndAddValori(u64, u32, const u8*) {
  log_misplaced("CCanaleQLT_Lap_v2", "ConvertiAndAddValori");
  return kBuono;
}

CCanaleQLT::Esito CCanaleQLT_Lap_v3::ConvertiAndAddValore(u64, const u8* sample, u64 offset) {
  laps_->LapRecord20(sample, sample_size(), offset);
  return kBuono;
}

CCanaleQLT::Esito CCanaleQLT_Lap_v3::ConvertiAndAddValori(u64, u32, const u8*) {
  log_misplaced("CCanaleQLT_Lap_v3", "ConvertiAndAddValori");
  return kBuono;
}

CCanaleQLT::Esito CCanaleQLT_DroppedPacket::ConvertiAndAddValori(u64, u32, const u8*) {
  log_misplaced(class_name_, "ConvertiAndAddValori");
  return kBuono;
}

CCanaleQLT::Esito CCanaleQLT_IgnoredPacket::ConvertiAndAddValore(u64, const u8*, u64) {
  log_misplaced(class_name_, "ConvertiAndAddValore");
  return kBuono;
}

}  // namespace traguardo
