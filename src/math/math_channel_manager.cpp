// SPDX-License-Identifier: MIT
#include "math/math_channel_manager.h"

#include <algorithm>
#include <limits>
#include <new>
#include <utility>

#include "math/filters.h"
#include "math/math_tables.h"

namespace traguardo {
namespace {

constexpr std::string_view kPunctuation = "+-*/^(),. ";
constexpr std::string_view kNameCharacters = "_#";
constexpr std::string_view kNameTerminators = "+-*/^(),";
constexpr std::size_t kStackSize = 128;
constexpr std::size_t kFormulaLength = 255;
// Symbols are numbered in 16 bits.
constexpr std::size_t kLargestSymbolCount = 65536;
// Samples of an input that stand in memory at a time.
constexpr std::size_t kPiece = 4096;

// When each lap ends, while the time goes on.
class LapClock {
 public:
  explicit LapClock(const IMathSession& session) : session_(session) {
    if (session_.lap_count() > 0) take_end();
  }
  // True where a new lap begins: with the first time behind the end of a lap that isn't the last. One lap at a time.
  bool passes_into_next_lap(double time_ms) {
    if (!(time_ms > end_ms_) || lap_ + 1 >= session_.lap_count()) return false;
    ++lap_;
    take_end();
    return true;
  }

 private:
  void take_end() {
    const SMathLap lap = session_.Lap(lap_);
    end_ms_ = lap.start_ms + lap.duration_ms;
  }

  const IMathSession& session_;
  std::size_t lap_ = 0;
  double end_ms_ = std::numeric_limits<double>::infinity();
};

// The result begins with the first lap. The place of its start among `count` samples; `count` if it lies behind them.
std::size_t first_output(const IMathSession& session, double period_ms, std::size_t count) {
  if (session.lap_count() == 0) return 0;
  const double place = session.Lap(0).start_ms / period_ms;
  if (!(place < static_cast<double>(count))) return count;
  return place > 0.0 ? static_cast<std::size_t>(place) : 0;
}

}  // namespace

CGestMathChan::CGestMathChan(const IUserUnitOfMeasureManager& units, std::wstring folder)
    : tokenizer_(CTokenizer::kMaximumLength, kPunctuation, kNameCharacters, kNameTerminators),
      parser_(tokenizer_),
      interpreter_(tokenizer_, parser_, units),
      store_(channels_, tokenizer_, std::move(folder)) {}

bool CGestMathChan::ComputeChannel(IMathSession& session, std::size_t channel) {
  return static_cast<bool>(compute_formula(session.Formula(channel).substr(0, kFormulaLength), session, channel));
}

FormulaOutcome CGestMathChan::compute_formula(std::string_view formula, IMathSession& session, std::size_t target) {
  FormulaOutcome outcome;
  keep_symbols(session);
  if (compile(formula, &outcome.code, &outcome.position)) run_passes(session, target);
  outcome.character = character_of(outcome.code, outcome.position);
  GetMessage(outcome.code, &outcome.message, nullptr, nullptr);
  outcome.message.erase(outcome.message.find_last_not_of(' ') + 1);
  tokenizer_.ClearTokens();
  if (registered_version_ == 0) tokenizer_.ClearSymbols();
  return outcome;
}

// Registers the session's names, unless those of the last formula are still theirs.
void CGestMathChan::keep_symbols(const IMathSession& session) {
  const u64 version = session.names_version();
  if (version != 0 && version == registered_version_ && channels_.size() == registered_definitions_) return;
  tokenizer_.ClearSymbols();
  registered_version_ = 0;
  RegisterSymbols(session, &channels_);
  registered_definitions_ = channels_.size();
  registered_version_ = version;
}

void CGestMathChan::RegisterSymbols(const IMathSession& session, const std::vector<SMathChannel>* definitions) {
  const std::size_t count = std::min(session.channel_count(), kLargestSymbolCount);
  for (std::size_t i = 0; i < count; ++i) {
    tokenizer_.AddSymbol(kTokenChannel, session.channel_name(i), static_cast<u16>(i));
  }
  if (definitions == nullptr) return;
  for (std::size_t i = 0; i < std::min(definitions->size(), kLargestSymbolCount); ++i) {
    tokenizer_.AddSymbol(kTokenMathChannel, (*definitions)[i].name, static_cast<u16>(i));
  }
}

const SMathChannel* CGestMathChan::GetMathChannel(std::size_t index) const {
  return index < channels_.size() ? &channels_[index] : nullptr;
}

void CGestMathChan::GetMessage(i32 code, std::string* text, std::string* identifier, std::string* table) {
  const std::span<const SMessageRow> rows = math_messages();
  const auto found = std::ranges::find(rows, code, &SMessageRow::code);
  const SMessageRow& row = found == rows.end() ? rows.back() : *found;
  if (text != nullptr) *text = row.text;
  if (identifier != nullptr) *identifier = row.identifier;
  if (table != nullptr) *table = kMathMessageTable;
}

bool CGestMathChan::compile(std::string_view formula, i32* error, u16* position) {
  u16 length = 0;
  return tokenizer_.Tokenize(formula, error, position, &length) && parser_.Compile(error, position);
}

std::size_t CGestMathChan::character_of(i32 error, u16 position) const {
  if (error == kErrorUnknownSymbol) return position;
  if (error == kFormulaOk || error == kErrorMemory) return 0;
  const SMathToken* token = tokenizer_.GetToken(position, true);
  return token == nullptr ? tokenizer_.expression().size() : token->start;
}

void CGestMathChan::run_passes(IMathSession& session, std::size_t target) {
  const u16 passes = parser_.PassCount();
  Inputs inputs = load_inputs(session, target);
  for (u16 pass = 0; pass < passes; ++pass) {
    if (pass == 2) interpreter_.ComputeGearCentres();
    run_pass(pass, session, target, inputs);
  }
}

// One input per channel that the formula names, in the order in which the code first reaches them; the code then names
// inputs instead of channels. A definition that is no channel of the session has no samples, and reads 0.0.
CGestMathChan::Inputs CGestMathChan::load_inputs(IMathSession& session, std::size_t target) {
  Inputs inputs;
  for (parser_.Rewind(); parser_.HasMore();) {
    const Instruction instruction = parser_.Next();
    if (instruction.bytes == nullptr) break;
    if (instruction.opcode() < kOpOtherSymbol || instruction.opcode() > kOpMathChannel) continue;
    const std::size_t source = instruction.index();
    const bool in_session = instruction.opcode() != kOpMathChannel;
    const auto known = std::ranges::find_if(
        inputs, [&](const Input& input) { return input.source == source && input.in_session == in_session; });
    parser_.set_index(static_cast<u16>(known - inputs.begin()));
    if (known == inputs.end()) inputs.push_back({source, in_session, false, {}});
  }
  const std::size_t count = session.Samples(target).size();
  for (Input& input : inputs) {
    input.is_whole = count <= kPiece || parser_.NeedsSmoothing() || (input.in_session && input.source == target);
    input.values.resize(input.is_whole ? count : kPiece);
    if (input.is_whole && input.in_session && count > 0) session.fill_input(input.source, target, 0, input.values);
  }
  return inputs;
}

// Sets the cursors to sample `first`.
void CGestMathChan::load_piece(IMathSession& session, std::size_t target, std::size_t first, Inputs& inputs,
                               std::span<InputCursor> cursors) {
  const std::size_t left = session.Samples(target).size() - first;
  for (std::size_t i = 0; i < inputs.size(); ++i) {
    Input& input = inputs[i];
    cursors[i].sample = input.values.data() + (input.is_whole ? first : 0);
    if (input.is_whole || !input.in_session) continue;
    session.fill_input(input.source, target, first, std::span(input.values).first(std::min(left, kPiece)));
  }
}

void CGestMathChan::run_pass(u16 pass, IMathSession& session, std::size_t target, Inputs& inputs) {
  const double period_ms = session.period_ms(target);
  interpreter_.SetStackSize(kStackSize);
  interpreter_.ResetState(pass == 0);
  interpreter_.SetTimeStep(static_cast<float>(period_ms / 1000.0));
  if (parser_.NeedsSmoothing()) {
    // About one second of samples; each pass smooths the already smoothed ones again.
    const std::size_t half_width = session.frequency_hz(target) / 2;
    for (Input& input : inputs) CFiltri::MediaMobile(input.values.data(), input.values.size(), half_width);
  }
  std::vector<InputCursor> cursors(inputs.size());

  const std::span<float> samples = session.Samples(target);
  const std::size_t first = first_output(session, period_ms, samples.size());
  LapClock laps(session);
  double time_ms = 0.0;
  for (std::size_t i = 0; i < samples.size(); ++i) {
    if (i % kPiece == 0) load_piece(session, target, i, inputs, cursors);
    interpreter_.SetSampleIndex(static_cast<u32>(i));
    time_ms += period_ms;
    if (laps.passes_into_next_lap(time_ms)) interpreter_.ResetLap();
    float value = 0.0F;
    interpreter_.Execute(pass, cursors, &value);
    if (i < samples.size() - first) samples[first + i] = value;
    for (InputCursor& cursor : cursors) ++cursor.sample;
  }
}

}  // namespace traguardo
