// SPDX-License-Identifier: MIT
#include "logger/tag_decoder.h"

#include <gtest/gtest.h>

#include <random>

#include "helpers/temp_folder.h"
#include "helpers/wire.h"
#include "logger/input_file.h"
#include "logger/tag_scan.h"

namespace traguardo {
namespace {

using test::Bytes;
using test::text_bytes;
using test::operator+;

class Recorder : public IExternalHelper {
 public:
  Recorder(const Bytes& bytes, std::string stop) : buffer(bytes), stop_at(std::move(stop)) {}
  bool OnTag(const SAtomTag& tag) override {
    log += "<" + tag.name + ">";
    return tag.name != stop_at;
  }
  u32 OnUntaggedBytes(u32 offset) override {
    log += static_cast<char>(buffer[offset]);
    return buffer[offset] == '!' ? kStopWalk : 1;
  }
  const Bytes& buffer;
  std::string log;
  std::string stop_at;
};

std::string walk(const Bytes& bytes, bool* finished = nullptr, const std::string& stop_at = "none") {
  const u32 size = static_cast<u32>(bytes.size());
  Recorder recorder(bytes, stop_at);
  const bool whole = CAtomTagDecoder().ParseAll(bytes.data(), size, recorder);
  if (finished != nullptr) *finished = whole;
  // A file is read by windows; what it holds is the same.
  const test::TempFolder folder;
  folder.write("file", bytes);
  InputFile file(folder.wide("file"));
  Recorder from_file(bytes, stop_at);
  EXPECT_EQ(tags::walk(&file, size, from_file), whole);
  EXPECT_EQ(from_file.log, recorder.log);
  return recorder.log;
}

Bytes with(Bytes bytes, std::size_t at, u8 value) {
  bytes[at] = value;
  return bytes;
}

TEST(TagDecoder, BelievesOnlyWhatMarksAndChecksumConfirm) {
  const Bytes good = test::tag("ABC", "payload");
  const std::size_t closing = 12 + 7;
  struct Case {
    const char* name;
    Bytes bytes;
    bool is_tag;
  };
  const Case cases[] = {
      {"as it is", good, true},
      {"version plays no part", with(good, 10, 9), true},
      {"payload byte altered", with(good, 13, 'X'), false},
      {"checksum altered", with(good, closing + 5, 0), false},
      {"no <", with(good, 0, 'x'), false},
      {"no h", with(good, 1, 'x'), false},
      {"no > of the opening", with(good, 11, 'x'), false},
      {"no < of the closing", with(good, closing, 'x'), false},
      {"no > of the closing", with(good, closing + 7, 'x'), false},
      {"another name in the closing", with(good, closing + 1, 'X'), false},
      {"bytes behind a name's NUL don't count", with(with(good, 5, 0), closing + 4, 'Z'), false},
      {"size past the end", with(good, 6, 200), false},
      {"size that wraps", with(with(with(with(good, 6, 0xFF), 7, 0xFF), 8, 0xFF), 9, 0xFF), false},
  };
  for (const Case& c : cases) {
    CAtomTagDecoder decoder;
    SAtomTag tag;
    const Bytes padded = c.bytes + Bytes(21);
    EXPECT_EQ(decoder.NextTag(padded.data(), static_cast<u32>(padded.size()), tag, 0) != 0, c.is_tag) << c.name;
  }
}

TEST(TagDecoder, SeesNoTagThatBeginsInTheLastTwentyBytes) {
  const Bytes empty = test::tag("ABC", Bytes{});
  ASSERT_EQ(empty.size(), 20U);
  EXPECT_EQ(walk(empty), "");
  EXPECT_EQ(walk(empty + Bytes{'x'}), "<ABC>");
  EXPECT_EQ(walk(Bytes{'x'} + empty), "x") << "at offset 1 of 21 bytes it begins too late";
}

TEST(TagDecoder, FindsATagInsideABrokenOne) {
  Bytes outer = test::tag("OUT", text_bytes("..") + test::tag("IN", "x") + text_bytes(".."));
  EXPECT_EQ(walk(outer + Bytes(21)).substr(0, 5), "<OUT>");
  outer[12] = '!' + 1;  // another payload byte: the checksum no longer fits
  const std::string log = walk(outer + Bytes(21));
  EXPECT_NE(log.find("<IN>"), std::string::npos) << log;
  EXPECT_EQ(log.find("<OUT>"), std::string::npos) << log;
}

// Longer than a window of the file, across the end of one, and with broken ones that claim the rest of the file.
TEST(TagDecoder, WalksTagsOfAnyLength) {
  const Bytes long_payload(700'000, 'p');
  Bytes broken = test::tag("BAD", "x");
  store_u32(broken.data() + 6, 500'000);
  Bytes bytes = broken + Bytes(262'100, '.') + test::tag("A", Bytes(300, 'a')) + test::tag("B", long_payload) + broken;
  bytes = bytes + test::tag("C", "c") + Bytes(21);
  const std::string log = walk(bytes);
  EXPECT_NE(log.find("<A><B>"), std::string::npos);
  EXPECT_NE(log.find("<C>"), std::string::npos);
  EXPECT_EQ(log.find("<BAD>"), std::string::npos);
}

TEST(TagDecoder, WalkEndsWhenTheHelperSaysSo) {
  bool finished = true;
  const Bytes bytes = test::tag("A", "1") + text_bytes("ab!cd") + test::tag("B", "2") + Bytes(21);
  EXPECT_EQ(walk(bytes, &finished), "<A>ab!");
  EXPECT_FALSE(finished);
  EXPECT_EQ(walk(test::tag("A", "1") + test::tag("B", "2") + Bytes(21), &finished, "A"), "<A>");
  EXPECT_FALSE(finished);
}

TEST(TagDecoder, ListsAndFindsByName) {
  const Bytes bytes = text_bytes("junk") + test::tag("A", "one") + test::tag("B", "two") + text_bytes("<h<h") +
                      test::tag("A", "three") + test::tag("TRK ", "four") + Bytes(21);
  const u32 size = static_cast<u32>(bytes.size());
  CAtomTagDecoder decoder;
  std::list<SAtomTag> all;
  decoder.ListAllTags(bytes.data(), size, all);
  EXPECT_EQ(all.size(), 4U);
  std::vector<SAtomTag> named;
  decoder.VectorTagsNamed(bytes.data(), size, {"A", "TRK"}, named);
  ASSERT_EQ(named.size(), 2U) << "TRK is another name than TRK and a blank";
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(named[1].payload), named[1].payloadSize), "three");
  std::vector<u8> payload;
  u8 version = 0;
  const u32 behind = decoder.FindNamedTag(bytes.data(), size, "A", payload, &version, 5);
  EXPECT_EQ(std::string(payload.begin(), payload.end()), "three");
  EXPECT_EQ(decoder.FindNamedTag(bytes.data(), size, "A", payload, &version, behind), 0U);
  SAtomTag tag;
  EXPECT_NE(decoder.NextTagNamed(bytes.data(), size, {"B"}, tag, 0), 0U);
  EXPECT_EQ(tag.name, "B");
}

TEST(TagDecoder, ExactTagWantsNameAndSize) {
  const Bytes bytes = test::tag("A", "1234", 7) + Bytes(1);
  const u32 size = static_cast<u32>(bytes.size());
  CAtomTagDecoder decoder;
  u8 out[4] = {};
  u8 version = 0;
  EXPECT_TRUE(decoder.DecodeExactTag(bytes.data(), size, "A", out, 4, &version));
  EXPECT_EQ(version, 7);
  EXPECT_EQ(out[3], '4');
  EXPECT_FALSE(decoder.DecodeExactTag(bytes.data(), size, "A", out, 3, &version));
  EXPECT_FALSE(decoder.DecodeExactTag(bytes.data(), size, "B", out, 4, &version));
  EXPECT_FALSE(decoder.DecodeExactTag(bytes.data(), 20, "A", out, 4, &version));
}

// Large payloads are summed by blocks; the sums must be those of the bytes, at every alignment.
TEST(TagDecoder, SumsLargePayloadsLikeSmallOnes) {
  std::mt19937 random(3);
  for (int i = 0; i < 40; ++i) {
    Bytes payload(random() % 60000);
    for (u8& byte : payload) byte = static_cast<u8>(random());
    const Bytes before(random() % 5000, 'x');
    Bytes bytes = before + test::tag("BIG", payload) + Bytes(21);
    CAtomTagDecoder decoder;
    std::list<SAtomTag> tags;
    decoder.ListTagsNamed(bytes.data(), static_cast<u32>(bytes.size()), {"BIG"}, tags);
    ASSERT_EQ(tags.size(), 1U);
    bytes[before.size() + 12 + payload.size() / 2] ^= 1;
    if (payload.empty()) continue;
    tags.clear();
    decoder.ListTagsNamed(bytes.data(), static_cast<u32>(bytes.size()), {"BIG"}, tags);
    ASSERT_TRUE(tags.empty());
  }
}

}  // namespace
}  // namespace traguardo
