// One legacy session while it is read: the file, its tables, its raw words and the physical values made of them. Lives
// for one CParserWMP::ParsaFile.
//
// Cut by theme: open_file.cpp (ApriFile), version_*.cpp (one reader per layout), normalisation.cpp (counts, tables,
// laps, runs), channel_tables.cpp (rows, areas and spans), channel_conversion.cpp (raw words to values),
// derived_channels.cpp (channels without raw words, and what computes them), synthesised_channels.cpp (those that the
// reader adds), reference_speed.cpp (which speed distances are made of), distance_table.cpp (distance over time, lap
// rows), dump_rebuild.cpp (samples of version 500).
#pragma once

#include <ctime>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "legacy/file/records.h"
#include "legacy/file/wmp_file.h"
#include "legacy/file/wmp_layout_data.h"
#include "math/filters.h"
#include "support/bytes.h"

namespace traguardo {

class CGestMathChan;
class CSensori;
class CWMPMisura;
class IUserUnitOfMeasureManager;
class RegulationCalculator;
class RegulationView;
struct CalculationOptions;
struct SMathChannel;

// What a lap covers: times in ms, distances in the user's length unit (0 without a distance table).
struct WmpLapRow {
  u32 start_ms = 0;
  u32 length_ms = 0;
  float distance_at_start = 0.0F;
  float distance_covered = 0.0F;
};

class CWMP : public CFileWMP, public CFiltri {
 public:
  // All borrowed, for the life of the object. folder: the application's, without a trailing slash. mode: of the
  // regulation calculators, -1 off.
  CWMP(std::wstring folder, const CalculationOptions* options, CSensori* sensors, CGestMathChan* math, i32 mode);
  ~CWMP() override;
  CWMP(const CWMP&) = delete;
  CWMP& operator=(const CWMP&) = delete;

  // Reads the whole file and computes everything. tables_first: one run over the tables before the samples are read;
  // load_samples: false stops behind the header; raw_only: values are the raw words. False with a code of
  // wmp_messages() or wmp_dump_messages() in `error` if the file is refused; the tables are then empty. A file that
  // can't be read, and a session that the memory can't hold, throw.
  bool ApriFile(const std::wstring& path, bool tables_first, bool load_samples, bool raw_only, u32* error,
                const CalculationOptions* options, i32 mode);

  // --- What the file says
  // Of the tables as they stand: versions up to 320 become 451 while they are read.
  u16 file_version() const { return header_.version(); }
  const WmpMainHeader& header() const { return header_; }
  const WmpConfigurationBlock& configuration() const { return configuration_; }
  const WmpIdentityBlock& identity() const { return identity_; }
  const WmpNamesBlock& names() const { return names_; }
  const WmpExtendedNamesBlock& extended_names() const { return extended_names_; }
  const std::string& firmware_text() const { return firmware_text_; }
  const std::string& software_text() const { return software_text_; }
  // The five pairs and one more of the header's text; fields that it lacks stay 0, all are held to their ranges.
  std::tm date_and_time() const;
  bool changed() const { return changed_; }
  void mark_changed() { changed_ = true; }

  // --- Channels: logged ones first, then derived ones
  std::size_t channel_count() const { return channels_.size(); }
  std::size_t logged_count() const { return logged_count_; }
  bool is_derived(std::size_t index) const { return index >= logged_count_; }
  const WmpChannelRecord& channel(std::size_t index) const { return channels_[index]; }
  WmpChannelRecord& channel(std::size_t index) { return channels_[index]; }
  const WmpChannelExtension& extension(std::size_t index) const { return extensions_[index]; }
  WmpChannelExtension& extension(std::size_t index) { return extensions_[index]; }
  const WmpChannelStatistics& statistics(std::size_t index) const { return statistics_[index]; }
  WmpChannelStatistics& statistics(std::size_t index) { return statistics_[index]; }
  // Physical values: as many as the record's sample count says, or none before the samples are loaded.
  std::span<float> values(std::size_t index);
  std::span<const float> values(std::size_t index) const;
  // Raw words of a logged channel, exactly as many as it has values; none for a derived channel.
  std::span<const u16> raw_words(std::size_t index) const;
  // Function ids of the channel, 0 where the configuration block says that the file has none.
  u32 function_id(std::size_t index) const;
  u32 second_function_id(std::size_t index) const;
  const std::vector<std::unique_ptr<CWMPMisura>>& measures() const { return measures_; }
  // Another number after every change of the channel table; 0 before there is one.
  u64 names_version() const { return names_version_; }

  // --- Laps and runs
  std::span<const WmpLapRecord> laps() const { return laps_; }
  std::span<const WmpRun> runs() const { return runs_; }
  std::span<const WmpRunBestLaps> run_best_laps() const { return run_best_laps_; }
  // One per row of runs(), in its order; a run that no lap names has length 0.
  const std::vector<WmpRunSpan>& run_spans() const { return run_spans_; }
  std::span<const WmpLapRow> lap_rows() const { return lap_rows_; }

  // --- Speed and distance
  // -1 for none.
  i16 reference_speed() const { return header_.reference_speed(); }
  // Metres per second per display unit of speed.
  float speed_scale() const { return speed_scale_; }
  std::span<const float> distance_table() const { return distance_table_; }

  // --- Surroundings
  const std::wstring& application_folder() const { return application_folder_; }
  const std::wstring& file_path() const { return file_path_; }
  const std::wstring& file_folder() const { return file_folder_; }
  const std::wstring& file_name() const { return file_name_; }
  bool repairs() const { return repairs_; }
  bool all_converted() const { return all_converted_; }
  CSensori* sensors() const { return sensors_; }
  CGestMathChan* math_manager() const { return math_; }
  IUserUnitOfMeasureManager* units() const { return units_; }

  // --- Conversion (channel_conversion.cpp)
  // The whole chain of one channel, logged or derived: first step, flat runs, gain and offset, filters, invert, repair
  // passes, statistics. The result is that of the first step; a derived channel that can't be computed reads 0.0.
  bool ConvertiCanale(std::size_t index, bool raw_only);

  // --- Derived channels (derived_channels.cpp)
  // Fills channel `index` by the computation kind of its record. False, and a channel of 0.0, if that can't be done.
  // Kinds that are filled by another one keep what they hold.
  bool compute_derived_channel(std::size_t index);
  // Every enabled definition of the math manager becomes a channel.
  void enter_math_channels();
  // A new channel behind the last one; all derived channels are then computed, in table order. kind: 0 for a definition
  // of the math manager. False, with nothing changed, if the table can't take it.
  bool add_definition(const SMathChannel& definition, u16 kind);
  // REQUIRES: a derived channel.
  void update_channel(std::size_t index, const SMathChannel& definition);
  // False for a logged channel. Formulas that name the channel keep their values until they are computed again.
  bool delete_derived_channel(std::size_t index);
  // The first derived channel of that name, case apart; channel_count() for none.
  std::size_t find_derived_channel(std::string_view name) const;

  // --- Channels that the reader adds (synthesised_channels.cpp)
  // Makes sure that the table holds the channel of that kind; a missing input is a log line and no channel.
  void AssicuraPresenzaCanaleMatematico(u16 kind, bool compute_now);
  // The channels of the device, then those of the configuration files in the application folder, then the exporter.
  void assure_device_channels();

  // --- Reference speed (reference_speed.cpp)
  // 'Y' the reference moves, 'd' one other candidate, 'D' several, 'G' the GPS speed was chosen, 'N' none. select: the
  // candidate becomes the reference.
  char find_reference_speed(bool select);
  bool positions_are_accurate() const;
  // False, with the old reference in its place, for a channel that isn't a speed or doesn't move far enough.
  bool set_reference_speed(i32 index);

  // --- Distance (distance_table.cpp)
  // From the reference speed; false, and no table, without one that moves. Makes the lap rows too.
  bool rebuild_distance_table();
  void build_lap_rows();
  // Interpolated; 0 without a table.
  float distance_at(u32 time_ms) const;

  // --- Rows of the channel table (channel_tables.cpp)
  // A derived channel behind the last one, with its statistics and a zeroed value area; counts and file length follow.
  // The record's sample count is set from its rate. False, with nothing changed, if the file's sample areas are empty
  // or the table is full.
  bool append_channel(const WmpChannelRecord& record, const WmpChannelExtension& extension);
  // REQUIRES: a derived channel.
  void remove_channel(std::size_t index);
  // Period and frequency, sample count and value area of a derived channel whose rate index has changed; its values are
  // zero afterwards.
  void resize_derived_channel(std::size_t index);
  // Period and frequency of the statistics row, from the rate index of the record.
  void update_rate(std::size_t index);
  // The measure list, made anew over the table as it stands.
  void rebuild_measures();
  // Samples of a derived channel of that frequency, as the longest logged channel allows.
  u32 derived_sample_count(u32 frequency_hz) const;
  // How many samples a derived channel would have beyond those that it has, since their number isn't believed.
  u32 missing_samples(std::size_t index) const;
  void set_function_ids_present() { configuration_.set_has_function_ids(true); }

  // The length of the file as it would be written, into the header.
  void update_file_length();
  // From the first conversion on. They keep nothing of the channel table from call to call.
  RegulationCalculator* calculators() const { return calculators_.get(); }

  // --- Version readers
  // Each reads the whole file again from `path`. tables_only: no samples. False with a code in `error`.
  bool ReadWampFileVers320(const std::wstring& path, bool tables_only, u32* error);
  bool ReadWampFileVers400(const std::wstring& path, bool tables_only, u32* error);
  bool ReadWampFileVers500(const std::wstring& path, bool tables_only, u32* error);
  bool ReadWampFileVers550(const std::wstring& path, bool tables_only, u32* error);
  bool ReadWampFileVers600(const std::wstring& path, bool tables_only, u32* error);
  bool ReadWampFileVers700(const std::wstring& path, bool tables_only, u32* error);

 private:
  // --- Opening (open_file.cpp)
  void clear_all();
  void clear_tables();
  void copy_beside(const std::wstring& path) const;
  bool read_head(const std::wstring& path, u32* error);
  u32 head_error() const;
  bool run_version_reader(const std::wstring& path, bool tables_only, u32* error);
  bool refuse(u32 code, u32* error);
  void make_version_texts();
  void fix_unit_texts();
  void check_reference_speed();
  bool is_gps_speed(std::size_t index) const;
  void convert_everything(bool raw_only);
  void log_missing_samples() const;

  // --- What version readers share (version_*.cpp)
  bool reopen(const std::wstring& path, u32* error);
  bool fail_reading(u32 code, u32* error);
  void take_real_length();
  bool read_plain_head();
  bool read_channel_records();
  bool read_channel_pairs();
  bool read_laps();
  bool read_lap_pairs();
  bool drop_old_math_channels(std::size_t* dropped);
  bool read_tables_500(const std::wstring& path, u32* error);
  u64 aligned_areas_start() const;
  std::size_t stated_channels() const;
  std::size_t stated_laps() const;
  // Block form: one record, or two, under a head of their own. False if the file cuts the group short; `*sound` becomes
  // false where the checksum differs, and is left alone otherwise.
  template <typename First>
  bool read_group(First* first, bool* sound);
  template <typename First, typename Second>
  bool read_group(First* first, Second* second, bool* sound);
  bool read_blocks();
  bool read_channel_groups();
  bool read_lap_groups();
  bool read_run_groups();
  bool read_extra_groups();
  bool read_block_form(const std::wstring& path, bool tables_only, bool tells_log, u32* error);
  void log_laps() const;
  // Versions 100 to 320.
  void number_old_laps();
  void convert_old_channels(const std::vector<WmpOldChannelRecord>& old_channels);
  void convert_old_header();
  void recover_raw_words(std::span<const float> floats);

  // --- Samples (channel_tables.cpp)
  // Behind every reading of the channel table: as many rows in the parallel tables, and how many of them are logged.
  void shape_tables();
  // Zeroed values for all channels, and where each channel begins.
  void make_value_area();
  // Works run_spans() out; laps and runs don't change behind it.
  void measure_runs();
  // REQUIRES: make_value_area(). What the words read lack of the logged channels' counts reads as 0.
  void take_raw_area(std::vector<u16> words);
  u64 derived_budget_left() const;
  u64 added_sample_count(u32 frequency_hz) const;
  // Version 500 (dump_rebuild.cpp): the raw words of all logged channels, one channel behind the other, out of the
  // logger's dump, which runs from `offset` of the open file to its end and may be empty. False with a code of
  // wmp_dump_messages(), or 0, in `error`.
  bool rebuild_raw_words(u64 offset, std::vector<u16>* words, u32* error);

  // --- Normalisation (normalisation.cpp)
  void normalise_counts();
  void normalise_tables();
  void normalise_laps();
  void normalise_lap_times();
  void fill_true_lap_times();
  void chain_lap_starts();
  void normalise_run_numbers();
  void normalise_lap_numbers();
  bool agree_run_table();
  void find_best_laps();
  void limit_logged_counts();
  void set_derived_counts();
  u32 total_frequency(bool derived) const;
  u64 total_samples() const;

  // The file
  u16 version_ = 0;
  WmpMainHeader header_;
  WmpConfigurationBlock configuration_;
  WmpIdentityBlock identity_;
  WmpNamesBlock names_;
  WmpExtendedNamesBlock extended_names_;
  std::string firmware_text_;
  std::string software_text_;
  std::wstring application_folder_;
  std::wstring file_path_;
  std::wstring file_folder_;
  std::wstring file_name_;
  bool changed_ = false;

  // The tables; channels_, extensions_ and statistics_ are parallel, so are runs_ and run_best_laps_.
  std::vector<WmpChannelRecord> channels_;
  std::vector<WmpChannelExtension> extensions_;
  std::vector<WmpChannelStatistics> statistics_;
  std::size_t logged_count_ = 0;
  std::vector<WmpLapRecord> laps_;
  std::vector<WmpLapExtension> lap_extensions_;
  std::vector<WmpRun> runs_;
  std::vector<WmpRunBestLaps> run_best_laps_;
  std::vector<std::unique_ptr<CWMPMisura>> measures_;
  u64 names_version_ = 0;
  std::vector<WmpRunSpan> run_spans_;
  std::unique_ptr<RegulationView> regulation_view_;
  std::unique_ptr<RegulationCalculator> calculators_;  // sees this session through the view

  // The samples. first_sample_[i] is where channel i begins, in both areas.
  std::vector<u16> raw_area_;
  std::vector<float> value_area_;
  std::vector<std::size_t> first_sample_;
  // Words that the file can hold for the logged channels, whatever their records claim.
  u64 raw_capacity_ = 0;
  // The file length that the sizes of versions below 500 are worked out from.
  u64 stored_length_ = 0;
  // Versions 500 and 550: what the file holds of the logger's dump.
  u64 dump_bytes_ = 0;

  std::vector<float> distance_table_;
  std::vector<WmpLapRow> lap_rows_;
  float speed_scale_ = 0.0F;
  bool all_converted_ = false;
  bool repairs_ = true;

  const CalculationOptions* options_;
  CSensori* sensors_;
  CGestMathChan* math_;
  IUserUnitOfMeasureManager* units_;
  i32 mode_;
};

}  // namespace traguardo
