"""What the tests with real hosts share: the build, scratch homes, programs with a time-out, sound files."""

import array
import atexit
import contextlib
import math
import os
import pathlib
import random
import re
import signal
import struct
import subprocess
import tempfile
import time
import types
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
HERE = ROOT / "tests" / "hosts"
BUILD = ROOT / "build" / "release"
LIBRARY = pathlib.Path(os.environ.get("KAV_HOSTS_LIBRARY", BUILD / "KAVSorrelLimiter.so"))
KAVHOST = BUILD / "kavhost"
NAME = "KAV Sorrel Limiter"
VERSION = re.search(r"^project\(\w+ VERSION (\S+) ", (ROOT / "CMakeLists.txt").read_text(), re.MULTILINE)[1]
UNIQUE_ID = 1936683628
PARAMETERS = 109
RATE = 48000

_running = set()


def start_program(command, folder, environment, log, **more):
    """Starts a program that runs until `stop_program`, or the end of the tests."""
    with open(folder / log, "wb") as output:
        # Its own session: it is ended with everything that it started.
        process = subprocess.Popen([str(word) for word in command], env=environment, cwd=folder,
                                   stdin=subprocess.DEVNULL, stdout=output, stderr=output, start_new_session=True,
                                   **more)
    _running.add(process)
    return process


def stop_program(process):
    for how in (signal.SIGTERM, signal.SIGKILL):
        with contextlib.suppress(ProcessLookupError):
            os.killpg(process.pid, how)
        with contextlib.suppress(subprocess.TimeoutExpired):
            process.wait(2)
            break
    with contextlib.suppress(ProcessLookupError):
        os.killpg(process.pid, signal.SIGKILL)  # what it left behind
    _running.discard(process)


@atexit.register
def _stop_all():
    for process in list(_running):
        stop_program(process)


def wait_for(condition, seconds, what):
    """Returns the first result of `condition` that isn't false."""
    end = time.monotonic() + seconds
    while not (result := condition()):
        if time.monotonic() > end:
            raise AssertionError(f"{what}: not within {seconds} s")
        time.sleep(0.05)
    return result


def becomes_true(condition, seconds=10):
    """For what a test judges later, so that the steps after it still run."""
    with contextlib.suppress(AssertionError):
        return bool(wait_for(condition, seconds, "it"))
    return False


def running_at(home):
    """The names of the programs with this home, whoever started them, apart from a display's own."""
    found = []
    for process in pathlib.Path("/proc").glob("[0-9]*"):
        with contextlib.suppress(OSError):
            if f"HOME={home}".encode() in (process / "environ").read_bytes().split(b"\0"):
                found.append((process / "comm").read_text().strip())
    return [name for name in found if name not in ("Xvfb", "openbox")]


class HostTest(unittest.TestCase):
    """A test with its own temporary folder, which is the home of every program it starts and holds its files.

    All tests of a class share the folder and the files that `set_up_once` writes to it.
    """

    longMessage = True
    entering = ()  # the words of a command that starts another somewhere else

    @classmethod
    def setUpClass(cls):
        scratch = tempfile.TemporaryDirectory(prefix="sorrel-hosts-")
        cls.addClassCleanup(scratch.cleanup)
        cls.folder = pathlib.Path(scratch.name)
        cls.home = cls.folder / "home"
        for name in ("home", "tmp", "run"):
            (cls.folder / name).mkdir(mode=0o700)
        cls.set_up_once()

    @classmethod
    def set_up_once(cls):
        pass

    @classmethod
    def environment(cls, **more):
        """Of the user's environment only the path; no display, no sound server."""
        own = {"HOME": cls.home, "TMPDIR": cls.folder / "tmp", "XDG_RUNTIME_DIR": cls.folder / "run"}
        kept = {key: os.environ[key] for key in ("PATH", "USER", "LOGNAME") if key in os.environ}
        return kept | {"LANG": "C.UTF-8"} | {key: str(value) for key, value in (own | more).items()}

    @classmethod
    def run_program(cls, *command, timeout=30, stdin="", attempts=1, accept=None, **environment):
        """The program's output, both streams as one text.

        `accept(said)` judges an attempt, because hosts end with any status and occasionally hang. The output of the
        last attempt is returned even if it isn't accepted.
        """
        said = ""
        for _ in range(attempts):
            # Its own session: a process that hangs is ended with everything that it started.
            process = subprocess.Popen([str(word) for word in (*cls.entering, *command)],
                                       env=cls.environment(**environment), cwd=cls.folder, stdin=subprocess.PIPE,
                                       stdout=subprocess.PIPE, stderr=subprocess.STDOUT, start_new_session=True)
            try:
                output, _ = process.communicate(stdin.encode(), timeout=timeout)
                said = output.decode(errors="replace")
            except subprocess.TimeoutExpired:
                os.killpg(process.pid, 9)
                output, _ = process.communicate()
                said = output.decode(errors="replace") + f"\n(ended after {timeout} s)"
            if accept is None or accept(said):
                break
        return said

    @classmethod
    def kavhost(cls, *arguments):
        """kavhost's output. Unlike a host, it has to exit with 0."""
        result = subprocess.run([str(word) for word in (KAVHOST, *arguments)], env=cls.environment(), cwd=cls.folder,
                                stdin=subprocess.DEVNULL, capture_output=True, timeout=120, check=False)
        if result.returncode != 0:
            raise AssertionError(f"kavhost {arguments}: {result.returncode}\n{result.stderr.decode()}")
        return result.stdout.decode()


class Sound:
    """A sound in memory: one array of floats per channel."""

    def __init__(self, channels):
        self.channels = channels

    @property
    def frames(self):
        return len(self.channels[0])

    def from_frame(self, first):
        return Sound([channel[first:] for channel in self.channels])

    def difference(self, other):
        """The largest difference of two samples at the same place, up to the end of the shorter sound."""
        return max(abs(x - y) for mine, theirs in zip(self.channels, other.channels) for x, y in zip(mine, theirs))


def broken_links(folder):
    """The relative links in the Markdown of a folder: those whose file is not there, and how many are well."""
    broken, whole = [], 0
    for page in folder.rglob("*.md"):
        for target in re.findall(r"\]\(([^()]*)\)", page.read_text()):
            if re.match("https?:|mailto:|#", target):
                continue
            if (page.parent / target.partition("#")[0]).exists():
                whole += 1
            else:
                broken.append(f"{page.name}: {target}")
    return types.SimpleNamespace(broken=broken, whole=whole)


def read_wav(file):
    """32-bit float, the format that every host here is set to write."""
    data = pathlib.Path(file).read_bytes()
    if data[:4] != b"RIFF" or data[8:12] != b"WAVE":
        raise AssertionError(f"{file} is no WAV file")
    at, channels, samples = 12, 0, None
    while at + 8 <= len(data):
        kind, size = struct.unpack_from("<4sI", data, at)
        if kind == b"fmt ":
            coding, channels, rate, _, _, bits = struct.unpack_from("<HHIIHH", data, at + 8)
            if coding == 0xFFFE:  # the actual coding is in the extension
                coding = struct.unpack_from("<H", data, at + 8 + 24)[0]
            if (coding, rate, bits) != (3, RATE, 32):
                raise AssertionError(f"{file}: coding {coding}, rate {rate}, {bits} bits")
        elif kind == b"data":
            samples = array.array("f", data[at + 8:at + 8 + min(size, len(data) - at - 8) // 4 * 4])
        at += 8 + size + size % 2
    if not channels or samples is None:
        raise AssertionError(f"{file} has no sound")
    return Sound([samples[c::channels] for c in range(channels)])


def write_wav(file, sound):
    count = len(sound.channels)
    mixed = array.array("f", bytes(4 * count * sound.frames))
    for c, channel in enumerate(sound.channels):
        mixed[c::count] = channel
    data = mixed.tobytes()
    head = struct.pack("<HHIIHH", 3, count, RATE, RATE * 4 * count, 4 * count, 32)
    body = b"WAVEfmt " + struct.pack("<I", len(head)) + head + b"data" + struct.pack("<I", len(data)) + data
    pathlib.Path(file).write_bytes(b"RIFF" + struct.pack("<I", len(body)) + body)


def limited_material(seconds=3.0):
    """Two different channels between silences: tones, bursts far above any threshold, and noise from a fixed seed."""
    noise = random.Random(1936683628)
    channels = []
    for c, pitch in enumerate((997.0, 440.0)):
        channel = array.array("f", bytes(4 * int(seconds * RATE)))
        for i in range(RATE // 2, len(channel) - RATE // 2):
            t = i / RATE
            burst = 1.0 if int(t * 7 + c) % 3 == 0 else 0.15
            channel[i] = burst * (0.7 * math.sin(2 * math.pi * pitch * t) + 0.3 * noise.uniform(-1.0, 1.0))
        channels.append(channel)
    return Sound(channels)
