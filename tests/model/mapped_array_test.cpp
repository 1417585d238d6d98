#include "model/mapped_array.h"

#include <gtest/gtest.h>

#include "helpers/temp_folder.h"

namespace traguardo {
namespace {

using Modo = MemoryMappedArray::Modo;
using test::TempFolder;

constexpr u32 kWindow = 65536;

void append(MemoryMappedArray* store, u64 value) {
  u8* record = nullptr;
  store->Aggiungi(&record);
  ASSERT_NE(record, nullptr);
  store_u64(record, value);
}

TEST(MemoryMappedArray, WritesAndReadsBackAcrossBuffersAndWindows) {
  const TempFolder folder;
  for (const u64 count :
       {u64{0}, u64{1}, u64{5}, u64{31}, u64{48}, u64{4096}, u64{kWindow}, u64{kWindow} + 1, u64{3} * kWindow + 7}) {
    MemoryMappedArray store(folder.wide("store"), 12, Modo::kAggiunta, true);
    ASSERT_TRUE(store.IsValido());
    int new_windows = 0;
    for (u64 i = 0; i < count; ++i) {
      u8* record = nullptr;
      new_windows += store.Aggiungi(&record);
      ASSERT_NE(record, nullptr);
      store_u64(record, i);
      store_u32(record + 8, 0);
      ASSERT_EQ(load_u64(store.Recente(0)), i);
      if (i > 0) {
        ASSERT_EQ(load_u64(store.Recente(1)), i - 1) << "the record before the newest must stay at hand";
      }
    }
    EXPECT_EQ(new_windows, count == 0 ? 0 : static_cast<int>((count - 1) / kWindow));
    EXPECT_EQ(store.Numero(), count);
    EXPECT_TRUE(store.Chiudi());
    EXPECT_EQ(store.Numero(), 0U) << "a closed store has no records to show";
    EXPECT_EQ(folder.read("store").size(), count * 12);

    store.Riapri(Modo::kLetturaFinestre);
    EXPECT_EQ(store.Numero(), count);
    EXPECT_EQ(store.IsValido(), count != 0);
    u64 read = 0;
    while (const u8* record = store.Prossimo()) ASSERT_EQ(load_u64(record), read++);
    EXPECT_EQ(read, count);
  }
  EXPECT_TRUE(folder.names().empty()) << "stores delete themselves";
}

TEST(MemoryMappedArray, UpdateChangesRecordsInPlace) {
  const TempFolder folder;
  {
    MemoryMappedArray store(folder.wide("store"), 12, Modo::kAggiunta, false);
    for (u64 i = 0; i < kWindow + 10; ++i) append(&store, i);
    store.Riapri(Modo::kAggiornamento);
    while (u8* record = store.Prossimo()) store_u64(record, load_u64(record) * 2);
  }
  MemoryMappedArray whole(folder.wide("store"), 12, Modo::kLetturaIntera, false);
  ASSERT_EQ(whole.GetDimensioneFile(), (kWindow + 10) * 12U);
  for (u64 i = 0; i < kWindow + 10; ++i) ASSERT_EQ(load_u64(whole.GetVista() + i * 12), i * 2);
}

TEST(MemoryMappedArray, OverwritesWhatAnEarlierCrashLeft) {
  const TempFolder folder;
  folder.write("store", std::string(5000, 'x'));
  MemoryMappedArray store(folder.wide("store"), 12, Modo::kAggiunta, false);
  append(&store, 7);
  EXPECT_TRUE(store.Chiudi());
  EXPECT_EQ(folder.read("store").size(), 12U);
}

TEST(MemoryMappedArray, HasNoViewOfWhatCannotBeOpenedOrIsEmpty) {
  const TempFolder folder;
  folder.write("empty", std::string());
  for (const Modo mode : {Modo::kAggiornamento, Modo::kLetturaFinestre, Modo::kLetturaIntera}) {
    EXPECT_FALSE(MemoryMappedArray(folder.wide("missing"), 12, mode, false).IsValido());
    MemoryMappedArray empty(folder.wide("empty"), 12, mode, false);
    EXPECT_FALSE(empty.IsValido());
    EXPECT_EQ(empty.Numero(), 0U);
    EXPECT_EQ(empty.Prossimo(), nullptr);
  }
  MemoryMappedArray nowhere(folder.wide("missing/store"), 12, Modo::kAggiunta, true);
  EXPECT_FALSE(nowhere.IsValido());
  u8* record = nullptr;
  nowhere.Aggiungi(&record);
  EXPECT_EQ(record, nullptr);
}

TEST(MemoryMappedArray, RecordReaderFindsRecordsByNumber) {
  const TempFolder folder;
  MemoryMappedArray store(folder.wide("store"), 12, Modo::kAggiunta, true);
  for (u64 i = 0; i < 100; ++i) append(&store, i * 3);
  store.Chiudi();
  const RecordReader reader(store);
  ASSERT_EQ(reader.Numero(), 100U);
  u8 bytes[12 * 10];
  EXPECT_EQ(reader.Leggi(95, 10, bytes), 5U) << "no more than there is";
  EXPECT_EQ(load_u64(bytes), 95U * 3);
  EXPECT_EQ(reader.Leggi(100, 1, bytes), 0U);
}

}  // namespace
}  // namespace traguardo
