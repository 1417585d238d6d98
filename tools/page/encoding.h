// SPDX-License-Identifier: MIT
// Channels on their way from a session into the blocks of a page.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "choice.h"

namespace traguardo::tool {

struct EncodedChannel {
  const PageFile* file = nullptr;
  Channel channel;
  std::size_t stretch = 1;  // samples that one minimum and one maximum stand for
  std::size_t count = 0;
  int decimals = 0;  // see kept_values.h
  std::string times;
  std::string values;

  std::size_t bytes() const { return times.size() + values.size(); }
};

// All channels of all files, in their order, with how many samples they have. Files must stay.
std::vector<EncodedChannel> listed_channels(const std::vector<PageFile>& files);

// Fills these in, by their stretches.
void encode(std::vector<EncodedChannel*> channels);

}  // namespace traguardo::tool
