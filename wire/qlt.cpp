// SPDX-License-Identifier: MIT
#include "wire/qlt.h"

namespace traguardo::wire {

namespace {

std::uint32_t packed(const Byte (&version)[3]) {
  return version[0] | std::uint32_t{version[1]} << 8 | std::uint32_t{version[2]} << 16;
}

}  // namespace

Bytes tag(std::string_view name, const Bytes& payload, std::uint8_t version) {
  constexpr std::size_t kOpening = 12;
  constexpr std::size_t kClosing = 8;
  Record opening(kOpening);
  opening.text(0, 2, "<h").text(2, 4, name).u32(6, static_cast<std::uint32_t>(payload.size())).u8(10, version);
  opening.u8(11, '>');
  Record closing(kClosing);
  closing.u8(0, '<').text(1, 4, name).u16(5, sum_of(payload)).u8(7, '>');
  Bytes out;
  out.reserve(kOpening + payload.size() + kClosing);
  for (const Bytes* part : {&opening.bytes(), &payload, &closing.bytes()}) {
    out.insert(out.end(), part->begin(), part->end());
  }
  return out;
}

Bytes tag(std::string_view name, std::string_view text, std::uint8_t version) {
  return tag(name, text_bytes(text), version);
}

Bytes Device::record() const {
  Record out(64);
  out.u32(8, code).u32(12, serial);
  return out.u32(16, packed(recovery)).u32(20, packed(firmware)).u32(24, packed(hardware)).bytes();
}

Bytes Track::record() const {
  return Record(96).text(0, 31, name).u32(32, id).i32(36, latitude).i32(40, longitude).u32(88, key).bytes();
}

Bytes Channel::record() const {
  Record out(112);
  out.u16(0, index).u16(4, device_code).u16(6, id_in_device).u32(8, device_serial).u32(12, fid).u32(16, type);
  out.i32(20, format).text(32, 32, name).u32(64, period_us).u32(72, size).u32(80, flags).i32(84, raw_format);
  return out.bytes();
}

Bytes cnf(const std::vector<Channel>& channels, const Bytes& more) {
  Bytes inner;
  for (const Channel& channel : channels) {
    const Bytes row = channel.chs();
    inner.insert(inner.end(), row.begin(), row.end());
  }
  return tag("CNF", inner + more);
}

Bytes acd(std::uint16_t index, std::uint16_t time_base, const std::vector<std::uint16_t>& channels) {
  return tag("ACD", u16_bytes(index) + u16_bytes(time_base) + counted(channels));
}

Bytes grp(std::uint16_t index, const std::vector<std::uint16_t>& channels) {
  return tag("GRP", u16_bytes(index) + counted(channels));
}

Bytes Lap::record(int version) const {
  const bool is_newest = version == 3;
  const std::size_t kinds_at = is_newest ? 12 : 24;
  Record out(is_newest ? 20 : version == 2 ? 32 : 28);
  out.u8(0, session).u8(1, split).u16(2, lap).i32(4, lap_time_ms).u32(8, split_time_ms);
  out.u8(kinds_at, kind0).u8(kinds_at + 1, kind1);
  if (version >= 2) out.u32(kinds_at + 4, time_ms);
  return out.bytes();
}

Bytes GpsSolution::record() const {
  Record out(kSize);
  out.u32(0, time_ms).u32(4, time_of_week_ms).i32(8, fractional_ns);
  out.u16(12, static_cast<std::uint16_t>(week)).u8(14, fix).u8(15, flags);
  out.i32(16, x_cm).i32(20, y_cm).i32(24, z_cm).u32(28, position_accuracy_cm);
  out.i32(32, vx_cm_s).i32(36, vy_cm_s).i32(40, vz_cm_s).u32(44, speed_accuracy_cm_s);
  return out.u16(48, dop).u8(51, satellites).bytes();
}

Byte* put_frame_head(Byte* at, char letter, std::uint32_t time_ms, std::uint32_t index) {
  at = put_u8(put_u8(at, '('), static_cast<Byte>(letter));
  return put_u16(put_u32(at, time_ms), index);
}

Bytes frame_head(char letter, std::uint32_t time_ms, std::uint16_t index) {
  Bytes out(kFrameHeadSize);
  put_frame_head(out.data(), letter, time_ms, index);
  return out;
}

Bytes frame(char letter, std::uint32_t time_ms, std::uint16_t index, const Bytes& data) {
  return frame_head(letter, time_ms, index) + data + text_bytes(")");
}

Bytes frame_s(std::uint32_t time_ms, std::uint16_t index, std::uint16_t value) {
  return frame('S', time_ms, index, u16_bytes(value));
}

Bytes frame_m(std::uint32_t time_ms, std::uint16_t index, const std::vector<std::uint16_t>& values) {
  return frame('M', time_ms, index, counted(values));
}

Bytes Chunk::frame(const Bytes& data) const {
  Record head(with_length ? 7 : 6);
  head.u8(0, '(').u8(1, with_length ? 'c' : 'C');
  head.u32(2, number | (last ? 1u << 10 : 0u) | index << 11 | kind << 20);
  if (with_length) head.u8(6, static_cast<std::uint32_t>(data.size()));
  return head.bytes() + data + text_bytes(")");
}

Bytes counted(const std::vector<std::uint16_t>& values) {
  Record out(2 + 2 * values.size());
  out.u16(0, static_cast<std::uint32_t>(values.size()));
  for (std::size_t i = 0; i < values.size(); ++i) out.u16(2 + 2 * i, values[i]);
  return out.bytes();
}

Bytes tail() {
  return tag("EVT", Bytes(32));
}

}  // namespace traguardo::wire
