/* SPDX-License-Identifier: MIT */
/* A host in C: one channel and the GPS speed within one lap. Plain C89. */
#include <stdio.h>
#include <stdlib.h>
#include <traguardo/exports.h>

static void show(const char* name, const char* unit, const double* times, const double* values, int count) {
  if (count <= 0) return;
  printf("%s: %d samples, first %.3f %s at %.3f s, last %.3f %s at %.3f s\n", name, count, values[0], unit, times[0],
         values[count - 1], unit, times[count - 1]);
}

int main(int argc, char** argv) {
  int file, lap, channel, count;
  double *times, *values;

  file = argc == 4 ? open_file(argv[1]) : 0;
  if (file <= 0) {
    fprintf(stderr, "usage: lap FILE LAP CHANNEL (indexes from 0)\n");
    return 1;
  }
  lap = atoi(argv[2]);
  channel = atoi(argv[3]);

  count = get_lap_channel_samples_count(file, lap, channel);
  times = count > 0 ? malloc((size_t)count * sizeof *times) : NULL;
  values = count > 0 ? malloc((size_t)count * sizeof *values) : NULL;
  if (times != NULL && values != NULL) {
    count = get_lap_channel_samples(file, lap, channel, times, values, count);
    show(get_channel_name(file, channel), get_channel_units(file, channel), times, values, count);
  }
  free(times);
  free(values);

  /* The derived GPS channels are worked out when their number is asked for; channel 0 is the speed. */
  count = get_GPS_channels_count(file) > 0 ? get_lap_GPS_channel_samples_count(file, lap, 0) : 0;
  times = count > 0 ? malloc((size_t)count * sizeof *times) : NULL;
  values = count > 0 ? malloc((size_t)count * sizeof *values) : NULL;
  if (times != NULL && values != NULL) {
    count = get_lap_GPS_channel_samples(file, lap, 0, times, values, count);
    show(get_GPS_channel_name(file, 0), get_GPS_channel_units(file, 0), times, values, count);
  }
  free(times);
  free(values);
  close_file_i(file);
  return 0;
}
