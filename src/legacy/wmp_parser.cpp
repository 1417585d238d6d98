// SPDX-License-Identifier: MIT
#include "legacy/wmp_parser.h"

#include <algorithm>
#include <exception>
#include <memory>
#include <new>
#include <utility>

#include "legacy/file/jts_parser.h"
#include "legacy/file/table_repair.h"
#include "legacy/sensors/sensor_database.h"
#include "legacy/sensors/sensors.h"
#include "legacy/texts/session_texts.h"
#include "legacy/texts/wmp_measure.h"
#include "legacy/wmp.h"
#include "math/math_channel_manager.h"
#include "model/parsed_channel.h"
#include "regulation/calculator.h"
#include "support/exe_path.h"
#include "support/platform/platform.h"
#include "units/user_units_manager.h"

namespace traguardo {
namespace {

// The regulation calculators run for their channels only.
constexpr i32 kNoCalibratedDistance = -1;
constexpr u64 kMicrosecondsPerMs = 1000;

// "12.34.56" as the bytes 12, 34, 56, and a ninth character as it stands.
void store_firmware(const std::string& text, u8* bytes) {
  constexpr std::size_t kShortest = 8;
  if (text.size() < kShortest || text[2] != '.' || text[5] != '.') return;
  const auto pair = [&](std::size_t at) { return static_cast<u8>((text[at] - '0') * 10 + (text[at + 1] - '0')); };
  bytes[0] = pair(0);
  bytes[1] = pair(3);
  bytes[2] = pair(6);
  if (text.size() == kShortest + 1) bytes[3] = static_cast<u8>(text.back());
}

SIdentRecord make_ident(const WmpSession& session) {
  constexpr u16 kCheckedBytes = 56;
  SIdentRecord ident;
  u8* bytes = ident.bytes.data();
  std::memcpy(bytes, "idn", 3);
  bytes[3] = 1;
  store_u16(bytes + 4, kCheckedBytes);
  store_u32(bytes + 8, session.tables.identity.device_code());
  store_u32(bytes + 12, session.tables.identity.device_id());
  store_firmware(firmware_text(session.tables.header), bytes + 20);
  u32 sum = 0;
  for (std::size_t i = 8; i < SIdentRecord::kSize; ++i) sum += bytes[i];
  store_u16(bytes + 6, static_cast<u16>(sum));
  return ident;
}

}  // namespace

CParserWMP::CParserWMP(std::wstring path) : CParser(std::move(path)) {}
CParserWMP::~CParserWMP() = default;

std::wstring CParserWMP::trace_path_of(const std::wstring& session_path) {
  constexpr std::wstring_view kSmall = L"jts";
  constexpr std::wstring_view kCapital = L"JTS";
  const std::size_t stem = session_path.size() - std::min(session_path.size(), kSmall.size());
  std::wstring path = session_path.substr(0, stem);
  for (std::size_t i = 0; i < kSmall.size(); ++i) {
    const bool is_capital =
        stem + i < session_path.size() && session_path[stem + i] >= L'A' && session_path[stem + i] <= L'Z';
    path.push_back(is_capital ? kCapital[i] : kSmall[i]);
  }
  for (const std::wstring_view ending : {std::wstring_view(path).substr(stem), kSmall, kCapital}) {
    std::wstring candidate = session_path.substr(0, stem).append(ending);
    if (platform::file_exists(candidate)) return candidate;
  }
  return path;
}

bool CParserWMP::ParsaFile(IProgress* progress) {
  bool parsed = false;
  try {
    parsed = parse(progress);
  } catch (const std::bad_alloc&) {
    set_failure(ParseFailure::kMemory);
  } catch (const std::exception&) {
    set_failure(ParseFailure::kReading);
  }
  // Never fewer channels without a word: what a failed parse made goes, its stores with it.
  if (!parsed) channels_.clear();
  return parsed;
}

bool CParserWMP::parse(IProgress* progress) {
  if (!load_trace(progress)) return false;
  const std::unique_ptr<IExePathName> executable = CreaExePathName(false);
  if (executable == nullptr) return false;
  IUserUnitOfMeasureManager* units = CUserUnitsOfMeasureMgr::GetInstance();

  // Each one borrows from those above it, and goes before them.
  CDBSensori data_base;
  CSensori sensors(units, &data_base);
  const CalculationOptions options{};
  CGestMathChan math(*units, executable->GetCartellaW());
  CWMP reader(executable->GetCartellaW(), &options, &sensors, &math, kNoCalibratedDistance);

  reader.set_copies(copies_);

  u32 error = 0;
  constexpr bool kTablesFirst = true;
  constexpr bool kLoadSamples = true;
  constexpr bool kRawOnly = false;
  reader.ApriFile(GetNomeFile(), kTablesFirst, kLoadSamples, kRawOnly, &error, &options, kNoCalibratedDistance);
  const WmpSession& session = reader.session();
  if (!copy_channels(session)) return false;
  copy_laps(session);
  copy_texts(session);
  SetDataOra(reader.date_and_time());
  enter_ident(session);
  return true;
}

bool CParserWMP::load_trace(IProgress* progress) {
  const std::wstring path = trace_path_of(GetNomeFile());
  if (!platform::file_exists(path)) return false;
  CParserJTS reader(path);
  return reader.CaricaTraccia(progress, this);
}

// The index in a store's name is the channel's place in the table, with gaps where a channel is not shown.
bool CParserWMP::copy_channels(const WmpSession& session) {
  for (const std::unique_ptr<CWMPMisura>& measure : session.measures) {
    const std::span<const float> values = measure->values();
    if (measure->hidden() || measure->period_ms() == 0) continue;
    // Also of one that nothing is left of.
    if (const u32 missing = missing_samples(session.tables, measure->index()); missing > 0) {
      shortened_channels_.push_back({measure->name(), static_cast<u32>(values.size()), missing});
    }
    if (values.empty()) continue;
    auto channel = std::make_unique<CParsedChannel>(measure->name(), GetFileStore(), GetMantieniCostanti());
    if (!channel->IsStoreValido()) return false;
    channel->SetUnita(std::wstring_view(measure->unit_text()));
    if (session.tables.is_derived(measure->index())) channel->mark_derived();
    CParsedChannel* store = channel.get();
    channels_.push_back(std::move(channel));
    const u64 step = measure->period_ms() * kMicrosecondsPerMs;
    if (!store->AddValori(0, step, static_cast<u32>(values.size()), values.data())) return false;
    if (!store->ChiudiStore()) return false;
  }
  return flush_store();
}

void CParserWMP::copy_laps(const WmpSession& session) {
  for (const WmpLapRecord& record : session.tables.laps) {
    SRkLap* lap = GetGiro(record.run(), record.number());
    if (lap == nullptr) continue;
    const u32 duration_ms = record.true_time_ms() != 0 ? record.true_time_ms() : record.time_ms();
    lap->start = record.start_ms() * kMicrosecondsPerMs;
    lap->end = (u64{record.start_ms()} + record.time_ms()) * kMicrosecondsPerMs;
    lap->duration = duration_ms * kMicrosecondsPerMs;
    lap->marker_time = lap->end;
    lap->session_byte = static_cast<u8>(record.run() & 0xFF);
    lap->split_byte = 0;
    lap->lap_number = static_cast<u16>(record.number());
    lap->kind[0] = 7;
    lap->kind[1] = 2;
    lap->counts = record.counts_for_best();
  }
}

void CParserWMP::copy_texts(const WmpSession& session) {
  const WmpTables& tables = session.tables;
  SetNomePilota(tables.names.racer());
  SetNomeVeicolo(tables.names.vehicle());
  SetNomeCampionato(tables.extended_names.championship());
  SetNomeTracciato(tables.names.track());
  // Code 0 is a type too, but not of a file that was refused.
  SetNomeTipoVenue(tables.version == nullptr ? std::string() : venue_type_text(tables.extended_names.venue_type()));
}

void CParserWMP::enter_ident(const WmpSession& session) {
  const SIdentRecord ident = make_ident(session);
  main_idents_[ident.device_id()] = {ident};
}

}  // namespace traguardo
