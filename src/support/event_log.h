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
}  // namespace detail

// One statement of the log. `function` is "Class::Method"; `format` is the whole line, beginning with "%s [%d] LEVEL =
// " for function and line number and ending in a line feed. Levels: ERROR, WARNING, NOTICE, ALERT, INFO.
#define TRAGUARDO_LOG(function, format, ...)                                                                   \
  do {                                                                                                         \
    if (::traguardo::g_percorso_log != nullptr) {                                                              \
      const ::traguardo::detail::LogArgument traguardo_log_arguments[] = {                                     \
          ::traguardo::detail::log_argument(std::string_view(function)),                                       \
          ::traguardo::detail::log_argument(__LINE__) __VA_OPT__(, TRAGUARDO_LOG_EACH(__VA_ARGS__))};          \
      ::traguardo::detail::write_log_line(format, traguardo_log_arguments,                                     \
                                          sizeof traguardo_log_arguments / sizeof traguardo_log_arguments[0]); \
    }                                                                                                          \
  } while (false)
#define TRAGUARDO_LOG_ONE(a) ::traguardo::detail::log_argument(a)
#define TRAGUARDO_LOG_PICK(_1, _2, _3, _4, _5, _6, _7, _8, NAME, ...) NAME
#define TRAGUARDO_LOG_EACH(...)                                                                                        \
  TRAGUARDO_LOG_PICK(__VA_ARGS__, TRAGUARDO_LOG_8, TRAGUARDO_LOG_7, TRAGUARDO_LOG_6, TRAGUARDO_LOG_5, TRAGUARDO_LOG_4, \
                     TRAGUARDO_LOG_3, TRAGUARDO_LOG_2, TRAGUARDO_LOG_1)                                                \
  (__VA_ARGS__)
#define TRAGUARDO_LOG_1(a) TRAGUARDO_LOG_ONE(a)
#define TRAGUARDO_LOG_2(a, b) TRAGUARDO_LOG_1(a), TRAGUARDO_LOG_ONE(b)
#define TRAGUARDO_LOG_3(a, b, c) TRAGUARDO_LOG_2(a, b), TRAGUARDO_LOG_ONE(c)
#define TRAGUARDO_LOG_4(a, b, c, d) TRAGUARDO_LOG_3(a, b, c), TRAGUARDO_LOG_ONE(d)
#define TRAGUARDO_LOG_5(a, b, c, d, e) TRAGUARDO_LOG_4(a, b, c, d), TRAGUARDO_LOG_ONE(e)
#define TRAGUARDO_LOG_6(a, b, c, d, e, f) TRAGUARDO_LOG_5(a, b, c, d, e), TRAGUARDO_LOG_ONE(f)
#define TRAGUARDO_LOG_7(a, b, c, d, e, f, g) TRAGUARDO_LOG_6(a, b, c, d, e, f), TRAGUARDO_LOG_ONE(g)
#define TRAGUARDO_LOG_8(a, b, c, d, e, f, g, h) TRAGUARDO_LOG_7(a, b, c, d, e, f, g), TRAGUARDO_LOG_ONE(h)

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
