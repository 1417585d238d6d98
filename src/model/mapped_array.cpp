#include "model/mapped_array.h"

#include <algorithm>
#include <new>
#include <utility>

#include "support/event_log.h"

namespace traguardo {

using platform::Access;
using platform::Creation;
using platform::File;
using platform::Mapping;
using platform::Share;

namespace {

// Buffers of all appending stores together stay near kBudget: below it a store may buffer kLargeBuffer, beyond it only
// kSmallBuffer. Measured: 48 KiB pieces cost a third of what mapped windows cost, 12 KiB pieces little more.
constexpr u64 kBudget = 16U << 20;
constexpr u32 kFirstBuffer = 384;
constexpr u32 kSmallBuffer = 12U << 10;
constexpr u32 kLargeBuffer = 48U << 10;
constexpr u32 kKeptRecords = 2;

// Process-wide: the stores of all open files share the budget.
u64 g_buffered_bytes = 0;

// A window's offset is a 32-bit number in this family of files.
constexpr u64 kLargestStore = u64{1} << 32;

}  // namespace

MemoryMappedArray::MemoryMappedArray(std::wstring file_name, u32 record_size, Modo mode, bool delete_on_destruction)
    : record_size_(record_size), delete_on_destruction_(delete_on_destruction), file_name_(std::move(file_name)) {
  Riapri(mode);
}

MemoryMappedArray::~MemoryMappedArray() {
  // What is deleted anyway needs no writing.
  if (delete_on_destruction_) buffered_ = 0;
  Chiudi();
  if (delete_on_destruction_) platform::delete_file(file_name_);
}

u8* MemoryMappedArray::Riapri(Modo mode) {
  Chiudi();
  mode_ = mode;
  switch (mode) {
    case Modo::kChiuso:
      break;
    case Modo::kAggiunta:
    case Modo::kAggiornamento:
      valid_ = MapFileIntoMemoryWrite();
      break;
    case Modo::kLetturaFinestre:
    case Modo::kLetturaIntera:
      valid_ = MapFileIntoMemoryRead();
      break;
  }
  return view_.data();
}

bool MemoryMappedArray::MapFileIntoMemoryRead() {
  File file = File::open(file_name_, Access::kRead, Share::kRead, Creation::kMustExist);
  if (!file || !file.size(&file_size_)) {
    TRAGUARDO_LOG("MemoryMappedArray::MapFileIntoMemoryRead",
                  "%s [%d] ERROR = Could not Open File %s for Memory Mapping. System Error Code : 0x%x\n", file_name_,
                  platform::last_error());
    return false;
  }
  if (file_size_ == 0) return false;
  const u64 length = mode_ == Modo::kLetturaIntera ? file_size_ : std::min<u64>(file_size_, WindowSize());
  view_ = Mapping::map(file, 0, static_cast<std::size_t>(length), false);
  if (!view_) {
    TRAGUARDO_LOG("MemoryMappedArray::MapFileIntoMemoryRead",
                  "%s [%d] ERROR = Could not create Map View of File for File %s . System Error Code : 0x%x\n",
                  file_name_, platform::last_error());
    return false;
  }
  view_.expect_sequential_reading();
  return true;
}

bool MemoryMappedArray::MapFileIntoMemoryWrite() {
  const Creation creation = mode_ == Modo::kAggiunta ? Creation::kOpenOrCreate : Creation::kMustExist;
  File file = File::open(file_name_, Access::kReadWrite, Share::kRead, creation);
  if (!file || !file.size(&file_size_)) {
    TRAGUARDO_LOG("MemoryMappedArray::MapFileIntoMemoryWrite",
                  "%s [%d] ERROR = Could not Open File %s for Memory Mapping. System Error Code : 0x%x\n", file_name_,
                  platform::last_error());
    return false;
  }
  if (mode_ == Modo::kAggiunta) return true;
  return file_size_ > 0 && MapWindow();
}

// Maps the window that window_number_ names, as far as the file goes.
bool MemoryMappedArray::MapWindow() {
  view_.unmap();
  const bool writable = mode_ == Modo::kAggiornamento;
  const File file = File::open(file_name_, writable ? Access::kReadWrite : Access::kRead, Share::kRead,
                               Creation::kMustExist);
  const u64 offset = u64{window_number_} * WindowSize();
  if (!file || offset >= file_size_) return false;
  view_ = Mapping::map(file, offset, static_cast<std::size_t>(std::min<u64>(file_size_ - offset, WindowSize())),
                       writable);
  if (!view_) {
    TRAGUARDO_LOG("MemoryMappedArray::MapFileIntoMemoryRead",
                  "%s [%d] ERROR = Could not create Map View of File for File %s . System Error Code : 0x%x\n",
                  file_name_, platform::last_error());
    return false;
  }
  view_.expect_sequential_reading();
  return true;
}

void MemoryMappedArray::NextWindow() {
  ++window_number_;
  used_ = 0;
}

bool MemoryMappedArray::MakeRoom() {
  const u64 stored = written_ + buffered_;
  if ((stored + 1) * record_size_ > kLargestStore) {
    valid_ = false;
    return false;
  }
  const u32 limit = std::max(g_buffered_bytes < kBudget ? kLargeBuffer : kSmallBuffer, record_size_ * 2 * kKeptRecords);
  const u32 present = capacity_ * record_size_;
  if (present < limit) {
    const u32 wanted = std::min(limit, std::max({kFirstBuffer, present * 2, record_size_ * 2 * kKeptRecords}));
    std::unique_ptr<u8[]> larger(new (std::nothrow) u8[wanted]);
    if (larger != nullptr) {
      if (buffered_ > 0) std::memcpy(larger.get(), buffer_.get(), static_cast<std::size_t>(buffered_) * record_size_);
      buffer_ = std::move(larger);
      g_buffered_bytes += wanted - present;
      capacity_ = wanted / record_size_;
      // The remainder of a size that is no multiple of the record's is counted as not taken, as it is given back so.
      g_buffered_bytes -= wanted % record_size_;
      return true;
    }
    if (capacity_ <= kKeptRecords) {
      valid_ = false;
      return false;
    }
  }
  if (!WriteOut(buffered_ - kKeptRecords)) {
    valid_ = false;
    return false;
  }
  return true;
}

// Writes the oldest `count` buffered records and moves the others to the front.
bool MemoryMappedArray::WriteOut(u32 count) {
  const std::size_t bytes = static_cast<std::size_t>(count) * record_size_;
  File file = File::open(file_name_, Access::kReadWrite, Share::kRead, Creation::kOpenOrCreate);
  if (!file || !file.write_at(written_ * record_size_, buffer_.get(), bytes)) {
    TRAGUARDO_LOG("MemoryMappedArray::MapFileIntoMemoryWrite",
                  "%s [%d] ERROR = Could not create File Mapping for File %s . System Error Code : 0x%x\n", file_name_,
                  platform::last_error());
    return false;
  }
  written_ += count;
  buffered_ -= count;
  std::memmove(buffer_.get(), buffer_.get() + bytes, static_cast<std::size_t>(buffered_) * record_size_);
  return true;
}

void MemoryMappedArray::ReleaseBuffer() {
  g_buffered_bytes -= u64{capacity_} * record_size_;
  buffer_.reset();
  capacity_ = 0;
  buffered_ = 0;
  written_ = 0;
}

bool MemoryMappedArray::UnmapFileFromMemory() {
  bool good = true;
  if (view_ && !view_.unmap()) {
    TRAGUARDO_LOG("MemoryMappedArray::UnmapFileFromMemory",
                  "%s [%d] ERROR = Failed to Unmap View of File. System Error Code : 0x%x\n", platform::last_error());
    good = false;
  }
  if (mode_ != Modo::kAggiunta) return good;
  // A store that failed once has holes at its end that no reader may take for samples.
  good = good && valid_ && (buffered_ == 0 || WriteOut(buffered_));
  File file = File::open(file_name_, Access::kReadWrite, Share::kRead, Creation::kMustExist);
  if (file && !file.resize(written_ * record_size_)) {
    TRAGUARDO_LOG("MemoryMappedArray::UnmapFileFromMemory",
                  "%s [%d] ERROR = Failed to Set End of File for Memory Mapped File. System Error Code : 0x%x\n",
                  platform::last_error());
    good = false;
  }
  if (file && !file.flush()) {
    TRAGUARDO_LOG("MemoryMappedArray::UnmapFileFromMemory",
                  "%s [%d] ERROR = Failed to Flash File Buffers for Memory Mapped File. System Error Code : 0x%x\n",
                  platform::last_error());
    good = false;
  }
  if (!file.close()) {
    TRAGUARDO_LOG("MemoryMappedArray::UnmapFileFromMemory",
                  "%s [%d] ERROR = Failed to Close Handle for File. System Error Code : 0x%x\n",
                  platform::last_error());
    good = false;
  }
  ReleaseBuffer();
  return good;
}

bool MemoryMappedArray::Chiudi() {
  const bool good = UnmapFileFromMemory();
  mode_ = Modo::kChiuso;
  valid_ = false;
  used_ = 0;
  window_number_ = 0;
  file_size_ = 0;
  return good;
}

u8* MemoryMappedArray::Prossimo() {
  if ((mode_ != Modo::kAggiornamento && mode_ != Modo::kLetturaFinestre) || !valid_) return nullptr;
  const u64 end_of_next = u64{window_number_} * WindowSize() + (u64{used_} + 1) * record_size_;
  if (end_of_next > file_size_) return nullptr;
  if (used_ == kRecordsPerWindow) {
    NextWindow();
    if (!MapWindow()) {
      valid_ = false;
      return nullptr;
    }
  }
  u8* record = view_.data() + static_cast<std::size_t>(used_) * record_size_;
  ++used_;
  return record;
}

bool MemoryMappedArray::ProssimaFinestra(u8** records, u32* count) {
  *records = Prossimo();
  if (*records == nullptr) return false;
  const u32 in_window = static_cast<u32>(view_.size() / record_size_);
  *count = in_window - (used_ - 1);
  used_ = in_window;
  return true;
}

u64 MemoryMappedArray::Numero() const {
  if (mode_ == Modo::kChiuso || record_size_ == 0) return 0;
  if (mode_ == Modo::kAggiunta) return u64{window_number_} * kRecordsPerWindow + used_;
  return file_size_ / record_size_;
}

RecordReader::RecordReader(const MemoryMappedArray& store)
    : record_size_(store.GetDimensioneRecord()),
      file_(File::open(store.GetNomeFile(), Access::kRead, Share::kRead, Creation::kMustExist)) {
  u64 size = 0;
  if (file_ && file_.size(&size)) records_ = size / record_size_;
}

u64 RecordReader::Leggi(u64 first, u64 count, u8* out) const {
  if (!file_ || first >= records_) return 0;
  count = std::min(count, records_ - first);
  return file_.read_at(first * record_size_, out, static_cast<std::size_t>(count * record_size_)) / record_size_;
}

}  // namespace traguardo
