// SPDX-License-Identifier: MIT
#include "support/event_log.h"

#include <cstdio>
#include <cwchar>
#include <memory>

#include "support/exe_path.h"
#include "support/platform/platform.h"

namespace traguardo {

const wchar_t* g_percorso_log = nullptr;

namespace detail {
namespace {

std::string formatted_argument(const std::string& flags, char conversion, const LogArgument& argument) {
  char buffer[64];
  const auto print = [&](const char* length, char letter, auto value) {
    const std::string format = "%" + flags + length + letter;
    std::snprintf(buffer, sizeof buffer, format.c_str(), value);
    return std::string(buffer);
  };
  if (const auto* text = std::get_if<std::string_view>(&argument)) return std::string(*text);
  if (const auto* wide = std::get_if<std::wstring_view>(&argument)) return platform::host_bytes_from_path(*wide);
  if (const auto* pointer = std::get_if<const void*>(&argument)) {
    std::snprintf(buffer, sizeof buffer, "%p", *pointer);
    return buffer;
  }
  if (const auto* real = std::get_if<double>(&argument)) return print("", conversion == 'f' ? 'f' : 'g', *real);
  const u64 bits =
      std::holds_alternative<i64>(argument) ? static_cast<u64>(std::get<i64>(argument)) : std::get<u64>(argument);
  if (conversion == 'x') return print("ll", 'x', static_cast<unsigned long long>(bits));
  if (std::holds_alternative<i64>(argument)) return print("ll", 'd', static_cast<long long>(bits));
  return print("ll", 'u', static_cast<unsigned long long>(bits));
}

}  // namespace

std::string format_log_line(std::string_view format, const LogArgument* arguments, std::size_t count) {
  std::string line;
  std::size_t next = 0;
  for (std::size_t i = 0; i < format.size(); ++i) {
    if (format[i] != '%') {
      line.push_back(format[i]);
      continue;
    }
    if (i + 1 < format.size() && format[i + 1] == '%') {
      line.push_back('%');
      ++i;
      continue;
    }
    std::size_t end = i + 1;
    std::string flags;
    while (end < format.size() && format[end] >= '0' && format[end] <= '9' && flags.size() < 3) flags += format[end++];
    if (end < format.size() && format[end] == 'l') ++end;
    if (end >= format.size() || next >= count) {
      line.push_back('%');
      continue;
    }
    line += formatted_argument(flags, format[end], arguments[next++]);
    i = end;
  }
  return line;
}

void write_log_line(std::string_view format, const LogArgument* arguments, std::size_t count) noexcept {
  try {
    platform::append_text(g_percorso_log, format_log_line(format, arguments, count));
  } catch (...) {
    // A line that can't be written is lost; the caller goes on.
  }
}

}  // namespace detail

void CEvtLogUtils::AvviaLog(const std::wstring& base_name, const wchar_t** log_path, u32 number_to_keep) {
  const std::unique_ptr<IExePathName> executable = CreaExePathName(false);
  if (executable == nullptr) return;
  const std::wstring folder = executable->GetCartellaSlashW() + L"logs/";
  platform::create_folders(folder);

  const std::vector<std::wstring> logs = platform::list_files(folder, L".log");
  if (logs.size() >= number_to_keep) {
    const std::size_t surplus = std::min(logs.size(), logs.size() - number_to_keep + 1);
    for (std::size_t i = 0; i < surplus; ++i) platform::delete_file(folder + logs[i]);
  }

  std::wstring path = folder + L"zu_";
  std::tm now{};
  if (platform::local_time(std::time(nullptr), &now)) {
    wchar_t stamp[32];
    std::swprintf(stamp, sizeof stamp / sizeof stamp[0], L"%04d%02d%02d_%02d%02d%02d_", now.tm_year + 1900,
                  now.tm_mon + 1, now.tm_mday, now.tm_hour, now.tm_min, now.tm_sec);
    path += stamp;
  }
  path += base_name + L"_U.log";

  // The process keeps the copy for its lifetime: log statements read it at any time.
  wchar_t* kept = new wchar_t[path.size() + 1];
  std::wmemcpy(kept, path.c_str(), path.size() + 1);
  *log_path = kept;
}

}  // namespace traguardo
