// SPDX-License-Identifier: MIT
// The event log: one file of plain lines, off until somebody asks for it. A statement costs one test of a pointer while
// it is off, and never reports a failure to its caller.
#pragma once

#include <string>
#include <string_view>
#include <type_traits>
#include <variant>

#include "support/bytes.h"

namespace traguardo {

// The path of the log file, NUL-terminated, null while the log is off. Process-wide; the process keeps what it points
// to.
extern const wchar_t* g_percorso_log;

namespace detail {
// What a conversion of the format takes. Texts may be narrow or wide: "%s" prints either, on every platform.
using LogArgument = std::variant<i64, u64, double, const void*, std::string_view, std::wstring_view>;

template <typename T>
LogArgument log_argument(const T& value) {
  if constexpr (std::is_convertible_v<T, std::string_view>) {
    return std::string_view(value);
  } else if constexpr (std::is_convertible_v<T, std::wstring_view>) {
    return std::wstring_view(value);
  } else if constexpr (std::is_pointer_v<T>) {
    return static_cast<const void*>(value);
  } else if constexpr (std::is_floating_point_v<T>) {
    return static_cast<double>(value);
  } else if constexpr (std::is_signed_v<T>) {
    return static_cast<i64>(value);
  } else {
    return static_cast<u64>(value);
  }
}

// The text of a log line. Conversions: %s %d %u %x %p %f and %%, with an optional '0' and width for numbers and an
// optional 'l', which changes nothing. A conversion without an argument prints as it stands.
std::string format_log_line(std::string_view format, const LogArgument* arguments, std::size_t count);
void write_log_line(std::string_view format, const LogArgument* arguments, std::size_t count) noexcept;

template <typename... Arguments>
void log_line(std::string_view function, int line, std::string_view format, const Arguments&... arguments) {
  const LogArgument all[] = {log_argument(function), log_argument(line), log_argument(arguments)...};
  write_log_line(format, all, sizeof all / sizeof all[0]);
}
}  // namespace detail

// One statement of the log. `function` is "Class::Method"; `format` is the whole line, beginning with "%s [%d] LEVEL =
// " for function and line number and ending in a line feed. Levels: ERROR, WARNING, NOTICE, ALERT, INFO. A macro, so
// that nothing is worked out while the log is off.
#define TRAGUARDO_LOG(function, ...)                                                                            \
  do {                                                                                                          \
    if (::traguardo::g_percorso_log != nullptr) ::traguardo::detail::log_line(function, __LINE__, __VA_ARGS__); \
  } while (false)

class CEvtLogUtils {
 public:
  virtual ~CEvtLogUtils() = default;

  // Chooses the path of a new log file, in logs/ beside the process's executable, and stores a copy of it through
  // `log_path`; give &g_percorso_log to switch the log on. The file itself appears with the first line.
  // number_to_keep: how many *.log files may exist in that folder, the new one included; the first ones of the folder's
  // own order are deleted. On failure the pointer stays as it is.
  static void AvviaLog(const std::wstring& base_name, const wchar_t** log_path, u32 number_to_keep);
};

}  // namespace traguardo
