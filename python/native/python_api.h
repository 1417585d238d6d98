/* SPDX-License-Identifier: MIT */
/*
 * What the Python package asks of its library beside the functions of exports.h: why a file could not be opened, what a
 * channel's record says, formulas, values on other times, and samples as Arrow arrays. Plain C for ctypes; the package
 * and its library go together, so this may change with any version. No exception leaves a function. Calls hold no lock
 * of the interpreter, and any thread may make them.
 */
#ifndef TRAGUARDO_PYTHON_API_H
#define TRAGUARDO_PYTHON_API_H

#include <stdint.h>

#include "native/arrow_abi.h"

#if defined(_WIN32)
#define TRAGUARDO_PYTHON_API __declspec(dllexport)
#else
#define TRAGUARDO_PYTHON_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* Why a file could not be opened. */
enum {
  TG_OPEN_NO_FILE = 1,
  TG_OPEN_NOT_READABLE,
  TG_OPEN_UNKNOWN_KIND,
  TG_OPEN_NO_SESSION,
  TG_OPEN_NO_STORE,
  TG_OPEN_NO_MEMORY,
  TG_OPEN_NO_TRACE
};

/* The folder of configuration files where the environment names none. */
TRAGUARDO_PYTHON_API void tg_choose_home(const char* folder);
/* Whether new files can be made in a folder. */
TRAGUARDO_PYTHON_API int tg_can_make_files_in(const char* folder);
/* Where the trace of a .wmp is sought; the bytes written without the NUL that follows them, at most room - 1. */
TRAGUARDO_PYTHON_API int tg_trace_path(const char* session, char* out, int room);

/* As open_file. store_folder: where samples go if the environment names no folder; null for the session's own. */
TRAGUARDO_PYTHON_API int tg_open(const char* path, int recover_clock, const char* store_folder, int* failure);
/* The file closes when tg_close was called once more often than tg_keep. */
TRAGUARDO_PYTHON_API void tg_keep(int handle);
TRAGUARDO_PYTHON_API void tg_close(int handle);

/* Whether a mark closed the lap: 1, 0. */
TRAGUARDO_PYTHON_API int tg_lap_finished(int handle, int lap);
/*
 * Rate in Hz (0 where none is told), the time of the last sample, whether a value holds until the next one, whether it
 * is a speed. 1, or 0.
 */
TRAGUARDO_PYTHON_API int tg_channel_record(int handle, int channel, double* rate_hz, double* end_s, int* is_held,
                                           int* is_speed);

/*
 * The values at `count` times that never fall, of samples whose times never fall: the last sample's at or before each
 * time (held), or on the line between its two neighbours; not a number before the first sample, and behind the last
 * where not held. 1; 0 if the times of the samples fall somewhere, with `out` partly written.
 */
TRAGUARDO_PYTHON_API int tg_values_at(const double* times, const double* values, int64_t samples, int is_held,
                                      const double* at, int64_t count, double* out);

/* How many points a formula has at this rate over the whole session; below 0 if they are too many. */
TRAGUARDO_PYTHON_API int64_t tg_formula_points(int handle, double rate_hz);
/*
 * The values of a formula at k / rate_hz, k from 0, into exactly tg_formula_points elements. 0; else the formula's
 * error, with the character where it is and a message of less than `room` bytes; -1 for a handle or a memory that isn't
 * there.
 */
TRAGUARDO_PYTHON_API int tg_formula(int handle, const char* formula, double rate_hz, float* out, int64_t count,
                                    int* character, char* message, int room);

/*
 * Samples as Arrow arrays. All memory is the library's own, so that an array may be released by any thread and after
 * the interpreter has ended. `capsule_pointer` is PyCapsule_GetPointer; the three functions below it are capsule
 * destructors.
 */
TRAGUARDO_PYTHON_API void tg_arrow_start(void* (*capsule_pointer)(void* capsule, const char* name));
TRAGUARDO_PYTHON_API void tg_arrow_schema_capsule_gone(void* capsule);
TRAGUARDO_PYTHON_API void tg_arrow_array_capsule_gone(void* capsule);
TRAGUARDO_PYTHON_API void tg_arrow_stream_capsule_gone(void* capsule);
/* For structs that are to be put into capsules; null without memory. */
TRAGUARDO_PYTHON_API void* tg_arrow_struct(int64_t bytes);

/* A struct of "time" and "value" with copies of the samples. 0, or an errno. */
TRAGUARDO_PYTHON_API int tg_arrow_samples(const double* times, const double* values, int64_t count, const char* name,
                                          const char* unit, struct ArrowSchema* schema, struct ArrowArray* array);
/*
 * Batches of "channel", "unit", "time", "value", one per channel that has samples. kinds: 0 logged, 1 derived GPS, 2
 * raw GPS. The file stays open until the stream is released. 0, or an errno.
 */
TRAGUARDO_PYTHON_API int tg_arrow_channels(int handle, const int* kinds, const int* indexes, const char* const* names,
                                           const char* const* units, int count, struct ArrowArrayStream* stream);

#ifdef __cplusplus
}
#endif

#endif /* TRAGUARDO_PYTHON_API_H */
