// SPDX-License-Identifier: MIT
// What the disk or the memory refuses is a failed open, never a session with something missing.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <new>
#include <string>

#include "legacy/wmp_parser.h"
#include "model/parsed_channel.h"
#include "opened_session.h"

namespace {

// The allocation that fails, counted down; 0: none does.
long g_failing_allocation = 0;

void* allocate(std::size_t size) {
  if (g_failing_allocation > 0 && --g_failing_allocation == 0) throw std::bad_alloc();
  if (void* memory = std::malloc(size == 0 ? 1 : size)) return memory;
  throw std::bad_alloc();
}

}  // namespace

void* operator new(std::size_t size) {
  return allocate(size);
}
void* operator new[](std::size_t size) {
  return allocate(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept try {
  return allocate(size);
} catch (const std::bad_alloc&) {
  return nullptr;
}
void* operator new[](std::size_t size, const std::nothrow_t& nothrow) noexcept {
  return operator new(size, nothrow);
}
void operator delete(void* memory) noexcept {
  std::free(memory);
}
void operator delete[](void* memory) noexcept {
  std::free(memory);
}
void operator delete(void* memory, const std::nothrow_t&) noexcept {
  std::free(memory);
}
void operator delete[](void* memory, const std::nothrow_t&) noexcept {
  std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
  std::free(memory);
}

namespace traguardo::test {
namespace {

// Everything that a host can see of the channels, laps and trace.
std::string contents_of(CParserWMP& reader) {
  std::string text;
  for (const auto& channel : reader.GetCanali()) {
    const std::size_t count = static_cast<std::size_t>(channel->GetNumValori());
    std::vector<double> times(count);
    std::vector<double> values(count);
    channel->GetValori(times.data(), values.data(), static_cast<int>(count));
    text += channel->GetNome() + channel->GetUnita() + ":";
    for (const double value : values) text += std::to_string(value) + " ";
  }
  for (const auto& [number, session] : reader.GetSessioni())
    text += " session of " + std::to_string(session->laps.size());
  return text + reader.GetNomePilota() + (reader.GetTracciaGps("GPS") != nullptr ? " trace" : "");
}

// A session with something of everything: a smoothed speed as reference, a formula and the channels of the device.
wmp::File rich_file(u16 version) {
  wmp::File file = small_file(version);
  file.device_code = 48;
  file.racer = "A driver whose name is too long for a short text";
  for (wmp::Channel& channel : file.logged) {
    channel.words.assign(40, 3000);
    channel.values.assign(40, 300);
  }
  file.duration_ms = 400;
  file.reference = 0;
  file.logged[0].measure_class = 3;
  file.logged[0].filter = 2;
  file.logged[1].sensor = 77;
  if (version >= 400) file.derived = {plain_channel("Formula", {}, 5)};
  if (version >= 400) file.derived[0].formula = "First * 2 + Second";
  if (version == 500) file.dump = Bytes(90000, 0x11);
  return file;
}

TEST(FailedAllocations, AreFailedOpens) {
  constexpr u16 kVersions[] = {320, 451, 500, 550, 600};
  for (const u16 version : kVersions) {
    const TempFolder folder;
    folder.write("s.wmp", wmp::build(rich_file(version)));
    folder.write("s.jts", plain_jts(5));
    std::string wanted;
    {
      CParserWMP reader(folder.wide("s.wmp"));
      ASSERT_TRUE(reader.ParsaFile(nullptr));
      wanted = contents_of(reader);
    }
    bool all_done = false;
    int failed = 0;
    for (long nth = 1; !all_done; nth += 1 + nth / 200) {
      CParserWMP reader(folder.wide("s.wmp"));
      g_failing_allocation = nth;
      const bool opened = reader.ParsaFile(nullptr);
      all_done = g_failing_allocation > 0;
      g_failing_allocation = 0;
      if (opened) {
        EXPECT_EQ(contents_of(reader), wanted) << version << ", allocation " << nth;
      } else {
        ++failed;
      }
    }
    EXPECT_GT(failed, 100);
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"s.bak", "s.jts", "s.wmp"}));
  }
}

TEST(UnreadableFiles, AreFailedOpens) {
  // A folder under the file's name is there, but can't be read.
  for (const char* name : {"s.wmp", "s.jts"}) {
    const TempFolder folder;
    folder.write("s.wmp", wmp::build(small_file(600)));
    folder.write("s.jts", plain_jts(5));
    std::filesystem::remove(folder.path() / name);
    std::filesystem::create_directory(folder.path() / name);
    EXPECT_FALSE(CParserWMP(folder.wide("s.wmp")).ParsaFile(nullptr)) << name;
  }
}

TEST(TraceFile, IsFoundWhateverTheCaseOfItsEnding) {
  const std::pair<const char*, const char*> kPairs[] = {
      {"V.WMP", "V.JTS"}, {"v.wmp", "v.jts"}, {"v.Wmp", "v.Jts"}, {"V.WMP", "V.jts"}, {"v.wmp", "v.JTS"}};
  for (const auto& [session, trace] : kPairs) {
    const TempFolder folder;
    folder.write(session, wmp::build(small_file(600)));
    folder.write(trace, plain_jts(5));
    EXPECT_TRUE(CParserWMP(folder.wide(session)).ParsaFile(nullptr)) << session << " and " << trace;
  }
  EXPECT_TRUE(CParserWMP::trace_path_of(L"nowhere/V.WMP").ends_with(L"V.JTS"));
}

}  // namespace
}  // namespace traguardo::test
