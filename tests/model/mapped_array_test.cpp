// SPDX-License-Identifier: MIT
#include "model/mapped_array.h"

#include <gtest/gtest.h>

#include "helpers/temp_folder.h"
#include "support/platform/fault_injection.h"

namespace traguardo {
namespace {

using test::TempFolder;

constexpr u32 kWindow = 65536;

void append(MemoryMappedArray* store, u64 value) {
  u8* record = nullptr;
  store->Aggiungi(&record);
  ASSERT_NE(record, nullptr);
  store_u64(record, value);
}

// The records from `first` on, as far as there are `count` of them.
std::vector<u64> numbers(const MemoryMappedArray& store, u64 first, u64 count) {
  std::vector<u8> bytes(static_cast<std::size_t>(count) * 12);
  std::vector<u64> read(static_cast<std::size_t>(store.Leggi(first, count, bytes.data())));
  for (std::size_t i = 0; i < read.size(); ++i) read[i] = load_u64(bytes.data() + i * 12);
  return read;
}

// Two stores in turn, so that their pieces lie between each other in the file; a small one alone never gets there.
TEST(MemoryMappedArray, GivesBackWhatWasWrittenAcrossBuffersWindowsAndPieces) {
  const TempFolder folder;
  auto owner = std::make_unique<StoreFile>(folder.wide("a.qlt"));
  StoreFile& file = *owner;
  for (const u64 count :
       {u64{0}, u64{1}, u64{5}, u64{31}, u64{48}, u64{4096}, u64{kWindow}, u64{kWindow} + 1, u64{3} * kWindow + 7}) {
    for (const u64 kept : {u64{0}, u64{1} << 30}) {
      const KeptBudget budget(kept);
      MemoryMappedArray store(&file);
      MemoryMappedArray other(&file);
      int new_windows = 0;
      for (u64 i = 0; i < count; ++i) {
        u8* record = nullptr;
        new_windows += store.Aggiungi(&record);
        ASSERT_NE(record, nullptr);
        store_u64(record, i);
        ASSERT_EQ(load_u64(store.Recente(0)), i);
        if (i > 0) {
          ASSERT_EQ(load_u64(store.Recente(1)), i - 1) << "the record before the newest must stay at hand";
        }
        append(&other, i * 7);
      }
      EXPECT_EQ(new_windows, count == 0 ? 0 : static_cast<int>((count - 1) / kWindow));
      EXPECT_TRUE(store.Chiudi());
      EXPECT_EQ(store.Numero(), count);
      const std::vector<u64> all = numbers(store, 0, count + 1);
      ASSERT_EQ(all.size(), count);
      for (u64 i = 0; i < count; ++i) ASSERT_EQ(all[static_cast<std::size_t>(i)], i);
      EXPECT_TRUE(other.Chiudi());
      if (count >= 10) {
        EXPECT_EQ(numbers(other, count - 3, 10), (std::vector<u64>{7 * count - 21, 7 * count - 14, 7 * count - 7}));
      }
      u8* record = nullptr;
      store.Aggiungi(&record);
      EXPECT_EQ(record, nullptr) << "a closed store takes nothing";
    }
  }
  owner.reset();
  EXPECT_TRUE(folder.names().empty()) << "the store file goes with its owner";
}

TEST(MemoryMappedArray, EndsAtItsLargestSizeToTheRecord) {
  const TempFolder folder;
  StoreFile file(folder.wide("a.qlt"));
  // As with 2^32 bytes, a piece of a record is left over.
  MemoryMappedArray store(&file, 12 * 1000 + 4);
  for (u64 i = 0; i < 1000; ++i) append(&store, i);
  u8* record = nullptr;
  store.Aggiungi(&record);
  EXPECT_EQ(record, nullptr);
  EXPECT_FALSE(store.IsValido());
  EXPECT_TRUE(file.has_failed());
  EXPECT_FALSE(store.Chiudi()) << "what was refused is missing, so the store is not to be believed";
}

TEST(MemoryMappedArray, TakesNothingWhereItsFileCannotBe) {
  const TempFolder folder;
  StoreFile nowhere(folder.wide("missing/a.qlt"));
  EXPECT_FALSE(nowhere.IsValido());
  MemoryMappedArray store(&nowhere);
  EXPECT_FALSE(store.IsValido());
  u8* record = nullptr;
  store.Aggiungi(&record);
  EXPECT_EQ(record, nullptr);
}

TEST(MemoryMappedArray, SaysThatItCannotBeRead) {
  const TempFolder folder;
  const KeptBudget nothing(0);
  StoreFile file(folder.wide("a.qlt"));
  MemoryMappedArray store(&file);
  for (u64 i = 0; i < 10; ++i) append(&store, i);
  ASSERT_TRUE(store.Chiudi() && file.flush());
  platform::let_fail_after(platform::Operation::kRead, 0);
  EXPECT_THROW(numbers(store, 0, 10), platform::ReadFailure);
  EXPECT_EQ(numbers(store, 8, 10), (std::vector<u64>{8, 9})) << "the next try has its own luck";
}

}  // namespace
}  // namespace traguardo
