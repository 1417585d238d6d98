// SPDX-License-Identifier: MIT
#include "math/math_channel_store.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <tuple>
#include <vector>

#include "helpers/temp_folder.h"
#include "math/math_tables.h"
#include "math/tokenizer.h"

namespace traguardo {
namespace {

class DefinitionFiles : public testing::Test {
 protected:
  test::TempFolder folder_;
  std::vector<SMathChannel> channels_;
  CTokenizer tokenizer_{254, "+-*/^(),. ", "_#", "+-*/^(),"};
  CMathChanIni store_{channels_, tokenizer_, platform::path_from_host_bytes(folder_.path().string())};

  void write_file(const std::string& name, const std::string& text) {
    std::filesystem::create_directories(folder_.path() / "MATHCHANNELS");
    folder_.write("MATHCHANNELS/" + name, text);
  }
};

TEST_F(DefinitionFiles, TheStandardSetTakesThePlaceOfWhatIsThere) {
  channels_.resize(3);
  tokenizer_.AddConstant("old", 1.0F);
  store_.SetDefaults();
  ASSERT_EQ(channels_.size(), 12U);
  EXPECT_EQ(tokenizer_.constant_count(), 19U);
  u16 index = 0;
  EXPECT_EQ(tokenizer_.FindConstant("old", &index), kTokenTableEnd);
  ASSERT_EQ(tokenizer_.FindConstant("ACCGRAV", &index), kTokenConstant);
  EXPECT_EQ(tokenizer_.constant_value(index), 9.8065F);
  EXPECT_EQ(channels_[5].name, "ZEP_Gear");
  EXPECT_EQ(channels_[5].formula, "gear(Engine, Speed #1, 1, 6)");
}

TEST_F(DefinitionFiles, WhatIsWrittenIsRead) {
  store_.SetDefaults();
  channels_[1].description = "two\nlines";
  channels_[1].enabled = 1;
  channels_[1].update_existing = 1;
  channels_[1].filter_word = 65535;
  channels_[1].frequency_code = 12;
  channels_[1].decimals = -1;
  tokenizer_.AddConstant("tiny", 1e-38F);
  ASSERT_TRUE(store_.write_definitions(L"mine.ZMC"));
  EXPECT_TRUE(std::filesystem::exists(folder_.path() / "MATHCHANNELS" / "mine.ZMC"));

  const std::vector<SMathChannel> written = channels_;
  channels_.clear();
  tokenizer_.ClearConstants();
  ASSERT_TRUE(store_.read_definitions(L"mine.ZMC"));
  ASSERT_EQ(channels_.size(), 12U);
  EXPECT_EQ(channels_[1].description, "two lines");
  const auto fields_of = [](const SMathChannel& c) {
    return std::tie(c.name, c.unit, c.enabled, c.update_existing, c.flags, c.filter_word, c.channel_class,
                    c.frequency_code, c.display_minimum, c.display_maximum, c.formula, c.function, c.sub_function,
                    c.decimals);
  };
  for (std::size_t i = 0; i < 12; ++i) EXPECT_TRUE(fields_of(channels_[i]) == fields_of(written[i])) << written[i].name;
  ASSERT_EQ(tokenizer_.constant_count(), 20U);
  EXPECT_EQ(tokenizer_.constant_value(19), 1e-38F);
}

TEST_F(DefinitionFiles, MissingAndForeignFilesChangeNothing) {
  channels_.resize(2);
  tokenizer_.AddConstant("mine", 1.0F);
  EXPECT_TRUE(store_.read_definitions(L"absent.ZMC"));
  write_file("foreign.ZMC", std::string("\x02\0channel x\n", 12));
  EXPECT_TRUE(store_.read_definitions(L"foreign.ZMC"));
  EXPECT_EQ(channels_.size(), 2U);
  EXPECT_EQ(tokenizer_.constant_count(), 1U);
}

TEST_F(DefinitionFiles, LinesThatCannotBeReadLeaveTheDefaults) {
  write_file("odd.ZMC",
             "traguardo math channels 1\r\n"
             "enabled 1\r\n"  // Before any definition.
             "channel A name of more than nineteen characters\r\n"
             "enabled one\r\nclass 70000\r\nfilter -1\r\nrange 5\r\nflags  7\r\ncolour red\r\n\r\n"
             "function 9999999999 3\r\nunit longer than nine\r\n"
             "channel");
  EXPECT_TRUE(store_.read_definitions(L"odd.ZMC"));
  ASSERT_EQ(channels_.size(), 2U);
  EXPECT_EQ(channels_[0].name, "A name of more than");
  EXPECT_EQ(channels_[0].unit, "longer th");
  const SMathChannel& read = channels_[0];
  EXPECT_EQ(std::tuple(read.enabled, read.channel_class, read.filter_word, read.function, read.sub_function),
            std::tuple(0, 1, 0, 0, 3));
  EXPECT_EQ(std::pair(read.display_minimum, read.display_maximum), std::pair(5.0F, 0.0F));
  EXPECT_EQ(read.flags, (std::array<i32, 2>{0, 7}));
  EXPECT_EQ(channels_[1].name, "");
}

}  // namespace
}  // namespace traguardo
