// SPDX-License-Identifier: MIT
// What a page says of its files beside the samples, as page/src/head.ts reads it.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "choice.h"
#include "encoding.h"
#include "json_output.h"

namespace traguardo::tool {

// Blocks of numbers, by their own numbers. What several channels have in common, as the times of one rate, is there
// once.
class PageBlocks {
 public:
  std::size_t add(const std::string& bytes);
  const std::vector<const std::string*>& all() const { return blocks_; }
  std::size_t bytes() const;

 private:
  std::unordered_map<std::string, std::size_t> numbers_;
  std::vector<const std::string*> blocks_;  // the keys of numbers_
};

// The driven track of each file, or null.
std::vector<Json> page_tracks(const std::vector<PageFile>& files, PageBlocks* blocks);

// The whole; `tracks` stand in it.
Json page_head(const std::vector<PageFile>& files, const std::vector<Json>& tracks,
               const std::vector<EncodedChannel>& channels, bool recovered, PageBlocks* blocks);

}  // namespace traguardo::tool
