"""The editor in Audacity's window of an effect."""

import contextlib
import re
import time

import audacity
from display import GoneError
from editor import Editor, Middle
from support import NAME, read_wav, wait_for

MAIN_OUTPUT_GAIN = 102
STARTS = 3
KNOB = (704, 504)  # its middle on the panel
TURN = 50  # pixels
APPLY = (-50, -22)  # from the editor's upper right corner


class AudacityWindow(Middle, audacity.Host):
    """Each test's name says what happens; all of them check one run that opens the window for each of them."""

    BEGUN = ("drag", "menu", "dialog")

    @classmethod
    def set_up_once(cls):
        super().set_up_once()
        with cls.with_selection() as (cls.display, cls.pipe):
            cls.command = cls.command_of_menu()
            cls.closed = {what: cls.close_in(what) for what in cls.BEGUN}
            cls.applied = cls.turn_and_apply()
            cls.exported = cls.talk(cls.pipe, f'Export2: Filename="{cls.folder}/out.wav" NumChannels=2')

    @classmethod
    def command_of_menu(cls):
        """What opens the window; the effect's own command applies it without."""
        menus, = cls.talk(cls.pipe, "GetInfo: Type=Menus Format=LISP")
        return re.search(rf'"{NAME}\.\.\."\).*\(id "(.*)"\)', menus).group(1) + ":"

    @classmethod
    def open_window(cls):
        """Audacity answers when the window is closed, and occasionally it closes the window while it opens."""
        for _ in range(STARTS):
            cls.pipe.send(cls.command)
            with contextlib.suppress(GoneError):
                wait_for(lambda: cls.pipe.has_answer() or cls.shows_editor(), 30, "the effect's window")
                if not cls.pipe.has_answer():
                    return
            cls.pipe.answer()
        raise AssertionError("Audacity does not keep the effect's window open")

    @classmethod
    def shows_editor(cls):
        cls.editor = cls.find_editor()
        return cls.editor and cls.editor.is_drawn()

    @classmethod
    def find_editor(cls):
        client = cls.display.client
        for window in cls.display.windows(NAME):
            for parent in client.children(window):
                for own in client.children(parent):
                    if client.is_visible(own):
                        return Editor(cls.display, window, own)
        return None

    @classmethod
    def close_in(cls, what):
        """Whether nothing of it is left."""
        cls.open_window()
        cls.begin(what)
        cls.display.client.ask_to_close(cls.editor.host_window)
        wait_for(lambda: not cls.display.windows(NAME), 10, "the window closes")
        cls.pipe.answer()
        return cls.is_over()

    @classmethod
    def turn_and_apply(cls):
        cls.open_window()
        cls.display.drag(*cls.editor.on_screen(KNOB), 0, -TURN, steps=1)
        time.sleep(0.5)  # the end of the edit follows the value
        left, top, width, _ = cls.editor.rectangle
        cls.display.click(left + width + APPLY[0], top + APPLY[1])
        wait_for(lambda: not cls.display.windows(NAME), 30, "the window closes")
        return cls.pipe.answer()

    def test_closes_in_the_middle_of_anything(self):
        self.assertEqual(self.closed, dict.fromkeys(self.BEGUN, True))

    def test_applies_what_was_set_as_kavhost_does(self):
        for answer in (self.applied, *self.exported):
            self.assertIn("BatchCommand finished: OK", answer)
        exported = read_wav(self.folder / "out.wav")
        turned = self.rendered(audacity.VALUES | {MAIN_OUTPUT_GAIN: 0.5 + TURN / 500})
        self.assertEqual(exported.frames, turned.frames + audacity.LOOK_AHEADS)
        self.assertGreater(turned.difference(self.rendered(audacity.VALUES)), 0.1, "the knob changes nothing")
        self.assertEqual(exported.difference(turned), 0.0)
