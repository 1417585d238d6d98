# SPDX-License-Identifier: MIT
"""Builds the library with CMake and puts it into the package, whichever way that is installed."""
import subprocess
import sys
from pathlib import Path

from setuptools import Distribution, setup
from setuptools.command.build_py import build_py
from wheel.bdist_wheel import bdist_wheel

HERE = Path(__file__).resolve().parent
LIBRARY = "_traguardo.dll" if sys.platform == "win32" else "_traguardo.so"


class BuildWithLibrary(build_py):
    def run(self):
        super().run()
        sources = HERE.parent
        if not (sources / "CMakeLists.txt").exists():
            raise SystemExit("traguardo: its library is built from the whole source tree, so install from there")
        build = Path(self.get_finalized_command("build").build_temp).resolve() / "library"
        options = ["TRAGUARDO_PYTHON=ON", "TRAGUARDO_TESTS=OFF", "TRAGUARDO_TOOLS=OFF", "TRAGUARDO_INSTALL=OFF",
                   "CMAKE_BUILD_TYPE=Release"]
        subprocess.run(["cmake", "-S", sources, "-B", build, *(f"-D{option}" for option in options)], check=True)
        subprocess.run(["cmake", "--build", build, "--target", "traguardo_python", "--parallel"], check=True)
        package = HERE / "traguardo" if self.editable_mode else Path(self.build_lib) / "traguardo"
        self.copy_file(str(build / "python" / LIBRARY), str(package / LIBRARY))

    def get_outputs(self, include_bytecode=True):
        return [*super().get_outputs(include_bytecode), str(Path(self.build_lib) / "traguardo" / LIBRARY)]


class WheelOfPlatform(bdist_wheel):
    def get_tag(self):
        # The library knows the system and not the interpreter.
        return ("py3", "none", super().get_tag()[2])


class WithLibrary(Distribution):
    def has_ext_modules(self):
        return True


setup(cmdclass={"build_py": BuildWithLibrary, "bdist_wheel": WheelOfPlatform}, distclass=WithLibrary)
