// SPDX-License-Identifier: MIT
#include "wire/wmp.h"

#include <algorithm>
#include <utility>

namespace traguardo::wire::wmp {

namespace {

constexpr std::size_t kHeadSize = 32;  // of a group
constexpr std::size_t kHeaderSize = 150;
constexpr std::size_t kConfigurationSize = 874;
constexpr std::size_t kIdentitySize = 128;
constexpr std::size_t kNamesSize = 360;
constexpr std::size_t kExtendedNamesSize = 664;
constexpr std::size_t kChannelSize = 668;
constexpr std::size_t kChannelExtensionSize = 356;
constexpr std::size_t kOldChannelSize = 98;
constexpr std::size_t kLapSize = 134;
constexpr std::size_t kLapExtensionSize = 122;
constexpr std::size_t kRunSize = 4096;
constexpr std::size_t kExtraSize = 64;
constexpr std::size_t kAreaSize = 65536;
constexpr std::size_t kLengthAt = 84;  // in the header

std::uint32_t as_u32(std::size_t value) {
  return static_cast<std::uint32_t>(value);
}

void append(Bytes* out, const Bytes& more) {
  out->insert(out->end(), more.begin(), more.end());
}

// --- Records

std::uint32_t sample_count(const File& file, const Channel& channel) {
  return channel.sample_count.value_or(
      as_u32(file.has_physical_values() ? channel.values.size() : channel.words.size()));
}

Bytes header(const File& file) {
  std::size_t words = 0;
  std::size_t samples = 0;
  for (const Channel& channel : file.logged) {
    words += channel.words.size();
    samples += sample_count(file, channel);
  }
  for (const Channel& channel : file.derived) samples += sample_count(file, channel);
  Record out(kHeaderSize);
  out.u16(0, 22349).u16(2, file.version).text(44, 40, file.date).u32(88, file.duration_ms);
  out.u32(92, as_u32(4 * samples)).u16(96, as_u32(file.channels())).u16(98, as_u32(file.laps.size()));
  out.u16(100, as_u32(file.logged.size())).u16(102, as_u32(file.derived.size()));
  out.u16(118, static_cast<std::uint16_t>(file.reference)).u8(120, file.family);
  if (!file.has_physical_values()) out.u32(121, as_u32(2 * words));
  out.u16(125, file.best.number).u32(127, file.best.time_ms).u16(147, file.best.run);
  out.u8(136, file.firmware[1]).u8(137, file.firmware[0]).u8(142, file.firmware[2]).u32(138, file.software);
  if (file.version >= 500) out.u32(143, file.device_id);
  return out.bytes();
}

Bytes configuration(const File& file, std::size_t dump_offset) {
  Record out(kConfigurationSize);
  out.u32(0, as_u32(dump_offset));
  if (file.has_groups()) out.u16(18, as_u32(file.runs.size())).u16(22, as_u32(file.extras));
  out.u16(26, file.best.number).u16(28, file.best.run).u16(40, file.function_ids ? 1 : 0);
  return out.bytes();
}

Bytes identity(const File& file) {
  return Record(kIdentitySize).u32(4, file.device_code).u32(16, file.device_id).bytes();
}

Bytes names(const File& file) {
  Record out(kNamesSize);
  out.text(0, 40, file.vehicle).text(40, 40, file.track).text(80, 40, file.racer).text(120, 240, file.test_name);
  return out.bytes();
}

Bytes extended_names(const File& file) {
  return Record(kExtendedNamesSize).text(0, 40, file.championship).u32(596, file.venue_type).bytes();
}

Bytes channel_record(const File& file, const Channel& channel) {
  Record out(kChannelSize);
  out.text(0, 20, channel.name).text(20, 10, channel.unit);
  out.u32(30, channel.is_computed ? 1 : 0).u32(34, channel.is_computed ? 1 : 0).u32(38, channel.origin);
  out.u16(62, channel.filter).u16(64, channel.sensor).u16(68, channel.measure_class).u16(70, channel.rate);
  out.u32(72, sample_count(file, channel)).f32(76, channel.display_minimum).f32(80, channel.display_maximum);
  out.f32(84, channel.scale_minimum).f32(88, channel.scale_maximum);
  for (std::size_t i = 0; i < channel.parameters.size(); ++i) out.f32(92 + 4 * i, channel.parameters[i]);
  out.f32(132, channel.gain).f32(136, channel.offset);
  out.text(140, 256, channel.formula).text(396, 256, channel.description);
  out.u32(656, channel.math_generation).u8(660, channel.number).u8(661, channel.form).u16(662, channel.kind);
  return out.bytes();
}

Bytes channel_extension(const Channel& channel) {
  Record out(kChannelExtensionSize);
  out.u32(100, channel.function_id).u32(104, channel.second_function_id).u8(108, channel.inverted ? 1 : 0);
  out.u8(110, channel.stepped ? 1 : 0).u8(111, channel.digit ? 1 : 0).u8(112, channel.whole_numbers ? 1 : 0);
  return out.u8(113, channel.decimals).bytes();
}

// Versions 100 to 320; the stored rate is one less than the index.
Bytes old_channel_record(const Channel& channel) {
  Record out(kOldChannelSize);
  out.text(0, 20, channel.name).text(20, 10, channel.unit).u16(36, channel.sensor);
  out.f32(38, channel.display_minimum).f32(42, channel.display_maximum).u16(46, channel.rate - 1u);
  out.f32(50, channel.scale_minimum).f32(54, channel.scale_maximum);
  for (std::size_t i = 0; i < channel.parameters.size(); ++i) out.f32(58 + 4 * i, channel.parameters[i]);
  return out.bytes();
}

// size: with the extension, from version 500 on.
Bytes lap_record(const Lap& lap, std::size_t size) {
  Record out(size);
  out.u32(0, lap.start_ms).u32(4, lap.time_ms).u16(16, static_cast<std::uint16_t>(lap.number));
  out.u32(34, lap.samples).u16(83, lap.run).u16(112, lap.complete ? 1 : 0).u32(118, lap.true_time_ms);
  return out.bytes();
}

Bytes run_record(const Run& run) {
  Record out(kRunSize);
  out.u16(0, run.number).i32(4, run.first_teeth).i32(8, run.second_teeth).f32(12, run.wheel_mm);
  return out.text(67, 40, run.name).text(107, 250, run.comment).bytes();
}

// --- Samples

// Appends pieces of a file and keeps where those with samples lie.
class Writer {
 public:
  explicit Writer(std::vector<Range>* samples) : samples_(samples) {}

  void add(const Bytes& part) { append(&out_, part); }
  void pad_to(std::size_t size) { out_.resize(std::max(size, out_.size())); }
  void add_words(const Channel& channel) {
    const std::size_t begin = out_.size();
    out_.resize(begin + 2 * channel.words.size());
    Byte* at = out_.data() + begin;
    for (const std::uint16_t word : channel.words) at = put_u16(at, word);
  }
  void add_values(const Channel& channel) {
    const std::size_t begin = out_.size();
    out_.resize(begin + 4 * channel.values.size());
    Byte* at = out_.data() + begin;
    for (const float value : channel.values) at = put_f32(at, value);
  }
  // What was added since a size is samples.
  void mark_samples_from(std::size_t begin) {
    if (samples_ != nullptr) samples_->push_back({begin, out_.size()});
  }
  // Records under a head with the sum of their bytes.
  void add_group(const Bytes& records, std::uint16_t version_in_head = 0) {
    add(Record(kHeadSize).u16(2, version_in_head).u32(4, sum_of(records)).bytes());
    add(records);
  }

  std::size_t size() const { return out_.size(); }
  Bytes take() { return std::move(out_); }

 private:
  Bytes out_;
  std::vector<Range>* samples_;
};

void add_raw_area(const File& file, Writer* out) {
  const std::size_t begin = out->size();
  for (const Channel& channel : file.logged) out->add_words(channel);
  out->mark_samples_from(begin);
}

// --- Files by version

std::vector<const Channel*> all_channels(const File& file) {
  std::vector<const Channel*> all;
  for (const Channel& channel : file.logged) all.push_back(&channel);
  for (const Channel& channel : file.derived) all.push_back(&channel);
  return all;
}

// Versions below 500.
void build_plain(const File& file, Writer* out) {
  out->add(header(file));
  out->add(names(file));
  if (file.has_physical_values()) {
    for (const Channel& channel : file.logged) out->add(old_channel_record(channel));
  } else {
    for (const Channel* channel : all_channels(file)) out->add(channel_record(file, *channel));
  }
  for (const Lap& lap : file.laps) out->add(lap_record(lap, kLapSize));
  if (!file.has_physical_values()) return add_raw_area(file, out);
  const std::size_t begin = out->size();
  for (const Channel& channel : file.logged) out->add_values(channel);
  out->mark_samples_from(begin);
}

// The tables of versions 500 and 550 in units of 256 bytes, without their head of eight.
std::size_t table_units(const File& file) {
  return file.laps.size() + 4 * file.channels();
}

// Versions 500 and 550: tables, then samples and dump on borders of 64 KiB.
void build_aligned(const File& file, Writer* out) {
  const bool has_areas = file.version == 550;
  const std::size_t areas_at = (256 * table_units(file) + 2047) / kAreaSize * kAreaSize + kAreaSize;
  const std::size_t dump_at =
      has_areas ? areas_at + kAreas * kAreaSize : kAreaSize + kAreaSize * ((table_units(file) + 8) / 256);
  out->add(header(file));
  out->add(configuration(file, has_areas ? 0 : dump_at));
  out->add(names(file));
  out->add(extended_names(file));
  for (const Channel* channel : all_channels(file)) {
    out->add(channel_record(file, *channel));
    out->add(channel_extension(*channel));
  }
  for (const Lap& lap : file.laps) out->add(lap_record(lap, kLapSize + kLapExtensionSize));
  for (std::size_t i = 0; has_areas && i < std::min(file.logged.size(), kAreas); ++i) {
    out->pad_to(areas_at + i * kAreaSize);
    const std::size_t begin = out->size();
    out->add_words(file.logged[i]);
    out->mark_samples_from(begin);
  }
  out->pad_to(dump_at);
  out->add(file.dump);
}

// Versions from 600 on.
void build_groups(const File& file, Writer* out) {
  out->add_group(header(file) + configuration(file, 0), file.version);
  out->add_group(names(file) + extended_names(file));
  out->add_group(identity(file));
  for (const Channel* channel : all_channels(file)) {
    out->add_group(channel_record(file, *channel) + channel_extension(*channel));
  }
  for (const Lap& lap : file.laps) out->add_group(lap_record(lap, kLapSize + kLapExtensionSize));
  for (const Run& run : file.runs) out->add_group(run_record(run));
  for (std::size_t i = 0; i < file.extras; ++i) out->add_group(Record(kExtraSize).u16(0, as_u32(i)).bytes());
  add_raw_area(file, out);
}

// Makes the sum in a group's head right for its records.
void reseal_group(Bytes* bytes, std::size_t head_at, std::size_t size) {
  const auto begin = bytes->begin() + static_cast<std::ptrdiff_t>(head_at + kHeadSize);
  put_u32(&bytes->at(head_at + 4), sum_of(Bytes(begin, begin + static_cast<std::ptrdiff_t>(size))));
}

}  // namespace

Bytes build(const File& file, std::vector<Range>* samples) {
  Writer out(samples);
  if (file.has_groups()) {
    build_groups(file, &out);
  } else if (file.version >= 500) {
    build_aligned(file, &out);
  } else {
    build_plain(file, &out);
  }
  Bytes bytes = out.take();
  put_u32(&bytes.at(header_at(file.version) + kLengthAt), as_u32(bytes.size()));
  if (file.has_groups()) reseal_first_group(&bytes);
  return bytes;
}

std::size_t header_at(std::uint16_t version) {
  return version >= 600 ? kHeadSize : 0;
}

std::size_t configuration_at(std::uint16_t version) {
  return header_at(version) + kHeaderSize;
}

std::size_t first_channel_at(std::uint16_t version) {
  if (version >= 600) return channel_group_at(0) + kHeadSize;
  const std::size_t plain = kHeaderSize + kNamesSize;
  return version < 500 ? plain : plain + kConfigurationSize + kExtendedNamesSize;
}

std::size_t channel_group_at(std::size_t index) {
  constexpr std::size_t kBlocks = kHeaderSize + kConfigurationSize + kNamesSize + kExtendedNamesSize + kIdentitySize;
  return 3 * kHeadSize + kBlocks + index * (kHeadSize + kChannelSize + kChannelExtensionSize);
}

void reseal_first_group(Bytes* bytes) {
  reseal_group(bytes, 0, kHeaderSize + kConfigurationSize);
}

void reseal_channel(Bytes* bytes, std::size_t index) {
  reseal_group(bytes, channel_group_at(index), kChannelSize + kChannelExtensionSize);
}

void reseal(Bytes* bytes) {
  constexpr std::size_t kVersionAt = 2;
  if (bytes->size() < kHeadSize + kHeaderSize + kConfigurationSize) return;
  const auto u16_at = [bytes](std::size_t at) {
    return std::size_t{bytes->at(at)} | std::size_t{bytes->at(at + 1)} << 8;
  };
  const auto version = static_cast<std::uint16_t>(u16_at(kVersionAt));
  const std::size_t header = header_at(version);
  set_u32(bytes, header + kLengthAt, as_u32(bytes->size()));
  if (version < 600) return;
  const std::size_t tables = configuration_at(version);
  std::vector<std::size_t> sizes = {kHeaderSize + kConfigurationSize, kNamesSize + kExtendedNamesSize, kIdentitySize};
  sizes.insert(sizes.end(), u16_at(header + 96), kChannelSize + kChannelExtensionSize);
  sizes.insert(sizes.end(), u16_at(header + 98), kLapSize + kLapExtensionSize);
  sizes.insert(sizes.end(), u16_at(tables + 18), kRunSize);
  sizes.insert(sizes.end(), u16_at(tables + 22), kExtraSize);
  std::size_t at = 0;
  for (const std::size_t size : sizes) {
    if (at + kHeadSize + size > bytes->size()) return;
    reseal_group(bytes, at, size);
    at += kHeadSize + size;
  }
}

}  // namespace traguardo::wire::wmp
