"""Ardour with its windows, on a display of its own, and the sessions that open editors in it."""

import contextlib
import os
import pathlib
import shutil
import time
import xml.etree.ElementTree as Xml

from ardour import TICKS_PER_FRAME, scan
from display import Display
from editor import Editor
from osc import Remote
from support import HERE, RATE, start_program, stop_program, wait_for

# The dummy engine runs at once, VST 2 is on, and nothing is asked at the start.
CONFIGURATION = """<?xml version="1.0" encoding="UTF-8"?>
<Ardour><Config>
<Option name="use-lxvst" value="1"/>
<Option name="discover-plugins-on-start" value="1"/>
<Option name="plugin-path-lxvst" value="{}"/>
<Option name="try-autostart-engine" value="1"/>
<Option name="hide-dummy-backend" value="0"/>
</Config><Extra><AudioMIDISetup><EngineStates>
<State backend="None (Dummy)" driver="Normal Speed" device="Silence" input-device="" output-device=""
 sample-rate="48000" buffer-size="1024" n-periods="0" input-latency="0" output-latency="0" input-channels="0"
 output-channels="0" active="1" use-buffered-io="0" midi-option="No MIDI I/O" lru="1700000000"><MIDIDevices/></State>
</EngineStates></AudioMIDISetup></Extra></Ardour>
"""
WINDOWS_CONFIGURATION = """<?xml version="1.0" encoding="UTF-8"?>
<Ardour><UI>
<Option name="check-announcements" value="0"/>
<Option name="ask-before-closing-last-window" value="0"/>
<Option name="hide-splash-screen" value="1"/>
<Option name="show-plugin-scan-window" value="0"/>
</UI></Ardour>
"""
REMOTE_CONTROL = {
    "name": "Open Sound Control (OSC)", "feedback": "0", "debugmode": "0", "address-only": "0", "remote-port": "8000",
    "banksize": "0", "striptypes": "31", "gainmode": "0", "send-page-size": "0", "plug-page-size": "0", "active": "1",
}
STARTS = 3


def prepare_home(home, plugins):
    configuration = home / ".config" / "ardour7"
    configuration.mkdir(parents=True)
    (configuration / ".a7").touch()  # the questions of the first start have been answered
    (configuration / "config").write_text(CONFIGURATION.format(plugins))
    (configuration / "ui_config").write_text(WINDOWS_CONFIGURATION)


def child(element, tag):
    found = element.find(tag)
    return Xml.SubElement(element, tag) if found is None else found


def make_session(test, library, effect, tracks):
    """As new_session, with a copy of the library."""
    plugins = test.folder / "vst"
    plugins.mkdir()
    prepare_home(test.home, plugins)
    copy = pathlib.Path(shutil.copy(library, plugins))
    return new_session(test, effect, tracks, scan(test, copy))


def new_session(test, effect, tracks, scanned):
    """The file of a new session with the effect on each of the tracks. Loading it opens their editors."""
    session = test.folder / "session" / "edited.ardour"
    for _ in range(STARTS):
        shutil.rmtree(session.parent, ignore_errors=True)
        said = test.run_program("ardour7-lua", HERE / "ardour_tracks.lua", timeout=60, KAV_SESSION=session.parent,
                                KAV_NAME=session.stem, KAV_EFFECT=effect, KAV_TRACKS=" ".join(tracks))
        if "\nsaved\n" in said:
            break
    else:
        raise AssertionError(f"Ardour made no session:\n{said}\n{scanned}")
    tree = Xml.parse(session)
    control = child(tree.getroot(), "ControlProtocols")
    for protocol in [old for old in control if old.get("name") == REMOTE_CONTROL["name"]]:
        control.remove(protocol)
    Xml.SubElement(control, "Protocol", REMOTE_CONTROL)
    windows = child(child(tree.getroot(), "Extra"), "UI")
    for place, (route, processor) in enumerate(effects_in(tree)):
        Xml.SubElement(windows, "Window", {
            "name": f"P-{route.get('id')}-{processor.get('id')}", "visible": "1", "custom-ui": "1",
            "x-off": str(150 + 900 * (place % 2)), "y-off": "420", "x-size": "-1", "y-size": "-1"})
    tree.write(session, encoding="UTF-8", xml_declaration=True)
    return session


def effects_in(tree):
    """Pairs of a track and its effect, as the session has them."""
    return [(route, processor) for route in tree.getroot().iter("Route")
            for processor in route.findall("Processor") if processor.get("type") == "lxvst"]


def automation_of(processor, parameter):
    return next(line for line in processor.iter("AutomationList")
                if line.get("automation-id") == f"parameter-{parameter}")


def automate_by_touch(session, track, parameter):
    """The track's effect records what is done to a parameter while it is touched."""
    tree = Xml.parse(session)
    for route, processor in effects_in(tree):
        if route.get("name") == track:
            line = automation_of(processor, parameter)
            line.set("state", "Touch")
            # Ardour 7.3 crashes when an editor's thread touches what it keeps by musical time, its default: that
            # thread has no tempo map.
            line.set("time-domain", "AudioTime")
    tree.write(session, encoding="UTF-8", xml_declaration=True)


def points_of(session, track, parameter):
    """The track's saved automation: pairs of a frame and a value, by time."""
    for route, processor in effects_in(Xml.parse(session)):
        if route.get("name") == track:
            events = automation_of(processor, parameter).findtext("events") or ""
            return [(int(time.removeprefix("a")) // TICKS_PER_FRAME, float(value))
                    for time, value in map(str.split, events.strip().splitlines())]
    raise AssertionError(f"no effect on the track {track}")


def port_of(process):
    """The UDP port on which a process listens: 3819, or the next that is free. None as long as there isn't one."""
    sockets = set()
    for file in pathlib.Path(f"/proc/{process.pid}/fd").iterdir():
        with contextlib.suppress(FileNotFoundError):
            sockets.add(os.readlink(file))
    for line in pathlib.Path("/proc/net/udp").read_text().splitlines()[1:]:
        fields = line.split()
        if f"socket:[{fields[9]}]" in sockets:
            return int(fields[1].split(":")[1], 16)
    return None


@contextlib.contextmanager
def opened(test, session, effect, track):
    """A running Ardour and the track's editor, once it is drawn. In the end it has saved the session and quit."""
    with contextlib.closing(ArdourWindows(test, session, effect)) as host:
        editor = host.wait_for_editor(track)
        editor.raise_window()
        host.until(editor.is_drawn, 20, "a picture")
        yield host, editor
        host.save(session)  # else it asks
        host.quit()


class ArdourWindows:
    """A running Ardour. Whoever makes one closes it."""

    def __init__(self, test, session, effect, window_manager=None):
        self.effect = effect
        self.programs = contextlib.ExitStack()
        with self.programs:
            self.display = Display(test.folder, test.environment(), window_manager)
            self.programs.callback(self.display.close)
            self.start(test, session)
            self.programs.callback(stop_program, self.process)
            self.remote = Remote(self.port)
            self.programs.callback(self.remote.close)
            self.programs = self.programs.pop_all()

    def start(self, test, session):
        """It sometimes hangs or aborts before it has loaded the session, whatever that holds."""
        for attempt in range(STARTS):
            self.process = start_program([*test.entering, "ardour", "-n", "--no-announcements", session], test.folder,
                                         self.display.environment, "ardour.log")
            try:
                self.port = wait_for(lambda: self.ended() or port_of(self.process), 60, "Ardour's start")
                wait_for(lambda: self.ended() or self.display.windows(" - Ardour"), 60, "Ardour's window")
                if not self.ended():
                    return
            except (AssertionError, OSError):
                if attempt == STARTS - 1:
                    raise
            stop_program(self.process)
        log = (test.folder / "ardour.log").read_text(errors="replace")
        raise AssertionError(f"Ardour ended while it started:\n{log}")

    def ended(self):
        return self.process.poll() is not None

    def close(self):
        self.programs.close()

    def until(self, condition, seconds, what):
        """Waits as wait_for does, but no longer than Ardour lives."""
        result = wait_for(lambda: self.ended() or condition(), seconds, what)
        if self.ended():
            raise AssertionError(f"{what}: Ardour ended with {self.process.returncode}")
        return result

    def title_of(self, track):
        return f"{track}: {self.effect} "

    def find_editor(self, track):
        """None if there isn't one, it can't be seen, or the host shows its own controls."""
        client = self.display.client
        for window in self.display.windows(self.title_of(track)):
            # The host's window holds a socket, that holds the window which the host gave the editor.
            for socket in client.children(window):
                for parent in client.children(socket):
                    for own in client.children(parent):
                        if client.is_visible(own):
                            return Editor(self.display, window, own)
        return None

    def wait_for_editor(self, track, seconds=60):
        return self.until(lambda: self.find_editor(track), seconds, f"the editor of {track}")

    def action(self, name):
        self.remote.send("/access_action", name)

    def speed(self):
        """0 when the transport stands, 1 when it plays."""
        return self.remote.ask("/transport_speed")

    def wait_for_stop(self):
        self.until(lambda: self.speed() == 0, 10, "the transport stops")

    def wait_for_roll(self):
        """Until it moves: a command before that is lost."""
        self.until(lambda: self.speed() == 1, 10, "the transport starts")
        start = self.remote.ask("/transport_frame")
        self.until(lambda: self.remote.ask("/transport_frame") > start + RATE // 4, 10, "the transport moves")

    def hide(self, editor):
        """As its close button does; the host keeps the editor open."""
        self.display.client.ask_to_close(editor.host_window)
        self.until(lambda: editor.host_window not in self.display.windows(self.effect), 10, "the window is hidden")

    def main_window(self):
        """Its left and top, with nothing in front of it."""
        main = self.until(lambda: self.display.windows(" - Ardour"), 10, "Ardour's window")[0]
        self.display.bring_to_front(main)
        return self.display.client.rectangle(main)[:2]

    def point_at_main_window(self):
        left, top = self.main_window()
        self.display.point(left + 900, top + 600)  # an empty part

    def show_strip(self):
        """The mixer strip beside the tracks: at first the master's."""
        with self.change_of(self.strip()):
            self.action("Editor/show-editor-mixer")

    def strip(self):
        left, top = self.main_window()
        return left, top + 100, 120, 300

    def show(self, track, place=0):
        """By a double click on the effect in the strip of that track, which is selected then, and so is the effect."""
        left, top = self.main_window()
        with self.change_of(self.strip()):  # the headers of the tracks are below that of the master
            self.display.click(left + 175, top + 343 + 68 * place)
        for below in (188, 184, 192, 196):  # the first effect of the strip; fonts move it
            self.display.click(left + 60, top + below, times=2)
            with contextlib.suppress(AssertionError):
                return self.wait_for_editor(track, 5)
        raise AssertionError(f"the editor of {track} didn't open again")

    @contextlib.contextmanager
    def change_of(self, area):
        """Until what is done in it has changed a part of the screen, and that has come to rest."""
        before = self.display.client.pixels(*area)
        yield
        self.until(lambda: self.display.client.pixels(*area) != before, 10, "the window shows a change")
        last = [None, None]

        def is_at_rest():
            last[:] = last[1], self.display.client.pixels(*area)
            time.sleep(0.2)
            return last[0] == last[1]
        self.until(is_at_rest, 10, "the window is at rest")

    def save(self, session):
        before = session.stat().st_mtime_ns
        self.action("Common/Save")
        self.until(lambda: session.stat().st_mtime_ns != before, 10, "the session is saved")

    def quit(self, seconds=30):
        """Its exit status. Everything has to be saved, else it asks."""
        self.action("Common/Quit")
        wait_for(self.ended, seconds, "Ardour quits")
        return self.process.returncode
