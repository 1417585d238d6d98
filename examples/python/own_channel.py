# SPDX-License-Identifier: MIT
"""A channel of your own by a formula: how much grip a lap uses, from two logged channels, on the track's map.

    python3 own_channel.py SESSION PICTURE.png [FORMULA UNIT]
"""
import sys

import matplotlib.pyplot as plt
import numpy as np

import traguardo


def main(path, picture, formula="sqrt(Lateral Acc * Lateral Acc + Inline Acc * Inline Acc)", unit="g"):
    with traguardo.open(path) as s:
        own = s.eval(formula, rate=20)
        own.name, own.unit = "Grip", unit
        lap = s.frame([own, "GPS East", "GPS North"], rate=20, lap="best")
        title = f"{formula} over the best lap, {s.info.track}"

    figure, (over_time, track) = plt.subplots(1, 2, figsize=(11, 5), constrained_layout=True)
    figure.suptitle(title)
    over_time.plot(lap.index, lap["Grip"])
    over_time.set_xlabel("Time (s)")
    over_time.set_ylabel(f"{own.name} ({own.unit})")
    dots = track.scatter(lap["GPS East"], lap["GPS North"], c=lap["Grip"], s=6, vmax=np.nanquantile(lap["Grip"], 0.99))
    track.set_aspect("equal")
    track.set_xlabel("East (m)")
    track.set_ylabel("North (m)")
    figure.colorbar(dots, label=f"{own.name} ({own.unit})")
    figure.savefig(picture, dpi=100)


if __name__ == "__main__":
    main(*sys.argv[1:])
