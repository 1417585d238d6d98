/* SPDX-License-Identifier: MIT */
/* The public header from C: every function is called by its own name and type, and the codes for misuse are as told. */
#include <stdio.h>
#include <string.h>
#include <traguardo/exports.h>

static int failures = 0;

static void expect(int good, const char* what) {
  if (!good) {
    ++failures;
    printf("FAILED: %s\n", what);
  }
}

int main(void) {
  double t[1], v[1];
  expect(open_file("no-such-file.qlt") == 0, "a missing file gives 0");
  expect(open_file("no-such-file.txt") == -2, "a file of no kind gives -2");
  expect(close_file_i(1) == -1, "closing what is not open gives -1");
  expect(close_file_n("no-such-file.qlt") == -2, "closing an unknown path gives -2");
  expect(strlen(get_library_date()) == 11, "the date has 11 characters");
  expect(strlen(get_library_time()) == 8, "the time has 8 characters");
  expect(get_vehicle_name(1) == NULL, "vehicle");
  expect(get_track_name(1) == NULL, "track");
  expect(get_racer_name(1) == NULL, "racer");
  expect(get_championship_name(1) == NULL, "championship");
  expect(get_venue_type_name(1) == NULL, "venue type");
  expect(get_date_and_time(1) == NULL, "date and time");
  expect(get_laps_count(1) == -1, "laps");
  expect(get_lap_info(1, 0, t, v) == -1, "lap info");
  expect(get_channels_count(1) == -1, "channels");
  expect(get_channel_name(1, 0) == NULL, "channel name");
  expect(get_channel_units(1, 0) == NULL, "channel units");
  expect(get_channel_samples_count(1, 0) == -1, "samples count");
  expect(get_channel_samples(1, 0, t, v, 1) == -1, "samples");
  expect(get_lap_channel_samples_count(1, 0, 0) == -1, "lap samples count");
  expect(get_lap_channel_samples(1, 0, 0, t, v, 1) == -1, "lap samples");
  expect(get_GPS_channels_count(1) == -1, "GPS channels");
  expect(get_GPS_channel_name(1, 0) == NULL, "GPS name");
  expect(get_GPS_channel_units(1, 0) == NULL, "GPS units");
  expect(get_GPS_channel_samples_count(1, 0) == -1, "GPS samples count");
  expect(get_GPS_channel_samples(1, 0, t, v, 1) == -1, "GPS samples");
  expect(get_lap_GPS_channel_samples_count(1, 0, 0) == -1, "GPS lap count");
  expect(get_lap_GPS_channel_samples(1, 0, 0, t, v, 1) == -1, "GPS lap");
  expect(get_GPS_raw_channels_count(1) == -1, "raw channels");
  expect(get_GPS_raw_channel_name(1, 0) == NULL, "raw name");
  expect(get_GPS_raw_channel_units(1, 0) == NULL, "raw units");
  expect(get_GPS_raw_channel_samples_count(1, 0) == -1, "raw samples count");
  expect(get_GPS_raw_channel_samples(1, 0, t, v, 1) == -1, "raw samples");
  expect(get_lap_GPS_raw_channel_samples_count(1, 0, 0) == -1, "raw lap count");
  expect(get_lap_GPS_raw_channel_samples(1, 0, 0, t, v, 1) == -1, "raw lap");
  printf(failures == 0 ? "all 34 functions answer from C\n" : "%d failures\n", failures);
  return failures == 0 ? 0 : 1;
}
