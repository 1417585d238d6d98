// SPDX-License-Identifier: MIT
// A file may repeat the tag; samples of a channel whose unit stays the same go on.

#include "logger/channel_table.h"

#include <utility>

#include "logger/tag_scan.h"
#include "support/event_log.h"
#include "units/converter.h"
#include "units/converter_wmp.h"
#include "units/fid.h"
#include "units/functions.h"
#include "units/sample_formats.h"
#include "units/user_units_manager.h"

namespace traguardo {

namespace {

constexpr const char* kGeneraMappe = "CParserZep_2Gv4::GeneraMappeSCanale";
constexpr u32 kFlagHoldLastValue = 0x200;
constexpr u32 kFlag400 = 0x400;
constexpr u32 kLateralAcceleration = 0x1183;
// How a value of a logged channel is shown.
constexpr int kSignificantDigits = 5;
constexpr int kTimeWidth = 15;

ChannelRecord record_at(InputFile* file, u64 place) {
  return ChannelRecord(std::span<const u8>(file->At(place, ChannelRecord::kSize), ChannelRecord::kSize));
}

}  // namespace

// The tag is read in pieces: a table
// of 65,536 channels needs no second place in memory.
bool ChannelTable::Take(const SAtomTag& tag) {
  // "CDE" and "FT1" say more of a channel, which nothing reads.
  if (!GeneraMappeSCanale(tag)) return false;
  take_descriptors(tag);
  assign_converters();
  return true;
}

// The first descriptor of an index stays.
void ChannelTable::take_descriptors(const SAtomTag& configuration) {
  const auto is_known = [this](u16 channel) { return channel_at(channel) != nullptr; };
  const u64 payload = u64{configuration.offset} + kTagOpeningSize;
  tags::PartSource source(&input_, payload);
  tags::for_each(&source, configuration.payloadSize, [&](const SAtomTag& inner) {
    const bool is_group = inner.name == "GRP";
    if ((!is_group && inner.name != "ACD") || inner.payloadSize > ChannelDescriptor::kLargestSize) return;
    const std::span<const u8> bytes(source.At(inner.offset + kTagOpeningSize, inner.payloadSize), inner.payloadSize);
    auto descriptor =
        is_group ? ChannelDescriptor::Group(bytes, is_known) : ChannelDescriptor::Acquisition(bytes, is_known);
    if (descriptor != nullptr) (is_group ? groups_ : acquisitions_).Enter(std::move(descriptor));
  });
}

void ChannelTable::Clear() {
  by_index_.clear();
  acquisitions_.Clear();
  groups_.Clear();
  channels_.clear();
  without_converter_.clear();
  resolved_places_ = 0;
  ++generation_;
}

// A file that changes its table again and again under long descriptors gets so much work out of the reader and no more.
ChannelDescriptor* ChannelTable::resolved(ChannelDescriptor* descriptor) {
  constexpr u64 kPlacesPerByte = 64;
  constexpr u64 kAnyway = 1U << 24;
  resolved_places_ += descriptor->count();
  if (resolved_places_ > kPlacesPerByte * size_ + kAnyway) return nullptr;
  descriptor->Resolve([this](u16 channel) { return entry_at(channel); });
  descriptor->generation = generation_;
  return descriptor;
}

bool ChannelTable::GeneraMappeSCanale(const SAtomTag& configuration) {
  // Where the records stand in the file, by their index; of several with one index the last counts.
  constexpr u64 kNone = 0;
  std::vector<u64> records;
  const u64 payload = u64{configuration.offset} + kTagOpeningSize;
  tags::PartSource source(&input_, payload);
  tags::for_each(&source, configuration.payloadSize, [&](const SAtomTag& inner) {
    if (inner.name != "CHS" || inner.payloadSize != ChannelRecord::kSize) return;
    const u64 place = payload + inner.offset + kTagOpeningSize;
    const u16 index = record_at(&input_, place).id();
    if (records.size() <= index) records.resize(std::size_t{index} + 1, kNone);
    records[index] = place;
  });
  std::erase(records, kNone);
  std::vector<std::string> names_in_file;
  names_in_file.reserve(records.size());
  for (const u64 place : records) names_in_file.push_back(record_at(&input_, place).name());
  ChannelNames names(std::move(names_in_file));

  bool good = true;
  for (const u64 place : records) {
    if (take_channel_record(record_at(&input_, place), &names) == Entry::kFailed) good = false;
  }
  return good;
}

ChannelTable::Entry ChannelTable::take_channel_record(const ChannelRecord& record, ChannelNames* names) {
  if (channel_at(record.id()) != nullptr && channel_at(record.id())->record() == record) return Entry::kSkipped;
  std::unique_ptr<CCanaleQLT> object = kept_object(record);
  if (!wanted_.empty() && !wanted_.contains(record.name())) return Entry::kSkipped;
  if (!keeps_samples_) {
    // Its samples are of no interest yet.
    if (object == nullptr) object = std::make_unique<CCanaleQLT>(record);
    object->set_record(record);
    Enter(record.id(), std::move(object));
    return Entry::kTaken;
  }
  if (record.quantity() == FID_PHI_PACKAGE) {
    // A packet has no samples that could go on.
    object = packet_object(record);
    if (object == nullptr) return Entry::kSkipped;
    if (measures_) object->install_offsets_only();
    Enter(record.id(), std::move(object));
    return Entry::kTaken;
  }
  if (object == nullptr) {
    object = std::make_unique<CCanaleQLT>(record);
  } else {
    object->set_record(record);
  }

  const std::string plain = record.name();
  const std::string name = names->own_name(plain);
  if (name != plain) {
    TRAGUARDO_LOG(kGeneraMappe, "%s [%d] WARNING = Duplicate found! Channel \"%s\" hase been renamed into \"%s\"\n",
                  plain, name);
  }
  if (object->channel() == nullptr && !give_channel(object.get(), name)) return Entry::kFailed;
  set_properties(object.get(), name);
  Enter(record.id(), std::move(object));
  return Entry::kTaken;
}

// The object under the record's index, taken out of the table, if its samples may go on under the new record; null if
// there is none or its unit is another one now.
std::unique_ptr<CCanaleQLT> ChannelTable::kept_object(const ChannelRecord& record) {
  if (channel_at(record.id()) == nullptr) return nullptr;
  std::unique_ptr<CCanaleQLT> object = std::move(channels_[record.id()]);
  by_index_[record.id()] = {};
  without_converter_.erase(record.id());
  ++generation_;
  const CFunzioni functions;
  if (functions.GetUnitName(object->record().fp_code()) != functions.GetUnitName(record.fp_code())) return nullptr;
  return object;
}

std::unique_ptr<CCanaleQLT> ChannelTable::packet_object(const ChannelRecord& record) {
  ILapReceiver* laps = &laps_;
  switch (record.object()) {
    case FID_DETTAGLI_GPS:
      if (record.variant() == FID_SPEC_GPS_ZEPNAVSOL) {
        CGPSSamples* trace = session_.GetOCreaTracciaGps(record.name());
        return std::make_unique<CCanaleQLT_GPS>(record, trace);
      }
      break;
    case FID_DETTAGLI_LAPTIME:
      if (record.variant() == FID_SPEC_LAPTIME_ZEP2Gv3) return std::make_unique<CCanaleQLT_Lap_v3>(record, laps);
      if (record.variant() == FID_SPEC_LAPTIME_ZEP2Gv2) return std::make_unique<CCanaleQLT_Lap_v2>(record, laps);
      break;
    case FID_DETTAGLI_TOTAL_ODOMETER:
      return std::make_unique<CCanaleQLT_TotalOdometer>(record);
    case FID_DETTAGLI_RESETTABLE_ODOMETER:
      return std::make_unique<CCanaleQLT_ResettableOdometer>(record);
    case FID_DETTAGLI_BEST_TIME:
      return std::make_unique<CCanaleQLT_BestTime>(record);
    case FID_DETTAGLI_ROLL_TIME:
      return std::make_unique<CCanaleQLT_RollingTime>(record);
    default:
      break;
  }
  return std::make_unique<CCanaleQLT_IgnoredPacket>(record);
}

bool ChannelTable::give_channel(CCanaleQLT* object, const std::string& name) {
  auto channel = std::make_unique<CParsedChannel>(name, session_.GetFileStore(), session_.GetMantieniCostanti());
  if (!channel->IsStoreValido()) {
    TRAGUARDO_LOG(kGeneraMappe, "%s [%d] ERROR = Can't alloc memory in channel\n");
    return false;
  }
  object->set_channel(std::move(channel));
  return true;
}

void ChannelTable::set_properties(CCanaleQLT* object, const std::string& name) {
  const ChannelRecord& record = object->record();
  CParsedChannel* channel = object->channel();
  const bool is_bit_field = record.format() == kSMPL_FMT_BITFIELD_8;
  channel->SetNome(name);
  channel->SetTieniUltimoValore((record.flags() & kFlagHoldLastValue) != 0 || is_bit_field);
  channel->SetBitField(is_bit_field);
  channel->SetBitField2(is_bit_field);
  channel->SetFlag400((record.flags() & kFlag400) != 0);
  channel->SetFid(record.fp_code());
  channel->SetFormato(static_cast<u32>(record.format()));
  channel->SetFlags(record.flags());
  channel->SetDeviceCode(record.device_code());
  channel->SetDeviceSerial(record.device_serial());
  channel->SetIdInDevice(record.id_in_device());
  channel->SetVelocita(record.quantity() == FID_PHI_SPEED);
  channel->SetAccLaterale((record.fp_code() & 0x7FFF) == kLateralAcceleration);
  channel->SetPeriodo(record.period_us());
  if (measures_) object->install_statistics();
}

void ChannelTable::Enter(u16 index, std::unique_ptr<CCanaleQLT> object) {
  if (by_index_.size() <= index) {
    by_index_.resize(std::size_t{index} + 1);
    channels_.resize(std::size_t{index} + 1);
  }
  by_index_[index] = ChannelEntry(object.get());
  without_converter_.insert(index);
  channels_[index] = std::move(object);
  ++generation_;
}

void ChannelTable::assign_converters() {
  for (const u16 index : without_converter_) {
    assign_converter(channel_at(index));
    by_index_[index] = ChannelEntry(channel_at(index));
  }
  without_converter_.clear();
}

// An object whose format has no reader stays its own converter: every sample reads 0.0.
void ChannelTable::assign_converter(CCanaleQLT* object) {
  const ChannelRecord& record = object->record();
  if (record.format() == kSMPL_FMT_BITFIELD_8) {
    object->set_converter(std::make_unique<CConverterWMP>(&record, true), {});
    // Bits have no unit, also where the channel had one under an earlier record.
    if (CParsedChannel* channel = object->channel()) channel->SetUnita(std::string_view());
    return;
  }
  const CFunzioni functions;
  CUserUnitsAndNDecPerFID* choice =
      CUserUnitsOfMeasureMgr::GetInstance()->AssicuraPresenzaIniFunzione(record.fp_code());
  // The user's choice belongs to the function's catalogue word; it counts where this function has that unit, too.
  std::set<std::string> units;
  functions.fill_unit_set(record.fp_code(), &units);
  const bool is_chosen = choice != nullptr && units.contains(choice->GetChosenUnit());
  const std::string unit = is_chosen ? choice->GetChosenUnit() : functions.GetUnitName(record.fp_code());
  if (CParsedChannel* channel = object->channel()) {
    channel->SetUnita(std::string_view(unit));
    channel->SetNumDecimali(is_chosen ? choice->GetNumDecimaliDefault(unit)
                                      : functions.DefaultDecimals(record.fp_code(), unit));
  }
  const UnitOfMeasure row = functions.GetUnitRow(record.fp_code(), unit);
  std::unique_ptr<IConverter> converter =
      functions.CreateConverter(record, record.fp_code(), row, 0, kSignificantDigits, kTimeWidth);
  if (converter == nullptr || !converter->IsValido()) return;
  // The decode loop calls the bare reader wherever samples have all the bytes that it takes.
  SampleReader reader;
  if (const auto* plain = dynamic_cast<const CConverter*>(converter.get())) reader = plain->reader();
  if (reader.bytes_needed > record.sample_size()) reader = {};
  object->set_converter(std::move(converter), reader);
}

}  // namespace traguardo
