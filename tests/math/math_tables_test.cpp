// SPDX-License-Identifier: MIT
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

  EXPECT_EQ(table_sums(standard_definitions(),
                       [](TableDigest& digest, const SStandardDefinition& row) {
                         digest.text(row.name.data()).text(row.unit.data());
                         digest.number(whole(row.display_minimum)).number(whole(row.display_maximum));
                         digest.number(row.function).number(row.sub_function).text(row.formula.data());
                       }),
            (TableSums{12, 13213, 0x9B0CB73E0E4C747Cu}));

  EXPECT_EQ(table_sums(fir_taps(), [](TableDigest& digest, float tap) { digest.real(tap); }),
            (TableSums{13, 0, 0x91C05631072D5A5Fu}));
}

}  // namespace
}  // namespace traguardo
