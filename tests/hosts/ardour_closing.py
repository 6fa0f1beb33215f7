"""Ardour hides the editor, removes the effect or quits while the user is in the middle of a drag, a menu or a dialog."""

import contextlib
import time
import unittest.mock
import xml.etree.ElementTree as Xml

import ardour_windows
from ardour import chunk_in
from ardour_walk import value_in
from editor import Middle
from support import LIBRARY, NAME, RATE, becomes_true, running_at

THRESHOLD_PARAMETER = 4


class ArdourMiddle(Middle):
    @classmethod
    def show(cls, track):
        cls.editor = cls.host.wait_for_editor(track)
        cls.display = cls.host.display
        cls.editor.raise_window()
        cls.host.until(cls.editor.is_drawn, 20, "a picture")

    @classmethod
    def saved_threshold(cls):
        cls.host.save(cls.session)
        return value_in(chunk_in(cls.session), "Threshold (1)")


class ArdourClosing(ArdourMiddle):
    """Each test's name says what happens; all of them check one run with an editor for each thing."""

    BEGUN = ("drag", "menu", "dialog")  # and the names of the tracks

    @classmethod
    def set_up_once(cls):
        super().set_up_once()
        cls.session = ardour_windows.make_session(cls, LIBRARY, NAME, (*cls.BEGUN, "track"))
        ardour_windows.automate_by_touch(cls.session, "drag", THRESHOLD_PARAMETER)
        with contextlib.closing(ardour_windows.ArdourWindows(cls, cls.session, NAME)) as cls.host:
            cls.hidden = {what: cls.hide_in(what) for what in cls.BEGUN}
            cls.host.show_strip()
            cls.removed = {what: cls.remove_in(what, place) for place, what in enumerate(cls.BEGUN)}
            cls.removed_with_track = cls.remove_track_in_drag("track", len(cls.BEGUN))
            cls.host.save(cls.session)
            cls.status = cls.host.quit()
            cls.left = running_at(cls.home)

    @classmethod
    def hide_in(cls, what):
        cls.show(what)
        if what == "drag":
            cls.host.remote.send("/transport_play")
            cls.host.wait_for_roll()
        cls.begin(what)
        cls.host.hide(cls.editor)
        return {"drag": cls.seconds_of_writing, "menu": cls.is_over, "dialog": cls.answer}[what]()

    @classmethod
    def seconds_of_writing(cls):
        """How long after the editor was hidden Ardour went on writing automation, in seconds."""
        hidden_at = cls.host.remote.ask("/transport_frame")
        time.sleep(3)
        cls.host.remote.send("/transport_stop")
        cls.host.wait_for_stop()
        cls.display.let_go()
        cls.host.save(cls.session)
        last, _ = ardour_windows.points_of(cls.session, "drag", THRESHOLD_PARAMETER)[-1]
        return (last - hidden_at) / RATE

    @classmethod
    def answer(cls):
        """Whether the patch is saved that the user names now."""
        patch = cls.folder / "late.kvp"
        (cls.folder / "typing").write_text(f"{patch}\n")
        answer = (cls.folder / "typing").rename(cls.folder / "answer")
        is_saved = becomes_true(patch.exists)
        answer.unlink()
        return is_saved and cls.is_over()

    @classmethod
    def remove_in(cls, what, place):
        """Whether nothing is left of what was begun."""
        cls.host.show(what, place)
        cls.show(what)
        cls.begin(what)
        cls.host.action("ProcessorMenu/delete")
        return cls.has_closed(what)

    @classmethod
    def has_closed(cls, track):
        return becomes_true(lambda: not cls.host.find_editor(track)) and cls.is_over()

    @classmethod
    def remove_track_in_drag(cls, track, place):
        cls.host.show(track, place)
        cls.show(track)
        cls.begin("drag")
        cls.host.action("Editor/remove-track")
        question, = cls.host.until(lambda: cls.display.windows("Remove track"), 10, "Ardour's question")
        cls.display.client.set_focus(question)
        cls.display.type_key("Right")  # from "No" to "Yes"
        cls.display.type_key("Return")
        return cls.has_closed(track)

    # What has to have happened

    def test_hiding_ends_a_drag_and_what_it_writes(self):
        self.assertLess(self.hidden["drag"], 1.5)

    def test_hiding_closes_a_menu(self):
        self.assertTrue(self.hidden["menu"])

    def test_hiding_leaves_a_dialog_to_the_user_who_may_answer_it(self):
        self.assertTrue(self.hidden["dialog"])

    def test_removing_the_effect_ends_what_was_begun(self):
        self.assertEqual(self.removed, dict.fromkeys(self.BEGUN, True))
        self.assertTrue(self.removed_with_track)
        self.assertEqual(ardour_windows.effects_in(Xml.parse(self.session)), [])

    def test_lets_the_host_quit(self):
        self.assertEqual((self.status, self.left), (0, []))


class ArdourQuitting(ArdourMiddle):
    """Ardour saves the session and quits in the middle of each thing."""

    @classmethod
    def set_up_once(cls):
        super().set_up_once()
        cls.session = ardour_windows.make_session(cls, LIBRARY, NAME, ["song"])

    def check_quitting_in(self, what):
        """Of the thresholds saved before and in the middle of it, the second less the first."""
        cls = type(self)
        with contextlib.closing(ardour_windows.ArdourWindows(cls, self.session, NAME)) as cls.host:
            cls.show("song")
            before = cls.saved_threshold()
            cls.begin(what)
            middle = cls.saved_threshold()  # and so it doesn't ask
            self.assertEqual(self.host.quit(), 0)
            self.assertEqual(running_at(self.home), [])
        return middle - before

    def test_in_a_drag(self):
        self.assertLess(self.check_quitting_in("drag"), -0.05)

    def test_in_a_menu(self):
        self.assertEqual(self.check_quitting_in("menu"), 0)

    def test_in_a_dialog(self):
        self.assertEqual(self.check_quitting_in("dialog"), 0)

    def test_in_the_editors_own_list(self):
        with unittest.mock.patch.object(ArdourQuitting, "road", "list"):
            self.assertEqual(self.check_quitting_in("list"), 0)
