// SPDX-License-Identifier: MIT
#include "logger/report.h"

#include <algorithm>
#include <cmath>

#include "geodesy/geodesy.h"
#include "geodesy/haversine.h"
#include "logger/logger_parser.h"
#include "support/device_names.h"
#include "support/platform/platform.h"
#include "units/sample_formats.h"

namespace traguardo {

namespace {

constexpr std::size_t kLargePiece = 1U << 20;
constexpr std::size_t kNameWidth = 30;
constexpr std::size_t kTypeWidth = 21;
constexpr double kDegreesPerUnit = 1e-7;  // of the positions in a track record
// Held to single precision, and printed from there.
constexpr double kMetresPerCentimetre = 0.01F;

std::string_view received(std::string_view text) {
  return text.empty() ? "not received" : text;
}

float rate_of(u32 period_us) {
  return period_us == 0 ? 0.0F : 1'000'000.0F / static_cast<float>(period_us);
}

// Whether the logger's clock and the receiver's went on by the same time, in ms.
std::string_view drift_mark(i32 difference) {
  if (difference < -2) return " --";
  return difference >= 3 ? " ++" : " ==";
}

}  // namespace

void CParserZep_2Gv4::WriteReport(const std::wstring& path) {
  ParseReport(this, path).Write();
}

void ParseReport::Write() {
  const LoggerReportOptions& options = reader_.options();
  if (!options.any()) return;
  Idents();
  Tables();
  ChunkStreams();
  EcuInformation();
  UserInformation();
  TrackInformation();
  if (options.measure_statistics) {
    ChannelRates();
    FrameErrors();
  }
  if (options.lap_statistics) Laps();
  if (options.gps_statistics) {
    for (const auto& [name, trace] : reader_.traces()) GpsStatistics(trace->statistics());
  }
  if (options.gps_samples) {
    const MarkTimes marks(reader_.lap_statistics().mark_times_ms);
    for (const auto& [name, trace] : reader_.traces()) GpsListing(trace->records(), marks);
  }
  Spill();
}

// --- Who and with what -----------------------------------------------------------------------------------------------

void ParseReport::Idents() {
  IdentsOf(reader_.GetMainIdents(), "MAIN ident");
  IdentsOf(reader_.GetNetIdents(), "NET ident");
}

void ParseReport::IdentsOf(const IdentMap& idents, std::string_view first_label) {
  std::string_view label = first_label;
  for (const auto& [device_id, records] : idents) {
    for (const SIdentRecord& record : records) {
      Ident(record, label);
      // It belongs to the first ident, also where that one is no device and shows nothing.
      label = {};
    }
  }
}

void ParseReport::Ident(const SIdentRecord& record, std::string_view label) {
  if (record.device_code() == 0) return;
  const std::wstring name = INomiDevices::GetNomeStrumento(record.device_code());
  text_.LineEnd();
  if (name.empty()) {
    text_.Text(label).LineEnd().Text("Bad ident or unrecognized device");
    return;
  }
  if (!label.empty()) text_.Text(label).LineEnd();
  text_.Text(narrow_low_bytes(name));
  if (record.device_id() != 0) text_.Text(" -> ID ").Number(record.device_id());
  text_.LineEnd();
  Version("firmware ", record.firmware_version());
  Version("recovery ", record.recovery_version());
  Version("hardware ", record.hardware_version());
  SpillWhenLarge();
}

void ParseReport::Version(std::string_view label, const u8* version) {
  if (load_u32(version) == 0) return;
  text_.Text(label).Number(version[0]).Text(".").Digits(version[1], 2).Text(".").Digits(version[2], 2).LineEnd();
}

// --- Tables ----------------------------------------------------------------------------------------------------------

void ParseReport::Tables() {
  if (!reader_.table().channels().empty()) {
    Title("S Channels");
    for (const auto& channel : reader_.table().channels()) {
      if (channel != nullptr) ChannelRow(channel->record().id(), *channel);
    }
  }
  DescriptorSection("AcquisDescs", reader_.table().acquisitions().descriptors());
  DescriptorSection("Groups", reader_.table().groups().descriptors());
}

void ParseReport::DescriptorSection(std::string_view title,
                                    const std::map<u16, std::unique_ptr<ChannelDescriptor>>& table) {
  if (table.empty()) return;
  Title(title);
  for (const auto& [index, descriptor] : table) {
    for (const ChannelDescriptor::Place& place : descriptor->known_places()) {
      const CCanaleQLT* channel = reader_.table().ChannelAt(place.channel);
      if (channel != nullptr) ChannelRow(index, *channel);
    }
  }
}

void ParseReport::ChannelRow(u16 key, const CCanaleQLT& channel) {
  const ChannelRecord& record = channel.record();
  text_.Text("idx ").Number(key, 3).Text(" / ");
  text_.Text("id ").Number(record.id(), 3).Text(" / ");
  text_.Text("device_code ").Number(record.device_code(), 5).Text(" / ");
  text_.Padded(channel_type_name(static_cast<i32>(record.channel_type())), kTypeWidth);
  text_.Text("id_in_device ").Number(record.id_in_device(), 5).Text(" / ");
  text_.Text("device_serial ").Number(record.device_serial(), 10).Text(" / ");
  text_.Text("fp_code ").Number(record.fp_code(), 10).Text(" / ");
  text_.Padded(record.name(), kNameWidth).Text(" / ");
  text_.Text("fmt   ").Padded(sample_format_name(record.format()), kNameWidth);
  text_.Text("raw   ").Padded(sample_format_name(record.raw_format()), kNameWidth).LineEnd();
  SpillWhenLarge();
}

void ParseReport::ChunkStreams() {
  constexpr std::string_view kLetters = "SMGA";  // by kind
  constexpr u32 kKeysPerKind = 65535;
  if (reader_.assemblers().empty()) return;
  Title("CAN Msgs");
  for (const auto& [key, assembler] : reader_.assemblers()) {
    const u32 kind = key / kKeysPerKind;
    text_.Text(kind < kLetters.size() ? kLetters.substr(kind, 1) : "?");
    text_.Text(" idx ").Number(key % kKeysPerKind).LineEnd();
    text_.ErrorLine("   Err m_err_dim_trama           ", assembler.m_err_dim_trama.elements());
    text_.ErrorLine("   Err m_err_lun_residua         ", assembler.m_err_lun_residua.elements());
    text_.ErrorLine("   Err m_err_parentesi           ", assembler.m_err_parentesi.elements());
    text_.ErrorLine("   Err m_err_frame_n_gia_presente", assembler.m_err_frame_n_gia_presente.elements());
    text_.ErrorLine("   Err m_err_highest_frame       ", assembler.m_err_highest_frame.elements());
    text_.ErrorLine("   Err m_err_riscostruisci_ich   ", assembler.m_err_riscostruisci_ich);
    text_.ErrorLine("   Err m_err_riscostruisci_ptr   ", assembler.m_err_riscostruisci_ptr.elements());
    text_.ErrorLine("   Err m_err_interpreta          ", assembler.m_err_interpreta.elements());
    SpillWhenLarge();
  }
}

// --- What the header tags said ---------------------------------------------------------------------------------------

void ParseReport::EcuInformation() {
  Title("ECU information");
  u32 number = 0;
  for (const auto& [manufacturer, model] : reader_.ecu_info()) {
    text_.Text("ECU ").Number(++number).LineEnd();
    Line("manufacturer ", received(manufacturer));
    Line("model        ", received(model));
    SpillWhenLarge();
  }
}

void ParseReport::UserInformation() {
  Title("User information");
  Line("Racer:        ", reader_.GetNomePilota());
  Line("Vehicle:      ", reader_.GetNomeVeicolo());
  Line("Championship: ", reader_.GetNomeCampionato());
  Line("Venue type:   ", reader_.GetNomeTipoVenue());
  Line("Race Mode:    ", reader_.GetModoGara());
}

void ParseReport::TrackInformation() {
  Title("Track information");
  Line("Track name: ", reader_.GetNomeTracciato());
  Line("Track type: ", reader_.GetTipoTracciato());
  if (reader_.has_track_record()) TrackRecord();
}

void ParseReport::TrackRecord() {
  constexpr std::size_t kId = 32;
  constexpr std::size_t kPositions = 36;
  constexpr std::size_t kPositionCount = 6;
  constexpr std::size_t kGuid = 88;
  const u8* record = reader_.GetRecordTracciato();
  text_.Text("id   ").Number(load_u32(record + kId)).LineEnd();
  text_.Text("guid ").Number(load_u64(record + kGuid)).LineEnd();
  for (std::size_t i = 0; i < kPositionCount; ++i) {
    const i32 latitude = load_i32(record + kPositions + 8 * i);
    const i32 longitude = load_i32(record + kPositions + 8 * i + 4);
    if (latitude == 0 && longitude == 0) continue;
    text_.Text("lat: ").Real(latitude * kDegreesPerUnit).Text(" lon: ").Real(longitude * kDegreesPerUnit).LineEnd();
  }
}

// --- Samples and frames ----------------------------------------------------------------------------------------------

void ParseReport::ChannelRates() {
  text_.LineEnd();
  float total = 0.0F;
  for (const auto& channel : reader_.table().channels()) {
    if (channel == nullptr) continue;
    const std::string name_in_file = channel->record().name();
    text_.Padded(name_in_file, kNameWidth);
    if (channel->channel() == nullptr) {
      text_.Text("Not parsed here               ");
    } else {
      const std::string& name = channel->channel()->GetNome();
      text_.Padded(name == name_in_file ? "" : "-> " + name, kNameWidth);
      const float rate = rate_of(channel->record().period_us());
      text_.Real(rate, 4).Text(" Hz ");
      total += rate;
    }
    if (channel->statistics() != nullptr) ChannelCounters(*channel->statistics());
    text_.LineEnd();
    SpillWhenLarge();
  }
  text_.LineEnd().Text("Tot Hz: ").Number(truncate_to<i64>(total));
}

void ParseReport::ChannelCounters(const SStatMisura& statistics) {
  const struct {
    std::string_view label;
    u32 count;
  } kinds[] = {{" N ok S ", statistics.good_s},
               {" N ok M ", statistics.good_m},
               {" N ok A ", statistics.good_a},
               {" N ok G ", statistics.good_g}};
  u64 ok = 0;
  for (const auto& kind : kinds) ok += kind.count;
  const u64 bad = statistics.bad_offsets.size();
  const u64 total = ok + bad;
  if (ok != 0) text_.Text(" N ok tot ").Number(ok, 10).Percentage(ok, total);
  for (const auto& kind : kinds) {
    if (kind.count != 0) text_.Text(kind.label).Number(kind.count).Percentage(kind.count, total);
  }
  if (bad == 0) return;
  text_.LineEnd();
  text_.Text("                                                N err tot ").Number(bad).Percentage(bad, total);
  text_.Text("   N err CLK ").Number(bad).Percentage(bad, total);
  OffsetLine(statistics.bad_offsets);
}

void ParseReport::FrameErrors() {
  const ErrorList* const frame_lists[] = {&reader_.errors_in_s(), &reader_.errors_in_m(), &reader_.errors_in_a(),
                                          &reader_.errors_in_g(), &reader_.errors_in_c()};
  if (std::all_of(std::begin(frame_lists), std::end(frame_lists),
                  [](const ErrorList* list) { return list->empty(); })) {
    return;
  }
  text_.LineEnd().LineEnd();
  text_.ErrorLine("N generic err S", reader_.errors_in_s().elements());
  text_.ErrorLine("N generic err M", reader_.errors_in_m().elements());
  text_.ErrorLine("N generic err A", reader_.errors_in_a().elements());
  text_.ErrorLine("N generic err G", reader_.errors_in_g().elements());
  text_.ErrorLine("N generic err C", reader_.errors_in_c().elements());
  text_.ErrorLine("N in file err", reader_.errors_in_file().elements());
}

// --- Laps and GPS ----------------------------------------------------------------------------------------------------

void ParseReport::Laps() {
  const SStatLap& laps = reader_.lap_statistics();
  const u64 total = u64{laps.lines.size()} + laps.bad_size_offsets.size() + laps.bad_allocs;
  text_.LineEnd().LineEnd();
  if (total == 0) return;
  Title("Laps in data stream");
  CountLine("N lap                ", laps.lines.size(), total);
  for (const std::string& line : laps.lines) {
    text_.Text(line).LineEnd();
    SpillWhenLarge();
  }
  CountLine("N err bad length     ", laps.bad_size_offsets.size(), total);
  if (!laps.bad_size_offsets.empty()) OffsetLine(laps.bad_size_offsets);
  CountLine("N err repeat lap num ", laps.repeated_laps, total);
  CountLine("N err repeat split num ", laps.repeated_splits, total);
  if (laps.bad_allocs != 0) CountLine("N bad alloc ", laps.bad_allocs, total);
}

void ParseReport::GpsStatistics(const SStatGPS& statistics) {
  u64 bad_fixes = 0;
  for (const auto& [fix, count] : statistics.bad_fixes) bad_fixes += count;
  const u64 total =
      u64{statistics.good_records} + statistics.clock_errors.size() + bad_fixes + statistics.wrong_sizes.size();
  if (total == 0) return;
  Title("GPS samples in normal data stream");
  CountLine("N ok             ", statistics.good_records, total);
  CountLine("N err clock      ", statistics.clock_errors.size(), total);
  for (const SGpsClockError& error : statistics.clock_errors) {
    text_.Text("                                 mclk ").Number(error.logger_time_ms);
    text_.Text(" timeOK ").Real(error.highest_time_ms).Offset(error.file_offset).LineEnd();
    SpillWhenLarge();
  }
  CountLine("N err fix        ", bad_fixes, total);
  for (const auto& [fix, count] : statistics.bad_fixes) {
    text_.Text("                                 fix ").Number(fix).Text(" N err ");
    text_.Number(count).Percentage(count, total).LineEnd();
  }
  CountLine("N err bad length ", statistics.wrong_sizes.size(), total);
  if (!statistics.wrong_sizes.empty()) OffsetLine(statistics.wrong_sizes);
  text_.Text("N reset          ").Number(statistics.resets).LineEnd();
}

void ParseReport::GpsListing(const std::vector<SGpsRecord>& records, const MarkTimes& marks) {
  if (records.empty()) return;
  Title("GPS samples");
  const std::string stars(97, '*');
  u32 mark_number = 0;
  SGpsRecord before;
  for (const SGpsRecord& record : records) {
    const std::optional<u32> mark = marks.FirstIn(before.logger_time_ms(), record.logger_time_ms());
    if (mark.has_value()) {
      text_.Number(++mark_number).Text(" ").Number(*mark).Text(" ").Text(stars).Text(" ").LineEnd();
    }
    GpsLine(record, before);
    before = record;
    SpillWhenLarge();
  }
}

// A line of one record. Differences are to the record before it, modulo 2^32.
void ParseReport::GpsLine(const SGpsRecord& record, const SGpsRecord& before) {
  const u32 logger_step = record.logger_time_ms() - before.logger_time_ms();
  const u32 gps_step = record.time_of_week_ms() - before.time_of_week_ms();
  text_.Text(drift_mark(static_cast<i32>(logger_step - gps_step)));
  text_.Text(" mclk ").Number(record.logger_time_ms(), 10).Text(" [").Number(logger_step, 10).Text("]");
  text_.Text(" ITOW ").Number(record.time_of_week_ms(), 10).Text(" [").Number(gps_step, 10).Text("]");
  text_.Text(" week ").Number(record.week(), 5);
  text_.Text(record.fix_type() < SGpsRecord::kLowestGoodFix ? " NoFix " : " -FIX- ").Number(record.fix_type());
  text_.Text(" nSV ").Number(record.satellites(), 2);
  text_.Text(" Pacc ").Number(record.position_accuracy_cm(), 10);
  text_.Text(" Sacc ").Number(record.speed_accuracy_cm_s(), 6);
  text_.Text(" PDOP ").Number(record.position_dop(), 5);
  text_.Text(" ECEF ").Number(record.ecef_x_cm()).Text(",").Number(record.ecef_y_cm());
  text_.Text(",").Number(record.ecef_z_cm());

  const Geodetic place = geodetic_in_one_step(record.position_m());
  const double distance =
      Haversine().Distanza(reader_.track_reference()[0] * kDegreesPerUnit,
                           reader_.track_reference()[1] * kDegreesPerUnit, place.latitude_deg, place.longitude_deg);
  text_.Text(" dist ").Real(distance);

  const double vx = record.velocity_x_cm_s();
  const double vy = record.velocity_y_cm_s();
  const double vz = record.velocity_z_cm_s();
  text_.Text(" speed ").Real(std::sqrt(vx * vx + vy * vy + vz * vz) * kMetresPerCentimetre).LineEnd();
}

// --- Onto the disk ---------------------------------------------------------------------------------------------------

template <typename Offset>
void ParseReport::OffsetLine(const std::vector<Offset>& offsets) {
  for (const Offset offset : offsets) {
    text_.ListedOffset(offset);
    SpillWhenLarge();
  }
  text_.LineEnd();
}

void ParseReport::SpillWhenLarge() {
  if (text_.size() >= kLargePiece) Spill();
}

void ParseReport::Spill() {
  if (!is_begun_) is_writable_ = platform::write_whole_file(path_, {});
  is_begun_ = true;
  if (is_writable_) is_writable_ = platform::append_text(path_, text_.text());
  text_.Clear();
}

}  // namespace traguardo
