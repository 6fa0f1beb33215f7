"""The editor in Ardour with its windows, with a window manager and without one."""

import contextlib
import time

import ardour_windows
from editor import WIDTH
from support import LIBRARY, NAME, HostTest, running_at

PANEL = (WIDTH, 553)
ASPECT = PANEL[0] / PANEL[1]
KNOB = (704, 504)  # middle of the main output gain, in such pixels
RIGHT_EDGE = (750, 300)
NOWHERE = (10, 92)  # a place where a press changes nothing
GAIN = 102  # the parameter of the main output gain
RESIZE, DRAG = 100, 50  # pixels
RESIZED = (PANEL[0] + RESIZE, int((PANEL[0] + RESIZE) / ASPECT))
GROWN = (RESIZED[0] - PANEL[0], RESIZED[1] - PANEL[1])
NOTCHED = 0.5 + 10 / 500  # normal values: from rest by one notch of the wheel, then by the drag
DRAGGED = NOTCHED + DRAG / 500


def is_close(value, other):
    return abs(value - other) < 1e-4


class Editing:
    """Each test's name says what the editor does; all of them check one run of Ardour with two editors."""

    WINDOW_MANAGER = None
    EFFECT = NAME

    @classmethod
    def set_up_once(cls):
        cls.session = ardour_windows.make_session(cls, LIBRARY, cls.EFFECT, ["left", "right"])
        ardour_windows.automate_by_touch(cls.session, "left", GAIN)
        cls.seen = {}
        cls.host = ardour_windows.ArdourWindows(cls, cls.session, cls.EFFECT, cls.WINDOW_MANAGER)
        try:
            for step in (cls.open, cls.type_over_it, cls.press_and_type, cls.resize, cls.automate, cls.hide, cls.quit):
                try:
                    cls.seen[step.__name__] = step()
                except Exception as problem:  # the tests of this step fail with it
                    cls.seen[step.__name__] = problem
        finally:
            cls.host.close()

    def saw(self, step):
        """What the step returned."""
        result = self.seen[step]
        if isinstance(result, Exception):
            raise self.failureException(f"{step}: {result}") from result
        return result

    # The steps of the run

    @classmethod
    def open(cls):
        """The number of colours in each editor, and the size of each."""
        cls.editors = [cls.host.wait_for_editor(track) for track in ("left", "right")]
        found = []
        for editor in cls.editors:
            editor.raise_window()
            cls.host.until(editor.is_drawn, 10, "the first picture")
            found.append(editor.rectangle[2:])
        return found

    @classmethod
    def space_starts_and_stops(cls):
        """Whether the transport says so."""
        before = cls.host.speed()
        cls.host.display.type_key("space")
        cls.host.wait_for_roll()
        cls.host.display.type_key("space")
        cls.host.wait_for_stop()
        return before == 0

    @classmethod
    def type_over_it(cls):
        """A key while the pointer is over an editor that hasn't been pressed, and the host's window has the focus."""
        editor = cls.editors[0]
        editor.raise_window()
        cls.host.display.client.set_focus(editor.host_window)
        cls.host.display.point(*editor.on_screen(NOWHERE))
        return cls.space_starts_and_stops()

    @classmethod
    def press_and_type(cls):
        found = []
        for editor in cls.editors:  # each is inactive when it is pressed
            editor.raise_window()
            cls.host.display.click(*editor.on_screen(NOWHERE))
            time.sleep(0.3)  # the window manager may have taken the focus away at once
            cls.host.until(lambda: cls.host.display.client.focus() == editor.window, 5, "the focus follows the press")
            found.append(cls.space_starts_and_stops())
        return found

    @classmethod
    def resize(cls):
        """The size of the left editor, the growth of its host's window, and the size of the right editor."""
        editor, other = cls.editors
        editor.raise_window()
        before = editor.host_size
        cls.host.display.drag(*editor.on_screen(RIGHT_EDGE), RESIZE, 0)

        def grown():
            return tuple(now - then for now, then in zip(editor.host_size, before))
        for _ in range(2):  # the host may answer late to a size on the way
            with contextlib.suppress(AssertionError):
                cls.host.until(lambda: (editor.rectangle[2:], grown()) == (RESIZED, GROWN), 10, "the host follows")
            time.sleep(0.5)
        return editor.rectangle[2:], grown(), other.rectangle[2:], editor.is_drawn()

    @classmethod
    def automate(cls):
        """The points of the automation that the session then has."""
        editor = cls.editors[0]
        editor.raise_window()
        knob = editor.on_screen(KNOB)
        cls.host.remote.send("/transport_play")
        cls.host.wait_for_roll()
        cls.host.display.wheel_up(*knob)
        cls.wait_for_point(NOTCHED)
        cls.host.display.drag(*knob, 0, -DRAG)
        cls.wait_for_point(DRAGGED)
        cls.host.remote.send("/transport_stop")
        cls.host.wait_for_stop()
        return cls.saved_points()

    @classmethod
    def saved_points(cls):
        cls.host.save(cls.session)
        return [value for _, value in ardour_windows.points_of(cls.session, "left", GAIN)]

    @classmethod
    def wait_for_point(cls, value):
        """Until the automation has it; the test fails later if it never does."""
        with contextlib.suppress(AssertionError):
            cls.host.until(lambda: any(is_close(point, value) for point in cls.saved_points()), 10, "a point")
        time.sleep(0.3)  # the end of the edit follows the value

    @classmethod
    def hide(cls):
        """Whether a key reaches the transport while the editor is hidden; its colours and size when it shows again."""
        editor = cls.editors[0]
        editor.raise_window()
        cls.host.display.click(*editor.on_screen(NOWHERE))
        size = editor.rectangle[2:]
        cls.host.hide(editor)
        cls.host.point_at_main_window()
        started = cls.space_starts_and_stops()
        cls.host.show_strip()
        again = cls.host.show("left")
        again.raise_window()
        cls.host.until(again.is_drawn, 10, "the picture")
        return started, again.rectangle[2:] == size

    @classmethod
    def quit(cls):
        """Its exit status, and what is left running."""
        cls.host.save(cls.session)
        status = cls.host.quit()
        return status, running_at(cls.home)

    # What they have to have seen

    def test_opens_at_its_own_size_and_is_drawn(self):
        self.assertEqual(self.saw("open"), [PANEL, PANEL])

    def test_hands_keys_on_that_arrive_without_a_press(self):
        self.assertTrue(self.saw("type_over_it"))

    def test_takes_the_focus_when_pressed_and_hands_on_what_it_has_no_use_for(self):
        self.assertEqual(self.saw("press_and_type"), [True, True])

    def test_resizes_with_the_window_of_the_host(self):
        size, growth, other, drawn = self.saw("resize")
        self.assertEqual(size, RESIZED)
        self.assertEqual(growth, GROWN)
        self.assertEqual(other, PANEL, "the other editor")
        self.assertTrue(drawn)

    def test_writes_automation_by_wheel_and_by_drag(self):
        points = self.saw("automate")
        self.assertTrue(any(is_close(value, NOTCHED) for value in points), points)
        self.assertTrue(is_close(points[-1], DRAGGED), points)

    def test_shows_again_after_it_was_hidden(self):
        started, same_size = self.saw("hide")
        self.assertTrue(started, "space while it is hidden")
        self.assertTrue(same_size)

    def test_lets_the_host_quit(self):
        self.assertEqual(self.saw("quit"), (0, []))


class EditorWithoutWindowManager(Editing, HostTest):
    pass


class EditorUnderOpenbox(Editing, HostTest):
    WINDOW_MANAGER = "openbox"
