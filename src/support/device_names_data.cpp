// SPDX-License-Identifier: MIT
#include "support/device_names.h"

namespace traguardo {
namespace {

// Loggers: every code that decides how a session is laid out or computed, and the ends of their band. Devices: the ends
// of the other bands.
// clang-format off
constexpr DeviceNameRow kDeviceNames[] = {
    {    1, L"Data logger 1"},
    {   18, L"Data logger 18"},
    {   21, L"Data logger 21"},
    {   22, L"Data logger 22"},
    {   23, L"Data logger 23"},
    {   24, L"Data logger 24"},
    {   25, L"Data logger 25"},
    {   26, L"Data logger 26"},
    {   27, L"Data logger 27"},
    {   28, L"Data logger 28"},
    {   29, L"Data logger 29"},
    {   30, L"Data logger 30"},
    {   31, L"Data logger 31"},
    {   32, L"Data logger 32"},
    {   33, L"Data logger 33"},
    {   34, L"Data logger 34"},
    {   35, L"Data logger 35"},
    {   36, L"Data logger 36"},
    {   37, L"Data logger 37"},
    {   38, L"Data logger 38"},
    {   41, L"Data logger 41"},
    {   42, L"Data logger 42"},
    {   43, L"Data logger 43"},
    {   44, L"Data logger 44"},
    {   46, L"Data logger 46"},
    {   48, L"Data logger 48"},
    {   49, L"Data logger 49"},
    {   50, L"Data logger 50"},
    {   56, L"Data logger 56"},
    {   59, L"Data logger 59"},
    {   60, L"Data logger 60"},
    {   70, L"Data logger 70"},
    {   71, L"Data logger 71"},
    {   81, L"Data logger 81"},
    {   82, L"Data logger 82"},
    {   83, L"Data logger 83"},
    {  101, L"Device 101"},
    {  112, L"Device 112"},
    {  301, L"Device 301"},
    {  317, L"Data logger 317"},
    {  318, L"Data logger 318"},
    {  401, L"Device 401"},
    {  410, L"Device 410"},
    {  610, L"Device 610"},
    { 1052, L"Device 1052"},
    { 2002, L"Device 2002"},
    { 2104, L"Device 2104"},
    { 5000, L"Device 5000"},
    { 5007, L"Device 5007"},
    { 9999, L"Data logger 9999"},
    {10001, L"Data logger 10001"},
    {10002, L"Data logger 10002"},
    {10103, L"Device 10103"},
    {10201, L"Device 10201"},
    {10301, L"Device 10301"},
    {20001, L"Device 20001"},
};
// clang-format on

}  // namespace

std::span<const DeviceNameRow> device_names() {
  return kDeviceNames;
}

}  // namespace traguardo
