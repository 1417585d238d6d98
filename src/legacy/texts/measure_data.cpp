// SPDX-License-Identifier: MIT
#include "legacy/texts/measure_data.h"

namespace traguardo {
namespace {

// clang-format off
constexpr RewrittenUnitRow kRewrittenUnits[] = {
    // sensor_id, digits
    {3001, "02011"},
    {3003, "04052"},
    {3004, "04052"},
    {3005, "06012"},
    {3006, "06011"},
    {3007, "11011"},
};

constexpr ParameterLabelRow kParameterLabels[] = {
    // parameter, sensor_id, text, id, imperial_text, imperial_id
    {0,   0, "Number of pulses per engine revolution",      "MSG_MULTFACT",                       nullptr,                         nullptr},
    {0,   1, "Wheel circumference (mm):",                   "MSGAPP_WCIRC_MM",                    "Wheel circumference (inches):", "MSGAPP_WCIRC_IN"},
    {0,  93, "Wheel circumference (mm):",                   "MSGAPP_WCIRC_MM",                    "Wheel circumference (inches):", "MSGAPP_WCIRC_IN"},
    {0, 111, "Wheel circumference (mm):",                   "MSGAPP_WCIRC_MM",                    "Wheel circumference (inches):", "MSGAPP_WCIRC_IN"},
    {0,   7, "ADC zero value",                              "MSG_ADCZEROVALUE",                   nullptr,                         nullptr},
    {0,   8, "ADC zero value",                              "MSG_ADCZEROVALUE",                   nullptr,                         nullptr},
    {0,  10, "ADC zero value",                              "MSG_ADCZEROVALUE",                   nullptr,                         nullptr},
    {0,  11, "ADC zero value",                              "MSG_ADCZEROVALUE",                   nullptr,                         nullptr},
    {0,  30, "ADC zero value",                              "MSG_ADCZEROVALUE",                   nullptr,                         nullptr},
    {0,  38, "ADC zero value",                              "MSG_ADCZEROVALUE",                   nullptr,                         nullptr},
    {0,  42, "ADC zero value",                              "MSG_ADCZEROVALUE",                   nullptr,                         nullptr},
    {0,  78, "ADC zero value",                              "MSG_ADCZEROVALUE",                   nullptr,                         nullptr},
    {0,  79, "ADC zero value",                              "MSG_ADCZEROVALUE",                   nullptr,                         nullptr},
    {0,  17, "X (0)",                                       "ID_MSGAPP_X0",                       nullptr,                         nullptr},
    {0,  18, "X (0)",                                       "ID_MSGAPP_X0",                       nullptr,                         nullptr},
    {0,  46, "X (0)",                                       "ID_MSGAPP_X0",                       nullptr,                         nullptr},
    {0,  72, "X (0)",                                       "ID_MSGAPP_X0",                       nullptr,                         nullptr},
    {0,  73, "X (0)",                                       "ID_MSGAPP_X0",                       nullptr,                         nullptr},
    {0,  74, "X (0)",                                       "ID_MSGAPP_X0",                       nullptr,                         nullptr},
    {0,  19, "Multiply factor",                             "ID_MSGAPP_MULTIPLYFACTOR",           nullptr,                         nullptr},
    {0,  20, "Multiply factor",                             "ID_MSGAPP_MULTIPLYFACTOR",           nullptr,                         nullptr},
    {0,  70, "Multiply factor",                             "ID_MSGAPP_MULTIPLYFACTOR",           nullptr,                         nullptr},
    {0,  86, "0th curve coefficient",                       "MSG_CURVE0",                         nullptr,                         nullptr},
    {0,  98, "0th curve coefficient",                       "MSG_CURVE0",                         nullptr,                         nullptr},
    {0, 999, "Minimum value",                               "MSG_MINIMUM",                        nullptr,                         nullptr},
    {1,   0, "Max RPM value",                               "MSG_MAXPRM",                         nullptr,                         nullptr},
    {1,   1, "Number of magnets (or teeth) per revolution", "MSG_NUMMAGNETS",                     nullptr,                         nullptr},
    {1,  93, "Number of magnets (or teeth) per revolution", "MSG_NUMMAGNETS",                     nullptr,                         nullptr},
    {1, 111, "Number of magnets (or teeth) per revolution", "MSG_NUMMAGNETS",                     nullptr,                         nullptr},
    {1,   7, "Top value",                                   "ID_MSGAPP_TOPVALUE",                 nullptr,                         nullptr},
    {1,   8, "ADC bottom value",                            "MSG_ADCBOTTOMVALUE",                 nullptr,                         nullptr},
    {1,  17, "Y (0)",                                       "ID_MSGAPP_Y0",                       nullptr,                         nullptr},
    {1,  18, "Y (0)",                                       "ID_MSGAPP_Y0",                       nullptr,                         nullptr},
    {1,  46, "Y (0)",                                       "ID_MSGAPP_Y0",                       nullptr,                         nullptr},
    {1,  72, "Y (0)",                                       "ID_MSGAPP_Y0",                       nullptr,                         nullptr},
    {1,  73, "Y (0)",                                       "ID_MSGAPP_Y0",                       nullptr,                         nullptr},
    {1,  74, "Y (0)",                                       "ID_MSGAPP_Y0",                       nullptr,                         nullptr},
    {1,  30, "Total potentiometer travel",                  "ID_MSGAPP_TOTALPOTENTIOMETERTRAVEL", nullptr,                         nullptr},
    {1,  38, "Top value pressure sensor [bar]",             "ID_MSGAPP_TOPVALUEPRESSURESENSOR",   nullptr,                         nullptr},
    {1,  77, "Number of pulses per shaft revolution:",      "MSG_PULSESHAFT",                     nullptr,                         nullptr},
    {1,  86, "1st curve coefficient",                       "MSG_CURVE1",                         nullptr,                         nullptr},
    {1,  98, "1st curve coefficient",                       "MSG_CURVE1",                         nullptr,                         nullptr},
    {1, 999, "Maximum value",                               "MSG_MAXIMUM",                        nullptr,                         nullptr},
    {2,   0, "Modified value",                              "MSG_MODIFVAL",                       nullptr,                         nullptr},
    {2,   1, "Modified value",                              "MSG_MODIFVAL",                       nullptr,                         nullptr},
    {2,  77, "Modified value",                              "MSG_MODIFVAL",                       nullptr,                         nullptr},
    {2,  93, "Modified value",                              "MSG_MODIFVAL",                       nullptr,                         nullptr},
    {2, 111, "Modified value",                              "MSG_MODIFVAL",                       nullptr,                         nullptr},
    {2,   8, "Bottom value",                                "ID_MSGAPP_BOTTOMVALUE",              nullptr,                         nullptr},
    {2,  17, "X (1)",                                       "ID_MSGAPP_X1",                       nullptr,                         nullptr},
    {2,  18, "X (1)",                                       "ID_MSGAPP_X1",                       nullptr,                         nullptr},
    {2,  46, "X (1)",                                       "ID_MSGAPP_X1",                       nullptr,                         nullptr},
    {2,  72, "X (1)",                                       "ID_MSGAPP_X1",                       nullptr,                         nullptr},
    {2,  73, "X (1)",                                       "ID_MSGAPP_X1",                       nullptr,                         nullptr},
    {2,  74, "X (1)",                                       "ID_MSGAPP_X1",                       nullptr,                         nullptr},
    {2,  30, "SENSOR total travel counts",                  "MSG_SENSORTOTALTRAVEL",              nullptr,                         nullptr},
    {2,  38, "SENSOR top value",                            "MSG_SENSORTOPVALUE",                 nullptr,                         nullptr},
    {2,  86, "2nd curve coefficient",                       "MSG_CURVE2",                         nullptr,                         nullptr},
    {2,  98, "2nd curve coefficient",                       "MSG_CURVE2",                         nullptr,                         nullptr},
    {3,   0, "Old value for RPM pulses",                    "MSG_OLDRPM",                         nullptr,                         nullptr},
    {3,   1, "Old value for wheel circumference",           "MSG_OLDCIRC",                        nullptr,                         nullptr},
    {3,  93, "Old value for wheel circumference",           "MSG_OLDCIRC",                        nullptr,                         nullptr},
    {3, 111, "Old value for wheel circumference",           "MSG_OLDCIRC",                        nullptr,                         nullptr},
    {3,   7, "ADC top value",                               "MSG_ADCTOPVALUE",                    nullptr,                         nullptr},
    {3,   8, "ADC top value",                               "MSG_ADCTOPVALUE",                    nullptr,                         nullptr},
    {3,  17, "Y (1)",                                       "ID_MSGAPP_Y1",                       nullptr,                         nullptr},
    {3,  18, "Y (1)",                                       "ID_MSGAPP_Y1",                       nullptr,                         nullptr},
    {3,  46, "Y (1)",                                       "ID_MSGAPP_Y1",                       nullptr,                         nullptr},
    {3,  72, "Y (1)",                                       "ID_MSGAPP_Y1",                       nullptr,                         nullptr},
    {3,  73, "Y (1)",                                       "ID_MSGAPP_Y1",                       nullptr,                         nullptr},
    {3,  74, "Y (1)",                                       "ID_MSGAPP_Y1",                       nullptr,                         nullptr},
    {3,  38, "Multiply factor",                             "ID_MSGAPP_MULTIPLYFACTOR",           nullptr,                         nullptr},
    {3,  86, "3rd curve coefficient",                       "MSG_CURVE3",                         nullptr,                         nullptr},
    {3,  98, "3rd curve coefficient",                       "MSG_CURVE3",                         nullptr,                         nullptr},
    {4,   1, "Old value for magnets number",                "MSG_OLDWHEELPULSE",                  nullptr,                         nullptr},
    {4,  93, "Old value for magnets number",                "MSG_OLDWHEELPULSE",                  nullptr,                         nullptr},
    {4, 111, "Old value for magnets number",                "MSG_OLDWHEELPULSE",                  nullptr,                         nullptr},
    {4,   8, "Top value",                                   "ID_MSGAPP_TOPVALUE",                 nullptr,                         nullptr},
    {4,  77, "Old value for shaft pulses",                  "MSG_OLDSHAFT",                       nullptr,                         nullptr},
    {4,  86, "4th curve coefficient",                       "MSG_CURVE4",                         nullptr,                         nullptr},
    {4,  98, "4th curve coefficient",                       "MSG_CURVE4",                         nullptr,                         nullptr},
};

constexpr SetterRow kSetters[] = {
    // operation, sensor_id, effect, parameter
    {1,   0, SetterEffect::kPulses,        3},
    {1,   1, SetterEffect::kCircumference, 3},
    {1,  93, SetterEffect::kCircumference, 3},
    {1, 111, SetterEffect::kCircumference, 3},
    {1,  17, SetterEffect::kParameter,     0},
    {1,  18, SetterEffect::kParameter,     0},
    {1,  19, SetterEffect::kParameter,     0},
    {1,  20, SetterEffect::kParameter,     0},
    {1,  46, SetterEffect::kParameter,     0},
    {1,  70, SetterEffect::kParameter,     0},
    {1,  72, SetterEffect::kParameter,     0},
    {1,  73, SetterEffect::kParameter,     0},
    {1,  74, SetterEffect::kParameter,     0},
    {2,   1, SetterEffect::kMagnets,       4},
    {2,  77, SetterEffect::kMagnets,       4},
    {2,  93, SetterEffect::kMagnets,       4},
    {2, 111, SetterEffect::kMagnets,       4},
    {2,   7, SetterEffect::kAtLeastZero,   1},
    {2,  17, SetterEffect::kAtLeastZero,   1},
    {2,  18, SetterEffect::kAtLeastZero,   1},
    {2,  30, SetterEffect::kAtLeastZero,   1},
    {2,  38, SetterEffect::kAtLeastZero,   1},
    {2,  46, SetterEffect::kAtLeastZero,   1},
    {2,  72, SetterEffect::kAtLeastZero,   1},
    {2,  73, SetterEffect::kAtLeastZero,   1},
    {2,  74, SetterEffect::kAtLeastZero,   1},
    {3,   8, SetterEffect::kAtMostZero,    2},
    {3,  17, SetterEffect::kParameter,     2},
    {3,  18, SetterEffect::kParameter,     2},
    {3,  46, SetterEffect::kParameter,     2},
    {3,  72, SetterEffect::kParameter,     2},
    {3,  73, SetterEffect::kParameter,     2},
    {3,  74, SetterEffect::kParameter,     2},
    {4,  17, SetterEffect::kParameter,     3},
    {4,  18, SetterEffect::kParameter,     3},
    {4,  38, SetterEffect::kParameter,     3},
    {4,  46, SetterEffect::kParameter,     3},
    {4,  72, SetterEffect::kParameter,     3},
    {4,  73, SetterEffect::kParameter,     3},
    {4,  74, SetterEffect::kParameter,     3},
    {5,   8, SetterEffect::kAtLeastZero,   4},
};

constexpr SetterRefusalRow kSetterRefusals[] = {
    // operation, function, line, converts
    {1, "CWMPMisura::SetParametro_1", "%s [%d] INFO = SENSORE ERRATO PER SetParametro: %d\n\n",  false},
    {2, "CWMPMisura::SetParametro_2", "%s [%d] INFO = SENSORE ERRATO PER SetParametro2: %d\n\n", false},
    {3, "CWMPMisura::SetParametro_3", "%s [%d] INFO = SENSORE ERRATO PER SetParametro3: %d\n\n", true},
    {4, "CWMPMisura::SetParametro_4", "%s [%d] INFO = SENSORE ERRATO PER SetParametro4: %d\n\n", false},
    {5, "CWMPMisura::SetParametro_5", "%s [%d] INFO = SENSORE ERRATO PER SetParametro5: %d\n\n", false},
};
// clang-format on

}  // namespace

std::span<const RewrittenUnitRow> rewritten_units() {
  return kRewrittenUnits;
}
std::span<const ParameterLabelRow> parameter_labels() {
  return kParameterLabels;
}
std::span<const SetterRow> setters() {
  return kSetters;
}
std::span<const SetterRefusalRow> setter_refusals() {
  return kSetterRefusals;
}

}  // namespace traguardo
