// SPDX-License-Identifier: MIT
// Several readers, one behind the other on one time axis, seen as one file. The exported interface gives it one reader,
// so that the file starts at 0 and its sessions count from 1.
#pragma once

#include <ctime>
#include <list>
#include <map>
#include <memory>
#include <string>

#include "model/parser.h"
#include "model/super_channel.h"

namespace traguardo {

class CSuperParser {
 public:
  virtual ~CSuperParser() = default;

  // Takes the readers in key order, moves each to its place on the axis and wraps their channels; once per view.
  // Readers stay their owner's and must outlive every question but the destructor. False with no usable reader.
  virtual bool AggiungiParser(const std::map<double, IRkParser*>& readers);
  // The first reader's text that is not empty, in key order. Setters reach every reader.
  virtual const std::string& GetNomeVeicolo() const { return first_text(&CParser::GetNomeVeicolo); }
  virtual void SetNomeVeicolo(const std::string& text) { set_all(&CParser::SetNomeVeicolo, text); }
  virtual const std::string& GetNomeTracciato() const { return first_text(&CParser::GetNomeTracciato); }
  virtual void SetNomeTracciato(const std::string& text) { set_all(&CParser::SetNomeTracciato, text); }
  virtual const std::string& GetNomePilota() const { return first_text(&CParser::GetNomePilota); }
  virtual void SetNomePilota(const std::string& text) { set_all(&CParser::SetNomePilota, text); }
  virtual const std::string& GetNomeCampionato() const { return first_text(&CParser::GetNomeCampionato); }
  virtual void SetNomeCampionato(const std::string& text) { set_all(&CParser::SetNomeCampionato, text); }
  virtual const std::string& GetNomeTipoVenue() const { return first_text(&CParser::GetNomeTipoVenue); }
  virtual void SetNomeTipoVenue(const std::string& text) { set_all(&CParser::SetNomeTipoVenue, text); }
  virtual const std::string& GetModoGara() const { return first_text(&CParser::GetModoGara); }
  virtual void SetModoGara(const std::string& text) { set_all(&CParser::SetModoGara, text); }
  virtual const std::string& GetTestoPrfd() const { return first_text(&CParser::GetTestoPrfd); }
  virtual void SetTestoPrfd(const std::string& text) { set_all(&CParser::SetTestoPrfd, text); }
  virtual const std::string& GetTipoTracciato() const { return first_text(&CParser::GetTipoTracciato); }
  virtual void SetTipoTracciato(const std::string& text) { set_all(&CParser::SetTipoTracciato, text); }

  const std::vector<std::unique_ptr<CSuperChannel>>& GetCanali() const { return channels_; }
  // Sessions by the view's own numbers from 1, their statistics brought up to date.
  const std::map<i32, SRkSession*>& GetSessioni();
  IRkGpsTrace* GetTracciaGpsMigliore(std::string* name) const;
  const std::tm* GetDataOra() const;

 private:
  struct Entry {
    u64 first_time = 0;
    u64 offset = 0;
    u64 length = 0;
    u16 gps_week = 0;
    u32 gps_time_of_week = 0;
    CParser* reader = nullptr;
  };

  void lay_out();
  void move_readers();
  void take_channels(const Entry& entry, u64 axis_from, u64 axis_to);
  const std::string& first_text(const std::string& (CParser::*getter)() const) const;
  void set_all(void (CParser::*setter)(const std::string&), const std::string& text);

  std::tm date_and_time_{};
  std::map<double, Entry> entries_;
  std::vector<std::unique_ptr<CSuperChannel>> channels_;
  std::map<std::string, CSuperChannel*> channels_by_name_;
  std::map<i32, SRkSession*> sessions_;
};

}  // namespace traguardo
