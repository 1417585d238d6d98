// SPDX-License-Identifier: MIT
// The folder tree of an installation, made from its root by joining texts; nothing here looks at the disk.
#pragma once

#include <array>
#include <map>
#include <memory>
#include <string>

#include "support/bytes.h"

namespace traguardo {

// What a folder of a device holds; the selector of the transmit and receive folders.
inline constexpr i32 kContenutoNessuno = 0;  // the bare folder
inline constexpr i32 kContenutoTracks = 1;
inline constexpr i32 kContenutoCfgs = 2;
inline constexpr i32 kContenutoSplash = 3;
inline constexpr i32 kContenutoSettings = 4;

// Every folder ends in '/'. References live as long as the object.
class IAppFolders {
 public:
  virtual ~IAppFolders() = default;

  // Absolute folders.
  virtual const std::wstring& GetCartellaRoot() const = 0;
  virtual const std::wstring& GetCartellaMaker() const = 0;
  virtual const std::wstring& GetCartellaOem() const = 0;
  virtual const std::wstring& GetCartellaService() const = 0;
  virtual const std::wstring& GetCartellaUser() const = 0;
  virtual const std::wstring& GetCartellaTemp() const = 0;
  virtual const std::wstring& GetCartellaUploads() const = 0;
  virtual const std::wstring& GetCartellaWebUpdates() const = 0;
  virtual const std::wstring& GetCartellaTracksUpdates() const = 0;
  virtual const std::wstring& GetCartellaDocsUpdates() const = 0;
  virtual const std::wstring& GetCartellaEcuProtsUpdates() const = 0;
  virtual const std::wstring& GetCartellaLanguage() const = 0;
  virtual const std::wstring& GetCartellaUserIni() const = 0;
  virtual const std::wstring& GetCartellaEtPrediction() const = 0;
  virtual const std::wstring& GetCartellaUserData() const = 0;
  virtual const std::wstring& GetCartellaUserTracks() const = 0;
  virtual const std::wstring& GetCartellaZepTracks() const = 0;
  virtual const std::wstring& GetCartellaZepTracksToBeDeleted() const = 0;
  virtual const std::wstring& GetCartellaTrackLogos() const = 0;
  virtual const std::wstring& GetCartellaDataForDb() const = 0;

  // The same folders by their names below the root.
  virtual const std::wstring& GetNomeMaker() const = 0;
  virtual const std::wstring& GetNomeOem() const = 0;
  virtual const std::wstring& GetNomeService() const = 0;
  virtual const std::wstring& GetNomeUser() const = 0;
  virtual const std::wstring& GetNomeUserIni() const = 0;
  virtual const std::wstring& GetNomeEtPrediction() const = 0;
  virtual const std::wstring& GetNomeUserData() const = 0;
  virtual const std::wstring& GetNomeLanguage() const = 0;
  virtual const std::wstring& GetNomeTemp() const = 0;
  virtual const std::wstring& GetNomeReceive() const = 0;
  virtual const std::wstring& GetNomeSend() const = 0;
  virtual const std::wstring& GetNomeImport() const = 0;
  virtual const std::wstring& GetNomeExport() const = 0;
  virtual const std::wstring& GetNomeUploads() const = 0;
  virtual const std::wstring& GetNomeWebUpdates() const = 0;
  virtual const std::wstring& GetNomeTracksUpdates() const = 0;
  virtual const std::wstring& GetNomeDocsUpdates() const = 0;
  virtual const std::wstring& GetNomeEcuProtsUpdates() const = 0;
  virtual const std::wstring& GetNomeIni() const = 0;
  virtual const std::wstring& GetNomeData() const = 0;

  // Folders of a device, below the folder for temporary files: by its code, or by code and name. The first request for
  // a code fixes the text: later requests get it whatever name they give. `content` is one of kContenuto*; any other
  // value gives an empty text.
  virtual const std::wstring& GetCartellaDevice(u32 device_code) = 0;
  virtual const std::wstring& GetCartellaDevice(u32 device_code, const std::wstring& name) = 0;
  virtual const std::wstring& GetCartellaTx(u32 device_code, i32 content) = 0;
  virtual const std::wstring& GetCartellaTx(u32 device_code, const std::wstring& name, i32 content) = 0;
  virtual const std::wstring& GetCartellaRx(u32 device_code, i32 content) = 0;
  virtual const std::wstring& GetCartellaRx(u32 device_code, const std::wstring& name, i32 content) = 0;
};

class CAppFolders : public IAppFolders {
 public:
  // root: with its trailing slash; it need not exist.
  explicit CAppFolders(const std::wstring& root);

  const std::wstring& GetCartellaRoot() const override { return absolute_[kRoot]; }
  const std::wstring& GetCartellaMaker() const override { return absolute_[kMaker]; }
  const std::wstring& GetCartellaOem() const override { return absolute_[kOem]; }
  const std::wstring& GetCartellaService() const override { return absolute_[kService]; }
  const std::wstring& GetCartellaUser() const override { return absolute_[kUser]; }
  const std::wstring& GetCartellaTemp() const override { return absolute_[kTemp]; }
  const std::wstring& GetCartellaUploads() const override { return absolute_[kUploads]; }
  const std::wstring& GetCartellaWebUpdates() const override { return absolute_[kWebUpdates]; }
  const std::wstring& GetCartellaTracksUpdates() const override { return absolute_[kTracksUpdates]; }
  const std::wstring& GetCartellaDocsUpdates() const override { return absolute_[kDocsUpdates]; }
  const std::wstring& GetCartellaEcuProtsUpdates() const override { return absolute_[kEcuProtsUpdates]; }
  const std::wstring& GetCartellaLanguage() const override { return absolute_[kLanguage]; }
  const std::wstring& GetCartellaUserIni() const override { return absolute_[kUserIni]; }
  const std::wstring& GetCartellaEtPrediction() const override { return absolute_[kEtPrediction]; }
  const std::wstring& GetCartellaUserData() const override { return absolute_[kUserData]; }
  const std::wstring& GetCartellaUserTracks() const override { return absolute_[kUserTracks]; }
  const std::wstring& GetCartellaZepTracks() const override { return absolute_[kZepTracks]; }
  const std::wstring& GetCartellaZepTracksToBeDeleted() const override { return absolute_[kZepTracksToBeDeleted]; }
  const std::wstring& GetCartellaTrackLogos() const override { return absolute_[kTrackLogos]; }
  const std::wstring& GetCartellaDataForDb() const override { return absolute_[kDataForDb]; }

  const std::wstring& GetNomeMaker() const override { return relative_[kMaker]; }
  const std::wstring& GetNomeOem() const override { return relative_[kOem]; }
  const std::wstring& GetNomeService() const override { return relative_[kService]; }
  const std::wstring& GetNomeUser() const override { return relative_[kUser]; }
  const std::wstring& GetNomeUserIni() const override { return relative_[kUserIni]; }
  const std::wstring& GetNomeEtPrediction() const override { return relative_[kEtPrediction]; }
  const std::wstring& GetNomeUserData() const override { return relative_[kUserData]; }
  const std::wstring& GetNomeLanguage() const override { return relative_[kLanguage]; }
  const std::wstring& GetNomeTemp() const override { return relative_[kTemp]; }
  const std::wstring& GetNomeReceive() const override { return relative_[kReceive]; }
  const std::wstring& GetNomeSend() const override { return relative_[kSend]; }
  const std::wstring& GetNomeImport() const override { return relative_[kImport]; }
  const std::wstring& GetNomeExport() const override { return relative_[kExport]; }
  const std::wstring& GetNomeUploads() const override { return relative_[kUploads]; }
  const std::wstring& GetNomeWebUpdates() const override { return relative_[kWebUpdates]; }
  const std::wstring& GetNomeTracksUpdates() const override { return relative_[kTracksUpdates]; }
  const std::wstring& GetNomeDocsUpdates() const override { return relative_[kDocsUpdates]; }
  const std::wstring& GetNomeEcuProtsUpdates() const override { return relative_[kEcuProtsUpdates]; }
  const std::wstring& GetNomeIni() const override { return relative_[kIni]; }
  const std::wstring& GetNomeData() const override { return relative_[kData]; }

  const std::wstring& GetCartellaDevice(u32 device_code) override;
  const std::wstring& GetCartellaDevice(u32 device_code, const std::wstring& name) override;
  const std::wstring& GetCartellaTx(u32 device_code, i32 content) override;
  const std::wstring& GetCartellaTx(u32 device_code, const std::wstring& name, i32 content) override;
  const std::wstring& GetCartellaRx(u32 device_code, i32 content) override;
  const std::wstring& GetCartellaRx(u32 device_code, const std::wstring& name, i32 content) override;

 private:
  enum Folder : std::size_t {
    kRoot,
    kMaker,
    kOem,
    kService,
    kUser,
    kUserIni,
    kEtPrediction,
    kUserData,
    kLanguage,
    kTemp,
    kReceive,
    kSend,
    kImport,
    kExport,
    kUploads,
    kWebUpdates,
    kTracksUpdates,
    kDocsUpdates,
    kEcuProtsUpdates,
    kIni,
    kData,
    kUserTracks,
    kZepTracks,
    kZepTracksToBeDeleted,
    kTrackLogos,
    kDataForDb,
    kFolders,
  };
  // The leaves of a device's folder: itself, then transmit and receive with their contents.
  static constexpr std::size_t kTxLeaf = 1;
  static constexpr std::size_t kRxLeaf = 6;
  static constexpr std::size_t kLeaves = 11;
  using DeviceFolders = std::map<u32, std::wstring>;

  const std::wstring& device_folder(std::size_t leaf, u32 device_code, const std::wstring* name);
  const std::wstring& content_folder(std::size_t first_leaf, i32 content, u32 device_code, const std::wstring* name);

  std::array<std::wstring, kFolders> relative_;
  std::array<std::wstring, kFolders> absolute_;
  std::array<DeviceFolders, kLeaves> by_code_;
  std::array<DeviceFolders, kLeaves> by_code_and_name_;
};

// Null if the memory can't be had.
std::unique_ptr<IAppFolders> CreaAppFolders(const std::wstring& root);

}  // namespace traguardo
