// SPDX-License-Identifier: MIT
#include "logger/lz77.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include "helpers/temp_folder.h"
#include "helpers/wire.h"
#include "support/platform/fault_injection.h"

namespace traguardo {
namespace {

using test::Bytes;
using test::TempFolder;

Bytes compressed(const Bytes& plain) {
  uLongf size = compressBound(static_cast<uLong>(plain.size()));
  Bytes out(size);
  EXPECT_EQ(compress2(out.data(), &size, plain.data(), static_cast<uLong>(plain.size()), 6), Z_OK);
  out.resize(size);
  return out;
}

Bytes noise(std::size_t size) {
  Bytes out(size);
  u32 state = 1;
  for (u8& byte : out) {
    state = state * 1664525 + 1013904223;
    byte = static_cast<u8>(state >> 24);
  }
  return out;
}

Bytes with_dictionary() {
  z_stream stream{};
  EXPECT_EQ(deflateInit(&stream, 6), Z_OK);
  Bytes dictionary(100, 'd');
  EXPECT_EQ(deflateSetDictionary(&stream, dictionary.data(), 100), Z_OK);
  Bytes out(1000);
  stream.next_in = dictionary.data();
  stream.avail_in = 100;
  stream.next_out = out.data();
  stream.avail_out = 1000;
  EXPECT_EQ(deflate(&stream, Z_FINISH), Z_STREAM_END);
  out.resize(1000 - stream.avail_out);
  deflateEnd(&stream);
  return out;
}

TEST(Lz77, GivesACodeForEveryKindOfStream) {
  const Bytes plain = noise(100000);
  const Bytes whole = compressed(plain);
  const auto cut = [&](std::size_t size) {
    return Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
  };
  Bytes damaged = whole;
  damaged[damaged.size() / 2] ^= 0xFF;
  Bytes trailed = whole;
  trailed.insert(trailed.end(), 50, 'x');
  // Into nothing, over a few bytes and over more than the stream can yield.
  const std::string before[] = {"", "old", std::string(200000, 'o')};
  struct Case {
    const char* name;
    Bytes stream;
    i32 code;
    long size;  // what comes out; -1: some prefix of the plain bytes
  };
  const Case cases[] = {
      {"whole", whole, 0, 100000},
      {"bytes behind its end", trailed, 0, 100000},
      {"a multiple of the buffer", compressed(noise(16384 * 3)), 0, 16384 * 3},
      {"nothing inside", compressed({}), 0, 0},
      {"empty file", {}, -3, 0},
      {"plain bytes", noise(1000), -3, 0},
      {"cut in its middle", cut(whole.size() / 2), -3, -1},
      {"cut in its checksum", cut(whole.size() - 2), -3, 100000},
      {"a preset dictionary", with_dictionary(), -3, 0},
      {"damaged", damaged, -3, -1},
  };
  for (const Case& c : cases) {
    for (const std::string& old : before) {
      const TempFolder folder;
      if (!old.empty()) folder.write("a.qlt", old);
      const std::string source = folder.write("a.qlc", c.stream);
      EXPECT_EQ(CLz77().Decomprimi(source.c_str(), folder.file("a.qlt").c_str()), c.code) << c.name;
      const std::string got = folder.read("a.qlt");
      const bool is_old = got == old;
      if (c.code == 0) {
        EXPECT_EQ(static_cast<long>(got.size()), c.size) << c.name;
      } else if (c.size >= 0) {
        EXPECT_EQ(is_old, c.size <= static_cast<long>(old.size())) << c.name << ": the longer one stays";
      } else {
        EXPECT_EQ(is_old, old.size() > 100) << c.name << ": what came out in front of the damage is more";
        EXPECT_TRUE(is_old || (got.size() > 100 && got.size() <= plain.size())) << c.name;
      }
      for (const std::string& name : folder.names()) EXPECT_TRUE(name == "a.qlc" || name == "a.qlt") << name;
    }
  }
}

TEST(Lz77, DamagedStreamsReplaceNothingThatCannotBeMeasured) {
  const Bytes stream = compressed(noise(100000));
  // The source's own come first, and the opening of the fresh file.
  for (const auto& [operation, others] : {std::pair(platform::Operation::kOpen, 2), {platform::Operation::kSize, 1}}) {
    const TempFolder folder;
    folder.write("a.qlt", "old");
    const std::string source = folder.write("a.qlc", Bytes(stream.begin(), stream.begin() + 50000));
    platform::let_fail_after(operation, static_cast<u64>(others));
    EXPECT_EQ(CLz77().Decomprimi(source.c_str(), folder.file("a.qlt").c_str()), Z_DATA_ERROR);
    EXPECT_TRUE(platform::let_nothing_fail());
    EXPECT_EQ(folder.read("a.qlt"), "old");
  }
}

TEST(Lz77, LeavesTheTargetAloneWhereItCannotBegin) {
  const TempFolder folder;
  folder.write("a.qlt", "old");
  EXPECT_EQ(CLz77().Decomprimi(folder.file("missing.qlc").c_str(), folder.file("a.qlt").c_str()), 0);
  EXPECT_EQ(folder.read("a.qlt"), "old");
  const std::string source = folder.write("b.qlc", compressed(noise(10)));
  std::filesystem::create_directory(folder.path() / "b.qlt");
  EXPECT_EQ(CLz77().Decomprimi(source.c_str(), folder.file("b.qlt").c_str()), 0) << "a folder in the target's place";
  EXPECT_EQ(CLz77().Decomprimi(source.c_str(), folder.file("nowhere/b.qlt").c_str()), 0);
  EXPECT_EQ(folder.names(), (std::vector<std::string>{"a.qlt", "b.qlc", "b.qlt"}));
}

}  // namespace
}  // namespace traguardo
