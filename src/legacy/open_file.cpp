// CWMP::ApriFile: what is checked before a file is read, which reader reads it, and what is computed behind it.
#include <cstdio>

#include "legacy/derived/regulation_view.h"
#include "legacy/file/wmp_messages.h"
#include "legacy/texts/session_texts.h"
#include "legacy/texts/wmp_measure.h"
#include "legacy/wmp_session.h"
#include "math/math_channel_manager.h"
#include "regulation/calculator.h"
#include "support/event_log.h"
#include "units/user_units_manager.h"

namespace traguardo {
namespace {

// Below this version the header's file length must be the real one; from it on a file holds run records.
constexpr u16 kFirstBlockVersion = 600;
// Versions up to this one keep physical values and have no raw area.
constexpr u16 kLastFloatVersion = 320;
constexpr u16 kFirstRawVersion = 400;

const WmpVersionRow* version_row(u16 version) {
  for (const WmpVersionRow& row : wmp_versions()) {
    if (row.version == version) return &row;
  }
  return nullptr;
}

}  // namespace

CWMP::CWMP(std::wstring folder, const CalculationOptions* options, CSensori* sensors, CGestMathChan* math, i32 mode)
    : application_folder_(std::move(folder)),
      options_(options),
      sensors_(sensors),
      math_(math),
      units_(CUserUnitsOfMeasureMgr::GetInstance()),
      mode_(mode) {}

CWMP::~CWMP() = default;

bool CWMP::ApriFile(const std::wstring& path, bool tables_first, bool load_samples, bool raw_only, u32* error,
                    const CalculationOptions* options, i32 mode) {
  *error = kMsgAllOk;
  options_ = options;
  mode_ = mode;
  clear_all();
  speed_scale_ = static_cast<float>(units_->GetInverseSpeedFactor());
  copy_beside(path);
  if (!read_head(path, error)) return refuse(*error, error);
  const u32 code = head_error();
  if (code != kMsgAllOk) return refuse(code, error);

  file_path_ = path;
  const std::size_t slash = path.find_last_of(L"/\\");
  file_folder_ = slash == std::wstring::npos ? std::wstring() : path.substr(0, slash);
  file_name_ = slash == std::wstring::npos ? path : path.substr(slash + 1);
  close_file();

  if (tables_first && version_ >= kFirstRawVersion && !run_version_reader(path, true, error)) {
    return refuse(*error, error);
  }
  make_version_texts();
  if (!load_samples) return true;
  if (!run_version_reader(path, false, error)) return refuse(*error, error);
  fix_unit_texts();
  check_reference_speed();
  convert_everything(raw_only);
  return true;
}

void CWMP::clear_all() {
  close_file();
  clear_tables();
  version_ = 0;
  header_ = WmpMainHeader();
  configuration_ = WmpConfigurationBlock();
  identity_ = WmpIdentityBlock();
  names_ = WmpNamesBlock();
  extended_names_ = WmpExtendedNamesBlock();
  firmware_text_.clear();
  software_text_.clear();
  file_path_.clear();
  file_folder_.clear();
  file_name_.clear();
  changed_ = false;
}

void CWMP::clear_tables() {
  calculators_.reset();
  regulation_view_.reset();
  measures_.clear();
  channels_.clear();
  extensions_.clear();
  statistics_.clear();
  logged_count_ = 0;
  laps_.clear();
  lap_extensions_.clear();
  runs_.clear();
  run_best_laps_.clear();
  raw_area_.clear();
  value_area_.clear();
  first_sample_.clear();
  raw_capacity_ = 0;
  stored_length_ = 0;
  dump_bytes_ = 0;
  distance_table_.clear();
  lap_rows_.clear();
  all_converted_ = false;
}

// A copy that stands there already is the older one and stays; one that can't be made is done without.
void CWMP::copy_beside(const std::wstring& path) const {
  constexpr std::size_t kExtensionLength = 3;
  if (path.size() < kExtensionLength) return;
  const std::wstring copy = path.substr(0, path.size() - kExtensionLength) + L"bak";
  if (!platform::file_exists(copy)) platform::copy_file(path, copy);
}

// The header and the blocks of the file's version, without any table. What a short file lacks reads as zero, for
// head_error to refuse.
bool CWMP::read_head(const std::wstring& path, u32* error) {
  if (!open_file(path)) {
    *error = kMsgErrorOpening;
    return false;
  }
  read_up_to(header_.bytes(), WmpMainHeader::kSize);
  version_ = header_.version();
  const WmpVersionRow* row = version_row(version_);
  if (row == nullptr) {
    *error = kMsgUnknownVersion;
    return false;
  }
  if (row->block_head > 0) {
    seek(0);
    if (!read_blocks()) {
      *error = kMsgChecksum;
      return false;
    }
    return true;
  }
  if (row->configuration > 0) read_up_to(configuration_.bytes(), WmpConfigurationBlock::kSize);
  read_up_to(names_.bytes(), WmpNamesBlock::kSize);
  if (row->extended_names > 0) read_up_to(extended_names_.bytes(), WmpExtendedNamesBlock::kSize);
  return true;
}

// Why the head forbids to read the file, in the order of the checks.
u32 CWMP::head_error() const {
  const bool has_runs = version_ >= kFirstBlockVersion;
  if (header_.signature() != kWmpSignature) return kMsgUnknownSignature;
  if (!has_runs && header_.file_length() != file_length()) return kMsgWrongLength;
  if (header_.lap_count() < 1) return kMsgNoLaps;
  if (has_runs && configuration_.run_count() == 0) return kMsgNoRun;
  if (!has_runs && header_.channel_count() < 1) return kMsgNoMeasure;
  if (has_runs && header_.channel_count() < 1) return kMsgAllOk;
  if (header_.value_area_size() == 0) return kMsgNoData;
  if (version_ > kLastFloatVersion && header_.raw_area_size() == 0) return kMsgNoData;
  return kMsgAllOk;
}

bool CWMP::run_version_reader(const std::wstring& path, bool tables_only, u32* error) {
  const WmpVersionRow* row = version_row(version_);
  if (row == nullptr) return false;
  switch (row->reader) {
    case WmpReader::kVers320:
      return ReadWampFileVers320(path, tables_only, error);
    case WmpReader::kVers400:
      return ReadWampFileVers400(path, tables_only, error);
    case WmpReader::kVers500:
      return ReadWampFileVers500(path, tables_only, error);
    case WmpReader::kVers550:
      return ReadWampFileVers550(path, tables_only, error);
    case WmpReader::kVers600:
      return ReadWampFileVers600(path, tables_only, error);
    case WmpReader::kVers700:
      return ReadWampFileVers700(path, tables_only, error);
  }
  return false;
}

// A refused file has no tables and shows nothing of what was read of it.
bool CWMP::refuse(u32 code, u32* error) {
  clear_all();
  *error = code;
  return false;
}

void CWMP::make_version_texts() {
  char text[32];
  std::snprintf(text, sizeof text, "%02x.%02x.%02x", static_cast<unsigned>(header_.firmware_first()),
                static_cast<unsigned>(header_.firmware_second()), static_cast<unsigned>(header_.firmware_third()));
  firmware_text_ = text;
  const u32 software = header_.software_version();
  std::snprintf(text, sizeof text, "%01x.%02x.%02x", static_cast<unsigned>((software >> 20) & 0xFF),
                static_cast<unsigned>((software >> 12) & 0xFF), static_cast<unsigned>((software >> 4) & 0xFF));
  software_text_ = text;
  const char letter = software_letters()[software & 0xF];
  if (letter != 0) software_text_.push_back(letter);
}

// The stored texts of three units become what is shown.
void CWMP::fix_unit_texts() {
  for (WmpChannelRecord& record : channels_) {
    const std::string unit = record.unit_text();
    if (unit == "C" || unit == "F") record.set_unit_text("\xB0" + unit);
    if (unit == "\xBB") record.set_unit_text("lambda");
  }
}

void CWMP::check_reference_speed() {
  const i16 reference = header_.reference_speed();
  const bool in_table = reference >= 0 && static_cast<std::size_t>(reference) < channels_.size();
  const auto is_speed = [&](std::size_t i) { return channels_[i].measure_class() == WmpChannelRecord::kClassSpeed; };
  const bool stands = in_table && is_speed(static_cast<std::size_t>(reference));
  if (!firmware_text_.starts_with("41")) {
    if (!stands) header_.set_reference_speed(-1);
    return;
  }
  if (stands && is_gps_speed(static_cast<std::size_t>(reference))) return;
  // This firmware's own speed is the receiver's; a wheel's is taken only where there is no other.
  header_.set_reference_speed(-1);
  for (std::size_t i = 0; i < channels_.size(); ++i) {
    if (!is_speed(i)) continue;
    header_.set_reference_speed(static_cast<i16>(i));
    if (is_gps_speed(i)) return;
  }
}

bool CWMP::is_gps_speed(std::size_t index) const {
  return function_id(index) == WmpChannelExtension::kFunctionGpsSpeed && second_function_id(index) == 0;
}

// Logged channels first, since every derived one may read any of them.
void CWMP::convert_everything(bool raw_only) {
  regulation_view_ = std::make_unique<RegulationView>(this);
  calculators_ = std::make_unique<RegulationCalculator>(regulation_view_.get(), *options_, mode_);
  rebuild_measures();
  for (std::size_t i = 0; i < logged_count_; ++i) ConvertiCanale(i, raw_only);
  math_->LoadMathChannels();
  for (std::size_t i = logged_count_; i < channels_.size(); ++i) ConvertiCanale(i, raw_only);
  all_converted_ = true;
  find_best_laps();
  build_lap_rows();
  enter_math_channels();
  assure_device_channels();
  log_missing_samples();
}

void CWMP::log_missing_samples() const {
  for (std::size_t i = logged_count_; i < channels_.size(); ++i) {
    const u32 missing = missing_samples(i);
    if (missing == 0) continue;
    TRAGUARDO_LOG("CWMP::ApriFile", "%s [%d] WARNING = Channel %s ends %u samples early\n", channels_[i].name(),
                  missing);
  }
}

std::tm CWMP::date_and_time() const {
  return parse_session_date(header_.date_text());
}

}  // namespace traguardo
