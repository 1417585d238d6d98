#include "model/mapped_array.h"

#include <algorithm>
#include <limits>
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

constexpr u64 kUnknownSize = std::numeric_limits<u64>::max();

}  // namespace

MemoryMappedArray::MemoryMappedArray(std::wstring file_name, u32 record_size, Modo mode, bool delete_on_destruction)
    : record_size_(record_size),
      delete_on_destruction_(delete_on_destruction),
      known_size_(kUnknownSize),
      file_name_(std::move(file_name)) {
  Riapri(mode);
}

MemoryMappedArray::~MemoryMappedArray() {
  // What is deleted anyway needs no writing.
  if (delete_on_destruction_) {
    ReleaseBuffer();
    mode_ = Modo::kChiuso;
  }
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
  if (mode_ == Modo::kLetturaFinestre && known_size_ != kUnknownSize) {
    file_size_ = known_size_;
    return file_size_ != 0;
  }
  File file = File::open(file_name_, Access::kRead, Share::kRead, Creation::kMustExist);
  if (!file || !file.size(&file_size_)) {
    TRAGUARDO_LOG("MemoryMappedArray::MapFileIntoMemoryRead",
                  "%s [%d] ERROR = Could not Open File %s for Memory Mapping. System Error Code : 0x%x\n", file_name_,
                  platform::last_error());
    return false;
  }
  if (file_size_ == 0) return false;
  if (mode_ == Modo::kLetturaFinestre) return true;
  view_ = Mapping::map(file, 0, static_cast<std::size_t>(file_size_), false);
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
  if (mode_ == Modo::kAggiunta) {
    known_size_ = kUnknownSize;
    return true;
  }
  return file_size_ > 0;
}

// Maps the window that window_number_ names, as far as the file goes.
bool MemoryMappedArray::MapWindow() {
  view_.unmap();
  const bool writable = mode_ == Modo::kAggiornamento;
  const File file =
      File::open(file_name_, writable ? Access::kReadWrite : Access::kRead, Share::kRead, Creation::kMustExist);
  // What was known of the file is held against what it is now: a window beyond its end would be a fault of the host.
  u64 present = 0;
  if (!file || !file.size(&present)) {
    TRAGUARDO_LOG("MemoryMappedArray::MapFileIntoMemoryRead",
                  "%s [%d] ERROR = Could not Open File %s for Memory Mapping. System Error Code : 0x%x\n", file_name_,
                  platform::last_error());
    return false;
  }
  file_size_ = std::min(file_size_, present);
  const u64 offset = u64{window_number_} * WindowSize();
  if (offset >= file_size_) return false;
  view_ =
      Mapping::map(file, offset, static_cast<std::size_t>(std::min<u64>(file_size_ - offset, WindowSize())), writable);
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

// The way of a record that finds no room: the first of a window, or one that the buffer is too small for.
int MemoryMappedArray::MakeRoomAndAdd(u8** record) {
  *record = nullptr;
  if (mode_ != Modo::kAggiunta || !valid_) return 0;
  int new_window = 0;
  if (Numero() == (u64{window_number_} + 1) * kRecordsPerWindow) {
    NextWindow();
    new_window = 1;
  }
  if (Buffered() == capacity_ && !MakeRoom()) {
    valid_ = false;
    limit_ = next_;
    return new_window;
  }
  const u64 left_in_window = (u64{window_number_} + 1) * kRecordsPerWindow - Numero();
  limit_ = next_ + std::min<u64>(capacity_ - Buffered(), left_in_window) * record_size_;
  *record = TakeRoom();
  return new_window;
}

bool MemoryMappedArray::MakeRoom() {
  if ((Numero() + 1) * record_size_ > kLargestStore) return false;
  const u32 limit = std::max(g_buffered_bytes < kBudget ? kLargeBuffer : kSmallBuffer, record_size_ * 2 * kKeptRecords);
  if (capacity_ * record_size_ + record_size_ <= limit && Enlarge(limit)) return true;
  if (capacity_ <= kKeptRecords) return false;
  File file = File::open(file_name_, Access::kReadWrite, Share::kRead, Creation::kMustExist);
  return WriteOut(&file, capacity_ - kKeptRecords);
}

bool MemoryMappedArray::Enlarge(u32 limit) {
  const u32 present = capacity_ * record_size_;
  const u32 wanted = std::min(limit, std::max({kFirstBuffer, present * 2, record_size_ * 2 * kKeptRecords}));
  const u32 records = wanted / record_size_;
  std::unique_ptr<u8[]> larger(new (std::nothrow) u8[static_cast<std::size_t>(records) * record_size_]);
  if (larger == nullptr) return false;
  const std::size_t kept = static_cast<std::size_t>(next_ - buffer_.get());
  if (kept > 0) std::memcpy(larger.get(), buffer_.get(), kept);
  buffer_ = std::move(larger);
  next_ = buffer_.get() + kept;
  limit_ = next_;
  capacity_ = records;
  g_buffered_bytes += u64{records} * record_size_ - present;
  return true;
}

// Writes the oldest `count` buffered records and moves the others to the front.
bool MemoryMappedArray::WriteOut(File* file, u32 count) {
  const std::size_t bytes = static_cast<std::size_t>(count) * record_size_;
  if (!*file || !file->write_at(written_ * record_size_, buffer_.get(), bytes)) {
    TRAGUARDO_LOG("MemoryMappedArray::MapFileIntoMemoryWrite",
                  "%s [%d] ERROR = Could not create File Mapping for File %s . System Error Code : 0x%x\n", file_name_,
                  platform::last_error());
    return false;
  }
  const std::size_t kept = static_cast<std::size_t>(next_ - buffer_.get()) - bytes;
  std::memmove(buffer_.get(), buffer_.get() + bytes, kept);
  written_ += count;
  next_ = buffer_.get() + kept;
  limit_ = next_;
  return true;
}

void MemoryMappedArray::ReleaseBuffer() {
  g_buffered_bytes -= u64{capacity_} * record_size_;
  buffer_.reset();
  next_ = nullptr;
  limit_ = nullptr;
  capacity_ = 0;
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
  File file = File::open(file_name_, Access::kReadWrite, Share::kRead, Creation::kMustExist);
  good = good && valid_ && (Buffered() == 0 || WriteOut(&file, Buffered()));
  const u64 size = written_ * record_size_;
  u64 present = 0;
  if (file && !(file.size(&present) && (present == size || file.resize(size)))) {
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
  if (good) known_size_ = size;
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
  if (used_ == kRecordsPerWindow) NextWindow();
  if ((used_ == 0 || !view_) && (!MapWindow() || view_.size() < record_size_)) {
    valid_ = false;
    return nullptr;
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
  if (mode_ == Modo::kAggiunta) return written_ + Buffered();
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
