# SPDX-License-Identifier: MIT
"""Two laps against each other over distance: speed of both, and who is ahead.

    python3 lap_against_lap.py SESSION PICTURE.png [LAP OTHER_LAP]
"""
import sys

import matplotlib.pyplot as plt

import traguardo


def main(path, picture, lap="best", other_lap=None):
    with traguardo.open(path) as s:
        laps = s.laps
        lap = int(lap) if lap != "best" else laps[laps["finished"]]["duration"].idxmin()
        # Without a wish: the second best.
        other_lap = int(other_lap) if other_lap else laps[laps["finished"]].drop(lap)["duration"].idxmin()
        both = s.compare(s, lap=lap, other_lap=other_lap)
        title = f"{s.info.vehicle}, {s.info.track}"

    figure, (speeds, delta) = plt.subplots(2, sharex=True, figsize=(10, 6), height_ratios=(2, 1),
                                           constrained_layout=True)
    figure.suptitle(title)
    for number, column in ((lap, "speed"), (other_lap, "other_speed")):
        speeds.plot(both.index, both[column] * 3.6, label=f"lap {number}: {laps.loc[number, 'duration']:.3f} s")
    speeds.set_ylabel("Speed (km/h)")
    speeds.legend(loc="lower right")
    delta.axhline(0, color="grey", linewidth=0.8)
    delta.fill_between(both.index, both["delta"], alpha=0.4)
    delta.set_ylabel(f"Lap {other_lap} behind (s)")
    delta.set_xlabel("Distance (m)")
    figure.savefig(picture, dpi=100)


if __name__ == "__main__":
    main(*sys.argv[1:])
