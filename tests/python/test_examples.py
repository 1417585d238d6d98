# SPDX-License-Identifier: MIT
"""Every example runs as a user would start it, and draws something."""
import subprocess
import sys
from pathlib import Path

import pytest

from conftest import simulate

EXAMPLES = Path(__file__).resolve().parent.parent.parent / "examples/python"


@pytest.mark.parametrize("name", sorted(path.stem for path in EXAMPLES.glob("*.py")))
def test_example(name, demo, tmp_path):
    image = pytest.importorskip("matplotlib.image")
    source = demo
    if name == "season_table":
        for i in range(6):
            simulate(tmp_path / f"round {i + 1}.qlt", "--laps", "4", "--seed", str(i))
        (tmp_path / "round 7.qlt").write_bytes(b"broken")
        source = str(tmp_path / "*.qlt")
    picture = tmp_path / f"{name}.png"
    run = subprocess.run([sys.executable, EXAMPLES / f"{name}.py", source, picture], capture_output=True, text=True)
    assert run.returncode == 0, run.stderr
    assert "Warning" not in run.stderr
    if name == "season_table":
        assert "round 7.qlt: no session can be read from it" in run.stdout
    drawn = image.imread(picture)
    assert drawn.shape[0] >= 400 and (drawn[..., :3].min(axis=-1) < 0.9).mean() > 0.01
