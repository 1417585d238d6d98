// SPDX-License-Identifier: MIT
// Elapsed-time tables as files: reference runs as text, one row a line, in the folder user/et_prediction/ of the
// installation.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "regulation/elapsed_time_data.h"
#include "support/bytes.h"

namespace traguardo {

inline constexpr std::wstring_view kDefaultTableName = L"Default";
// A table with fewer rows counts as missing.
inline constexpr std::size_t kFewestTableRows = 20;

// The path of a table by its name, which may be empty. folder: with its trailing slash.
std::wstring table_path(const std::wstring& folder, std::wstring_view name);

// Each row with its number, in four columns separated by tabs, three decimals each.
std::string table_text(std::span<const ElapsedTimeRow> rows);
// Lines that don't hold all four columns are left out.
std::vector<ElapsedTimeRow> rows_of_table(std::string_view text);

// Without a value if the file can't be read.
std::optional<std::vector<ElapsedTimeRow>> read_table(const std::wstring& folder, std::wstring_view name);
bool write_table(const std::wstring& folder, std::wstring_view name, std::span<const ElapsedTimeRow> rows);
// Writes the default table, and makes its folder, unless it is there. A failure is passed over.
void ensure_default_table(const std::wstring& folder);

}  // namespace traguardo
