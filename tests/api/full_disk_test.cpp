// SPDX-License-Identifier: MIT
// A disk that fills up at any point of an open: the open fails or succeeds whole, and nothing stays behind but an
// expansion that is whole.

#include <gtest/gtest.h>
#include <zlib.h>

#include <ostream>
#include <string>
#include <vector>

#include "api/exports.h"
#include "helpers/parsed_session.h"
#include "model/mapped_array.h"
#include "support/platform/fault_injection.h"

namespace traguardo {
namespace {

using test::Bytes;
using test::cnf;
using test::frame_s;
using test::operator+;
using test::tag;
using test::tail;
using test::TempFolder;

// Two channels, the second one quiet: of its samples only a few are ever written.
constexpr u32 kSamples = 20000;
Bytes session() {
  Bytes bytes = tag("RCR", "racer") + cnf({{1, "a"}, {2, "b"}});
  for (u32 i = 0; i < kSamples; ++i) {
    const Bytes frame = frame_s(10 * i, i % 1000 == 0 ? 2 : 1, static_cast<u16>(i));
    bytes.insert(bytes.end(), frame.begin(), frame.end());
  }
  return bytes + tail();
}

Bytes compressed(const Bytes& plain) {
  uLongf size = compressBound(static_cast<uLong>(plain.size()));
  Bytes out(size);
  compress(out.data(), &size, plain.data(), static_cast<uLong>(plain.size()));
  out.resize(size);
  return out;
}

struct DiskAgain {
  ~DiskAgain() { platform::let_disk_take_anything(); }
};

struct Format {
  const char* name;
  bool compressed;
};
void PrintTo(const Format& format, std::ostream* out) {
  *out << format.name;
}
class FullDisk : public ::testing::TestWithParam<Format> {};

TEST_P(FullDisk, IsAFailedOpenThatLeavesNothing) {
  const DiskAgain again;
  const KeptBudget nothing(0);
  const TempFolder folder;
  const Format& format = GetParam();
  const std::string path = folder.write(format.name, format.compressed ? compressed(session()) : session());
  constexpr u64 kStep = 50'000;
  u32 failed = 0;
  for (u64 room = 0;; room += kStep) {
    ASSERT_LT(room, 10'000'000U) << "the session needs no more than that";
    platform::let_disk_take(room);
    const int handle = open_file(path.c_str());
    if (handle == 0) {
      ++failed;
      const std::vector<std::string> left = folder.names();
      EXPECT_EQ(left.front(), format.name) << "room for " << room;
      EXPECT_LE(left.size(), format.compressed ? 2U : 1U) << left.back();
      if (left.size() == 2) {
        EXPECT_EQ(folder.read(left.back()).size(), session().size());
      }
      continue;
    }
    ASSERT_GT(handle, 0);
    EXPECT_EQ(get_channel_samples_count(handle, 0) + get_channel_samples_count(handle, 1), static_cast<int>(kSamples));
    EXPECT_EQ(close_file_i(handle), handle);
    break;
  }
  // Twelve bytes a sample have to go somewhere.
  EXPECT_GE(failed, kSamples * 12 / kStep / 2);
}

const Format kFormats[] = {{"a.qlt", false}, {"a.qlc", true}};
INSTANTIATE_TEST_SUITE_P(Formats, FullDisk, ::testing::ValuesIn(kFormats));

}  // namespace
}  // namespace traguardo
