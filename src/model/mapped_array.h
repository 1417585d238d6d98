// A file of records of one size, seen through one window.
//
// Windows are 65,536 records long on every platform, so that whatever depends on a window's edge comes out alike
// everywhere. How bytes reach the file is another matter: appending goes through a small buffer that starts with a few
// records, doubles while the store grows, and is emptied with positioned writes. A channel of ten samples costs ten
// samples, and two thousand stores need no two thousand open files.
#pragma once

#include <memory>
#include <string>

#include "support/bytes.h"
#include "support/platform/platform.h"

namespace traguardo {

class MemoryMappedArray {
 public:
  enum class Modo : u32 {
    kChiuso = 1,
    kAggiunta = 2,         // append: the file is opened, or created, and written from its start
    kAggiornamento = 3,    // update: records are read and changed in place
    kLetturaFinestre = 4,  // read, one window at a time
    kLetturaIntera = 5,    // read, the whole file in one view
  };

  // Unless the mode is kChiuso it opens the file at once; ask IsValido. An empty file in a reading mode has no view and
  // is no error: it holds no records.
  MemoryMappedArray(std::wstring file_name, u32 record_size, Modo mode, bool delete_on_destruction);
  MemoryMappedArray(const MemoryMappedArray&) = delete;
  MemoryMappedArray& operator=(const MemoryMappedArray&) = delete;
  virtual ~MemoryMappedArray();

  // Closes, then opens in the new mode from the first record on. Gives the view as far as it is mapped; a store read by
  // windows maps its first one when the first record is asked for.
  u8* Riapri(Modo mode);

  // Append mode only. Stores a pointer to a new record, null if the store can't grow any more (a full disk, or 2^32
  // bytes reached). Gives 1 if the record is the first of a further window, else 0. The pointer is good until the next
  // call.
  int Aggiungi(u8** record) {
    if (!HasRoom()) return MakeRoomAndAdd(record);
    *record = TakeRoom();
    return 0;
  }
  // The two halves of Aggiungi for loops over samples. Room never reaches beyond the current window, so a record that
  // finds room has a predecessor in its window.
  bool HasRoom() const { return next_ != limit_; }
  // REQUIRES: HasRoom().
  u8* TakeRoom() {
    u8* record = next_;
    next_ += record_size_;
    // With hundreds of channels in turn no processor sees by itself that each of them writes on.
    __builtin_prefetch(record + kWriteAhead, 1);
    return record;
  }
  // Append mode only: the next record begins a window.
  bool IsAtWindowEdge() const { return Numero() % kRecordsPerWindow == 0; }

  // Append mode only: the record `back` places before the newest one, for back 0 and 1; null if it was never written.
  u8* Recente(u32 back) { return back < Buffered() ? next_ - (std::size_t{back} + 1) * record_size_ : nullptr; }

  // Modes kAggiornamento and kLetturaFinestre: the next record, null at the end.
  u8* Prossimo();
  // The same, a stretch at a time: all records from the next one to the end of its window. False at the end.
  bool ProssimaFinestra(u8** records, u32* count);

  // Number of records; 0 while closed.
  u64 Numero() const;
  // Closes the file and brings an appended one to its true length. False if something could not be written; the store
  // is then not to be believed.
  bool Chiudi();
  bool IsValido() const { return valid_; }

  Modo GetModo() const { return mode_; }
  const std::wstring& GetNomeFile() const { return file_name_; }
  u32 GetDimensioneRecord() const { return record_size_; }
  // Whole view of mode kLetturaIntera; null and 0 without one.
  const u8* GetVista() const { return view_.data(); }
  u64 GetDimensioneFile() const { return file_size_; }

 private:
  static constexpr std::size_t kWriteAhead = 128;
  static constexpr u32 kRecordsPerWindow = platform::kAllocationGranularity;

  bool MapFileIntoMemoryRead();
  bool MapFileIntoMemoryWrite();
  bool UnmapFileFromMemory();
  bool MapWindow();
  void NextWindow();
  int MakeRoomAndAdd(u8** record);
  bool MakeRoom();
  bool Enlarge(u32 limit);
  bool WriteOut(platform::File* file, u32 count);
  void ReleaseBuffer();
  u32 Buffered() const { return static_cast<u32>(static_cast<std::size_t>(next_ - buffer_.get()) / record_size_); }
  u32 WindowSize() const { return record_size_ * kRecordsPerWindow; }

  // Appending: the place of the next record, and the end of what can be handed out without a further thought, which is
  // the end of the buffer or of the window.
  u8* next_ = nullptr;
  u8* limit_ = nullptr;
  const u32 record_size_;
  const bool delete_on_destruction_;
  bool valid_ = false;
  Modo mode_ = Modo::kChiuso;
  u32 used_ = 0;           // reading: records handed out in the current window
  u32 window_number_ = 0;  // index of the current window
  u64 file_size_ = 0;
  // Bytes of the file as this object left it: a store that it has written itself needs no look at the file to know its
  // size, nor a window before somebody reads. All ones while unknown.
  u64 known_size_;
  std::wstring file_name_;
  platform::Mapping view_;
  // Appending: records that wait for the file. The newest two always stay here, since their owner may still change
  // them.
  std::unique_ptr<u8[]> buffer_;
  u32 capacity_ = 0;
  u64 written_ = 0;
};

// Reads records of a closed or reading store by their number, independent of its window.
class RecordReader {
 public:
  explicit RecordReader(const MemoryMappedArray& store);
  explicit operator bool() const { return static_cast<bool>(file_); }
  u64 Numero() const { return records_; }
  // Reads up to `count` records from number `first` on; gives the number read.
  u64 Leggi(u64 first, u64 count, u8* out) const;

 private:
  u32 record_size_;
  u64 records_ = 0;
  platform::File file_;
};

}  // namespace traguardo
