// SPDX-License-Identifier: MIT
// The memory of an older logger, composed by the fuzzer's bytes so that it gets behind sums and borders: the first byte
// chooses version 550 (the rest are words of two channels) or 500, whose dump the rest describes.

#include "whole_file.h"
#include "wire/dump.h"
#include "wire/jts.h"
#include "wire/wmp.h"

using namespace traguardo;

namespace {

// The fuzzer's bytes one behind the other; zeros behind them.
class Choices {
 public:
  Choices(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}
  bool ended() const { return at_ >= size_; }
  std::uint8_t byte() { return ended() ? std::uint8_t{0} : data_[at_++]; }
  std::uint16_t word() {
    const unsigned low = byte();
    return static_cast<std::uint16_t>(low | unsigned{byte()} << 8);
  }
  wire::Bytes bytes(std::size_t count) {
    wire::Bytes taken;
    while (taken.size() < count && !ended()) taken.push_back(byte());
    return taken;
  }

 private:
  const std::uint8_t* data_;
  std::size_t size_;
  std::size_t at_ = 0;
};

void append_piece(wire::Dump* dump, Choices& choices) {
  switch (const std::uint8_t choice = choices.byte(); choice % 16) {
    case 0:
      dump->mark();
      break;
    case 1:
      dump->checksum();
      break;
    case 2:
      dump->checksum(choice / 16);
      break;
    case 3: {
      const std::uint8_t kind = choices.byte();
      const std::uint16_t number = choices.word();
      dump->lap_record(kind, number, choices.word(), choice < 240 ? 0 : 1);
      break;
    }
    case 4:
      dump->foreign({choices.word(), choices.word(), choices.word()}, choice < 128);
      break;
    case 5:
      dump->lap_end(choices.byte());
      break;
    case 6:
      dump->repeat(choices.word() % 1024, 0xFFFF);
      break;
    case 7:
      dump->repeat(choices.word() % 4096, choices.word());
      break;
    default:
      dump->word(choices.word());
  }
}

wire::Bytes dump_of(Choices& choices) {
  const std::uint8_t shape = choices.byte();
  const std::size_t schedule = choices.byte() % 32;
  wire::Dump dump(choices.bytes(schedule), shape % 2 == 0 ? schedule : wire::Dump::kScheduleRoom);
  if (shape % 4 >= 2) dump.set_format(wire::Dump::kOlderFormat);
  dump.set_device(choices.byte());
  for (std::size_t flags = choices.byte(); flags > 0; flags >>= 1) {
    dump.set_byte(shape % 8 >= 4 ? 7696 + choices.byte() % 64 : choices.byte() % 24, flags % 2);
  }
  while (!choices.ended()) append_piece(&dump, choices);
  return dump.bytes();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const test::TempFolder& folder = fuzz::folder();
  static const std::string trace = folder.write("a.jts", wire::plain_jts(5));
  Choices choices(data, size);
  wire::wmp::File file;
  file.version = choices.byte() % 2 == 0 ? 500 : 550;
  file.family = choices.byte() % 12;
  file.device_code = choices.byte();
  file.software = choices.byte() % 2 == 0 ? 0 : 0x200010;
  file.logged.resize(1 + choices.byte() % 4);
  file.laps.resize(1 + choices.byte() % 4);
  std::size_t lap_number = 0;
  for (wire::wmp::Lap& lap : file.laps) {
    lap.time_ms = choices.word();
    lap.samples = choices.byte();
    lap.run = static_cast<std::uint16_t>(1 + lap_number / 2);
    lap.number = static_cast<std::int16_t>(++lap_number);
  }
  for (std::size_t i = 0; i < file.logged.size(); ++i) {
    file.logged[i].name = std::string(1, static_cast<char>('A' + i));
    file.logged[i].rate = choices.byte() % 16;
    file.logged[i].sample_count = choices.word() % 8192;
  }
  if (file.version == 500) {
    // What the tables promise; the words themselves are in the dump alone.
    for (wire::wmp::Channel& channel : file.logged) channel.words.resize(*channel.sample_count);
    file.dump = dump_of(choices);
  } else {
    for (std::size_t i = 0; !choices.ended(); ++i) file.logged[i % file.logged.size()].words.push_back(choices.word());
  }
  fuzz::read_everything(folder.write("a.wmp", wire::wmp::build(file)));
  std::filesystem::remove(folder.path() / "a.bak");
  return 0;
}
