// The sensors of the legacy family, as `CDBSensori` knows them. It makes a map by id of these rows at construction; a
// family override in a channel's unit descriptor writes into the family of that map's row, never here.
#pragma once

#include <span>

#include "support/bytes.h"

namespace traguardo {

// What the kind of a sensor says.
inline constexpr u8 kSensorKindPolynomial = 1;  // with a unit descriptor: x c1 + c0 + x^2 c2 + x^3 c3 + x^4 c4
// Every other kind (0, 2, and 101 to 104, which name curves that no conversion uses) has a formula of its own.

// Answers "row of a sensor id". An id without a row gives SensorRow{}: id 0, family 0, kind 0, coefficients 0.
// `CSensori::ConvertiCampioni` takes the family as the unit that the row's values stand in, and evaluates the
// polynomial of kind 1. Of the other kinds the five values stand beside the parameters p4 to p0 and no conversion reads
// them.
struct SensorRow {
  i32 id;
  u8 family;  // unit code of unit_texts()
  u8 kind;
  float c4;
  float c3;
  float c2;
  float c1;
  float c0;
};

// In three groups: polynomials of degree one by family, polynomials of higher degree, sensors with a formula.
std::span<const SensorRow> sensors();

}  // namespace traguardo
