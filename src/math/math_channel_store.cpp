// SPDX-License-Identifier: MIT
#include "math/math_channel_store.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include "math/standard_definitions.h"
#include "math/tokenizer.h"
#include "support/platform/platform.h"

namespace traguardo {
namespace {

constexpr std::string_view kFirstLine = "traguardo math channels 1";
constexpr u64 kLargestFile = 1 << 20;

// The text up to the next mark, which goes too.
std::string_view take_until(std::string_view* text, char mark) {
  const std::size_t end = std::min(text->find(mark), text->size());
  const std::string_view taken = text->substr(0, end);
  text->remove_prefix(std::min(end + 1, text->size()));
  return taken;
}

std::string_view take_line(std::string_view* text) {
  std::string_view line = take_until(text, '\n');
  if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
  return line;
}

template <typename Number>
void take_number(std::string_view* values, Number* out) {
  const std::string_view word = take_until(values, ' ');
  Number value{};
  const auto result = std::from_chars(word.data(), word.data() + word.size(), value);
  if (result.ec == std::errc{} && result.ptr == word.data() + word.size()) *out = value;
}

void take_field(std::string_view key, std::string_view value, SMathChannel* channel) {
  if (key == "unit") channel->unit = value.substr(0, SMathChannel::kUnitLength);
  if (key == "formula") channel->formula = value.substr(0, SMathChannel::kTextLength);
  if (key == "description") channel->description = value.substr(0, SMathChannel::kTextLength);
  if (key == "enabled") take_number(&value, &channel->enabled);
  if (key == "update") take_number(&value, &channel->update_existing);
  if (key == "filter") take_number(&value, &channel->filter_word);
  if (key == "class") take_number(&value, &channel->channel_class);
  if (key == "frequency") take_number(&value, &channel->frequency_code);
  if (key == "decimals") take_number(&value, &channel->decimals);
  if (key == "flags") {
    take_number(&value, &channel->flags[0]);
    take_number(&value, &channel->flags[1]);
  }
  if (key == "function") {
    take_number(&value, &channel->function);
    take_number(&value, &channel->sub_function);
  }
  if (key == "range") {
    take_number(&value, &channel->display_minimum);
    take_number(&value, &channel->display_maximum);
  }
}

class DefinitionText {
 public:
  void line(std::string_view key, std::string_view value) {
    text_.append(key).append(" ");
    // A line end inside a value would start another key.
    for (const char c : value) text_.push_back(c == '\n' || c == '\r' || c == '\0' ? ' ' : c);
    text_.push_back('\n');
  }
  template <typename... Numbers>
  void numbers(std::string_view key, Numbers... values) {
    text_.append(key);
    (number(values), ...);
    text_.push_back('\n');
  }
  const std::string& text() const { return text_; }

 private:
  template <typename Number>
  void number(Number value) {
    char digits[32];
    const auto result = std::to_chars(digits, digits + sizeof digits, value);
    text_.append(" ").append(digits, result.ptr);
  }

  std::string text_;
};

void append_definition(const SMathChannel& channel, DefinitionText* out) {
  out->line("channel", channel.name);
  out->line("unit", channel.unit);
  out->numbers("enabled", channel.enabled);
  out->numbers("update", channel.update_existing);
  out->numbers("flags", channel.flags[0], channel.flags[1]);
  out->numbers("filter", channel.filter_word);
  out->numbers("class", channel.channel_class);
  out->numbers("frequency", channel.frequency_code);
  out->numbers("range", channel.display_minimum, channel.display_maximum);
  out->line("formula", channel.formula);
  out->line("description", channel.description);
  out->numbers("function", channel.function, channel.sub_function);
  out->numbers("decimals", channel.decimals);
}

SMathChannel from_standard(const SStandardDefinition& row) {
  SMathChannel channel;
  channel.name = row.name;
  channel.unit = row.unit;
  channel.flags = {0, 1};
  channel.channel_class = row.channel_class;
  channel.display_minimum = row.display_minimum;
  channel.display_maximum = row.display_maximum;
  channel.formula = row.formula;
  channel.function = row.function;
  channel.sub_function = row.sub_function;
  return channel;
}

}  // namespace

CMathChanIni::CMathChanIni(std::vector<SMathChannel>& channels, CTokenizer& tokenizer, std::wstring folder)
    : channels_(channels), tokenizer_(tokenizer), folder_(std::move(folder)) {}

std::wstring CMathChanIni::get_file_path(std::wstring_view name) const {
  std::wstring path = folder_;
  path += kFolderName;
  if (!name.empty()) path.append(L"\\").append(name);
  return path;
}

std::wstring CMathChanIni::disk_path(const std::wstring& folder, std::wstring_view name) {
  return platform::path_in_folder(platform::path_in_folder(folder, kFolderName), name);
}

void CMathChanIni::SetDefaults() {
  channels_.clear();
  tokenizer_.ClearConstants();
  for (const SStandardDefinition& row : standard_definitions()) channels_.push_back(from_standard(row));
  for (const SStandardConstant& row : standard_constants()) tokenizer_.AddConstant(row.name, row.value);
}

bool CMathChanIni::read_definitions(std::wstring_view name) {
  std::string bytes;
  if (!platform::read_whole_file(disk_path(folder_, name), &bytes, kLargestFile)) return true;
  std::string_view text = bytes;
  if (take_line(&text) != kFirstLine) return true;
  channels_.clear();
  tokenizer_.ClearConstants();
  while (!text.empty()) {
    std::string_view value = take_line(&text);
    const std::string_view key = take_until(&value, ' ');
    if (key == "constant") {
      const std::string_view constant = take_until(&value, ' ');
      float number = 0.0F;
      take_number(&value, &number);
      tokenizer_.AddConstant(constant, number);
    } else if (key == "channel") {
      channels_.emplace_back().name = value.substr(0, SMathChannel::kNameLength);
    } else if (!channels_.empty()) {
      take_field(key, value, &channels_.back());
    }
  }
  return true;
}

bool CMathChanIni::write_definitions(std::wstring_view name) const {
  DefinitionText out;
  for (std::size_t i = 0; i < tokenizer_.constant_count(); ++i) {
    const u16 index = static_cast<u16>(i);
    // A name with a blank in it couldn't be told from the value.
    const std::string_view constant = tokenizer_.constant_name(index);
    if (constant.find(' ') != std::string_view::npos) continue;
    out.numbers("constant " + std::string(constant), tokenizer_.constant_value(index));
  }
  for (const SMathChannel& channel : channels_) append_definition(channel, &out);
  return platform::create_folders(disk_path(folder_, L"")) &&
         platform::write_whole_file(disk_path(folder_, name), std::string(kFirstLine) + "\n" + out.text());
}

}  // namespace traguardo
