// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "helpers/parsed_session.h"

namespace traguardo {
namespace {

using test::Bytes;
using test::chunk;
using test::cnf;
using test::frame_s;
using test::text_bytes;
using test::operator+;
using test::ParsedSession;
using test::StoredSample;
using test::tail;
using Samples = std::vector<StoredSample>;

constexpr u32 kS = 0;
constexpr u32 kM = 1;
constexpr u32 kG = 2;
constexpr u32 kA = 3;

// Channel 1 has 4-byte samples, channel 2 samples of one byte.
Bytes table() {
  return cnf({{1, "a", 3, 4}, {2, "b", 5, 1, 0x10, 10000}}, test::acd(7, 103, {2, 1}) + test::grp(9, {1, 2}));
}

Samples samples_after(const Bytes& stream, const std::string& channel) {
  return ParsedSession(table() + stream + tail()).samples(channel);
}

TEST(Chunks, RebuildEveryKind) {
  EXPECT_EQ(samples_after(chunk(kS, 1, 0, false, {10, 0, 0, 0, 1, 0}) + chunk(kS, 1, 1, true, {0, 0}), "a"),
            (Samples{{10000, 1}}));
  EXPECT_EQ(samples_after(chunk(kA, 7, 0, true, {10, 0, 0, 0, 5, 1, 0, 0}) + chunk(kA, 7, 1, true, {0}), "b"),
            (Samples{}))
      << "the first chunk is marked as last and too short: rejected, and so is the second";
  EXPECT_EQ(samples_after(chunk(kA, 7, 0, false, {10, 0, 0, 0, 5, 1, 0, 0}) + chunk(kA, 7, 1, true, {0}), "a"),
            (Samples{{11000, 1}}));
  EXPECT_EQ(
      samples_after(chunk(kG, 500, 0, false, {10, 0, 0, 0, 9, 0, 1, 0}) + chunk(kG, 500, 1, true, {0, 0, 6}), "b"),
      (Samples{{10000, 6}}))
      << "the group's index stands inside, that of the header plays no part";
  // The first sample of the chunks is the last of the frame.
  EXPECT_EQ(samples_after(chunk(kM, 2, 0, true, {10, 0, 0, 0, 1, 2, 3}), "b"),
            (Samples{{10000, 2}, {20000, 3}, {30000, 1}}));
}

TEST(Chunks, ArriveInAnyOrderWithTheLastOneLast) {
  EXPECT_EQ(
      samples_after(
          chunk(kS, 1, 1, false, {1, 0}) + chunk(kS, 1, 0, false, {10, 0, 0, 0}) + chunk(kS, 1, 2, true, {0, 0}), "a"),
      (Samples{{10000, 1}}));
}

TEST(Chunks, WithoutALengthByteEndAtTheirParenthesis) {
  const auto short_form = [](const Bytes& data) { return wire::Chunk{0, 2, 0, true, false}.frame(data); };
  ParsedSession session(table() + short_form({10, 0, 0, 0, 7}) + short_form(text_bytes(")")) +
                        short_form(text_bytes("123456789")) + tail());
  EXPECT_EQ(session.samples("b"), (Samples{{10000, 7}}));
  EXPECT_EQ(session.reader().assemblers().at(2).m_err_dim_trama.elements().size(), 2U);
}

TEST(Chunks, DamageCostsItsPacketAndTheNextOfItsKey) {
  // Packet one misses its chunk 1; packet two fills it, and comes out mixed; packet three is whole again.
  const auto packet = [](u8 time, u8 value) {
    return std::vector<Bytes>{chunk(kS, 1, 0, false, {time, 0, 0, 0}), chunk(kS, 1, 1, false, {value, 0}),
                              chunk(kS, 1, 2, true, {0, 0})};
  };
  const auto one = packet(10, 1);
  const auto two = packet(20, 2);
  const auto three = packet(30, 3);
  const Bytes other = chunk(kS, 2, 0, true, {15, 0, 0, 0, 8});
  ParsedSession session(table() + one[0] + one[2] + other + two[0] + two[1] + two[2] + three[0] + three[1] + three[2] +
                        tail());
  EXPECT_EQ(session.samples("a"), (Samples{{10000, 2}, {30000, 3}}));
  EXPECT_EQ(session.samples("b"), (Samples{{15000, 8}})) << "other keys are not touched";
  const CanMsgAssembler& assembler = session.reader().assemblers().at(1);
  EXPECT_EQ(assembler.m_err_highest_frame.elements().size(), 1U);
  EXPECT_EQ(assembler.m_err_frame_n_gia_presente.elements().size(), 2U);
}

TEST(Chunks, ErrorsStandInTheirLists) {
  Bytes length_0 = chunk(kS, 1, 0, true, {});
  Bytes length_9 = chunk(kS, 1, 0, true, Bytes(9));
  Bytes open_end = chunk(kS, 1, 0, true, {1, 2, 3});
  open_end.back() = 'x';
  const Bytes unknown = chunk(kS, 77, 0, true, {10, 0, 0, 0, 1, 0, 0, 0});
  const Bytes rejected = chunk(kS, 1, 5, false, {}) + chunk(kA, 7, 0, true, {10, 0, 0, 0, 1});
  ParsedSession session(table() + length_0 + length_9 + open_end + unknown + chunk(4, 1, 0, true, {1}) + rejected +
                        frame_s(20, 2, 0) + tail());
  const auto& assemblers = session.reader().assemblers();
  EXPECT_EQ(assemblers.at(1).m_err_dim_trama.elements().size(), 3U);
  EXPECT_EQ(assemblers.at(1).m_err_parentesi.elements().size(), 1U);
  EXPECT_EQ(assemblers.at(77).m_err_riscostruisci_ich, std::vector<u64>{77});
  EXPECT_EQ(assemblers.at(77).m_err_riscostruisci_ptr.elements().size(), 1U);
  EXPECT_EQ(assemblers.at(3 * 65535 + 7).m_err_interpreta.elements().size(), 1U);
  EXPECT_EQ(session.reader().errors_in_c().elements().size(), 1U);
  EXPECT_EQ(session.reader().errors_in_a().elements().size(), 1U) << "the frame decoder lists it, too";
}

}  // namespace
}  // namespace traguardo
