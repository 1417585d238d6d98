// SPDX-License-Identifier: MIT
// Samples for whoever speaks Arrow's C interfaces. Every struct owns what it shows; a consumer may move a child out by
// copying it and clearing the original's `release`, so each is released on its own.
#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include "api/exports.h"
#include "native/python_api.h"

namespace {

void* (*g_capsule_pointer)(void*, const char*) = nullptr;

// --- Schemas

struct SchemaParts {
  std::string format;
  std::string name;
  std::string metadata;
  std::vector<ArrowSchema> children;
  std::vector<ArrowSchema*> pointers;
  ArrowSchema dictionary{};
};

template <typename Struct>
void release_one(Struct* shown) {
  if (shown->release != nullptr) shown->release(shown);
}

template <typename Parts, typename Struct>
void release_parts(Struct* shown) {
  auto* const parts = static_cast<Parts*>(shown->private_data);
  for (Struct& child : parts->children) release_one(&child);
  release_one(&parts->dictionary);
  delete parts;
  shown->release = nullptr;
}

// Key and value as the interface wants them: 32-bit counts in the machine's order before the bytes.
std::string metadata_of(std::string_view key, std::string_view value) {
  std::string bytes;
  const auto put = [&bytes](std::size_t number) {
    const auto word = static_cast<int32_t>(number);
    bytes.append(reinterpret_cast<const char*>(&word), sizeof(word));
  };
  put(1);
  for (const std::string_view text : {key, value}) {
    put(text.size());
    bytes.append(text);
  }
  return bytes;
}

ArrowSchema schema_of(std::unique_ptr<SchemaParts> parts) {
  for (ArrowSchema& child : parts->children) parts->pointers.push_back(&child);
  ArrowSchema schema{};
  schema.format = parts->format.c_str();
  schema.name = parts->name.c_str();
  schema.metadata = parts->metadata.empty() ? nullptr : parts->metadata.data();
  schema.n_children = static_cast<int64_t>(parts->children.size());
  schema.children = parts->pointers.empty() ? nullptr : parts->pointers.data();
  schema.dictionary = parts->dictionary.release == nullptr ? nullptr : &parts->dictionary;
  schema.release = release_parts<SchemaParts, ArrowSchema>;
  schema.private_data = parts.release();
  return schema;
}

ArrowSchema plain_field(const char* format, const char* name, std::string_view unit = {}) {
  auto parts = std::make_unique<SchemaParts>();
  parts->format = format;
  parts->name = name;
  if (!unit.empty()) parts->metadata = metadata_of("unit", unit);
  return schema_of(std::move(parts));
}

ArrowSchema text_field(const char* name) {
  auto parts = std::make_unique<SchemaParts>();
  parts->format = "i";
  parts->name = name;
  parts->dictionary = plain_field("u", "");
  return schema_of(std::move(parts));
}

// --- Arrays

using Block = std::unique_ptr<void, decltype(&std::free)>;

Block block_of(std::size_t bytes) {
  Block block(std::malloc(std::max<std::size_t>(bytes, 1)), &std::free);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}

Block copy_of(const void* from, std::size_t bytes) {
  Block block = block_of(bytes);
  if (bytes > 0) std::memcpy(block.get(), from, bytes);
  return block;
}

struct ArrayParts {
  std::vector<Block> blocks;
  std::vector<const void*> buffers{nullptr};  // the first says which are null: none
  std::vector<ArrowArray> children;
  std::vector<ArrowArray*> pointers;
  ArrowArray dictionary{};
};

ArrowArray array_of(std::unique_ptr<ArrayParts> parts, int64_t length) {
  for (const Block& block : parts->blocks) parts->buffers.push_back(block.get());
  for (ArrowArray& child : parts->children) parts->pointers.push_back(&child);
  ArrowArray array{};
  array.length = length;
  array.n_buffers = static_cast<int64_t>(parts->buffers.size());
  array.buffers = parts->buffers.data();
  array.n_children = static_cast<int64_t>(parts->children.size());
  array.children = parts->pointers.empty() ? nullptr : parts->pointers.data();
  array.dictionary = parts->dictionary.release == nullptr ? nullptr : &parts->dictionary;
  array.release = release_parts<ArrayParts, ArrowArray>;
  array.private_data = parts.release();
  return array;
}

ArrowArray plain_array(Block values, int64_t length) {
  auto parts = std::make_unique<ArrayParts>();
  parts->blocks.push_back(std::move(values));
  return array_of(std::move(parts), length);
}

// Texts that are each told once, and which of them each of many is.
class TextList {
 public:
  int32_t add(const char* text) {
    const auto [place, is_new] = places_.try_emplace(text, static_cast<int32_t>(places_.size()));
    if (is_new) {
      bytes_ += text;
      offsets_.push_back(static_cast<int32_t>(bytes_.size()));
    }
    return place->second;
  }
  ArrowArray array() const {
    auto parts = std::make_unique<ArrayParts>();
    parts->blocks.push_back(copy_of(offsets_.data(), offsets_.size() * sizeof(int32_t)));
    parts->blocks.push_back(copy_of(bytes_.data(), bytes_.size()));
    return array_of(std::move(parts), static_cast<int64_t>(places_.size()));
  }
  // `count` times the same text.
  ArrowArray repeated(int32_t text, int64_t count) const {
    auto parts = std::make_unique<ArrayParts>();
    parts->blocks.push_back(block_of(static_cast<std::size_t>(count) * sizeof(int32_t)));
    std::fill_n(static_cast<int32_t*>(parts->blocks.back().get()), count, text);
    parts->dictionary = array();
    return array_of(std::move(parts), count);
  }

 private:
  std::map<std::string, int32_t> places_;
  std::string bytes_;
  std::vector<int32_t> offsets_{0};
};

// --- The stream of a session

struct ChannelOfStream {
  int kind;
  int index;
  int32_t name;
  int32_t unit;
};

struct StreamParts {
  int handle;
  std::vector<ChannelOfStream> channels;
  std::size_t next = 0;
  TextList names;
  TextList units;
  const char* error = nullptr;
};

int count_of(int handle, const ChannelOfStream& channel) {
  switch (channel.kind) {
    case 0:
      return get_channel_samples_count(handle, channel.index);
    case 1:
      return get_GPS_channel_samples_count(handle, channel.index);
    default:
      return get_GPS_raw_channel_samples_count(handle, channel.index);
  }
}

int fill(int handle, const ChannelOfStream& channel, double* times, double* values, int count) {
  switch (channel.kind) {
    case 0:
      return get_channel_samples(handle, channel.index, times, values, count);
    case 1: {
      const int written = get_GPS_channel_samples(handle, channel.index, times, values, count);
      for (int i = 0; i < written; ++i) times[i] /= 1000;  // milliseconds in this one function
      return written;
    }
    default:
      return get_GPS_raw_channel_samples(handle, channel.index, times, values, count);
  }
}

int stream_schema(ArrowArrayStream*, ArrowSchema* out) {
  try {
    auto parts = std::make_unique<SchemaParts>();
    parts->format = "+s";
    parts->children = {text_field("channel"), text_field("unit"), plain_field("g", "time", "s"),
                       plain_field("g", "value")};
    *out = schema_of(std::move(parts));
    return 0;
  } catch (...) {
    return ENOMEM;
  }
}

ArrowArray batch_of(const StreamParts& stream, const ChannelOfStream& channel, Block times, Block values,
                    int64_t count) {
  auto parts = std::make_unique<ArrayParts>();
  parts->children.push_back(stream.names.repeated(channel.name, count));
  parts->children.push_back(stream.units.repeated(channel.unit, count));
  parts->children.push_back(plain_array(std::move(times), count));
  parts->children.push_back(plain_array(std::move(values), count));
  return array_of(std::move(parts), count);
}

int stream_next(ArrowArrayStream* self, ArrowArray* out) {
  auto& stream = *static_cast<StreamParts*>(self->private_data);
  out->release = nullptr;
  try {
    for (; stream.next < stream.channels.size(); ++stream.next) {
      const ChannelOfStream& channel = stream.channels[stream.next];
      const int count = count_of(stream.handle, channel);
      if (count <= 0) continue;
      Block times = block_of(static_cast<std::size_t>(count) * sizeof(double));
      Block values = block_of(static_cast<std::size_t>(count) * sizeof(double));
      if (fill(stream.handle, channel, static_cast<double*>(times.get()), static_cast<double*>(values.get()), count) !=
          count) {
        stream.error = "the samples can't be read";
        return EIO;
      }
      *out = batch_of(stream, channel, std::move(times), std::move(values), count);
      ++stream.next;
      return 0;
    }
    return 0;
  } catch (...) {
    stream.error = "out of memory";
    return ENOMEM;
  }
}

const char* stream_error(ArrowArrayStream* self) {
  return static_cast<StreamParts*>(self->private_data)->error;
}

void stream_release(ArrowArrayStream* self) {
  auto* const parts = static_cast<StreamParts*>(self->private_data);
  tg_close(parts->handle);
  delete parts;
  self->release = nullptr;
}

template <typename Struct>
void capsule_gone(void* capsule, const char* name) {
  auto* const held = static_cast<Struct*>(g_capsule_pointer(capsule, name));
  if (held == nullptr) return;
  release_one(held);
  std::free(held);
}

}  // namespace

void tg_arrow_start(void* (*capsule_pointer)(void* capsule, const char* name)) {
  g_capsule_pointer = capsule_pointer;
}

void tg_arrow_schema_capsule_gone(void* capsule) {
  capsule_gone<ArrowSchema>(capsule, "arrow_schema");
}

void tg_arrow_array_capsule_gone(void* capsule) {
  capsule_gone<ArrowArray>(capsule, "arrow_array");
}

void tg_arrow_stream_capsule_gone(void* capsule) {
  capsule_gone<ArrowArrayStream>(capsule, "arrow_array_stream");
}

void* tg_arrow_struct(int64_t bytes) {
  return std::calloc(1, static_cast<std::size_t>(bytes));
}

int tg_arrow_samples(const double* times, const double* values, int64_t count, const char* name, const char* unit,
                     ArrowSchema* schema, ArrowArray* array) {
  try {
    auto fields = std::make_unique<SchemaParts>();
    fields->format = "+s";
    fields->name = name;
    fields->children = {plain_field("g", "time", "s"), plain_field("g", "value", unit)};
    ArrowSchema made = schema_of(std::move(fields));
    try {
      const std::size_t bytes = static_cast<std::size_t>(count) * sizeof(double);
      auto parts = std::make_unique<ArrayParts>();
      parts->children.push_back(plain_array(copy_of(times, bytes), count));
      parts->children.push_back(plain_array(copy_of(values, bytes), count));
      *array = array_of(std::move(parts), count);
    } catch (...) {
      made.release(&made);
      throw;
    }
    *schema = made;
    return 0;
  } catch (...) {
    return ENOMEM;
  }
}

int tg_arrow_channels(int handle, const int* kinds, const int* indexes, const char* const* names,
                      const char* const* units, int count, ArrowArrayStream* stream) {
  try {
    auto parts = std::make_unique<StreamParts>();
    parts->handle = handle;
    for (int i = 0; i < count; ++i) {
      parts->channels.push_back({kinds[i], indexes[i], parts->names.add(names[i]), parts->units.add(units[i])});
    }
    tg_keep(handle);
    stream->get_schema = stream_schema;
    stream->get_next = stream_next;
    stream->get_last_error = stream_error;
    stream->release = stream_release;
    stream->private_data = parts.release();
    return 0;
  } catch (...) {
    return ENOMEM;
  }
}
