"""What is heard in Ardour of what was done in the editor: values set by it, and automation that it writes."""

import shutil
import time

import ardour_windows
from ardour import chunk_in, export, put_sound_on_track
from support import LIBRARY, NAME, RATE, HostTest, limited_material, read_wav, write_wav

CEILING_PARAMETER = 20
# Places on the panel.
THRESHOLD, RELEASE, CEILING = (302, 143), (471, 310), (634, 143)  # the caps of the faders in a new instance
WAY_OF_CEILING = (614, 118, 30, 337)  # left, top, width, height: nothing else in it moves
NOWHERE = (10, 92)
PULL = 80  # pixels
SECONDS = 8


class ArdourSong(HostTest):
    """Each test's name says what is heard or seen; all of them check one session, opened twice."""

    @classmethod
    def set_up_once(cls):
        cls.session = ardour_windows.make_session(cls, LIBRARY, NAME, ["song"])
        cls.sound = limited_material(SECONDS)
        write_wav(cls.folder / "in.wav", cls.sound)
        put_sound_on_track(cls.session, cls.folder / "in.wav", cls.sound, "song")
        ardour_windows.automate_by_touch(cls.session, "song", CEILING_PARAMETER)
        with ardour_windows.opened(cls, cls.session, NAME, "song") as (cls.host, cls.editor):
            cls.still = cls.set_by_hand()
            cls.write_automation()
            cls.seen = cls.play()
        cls.points = [value for _, value in ardour_windows.points_of(cls.session, "song", CEILING_PARAMETER)]
        with_automation = cls.exported(cls.session, "first.wav")
        with ardour_windows.opened(cls, cls.session, NAME, "song"):
            pass
        cls.exports = with_automation, cls.exported(cls.session, "second.wav")

    @classmethod
    def exported(cls, session, name):
        return export(cls, session, cls.folder / name, cls.sound.frames)

    @classmethod
    def rendered(cls, session):
        """What kavhost makes of the sound with the state that the session holds."""
        state = cls.folder / "session.state"
        state.write_bytes(chunk_in(session).encode() + b"\0")
        cls.kavhost("render", "in.wav", "-o", "rendered.wav", "--state", state)
        return read_wav(cls.folder / "rendered.wav")

    # The steps of the run

    @classmethod
    def set_by_hand(cls):
        """A copy of the session, with values that were set while it stood still, so without automation."""
        for place in THRESHOLD, RELEASE:
            cls.host.display.drag(*cls.editor.on_screen(place), 0, PULL)
            time.sleep(0.3)  # the end of the edit follows the value
        cls.host.save(cls.session)
        copy = cls.folder / "still" / cls.session.parent.name
        shutil.copytree(cls.session.parent, copy)
        return copy / cls.session.name

    @classmethod
    def write_automation(cls):
        cls.host.remote.send("/transport_play")
        cls.host.wait_for_roll()
        cls.host.display.drag(*cls.editor.on_screen(CEILING), 0, PULL, steps=16)
        time.sleep(0.5)
        cls.written = cls.host.remote.ask("/transport_frame")
        cls.host.remote.send("/transport_stop")
        cls.host.wait_for_stop()

    @classmethod
    def go_to_start(cls):
        """Again and again: a command is lost while the transport is still stopping."""
        def is_there():
            cls.host.remote.send("/goto_start")
            time.sleep(0.2)
            return cls.host.remote.ask("/transport_frame") == 0
        cls.host.until(is_there, 30, "the start")

    @classmethod
    def play(cls):
        """The pictures of the fader meanwhile: each once."""
        cls.host.display.point(*cls.editor.on_screen(NOWHERE))
        left, top, width, height = WAY_OF_CEILING
        way = (*cls.editor.on_screen((left, top)), width, height)
        cls.go_to_start()
        time.sleep(1)  # the fader moves to its value gradually
        seen = {cls.host.display.client.pixels(*way)}
        cls.host.remote.send("/transport_play")
        end = time.monotonic() + cls.written / RATE
        while time.monotonic() < end:
            seen.add(cls.host.display.client.pixels(*way))
            time.sleep(0.02)
        cls.host.remote.send("/transport_stop")
        cls.host.wait_for_stop()
        return seen

    # What they have to have heard and seen

    def test_exports_the_values_that_were_set_as_kavhost_renders_them(self):
        self.assertEqual(ardour_windows.points_of(self.still, "song", CEILING_PARAMETER), [])
        exported, rendered = self.exported(self.still, "still.wav"), self.rendered(self.still)
        self.assertGreater(rendered.difference(self.sound), 0.1, "nothing was limited")
        self.assertEqual(rendered.frames, exported.frames)
        self.assertEqual(exported.difference(rendered), 0.0)

    def test_writes_the_automation_of_a_drag(self):
        self.assertGreater(len(self.points), 10)
        self.assertLess(self.points[-1], self.points[0] - 0.1)

    def test_moves_the_fader_when_the_automation_is_played(self):
        self.assertGreater(len(self.seen), 10)

    def test_exports_the_automation(self):
        self.assertGreater(self.exports[0].difference(self.rendered(self.session)), 0.01)

    def test_exports_the_same_after_it_was_opened_again(self):
        first, second = self.exports
        self.assertEqual(second.frames, first.frames)
        self.assertEqual(second.difference(first), 0.0)
