"""What the scanners of hosts report about the effect. Ardour's scanner runs in ardour.py, which needs its answer."""

import xml.etree.ElementTree as Xml

from support import LIBRARY, NAME, PARAMETERS, UNIQUE_ID, HostTest

QTRACTOR = "/usr/lib/x86_64-linux-gnu/qtractor/qtractor_plugin_scan"


def qtractor_scan(test, library):
    """The fields of the scanner's line about the effect, or its output if there is no such line."""
    said = test.run_program(QTRACTOR, stdin=f"VST:{library}\n", attempts=3, accept=lambda text: "VST|" in text,
                            QT_QPA_PLATFORM="offscreen")
    lines = [line for line in said.splitlines() if line.startswith("VST|")]
    return lines[0].split("|") if len(lines) == 1 else said


def muse_scan(test, library):
    """The scanner's record of the effect, or its output if there is no record."""
    out = test.folder / "scan.xml"

    def is_written(_):
        return b"</muse>" in out.read_bytes()

    out.write_bytes(b"")  # it only writes into a file that exists
    said = test.run_program("muse_plugin_scan", "-p", "-t", "16", "-f", library, "-o", out, attempts=3,
                            accept=is_written, QT_QPA_PLATFORM="offscreen")
    return Xml.parse(out).getroot().find("plugin") if is_written(said) else said


class Scanners(HostTest):
    def test_qtractor_sees_the_effect(self):
        fields = qtractor_scan(self, LIBRARY)
        self.assertIsInstance(fields, list, fields)
        self.assertEqual(fields[1], NAME)
        self.assertEqual(fields[2], "2:2", "channels in and out")
        self.assertEqual(fields[4], f"{PARAMETERS}:0", "parameters in and out")
        self.assertEqual(fields[-1], hex(UNIQUE_ID))

    def test_muse_sees_the_effect(self):
        record = muse_scan(self, LIBRARY)
        self.assertIsInstance(record, Xml.Element, record)
        told = {field: record.findtext(field) for field in
                ("name", "maker", "uniqueID", "inports", "outports", "ctlInports")}
        self.assertEqual(told, {"name": NAME, "maker": "Kavelin", "uniqueID": str(UNIQUE_ID), "inports": "2",
                                "outports": "2", "ctlInports": str(PARAMETERS)})
