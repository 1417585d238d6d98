/* SPDX-License-Identifier: MIT */
/* The comments below are laid out by hand. */
/* clang-format off */
/*
 * Traguardo: reads the session files of a family of motorsport data loggers (.qlt, .qlc, .wmp) and hands out texts, laps,
 * channels and GPS. This header is the whole public interface: plain C, fit for any language that can call C.
 *
 * Conventions
 *  1. A file is opened by its path and answers under a positive handle until it is closed. A handle is never given out
 *     twice; a stale one is answered like one that was never open.
 *  2. Indexes of channels and laps count from 0. Channel indexes compare as unsigned, so a negative one is never found;
 *     a negative lap index selects the first lap.
 *  3. Times and values are doubles. Times are seconds from the start of the file (one exception is told at
 *     get_GPS_channel_samples). Values are 32-bit floats widened to double, in the channel's units.
 *  4. For samples: ask the count function, allocate two arrays of that many doubles, call the samples function with that
 *     count. No function ever writes more than `count` elements.
 *  5. A text is NUL-terminated, 8-bit, of no particular encoding. It belongs to the library, must be neither freed nor
 *     changed, and stays valid until its file is closed.
 *  6. Failures show in the result alone: a null pointer, or a negative code as listed at each function. Where nothing else
 *     is said, -1 means that the handle is not open and -2 that the file has no data behind its handle.
 *  7. Any function may be called from any thread. Calls on different files run side by side; calls on one file wait for
 *     each other. A text or date stays valid until its file is closed, so don't close what another thread still reads.
 *  8. No exception leaves a function and no signal is handled or sent. Where a disk or the memory fails inside a call, it
 *     gives its failure (-2 where several fit) and never a part of the data; the next call tries again.
 *  9. A null pointer for a path, or for an output, is a wrong argument: -2 from open_file and close_file_n, and 0, with
 *     nothing written, from the others.
 * 10. While a file is open its samples lie in memory and in a file without a name beside it, which the system removes with
 *     the process; TRAGUARDO_STORE_FOLDER in the environment names another folder for it. Opening X.qlc leaves its expansion
 *     X.qlt beside it, in place of one that stands there only if it is whole, or longer. Opening X.wmp leaves X.bak.
 */
#ifndef TRAGUARDO_EXPORTS_H
#define TRAGUARDO_EXPORTS_H

#include <time.h>

#if defined(_WIN32)
#if defined(TRAGUARDO_BUILDING_LIBRARY) || defined(TRAGUARDO_STATIC)
#define TRAGUARDO_API
#else
#define TRAGUARDO_API __declspec(dllimport)
#endif
#elif defined(TRAGUARDO_BUILDING_LIBRARY)
#define TRAGUARDO_API __attribute__((visibility("default")))
#else
#define TRAGUARDO_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* --- Files ------------------------------------------------------------------------------------------------------- */

/*
 * Opens the session file at `path` and reads it whole. The kind follows from the last four characters (.qlt, .qlc, .wmp,
 * capitals or not). On Linux the path is its bytes as they are; on Windows UTF-8 where it is valid UTF-8, else the active
 * code page.
 *  > 0  handle of the file, or of the file that is already open under exactly this path (then nothing is read again)
 *    0  the file could not be read; nothing stays open
 *   -2  no reader for this kind of file, or the reader could not be made
 *   -3  the reader is of no use to this interface
 *   -4  the view of the file could not be made
 *   -5  the file could not be entered among the open ones
 */
TRAGUARDO_API int open_file(const char* path);

/* Closes a file and deletes its temporary stores. The handle, or -1 if it is not open. */
TRAGUARDO_API int close_file_i(int handle);

/* Closes the file that was opened under exactly this path. Its handle, or -2 if there is none. */
TRAGUARDO_API int close_file_n(const char* path);

/* --- The library ------------------------------------------------------------------------------------------------- */

/* The build's date, as in "Aug  1 2018". Valid for ever. */
TRAGUARDO_API const char* get_library_date(void);

/* The build's time, as in "12:22:53". Valid for ever. */
TRAGUARDO_API const char* get_library_time(void);

/* --- Texts of the session ---------------------------------------------------------------------------------------- */

/* Each gives null for a handle that is not open, and an empty text for what the file does not say. */
TRAGUARDO_API const char* get_vehicle_name(int handle);
TRAGUARDO_API const char* get_track_name(int handle);
TRAGUARDO_API const char* get_racer_name(int handle);
TRAGUARDO_API const char* get_championship_name(int handle);
TRAGUARDO_API const char* get_venue_type_name(int handle);

/*
 * The session's start in the logger's local time, as the system's broken-down time; fields beyond the nine of the C
 * standard are zero. Null for a handle that is not open. The library owns it; valid until the file is closed.
 */
TRAGUARDO_API const struct tm* get_date_and_time(int handle);

/* --- Laps -------------------------------------------------------------------------------------------------------- */

/* Number of laps over all sessions of the file, 0 without a session; -1, -2. */
TRAGUARDO_API int get_laps_count(int handle);

/*
 * Start and duration of a lap, in seconds. The duration is the logger's own figure; it may differ from the distance to
 * the next lap's start. 1 and both outputs set; 0 without a session or without such a lap; -1, -2.
 */
TRAGUARDO_API int get_lap_info(int handle, int lap, double* start, double* duration);

/* --- Logged channels --------------------------------------------------------------------------------------------- */

/* Number of channels; -1, -2. */
TRAGUARDO_API int get_channels_count(int handle);

/* Name and units of a channel; null on any failure. */
TRAGUARDO_API const char* get_channel_name(int handle, int channel);
TRAGUARDO_API const char* get_channel_units(int handle, int channel);

/* Number of samples of a channel; -1, -2, -3 (no such channel). */
TRAGUARDO_API int get_channel_samples_count(int handle, int channel);

/*
 * All samples of a channel, in order. `count` must be exactly the sample count: the number written, or 0 with nothing
 * written; -1, -2, -3 (no such channel).
 */
TRAGUARDO_API int get_channel_samples(int handle, int channel, double* times, double* values, int count);

/*
 * Number of samples with start <= time < start + duration of a lap. 0 without a session; -1 (handle, or no such lap);
 * -2 (no view, or no such channel). Where lap and channel are both bad, the lap decides.
 */
TRAGUARDO_API int get_lap_channel_samples_count(int handle, int lap, int channel);

/* The samples of a channel within a lap; results as above, and 0 unless `count` is exactly the lap's sample count. */
TRAGUARDO_API int get_lap_channel_samples(int handle, int lap, int channel, double* times, double* values, int count);

/* --- GPS channels, derived from the receiver's solutions, on an even grid of 10 ms ---------------------------------- */

/*
 * Works the channels of the best trace out; call it before any other function of this group.
 * Number of channels that have samples; -1, -2, -3 (no GPS trace in the file).
 */
TRAGUARDO_API int get_GPS_channels_count(int handle);

/* Name and units; null on any failure. */
TRAGUARDO_API const char* get_GPS_channel_name(int handle, int channel);
TRAGUARDO_API const char* get_GPS_channel_units(int handle, int channel);

/* Number of samples; -1; -2 (not worked out, or no samples); -3 (no such channel). */
TRAGUARDO_API int get_GPS_channel_samples_count(int handle, int channel);

/*
 * The first `count` samples. Times are in MILLISECONDS here, and only here: hosts rely on it.
 * The number written, at most `count`; -1; -2 (not worked out, or no samples); -4 (no such channel).
 */
TRAGUARDO_API int get_GPS_channel_samples(int handle, int channel, double* times, double* values, int count);

/*
 * Number of samples in a lap. 0 without a session; -1 (handle, or no such lap); -2; 1 if there is no such channel or
 * nothing has been worked out.
 */
TRAGUARDO_API int get_lap_GPS_channel_samples_count(int handle, int lap, int channel);

/* The first `count` samples in a lap, times in seconds. The number written; otherwise as above. */
TRAGUARDO_API int get_lap_GPS_channel_samples(int handle, int lap, int channel, double* times, double* values,
                                              int count);

/* --- GPS channels as the receiver gave them ------------------------------------------------------------------------ */

/*
 * Lists the good records of the best trace; call it before any other function of this group.
 * 7: position X, Y, Z and velocity X, Y, Z, earth-centred, and the number of satellites; -1, -2, -3 (no GPS trace).
 */
TRAGUARDO_API int get_GPS_raw_channels_count(int handle);

/* Name and units; null for a handle not open, an empty list, or an index above 6. */
TRAGUARDO_API const char* get_GPS_raw_channel_name(int handle, int channel);
TRAGUARDO_API const char* get_GPS_raw_channel_units(int handle, int channel);

/* Number of samples; -1; -2 (empty list); -3 (index above 6). */
TRAGUARDO_API int get_GPS_raw_channel_samples_count(int handle, int channel);

/* The first `count` samples. The number written; -1; -2 (empty list); -4 (index above 6). */
TRAGUARDO_API int get_GPS_raw_channel_samples(int handle, int channel, double* times, double* values, int count);

/*
 * Number of samples in a lap, whatever the channel index. 0 without a session; -1 (handle, or no such lap); -2 (no view);
 * -3 (empty list).
 */
TRAGUARDO_API int get_lap_GPS_raw_channel_samples_count(int handle, int lap, int channel);

/* The first `count` samples in a lap. The number written, 0 if the index is above 6; otherwise as above but for -3. */
TRAGUARDO_API int get_lap_GPS_raw_channel_samples(int handle, int lap, int channel, double* times, double* values,
                                                  int count);

#ifdef __cplusplus
}
#endif

#endif /* TRAGUARDO_EXPORTS_H */
