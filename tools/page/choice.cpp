// SPDX-License-Identifier: MIT
#include "choice.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <exception>

#include "failure.h"
#include "lap_choice.h"
#include "paths.h"
#include "speed.h"
#include "text.h"

namespace traguardo::tool {

namespace {

// One thing that somebody asked for by a text, over all files: it must be in one of them.
class Wish {
 public:
  template <typename Find>
  void ask(Find find) {
    try {
      find();
      is_met_ = true;
    } catch (const Failure&) {
      if (!refusal_) refusal_ = std::current_exception();
    }
  }
  void require_met() const {
    if (!is_met_ && refusal_) std::rethrow_exception(refusal_);
  }

 private:
  bool is_met_ = false;
  std::exception_ptr refusal_;
};

std::size_t place_of(std::vector<Channel>* channels, const Channel& wanted) {
  const auto found = std::find_if(channels->begin(), channels->end(),
                                  [&wanted](const Channel& channel) { return are_same(channel, wanted); });
  const auto place = static_cast<std::size_t>(found - channels->begin());
  if (found == channels->end()) channels->push_back(wanted);
  return place;
}

// A clock that leaps asks for points by the hundred million; no page can hold them.
void leave_out_endless(PageFile* file) {
  constexpr std::uint64_t kMostPoints = 20'000'000;
  const auto is_endless = [file](const Channel& channel) {
    return channel.kind == ChannelKind::gps && file->session->sample_count(channel, std::nullopt) > kMostPoints;
  };
  if (std::erase_if(file->channels, is_endless) > 0) {
    file->left_out.emplace_back("GPS channels: a clock leaps between two solutions, so that they would be endless");
  }
}

void choose_channels(PageFile* file, const PageOptions& options, std::vector<Wish>* wishes) {
  Session& session = *file->session;
  if (options.channels.empty()) file->channels = session.channels();
  for (std::size_t i = 0; i < options.channels.size(); ++i) {
    (*wishes)[i].ask([&] {
      for (const Channel& channel : session.find_channels(options.channels[i])) place_of(&file->channels, channel);
    });
  }
  leave_out_endless(file);
}

void choose_laps(PageFile* file, const PageOptions& options, std::vector<Wish>* wishes) {
  for (std::size_t i = 0; i < options.laps.size(); ++i) {
    (*wishes)[i].ask([&] {
      for (const Lap& lap : chosen_laps(*file->session, options.laps[i])) file->laps.push_back(lap);
    });
  }
  const auto by_number = [](const Lap& a, const Lap& b) { return a.number < b.number; };
  std::sort(file->laps.begin(), file->laps.end(), by_number);
  const auto is_same = [](const Lap& a, const Lap& b) { return a.number == b.number; };
  file->laps.erase(std::unique(file->laps.begin(), file->laps.end(), is_same), file->laps.end());
}

// Distances come from a speed also where nobody asked to see it.
void choose_speed(PageFile* file, const PageOptions& options, Wish* wish) {
  const auto find = [&] {
    file->speed = place_of(&file->channels, speed_channel(*file->session, options.speed, "--speed"));
  };
  if (!options.speed.empty()) {
    wish->ask(find);
  } else {
    Wish().ask(find);
  }
}

// Files of one name are told apart by their paths.
void name_files(std::vector<PageFile>* files) {
  for (PageFile& file : *files) {
    file.name = to_utf8(bytes_of(path_of(file.session->path()).filename()));
  }
  std::vector<std::string> names;
  for (const PageFile& file : *files) names.push_back(file.name);
  for (PageFile& file : *files) {
    if (std::count(names.begin(), names.end(), file.name) > 1) file.name = to_utf8(file.session->path());
  }
}

}  // namespace

bool are_same(const Channel& a, const Channel& b) {
  return a.kind == b.kind && a.index == b.index && a.unit == b.unit;
}

std::vector<PageFile> open_page_files(const PageOptions& options) {
  std::vector<PageFile> files;
  std::vector<Wish> channels(options.channels.size());
  std::vector<Wish> laps(options.laps.size());
  Wish speed;
  for (const std::string& path : options.files) {
    PageFile& file = files.emplace_back();
    file.session = std::make_unique<Session>(path, options.recover);
    choose_channels(&file, options, &channels);
    choose_laps(&file, options, &laps);
    choose_speed(&file, options, &speed);
  }
  for (const Wish& wish : channels) wish.require_met();
  for (const Wish& wish : laps) wish.require_met();
  speed.require_met();
  name_files(&files);
  return files;
}

}  // namespace traguardo::tool
