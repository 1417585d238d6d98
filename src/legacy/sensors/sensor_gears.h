// SPDX-License-Identifier: MIT
// Gears from the voltage of a gear potentiometer, by ten thresholds that stand where other sensors have five
// parameters.
#pragma once

#include "legacy/sensors/sensor_formulas.h"

namespace traguardo {

// The nearest threshold's gear, 0 for a word of 0 and 10 beyond the converter's range. Every word counts as valid. A
// word that is not within 10000 of any threshold has gear 0.
void convert_gear_by_thresholds(const FormulaCall& call);

// The nearest threshold's gear if the word is near enough to it, else the sample before once more (0.0 in front of the
// first sample). Every word counts as valid.
void convert_gear_by_nearest(const FormulaCall& call);

}  // namespace traguardo
