/* SPDX-License-Identifier: MIT */
#include <stdio.h>
#include <traguardo/exports.h>

int main(void) {
  printf("%s %s\n", get_library_date(), get_library_time());
  return open_file("missing.qlt") == 0 ? 0 : 1;
}
