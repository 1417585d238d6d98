// SPDX-License-Identifier: MIT
// Whole channels through `CWMP::ConvertiCanale`, from the words of a file: which steps run for which channel, in which
// order.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "opened_session.h"

namespace traguardo::test {
namespace {

constexpr u16 k10Hz = 2;
constexpr u16 k2Hz = 1;

// A channel as the only one of its file, converted.
std::vector<float> converted(wmp::Channel channel) {
  wmp::File file;
  file.logged = {std::move(channel)};
  return SoundSession(file).values(0);
}

TEST(ChannelChain, StoredUnitsFollowTheUser) {
  wmp::Channel channel = plain_channel("Boost", {0, 2000, 0xFFFF});
  channel.sensor = 999;
  channel.unit = "mbar";
  channel.parameters = {0, 65535};
  EXPECT_EQ(converted(channel), (std::vector<float>{0.0F, 2000.0F * 0.001F, 65535.0F * 0.001F}));
  channel.unit = "V";
  EXPECT_EQ(converted(channel), (std::vector<float>{0, 2000, 65535}));
  // A stored C gets its degree sign in front of the conversion.
  channel.unit = "C";
  const ImperialUnits imperial;
  EXPECT_EQ(converted(channel)[1], 3632.0F);
}

// A thermocouple at 10 Hz, and a cold junction of 25 and 27.5 degrees at 2 Hz, of gain 2 and offset 1.
wmp::File thermocouple_file(bool junction_first) {
  wmp::Channel thermocouple = plain_channel("T", {1000, 1000, 1000, 1000, 1000, 1000, 1000}, k10Hz);
  thermocouple.sensor = 3;
  wmp::Channel junction = plain_channel("J", {1040, 1028}, k2Hz);
  junction.sensor = 75;
  junction.gain = 2;
  junction.offset = 1;
  junction.inverted = true;
  wmp::File file;
  file.logged = junction_first ? std::vector<wmp::Channel>{junction, thermocouple}
                               : std::vector<wmp::Channel>{thermocouple, junction};
  return file;
}

TEST(ChannelChain, ColdJunctionOnEitherSideOfItsThermocouple) {
  const float warmer = (12.0F / 4.9152F + 25.0F) * 2.0F + 1.0F;
  const std::vector<float> sums = {1051, 1051, 1051, 1051, 1051, 1000.0F + warmer, 1000.0F + warmer};
  SoundSession behind(thermocouple_file(false));
  EXPECT_EQ(behind.values(0), sums);
  EXPECT_EQ(behind.values(1), (std::vector<float>{-51, -warmer}));
  // Made anew for the thermocouple, without the later steps of its own chain.
  SoundSession in_front(thermocouple_file(true));
  EXPECT_EQ(in_front.values(1), sums);
  EXPECT_EQ(in_front.values(0), (std::vector<float>{51, warmer}));

  // A second thermocouple on each side sees the same temperatures.
  wmp::File many = thermocouple_file(false);
  many.logged = {many.logged[0], many.logged[0], many.logged[1], many.logged[0], many.logged[0]};
  SoundSession all(many);
  for (const std::size_t index : {0U, 1U, 3U, 4U}) EXPECT_EQ(all.values(index), sums) << index;
  // A digit channel is no thermocouple, whatever its sensor.
  many.logged[3].digit = true;
  EXPECT_EQ(SoundSession(many).values(4), sums);

  wmp::File alone = thermocouple_file(false);
  alone.logged.pop_back();
  EXPECT_EQ(SoundSession(alone).values(0), std::vector<float>(7, 1000.0F));
}

TEST(ChannelChain, ImperialColdJunctionWithAndWithoutDescriptor) {
  wmp::File file = thermocouple_file(false);
  file.logged[1].gain = 1;
  file.logged[1].offset = 0;
  const ImperialUnits imperial;
  EXPECT_EQ(SoundSession(file).values(0)[0], 1077.0F);
  file.logged[0].unit = "\t01021";
  EXPECT_EQ(SoundSession(file).values(0)[0], 1045.0F);
}

}  // namespace
}  // namespace traguardo::test
