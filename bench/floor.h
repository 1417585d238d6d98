// SPDX-License-Identifier: MIT
// The floors: what the plainest program needs for the same result, with no check beyond a frame's first and last byte
// and nothing to tell channels apart but their index. What the reader is measured against.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "sessions.h"

namespace traguardo::bench {

inline constexpr std::size_t kRecordSize = 12;  // microseconds and a float

enum class StoreKind { buffers, mapped_windows };

// Samples of many channels in files without names.
class FloorStores {
 public:
  FloorStores(StoreKind kind, std::uint32_t channels);
  ~FloorStores();
  FloorStores(const FloorStores&) = delete;
  FloorStores& operator=(const FloorStores&) = delete;

  // Room for one record of 12 bytes.
  std::uint8_t* add(std::uint32_t channel) {
    Store& store = stores_[channel];
    if (store.next == store.end) make_room(&store);
    std::uint8_t* const record = store.next;
    store.next += kRecordSize;
    return record;
  }
  void finish();
  // Behind finish, of buffers: each channel as a host gets it. The arrays have room for the longest one.
  std::uint64_t read_back(double* times_s, double* values) const;

 private:
  struct Piece {
    std::uint64_t place;
    std::size_t bytes;
  };
  struct Store {
    std::unique_ptr<std::uint8_t[]> buffer;
    std::uint8_t* begin = nullptr;
    std::uint8_t* next = nullptr;
    std::uint8_t* end = nullptr;
    int file = -1;
    std::uint64_t mapped = 0;
    std::vector<Piece> pieces;
  };
  void make_room(Store* store);
  void flush(Store* store);

  StoreKind kind_;
  int file_ = -1;
  std::uint64_t end_ = 0;
  std::vector<Store> stores_;
};

// Decodes all frames of a session into stores.
void floor_open(const Session& session, const Shape& shape, FloorStores* stores);
// Inflates a file into one without a name, with buffers of 16 KiB.
void floor_expand(const std::string& path);
// Reads a file's words and makes a line of each: how an older session's channels come to be.
void floor_older(const std::string& path, std::uint64_t samples, std::uint32_t channels, FloorStores* stores);
// Looks for a byte that could begin a frame or a tag, through the whole file.
std::uint64_t floor_scan(const std::string& path);

}  // namespace traguardo::bench
