// SPDX-License-Identifier: MIT
// Tags that somebody asked for by name: their payloads go raw into files beside the session.

#include <algorithm>

#include "logger/logger_parser.h"
#include "support/event_log.h"
#include "support/platform/platform.h"

namespace traguardo {

namespace {

constexpr std::size_t kTagNameWidth = 4;

// Tag names are told apart up to their first NUL, or over all 4 bytes.
std::string_view compared_part(std::string_view name) {
  return name.substr(0, std::min(name.find('\0'), kTagNameWidth));
}

}  // namespace

void CParserZep_2Gv4::SetTagDiDebug(const std::map<std::string, std::string>& requests) {
  debug_tags_.clear();
  for (const auto& [name, suffix] : requests) debug_tags_[name].suffix = suffix;
}

void CParserZep_2Gv4::collect_debug_tag(const SAtomTag& tag) {
  for (auto& [name, debug_tag] : debug_tags_) {
    if (compared_part(name) != tag.name) continue;
    debug_tag.payloads.insert(debug_tag.payloads.end(), tag.payload, tag.payload + tag.payloadSize);
  }
}

// A tag that never came leaves an empty file.
void CParserZep_2Gv4::SalvaTagDiDebugSePresenti() {
  for (const auto& [name, debug_tag] : debug_tags_) {
    const std::wstring path = GetNomeFile() + widen_bytes(debug_tag.suffix);
    const std::vector<u8>& payloads = debug_tag.payloads;
    const std::string_view bytes(reinterpret_cast<const char*>(payloads.data()), payloads.size());
    // Without a suffix the path is the session's own.
    if (debug_tag.suffix.empty() || !platform::write_whole_file(path, bytes)) {
      TRAGUARDO_LOG("CParserZep_2Gv4::SalvaTagDiDebugSePresenti",
                    "%s [%d] ERROR = Can't open output stream for tag %s into file %s\n", name, path);
    }
  }
}

}  // namespace traguardo
