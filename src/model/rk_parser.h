// SPDX-License-Identifier: MIT
// model/ holds what every reader produces and every exported function asks: the reader base with its sessions, laps and
// splits, the file-backed channels, and the merged view on one time axis. It includes support, units and gps; the
// readers (logger, legacy) derive from CParser, and api asks the view.
#pragma once

#include <ctime>
#include <list>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "gps/gps_trace.h"
#include "model/progress.h"
#include "model/rk_channel.h"
#include "model/session_records.h"

namespace traguardo {

using ChannelList = std::list<std::unique_ptr<IRkChannel>>;
// Device ID to the ident records that came under it.
using IdentMap = std::map<u32, std::vector<SIdentRecord>>;

// The read side of a session file.
class IRkParser {
 public:
  virtual ~IRkParser() = default;
  // Reads the whole file, once. progress may be null. False leaves the reader unusable.
  virtual bool ParsaFile(IProgress* progress) = 0;
  virtual void SetTestoLibero(const std::string& text) = 0;
  virtual const std::string& GetTestoLibero() const = 0;
  virtual const ChannelList& GetCanali() const = 0;
  // Brings the counts of every session up to date first.
  virtual const SessionMap& GetSessioni() = 0;
  // Texts of the current session; empty without one.
  virtual const std::string& GetNomeVeicolo() const = 0;
  virtual const std::string& GetNomeTracciato() const = 0;
  virtual const std::string& GetNomePilota() const = 0;
  virtual const std::string& GetNomeCampionato() const = 0;
  virtual const std::string& GetNomeTipoVenue() const = 0;
  virtual const IdentMap& GetMainIdents() const = 0;
  virtual const IdentMap& GetNetIdents() const = 0;
  // The current session's start, or the reader's own value while there is no session.
  virtual const std::tm* GetDataOra() const = 0;
  virtual const std::wstring& GetNomeFile() const = 0;
  // The trace of the largest quality above 0, null without one.
  virtual IRkGpsTrace* GetTracciaGpsMigliore() const = 0;
  virtual IRkGpsTrace* GetTracciaGps(const std::string& name) const = 0;
  // Inserts "GPS" and the name of every trace.
  virtual void GetNomiTracceGps(std::set<std::string>* names) const = 0;
  // Appends the paths of files that exist for this reader's sake; nobody deletes them.
  virtual void GetFileTemporanei(std::list<std::wstring>* files) const = 0;
};

}  // namespace traguardo
