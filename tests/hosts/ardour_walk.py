"""A user's first evening with the editor in Ardour: limit, name, undo, save, and find it all again the next time."""

import contextlib
import re
import time

import ardour_windows
from ardour import chunk_in
from display import RIGHT
from editor import WIDTH
from support import LIBRARY, NAME, HostTest

# Places on the panel at its first size.
THRESHOLD, CEILING = (302, 143), (634, 143)  # the caps of the faders, at their upper ends
MACRO_2 = (290, 464)
NOWHERE = (10, 92)  # no control is there, so no hint shows
HISTORY = (20, 530, 92, 22)  # undo and redo: the next evening begins without steps
PULL = 80  # pixels


def value_in(state, name):
    return float(re.search(f'namew="{re.escape(name)}" >([^<]*)<', state).group(1))


def macros_in(state):
    return re.search("<macro_group_names>(.*)</macro_group_names>", state).group(1).split("|*|")


def with_plain_routings(state):
    """Each reading leaves one more of the tabs that stand in front of a routing's first line."""
    return re.sub("(</fx>\r\n)\t+", r"\1\t", state)


def without_history(picture):
    left, top, width, height = HISTORY
    pixels = bytearray(picture)
    for y in range(top, top + height):
        first = 4 * (y * WIDTH + left)
        pixels[first:first + 4 * width] = bytes(4 * width)
    return bytes(pixels)


class Walk(HostTest):
    """Each test's name says what the user finds; all of them check one project, opened twice."""

    @classmethod
    def set_up_once(cls):
        cls.session = ardour_windows.make_session(cls, LIBRARY, NAME, ["song"])
        with cls.ardour():
            cls.fresh = cls.saved_state()
            cls.pull(THRESHOLD)
            cls.rename(MACRO_2, "air")
            cls.pull(CEILING)
            cls.pulled = cls.state_when(lambda state: "air" in macros_in(state)
                                        and value_in(state, "Output Ceiling (1)") < 1)
            cls.host.display.type_key("z", held=["Control"])
            cls.kept = cls.state_when(lambda state: value_in(state, "Output Ceiling (1)") == 1)
            cls.picture = cls.picture_at_rest()
        with cls.ardour():
            cls.picture_again = cls.picture_at_rest()
            cls.kept_again = cls.saved_state()

    @classmethod
    @contextlib.contextmanager
    def ardour(cls):
        """Ardour with the project and the editor, until it has quit."""
        with ardour_windows.opened(cls, cls.session, NAME, "song") as (cls.host, cls.editor):
            yield

    @classmethod
    def pull(cls, place):
        cls.host.display.drag(*cls.editor.on_screen(place), 0, PULL)

    @classmethod
    def rename(cls, place, letters):
        cls.host.display.click(*cls.editor.on_screen(place), RIGHT)
        time.sleep(0.3)  # the box has the focus, also where that had been taken away after the press
        cls.host.display.type_text(letters)
        cls.host.display.type_key("Return")

    @classmethod
    def saved_state(cls):
        cls.host.save(cls.session)
        return chunk_in(cls.session)

    @classmethod
    def state_when(cls, is_wanted):
        """The state that the project has once it is as wanted; the last one if it never is, which the tests tell."""
        with contextlib.suppress(AssertionError):
            cls.host.until(lambda: is_wanted(cls.saved_state()), 10, "the state")
        return chunk_in(cls.session)

    @classmethod
    def picture_at_rest(cls):
        """With the pointer away, once a second has changed nothing: no hint, no button that still fades."""
        cls.host.display.point(*cls.editor.on_screen(NOWHERE))
        pictures = []

        def is_at_rest():
            time.sleep(0.25)
            pictures.append(without_history(cls.editor.picture()))
            return len(set(pictures[-5:])) == 1 and len(pictures) > 4
        cls.host.until(is_at_rest, 15, "the picture at rest")
        return pictures[-1]

    def test_limits_by_the_threshold_that_was_pulled(self):
        self.assertEqual(value_in(self.fresh, "Threshold (1)"), 1)
        self.assertLess(value_in(self.kept, "Threshold (1)"), 0.95)

    def test_names_a_macro(self):
        self.assertEqual(macros_in(self.kept), ["Macro 1", "air", "Macro 3", "Macro 4", "Macro 5"])

    def test_takes_back_the_last_pull_alone(self):
        self.assertLess(value_in(self.pulled, "Output Ceiling (1)"), 0.95)
        self.assertEqual(value_in(self.kept, "Output Ceiling (1)"), 1)
        self.assertEqual(value_in(self.kept, "Threshold (1)"), value_in(self.pulled, "Threshold (1)"))

    def test_has_the_same_state_the_next_time(self):
        self.assertEqual(with_plain_routings(self.kept_again), with_plain_routings(self.kept))

    def test_shows_the_same_the_next_time(self):
        self.assertEqual(len(self.picture_again), len(self.picture))
        differing = sum(x != y for x, y in zip(memoryview(self.picture_again).cast("I"),
                                               memoryview(self.picture).cast("I")))
        self.assertEqual(differing, 0, "pixels")
