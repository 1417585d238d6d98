// SPDX-License-Identifier: MIT
// The base of all readers: it owns what a file yields and answers for it.
#pragma once

#include <utility>

#include "gps/gps_samples.h"
#include "model/rk_parser.h"
#include "model/store_file.h"
#include "support/platform/platform.h"

namespace traguardo {

// Why ParsaFile gave false.
enum class ParseFailure {
  kContent,  // no session in the file
  kReading,  // the file could not be read to its end
  kStore,    // no room or no place for the samples
  kMemory,
};

class CParser : public IRkParser {
 public:
  explicit CParser(std::wstring path) : path_(std::move(path)) {}
  CParser(const std::wstring& folder, const std::wstring& name) : path_(platform::path_in_folder(folder, name)) {}
  CParser(const CParser&) = delete;
  CParser& operator=(const CParser&) = delete;
  // Traces go first, then channels, laps and sessions.
  ~CParser() override;

  void SetTestoLibero(const std::string& text) override { free_text_ = text; }
  const std::string& GetTestoLibero() const override { return free_text_; }
  const ChannelList& GetCanali() const override { return channels_; }
  const SessionMap& GetSessioni() override;
  const std::string& GetNomeVeicolo() const override { return text_of_session(&SRkSession::vehicle); }
  const std::string& GetNomeTracciato() const override { return text_of_session(&SRkSession::track); }
  const std::string& GetNomePilota() const override { return text_of_session(&SRkSession::racer); }
  const std::string& GetNomeCampionato() const override { return text_of_session(&SRkSession::championship); }
  const std::string& GetNomeTipoVenue() const override { return text_of_session(&SRkSession::venue_type); }
  const IdentMap& GetMainIdents() const override { return main_idents_; }
  const IdentMap& GetNetIdents() const override { return net_idents_; }
  const std::tm* GetDataOra() const override {
    return current_session_ != nullptr ? &current_session_->date_and_time : &date_and_time_;
  }
  const std::wstring& GetNomeFile() const override { return path_; }
  IRkGpsTrace* GetTracciaGpsMigliore() const override { return GetTracciaGpsMigliore(nullptr); }
  IRkGpsTrace* GetTracciaGps(const std::string& name) const override;
  void GetNomiTracceGps(std::set<std::string>* names) const override;
  void GetFileTemporanei(std::list<std::wstring>* files) const override;

  // Setters work on the current session and make it on first use, so a reader calls them in any order, also before the
  // first lap.
  virtual void SetNomeVeicolo(const std::string& text) { set_text(&SRkSession::vehicle, text); }
  virtual void SetNomeTracciato(const std::string& text) { set_text(&SRkSession::track, text); }
  // Null while there is no session.
  virtual const u8* GetRecordTracciato() const;
  // `record` has kTrackRecordSize bytes.
  virtual void SetRecordTracciato(const u8* record);
  virtual void SetNomePilota(const std::string& text) { set_text(&SRkSession::racer, text); }
  virtual void SetNomeCampionato(const std::string& text) { set_text(&SRkSession::championship, text); }
  virtual void SetNomeTipoVenue(const std::string& text) { set_text(&SRkSession::venue_type, text); }
  virtual const std::string& GetModoGara() const { return text_of_session(&SRkSession::race_mode); }
  virtual void SetModoGara(const std::string& text) { set_text(&SRkSession::race_mode, text); }
  virtual const std::string& GetTestoPrfd() const { return text_of_session(&SRkSession::prfd_text); }
  virtual void SetTestoPrfd(const std::string& text) { set_text(&SRkSession::prfd_text, text); }
  virtual const std::string& GetTipoTracciato() const { return text_of_session(&SRkSession::track_type); }
  virtual void SetTipoTracciato(const std::string& text) { set_text(&SRkSession::track_type, text); }
  // Gives the new size of the list.
  virtual std::size_t AddFileTemporaneo(const std::wstring& path);
  // Time limits of all channels, traces and laps in microseconds (all ones and 0 with nothing in the reader), GPS week
  // and time of week (ms) of the latest last record, largest sample period.
  virtual void GetLimitiTemporali(u64* first, u64* last, i16* week, u32* time_of_week, u64* period);

  // The lap of that session and number; makes what is missing.
  SRkLap* GetGiro(i32 session, i32 lap);
  // The trace of that name; makes it if it is missing.
  CGPSSamples* GetOCreaTracciaGps(const std::string& name);
  void SetDataOra(const std::tm& when);
  void RimuoviTracceVuote();
  // The first lap starts at the file's first time, every other where the one before it ended.
  void RicalcolaInizioGiri();
  // Moves everything by to - from, modulo 2^64; the lap visited last gets `end` as its end.
  void TraslaTempi(u64 from, u64 to, u64 end);
  void RiallineaGps(u32 reference, u16 week, u32 time_of_week);
  // As the virtual one, with the trace's name; name may be null.
  IRkGpsTrace* GetTracciaGpsMigliore(std::string* name) const;

  void SetMantieniCostanti(bool keep_constant) { keep_constant_ = keep_constant; }
  bool GetMantieniCostanti() const { return keep_constant_; }

  // What this reader's samples go to; made on first use.
  StoreFile* GetFileStore();
  // Behind the last sample. False if some of them could not be written.
  bool flush_store() { return store_file_ == nullptr || store_file_->flush(); }
  ParseFailure failure() const {
    return store_file_ != nullptr && store_file_->has_failed() ? ParseFailure::kStore : failure_;
  }

 protected:
  const std::map<std::string, std::unique_ptr<CGPSSamples>>& traces() const { return traces_; }
  SRkSession* current_session() const { return current_session_; }
  SessionMap& sessions() { return sessions_; }

  void set_failure(ParseFailure failure) { failure_ = failure; }

  // Latitude and longitude of the track's reference position, each an i32 in 1e-7 degree; zero without one.
  i32 track_reference_[2] = {0, 0};
  ChannelList channels_;
  IdentMap main_idents_;
  IdentMap net_idents_;
  std::vector<std::pair<std::string, std::string>> ecu_info_;  // manufacturer, model

 private:
  const std::string& text_of_session(std::string SRkSession::*field) const;
  void set_text(std::string SRkSession::*field, const std::string& text);
  SRkSession* make_current_session();

  ParseFailure failure_ = ParseFailure::kContent;
  std::unique_ptr<StoreFile> store_file_;
  std::map<std::string, std::unique_ptr<CGPSSamples>> traces_;
  std::tm date_and_time_{};
  std::wstring path_;
  std::string free_text_;
  bool keep_constant_ = true;
  SessionMap sessions_;
  // The session that setters and getters work on. It stands outside the map until the first lap is added.
  SRkSession* current_session_ = nullptr;
  std::unique_ptr<SRkSession> session_outside_map_;
  std::list<std::wstring> temporary_files_;
};

}  // namespace traguardo
