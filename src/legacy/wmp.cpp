// SPDX-License-Identifier: MIT
#include "legacy/wmp.h"

#include "legacy/channel_conversion.h"
#include "legacy/derived/derived_channels.h"
#include "legacy/derived/regulation_view.h"
#include "legacy/derived/synthesised_channels.h"
#include "legacy/file/sample_form.h"
#include "legacy/file/table_reader.h"
#include "legacy/file/table_repair.h"
#include "legacy/file/wmp_messages.h"
#include "legacy/texts/session_texts.h"
#include "legacy/texts/wmp_measure.h"
#include "math/math_channel_manager.h"
#include "regulation/calculator.h"
#include "support/event_log.h"
#include "units/user_units_manager.h"

namespace traguardo {
namespace {

// A copy that stands there already is the older one and stays; one that can't be made is done without.
void copy_beside(const std::wstring& path) {
  constexpr std::size_t kExtensionLength = 3;
  if (path.size() < kExtensionLength) return;
  const std::wstring copy = path.substr(0, path.size() - kExtensionLength) + L"bak";
  if (!platform::file_exists(copy)) platform::copy_file(path, copy);
}

}  // namespace

CWMP::CWMP(std::wstring folder, const CalculationOptions* options, CSensori* sensors, CGestMathChan* math, i32 mode)
    : session_(std::move(folder), sensors, math), options_(options), mode_(mode) {}

bool CWMP::ApriFile(const std::wstring& path, bool tables_first, bool load_samples, bool raw_only, u32* error,
                    const CalculationOptions* options, i32 mode) {
  *error = kMsgAllOk;
  options_ = options;
  mode_ = mode;
  session_.clear();
  session_.speed_scale = static_cast<float>(session_.units->GetInverseSpeedFactor());
  if (copies_) copy_beside(path);
  if (!read_head(path, error)) return refuse();
  session_.take_path(path);
  // Of a file of values the second run would only do the same again.
  const bool reads_twice = tables_first && file_version_->samples->holds_raw_words;
  if (reads_twice && !read_file(path, true, error)) return refuse();
  if (!load_samples) return true;
  if (!read_file(path, false, error)) return refuse();
  repair_unit_texts(&session_.tables);
  repair_reference_speed(&session_.tables);
  convert_everything(raw_only);
  return true;
}

bool CWMP::read_head(const std::wstring& path, u32* error) {
  if (!open_file(path)) {
    *error = kMsgErrorOpening;
    return false;
  }
  *error = TableReader(this, &session_.tables, *session_.sensors).read_head();
  file_version_ = session_.tables.version;
  close_file();
  return *error == kMsgAllOk;
}

bool CWMP::read_file(const std::wstring& path, bool tables_only, u32* error) {
  session_.clear_tables();
  if (file_version_ == nullptr || !open_file(path)) {
    *error = kMsgErrorOpening;
    return false;
  }
  std::vector<u16> words;
  *error = TableReader(this, &session_.tables, *session_.sensors).read(*file_version_, tables_only, &words);
  close_file();
  if (*error != kMsgAllOk) {
    session_.clear_tables();
    return false;
  }
  if (!tables_only) session_.store.lay_out(std::move(words));
  return true;
}

bool CWMP::ReadWampFileVers320(const std::wstring& path, bool tables_only, u32* error) {
  return read_file(path, tables_only, error);
}
bool CWMP::ReadWampFileVers400(const std::wstring& path, bool tables_only, u32* error) {
  return read_file(path, tables_only, error);
}
bool CWMP::ReadWampFileVers500(const std::wstring& path, bool tables_only, u32* error) {
  return read_file(path, tables_only, error);
}
bool CWMP::ReadWampFileVers550(const std::wstring& path, bool tables_only, u32* error) {
  return read_file(path, tables_only, error);
}
bool CWMP::ReadWampFileVers600(const std::wstring& path, bool tables_only, u32* error) {
  return read_file(path, tables_only, error);
}
bool CWMP::ReadWampFileVers700(const std::wstring& path, bool tables_only, u32* error) {
  return read_file(path, tables_only, error);
}

// A refused file has no tables and shows nothing of what was read of it.
bool CWMP::refuse() {
  session_.clear();
  file_version_ = nullptr;
  return false;
}

// Logged channels first, since every derived one may read any of them.
void CWMP::convert_everything(bool raw_only) {
  session_.regulation_view = std::make_unique<RegulationView>(&session_);
  session_.calculators = std::make_unique<RegulationCalculator>(session_.regulation_view.get(), *options_, mode_);
  session_.rebuild_measures();
  const std::size_t logged = session_.tables.logged_count;
  for (std::size_t i = 0; i < logged; ++i) convert_channel(session_, i, raw_only);
  session_.math->LoadMathChannels();
  for (std::size_t i = logged; i < session_.tables.channels.size(); ++i) convert_channel(session_, i, raw_only);
  session_.all_converted = true;
  if (session_.distances.empty()) session_.rebuild_distances();
  enter_math_channels(session_);
  assure_device_channels(session_);
  log_missing_samples();
}

void CWMP::log_missing_samples() const {
  for (std::size_t i = session_.tables.logged_count; i < session_.tables.channels.size(); ++i) {
    const u32 missing = missing_samples(session_.tables, i);
    if (missing == 0) continue;
    const std::string name = session_.tables.channels[i].record.name();
    TRAGUARDO_LOG("CWMP::ApriFile", "%s [%d] WARNING = Channel %s ends %u samples early\n", name, missing);
  }
}

bool CWMP::ConvertiCanale(std::size_t index, bool raw_only) {
  return convert_channel(session_, index, raw_only);
}

void CWMP::AssicuraPresenzaCanaleMatematico(u16 kind, bool compute_now) {
  assure_channel(session_, kind, compute_now);
}

std::tm CWMP::date_and_time() const {
  return parse_session_date(session_.tables.header.date_text());
}

}  // namespace traguardo
