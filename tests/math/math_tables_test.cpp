// Counts, sums and hashes worked out from the tables' source, so that no row can be lost or mistyped.
#include "math/math_tables.h"

#include <gtest/gtest.h>

#include "helpers/table_sums.h"
#include "math/filter_tables.h"
#include "math/standard_definitions.h"

namespace traguardo {
namespace {

i64 whole(float value) {
  return static_cast<i64>(value);
}

TEST(MathTables, HoldEveryRowOfTheirSource) {
  const auto functions = function_rows();
  EXPECT_EQ(table_sums(functions.first(37),
                       [](TableDigest& digest, const SFunctionRow& row) {
                         digest.number(row.code).text(row.name.data()).number(row.parameters).text(row.text.data());
                       }),
            (TableSums{37, 3110, 0xBB3431358849A783u}));
  ASSERT_EQ(functions.size(), 38U);
  EXPECT_EQ(functions[37].code, 127);

  EXPECT_EQ(table_sums(math_messages(),
                       [](TableDigest& digest, const SMessageRow& row) {
                         digest.number(row.code).text(row.identifier.data()).text(row.text.data());
                       }),
            (TableSums{13, 1154, 0x98FE8758AD624114u}));

  EXPECT_EQ(table_sums(standard_definitions(),
                       [](TableDigest& digest, const SStandardDefinition& row) {
                         digest.text(row.name.data()).text(row.unit.data());
                         digest.number(whole(row.display_minimum)).number(whole(row.display_maximum));
                         digest.number(row.function).number(row.sub_function).text(row.formula.data());
                       }),
            (TableSums{12, 13213, 0x9B0CB73E0E4C747Cu}));

  EXPECT_EQ(table_sums(standard_constants(),
                       [](TableDigest& digest, const SStandardConstant& row) {
                         digest.text(row.name.data()).real(row.value);
                       }),
            (TableSums{19, 0, 0x43F38199CEF2A962u}));

  EXPECT_EQ(table_sums(fir_taps(), [](TableDigest& digest, float tap) { digest.real(tap); }),
            (TableSums{13, 0, 0x91C05631072D5A5Fu}));

  EXPECT_EQ(table_sums(frequency_rows(),
                       [](TableDigest& digest, const SFrequencyRow& row) {
                         digest.number(row.code).number(row.hz).number(row.period_ms);
                       }),
            (TableSums{13, 36241, 0xF20BAFBC24028C46u}));
}

// Read as bytes, codes and characters of the operators are this text.
TEST(MathTables, OperatorCodesArePrintable) {
  std::string bytes;
  for (const SCharacterRow& row : operator_rows()) {
    if (row.code == kTokenTableEnd) break;
    bytes += static_cast<char>(row.code);
    bytes += row.character;
  }
  EXPECT_EQ(bytes, " +!-\"*#/$^");
}

}  // namespace
}  // namespace traguardo
