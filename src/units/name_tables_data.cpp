// SPDX-License-Identifier: MIT
// The enumerations of the function word: value, key, short name, long name. The order of a family is the order in which
// its keys are listed.
#include "units/catalogue.h"
#include "units/fid.h"

namespace traguardo::catalogue {
namespace {

// clang-format off
constexpr NameRow kPhysicalQuantities[] = {
    {0,  "FID_PHI_UNDEFINED",          "---",   ""},
    {1,  "FID_PHI_PERCENT",            "%",     "Percent"},
    {2,  "FID_PHI_PERCENT_SEC_RATIO",  "%/s",   "Percent/sec"},
    {3,  "FID_PHI_ACCELERATION",       "Acc",   "Acceleration"},
    {4,  "FID_PHI_ANGLE",              "Ang",   "Angle"},
    {5,  "FID_PHI_ANGLE_SEC_RATIO",    "An/s",  "Ang Velocity"},
    {6,  "FID_PHI_CODE",               "Code",  "Code"},
    {7,  "FID_PHI_COORDINATE",         "Cord",  "Coordinate"},
    {8,  "FID_PHI_DISTANCE",           "Dist",  "Distance"},
    {9,  "FID_PHI_FREQUENCY",          "Freq",  "Frequency"},
    {10, "FID_PHI_MASS_SEC_RATIO",     "Ma/s",  "Mass Flow"},
    {11, "FID_PHI_NUMBER",             "#",     "Number"},
    {12, "FID_PHI_POSITION",           "Pos",   "Position"},
    {13, "FID_PHI_POWER",              "Pwr",   "Power"},
    {14, "FID_PHI_PRESSURE",           "Press", "Pressure"},
    {15, "FID_PHI_RPM",                "rpm",   "Engine RPM"},
    {16, "FID_PHI_SPEED",              "Spd",   "Speed"},
    {17, "FID_PHI_TEMPERATURE",        "Tmp",   "Temperature"},
    {18, "FID_PHI_TIME",               "Time",  "Time"},
    {19, "FID_PHI_TORQUE",             "Trq",   "Torque"},
    {20, "FID_PHI_VELOCITY",           "Vel",   "Speed (Velocity)"},
    {21, "FID_PHI_VOLTAGE",            "V",     "Voltage"},
    {22, "FID_PHI_VOLUME",             "Vol",   "Volume"},
    {23, "FID_PHI_VOLUME_LAP_PRODUCT", "Vo*L",  "Volume on lap"},
    {24, "FID_PHI_VOLUME_SEC_RATIO",   "Vo/s",  "Volume Flow"},
    {25, "FID_PHI_DATE",               "Date",  "Date"},
    {26, "FID_PHI_PACKAGE",            "Pckt",  "Packet"},
    {27, "FID_PHI_CURRENT",            "Curr",  "Current"},
    {28, "FID_PHI_CUSTOM",             "Cust",  "Custom"},
    {29, "FID_PHI_RPM_SEC",            "rpm/s", "RPM/sec"},
    {30, "FID_PHI_LAMBDA",             "Lbda",  "Lambda"},
    {31, "FID_PHI_GEAR",               "Gear",  "Gear"},
    {32, "FID_PHI_HI_VOLTAGE",         "HiV",   "High Voltage"},
    {33, "FID_PHI_BRIGHTNESS",         "Lum",   "Brightness"},
    {34, "FID_PHI_CONSUMO",            "Cons",  "Consumption"},
    {35, "FID_PHI_RESA_KM",            "Econ",  "Economy"},
    {36, "FID_PHI_GRIP",               "Grip",  "Grip"},
    {37, "FID_PHI_MAGNETIC_FIELD",     "mG",    "Magn Field"},
    {38, "FID_PHI_HI_RPM",             "krpm",  "High RPM"},
};

constexpr NameRow kObjects[] = {
    {0,  "FID_OBJ_UNDEFINED",                "---",    ""},
    {1,  "FID_OBJ_AIR",                      "Air",    "Air"},
    {2,  "FID_OBJ_ALTITUDE",                 "Alt",    "Altitude"},
    {3,  "FID_OBJ_BATTERY",                  "Bat",    "Battery"},
    {4,  "FID_OBJ_BRAKE_FLUID",              "BrkFl",  "Brake Fluid"},
    {5,  "FID_OBJ_BRAKE_LOAD",               "BrkLd",  "Brake Load"},
    {6,  "FID_OBJ_CLUTCH_ENGAGEMENT",        "CltEg",  "Clutch Use"},
    {7,  "FID_OBJ_DETONATION",               "Deto",   "Detonation"},
    {8,  "FID_OBJ_ENGINE_LOAD",              "EnLd",   "Engine Load"},
    {9,  "FID_OBJ_ENGINE_OUTPUT",            "EnOut",  "Engine Output"},
    {10, "FID_OBJ_ERROR",                    "Err",    "Error"},
    {11, "FID_OBJ_FUEL",                     "Fuel",   "Fuel"},
    {12, "FID_OBJ_GEAR",                     "Gear",   "Gear"},
    {13, "FID_OBJ_HEADING",                  "Head",   "Heading"},
    {14, "FID_OBJ_IGNITION_ADVANCE",         "IgAdv",  "Ignition Adv"},
    {15, "FID_OBJ_INJECTION",                "Inj",    "Injection"},
    {16, "FID_OBJ_INJECTION_ADVANCE",        "IjAdv",  "Injection Adv"},
    {17, "FID_OBJ_INJECTION_LOAD",           "IjLd",   "Injection Load"},
    {18, "FID_OBJ_LAMBDA",                   "Lambda", "Lambda"},
    {19, "FID_OBJ_LAP",                      "Lap",    "Lap"},
    {20, "FID_OBJ_LATITUDE",                 "Lati",   "Latitude"},
    {21, "FID_OBJ_LONGITUDE",                "Long",   "Longitude"},
    {22, "FID_OBJ_LOGGING_ODOMETER",         "LgOdo",  "Logg. Odometer"},
    {23, "FID_OBJ_OIL",                      "Oil",    "Oil"},
    {24, "FID_OBJ_PEDAL_LOAD",               "PdlLd",  "Pedal Load"},
    {25, "FID_OBJ_RATIO",                    "Ratio",  "Ratio"},
    {26, "FID_OBJ_SLIPPAGE",                 "Slip",   "Slip"},
    {27, "FID_OBJ_STEERING",                 "Steer",  "Steer"},
    {28, "FID_OBJ_SWITCH",                   "Swtch",  "Switch"},
    {29, "FID_OBJ_THROTTLE_LOAD",            "ThLd",   "Throttle Load"},
    {30, "FID_OBJ_THROTTLE_LOAD_DERIVATIVE", "ThLdD",  "Throttle Rate"},
    {31, "FID_OBJ_UNDERSTEER",               "Undst",  "Understeer"},
    {32, "FID_OBJ_VIDEORECORDING",           "VRec",   "Videorecording"},
    {33, "FID_OBJ_WATER",                    "Wat",    "Water"},
    {34, "FID_OBJ_X",                        "X",      "X axis"},
    {35, "FID_OBJ_Y",                        "Y",      "Y axis"},
    {36, "FID_OBJ_Z",                        "Z",      "Z axis"},
    {37, "FID_OBJ_HORIZONTAL_PLANE",         "HzPla",  "Horz Plane"},
    {38, "FID_OBJ_BEST_LAP",                 "BLap",   "Best Lap"},
    {39, "FID_OBJ_PREDICTIVE",               "Pred",   "Predictive"},
    {40, "FID_OBJ_SATELLITE",                "Sat",    "Satellite"},
    {41, "FID_OBJ_SLOPE",                    "Slp",    "Slope"},
    {42, "FID_OBJ_MASTER_CLOCK",             "MClk",   "Master Clock"},
    {43, "FID_OBJ_STATUS",                   "Stat",   "Status"},
    {44, "FID_OBJ_TOTAL_ODOMETER",           "TtOdo",  "Total Odometer"},
    {45, "FID_OBJ_RESETTABLE_ODOMETER",      "RsOdo",  "Trip Odometer"},
    {46, "FID_OBJ_RUNNING_LAP",              "RLap",   "Running Lap"},
    {67, "FID_OBJ_RUNNING_SESSION",          "RSess",  "Running Session"},
    {47, "FID_OBJ_SPLIT",                    "Split",  "Split"},
    {48, "FID_OBJ_BEST_SPLIT",               "BSplt",  "Best Split"},
    {49, "FID_OBJ_SHAFT",                    "Shaft",  "Shaft"},
    {50, "FID_OBJ_SESSION",                  "Sess",   "Session"},
    {51, "FID_OBJ_ACCURACY",                 "Accur",  "Accuracy"},
    {52, "FID_OBJ_CUSTOM",                   "Cust",   "Custom"},
    {53, "FID_OBJ_STATUS_ON",                "ON",     "ON Status"},
    {54, "FID_OBJ_STATUS_OFF",               "OF",     "OFF Status"},
    {55, "FID_OBJ_PREDICTIVE_VS_BEST_DIFF",  "PT+-",   "+- Run BestT"},
    {71, "FID_OBJ_DIFF_BEST_LAP_OF_TODAY",   "PT+-",   "+- Today BestT"},
    {72, "FID_OBJ_DIFF_BEST_LAP_TO_SPECIFY", "PT+-",   "+- BestT"},
    {56, "FID_OBJ_PREDICTIVE_VS_PREC_DIFF",  "PTDp",   "Predict +- PrevT"},
    {57, "FID_OBJ_PREDICTIVE_VS_REF_DIFF",   "PTDr",   "Predict +- RefT"},
    {58, "FID_OBJ_LAP_UNLINKED",             "LUnlk",  "Lap Unliked"},
    {59, "FID_OBJ_TO_GO",                    "ToGo",   "To Go"},
    {60, "FID_OBJ_DIFFERENZA_VS_FIRST",      "DFrst",  "Diff from First"},
    {61, "FID_OBJ_DIFFERENZA_VS_FRONT",      "DFrnt",  "Diff from Front"},
    {62, "FID_OBJ_DIFFERENZA_VS_REAR",       "DRear",  "Diff from Rear"},
    {63, "FID_OBJ_DIFFERENZA_VS_ME_PREV",    "DPrev",  "Diff from My Prev"},
    {64, "FID_OBJ_DIFFERENZA_VS_ME_BEST",    "DBest",  "Diff from My Best"},
    {65, "FID_OBJ_STANDING_POS",             "StPos",  "Standing Pos"},
    {66, "FID_OBJ_LAP_CAN",                  "CANLT",  "CAN Lap Time"},
};

constexpr NameRow kDetails[] = {
    {0,  "FID_DETTAGLI_UNDEF",               "---",   ""},
    {1,  "FID_DETTAGLI_LAPTIME",             "Lap",   "Lap"},
    {2,  "FID_DETTAGLI_DATETIME",            "DtTme", "Date Time"},
    {3,  "FID_DETTAGLI_GPS",                 "GPS",   "GPS"},
    {4,  "FID_DETTAGLI_MISURE_KESTREL_BASE", "Mis",   "Mis"},
    {5,  "FID_DETTAGLI_TOTAL_ODOMETER",      "ODO",   "ODO"},
    {6,  "FID_DETTAGLI_RESETTABLE_ODOMETER", "odo",   "odo"},
    {7,  "FID_DETTAGLI_MYLAPS_LAPTIME",      "MLaps", "MyLaps"},
    {10, "FID_DETTAGLI_BEST_TIME",           "bestT", "bestT"},
    {11, "FID_DETTAGLI_ROLL_TIME",           "rolT",  "rolT"},
};

constexpr NameRow kPacketSpecs[] = {
    {0, "FID_SPEC_GPS_ZEPNAVSOL",   "Zep", "Zep"},
    {1, "FID_SPEC_GPS_UBXNAVSOL",   "UBX", "UBX"},
    {0, "FID_SPEC_LAPTIME_ZEP2G",   "2G",  "2G"},
    {1, "FID_SPEC_LAPTIME_ZEP1G",   "1G",  "1G"},
    {2, "FID_SPEC_LAPTIME_ZEP2Gv2", "2G2", "2G2"},
    {3, "FID_SPEC_LAPTIME_ZEP2Gv3", "2G3", "2G3"},
};

constexpr NameRow kPositions[] = {
    {0,  "FID_POS_UNDEFINED",      "---",   ""},
    {1,  "FID_POS_ADMISSION",      "Adm",   "Admission"},
    {2,  "FID_POS_ZEPDEVICE",      "ZepDv", "Zep Device"},
    {3,  "FID_POS_BRAKE",          "Brk",   "Brake"},
    {4,  "FID_POS_CLUTCH",         "Clt",   "Clutch"},
    {5,  "FID_POS_ECU",            "ECU",   "ECU"},
    {6,  "FID_POS_ENGINE",         "Eng",   "Engine"},
    {7,  "FID_POS_ENVIRONMENT",    "Env",   "Environment"},
    {8,  "FID_POS_EXHAUST",        "Exh",   "Exhaust"},
    {9,  "FID_POS_GEARBOX",        "GBox",  "Gear Box"},
    {10, "FID_POS_STEERING",       "Steer", "Steer"},
    {11, "FID_POS_SUSPENSION",     "Susp",  "Suspension"},
    {12, "FID_POS_TRANSMISSION",   "Trans", "Transmission"},
    {13, "FID_POS_VEHICLE",        "Veh",   "Vehicle"},
    {14, "FID_POS_WHEEL",          "Wheel", "Wheel"},
    {15, "FID_POS_COOLING_SYSTEM", "ColSy", "Cooling System"},
    {16, "FID_POS_EVENT_RUN",      "EvtRu", "Event/Run"},
    {17, "FID_POS_AERODYNAMICS",   "Aero",  "Aerodynamics"},
    {18, "FID_POS_RACER",          "Racer", "Racer"},
    {19, "FID_POS_TRACK",          "Track", "Track"},
    {20, "FID_POS_CUSTOM",         "Cust",  "Custom"},
    {21, "FID_POS_GPS",            "GPS",   "GPS"},
    {22, "FID_POS_DIFFERENTIAL",   "Diff",  "Differential"},
};

constexpr NameRow kInOut[] = {
    {0, "FID_INOUT_UNDEF",  "",  ""},
    {1, "FID_INOUT_OUT",    "O", "Out"},
    {2, "FID_INOUT_IN",     "I", "In"},
    {3, "FID_INOUT_CENTER", "M", "Middle"},
};

constexpr NameRow kLeftRight[] = {
    {0, "FID_LEFTRIGHT_UNDEF",  "",  ""},
    {1, "FID_LEFTRIGHT_RIGHT",  "R", "Right"},
    {2, "FID_LEFTRIGHT_LEFT",   "L", "Left"},
    {3, "FID_LEFTRIGHT_CENTER", "C", "Center"},
};

constexpr NameRow kFrontRear[] = {
    {0, "FID_FRONTREAR_UNDEF",  "",  ""},
    {1, "FID_FRONTREAR_REAR",   "R", "Rear"},
    {2, "FID_FRONTREAR_FRONT",  "F", "Front"},
    {3, "FID_FRONTREAR_CENTER", "C", "xCenter"},
};

constexpr NameRow kUpDown[] = {
    {0, "FID_UPDOWN_UNDEF",  "",  ""},
    {1, "FID_UPDOWN_DOWN",   "D", "Down"},
    {2, "FID_UPDOWN_UP",     "U", "Up"},
    {3, "FID_UPDOWN_CENTER", "C", "zCenter"},
};

// clang-format on

}  // namespace

std::span<const NameRow> physical_quantities() {
  return kPhysicalQuantities;
}
std::span<const NameRow> objects() {
  return kObjects;
}
std::span<const NameRow> details() {
  return kDetails;
}
std::span<const NameRow> packet_specs() {
  return kPacketSpecs;
}
std::span<const NameRow> positions() {
  return kPositions;
}
std::span<const NameRow> in_out() {
  return kInOut;
}
std::span<const NameRow> left_right() {
  return kLeftRight;
}
std::span<const NameRow> front_rear() {
  return kFrontRear;
}
std::span<const NameRow> up_down() {
  return kUpDown;
}

}  // namespace traguardo::catalogue
