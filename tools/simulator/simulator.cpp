// SPDX-License-Identifier: MIT
#include "simulator/simulator.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <cstring>
#include <deque>
#include <exception>
#include <new>
#include <set>
#include <utility>

#include "failure.h"
#include "output_file.h"
#include "simulator/car.h"
#include "simulator/channel_plan.h"
#include "simulator/circuit.h"
#include "simulator/gps_receiver.h"
#include "simulator/random.h"
#include "simulator/session_header.h"
#include "simulator/stream_writer.h"
#include "simulator/wmp_writer.h"
#include "wire/qlt.h"
#include "wire/samples.h"

namespace traguardo::simulator {

namespace {

constexpr std::uint32_t kFirstClockMs = 500;       // what the logger's clock shows when the session begins
constexpr std::uint64_t kCooldownMs = 2000;        // recorded behind the last mark
constexpr std::uint64_t kLongestMs = 3600000000u;  // the clock has 32 bits
constexpr std::uint64_t kOdometerPeriodMs = 5000;
constexpr std::size_t kLargestSample = 32;
constexpr std::size_t kChunkSize = 8;
// What the second type byte of a lap mark says.
constexpr Byte kOrdinaryLap = 0;
constexpr Byte kFirstLapOfRun = 1;
constexpr Byte kLastCompleteLap = 2;

// A channel while its session is written.
struct RunningChannel {
  PlannedChannel plan;
  std::uint16_t index = 0;
  std::size_t size = 0;
  Random noise{0};
  std::uint64_t samples = 0;
  // Samples that wait for their block to be full.
  Bytes block;
  std::size_t block_capacity = 0;
  std::size_t block_count = 0;
  std::uint32_t block_clock_ms = 0;
};

// Everything that happens at one rate.
struct Beat {
  std::uint64_t period_ms = 1;
  std::vector<std::size_t> singles;  // places in the list of channels
  std::vector<std::size_t> blocks;
  std::vector<std::size_t> chunked;
  std::vector<std::uint16_t> groups;  // indexes of sets
  std::vector<std::uint16_t> staggered;
};

class SessionWriter {
 public:
  SessionWriter(const SimulationOptions& options, const Circuit& circuit, StreamWriter& stream);

  void write();
  // Where the data begins, behind the channel table.
  std::uint64_t data_offset() const { return data_offset_; }
  SimulationSummary summary() const;

 private:
  void plan_beats();
  Beat& beat_of(int rate_hz);
  bool is_over(std::uint64_t tick) const;
  void write_beat(const Beat& beat, std::uint32_t clock_ms);
  Byte* frame_head(std::size_t room, char kind, std::uint32_t clock_ms, std::uint32_t index);
  void close_frame(Byte* end);
  Byte* sample_into(RunningChannel& channel, Byte* at);
  void write_single(RunningChannel& channel, std::uint32_t clock_ms);
  void add_to_block(RunningChannel& channel, std::uint32_t clock_ms);
  void write_block(RunningChannel& channel);
  void write_set(char kind, std::uint16_t set, const std::vector<std::uint16_t>& members, std::uint32_t clock_ms);
  void queue_chunks(RunningChannel& channel, std::uint32_t clock_ms);
  void write_chunk();
  void write_odometer(std::uint32_t clock_ms);
  void write_gps(std::uint64_t tick, std::uint32_t clock_ms);
  void write_passage(const Passage& passage, std::uint64_t tick);
  std::uint32_t clock_at(double time_s) const;

  const SimulationOptions& options_;
  StreamWriter& stream_;
  Car car_;
  const CarState* state_ = nullptr;
  GpsReceiver receiver_;
  std::vector<RunningChannel> channels_;
  ChannelSets groups_;
  ChannelSets staggered_;
  std::vector<Beat> beats_;
  std::deque<Bytes> chunks_;
  std::uint64_t packets_ = 0;
  std::uint64_t data_offset_ = 0;
  std::uint64_t end_tick_ = 0;  // 0: not known yet
  std::uint32_t lap_start_ms_ = kFirstClockMs;
  SimulationSummary summary_;
};

SessionWriter::SessionWriter(const SimulationOptions& options, const Circuit& circuit, StreamWriter& stream)
    : options_(options), stream_(stream), car_(circuit, options), receiver_(options) {
  for (PlannedChannel& plan : plan_channels(options)) {
    RunningChannel channel;
    channel.index = static_cast<std::uint16_t>(channels_.size() + 1);
    channel.size = wire::sample_size(plan.format);
    channel.noise = Random(options.seed * 1000003u + channel.index);
    // A block of a tenth of a second to a few seconds, so that no sample waits long.
    channel.block_capacity = static_cast<std::size_t>(std::clamp(plan.rate_hz / 10, 4, 100));
    if (plan.carrier == Carrier::block) channel.block.resize(channel.block_capacity * channel.size);
    channel.plan = std::move(plan);
    channels_.push_back(std::move(channel));
  }
  plan_beats();
  if (options.minutes > 0) {
    end_tick_ = std::max<std::uint64_t>(1, static_cast<std::uint64_t>(options.minutes * 60000.0));
  }
}

Beat& SessionWriter::beat_of(int rate_hz) {
  const std::uint64_t period = 1000u / static_cast<std::uint64_t>(rate_hz);
  for (Beat& beat : beats_) {
    if (beat.period_ms == period) return beat;
  }
  beats_.emplace_back().period_ms = period;
  return beats_.back();
}

void SessionWriter::plan_beats() {
  std::vector<PlannedChannel> plans;
  for (const RunningChannel& channel : channels_) plans.push_back(channel.plan);
  groups_ = sets_of(plans, Carrier::group);
  staggered_ = sets_of(plans, Carrier::staggered);
  for (std::size_t i = 0; i < channels_.size(); ++i) {
    const PlannedChannel& plan = channels_[i].plan;
    if (plan.carrier == Carrier::single) beat_of(plan.rate_hz).singles.push_back(i);
    if (plan.carrier == Carrier::block) beat_of(plan.rate_hz).blocks.push_back(i);
    if (plan.carrier == Carrier::chunked) beat_of(plan.rate_hz).chunked.push_back(i);
  }
  for (const auto& [set, members] : groups_) {
    beat_of(channels_[members.front() - 1u].plan.rate_hz).groups.push_back(set);
  }
  for (const auto& [set, members] : staggered_) {
    beat_of(channels_[members.front() - 1u].plan.rate_hz).staggered.push_back(set);
  }
}

void SessionWriter::write() {
  stream_.put(session_tags(options_));
  std::vector<PlannedChannel> plans;
  for (const RunningChannel& channel : channels_) plans.push_back(channel.plan);
  stream_.put(channel_table(plans));
  data_offset_ = stream_.size();

  std::uint64_t tick = 0;  // milliseconds since the start
  for (;; ++tick) {
    state_ = &car_.move_to(static_cast<double>(tick) * 0.001);
    for (const Passage& passage : car_.take_passages()) write_passage(passage, tick);
    if (is_over(tick)) break;
    const std::uint32_t clock_ms = kFirstClockMs + static_cast<std::uint32_t>(tick);
    for (const Beat& beat : beats_) {
      if (tick % beat.period_ms == 0) write_beat(beat, clock_ms);
    }
    if (tick % GpsReceiver::kPeriodMs == 0) write_gps(tick, clock_ms);
    if (tick % kOdometerPeriodMs == 0) write_odometer(clock_ms);
    // One piece at a time, among the other frames, as it comes over a bus.
    if (!chunks_.empty()) write_chunk();
  }
  for (RunningChannel& channel : channels_) write_block(channel);
  while (!chunks_.empty()) write_chunk();
  // The last bytes of a file are no place for data: a reader that looks for a whole tag stops in front of them.
  stream_.put(wire::tag("EVT", "stop"));
  summary_.duration_s = static_cast<double>(tick) * 0.001;
}

bool SessionWriter::is_over(std::uint64_t tick) const {
  return (end_tick_ != 0 && tick >= end_tick_) || tick >= kLongestMs;
}

SimulationSummary SessionWriter::summary() const {
  SimulationSummary result = summary_;
  for (const RunningChannel& channel : channels_) {
    result.channels.push_back({channel.plan.name, channel.index, channel.samples});
    result.samples += channel.samples;
  }
  result.bytes = stream_.size();
  result.truth = car_.truth();
  return result;
}

void SessionWriter::write_beat(const Beat& beat, std::uint32_t clock_ms) {
  for (const std::size_t i : beat.singles) write_single(channels_[i], clock_ms);
  for (const std::size_t i : beat.blocks) add_to_block(channels_[i], clock_ms);
  for (const std::size_t i : beat.chunked) queue_chunks(channels_[i], clock_ms);
  for (const std::uint16_t set : beat.groups) write_set('G', set, groups_[set], clock_ms);
  for (const std::uint16_t set : beat.staggered) write_set('A', set, staggered_[set], clock_ms);
}

Byte* SessionWriter::frame_head(std::size_t room, char kind, std::uint32_t clock_ms, std::uint32_t index) {
  return wire::put_frame_head(stream_.room(room), kind, clock_ms, index);
}

void SessionWriter::close_frame(Byte* end) {
  stream_.wrote_up_to(wire::put_u8(end, ')'));
  ++summary_.frames;
}

Byte* SessionWriter::sample_into(RunningChannel& channel, Byte* at) {
  wire::encode_sample(channel.plan.format, measure(channel.plan, channel.index, *state_, channel.noise), at);
  ++channel.samples;
  return at + channel.size;
}

void SessionWriter::write_single(RunningChannel& channel, std::uint32_t clock_ms) {
  Byte* const at = frame_head(channel.size + 9, 'S', clock_ms, channel.index);
  close_frame(sample_into(channel, at));
}

void SessionWriter::add_to_block(RunningChannel& channel, std::uint32_t clock_ms) {
  if (channel.block_count == 0) channel.block_clock_ms = clock_ms;
  sample_into(channel, channel.block.data() + channel.block_count * channel.size);
  if (++channel.block_count == channel.block_capacity) write_block(channel);
}

void SessionWriter::write_block(RunningChannel& channel) {
  if (channel.block_count == 0) return;
  const std::size_t bytes = channel.block_count * channel.size;
  Byte* at = frame_head(bytes + 11, 'M', channel.block_clock_ms, channel.index);
  at = wire::put_u16(at, static_cast<std::uint32_t>(channel.block_count));
  std::memcpy(at, channel.block.data(), bytes);
  close_frame(at + bytes);
  channel.block_count = 0;
}

void SessionWriter::write_set(char kind, std::uint16_t set, const std::vector<std::uint16_t>& members,
                              std::uint32_t clock_ms) {
  Byte* at = frame_head(members.size() * kLargestSample + 9, kind, clock_ms, set);
  for (const std::uint16_t member : members) at = sample_into(channels_[member - 1u], at);
  close_frame(at);
}

// A packet of the clock and a sample, cut into numbered pieces. Every other packet goes without length bytes, where its
// bytes allow: such a piece ends at its first ')'.
void SessionWriter::queue_chunks(RunningChannel& channel, std::uint32_t clock_ms) {
  Bytes packet(4 + channel.size);
  sample_into(channel, wire::put_u32(packet.data(), clock_ms));
  const bool has_parenthesis = std::find(packet.begin(), packet.end(), Byte{')'}) != packet.end();
  const bool plain = packets_++ % 2 == 1 && !has_parenthesis;
  const std::size_t pieces = (packet.size() + kChunkSize - 1) / kChunkSize;
  for (std::size_t piece = 0; piece < pieces; ++piece) {
    const std::size_t start = piece * kChunkSize;
    const std::size_t length = std::min(kChunkSize, packet.size() - start);
    wire::Chunk chunk;
    chunk.index = channel.index;
    chunk.number = static_cast<std::uint32_t>(piece);
    chunk.last = piece + 1 == pieces;
    chunk.with_length = !plain;
    chunks_.push_back(chunk.frame(Bytes(&packet[start], &packet[start] + length)));
  }
}

void SessionWriter::write_chunk() {
  stream_.put(chunks_.front());
  chunks_.pop_front();
  ++summary_.frames;
}

void SessionWriter::write_odometer(std::uint32_t clock_ms) {
  constexpr Format kFormat = Format::total_odometer;
  const std::uint32_t index = static_cast<std::uint32_t>(channels_.size() + 1);
  Byte* const at = frame_head(wire::sample_size(kFormat) + 9, 'S', clock_ms, index);
  wire::encode_sample(kFormat, 1234567.0 + state_->distance_m, at);
  close_frame(at + wire::sample_size(kFormat));
}

void SessionWriter::write_gps(std::uint64_t tick, std::uint32_t clock_ms) {
  stream_.put(receiver_.solution(*state_, tick, clock_ms).tagged());
  ++summary_.gps_records;
}

std::uint32_t SessionWriter::clock_at(double time_s) const {
  return kFirstClockMs + static_cast<std::uint32_t>(std::floor(time_s * 1000 + 0.5));
}

// A mark of a lap or a split, in the two forms of it by turns.
void SessionWriter::write_passage(const Passage& passage, std::uint64_t tick) {
  const bool closes_lap = passage.split == 0;
  const std::uint32_t clock_ms = clock_at(passage.time_s);
  const std::uint32_t since_start_ms = clock_ms - lap_start_ms_;
  Byte kind = kOrdinaryLap;
  if (closes_lap) {
    if (passage.laps_completed == 1) kind = kFirstLapOfRun;
    const bool next_is_cut = options_.minutes > 0 && car_.lap_end_s() > options_.minutes * 60;
    if (next_is_cut) kind = kLastCompleteLap;
  }
  const bool newer_form = passage.laps_completed % 2 == 0;
  wire::Lap lap;
  lap.session = 1;
  lap.split = static_cast<std::uint8_t>(passage.split);
  lap.lap = static_cast<std::uint16_t>(passage.laps_completed);
  lap.lap_time_ms = static_cast<std::int32_t>(since_start_ms);
  lap.split_time_ms = since_start_ms;
  lap.time_ms = clock_ms;
  lap.kind1 = kind;
  stream_.put(lap.tagged(newer_form ? 3 : 2));
  if (!closes_lap) return;
  summary_.lap_times_ms.push_back(since_start_ms);
  lap_start_ms_ = clock_ms;
  if (end_tick_ == 0 && passage.laps_completed == options_.laps) end_tick_ = tick + kCooldownMs;
}

// --- Around a session ------------------------------------------------------------------------------------------------

void check(const SimulationOptions& options) {
  using tool::Failure;
  if (options.laps < 1 || options.laps > 30000) throw Failure("the number of laps must be 1 to 30000");
  if (options.channels < 0 || options.channels > 60000) throw Failure("the number of channels must be 1 to 60000");
  if (!(options.minutes >= 0 && options.minutes <= 60000)) throw Failure("the minutes must be 0 to 60000");
  for (const SlowCorner& slow : options.slow_corners) {
    if (slow.corner < 1 || !(slow.percent >= 0 && slow.percent <= 90)) {
      throw Failure("a slow corner is its number from 1 on and 0 to 90 percent");
    }
  }
  if (!(options.fuel_kg >= 0 && options.fuel_kg <= 200)) throw Failure("the fuel must be 0 to 200 kg");
  if (options.damage < 0) throw Failure("the number of damaged places must not be negative");
  if (options.rate_hz < 0 || (options.rate_hz > 0 && (options.rate_hz > 1000 || 1000 % options.rate_hz != 0))) {
    throw Failure("the rate must be a divisor of 1000");
  }
  const bool circle = options.circle_radius_m != 0;
  if (circle && !(options.circle_radius_m >= 10 && options.circle_radius_m <= 100000)) {
    throw Failure("the radius of the circle must be 10 to 100000 metres");
  }
  if (circle && !(options.circle_speed_mps >= 1 && options.circle_speed_mps <= 200)) {
    throw Failure("the speed on the circle must be 1 to 200 metres per second");
  }
}

// The last four characters of a path, in lower case.
std::string ending_of(const std::string& path) {
  if (path.size() < 4) return {};
  std::string ending = path.substr(path.size() - 4);
  for (char& c : ending) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return ending;
}

bool is_legacy(const SimulationOptions& options, const std::string& path) {
  if (options.format == SessionFormat::by_name) return ending_of(path) == ".wmp";
  return options.format == SessionFormat::wmp;
}

// Distinct places of [begin, end), in ascending order.
std::vector<Damage> choose_damage(std::uint64_t count, std::uint64_t begin, std::uint64_t end, std::uint64_t seed) {
  Random random(seed ^ 0xDA3A6Eu);
  count = std::min(count, (end - begin) / 2);
  std::set<std::uint64_t> offsets;
  while (offsets.size() < count) offsets.insert(begin + random.below(end - begin));
  std::vector<Damage> damage;
  damage.reserve(offsets.size());
  constexpr std::array<Damage::Kind, 3> kKinds = {Damage::Kind::change, Damage::Kind::lose, Damage::Kind::add};
  for (const std::uint64_t offset : offsets) {
    const Damage::Kind kind = kKinds[random.below(kKinds.size())];
    damage.push_back({offset, kind, static_cast<Byte>(1 + random.below(255))});
  }
  return damage;
}

void simulate(const SimulationOptions& options, const std::string& path, SimulationSummary* summary) {
  check(options);
  const Circuit circuit = options.circle_radius_m > 0 ? Circuit::circle(options.circle_radius_m)
                                                      : Circuit::winding(options.circuit.value_or(options.seed));
  if (is_legacy(options, path)) {
    if (options.keep_truth) throw tool::Failure("the truth is told of .qlt and .qlc sessions alone");
    const SimulationSummary written = write_wmp_session(options, circuit, path);
    if (summary != nullptr) *summary = written;
    return;
  }
  if (options.wmp_version || options.device_code || options.dump) {
    throw tool::Failure("a version, a device code and a dump belong to .wmp sessions");
  }
  std::vector<Damage> damage;
  if (options.damage > 0) {
    // Once without a file, to learn how long it gets.
    StreamWriter counter(nullptr, false, {});
    SessionWriter session(options, circuit, counter);
    session.write();
    damage =
        choose_damage(static_cast<std::uint64_t>(options.damage), session.data_offset(), counter.size(), options.seed);
  }
  tool::OutputFile file(path);
  StreamWriter stream(&file, ending_of(path) == ".qlc", std::move(damage));
  SessionWriter session(options, circuit, stream);
  session.write();
  stream.finish();
  file.keep();
  if (summary != nullptr) *summary = session.summary();
}

}  // namespace

bool simulate_to_file(const SimulationOptions& options, const std::string& path, std::string& error,
                      SimulationSummary* summary) {
  try {
    simulate(options, path, summary);
    return true;
  } catch (const std::bad_alloc&) {
    error = "out of memory";
  } catch (const std::exception& failure) {
    error = failure.what();
  }
  return false;
}

}  // namespace traguardo::simulator
