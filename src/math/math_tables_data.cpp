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

// code, name, parameters, text
constexpr SFunctionRow kFunctions[] = {
    { 64, "sqrt",          1, "(ChanOrValGreaterOrEqualToZero)"},
    { 65, "exp",           1, "(ChanOrVal)"},
    { 66, "log",           1, "(ChanOrValGreaterThanZero)"},
    { 67, "ln",            1, "(ChanOrValGreaterThanZero)"},
    { 68, "sin",           1, "(ChanOrValRadians)"},
    { 69, "cos",           1, "(ChanOrValRadians)"},
    { 70, "tan",           1, "(ChanOrValRadians)"},
    { 71, "asin",          1, "(ChanOrValBetweenMinusOneAndPlusOne)"},
    { 72, "acos",          1, "(ChanOrValBetweenMinusOneAndPlusOne)"},
    { 73, "atan",          1, "(ChanOrValBetweenMinusOneAndPlusOne)"},
    { 74, "abs",           1, "(ChanOrVal)"},
    { 75, "deriv",         1, "(ChanOrVal)"},
    { 76, "integ",         1, "(ChanOrVal)"},
    { 77, "lap_integ",     1, "(ChanOrVal)"},
    { 78, "min",           2, "(ChanOrVal,ChanOrVal)"},
    { 79, "med",           2, "(ChanOrVal,ChanOrVal)"},
    { 80, "max",           2, "(ChanOrVal,ChanOrVal)"},
    { 81, "high_pass",     2, "(ChanOrVal,LowThreshold)"},
    { 82, "low_pass",      2, "(ChanOrVal,HighThreshold)"},
    { 83, "band_pass",     3, "(ChanOrVal,LowThreshold,HighThreshold)"},
    { 84, "bit_and",       2, "(ChanOrVal,ChanOrVal)"},
    { 85, "bit_or",        2, "(ChanOrVal,ChanOrVal)"},
    { 86, "bit_xor",       2, "(ChanOrVal,ChanOrVal)"},
    { 88, "time",          0, ""},
    { 89, "bike_angle",    2, "(SPEED,GYRO)"},
    { 90, "gear",          4, "(RPM,SPEED,minGearN,maxGearN)"},
    { 91, "slip",          2, "(RPM,SPEED)"},
    { 92, "bike_acclat",   2, "(SPEED,GYRO)"},
    { 93, "bike_cornrad",  2, "(SPEED,GYRO)"},
    { 94, "GT",            2, "(Greater,than)"},
    { 95, "GE",            2, "(GreaterOrEqual,to)"},
    { 96, "LT",            2, "(Lower,than)"},
    { 97, "LE",            2, "(LowerOrEqual,to)"},
    { 98, "EQ",            2, "(Equal,to)"},
    { 99, "NE",            2, "(Different,from)"},
    {100, "IF",            3, "(condition,ifTrue,ifFalse)"},
    {101, "atan2",         2, "(ChanOrVal_X,ChanOrVal_Y)"},
    {127, "",              0, "()"},
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
