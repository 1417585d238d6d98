// SPDX-License-Identifier: MIT
#include "legacy/file/wmp_messages_data.h"

namespace traguardo {
namespace {

// clang-format off
constexpr WmpMessageRow kWmpMessages[] = {
    // code, id, text, table
    { 0, "MSG_ALL_OK",                "All OK.",                                                                              "MSG_TABLE"},
    { 1, "MSGAPP_ERROR_OPENING_FILE", "Error opening file.",                                                                  "MSG_TABLE"},
    { 2, "MSGAPP_UNKNOWN_VERSION",    "File has an unknown version.",                                                         "MSG_TABLE"},
    { 3, "MSG_CHECKSUM_ERROR",        "Checksum error while reading the wmp file. Impossible to open it.",                    "MSG_TABLE"},
    { 4, "MSGAPP_UNKNOWN_SIGNATURE",  "File has an unknown signature.",                                                       "MSG_TABLE"},
    { 5, "MSGAPP_WRONG_LENGTH",       "File has a wrong length stored.",                                                      "MSG_TABLE"},
    { 6, "MSGAPP_READONLY",           "File has 'Read Only' attribute checked. Remove such attribute to be able to open it.", "MSG_TABLE"},
    { 7, "MSGAPP_NOLAPSINCLUDED",     "It's impossible to open test as it doesn't include any lap.",                          "MSG_TABLE"},
    { 8, "MSGAPP_NOMEASUREINCLUDED",  "It's impossible to open test as it doesn't include any measure.",                      "MSG_TABLE"},
    { 9, "MSGAPP_NORUNINCLUDED",      "It's impossible to open test as it doesn't include any run.",                          "MSG_TABLE"},
    {10, "MSGAPP_NODATAINCLUDED",     "It's impossible to open test as it doesn't include any data.",                         "MSG_TABLE"},
    {11, "MSGAPP_ERRORWRITING",       "Error writing file.",                                                                  "MSG_TABLE"},
    {12, "MSGAPP_MODIFYING_LAPS",     "Error modifying laps.",                                                                "MSG_TABLE"},
    {13, "MSG_IMPOSSIBLE",            "Test data make impossible to move beacon.",                                            "MSG_TABLE"},
    {14, "MSG_ZERO_SHIFT",            "Zero distance shift requested.",                                                       "MSG_TABLE"},
    {15, "MSG_TOO_FEW_LAPS",          "Too few laps to be able to move beacon.",                                              "MSG_TABLE"},
    {16, "MSG_WRONG_DISTCODE",        "Reference speed is not selected.",                                                     "MSG_TABLE"},
    {17, "MSG_GENERIC_ERROR",         "Generic error in WMP operation.",                                                      "MSG_TABLE"},
    {18, "MSG_BAD_PARAM",             "Error opening file: missing param.",                                                   "MSG_TABLE"},
    {19, "MSG_IMPORT_GENERIC",        "Generic error.",                                                                       "MSG_TABLE"},
    {20, "MSGAPP_ERROR_OPENING_FILE", "Error opening file.",                                                                  "MSG_TABLE"},
    {21, "MSG_IMPORT_VUOTO",          "File is empty.",                                                                       "MSG_TABLE"},
    {22, "MSG_IMPORT_POCHEMIS",       "Measure number is lower than 2.",                                                      "MSG_TABLE"},
    {23, "MSG_IMPORT_POCHICAM",       "Samples number is lower than 2.",                                                      "MSG_TABLE"},
    {24, "MSG_IMPORT_NO_TD",          "Time or distance reference are missing.",                                              "MSG_TABLE"},
    {25, "MSG_IMPORT_FREQ_NC",        "Uncompatible sampling frequency.",                                                     "MSG_TABLE"},
};

constexpr WmpMessageRow kWmpDumpMessages[] = {
    // code, id, text, table
    {   0, "MSG_ERR_OK",        "All OK.",                                                                        "MSG_TABLE"},
    {1001, "MSGAPP_FILENOCHAN", "The file has no channels stored.",                                               "MSG_TABLE"},
    {1002, "MSGAPP_INSUFF_TRY", "Insufficient memory to perform the operation. Try to close other applications.", "MSG_TABLE"},
    {1003, "MSG_ERR_OPENING",   "Error opening the file.",                                                        "MSG_TABLE"},
    {1004, "MSG_ENDTABLE",      "Generic error in NAV7 files management.",                                        "MSG_TABLE"},
};
// clang-format on

}  // namespace

std::span<const WmpMessageRow> wmp_messages() {
  return kWmpMessages;
}
std::span<const WmpMessageRow> wmp_dump_messages() {
  return kWmpDumpMessages;
}

}  // namespace traguardo
