"""States as hosts store them: the effect's own text, including what isn't a parameter."""

import re

ROUTING_NAME = "Gekreuzt – 交差"
CHANNEL_NAMES = ("Rechts (R)", "Línks")
MACRO_NAMES = ("Wärme", "音圧", "Macro 3", "Macro 4", "Macro 5")
MACRO_TARGETS = ((33, "0.300"), (36, "0.750"))  # tags of the first group's threshold and release

# The first group takes only the right channel, through its first entry; the macro moves its threshold.
SETTINGS = ("Threshold (1)=-9", "Release (1)=20 ms", "Output Ceiling (1)=-0.5 dB", "ToolCh2 (1)=off", "Macro 1=60")
SETTINGS_BY_INDEX = {4: 0.7, 20: 0.95, 28: 0.0, 104: 0.8}


def element(text, name):
    """The content of the first element with that name."""
    found = re.search(f"<{name}(?: [^>]*)?>(.*?)</{name}>", text, re.S)
    return found.group(1) if found else None


def told_state(folder, kavhost):
    """A state with a routing, macros and non-ASCII names, made by the effect itself from a text."""
    plain, edited, whole = folder / "plain.state", folder / "edited.state", folder / "whole.state"
    settings = [word for setting in SETTINGS for word in ("--set", setting)]
    kavhost("info", *settings, "--save-state", plain)
    text = plain.read_bytes().rstrip(b"\0").decode()
    for name, content in (("name", ROUTING_NAME), ("map", "1,-1|*|0,-1"), ("ch_names", "|*|".join(CHANNEL_NAMES)),
                          ("macro_group_names", "|*|".join(MACRO_NAMES)),
                          ("macro", "||".join(f"{tag};{depth}" for tag, depth in MACRO_TARGETS))):
        text, count = re.subn(f"(<{name}(?: [^>]*)?>).*?(</{name}>)", lambda m, c=content: m[1] + c + m[2], text,
                              count=1)
        if count != 1:
            raise AssertionError(f"the state has no element {name}")
    edited.write_bytes(text.encode() + b"\0")
    kavhost("info", "--state", edited, "--save-state", whole)
    return whole


def check_names(test, text):
    """Fails `test` unless the text contains what `told_state` put there in addition to values."""
    test.assertEqual(element(text, "name"), ROUTING_NAME)
    test.assertEqual(element(text, "map"), "1,-1|*|0,-1")
    test.assertEqual(element(text, "ch_names"), "|*|".join(CHANNEL_NAMES))
    test.assertEqual(element(text, "macro_group_names"), "|*|".join(MACRO_NAMES))
    test.assertEqual(element(text, "macro"), "||".join(f"{tag};{depth}" for tag, depth in MACRO_TARGETS))
