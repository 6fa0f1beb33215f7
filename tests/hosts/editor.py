"""The editor in a host's window, and what a user may be in the middle of there when the host closes it."""

import os

from support import HostTest, becomes_true, running_at, wait_for

WIDTH = 754  # pixels at its first size
DRAWN = 100  # colours; a window that isn't drawn has one, the panel has thousands
# Places on the panel, at that size.
THRESHOLD = (302, 143)  # the cap of the fader, at its upper end
SETTINGS = (714, 542)  # opens a menu
SAVE = (429, 542)  # asks for a file
PULL = 60  # pixels
# Stands for the dialog's program and asks nobody: it waits for a file with the answer.
DIALOG = """#!/bin/sh
while [ -d "{folder}" ] && [ ! -e "{folder}/answer" ]; do sleep 0.1; done
cat "{folder}/answer"
"""


class Editor:
    """An editor in its host's window: what shows, and where."""

    def __init__(self, display, host_window, window):
        self.display = display
        self.host_window = host_window
        self.window = window

    @property
    def rectangle(self):
        return self.display.client.rectangle(self.window)

    @property
    def host_size(self):
        return self.display.client.rectangle(self.host_window)[2:]

    def picture(self):
        """What the screen shows in the editor's place; a part of it, if that isn't all on the screen."""
        return self.display.client.pixels(*self.rectangle)

    def on_screen(self, place):
        """Where a place on the panel is, whatever the editor's size."""
        left, top, width, _ = self.rectangle
        return [corner + round(at * width / WIDTH) for corner, at in zip((left, top), place)]

    def is_drawn(self):
        return len(set(memoryview(self.picture()).cast("I"))) >= DRAWN

    def raise_window(self):
        """Brings it in front of the host's other windows, which may cover it."""
        self.display.bring_to_front(self.host_window)


class Middle(HostTest):
    """What a user may be in the middle of. Each thing begins in `cls.editor`, and on `cls.display`."""

    road = "zenity"  # how the editor asks for files

    @classmethod
    def set_up_once(cls):
        super().set_up_once()
        dialog = cls.folder / "programs" / "zenity"
        dialog.parent.mkdir()
        dialog.write_text(DIALOG.format(folder=cls.folder))
        dialog.chmod(0o755)

    @classmethod
    def environment(cls, **more):
        return super().environment(PATH=f"{cls.folder}/programs:{os.environ['PATH']}", KAV_FILE_DIALOG=cls.road, **more)

    @classmethod
    def begin(cls, what):
        cls.editor.raise_window()
        cls.before = cls.visible()
        if what == "drag":
            picture = cls.editor.picture()
            cls.display.hold(*cls.editor.on_screen(THRESHOLD), 0, PULL)
            wait_for(lambda: cls.editor.picture() != picture, 10, what)
        else:
            place, has_begun = {"menu": (SETTINGS, cls.opened_windows), "dialog": (SAVE, cls.asks),
                                "list": (SAVE, cls.opened_windows)}[what]
            cls.display.click(*cls.editor.on_screen(place))
            wait_for(has_begun, 10, what)

    @classmethod
    def visible(cls):
        client = cls.display.client
        return {window for window in client.children(client.root) if client.is_visible(window)}

    @classmethod
    def opened_windows(cls):
        """Windows that show since the last `begin`."""
        return cls.visible() - cls.before

    @classmethod
    def asks(cls):
        """Whether the dialog's program is running."""
        return "zenity" in running_at(cls.home)

    @classmethod
    def is_over(cls):
        """Whether nothing of it is left within 10 s after the editor was closed. The user lets go of the button."""
        cls.display.let_go()
        return becomes_true(lambda: not cls.opened_windows() and not cls.asks())
