// SPDX-License-Identifier: MIT
#include "floor.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <filesystem>
#include <stdexcept>

namespace traguardo::bench {

namespace {

constexpr std::size_t kWindow = 786'432;  // 65,536 records
constexpr std::size_t kAllBuffers = 16U << 20;
constexpr std::size_t kLargestBuffer = 48U << 10;

void must(bool good) {
  if (!good) throw std::runtime_error("a floor of the benchmark can't be worked out");
}

int unnamed_file() {
  const int file = ::open(std::filesystem::temp_directory_path().c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
  must(file >= 0);
  return file;
}

class MappedInput {
 public:
  explicit MappedInput(const std::string& path) {
    const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    must(file >= 0);
    struct stat info;
    must(::fstat(file, &info) == 0);
    size_ = static_cast<std::size_t>(info.st_size);
    void* const mapped = ::mmap(nullptr, size_, PROT_READ, MAP_PRIVATE, file, 0);
    ::close(file);
    must(mapped != MAP_FAILED);
    ::madvise(mapped, size_, MADV_SEQUENTIAL);
    bytes_ = static_cast<const std::uint8_t*>(mapped);
  }
  ~MappedInput() { ::munmap(const_cast<std::uint8_t*>(bytes_), size_); }
  MappedInput(const MappedInput&) = delete;
  MappedInput& operator=(const MappedInput&) = delete;

  const std::uint8_t* begin() const { return bytes_; }
  std::size_t size() const { return size_; }

 private:
  const std::uint8_t* bytes_ = nullptr;
  std::size_t size_ = 0;
};

template <typename T>
T load(const std::uint8_t* at) {
  T value;
  std::memcpy(&value, at, sizeof value);
  return value;
}

void put_record(std::uint8_t* record, std::uint64_t time_us, float value) {
  std::memcpy(record, &time_us, sizeof time_us);
  std::memcpy(record + sizeof time_us, &value, sizeof value);
}

}  // namespace

FloorStores::FloorStores(StoreKind kind, std::uint32_t channels) : kind_(kind), stores_(channels) {
  if (kind == StoreKind::mapped_windows) return;
  file_ = unnamed_file();
  const std::size_t bytes = std::min(kLargestBuffer, kAllBuffers / channels) / kRecordSize * kRecordSize;
  for (Store& store : stores_) {
    store.buffer = std::make_unique_for_overwrite<std::uint8_t[]>(bytes);
    store.begin = store.next = store.buffer.get();
    store.end = store.begin + bytes;
  }
}

FloorStores::~FloorStores() {
  for (Store& store : stores_) {
    if (kind_ == StoreKind::mapped_windows && store.begin != nullptr) ::munmap(store.begin, kWindow);
    if (store.file >= 0) ::close(store.file);
  }
  if (file_ >= 0) ::close(file_);
}

void FloorStores::make_room(Store* store) {
  if (kind_ == StoreKind::buffers) {
    flush(store);
    return;
  }
  if (store->file < 0) store->file = unnamed_file();
  if (store->begin != nullptr) ::munmap(store->begin, kWindow);
  must(::ftruncate(store->file, static_cast<off_t>(store->mapped + kWindow)) == 0);
  void* const window =
      ::mmap(nullptr, kWindow, PROT_READ | PROT_WRITE, MAP_SHARED, store->file, static_cast<off_t>(store->mapped));
  must(window != MAP_FAILED);
  store->mapped += kWindow;
  store->begin = store->next = static_cast<std::uint8_t*>(window);
  store->end = store->begin + kWindow;
}

void FloorStores::flush(Store* store) {
  const auto bytes = static_cast<std::size_t>(store->next - store->begin);
  must(::pwrite(file_, store->begin, bytes, static_cast<off_t>(end_)) == static_cast<ssize_t>(bytes));
  store->pieces.push_back({end_, bytes});
  end_ += bytes;
  store->next = store->begin;
}

void FloorStores::finish() {
  if (kind_ == StoreKind::mapped_windows) return;
  for (Store& store : stores_) flush(&store);
}

std::uint64_t FloorStores::read_back(double* times_s, double* values) const {
  void* const mapped = ::mmap(nullptr, end_, PROT_READ, MAP_SHARED, file_, 0);
  must(mapped != MAP_FAILED);
  const auto* const bytes = static_cast<const std::uint8_t*>(mapped);
  std::uint64_t all = 0;
  for (const Store& store : stores_) {
    std::size_t count = 0;
    for (const Piece& piece : store.pieces) {
      for (std::size_t at = 0; at < piece.bytes; at += kRecordSize, ++count) {
        const std::uint8_t* const record = bytes + piece.place + at;
        times_s[count] = static_cast<double>(load<std::uint64_t>(record)) / 1e6;
        values[count] = static_cast<double>(load<float>(record + 8));
      }
    }
    all += count;
  }
  ::munmap(mapped, end_);
  return all;
}

void floor_open(const Session& session, const Shape& shape, FloorStores* stores) {
  const MappedInput input(session.path());
  const std::uint8_t* at = input.begin() + session.stream_begin;
  for (std::uint64_t frame = 0; frame < session.frames; ++frame) {
    must(*at == '(');
    const std::uint8_t letter = at[1];
    const std::uint64_t time_us = std::uint64_t{load<std::uint32_t>(at + 2)} * 1000;
    const std::uint32_t index = load<std::uint16_t>(at + 6);
    const std::uint8_t* data = at + 8;
    if (letter == 'S') {
      put_record(stores->add(index), time_us, static_cast<float>(load<std::uint16_t>(data)));
      data += 2;
    } else if (letter == 'M') {
      const std::uint32_t count = load<std::uint16_t>(data);
      data += 2;
      for (std::uint32_t i = 0; i < count; ++i, data += 2) {
        put_record(stores->add(index), time_us + std::uint64_t{i} * shape.period_ms * 1000,
                   static_cast<float>(load<std::uint16_t>(data)));
      }
    } else {
      const std::uint32_t first = index * shape.channels_per_group;
      for (std::uint32_t i = 0; i < shape.channels_per_group; ++i, data += 2) {
        put_record(stores->add(first + i), time_us, static_cast<float>(load<std::uint16_t>(data)));
      }
    }
    must(*data == ')');
    at = data + 1;
  }
  stores->finish();
}

void floor_expand(const std::string& path) {
  const int in = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  const int out = unnamed_file();
  std::array<Bytef, 16384> input;
  std::array<Bytef, 16384> output;
  z_stream stream{};
  must(in >= 0 && inflateInit(&stream) == Z_OK);
  int result = Z_OK;
  while (result == Z_OK) {
    if (stream.avail_in == 0) {
      stream.next_in = input.data();
      stream.avail_in = static_cast<uInt>(::read(in, input.data(), input.size()));
    }
    stream.next_out = output.data();
    stream.avail_out = static_cast<uInt>(output.size());
    result = inflate(&stream, Z_NO_FLUSH);
    const std::size_t bytes = output.size() - stream.avail_out;
    must(::write(out, output.data(), bytes) == static_cast<ssize_t>(bytes));
  }
  inflateEnd(&stream);
  ::close(in);
  ::close(out);
}

void floor_older(const std::string& path, std::uint64_t samples, std::uint32_t channels, FloorStores* stores) {
  const MappedInput input(path);
  const std::uint8_t* word = input.begin() + input.size() - samples * 2;
  for (std::uint32_t channel = 0; channel < channels; ++channel) {
    for (std::uint64_t i = 0; i < samples / channels; ++i, word += 2) {
      put_record(stores->add(channel), i * 10'000, static_cast<float>(load<std::uint16_t>(word)) * 0.04F - 20.0F);
    }
  }
  stores->finish();
}

std::uint64_t floor_scan(const std::string& path) {
  const MappedInput input(path);
  std::uint64_t found = 0;
  for (const char mark : {'(', '<'}) {
    const std::uint8_t* at = input.begin();
    const std::uint8_t* const end = at + input.size();
    while ((at = static_cast<const std::uint8_t*>(std::memchr(at, mark, static_cast<std::size_t>(end - at)))) !=
           nullptr) {
      ++found;
      ++at;
    }
  }
  return found;
}

}  // namespace traguardo::bench
