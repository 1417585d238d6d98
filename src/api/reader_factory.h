// SPDX-License-Identifier: MIT
// api/ is the library's surface: the 34 C functions, the table of open files, and the factory that turns a path into a
// reader. It includes every room below it; nothing includes it but the tools.
#pragma once

#include <list>
#include <memory>
#include <string>

#include "model/rk_parser.h"

namespace traguardo {

// Kinds of files that have a reader.
enum FileKind : int { kKindQlt = 2, kKindQlc = 3, kKindWmp = 9, kKindUnknown = 11 };

// The kind by the last four characters, capitals or not.
int file_kind_of(const std::wstring& path);

// The reader for a file, before ParsaFile. Null for a kind without a reader and if the memory can't be had.
// A compressed file is expanded beside itself first; a failed expansion shows when ParsaFile meets what it left.
// options, may be null: "stat-misure=1", "stat-lap=1", "stat-gps=1", "gps-samples=1", "recover-clock=1" (a wrong clock
// costs its frame only), "wmp-copy=0" (no .bak beside a .wmp), and requests for debug tags, "zep-dbg-info" and one
// character, '+' and a tag of up to 3 characters, ';' and a suffix for the tag's file.
std::unique_ptr<IRkParser> CreaParser(const std::wstring& path, int kind, const std::list<std::string>* options,
                                      bool keep_constant);

}  // namespace traguardo
