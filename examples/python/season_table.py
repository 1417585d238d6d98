# SPDX-License-Identifier: MIT
"""A season in one table: best and median lap of every session, with those that can't be read and why.

    python3 season_table.py "season/**/*.qlt" PICTURE.png
"""
import os
import sys

import matplotlib.pyplot as plt

from traguardo import fleet


def main(pattern, picture):
    laps = fleet.laps(pattern)
    finished = laps[laps["finished"].eq(True)]
    table = finished.groupby("path")["duration"].agg(laps="count", best="min", median="median")
    top_speed = fleet.stats(pattern, ["Speed"], per="file").set_index("path")["max"]
    table = table.join(top_speed.rename("top speed"))
    print(table.rename(os.path.basename).round(3).to_string())
    for row in laps[laps["reason"] != ""].itertuples():
        print(f"{os.path.basename(row.path)}: {row.reason}")

    figure, axes = plt.subplots(figsize=(10, 5), constrained_layout=True)
    axes.boxplot([finished.loc[finished["path"] == path, "duration"] for path in table.index],
                 labels=[os.path.splitext(os.path.basename(path))[0] for path in table.index])
    axes.plot(range(1, len(table) + 1), table["best"], "o", label="best")
    axes.set_ylabel("Lap (s)")
    axes.tick_params(axis="x", rotation=45)
    axes.legend()
    figure.savefig(picture, dpi=100)


if __name__ == "__main__":
    main(*sys.argv[1:])
