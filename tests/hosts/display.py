"""A display without a screen, and what a user does with windows on it. Speaks the X protocol itself, so that it needs
nothing but the server.
"""

import contextlib
import os
import socket
import struct
import subprocess
import time

from support import start_program, stop_program, wait_for

LEFT, RIGHT, WHEEL_UP = 1, 3, 4
KEYS = {"space": 0x20, "Return": 0xFF0D, "Right": 0xFF53, "Control": 0xFFE3}  # a letter's name is the letter
WIDTH, HEIGHT = 1920, 1200

# Numbers of requests, attributes and events, as the protocol defines them.
GET_WINDOW_ATTRIBUTES, CONFIGURE_WINDOW, GET_GEOMETRY, QUERY_TREE, INTERN_ATOM = 3, 12, 14, 15, 16
GET_PROPERTY, SEND_EVENT, TRANSLATE_COORDINATES, SET_INPUT_FOCUS, GET_INPUT_FOCUS = 20, 25, 40, 42, 43
GET_IMAGE, QUERY_EXTENSION, GET_KEYBOARD_MAPPING = 73, 98, 101
FAKE_INPUT = 2
KEY_PRESS, KEY_RELEASE, BUTTON_PRESS, BUTTON_RELEASE, MOTION_NOTIFY, CLIENT_MESSAGE = 2, 3, 4, 5, 6, 33
STACK_MODE, VIEWABLE, Z_PIXMAP, REVERT_TO_PARENT = 0x40, 2, 2, 2


class GoneError(Exception):
    """The server refused a request: nearly always because the window has been destroyed."""


class Client:
    """A connection to the server. One request at a time: each returns once the server has carried it out."""

    def __init__(self, number):
        self.socket = socket.socket(socket.AF_UNIX)
        self.socket.settimeout(10)
        self.socket.connect(f"/tmp/.X11-unix/X{number}")
        self.socket.sendall(struct.pack("<cxHHHHxx", b"l", 11, 0, 0, 0))
        accepted, size = struct.unpack("<B5xH", self.read(8))
        setup = self.read(4 * size)
        if accepted != 1:
            raise AssertionError(f"the server refused the connection: {setup}")
        vendor, = struct.unpack_from("<H", setup, 16)
        formats, self.first_key, self.last_key = setup[21], setup[26], setup[27]
        self.root, = struct.unpack_from("<I", setup, 32 + (vendor + 3) // 4 * 4 + 8 * formats)
        self.atoms = {}
        reply = self.ask(QUERY_EXTENSION, 0, struct.pack("<Hxx", 5) + b"XTEST\0\0\0")
        self.xtest = reply[9]

    def close(self):
        self.socket.close()

    def read(self, size):
        data = b""
        while len(data) < size:
            part = self.socket.recv(size - len(data))
            if not part:
                raise AssertionError("the server closed the connection")
            data += part
        return data

    def send(self, request, detail, body=b""):
        self.socket.sendall(struct.pack("<BBH", request, detail, 1 + len(body) // 4) + body)

    def ask(self, request, detail=0, body=b""):
        """The reply of a request that has one."""
        self.send(request, detail, body)
        while True:
            reply = self.read(32)
            if reply[0] == 0:
                raise GoneError(f"request {request} failed with error {reply[1]}")
            if reply[0] == 1:
                return reply + self.read(4 * struct.unpack_from("<I", reply, 4)[0])
            # Anything else is an event that every client gets, such as a new keyboard mapping.

    def tell(self, request, detail, body):
        """Sends a request without a reply; the next one's reply shows that it has been carried out."""
        self.send(request, detail, body)
        try:
            self.focus()
        except GoneError:
            self.read(32)  # the reply to the second request, after the error of the first
            raise

    def atom(self, name):
        if name not in self.atoms:
            data = name.encode() + bytes(-len(name) % 4)
            reply = self.ask(INTERN_ATOM, 0, struct.pack("<Hxx", len(name)) + data)
            self.atoms[name], = struct.unpack_from("<I", reply, 8)
        return self.atoms[name]

    def property(self, window, name):
        """The bytes of a window's property; None if it hasn't got one."""
        reply = self.ask(GET_PROPERTY, 0, struct.pack("<5I", window, self.atom(name), 0, 0, 1024))
        kind, _, count = struct.unpack_from("<3I", reply, 8)
        return reply[32:32 + count * reply[1] // 8] if kind else None

    def children(self, window):
        """From the lowest to the topmost."""
        reply = self.ask(QUERY_TREE, 0, struct.pack("<I", window))
        return list(struct.unpack_from(f"<{struct.unpack_from('<H', reply, 16)[0]}I", reply, 32))

    def title(self, window):
        text = self.property(window, "_NET_WM_NAME") or self.property(window, "WM_NAME") or b""
        return text.decode(errors="replace")

    def is_visible(self, window):
        """Mapped with all its ancestors. Other windows may cover it. One that has gone isn't."""
        try:
            return self.ask(GET_WINDOW_ATTRIBUTES, 0, struct.pack("<I", window))[26] == VIEWABLE
        except GoneError:
            return False

    def rectangle(self, window):
        """Left, top, width and height, on the screen."""
        width, height = struct.unpack_from("<2H", self.ask(GET_GEOMETRY, 0, struct.pack("<I", window)), 16)
        at = self.ask(TRANSLATE_COORDINATES, 0, struct.pack("<2I2h", window, self.root, 0, 0))
        return (*struct.unpack_from("<2h", at, 12), width, height)

    def parent(self, window):
        return struct.unpack_from("<I", self.ask(QUERY_TREE, 0, struct.pack("<I", window)), 12)[0]

    def is_in_front(self, window, x, y):
        """Whether no other program's window covers this one there."""
        while (above := self.parent(window)) != self.root:
            window = above
        at = self.ask(TRANSLATE_COORDINATES, 0, struct.pack("<2I2h", self.root, self.root, x, y))
        return struct.unpack_from("<I", at, 8)[0] == window

    def pixels(self, left, top, width, height):
        """What the screen shows, 4 bytes a pixel, row after row."""
        area = struct.pack("<I2h2HI", self.root, left, top, width, height, 0xFFFFFFFF)
        return self.ask(GET_IMAGE, Z_PIXMAP, area)[32:32 + 4 * width * height]

    def focus(self):
        """The window with the keyboard's focus."""
        return struct.unpack_from("<I", self.ask(GET_INPUT_FOCUS), 8)[0]

    def set_focus(self, window):
        """As a window manager does when the user chooses a window."""
        self.tell(SET_INPUT_FOCUS, REVERT_TO_PARENT, struct.pack("<II", window, 0))

    def raise_window(self, window):
        self.tell(CONFIGURE_WINDOW, 0, struct.pack("<IHxxI", window, STACK_MODE, 0))

    def ask_to_close(self, window):
        """What a window manager sends when a window's close button is pressed."""
        event = struct.pack("<BBHII5I", CLIENT_MESSAGE, 32, 0, window, self.atom("WM_PROTOCOLS"),
                            self.atom("WM_DELETE_WINDOW"), 0, 0, 0, 0)
        self.tell(SEND_EVENT, 0, struct.pack("<II", window, 0) + event)

    def fake(self, kind, detail, x=0, y=0):
        self.tell(self.xtest, FAKE_INPUT, struct.pack("<BBxxII8xhh8x", kind, detail, 0, self.root, x, y))

    def key_code(self, symbol):
        count = self.last_key - self.first_key + 1
        reply = self.ask(GET_KEYBOARD_MAPPING, 0, struct.pack("<BBxx", self.first_key, count))
        for code in range(count):
            if struct.unpack_from("<I", reply, 32 + 4 * reply[1] * code)[0] == symbol:
                return self.first_key + code
        raise AssertionError(f"no key types {symbol:#x}")


class Display:
    """An X server of its own, with or without a window manager."""

    def __init__(self, folder, environment, window_manager):
        """`environment` is that of the programs started, without DISPLAY."""
        self.programs = contextlib.ExitStack()
        with self.programs:
            ours, servers = os.pipe()
            with open(ours, encoding="ascii") as number:
                command = ["Xvfb", "-displayfd", servers, "-screen", "0", f"{WIDTH}x{HEIGHT}x24", "-nolisten", "tcp",
                           "-noreset"]
                server = start_program(command, folder, environment, "xvfb.log", pass_fds=[servers])
                self.programs.callback(stop_program, server)
                os.close(servers)
                self.number = number.readline().strip()
            self.environment = environment | {"DISPLAY": f":{self.number}"}
            self.client = Client(self.number)
            self.programs.callback(self.client.close)
            if window_manager:
                manager = start_program([window_manager], folder, self.environment, f"{window_manager}.log")
                self.programs.callback(stop_program, manager)
                # A manager announces itself once it manages windows.
                wait_for(lambda: self.client.property(self.client.root, "_NET_SUPPORTING_WM_CHECK"), 10, window_manager)
            self.programs = self.programs.pop_all()

    def close(self):
        self.programs.close()

    def windows(self, part_of_title):
        """Windows of programs that show and have this in their titles. A window manager wraps each in a frame."""
        found = []
        for top in self.client.children(self.client.root):
            with contextlib.suppress(GoneError):
                found += [window for window in (top, *self.client.children(top))
                          if part_of_title in self.client.title(window) and self.client.is_visible(window)]
        return found

    def bring_to_front(self, window):
        """Other windows may have covered it. A window manager raises it in its own time."""
        left, top, width, height = self.client.rectangle(window)
        self.client.raise_window(window)
        wait_for(lambda: self.client.is_in_front(window, left + width // 2, top + height // 2), 10, "a raised window")

    def point(self, x, y):
        self.client.fake(MOTION_NOTIFY, 0, x, y)
        time.sleep(0.05)

    def click(self, x, y, button=LEFT, times=1):
        self.point(x, y)
        for _ in range(times):
            self.client.fake(BUTTON_PRESS, button)
            time.sleep(0.03)
            self.client.fake(BUTTON_RELEASE, button)
            time.sleep(0.03)

    def wheel_up(self, x, y, notches=1):
        self.click(x, y, WHEEL_UP, notches)

    def drag(self, x, y, by_x, by_y, steps=8):
        self.hold(x, y, by_x, by_y, steps)
        self.let_go()

    def hold(self, x, y, by_x, by_y, steps=8):
        """The beginning of a drag, until `let_go`."""
        self.point(x, y)
        self.client.fake(BUTTON_PRESS, LEFT)
        time.sleep(0.1)
        for step in range(1, steps + 1):
            self.point(x + by_x * step // steps, y + by_y * step // steps)
        time.sleep(0.1)

    def let_go(self):
        self.client.fake(BUTTON_RELEASE, LEFT)

    def type_key(self, name, held=()):
        codes = [self.client.key_code(KEYS[key] if key in KEYS else ord(key)) for key in (*held, name)]
        for code in codes:
            self.client.fake(KEY_PRESS, code)
            time.sleep(0.03)
        for code in reversed(codes):
            self.client.fake(KEY_RELEASE, code)
            time.sleep(0.03)

    def type_text(self, letters):
        for letter in letters:
            self.type_key(letter)
