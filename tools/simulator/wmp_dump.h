// SPDX-License-Identifier: MIT
// The memory of an older logger, as files of version 500 keep it: a set-up area, and a stream of words in which the
// samples of all channels follow one another.
#pragma once

#include <cstddef>
#include <span>

#include "simulator/wmp_channels.h"
#include "simulator/wmp_recording.h"
#include "wire/bytes.h"

namespace traguardo::simulator {

struct WmpDump {
  wire::Bytes bytes;
  std::size_t stream_begin = 0;
  std::size_t stream_end = 0;  // behind it the memory is erased
};

// logged: without derived channels, as many as the form's dump takes at most. Throws tool::Failure for more samples
// than the logger's memory holds.
WmpDump memory_dump(const WmpForm& form, std::span<const WmpChannel> logged, const WmpRecording& recording);

// A dump without a stream.
wire::Bytes set_up_area(const WmpForm& form, std::span<const WmpChannel> logged, const WmpRecording& recording);

}  // namespace traguardo::simulator
