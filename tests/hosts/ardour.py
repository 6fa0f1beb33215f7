"""Ardour, without a display: its dummy engine runs the plug-in in real sessions, driven by its own Lua and exporter."""

import base64
import os
import re
import shutil
import xml.etree.ElementTree as Xml

import states
from support import HERE, LIBRARY, NAME, PARAMETERS, UNIQUE_ID, HostTest, limited_material, read_wav, write_wav

LOOK_AHEAD = 64  # samples at 48 kHz, which the effect reports and Ardour compensates for
TICKS_PER_FRAME = 282240000 // 48000  # Ardour 7 keeps times in its own unit
CONFIGURATION = """<?xml version="1.0" encoding="UTF-8"?>
<Ardour><Config>
<Option name="use-lxvst" value="1"/>
<Option name="discover-plugins-on-start" value="1"/>
<Option name="plugin-path-lxvst" value="{}"/>
</Config></Ardour>
"""


def prepare_home(home, plugins):
    configuration = home / ".config" / "ardour7"
    (configuration / "presets").mkdir(parents=True)
    (configuration / "config").write_text(CONFIGURATION.format(plugins))


def scan(test, library):
    """Writes the scanner's answer to the cache in which a session finds its plug-ins."""
    # A cache counts only if it is newer than the library.
    hour_ago = library.stat().st_mtime - 3600
    os.utime(library, (hour_ago, hour_ago))
    return run_scanner(test, library)


def run_scanner(test, library):
    return test.run_program("/usr/lib/ardour7/ardour-vst-scanner", "-f", "-v", library,
                            LD_LIBRARY_PATH="/usr/lib/ardour7")


def write_preset(home, label, state):
    """A user's preset as Ardour stores it: a chunk under the effect's number."""
    root = Xml.Element("VSTPresets")
    preset = Xml.SubElement(root, "ChunkPreset", uri=f"VST:{UNIQUE_ID}:x0001", label=label, version="1010",
                            numParams=str(PARAMETERS))
    preset.text = base64.b64encode(state).decode()
    Xml.ElementTree(root).write(home / ".config/ardour7/presets" / f"vst-{UNIQUE_ID}", encoding="UTF-8",
                                xml_declaration=True)


def put_sound_on_track(session, file, sound, track):
    """Ardour's Lua can't import, so the file is made a region of the track in the saved session."""
    shutil.copy(file, session.parent / "interchange" / session.parent.name / "audiofiles" / file.name)
    tree = Xml.parse(session)
    root = tree.getroot()
    length = sound.frames * TICKS_PER_FRAME
    first, region_id, range_id = 900000, 900050, 900060  # far above the ids in a new session
    region = {
        "name": "in.1", "id": str(region_id), "type": "audio", "channels": str(len(sound.channels)),
        "start": "a0", "position": "a0", "sync_position": "a0", "length": f"a{length}@a0", "stretch": "1", "shift": "1",
        "muted": "0", "opaque": "1", "locked": "0", "automatic": "1", "whole_file": "0", "first_edit": "nothing",
        "layering_index": "0", "fade-in-active": "0", "fade-out-active": "0", "default-fade-in": "0",
        "default-fade-out": "0", "envelope-active": "0", "scale-amplitude": "1",
    }
    for c in range(len(sound.channels)):
        Xml.SubElement(root.find("Sources"), "Source", name=file.name, type="audio", flags="", id=str(first + c),
                       channel=str(c), origin=file.name, gain="1")
        region[f"source-{c}"] = region[f"master-source-{c}"] = str(first + c)
    next(p for p in root.iter("Playlist") if p.get("name") == track).append(Xml.Element("Region", region))
    locations = root.find("Locations")
    for location in list(locations):
        if "IsSessionRange" in location.get("flags", ""):
            locations.remove(location)
    Xml.SubElement(locations, "Location", {
        "id": str(range_id), "name": "session", "start": "a0", "end": f"a{length}", "flags": "IsSessionRange",
        "locked": "0", "timestamp": "0", "position-lock-style": "AudioTime"})
    tree.write(session, encoding="UTF-8", xml_declaration=True)


def chunk_in(session):
    """The effect's state in the session, as text."""
    for effect in Xml.parse(session).getroot().iter("lxvst"):
        for chunk in effect.iter("chunk"):
            return base64.b64decode(chunk.text).rstrip(b"\0").decode()
    raise AssertionError("the session holds no state of the effect")


def export(test, session, file, frames):
    """The session's sound. What the exporter said if it made no such file: it may hang or end in any way, before or
    after its work, so only the file counts.
    """
    def is_exported(_=None):
        try:
            return read_wav(file).frames == frames
        except (OSError, AssertionError):
            return False
    said = test.run_program("ardour7-export", "-b", "float", "-o", file, session.parent, session.stem, timeout=60,
                            attempts=4, accept=is_exported)
    if not is_exported():
        raise AssertionError(f"Ardour exported nothing:\n{said}")
    return read_wav(file)


def values_in(said):
    return {int(index): float(value) for index, value in re.findall(r"^value (\d+) (\S+)$", said, re.M)}


class Ardour(HostTest):
    """Each test's name says what Ardour does; all of them check one run of three processes."""

    @classmethod
    def set_up_once(cls):
        plugins = cls.folder / "vst"
        plugins.mkdir()
        prepare_home(cls.home, plugins)
        library = plugins / "KAVSorrelLimiter.so"
        shutil.copy(LIBRARY, library)
        cls.scanned = scan(cls, library)

        cls.state = states.told_state(cls.folder, cls.kavhost)
        write_preset(cls.home, "Told", cls.state.read_bytes())
        cls.session = cls.folder / "session" / "limited.ardour"
        cls.inserted = cls.run_session(KAV_PRESET="Told", KAV_VALUES="20=0.9", KAV_OPEN="")
        cls.first_chunk = chunk_in(cls.session)

        cls.sound = limited_material()
        write_wav(cls.folder / "in.wav", cls.sound)
        put_sound_on_track(cls.session, cls.folder / "in.wav", cls.sound, "trk")
        cls.restored = cls.run_session(KAV_PRESET="", KAV_VALUES="", KAV_OPEN="1")
        cls.second_chunk = chunk_in(cls.session)

        cls.exported = export(cls, cls.session, cls.folder / "out.wav", cls.sound.frames)

    @classmethod
    def run_session(cls, **settings):
        """The output of Ardour's Lua script about the session."""
        for _ in range(3):
            if not settings["KAV_OPEN"]:
                shutil.rmtree(cls.session.parent, ignore_errors=True)
            said = cls.run_program("ardour7-lua", HERE / "ardour_session.lua", timeout=60,
                                   KAV_SESSION=cls.session.parent, KAV_NAME=cls.session.stem, KAV_EFFECT=NAME,
                                   **settings)
            if "\nsaved\n" in said:
                return said
        raise AssertionError(f"Ardour did not come to the end:\n{said}")

    def test_scanner_sees_the_effect(self):
        self.assertIn(f'id="{UNIQUE_ID}" name="{NAME}" creator="Kavelin" category="Effect"', self.scanned)
        self.assertIn('n_inputs="2" n_outputs="2"', self.scanned)

    def test_inserts_the_effect_with_all_parameters_on_a_stereo_track(self):
        self.assertIn(f"listed {NAME}\n", self.inserted)
        self.assertIn(f"parameters {PARAMETERS}\nchannels 2 2\ninstances 1\n", self.inserted)

    def test_loads_a_state_and_sets_a_parameter(self):
        values = values_in(self.inserted)
        self.assertEqual(len(values), PARAMETERS, self.inserted)
        for index, value in (states.SETTINGS_BY_INDEX | {20: 0.9}).items():
            self.assertAlmostEqual(values[index], value, 6, f"parameter {index}")

    def test_saves_routing_macros_and_names(self):
        states.check_names(self, self.first_chunk)

    def test_new_process_restores_the_same_values(self):
        self.assertEqual(len(values_in(self.restored)), PARAMETERS, self.restored)
        self.assertEqual(values_in(self.restored), values_in(self.inserted))

    def test_saves_again_what_it_restored(self):
        # Each read keeps the tab of a line that is removed from a routing. That is the state's format, not a
        # difference.
        first, second = (re.sub("\t+", "\t", chunk) for chunk in (self.first_chunk, self.second_chunk))
        self.assertEqual(second, first)

    def test_exports_what_kavhost_renders(self):
        state = self.folder / "session.state"
        state.write_bytes(self.second_chunk.encode() + b"\0")
        self.kavhost("render", "in.wav", "-o", "rendered.wav", "--state", state, "--no-align")
        rendered = read_wav(self.folder / "rendered.wav")
        self.assertGreater(rendered.difference(self.sound), 0.1, "nothing was limited")
        # Ardour plays the track earlier by the number of samples that the effect reports.
        self.assertEqual(self.exported.difference(rendered.from_frame(LOOK_AHEAD)), 0.0)
