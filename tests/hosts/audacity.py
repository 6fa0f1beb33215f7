"""Audacity on a display without a screen, driven through its script pipe."""

import base64
import contextlib
import datetime
import os
import pathlib
import select
import shutil
import time

import states
from display import Display
from support import (LIBRARY, NAME, HostTest, limited_material, read_wav, start_program, stop_program, wait_for,
                     write_wav)

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


class Pipe:
    """Through which Audacity takes commands. Whoever makes one closes it."""

    def __init__(self):
        # Opened in both directions, so that neither waits for the other side.
        self.ends = [os.open(pipe, os.O_RDWR | os.O_NONBLOCK) for pipe in PIPES]

    def close(self):
        for end in self.ends:
            os.close(end)

    def send(self, command):
        os.write(self.ends[0], command.encode() + b"\n")

    def has_answer(self):
        return bool(select.select([self.ends[1]], [], [], 0)[0])

    def answer(self):
        """To the next of the commands; it ends with an empty line."""
        answer, end = b"", time.monotonic() + 30
        while not answer.endswith(b"\n\n"):
            if not select.select([self.ends[1]], [], [], max(0.0, end - time.monotonic()))[0]:
                raise TimeoutError(f"no answer but {answer}")
            answer += os.read(self.ends[1], 65536)
        return answer.decode()


class Host(HostTest):
    """Audacity knows the effect, and a new instance starts with the patch that all tests use."""

    @classmethod
    def set_up_once(cls):
        (cls.home / ".vst").mkdir()
        shutil.copy(LIBRARY, cls.home / ".vst")
        # Its commands set no value that reaches the effect, but a new instance starts with the user's first patch.
        cls.state = cls.folder / "told.state"
        cls.kavhost("info", "--state", states.told_state(cls.folder, cls.kavhost), *cls.settings(VALUES),
                    "--save-state", cls.state)
        patches = cls.home / "Documents/Kavelin/KAV Sorrel Limiter"
        patches.mkdir(parents=True)
        (patches / "Told.kvp").write_bytes(cls.state.read_bytes().rstrip(b"\0"))
        cls.configuration = cls.home / ".config/audacity"
        cls.configuration.mkdir(parents=True)
        with cls.running():
            wait_for(lambda: f"Symbol={NAME}\n" in cls.stored("pluginregistry.cfg"), 300, "its list of plug-ins")
        write_wav(cls.folder / "in.wav", limited_material())

    @staticmethod
    def settings(values):
        """Options of kavhost."""
        return [word for index, value in values.items() for word in ("--set", f"{index}={value}")]

    @classmethod
    def rendered(cls, values):
        """What kavhost makes of the sound. A new instance takes no routing from the patch."""
        cls.kavhost("render", "in.wav", "-o", "rendered.wav", *cls.settings(values), "--no-align")
        # Audacity removes the delay that the effect reports.
        return read_wav(cls.folder / "rendered.wav").from_frame(LOOK_AHEADS)

    @classmethod
    @contextlib.contextmanager
    def running(cls):
        """With a display of its own."""
        for pipe in PIPES:  # left by a run that was interrupted
            pipe.unlink(missing_ok=True)
        shutil.rmtree(cls.folder / "tmp", ignore_errors=True)
        (cls.folder / "tmp").mkdir()
        date = datetime.datetime.fromtimestamp(MODULE.stat().st_mtime).strftime("%Y-%m-%dT%H:%M:%S")
        (cls.configuration / "audacity.cfg").write_text(CONFIGURATION.format(module_date=date))
        with contextlib.closing(Display(cls.folder, cls.environment(), None)) as display:
            process = start_program(["audacity"], cls.folder, display.environment, "audacity.log")
            try:
                yield display
            finally:
                os.killpg(process.pid, 9)  # when terminated, it asks whether to save
                stop_program(process)
                for pipe in PIPES:
                    pipe.unlink(missing_ok=True)

    @classmethod
    @contextlib.contextmanager
    def with_selection(cls):
        """Running, with the sound selected: its display and its pipe."""
        with contextlib.ExitStack() as started:
            for attempt in range(3):
                display = started.enter_context(cls.running())
                wait_for(lambda: all(pipe.exists() for pipe in PIPES), 60, "its pipes")
                pipe = started.enter_context(contextlib.closing(Pipe()))
                # The pipes exist before it listens, and a command that arrives too early is never answered.
                time.sleep(8 * (attempt + 1))
                with contextlib.suppress(TimeoutError):
                    cls.talk(pipe, f'Import2: Filename="{cls.folder}/in.wav"', "SelectAll:")
                    break
                started.pop_all().close()
            else:
                raise AssertionError("Audacity did not answer")
            yield display, pipe

    @staticmethod
    def talk(pipe, *commands):
        """The answers, one per command."""
        answers = []
        for command in commands:
            pipe.send(command)
            answers.append(pipe.answer())
        return answers

    @classmethod
    def stored(cls, name):
        """Empty while Audacity replaces the file."""
        try:
            return (cls.configuration / name).read_text(errors="replace")
        except FileNotFoundError:
            return ""


class Audacity(Host):
    """One run that searches for plug-ins, and one that uses the result."""

    @classmethod
    def set_up_once(cls):
        super().set_up_once()
        cls.registry = cls.stored("pluginregistry.cfg")
        with cls.with_selection() as (_, pipe):
            cls.answers = cls.talk(pipe, "KavSorrelLimiter:", f'Export2: Filename="{cls.folder}/out.wav" NumChannels=2')

    def test_finds_the_effect(self):
        entry = self.registry[self.registry.index(f"Symbol={NAME}\n"):].split("[", 1)[0]
        for line in (f"Name={NAME}", "Vendor=Kavelin", "Enabled=1", "Valid=1", "EffectType=Process"):
            self.assertIn(line + "\n", entry)

    def test_does_what_it_is_told(self):
        for answer in self.answers:
            self.assertIn("BatchCommand finished: OK", answer)

    def test_processes_a_selection_as_kavhost_does(self):
        exported, rendered = read_wav(self.folder / "out.wav"), self.rendered(VALUES)
        self.assertEqual(exported.frames, rendered.frames + LOOK_AHEADS)
        self.assertGreater(rendered.difference(read_wav(self.folder / "in.wav")), 0.1, "nothing was limited")
        self.assertEqual(exported.difference(rendered), 0.0)

    def test_keeps_the_names_of_macros(self):
        stored = self.stored("pluginsettings.cfg")
        self.assertIn(group_of_effect("CurrentSettings"), stored)
        group = stored.split(group_of_effect("CurrentSettings"))[1].split("[", 1)[0]
        chunk = next(line for line in group.splitlines() if line.startswith("Chunk="))
        text = base64.b64decode(chunk.removeprefix("Chunk=")).decode()
        self.assertEqual(states.element(text, "macro_group_names"), "|*|".join(states.MACRO_NAMES))
