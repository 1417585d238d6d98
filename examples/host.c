/* SPDX-License-Identifier: MIT */
/* A host of the library: opens a session file and prints its channels and laps. Plain C89. */
#include <stdio.h>
#include <traguardo/exports.h>

int main(int argc, char** argv) {
  int file, i;
  double start, duration;

  file = argc == 2 ? open_file(argv[1]) : 0;
  if (file <= 0) {
    fprintf(stderr, "usage: host FILE (a session file that can be read)\n");
    return 1;
  }
  for (i = 0; i < get_channels_count(file); ++i) {
    printf("%-32s %-8s %d samples\n", get_channel_name(file, i), get_channel_units(file, i),
           get_channel_samples_count(file, i));
  }
  for (i = 0; get_lap_info(file, i, &start, &duration) == 1; ++i) {
    printf("lap %d: from %.3f s, %.3f s\n", i + 1, start, duration);
  }
  close_file_i(file);
  return 0;
}
