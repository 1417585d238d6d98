// SPDX-License-Identifier: MIT
#include "channel_names.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <numeric>
#include <utility>

#include "failure.h"
#include "wildcard.h"

namespace traguardo::tool {

namespace {

std::string folded(const std::string& name) {
  std::string result;
  for (const char c : without_case(name)) {
    if (c != ' ' && c != '_') result += c;
  }
  return result;
}

// Letters to put in, take out or change to get from one to the other.
std::size_t distance(const std::string& a, const std::string& b) {
  std::vector<std::size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 0; i < a.size(); ++i) {
    std::size_t diagonal = std::exchange(row[0], i + 1);
    for (std::size_t k = 0; k < b.size(); ++k) {
      const std::size_t changed = diagonal + (a[i] == b[k] ? 0 : 1);
      diagonal = row[k + 1];
      row[k + 1] = std::min({changed, row[k] + 1, diagonal + 1});
    }
  }
  return row.back();
}

constexpr std::size_t kFar = 100;  // and beyond: nobody would mix the two up
constexpr std::size_t kLongestName = 200;

// 0 for another case or other blanks.
std::size_t how_far(const std::string& wanted, const std::string& name) {
  constexpr std::size_t kContained = 3;
  constexpr std::size_t kShortestPart = 3;
  if (wanted.empty() || wanted.size() > kLongestName || name.size() > kLongestName) return kFar + kLongestName;
  const std::size_t apart = distance(wanted, name);
  if (apart <= std::min<std::size_t>(2, wanted.size() / 3)) return apart;
  const bool is_part = wanted.size() >= kShortestPart && name.find(wanted) != std::string::npos;
  return is_part ? kContained : kFar + apart;
}

std::string quoted(const std::vector<std::string>& names, const char* last_joint) {
  std::string text;
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (i > 0) text += i + 1 == names.size() ? last_joint : ", ";
    text += '"' + names[i] + '"';
  }
  return text;
}

std::optional<std::size_t> place_of_number(std::string_view text, std::size_t count) {
  std::size_t place = 0;
  if (text.size() < 2 || text.front() != '#') return std::nullopt;
  const auto [end, problem] = std::from_chars(text.data() + 1, text.data() + text.size(), place);
  if (problem != std::errc() || end != text.data() + text.size() || place >= count) return std::nullopt;
  return place;
}

template <typename Fits>
std::vector<std::size_t> places_of(const std::vector<std::string>& names, Fits fits_name) {
  std::vector<std::size_t> places;
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (fits_name(names[i])) places.push_back(i);
  }
  return places;
}

}  // namespace

std::vector<std::size_t> named(const std::string& wanted, const std::vector<std::string>& names,
                               const std::string& where) {
  const auto exact = std::find(names.begin(), names.end(), wanted);
  if (exact != names.end()) return {static_cast<std::size_t>(exact - names.begin())};
  if (const auto place = place_of_number(wanted, names.size())) return {*place};
  if (wanted.empty()) return {};
  const std::string lower = without_case(wanted);
  if (has_wildcard(wanted)) {
    return places_of(names, [&lower](const std::string& name) { return fits(lower, without_case(name)); });
  }
  std::vector<std::size_t> places =
      places_of(names, [&lower](const std::string& name) { return without_case(name) == lower; });
  if (places.empty()) {
    places = places_of(
        names, [&lower](const std::string& name) { return without_case(name).find(lower) != std::string::npos; });
  }
  if (places.size() > 1) {
    std::vector<std::string> fitting;
    fitting.reserve(places.size());
    for (const std::size_t place : places) fitting.push_back(names[place]);
    refuse_several(wanted, fitting, where);
  }
  return places;
}

void refuse_several(const std::string& wanted, const std::vector<std::string>& fitting, const std::string& where) {
  throw Failure(fmt::format("\"{}\" fits {} channels of {}: {}", wanted, fitting.size(), where, quoted(fitting, ", ")));
}

std::string question_about_names(const std::string& wanted, const std::vector<std::string>& names) {
  constexpr std::size_t kMost = 3;
  std::vector<std::pair<std::size_t, std::string>> near;
  near.reserve(names.size());
  for (const std::string& name : names) near.emplace_back(how_far(folded(wanted), folded(name)), name);
  std::stable_sort(near.begin(), near.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
  const bool is_likely = !near.empty() && near.front().first < kFar;
  std::vector<std::string> nearest;
  for (const auto& [far, name] : near) {
    if (nearest.size() < kMost && (far < kFar || !is_likely)) nearest.push_back(name);
  }
  if (nearest.empty()) return {};
  return is_likely ? "; did you mean " + quoted(nearest, " or ") + "?"
                   : "; the nearest names are " + quoted(nearest, " and ");
}

}  // namespace traguardo::tool
