// SPDX-License-Identifier: MIT
// The function word of a channel: what it measures, of what, and where, packed in 32 bits.
//
// units/ holds this taxonomy with its catalogues, the units that a user sees, sample formats, channel records and the
// converters from a raw sample to a value or a text. It includes support/ and geodesy/; the logger and legacy readers,
// the math channels and everything above them call it, mostly by way of CFunzioni (functions.h) and
// CUserUnitsOfMeasureMgr (user_units_manager.h).
#pragma once

#include "support/bytes.h"

namespace traguardo {

// The fields of a function word. A zero field means undefined.
namespace fid {
constexpr u32 quantity(u32 word) {
  return word & 0x7F;
}
// For packets (FID_PHI_PACKAGE) the object field holds a FID_DETTAGLI_* value.
constexpr u32 object(u32 word) {
  return word >> 7 & 0xFF;
}
// For packets the position field may hold a FID_SPEC_* value.
constexpr u32 position(u32 word) {
  return word >> 15 & 0x1F;
}
constexpr u32 in_out(u32 word) {
  return word >> 20 & 0x3;
}
// Set: bits 23 to 28 hold a number instead of the three side fields.
constexpr bool is_numbered(u32 word) {
  return (word >> 22 & 0x1) != 0;
}
constexpr u32 left_right(u32 word) {
  return word >> 23 & 0x3;
}
constexpr u32 front_rear(u32 word) {
  return word >> 25 & 0x3;
}
constexpr u32 up_down(u32 word) {
  return word >> 27 & 0x3;
}
constexpr u32 number(u32 word) {
  return word >> 23 & 0x3F;
}

constexpr u32 make(u32 quantity, u32 object, u32 position = 0) {
  return quantity | object << 7 | position << 15;
}

// True if each non-zero field of the pattern equals the word's field; the pattern 0 matches nothing. `strict` also
// compares the fields behind the position.
bool matches(u32 word, u32 pattern, bool strict = false);
}  // namespace fid

// Physical quantity.
enum FidPhi : u32 {
  FID_PHI_UNDEFINED = 0,
  FID_PHI_PERCENT = 1,
  FID_PHI_PERCENT_SEC_RATIO = 2,
  FID_PHI_ACCELERATION = 3,
  FID_PHI_ANGLE = 4,
  FID_PHI_ANGLE_SEC_RATIO = 5,
  FID_PHI_CODE = 6,
  FID_PHI_COORDINATE = 7,
  FID_PHI_DISTANCE = 8,
  FID_PHI_FREQUENCY = 9,
  FID_PHI_MASS_SEC_RATIO = 10,
  FID_PHI_NUMBER = 11,
  FID_PHI_POSITION = 12,
  FID_PHI_POWER = 13,
  FID_PHI_PRESSURE = 14,
  FID_PHI_RPM = 15,
  FID_PHI_SPEED = 16,
  FID_PHI_TEMPERATURE = 17,
  FID_PHI_TIME = 18,
  FID_PHI_TORQUE = 19,
  FID_PHI_VELOCITY = 20,
  FID_PHI_VOLTAGE = 21,
  FID_PHI_VOLUME = 22,
  FID_PHI_VOLUME_LAP_PRODUCT = 23,
  FID_PHI_VOLUME_SEC_RATIO = 24,
  FID_PHI_DATE = 25,
  FID_PHI_PACKAGE = 26,
  FID_PHI_CURRENT = 27,
  FID_PHI_CUSTOM = 28,
  FID_PHI_RPM_SEC = 29,
  FID_PHI_LAMBDA = 30,
  FID_PHI_GEAR = 31,
  FID_PHI_HI_VOLTAGE = 32,
  FID_PHI_BRIGHTNESS = 33,
  FID_PHI_CONSUMO = 34,
  FID_PHI_RESA_KM = 35,
  FID_PHI_GRIP = 36,
  FID_PHI_MAGNETIC_FIELD = 37,
  FID_PHI_HI_RPM = 38,
};

// Object: what is measured.
enum FidObj : u32 {
  FID_OBJ_UNDEFINED = 0,
  FID_OBJ_AIR = 1,
  FID_OBJ_ALTITUDE = 2,
  FID_OBJ_BATTERY = 3,
  FID_OBJ_BRAKE_FLUID = 4,
  FID_OBJ_BRAKE_LOAD = 5,
  FID_OBJ_CLUTCH_ENGAGEMENT = 6,
  FID_OBJ_DETONATION = 7,
  FID_OBJ_ENGINE_LOAD = 8,
  FID_OBJ_ENGINE_OUTPUT = 9,
  FID_OBJ_ERROR = 10,
  FID_OBJ_FUEL = 11,
  FID_OBJ_GEAR = 12,
  FID_OBJ_HEADING = 13,
  FID_OBJ_IGNITION_ADVANCE = 14,
  FID_OBJ_INJECTION = 15,
  FID_OBJ_INJECTION_ADVANCE = 16,
  FID_OBJ_INJECTION_LOAD = 17,
  FID_OBJ_LAMBDA = 18,
  FID_OBJ_LAP = 19,
  FID_OBJ_LATITUDE = 20,
  FID_OBJ_LONGITUDE = 21,
  FID_OBJ_LOGGING_ODOMETER = 22,
  FID_OBJ_OIL = 23,
  FID_OBJ_PEDAL_LOAD = 24,
  FID_OBJ_RATIO = 25,
  FID_OBJ_SLIPPAGE = 26,
  FID_OBJ_STEERING = 27,
  FID_OBJ_SWITCH = 28,
  FID_OBJ_THROTTLE_LOAD = 29,
  FID_OBJ_THROTTLE_LOAD_DERIVATIVE = 30,
  FID_OBJ_UNDERSTEER = 31,
  FID_OBJ_VIDEORECORDING = 32,
  FID_OBJ_WATER = 33,
  FID_OBJ_X = 34,
  FID_OBJ_Y = 35,
  FID_OBJ_Z = 36,
  FID_OBJ_HORIZONTAL_PLANE = 37,
  FID_OBJ_BEST_LAP = 38,
  FID_OBJ_PREDICTIVE = 39,
  FID_OBJ_SATELLITE = 40,
  FID_OBJ_SLOPE = 41,
  FID_OBJ_MASTER_CLOCK = 42,
  FID_OBJ_STATUS = 43,
  FID_OBJ_TOTAL_ODOMETER = 44,
  FID_OBJ_RESETTABLE_ODOMETER = 45,
  FID_OBJ_RUNNING_LAP = 46,
  FID_OBJ_SPLIT = 47,
  FID_OBJ_BEST_SPLIT = 48,
  FID_OBJ_SHAFT = 49,
  FID_OBJ_SESSION = 50,
  FID_OBJ_ACCURACY = 51,
  FID_OBJ_CUSTOM = 52,
  FID_OBJ_STATUS_ON = 53,
  FID_OBJ_STATUS_OFF = 54,
  FID_OBJ_PREDICTIVE_VS_BEST_DIFF = 55,
  FID_OBJ_PREDICTIVE_VS_PREC_DIFF = 56,
  FID_OBJ_PREDICTIVE_VS_REF_DIFF = 57,
  FID_OBJ_LAP_UNLINKED = 58,
  FID_OBJ_TO_GO = 59,
  FID_OBJ_DIFFERENZA_VS_FIRST = 60,
  FID_OBJ_DIFFERENZA_VS_FRONT = 61,
  FID_OBJ_DIFFERENZA_VS_REAR = 62,
  FID_OBJ_DIFFERENZA_VS_ME_PREV = 63,
  FID_OBJ_DIFFERENZA_VS_ME_BEST = 64,
  FID_OBJ_STANDING_POS = 65,
  FID_OBJ_LAP_CAN = 66,
  FID_OBJ_RUNNING_SESSION = 67,
  FID_OBJ_DIFF_BEST_LAP_OF_TODAY = 71,
  FID_OBJ_DIFF_BEST_LAP_TO_SPECIFY = 72,
};

// Detail: the kind of a packet, in the object field.
enum FidDettagli : u32 {
  FID_DETTAGLI_UNDEF = 0,
  FID_DETTAGLI_LAPTIME = 1,
  FID_DETTAGLI_DATETIME = 2,
  FID_DETTAGLI_GPS = 3,
  FID_DETTAGLI_MISURE_KESTREL_BASE = 4,
  FID_DETTAGLI_TOTAL_ODOMETER = 5,
  FID_DETTAGLI_RESETTABLE_ODOMETER = 6,
  FID_DETTAGLI_MYLAPS_LAPTIME = 7,
  FID_DETTAGLI_BEST_TIME = 10,
  FID_DETTAGLI_ROLL_TIME = 11,
};

// Layout of a GPS or lap time packet, in the position field.
enum FidSpec : u32 {
  FID_SPEC_GPS_ZEPNAVSOL = 0,
  FID_SPEC_GPS_UBXNAVSOL = 1,
  FID_SPEC_LAPTIME_ZEP2G = 0,
  FID_SPEC_LAPTIME_ZEP1G = 1,
  FID_SPEC_LAPTIME_ZEP2Gv2 = 2,
  FID_SPEC_LAPTIME_ZEP2Gv3 = 3,
};

// Position: where it is measured.
enum FidPos : u32 {
  FID_POS_UNDEFINED = 0,
  FID_POS_ADMISSION = 1,
  FID_POS_ZEPDEVICE = 2,
  FID_POS_BRAKE = 3,
  FID_POS_CLUTCH = 4,
  FID_POS_ECU = 5,
  FID_POS_ENGINE = 6,
  FID_POS_ENVIRONMENT = 7,
  FID_POS_EXHAUST = 8,
  FID_POS_GEARBOX = 9,
  FID_POS_STEERING = 10,
  FID_POS_SUSPENSION = 11,
  FID_POS_TRANSMISSION = 12,
  FID_POS_VEHICLE = 13,
  FID_POS_WHEEL = 14,
  FID_POS_COOLING_SYSTEM = 15,
  FID_POS_EVENT_RUN = 16,
  FID_POS_AERODYNAMICS = 17,
  FID_POS_RACER = 18,
  FID_POS_TRACK = 19,
  FID_POS_CUSTOM = 20,
  FID_POS_GPS = 21,
  FID_POS_DIFFERENTIAL = 22,
};

enum FidInOut : u32 {
  FID_INOUT_UNDEF = 0,
  FID_INOUT_OUT = 1,
  FID_INOUT_IN = 2,
  FID_INOUT_CENTER = 3,
};

enum FidLeftRight : u32 {
  FID_LEFTRIGHT_UNDEF = 0,
  FID_LEFTRIGHT_RIGHT = 1,
  FID_LEFTRIGHT_LEFT = 2,
  FID_LEFTRIGHT_CENTER = 3,
};

enum FidFrontRear : u32 {
  FID_FRONTREAR_UNDEF = 0,
  FID_FRONTREAR_REAR = 1,
  FID_FRONTREAR_FRONT = 2,
  FID_FRONTREAR_CENTER = 3,
};

enum FidUpDown : u32 {
  FID_UPDOWN_UNDEF = 0,
  FID_UPDOWN_DOWN = 1,
  FID_UPDOWN_UP = 2,
  FID_UPDOWN_CENTER = 3,
};

}  // namespace traguardo
