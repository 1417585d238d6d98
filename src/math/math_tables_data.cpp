// SPDX-License-Identifier: MIT
#include "math/math_tables.h"

namespace traguardo {
namespace {

// clang-format off
// code, character
constexpr SCharacterRow kSeparators[] = {
    {  1, '\0'},
    {  2, ','},
    {  3, '('},
    {  4, ')'},
    {127, '\0'},
};

// The code of an operator is a printable character itself: read as bytes the table is " +!-\"*#/$^".
// code, character
constexpr SCharacterRow kOperators[] = {
    { 32, '+'},
    { 33, '-'},
    { 34, '*'},
    { 35, '/'},
    { 36, '^'},
    {127, '\0'},
};

// code, parameters, name, text
constexpr SFunctionRow kFunctions[] = {
    { 64, 1, "sqrt",         "(ChanOrValGreaterOrEqualToZero)"},
    { 65, 1, "exp",          "(ChanOrVal)"},
    { 66, 1, "log",          "(ChanOrValGreaterThanZero)"},
    { 67, 1, "ln",           "(ChanOrValGreaterThanZero)"},
    { 68, 1, "sin",          "(ChanOrValRadians)"},
    { 69, 1, "cos",          "(ChanOrValRadians)"},
    { 70, 1, "tan",          "(ChanOrValRadians)"},
    { 71, 1, "asin",         "(ChanOrValBetweenMinusOneAndPlusOne)"},
    { 72, 1, "acos",         "(ChanOrValBetweenMinusOneAndPlusOne)"},
    { 73, 1, "atan",         "(ChanOrValBetweenMinusOneAndPlusOne)"},
    { 74, 1, "abs",          "(ChanOrVal)"},
    { 75, 1, "deriv",        "(ChanOrVal)"},
    { 76, 1, "integ",        "(ChanOrVal)"},
    { 77, 1, "lap_integ",    "(ChanOrVal)"},
    { 78, 2, "min",          "(ChanOrVal,ChanOrVal)"},
    { 79, 2, "med",          "(ChanOrVal,ChanOrVal)"},
    { 80, 2, "max",          "(ChanOrVal,ChanOrVal)"},
    { 81, 2, "high_pass",    "(ChanOrVal,LowThreshold)"},
    { 82, 2, "low_pass",     "(ChanOrVal,HighThreshold)"},
    { 83, 3, "band_pass",    "(ChanOrVal,LowThreshold,HighThreshold)"},
    { 84, 2, "bit_and",      "(ChanOrVal,ChanOrVal)"},
    { 85, 2, "bit_or",       "(ChanOrVal,ChanOrVal)"},
    { 86, 2, "bit_xor",      "(ChanOrVal,ChanOrVal)"},
    { 88, 0, "time",         ""},
    { 89, 2, "bike_angle",   "(SPEED,GYRO)"},
    { 90, 4, "gear",         "(RPM,SPEED,minGearN,maxGearN)"},
    { 91, 2, "slip",         "(RPM,SPEED)"},
    { 92, 2, "bike_acclat",  "(SPEED,GYRO)"},
    { 93, 2, "bike_cornrad", "(SPEED,GYRO)"},
    { 94, 2, "GT",           "(Greater,than)"},
    { 95, 2, "GE",           "(GreaterOrEqual,to)"},
    { 96, 2, "LT",           "(Lower,than)"},
    { 97, 2, "LE",           "(LowerOrEqual,to)"},
    { 98, 2, "EQ",           "(Equal,to)"},
    { 99, 2, "NE",           "(Different,from)"},
    {100, 3, "IF",           "(condition,ifTrue,ifFalse)"},
    {101, 2, "atan2",        "(ChanOrVal_X,ChanOrVal_Y)"},
    {127, 0, "",             "()"},
};

// MSG_TABLE_MATH. The last row stands for every code without a row.
// code, identifier, text
constexpr SMessageRow kMessages[] = {
    {  0, "ID_MSGAPP_252", "Ok, the formule has been correctly interpreted                "},
    {100, "ID_MSGAPP_253", "Error: unknown symbol                                         "},
    {101, "ID_MSGAPP_254", "Error: the memory is not enough to interpret the formule      "},
    {102, "ID_MSGAPP_255", "Error: an identifier, a constant or a symbol is unknown       "},
    {103, "ID_MSGAPP_256", "Error: the open and closed brackets don't match               "},
    {104, "ID_MSGAPP_257", "Error: there is a closed bracket without an opened one        "},
    {105, "ID_MSGAPP_258", "Error: the number of parameters of the function is not correct"},
    {106, "ID_MSGAPP_259", "Error: a closed bracket is needed                             "},
    {107, "ID_MSGAPP_260", "Error: expression closing brackets not found                  "},
    {108, "ID_MSGAPP_261", "Error: the element is not correct                             "},
    {109, "ID_MSGAPP_262", "Error: a separation comma is needed                           "},
    {110, "ID_MSGAPP_263", "Error: the formule string is empty                            "},
    { -1, "ID_MSGAPP_264", "General error: it is not possible to interpretate the formula "},
};
// clang-format on

}  // namespace

std::span<const SCharacterRow> separator_rows() {
  return kSeparators;
}
std::span<const SCharacterRow> operator_rows() {
  return kOperators;
}
std::span<const SFunctionRow> function_rows() {
  return kFunctions;
}
std::span<const SMessageRow> math_messages() {
  return kMessages;
}

}  // namespace traguardo
