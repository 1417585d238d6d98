// SPDX-License-Identifier: MIT
// A whole .wmp from the fuzzer's bytes, beside a sound trace file and with configuration files that make the reader add
// channels: it must open, and hand out what it has.

#include "mutators.h"
#include "whole_file.h"
#include "wire/jts.h"
#include "wire/wmp.h"

using namespace traguardo;

namespace {

// Every sensor has a formula of its own, that bytes changed at random hardly ever meet.
fuzz::Bytes with_other_sensors(fuzz::Bytes bytes, fuzz::Random& random) {
  constexpr std::size_t kSensorAt = 64;
  constexpr unsigned kSensors = 256;
  const auto version = static_cast<std::uint16_t>(bytes.size() > 3 ? bytes[2] | bytes[3] << 8 : 0);
  const std::size_t step = wire::wmp::channel_group_at(1) - wire::wmp::channel_group_at(0);
  for (std::size_t at = wire::wmp::first_channel_at(version) + kSensorAt; version >= 600 && at + 1 < bytes.size();
       at += step) {
    if (random() % 2 != 0) continue;
    bytes[at] = static_cast<std::uint8_t>(random() % kSensors);
    bytes[at + 1] = 0;
  }
  return bytes;
}

}  // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t room, unsigned seed) {
  return fuzz::mutate(data, size, room, seed, [room](const fuzz::Bytes& bytes, fuzz::Random& random) {
    fuzz::Bytes made = random() % 8 == 0 ? with_other_sensors(bytes, random) : fuzz::changed(bytes, room);
    wire::wmp::reseal(&made);
    return made;
  });
}

namespace {

void make_home() {
  static const test::TempFolder home;
  home.write("limits.txt", std::string("1000=1\n9000=1\n"));
  home.write(
      "FIA.txt",
      std::string("BarometricPressure=1.01\nRPM=Engine\nPboost=Oil Press\nThrottle=Throttle\nMaxPboost=limits.txt\n"));
  home.write("FMI-limiter.txt", std::string("{\nlimiter=3000\npts_number=3\nthreshold=5000\n}\n"));
  ::setenv("TRAGUARDO_HOME", home.path().c_str(), 1);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const bool has_home = (make_home(), true);
  fuzz::check(has_home);
  const test::TempFolder& folder = fuzz::folder();
  static const std::string trace = folder.write("a.jts", wire::plain_jts(60));
  const std::vector<fuzz::Answer> answers =
      fuzz::read_everything(folder.write("a.wmp", fuzz::Bytes(data, data + size)));
  fuzz::check(answers.front().result == 1);
  std::filesystem::remove(folder.path() / "a.bak");
  fuzz::check(folder.names().size() == 2);
  return 0;
}
