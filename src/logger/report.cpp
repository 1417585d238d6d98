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

void CParserZep_2Gv4::write_report(const std::wstring& path) {
  ParseReport(this, path).Write();
}

void ParseReport::Write() {
  const LoggerReportOptions& options = reader_.options();
  if (!options.any()) return;
  Idents();
  Tables();
  chunk_streams();
  ecu_information();
  user_information();
  track_information();
  if (options.measure_statistics) {
    channel_rates();
    frame_errors();
  }
  if (options.lap_statistics) Laps();
  if (options.gps_statistics) {
    for (const auto& [name, trace] : reader_.traces()) gps_statistics(trace->statistics());
  }
  if (options.gps_samples) {
    const MarkTimes marks(reader_.lap_statistics().mark_times_ms);
    for (const auto& [name, trace] : reader_.traces()) gps_listing(trace->records(), marks);
  }
  spill();
}

// --- Who and with what -----------------------------------------------------------------------------------------------

void ParseReport::Idents() {
  idents_of(reader_.GetMainIdents(), "MAIN ident");
  idents_of(reader_.GetNetIdents(), "NET ident");
}

void ParseReport::idents_of(const IdentMap& idents, std::string_view first_label) {
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
  text_.line_end();
  if (name.empty()) {
    text_.Text(label).line_end().Text("Bad ident or unrecognized device");
    return;
  }
  if (!label.empty()) text_.Text(label).line_end();
  text_.Text(narrow_low_bytes(name));
  if (record.device_id() != 0) text_.Text(" -> ID ").Number(record.device_id());
  text_.line_end();
  Version("firmware ", record.firmware_version());
  Version("recovery ", record.recovery_version());
  Version("hardware ", record.hardware_version());
  spill_when_large();
}

void ParseReport::Version(std::string_view label, const u8* version) {
  if (load_u32(version) == 0) return;
  text_.Text(label).Number(version[0]).Text(".").Digits(version[1], 2).Text(".").Digits(version[2], 2).line_end();
}

// --- Tables ----------------------------------------------------------------------------------------------------------

void ParseReport::Tables() {
  if (!reader_.table().channels().empty()) {
    title("S Channels");
    for (const auto& channel : reader_.table().channels()) {
      if (channel != nullptr) channel_row(channel->record().id(), *channel);
    }
  }
  descriptor_section("AcquisDescs", reader_.table().acquisitions().descriptors());
  descriptor_section("Groups", reader_.table().groups().descriptors());
}

void ParseReport::descriptor_section(std::string_view heading,
                                     const std::map<u16, std::unique_ptr<ChannelDescriptor>>& table) {
  if (table.empty()) return;
  title(heading);
  for (const auto& [index, descriptor] : table) {
    for (const ChannelDescriptor::Place& place : descriptor->known_places()) {
      const CCanaleQLT* channel = reader_.table().channel_at(place.channel);
      if (channel != nullptr) channel_row(index, *channel);
    }
  }
}

void ParseReport::channel_row(u16 key, const CCanaleQLT& channel) {
  const ChannelRecord& record = channel.record();
  text_.Text("idx ").Number(key, 3).Text(" / ");
  text_.Text("id ").Number(record.id(), 3).Text(" / ");
  text_.Text("device_code ").Number(record.device_code(), 5).Text(" / ");
  text_.padded(channel_type_name(static_cast<i32>(record.channel_type())), kTypeWidth);
  text_.Text("id_in_device ").Number(record.id_in_device(), 5).Text(" / ");
  text_.Text("device_serial ").Number(record.device_serial(), 10).Text(" / ");
  text_.Text("fp_code ").Number(record.fp_code(), 10).Text(" / ");
  text_.padded(record.name(), kNameWidth).Text(" / ");
  text_.Text("fmt   ").padded(sample_format_name(record.format()), kNameWidth);
  text_.Text("raw   ").padded(sample_format_name(record.raw_format()), kNameWidth).line_end();
  spill_when_large();
}

void ParseReport::chunk_streams() {
  constexpr std::string_view kLetters = "SMGA";  // by kind
  constexpr u32 kKeysPerKind = 65535;
  if (reader_.assemblers().empty()) return;
  title("CAN Msgs");
  for (const auto& [key, assembler] : reader_.assemblers()) {
    const u32 kind = key / kKeysPerKind;
    text_.Text(kind < kLetters.size() ? kLetters.substr(kind, 1) : "?");
    text_.Text(" idx ").Number(key % kKeysPerKind).line_end();
    text_.error_line("   Err m_err_dim_trama           ", assembler.m_err_dim_trama.elements());
    text_.error_line("   Err m_err_lun_residua         ", assembler.m_err_lun_residua.elements());
    text_.error_line("   Err m_err_parentesi           ", assembler.m_err_parentesi.elements());
    text_.error_line("   Err m_err_frame_n_gia_presente", assembler.m_err_frame_n_gia_presente.elements());
    text_.error_line("   Err m_err_highest_frame       ", assembler.m_err_highest_frame.elements());
    text_.error_line("   Err m_err_riscostruisci_ich   ", assembler.m_err_riscostruisci_ich);
    text_.error_line("   Err m_err_riscostruisci_ptr   ", assembler.m_err_riscostruisci_ptr.elements());
    text_.error_line("   Err m_err_interpreta          ", assembler.m_err_interpreta.elements());
    spill_when_large();
  }
}

// --- What the header tags said ---------------------------------------------------------------------------------------

void ParseReport::ecu_information() {
  title("ECU information");
  u32 number = 0;
  for (const auto& [manufacturer, model] : reader_.ecu_info()) {
    text_.Text("ECU ").Number(++number).line_end();
    Line("manufacturer ", received(manufacturer));
    Line("model        ", received(model));
    spill_when_large();
  }
}

void ParseReport::user_information() {
  title("User information");
  Line("Racer:        ", reader_.GetNomePilota());
  Line("Vehicle:      ", reader_.GetNomeVeicolo());
  Line("Championship: ", reader_.GetNomeCampionato());
  Line("Venue type:   ", reader_.GetNomeTipoVenue());
  Line("Race Mode:    ", reader_.GetModoGara());
}

void ParseReport::track_information() {
  title("Track information");
  Line("Track name: ", reader_.GetNomeTracciato());
  Line("Track type: ", reader_.GetTipoTracciato());
  if (reader_.has_track_record()) track_record();
}

void ParseReport::track_record() {
  constexpr std::size_t kId = 32;
  constexpr std::size_t kPositions = 36;
  constexpr std::size_t kPositionCount = 6;
  constexpr std::size_t kGuid = 88;
  const u8* record = reader_.GetRecordTracciato();
  text_.Text("id   ").Number(load_u32(record + kId)).line_end();
  text_.Text("guid ").Number(load_u64(record + kGuid)).line_end();
  for (std::size_t i = 0; i < kPositionCount; ++i) {
    const i32 latitude = load_i32(record + kPositions + 8 * i);
    const i32 longitude = load_i32(record + kPositions + 8 * i + 4);
    if (latitude == 0 && longitude == 0) continue;
    text_.Text("lat: ").real(latitude * kDegreesPerUnit).Text(" lon: ").real(longitude * kDegreesPerUnit).line_end();
  }
}

// --- Samples and frames ----------------------------------------------------------------------------------------------

void ParseReport::channel_rates() {
  text_.line_end();
  float total = 0.0F;
  for (const auto& channel : reader_.table().channels()) {
    if (channel == nullptr) continue;
    const std::string name_in_file = channel->record().name();
    text_.padded(name_in_file, kNameWidth);
    if (channel->channel() == nullptr) {
      text_.Text("Not parsed here               ");
    } else {
      const std::string& name = channel->channel()->GetNome();
      text_.padded(name == name_in_file ? "" : "-> " + name, kNameWidth);
      const float rate = rate_of(channel->record().period_us());
      text_.real(rate, 4).Text(" Hz ");
      total += rate;
    }
    if (channel->statistics() != nullptr) channel_counters(*channel->statistics());
    text_.line_end();
    spill_when_large();
  }
  text_.line_end().Text("Tot Hz: ").Number(truncate_to<i64>(total));
}

void ParseReport::channel_counters(const SStatMisura& statistics) {
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
  if (ok != 0) text_.Text(" N ok tot ").Number(ok, 10).percentage(ok, total);
  for (const auto& kind : kinds) {
    if (kind.count != 0) text_.Text(kind.label).Number(kind.count).percentage(kind.count, total);
  }
  if (bad == 0) return;
  text_.line_end();
  text_.Text("                                                N err tot ").Number(bad).percentage(bad, total);
  text_.Text("   N err CLK ").Number(bad).percentage(bad, total);
  offset_line(statistics.bad_offsets);
}

void ParseReport::frame_errors() {
  const ErrorList* const frame_lists[] = {&reader_.errors_in_s(), &reader_.errors_in_m(), &reader_.errors_in_a(),
                                          &reader_.errors_in_g(), &reader_.errors_in_c()};
  if (std::all_of(std::begin(frame_lists), std::end(frame_lists),
                  [](const ErrorList* list) { return list->empty(); })) {
    return;
  }
  text_.line_end().line_end();
  text_.error_line("N generic err S", reader_.errors_in_s().elements());
  text_.error_line("N generic err M", reader_.errors_in_m().elements());
  text_.error_line("N generic err A", reader_.errors_in_a().elements());
  text_.error_line("N generic err G", reader_.errors_in_g().elements());
  text_.error_line("N generic err C", reader_.errors_in_c().elements());
  text_.error_line("N in file err", reader_.errors_in_file().elements());
}

// --- Laps and GPS ----------------------------------------------------------------------------------------------------

void ParseReport::Laps() {
  const SStatLap& laps = reader_.lap_statistics();
  const u64 total = u64{laps.lines.size()} + laps.bad_size_offsets.size() + laps.bad_allocs;
  text_.line_end().line_end();
  if (total == 0) return;
  title("Laps in data stream");
  count_line("N lap                ", laps.lines.size(), total);
  for (const std::string& line : laps.lines) {
    text_.Text(line).line_end();
    spill_when_large();
  }
  count_line("N err bad length     ", laps.bad_size_offsets.size(), total);
  if (!laps.bad_size_offsets.empty()) offset_line(laps.bad_size_offsets);
  count_line("N err repeat lap num ", laps.repeated_laps, total);
  count_line("N err repeat split num ", laps.repeated_splits, total);
  if (laps.bad_allocs != 0) count_line("N bad alloc ", laps.bad_allocs, total);
}

void ParseReport::gps_statistics(const SStatGPS& statistics) {
  u64 bad_fixes = 0;
  for (const auto& [fix, count] : statistics.bad_fixes) bad_fixes += count;
  const u64 total =
      u64{statistics.good_records} + statistics.clock_errors.size() + bad_fixes + statistics.wrong_sizes.size();
  if (total == 0) return;
  title("GPS samples in normal data stream");
  count_line("N ok             ", statistics.good_records, total);
  count_line("N err clock      ", statistics.clock_errors.size(), total);
  for (const SGpsClockError& error : statistics.clock_errors) {
    text_.Text("                                 mclk ").Number(error.logger_time_ms);
    text_.Text(" timeOK ").real(error.highest_time_ms).Offset(error.file_offset).line_end();
    spill_when_large();
  }
  count_line("N err fix        ", bad_fixes, total);
  for (const auto& [fix, count] : statistics.bad_fixes) {
    text_.Text("                                 fix ").Number(fix).Text(" N err ");
    text_.Number(count).percentage(count, total).line_end();
  }
  count_line("N err bad length ", statistics.wrong_sizes.size(), total);
  if (!statistics.wrong_sizes.empty()) offset_line(statistics.wrong_sizes);
  text_.Text("N reset          ").Number(statistics.resets).line_end();
}

void ParseReport::gps_listing(const std::vector<SGpsRecord>& records, const MarkTimes& marks) {
  if (records.empty()) return;
  title("GPS samples");
  const std::string stars(97, '*');
  u32 mark_number = 0;
  SGpsRecord before;
  for (const SGpsRecord& record : records) {
    const std::optional<u32> mark = marks.first_in(before.logger_time_ms(), record.logger_time_ms());
    if (mark.has_value()) {
      text_.Number(++mark_number).Text(" ").Number(*mark).Text(" ").Text(stars).Text(" ").line_end();
    }
    gps_line(record, before);
    before = record;
    spill_when_large();
  }
}

// A line of one record. Differences are to the record before it, modulo 2^32.
void ParseReport::gps_line(const SGpsRecord& record, const SGpsRecord& before) {
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
  text_.Text(" dist ").real(distance);

  const double vx = record.velocity_x_cm_s();
  const double vy = record.velocity_y_cm_s();
  const double vz = record.velocity_z_cm_s();
  text_.Text(" speed ").real(std::sqrt(vx * vx + vy * vy + vz * vz) * kMetresPerCentimetre).line_end();
}

// --- Onto the disk ---------------------------------------------------------------------------------------------------

template <typename Offset>
void ParseReport::offset_line(const std::vector<Offset>& offsets) {
  for (const Offset offset : offsets) {
    text_.listed_offset(offset);
    spill_when_large();
  }
  text_.line_end();
}

void ParseReport::spill_when_large() {
  if (text_.size() >= kLargePiece) spill();
}

void ParseReport::spill() {
  if (!is_begun_) is_writable_ = platform::write_whole_file(path_, {});
  is_begun_ = true;
  if (is_writable_) is_writable_ = platform::append_text(path_, text_.text());
  text_.Clear();
}

}  // namespace traguardo
