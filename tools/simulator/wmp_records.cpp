// SPDX-License-Identifier: MIT
#include "simulator/wmp_records.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>

#include "simulator/car.h"
#include "simulator/session_header.h"

namespace traguardo::simulator {

namespace {

constexpr std::uint32_t kSignature = 22349;
constexpr std::uint32_t kSoftware = 0x03104022;  // 31.04.02 and a letter
constexpr std::uint32_t kFirmware[] = {0x20, 0x14, 0x06};
constexpr std::uint32_t kSerial = 480017;
constexpr std::size_t kReferenceSpeed = 1;  // its place among the channels
constexpr std::uint32_t kNoChannel = 0xFFFF;
constexpr std::uint32_t kVenuePractice = 12;
constexpr std::uint32_t kTimeUnset = 0xCB3434CB;
constexpr std::uint32_t kMeasured = 1;  // origins
constexpr std::uint32_t kByFormula = 0;

// Cut to leave room for its NUL.
void put_text(Byte* at, std::size_t width, std::string_view text) {
  std::memcpy(at, text.data(), std::min(text.size(), width - 1));
}

std::uint32_t as_u32(std::size_t value) {
  return static_cast<std::uint32_t>(value);
}

// How many samples all logged channels have in a lap.
std::uint32_t lap_samples(const WmpSession& session, const WmpLap& lap) {
  const std::uint64_t per_second = static_cast<std::uint64_t>(samples_per_second(session.logged()));
  return static_cast<std::uint32_t>((lap.time_ms * per_second + 500) / 1000);
}

// Older loggers left the second lap time unset, in one of two ways.
std::uint32_t true_lap_time(const WmpSession& session, const WmpLap& lap) {
  if (session.form.version <= 400) return 0;
  return session.form.version == 450 ? kTimeUnset : lap.time_ms;
}

}  // namespace

Bytes main_header(const WmpSession& session, std::uint32_t file_length) {
  const WmpForm& form = session.form;
  const WmpRecording& recording = session.recording;
  Bytes record(kMainHeaderSize, 0);
  Byte* const at = record.data();
  put_u16(at, kSignature);
  put_u16(at + 2, static_cast<std::uint32_t>(form.version));
  put_text(at + 44, 40, "12-05-24 14:03:20");
  put_u32(at + 84, file_length);
  put_u32(at + 88, recording.duration_ms);
  put_u32(at + 92, as_u32(4 * session.all_samples()));
  put_u16(at + 96, as_u32(session.channels.size()));
  put_u16(at + 98, as_u32(recording.laps.size()));
  put_u16(at + 100, as_u32(session.logged_count));
  put_u16(at + 102, as_u32(session.channels.size() - session.logged_count));
  put_u16(at + 118, session.logged_count > kReferenceSpeed ? as_u32(kReferenceSpeed) : kNoChannel);
  put_u8(at + 120, form.family());
  if (!form.has_physical_values()) put_u32(at + 121, as_u32(2 * session.logged_samples()));
  if (const WmpLap* const best = best_lap(recording.laps)) {
    put_u16(at + 125, best->number);
    put_u32(at + 127, best->time_ms);
    put_u16(at + 147, best->run);
  }
  put_u8(at + 136, kFirmware[1]);
  put_u8(at + 137, kFirmware[0]);
  put_u32(at + 138, kSoftware);
  put_u8(at + 142, kFirmware[2]);
  if (form.has_extensions()) put_u32(at + 143, kSerial);
  return record;
}

Bytes configuration_block(const WmpSession& session, std::uint32_t dump_offset) {
  Bytes record(kConfigurationSize, 0);
  Byte* const at = record.data();
  put_u32(at, dump_offset);
  if (session.form.has_runs()) {
    put_u16(at + 18, session.run_count());
    put_u16(at + 22, as_u32(kExtraRecords));
  }
  if (const WmpLap* const best = best_lap(session.recording.laps)) {
    put_u16(at + 26, best->number);
    put_u16(at + 28, best->run);
  }
  put_u16(at + 40, 1);  // the channels' function ids are valid
  return record;
}

Bytes identity_block(const WmpSession& session) {
  Bytes record(kIdentitySize, 0);
  put_u32(record.data() + 4, session.form.device_code);
  put_u32(record.data() + 16, kSerial);
  return record;
}

Bytes names_block(const WmpSession& session) {
  const SessionTexts texts = session_texts(session.seed);
  Bytes record(kNamesSize, 0);
  Byte* const at = record.data();
  put_text(at, 40, texts.vehicle);
  put_text(at + 40, 40, texts.track);
  put_text(at + 80, 40, texts.racer);
  put_text(at + 120, 240, "Simulated test");
  return record;
}

Bytes extended_names_block(const WmpSession& session) {
  Bytes record(kExtendedNamesSize, 0);
  put_text(record.data(), 40, session_texts(session.seed).championship);
  put_u32(record.data() + 596, kVenuePractice);
  return record;
}

Bytes channel_record(const WmpSession& session, std::size_t i) {
  const WmpChannel& channel = session.channels[i];
  const bool derived = channel.is_derived();
  Bytes record(kChannelSize, 0);
  Byte* const at = record.data();
  put_text(at, 20, channel.name);
  put_unit_field(channel.unit, at + 20);
  put_u32(at + 30, derived ? 1u : 0u);
  put_u32(at + 34, derived ? 1u : 0u);
  put_u32(at + 38, derived ? kByFormula : kMeasured);
  put_u16(at + 62, smoothing_passes(channel));
  put_u16(at + 64, channel.sensor);
  put_u16(at + 68, channel.measure_class);
  put_u16(at + 70, rate_index(channel.rate_hz));
  put_u32(at + 72, as_u32(session.sample_count(channel)));
  put_f32(at + 76, channel.low);
  put_f32(at + 80, channel.high);
  put_f32(at + 84, channel.low);
  put_f32(at + 88, channel.high);
  put_parameters(channel, at + 92);
  put_f32(at + 132, 1);  // the user's gain, without an offset
  put_text(at + 140, 256, channel.formula);
  put_text(at + 396, 256, channel.description);
  put_u32(at + 656, derived ? 1u : 0u);  // formulas of the current kind
  put_u8(at + 660, as_u32(i & 0xFFu));
  put_u8(at + 661, derived ? 255u : 0u);
  return record;
}

Bytes channel_extension(const WmpSession& session, std::size_t i) {
  const WmpChannel& channel = session.channels[i];
  Bytes record(kChannelExtensionSize, 0);
  Byte* const at = record.data();
  put_u32(at + 100, function_id(channel));
  put_u8(at + 110, is_stepped(channel) ? 1u : 0u);
  put_u8(at + 111, shows_digits(channel) ? 1u : 0u);
  put_u8(at + 112, channel.unit.decimals == 0 ? 1u : 0u);
  put_u8(at + 113, channel.unit.decimals);
  return record;
}

Bytes old_channel_record(const WmpSession& session, std::size_t i) {
  const WmpChannel& channel = session.channels[i];
  Bytes record(kOldChannelSize, 0);
  Byte* const at = record.data();
  put_text(at, 20, channel.name);
  put_unit_field(channel.unit, at + 20);
  put_u16(at + 36, channel.sensor);
  put_f32(at + 38, channel.low);
  put_f32(at + 42, channel.high);
  put_u16(at + 46, rate_index(channel.rate_hz) - 1);
  put_f32(at + 50, channel.low);
  put_f32(at + 54, channel.high);
  put_parameters(channel, at + 58);
  return record;
}

Bytes lap_record(const WmpSession& session, const WmpLap& lap) {
  Bytes record(kLapSize, 0);
  Byte* const at = record.data();
  put_u32(at, lap.start_ms);
  put_u32(at + 4, lap.time_ms);
  if (session.form.version > 100) put_u16(at + 16, lap.number);  // the first loggers didn't count
  put_u32(at + 34, lap_samples(session, lap));
  put_u16(at + 83, lap.run);
  put_u16(at + 112, lap.complete ? 1u : 0u);
  put_u32(at + 118, true_lap_time(session, lap));
  return record;
}

Bytes run_record(std::uint32_t number) {
  Bytes record(kRunSize, 0);
  Byte* const at = record.data();
  put_u16(at, number);
  put_i32(at + 4, kShaftTeeth);
  put_i32(at + 8, kAxleTeeth);
  put_f32(at + 12, kWheelCircumferenceMm);
  put_text(at + 67, 40, "Run " + std::to_string(number));
  put_text(at + 107, 250, "Simulated run");
  return record;
}

Bytes extra_record(std::size_t number) {
  Bytes record(kExtraSize, 0);
  put_u16(record.data(), as_u32(number));
  return record;
}

}  // namespace traguardo::simulator
