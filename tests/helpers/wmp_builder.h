// SPDX-License-Identifier: MIT
// Builds .wmp files of every version, and the .jts beside them, from a description. Written from the format, offset by
// offset, with nothing of the reader in it.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <string>
#include <vector>

#include "support/bytes.h"

namespace traguardo::test::wmp {

using Bytes = std::vector<u8>;

inline constexpr std::size_t kHeadSize = 32;
inline constexpr std::size_t kHeaderSize = 150;
inline constexpr std::size_t kConfigurationSize = 874;
inline constexpr std::size_t kIdentitySize = 128;
inline constexpr std::size_t kNamesSize = 360;
inline constexpr std::size_t kExtendedNamesSize = 664;

// A record under construction: zero bytes with fields put into them.
class Fields {
 public:
  explicit Fields(std::size_t size) : bytes_(size) {}
  Fields& byte(std::size_t at, u32 value) { return put(at, value, 1); }
  Fields& word(std::size_t at, u32 value) { return put(at, value, 2); }
  Fields& dword(std::size_t at, u32 value) { return put(at, value, 4); }
  Fields& real(std::size_t at, float value) { return put(at, std::bit_cast<u32>(value), 4); }
  Fields& text(std::size_t at, std::size_t width, const std::string& value) {
    for (std::size_t i = 0; i < width && i < value.size(); ++i) bytes_[at + i] = static_cast<u8>(value[i]);
    return *this;
  }
  const Bytes& bytes() const { return bytes_; }

 private:
  Fields& put(std::size_t at, u32 value, std::size_t width) {
    for (std::size_t i = 0; i < width; ++i) bytes_[at + i] = static_cast<u8>(value >> (8 * i));
    return *this;
  }
  Bytes bytes_;
};

struct Channel {
  std::string name = "A";
  std::string unit = "x";
  u16 sensor = 998;  // the words as they are, without a mark of a missing sample
  u16 measure_class = 1;
  u16 rate = 5;  // 100 Hz
  std::array<float, 5> parameters{};
  float gain = 1;
  float offset = 0;
  u16 filter = 0;
  float display_minimum = 0;
  float display_maximum = 100;
  std::string formula;
  u32 origin = 1;
  u32 math_generation = 1;
  u8 form = 0;  // byte 661
  u16 kind = 0;
  u32 function_id = 0;
  u32 second_function_id = 0;
  bool inverted = false;
  bool digit = false;
  std::vector<u16> words;     // versions from 400 on
  std::vector<float> values;  // versions 100 to 320
};

struct Lap {
  u32 time_ms = 1000;
  u16 run = 1;
  i16 number = 1;
  u32 true_time_ms = 0;
  u32 samples = 0;
};

struct Run {
  u16 number = 1;
  i32 first_teeth = 0;
  i32 second_teeth = 0;
  float wheel_mm = 0;
  std::string name;
};

struct File {
  u16 version = 600;
  std::string date = "05-11-03 14:22:09";
  u32 duration_ms = 1000;
  i16 reference = -1;
  u8 family = 0;
  std::array<u8, 3> firmware{};  // first, second, third number
  u32 software = 0;
  u32 device_code = 0;
  u32 device_id = 0;
  bool function_ids = true;
  std::string vehicle, track, racer, test_name, championship;
  u32 venue_type = 0;
  std::vector<Channel> logged;
  std::vector<Channel> derived;
  std::vector<Lap> laps{Lap{}};
  std::vector<Run> runs{Run{}};  // versions from 600 on
  std::size_t extras = 0;
  Bytes dump;  // versions 500 and 550

  std::size_t channels() const { return logged.size() + derived.size(); }
};

inline void append(Bytes* out, const Bytes& more) {
  out->insert(out->end(), more.begin(), more.end());
}
inline Bytes joined(Bytes first, const Bytes& second) {
  append(&first, second);
  return first;
}

inline u32 sum_of(const Bytes& bytes, std::size_t from, std::size_t count) {
  u32 sum = 0;
  for (std::size_t i = from; i < from + count; ++i) sum += bytes[i];
  return sum;
}

// A group of versions 600 and 700 under its head.
inline void append_group(Bytes* out, const Bytes& records, u16 version_in_head = 0) {
  Fields head(kHeadSize);
  head.word(2, version_in_head).dword(4, sum_of(records, 0, records.size()));
  append(out, head.bytes());
  append(out, records);
}

// The file length is filled in at the end of build().
inline Bytes header(const File& file) {
  std::size_t words = 0;
  std::size_t values = 0;
  for (const Channel& channel : file.logged) {
    words += channel.words.size();
    values += file.version <= 320 ? channel.values.size() : channel.words.size();
  }
  Fields out(kHeaderSize);
  out.word(0, 22349).word(2, file.version).text(44, 40, file.date).dword(88, file.duration_ms);
  out.dword(92, static_cast<u32>(4 * values)).word(96, static_cast<u32>(file.channels()));
  out.word(98, static_cast<u32>(file.laps.size())).word(100, static_cast<u32>(file.logged.size()));
  out.word(102, static_cast<u32>(file.derived.size())).word(118, static_cast<u16>(file.reference));
  out.byte(120, file.family).dword(121, static_cast<u32>(2 * words));
  out.byte(136, file.firmware[1]).byte(137, file.firmware[0]).byte(142, file.firmware[2]).dword(138, file.software);
  return out.bytes();
}

inline Bytes configuration(const File& file, u32 dump_offset) {
  Fields out(kConfigurationSize);
  out.dword(0, dump_offset).word(18, static_cast<u32>(file.runs.size())).word(22, static_cast<u32>(file.extras));
  out.word(40, file.function_ids ? 1 : 0);
  return out.bytes();
}

inline Bytes identity(const File& file) {
  return Fields(kIdentitySize).dword(4, file.device_code).dword(16, file.device_id).bytes();
}

inline Bytes names(const File& file) {
  Fields out(kNamesSize);
  out.text(0, 40, file.vehicle).text(40, 40, file.track).text(80, 40, file.racer).text(120, 240, file.test_name);
  return out.bytes();
}

inline Bytes extended_names(const File& file) {
  return Fields(kExtendedNamesSize).text(0, 40, file.championship).dword(596, file.venue_type).bytes();
}

inline Bytes channel_record(const Channel& channel) {
  Fields out(668);
  out.text(0, 20, channel.name).text(20, 10, channel.unit).dword(38, channel.origin).word(62, channel.filter);
  out.word(64, channel.sensor)
      .word(68, channel.measure_class)
      .word(70, channel.rate)
      .dword(72, static_cast<u32>(channel.words.size()));
  out.real(76, channel.display_minimum).real(80, channel.display_maximum);
  for (std::size_t i = 0; i < 5; ++i) out.real(92 + 4 * i, channel.parameters[i]);
  out.real(132, channel.gain).real(136, channel.offset).text(140, 256, channel.formula);
  return out.dword(656, channel.math_generation).byte(661, channel.form).word(662, channel.kind).dword(664, 1).bytes();
}

inline Bytes channel_extension(const Channel& channel) {
  Fields out(356);
  out.dword(100, channel.function_id).dword(104, channel.second_function_id).byte(108, channel.inverted ? 1 : 0);
  out.byte(111, channel.digit ? 1 : 0);
  return out.bytes();
}

// Versions 100 to 320; the stored rate is one less than the index.
inline Bytes old_channel_record(const Channel& channel) {
  Fields out(98);
  out.text(0, 20, channel.name).text(20, 10, channel.unit).word(36, channel.sensor);
  out.real(38, channel.display_minimum).real(42, channel.display_maximum).word(46, channel.rate - 1U);
  for (std::size_t i = 0; i < 5; ++i) out.real(58 + 4 * i, channel.parameters[i]);
  return out.bytes();
}

// With its extension from version 500 on.
inline Bytes lap_record(const Lap& lap, std::size_t size) {
  Fields out(size);
  out.dword(4, lap.time_ms).word(16, static_cast<u16>(lap.number)).dword(34, lap.samples).word(83, lap.run);
  return out.word(112, 1).dword(118, lap.true_time_ms).bytes();
}

inline Bytes run_record(const Run& run) {
  Fields out(4096);
  out.word(0, run.number).dword(4, static_cast<u32>(run.first_teeth)).dword(8, static_cast<u32>(run.second_teeth));
  out.real(12, run.wheel_mm).text(67, 40, run.name);
  return out.bytes();
}

inline Bytes word_bytes(const std::vector<u16>& words) {
  Fields out(2 * words.size());
  for (std::size_t i = 0; i < words.size(); ++i) out.word(2 * i, words[i]);
  return out.bytes();
}

inline Bytes value_bytes(const std::vector<float>& values) {
  Fields out(4 * values.size());
  for (std::size_t i = 0; i < values.size(); ++i) out.real(4 * i, values[i]);
  return out.bytes();
}

inline std::vector<Channel> all_channels(const File& file) {
  std::vector<Channel> all = file.logged;
  all.insert(all.end(), file.derived.begin(), file.derived.end());
  return all;
}

// Where the first raw area of version 550 begins.
inline std::size_t aligned_areas(const File& file) {
  return (((256 * (file.laps.size() + 4 * file.channels())) + 2047) & ~std::size_t{0xFFFF}) + 65536;
}

inline void set_dword(Bytes* bytes, std::size_t at, u32 value) {
  store_u32(&bytes->at(at), value);
}
inline void set_word(Bytes* bytes, std::size_t at, u16 value) {
  store_u16(&bytes->at(at), value);
}

// Offsets in the built file.
inline std::size_t header_at(u16 version) {
  return version >= 600 ? kHeadSize : 0;
}
inline std::size_t configuration_at(u16 version) {
  return header_at(version) + kHeaderSize;
}
inline std::size_t first_channel_at(u16 version) {
  if (version < 500) return kHeaderSize + kNamesSize;
  if (version < 600) return 2048;
  return 3 * kHeadSize + kHeaderSize + kConfigurationSize + kNamesSize + kExtendedNamesSize + kIdentitySize + kHeadSize;
}

// Makes the sum of block A right again after its bytes were changed.
inline void reseal_block_a(Bytes* bytes) {
  set_dword(bytes, 4, sum_of(*bytes, kHeadSize, kHeaderSize + kConfigurationSize));
}
// The same for the group of channel `index` of a version 600 or 700 file.
inline void reseal_channel(Bytes* bytes, std::size_t index) {
  const std::size_t at = first_channel_at(600) + index * (kHeadSize + 668 + 356);
  set_dword(bytes, at - kHeadSize + 4, sum_of(*bytes, at, 668 + 356));
}

inline Bytes build_plain(const File& file) {
  Bytes out = header(file);
  append(&out, names(file));
  if (file.version <= 320) {
    for (const Channel& channel : file.logged) append(&out, old_channel_record(channel));
  } else {
    for (const Channel& channel : all_channels(file)) append(&out, channel_record(channel));
  }
  for (const Lap& lap : file.laps) append(&out, lap_record(lap, 134));
  for (const Channel& channel : file.logged) {
    append(&out, file.version <= 320 ? value_bytes(channel.values) : word_bytes(channel.words));
  }
  return out;
}

inline Bytes build_long(const File& file) {
  const std::size_t tables = 2048 + 1024 * file.channels() + 256 * file.laps.size();
  const std::size_t dump_at = file.version == 550 ? aligned_areas(file) + 131072 : tables;
  Bytes out = header(file);
  append(&out, configuration(file, static_cast<u32>(dump_at)));
  append(&out, names(file));
  append(&out, extended_names(file));
  for (const Channel& channel : all_channels(file)) {
    append(&out, joined(channel_record(channel), channel_extension(channel)));
  }
  for (const Lap& lap : file.laps) append(&out, lap_record(lap, 256));
  out.resize(dump_at);
  if (file.version == 550) {
    for (std::size_t i = 0; i < file.logged.size() && i < 2; ++i) {
      const Bytes words = word_bytes(file.logged[i].words);
      std::copy(words.begin(), words.end(), out.begin() + static_cast<std::ptrdiff_t>(aligned_areas(file) + i * 65536));
    }
  }
  append(&out, file.dump);
  return out;
}

inline Bytes build_blocks(const File& file) {
  Bytes out;
  append_group(&out, joined(header(file), configuration(file, 0)), file.version);
  append_group(&out, joined(names(file), extended_names(file)));
  append_group(&out, identity(file));
  for (const Channel& channel : all_channels(file)) {
    append_group(&out, joined(channel_record(channel), channel_extension(channel)));
  }
  for (const Lap& lap : file.laps) append_group(&out, lap_record(lap, 256));
  for (const Run& run : file.runs) append_group(&out, run_record(run));
  for (std::size_t i = 0; i < file.extras; ++i) append_group(&out, Bytes(64, 7));
  for (const Channel& channel : file.logged) append(&out, word_bytes(channel.words));
  return out;
}

// The whole file, with its length in the header and its sums in the heads.
inline Bytes build(const File& file) {
  Bytes out = file.version >= 600 ? build_blocks(file) : file.version >= 500 ? build_long(file) : build_plain(file);
  set_dword(&out, header_at(file.version) + 84, static_cast<u32>(out.size()));
  if (file.version >= 600) reseal_block_a(&out);
  return out;
}

// A trace of `records` good solutions, one a second, each a little further on. stated: the number in the header.
inline Bytes build_jts(std::size_t records, u32 stated) {
  Fields out(64 + 64 * records);
  out.text(0, 4, "HEAD").text(16, 4, "HEAD").dword(30, stated).text(48, 4, "NSOL");
  for (std::size_t i = 0; i < records; ++i) {
    const std::size_t at = 64 + 64 * i;
    const u32 step = static_cast<u32>(i);
    out.text(at, 4, "NSOL").dword(at + 4, 1000 * step).dword(at + 8, 345600000 + 1000 * step).word(at + 16, 1800);
    out.byte(at + 18, 3).byte(at + 19, 0xDF).dword(at + 20, 440000000 + 100 * step).dword(at + 24, 80000000);
    out.dword(at + 28, 453000000).dword(at + 32, 300).dword(at + 36, 100).dword(at + 48, 20);
  }
  return out.bytes();
}
inline Bytes build_jts(std::size_t records) {
  return build_jts(records, static_cast<u32>(records));
}

}  // namespace traguardo::test::wmp
