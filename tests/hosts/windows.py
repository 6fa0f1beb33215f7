"""What the tests of the packages for Windows share: the packages themselves, made once, and Wine."""

import functools
import os
import pathlib
import re
import subprocess
import tempfile
import types

from support import ROOT, VERSION

BUILD = ROOT / "build" / "mingw"
WINE = pathlib.Path(os.environ.get("KAV_WINE_ROOT", ROOT / "build" / "wine"))
_scratch = tempfile.TemporaryDirectory(prefix="sorrel-windows-")


def fact(name):
    """KAV_<name> in the sources; the version is CMake's."""
    if name == "VERSION":
        return VERSION
    return re.search(rf'#define KAV_{name} "(.*)"', (ROOT / "utils/product.h").read_text())[1]


def resources_of(image):
    """What a program or a library carries, as a resource compiler reads it back, without the bytes."""
    said = subprocess.run(["x86_64-w64-mingw32-windres", "-J", "coff", "-O", "rc", "-i", image], capture_output=True,
                          check=True, timeout=60)
    return said.stdout.decode()


@functools.cache
def made_packages():
    """The .zip and the installer."""
    folder = pathlib.Path(_scratch.name) / "packages"
    done = subprocess.run(["cpack", "--config", BUILD / "CPackConfig.cmake", "-B", folder], stdin=subprocess.DEVNULL,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=180, check=False)
    made = {kind: list(folder.glob(f"*.{kind}")) for kind in ("zip", "exe")}
    if done.returncode != 0 or [len(files) for files in made.values()] != [1, 1]:
        raise AssertionError(done.stdout.decode())
    return types.SimpleNamespace(archive=made["zip"][0], installer=made["exe"][0])


def run_wine(program, *arguments, cwd=None):
    """Runs a program to its end. Under Wine the home folder is that of the prefix."""
    # Of the user's environment all but the display: wine-run has one of its own.
    return subprocess.run([ROOT / "tests/support/wine-run", program, *arguments], cwd=cwd, env=os.environ,
                          stdin=subprocess.DEVNULL, capture_output=True, timeout=180, check=False)
