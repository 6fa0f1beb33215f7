"""Audacity on a display without a screen, driven through its script pipe."""

import base64
import contextlib
import datetime
import os
import pathlib
import select
import shutil
import subprocess
import time

import states
from support import LIBRARY, NAME, HostTest, limited_material, read_wav, write_wav

MODULE = pathlib.Path("/usr/lib/audacity/modules/mod-script-pipe.so")
# Audacity gives them these names, whatever the folder for temporary files.
PIPES = [pathlib.Path(f"/tmp/audacity_script_pipe.{way}.{os.getuid()}") for way in ("to", "from")]
# Audacity stores an effect's values by name, and passes the last of several values with the same name to all of them.
# Names have 7 characters here. So all groups get the same values, and so do all toggles whose names begin alike.
VALUES = dict.fromkeys(range(4, 8), 0.7) | dict.fromkeys(range(16, 20), 0.3) | dict.fromkeys(range(20, 24), 0.95) | \
    dict.fromkeys(range(24, 32), 1) | dict.fromkeys(range(60, 88), 1)
LOOK_AHEADS = 4 * 64  # the groups are in series
CONFIGURATION = f"""PrefsVersion=1.1.1r1
NewPrefsInitialized=1
[Locale]
Language=en
[Module]
mod-script-pipe=1
[ModulePath]
mod-script-pipe={MODULE}
[ModuleDateTime]
mod-script-pipe={{module_date}}
[FileFormats]
[FileFormats/ExportFormat_SF1_Type]
WAV_10000=6
"""


def group_of_effect(part):
    """The name under which Audacity stores something of the effect."""
    identity = base64.b64encode(f"Effect_VST_Kavelin_{NAME}".encode()).decode().replace("=", "\\=")
    return f"[pluginsettings/base64\\:{identity}/private/{part}]"


class Audacity(HostTest):
    """One run that searches for plug-ins, and one that uses the result."""

    @classmethod
    def set_up_once(cls):
        (cls.home / ".vst").mkdir()
        shutil.copy(LIBRARY, cls.home / ".vst")
        # Its commands set no value that reaches the effect, but a new instance starts with the user's first patch.
        cls.state = cls.folder / "told.state"
        cls.kavhost("info", "--state", states.told_state(cls.folder, cls.kavhost),
                    *(word for index, value in VALUES.items() for word in ("--set", f"{index}={value}")),
                    "--save-state", cls.state)
        patches = cls.home / "Documents/Kavelin/KAV Sorrel Limiter"
        patches.mkdir(parents=True)
        (patches / "Told.kvp").write_bytes(cls.state.read_bytes().rstrip(b"\0"))
        cls.configuration = cls.home / ".config/audacity"
        cls.configuration.mkdir(parents=True)
        with cls.running():
            cls.wait_for(lambda: f"Symbol={NAME}\n" in cls.stored("pluginregistry.cfg"), 300, "its list of plug-ins")
        cls.registry = cls.stored("pluginregistry.cfg")

        write_wav(cls.folder / "in.wav", limited_material())
        cls.answers = cls.limit_selection()

    @classmethod
    def limit_selection(cls):
        """Audacity's answers to the commands."""
        for attempt in range(3):
            with cls.running():
                cls.wait_for(lambda: all(pipe.exists() for pipe in PIPES), 60, "its pipes")
                # The pipes exist before it listens, and a command that arrives too early is never answered.
                time.sleep(8 * (attempt + 1))
                with contextlib.suppress(TimeoutError):
                    return cls.talk(f'Import2: Filename="{cls.folder}/in.wav"', "SelectAll:", "KavSorrelLimiter:",
                                    f'Export2: Filename="{cls.folder}/out.wav" NumChannels=2')
        raise AssertionError("Audacity did not answer")

    @classmethod
    def stored(cls, name):
        """Empty while Audacity replaces the file."""
        try:
            return (cls.configuration / name).read_text(errors="replace")
        except FileNotFoundError:
            return ""

    @staticmethod
    def wait_for(condition, seconds, what):
        end = time.monotonic() + seconds
        while not condition():
            if time.monotonic() > end:
                raise AssertionError(f"Audacity did not write {what} in {seconds} s")
            time.sleep(0.2)

    @classmethod
    @contextlib.contextmanager
    def running(cls):
        for pipe in PIPES:  # left by a run that was interrupted
            pipe.unlink(missing_ok=True)
        shutil.rmtree(cls.folder / "tmp", ignore_errors=True)
        (cls.folder / "tmp").mkdir()
        date = datetime.datetime.fromtimestamp(MODULE.stat().st_mtime).strftime("%Y-%m-%dT%H:%M:%S")
        (cls.configuration / "audacity.cfg").write_text(CONFIGURATION.format(module_date=date))
        with open(cls.folder / "audacity.log", "wb") as log:
            process = subprocess.Popen(["xvfb-run", "-a", "audacity"], env=cls.environment(), cwd=cls.folder,
                                       stdin=subprocess.DEVNULL, stdout=log, stderr=log, start_new_session=True)
        try:
            yield
        finally:
            # When terminated, it asks whether to save.
            with contextlib.suppress(ProcessLookupError):
                os.killpg(process.pid, 9)
            process.wait()
            for pipe in PIPES:
                pipe.unlink(missing_ok=True)

    @staticmethod
    def talk(*commands):
        """The answers, one per command; an answer ends with an empty line."""
        # Opened in both directions, so that neither waits for the other side.
        to, answers = (os.open(pipe, os.O_RDWR | os.O_NONBLOCK) for pipe in PIPES)
        told = []
        try:
            for command in commands:
                os.write(to, command.encode() + b"\n")
                answer, end = b"", time.monotonic() + 30
                while not answer.endswith(b"\n\n"):
                    if not select.select([answers], [], [], max(0.0, end - time.monotonic()))[0]:
                        raise TimeoutError(f"{command}: no answer but {answer}")
                    answer += os.read(answers, 65536)
                told.append(answer.decode())
        finally:
            os.close(to)
            os.close(answers)
        return told

    def test_finds_the_effect(self):
        entry = self.registry[self.registry.index(f"Symbol={NAME}\n"):].split("[", 1)[0]
        for line in (f"Name={NAME}", "Vendor=Kavelin", "Enabled=1", "Valid=1", "EffectType=Process"):
            self.assertIn(line + "\n", entry)

    def test_does_what_it_is_told(self):
        for answer in self.answers:
            self.assertIn("BatchCommand finished: OK", answer)

    def test_processes_a_selection_as_kavhost_does(self):
        exported = read_wav(self.folder / "out.wav")
        # A new instance takes no routing from the patch.
        settings = [word for index, value in VALUES.items() for word in ("--set", f"{index}={value}")]
        self.kavhost("render", "in.wav", "-o", "rendered.wav", *settings, "--no-align")
        rendered = read_wav(self.folder / "rendered.wav")
        self.assertEqual(exported.frames, rendered.frames)
        self.assertGreater(rendered.difference(read_wav(self.folder / "in.wav")), 0.1, "nothing was limited")
        # It removes the delay that the effect reports.
        self.assertEqual(exported.difference(rendered.from_frame(LOOK_AHEADS)), 0.0)

    def test_keeps_the_names_of_macros(self):
        stored = self.stored("pluginsettings.cfg")
        self.assertIn(group_of_effect("CurrentSettings"), stored)
        group = stored.split(group_of_effect("CurrentSettings"))[1].split("[", 1)[0]
        chunk = next(line for line in group.splitlines() if line.startswith("Chunk="))
        text = base64.b64decode(chunk.removeprefix("Chunk=")).decode()
        self.assertEqual(states.element(text, "macro_group_names"), "|*|".join(states.MACRO_NAMES))
