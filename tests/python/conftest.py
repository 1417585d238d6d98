# SPDX-License-Identifier: MIT
"""Sessions to try the package on, from the tool that TRAGUARDO_TOOL names."""
import os
import subprocess

import pytest

import traguardo


def simulate(path, *options):
    subprocess.run([os.environ["TRAGUARDO_TOOL"], "simulate", "-o", path, *options], check=True, capture_output=True)
    return str(path)


@pytest.fixture(scope="session")
def demo(tmp_path_factory):
    return simulate(tmp_path_factory.mktemp("demo") / "demo.qlt", "--laps", "3", "--seed", "1")


@pytest.fixture
def session(demo):
    with traguardo.open(demo) as opened:
        yield opened
