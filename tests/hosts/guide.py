"""The user guide: its tables, numbers and links, and what its maker refuses. Needs the target kav_guide."""

import copy
import html
import importlib.machinery
import importlib.util
import json
import re
import subprocess

from support import BUILD, NAME, ROOT, VERSION, HostTest

GUIDE = BUILD / "guide" / f"{NAME} User Guide"
SOURCE = ROOT / "docs" / "guide" / "guide.html"
MAKER = ROOT / "tools" / "guide" / "make-guide"


def maker():
    """make-guide as a module."""
    loader = importlib.machinery.SourceFileLoader("make_guide", str(MAKER))
    module = importlib.util.module_from_spec(importlib.util.spec_from_loader("make_guide", loader))
    loader.exec_module(module)
    return module


def number(text):
    return float(text.replace("\u2212", "-"))


class Guide(HostTest):
    @classmethod
    def set_up_once(cls):
        cls.page = GUIDE.with_name(GUIDE.name + ".html").read_text(encoding="utf-8")
        cls.pdf = GUIDE.with_name(GUIDE.name + ".pdf")
        cls.facts = json.loads((BUILD / "guide" / "facts.json").read_text(encoding="utf-8"))
        cls.known = json.loads(cls.kavhost("info", "--json"))["parameters"]

    def reads(self, *command):
        return subprocess.run(command, capture_output=True, text=True, check=True, timeout=60).stdout

    def rows_after(self, heading):
        """The cells of the first table after a heading."""
        table = self.page.split(f"<th>{heading}</th>", 1)[1].split("</table>", 1)[0]
        rows = re.findall(r"<tr>(.*?)</tr>", table, re.DOTALL)
        return [[html.unescape(re.sub(r"<[^>]*>", "", cell)) for cell in re.findall(r"<t[hd][^>]*>(.*?)</t[hd]>", row)]
                for row in rows]

    def test_has_twelve_to_twenty_pages_of_a4(self):
        said = self.reads("pdfinfo", self.pdf)
        self.assertIn(f"Title:           {NAME} User Guide", said)
        self.assertIn("(A4)", said)
        self.assertIn(int(re.search(r"Pages:\s+(\d+)", said)[1]), range(12, 21))

    def test_no_page_is_nearly_empty(self):
        pages = self.reads("pdftotext", "-layout", self.pdf, "-").split("\f")[1:-1]  # after the cover
        for n, text in enumerate(pages, 2):
            self.assertGreater(len([line for line in text.splitlines() if line.strip()]), 12, f"page {n}")

    def test_every_link_leads_somewhere(self):
        ids = re.findall(r' id="([^"]*)"', self.page)
        self.assertEqual(len(ids), len(set(ids)))
        links = re.findall(r'href="([^"]*)"', self.page)
        self.assertGreater(len(links), 40)
        self.assertEqual([link for link in links if link[1:] not in ids or not link.startswith("#")], [])
        self.assertEqual([image[:30] for image in re.findall(r'src="([^"]*)"', self.page)
                          if not image.startswith("data:image/png;base64,")], [])

    def test_every_chapter_is_in_the_contents_of_the_pdf(self):
        places = self.reads("pdfinfo", "-dests", self.pdf)
        chapters = re.findall(r'<h2 id="([^"]*)"', self.page)
        self.assertGreater(len(chapters), 10)
        for chapter in chapters:
            self.assertIn(f'"{chapter}"', places)
            self.assertIn(f'<li><a href="#{chapter}">', self.page)

    def test_names_its_version(self):
        self.assertIn(f"User guide for version {VERSION}", self.page)

    def test_parameters_are_those_of_the_effect(self):
        stated = {row[0]: row[1:4] for row in self.rows_after("Default")}
        families = {}
        for parameter in self.known:
            families.setdefault(re.sub(r" ?\d*( \(\d\))?$", "", parameter["name"]), []).append(parameter)
        self.assertEqual(list(stated), list(families))
        for name, members in families.items():
            values, initial, count = stated[name]
            self.assertEqual(int(count), len(members), name)
            first = members[0]
            if first["minimum"] is None:
                continue
            low, high = (number(word.split()[0]) for word in values.split(" to "))
            self.assertEqual((low, high), (first["minimum"], first["maximum"]), name)
            self.assertTrue(values.endswith(first["unit"]), name)
            self.assertEqual(number(initial.split()[0]), number(first["quantity"].split()[0]), name)
        self.assertIn(f"The host sees {len(self.known)} parameters", self.page)

    def test_latencies_are_those_that_hosts_get(self):
        stated = {row[0]: row[1:5] for row in self.rows_after("Look-ahead")}
        reported = [str(json.loads(self.kavhost("info", "--json", "--os", factor))["latency"])
                    for factor in (1, 2, 4, 8)]
        self.assertEqual(stated["44.1 kHz"], reported)

    def test_every_number_is_on_its_control(self):
        rows = self.facts["panel"]["rows"]
        width, height = self.facts["panel"]["width"], self.facts["panel"]["height"]
        marks = re.findall(r'<a class="n" href="#callout-(\d+)" style="left: ([\d.]+)%; top: (-?[\d.]+)%">', self.page)
        controls = re.findall(r'data-controls="([^"]*)"', SOURCE.read_text(encoding="utf-8"))
        self.assertEqual([int(mark[0]) for mark in marks], list(range(1, len(controls) + 1)))
        listed = re.findall(r'<li id="callout-(\d+)"><b class="n">(\d+)</b>', self.page)
        self.assertEqual(listed, [(mark[0], mark[0]) for mark in marks])
        for (_, left, top), names in zip(marks, controls):
            pattern = names.replace("?", ".").replace("*", ".*")
            these = [row["rect"] for row in rows if re.fullmatch(pattern, row["name"])]
            x, y = float(left) * width / 100, float(top) * height / 100
            self.assertTrue(min(r[0] for r in these) - 1 <= x <= max(r[0] + r[2] for r in these) + 1, names)
            if 0 <= y <= height:  # the others have a line that leads there
                self.assertTrue(min(r[1] for r in these) - 12 <= y <= max(r[1] + r[3] for r in these), names)


class Maker(HostTest):
    """What make-guide accepts, and what it refuses."""

    @classmethod
    def set_up_once(cls):
        cls.maker = maker()
        cls.facts = json.loads((BUILD / "guide" / "facts.json").read_text(encoding="utf-8"))
        cls.profile = json.loads((BUILD / "KAVSorrelLimiter.json").read_text(encoding="utf-8"))["parameters"]
        cls.source = SOURCE.read_text(encoding="utf-8")

    def refusal(self, text=None, facts=None, parameters=None):
        with self.assertRaises(self.maker.Refused) as caught:
            self.maker.fill(text or self.source, facts or self.facts, parameters or self.profile)
        return str(caught.exception)

    def without(self, pattern):
        text = re.sub(pattern, "", self.source, count=1)
        self.assertNotEqual(text, self.source)
        return text

    def test_a_moved_control_moves_its_number(self):
        moved = copy.deepcopy(self.facts)
        row = next(row for row in moved["panel"]["rows"] if row["name"] == "Threshold")
        row["rect"][0] += 75.4

        def left(facts):
            text = self.maker.fill(self.source, facts, self.profile)
            n = re.search(r'<li id="callout-(\d+)"><b class="n">\d+</b><b>Threshold', text)[1]
            return float(re.search(rf'href="#callout-{n}" style="left: ([\d.]+)%', text)[1])

        self.assertAlmostEqual(left(moved) - left(self.facts), 10.0, places=2)

    def test_a_new_control_needs_a_number_and_a_gesture(self):
        facts = copy.deepcopy(self.facts)
        facts["panel"]["rows"].append({"id": 99, "name": "Knee", "control": True, "visible": True,
                                       "rect": [400, 20, 50, 30]})
        self.assertEqual(self.refusal(facts=facts), "control 'Knee' is missing")
        text = self.source.replace('data-controls="Threshold"', 'data-controls="Threshold|Knee"')
        self.assertEqual(self.refusal(text, facts), "gesture 'Knee' is missing")

    def test_a_new_parameter_and_a_new_setting_need_a_row(self):
        parameters = [*self.profile, self.profile[0] | {"name": "Knee (1)"}]
        self.assertEqual(self.refusal(parameters=parameters), "parameter 'Knee' is missing")
        facts = copy.deepcopy(self.facts)
        facts["settings"].append({"text": "Colours", "entries": []})
        self.assertEqual(self.refusal(facts=facts), "setting 'Colours' is missing")

    def test_what_is_left_out_or_invented_is_refused(self):
        self.assertEqual(self.refusal(self.without(r'<li data-controls="Limiter".*\n')), "control 'Limiter' is missing")
        self.assertEqual(self.refusal(self.without(r'<tr data-parameter="Release".*\n')),
                         "parameter 'Release' is missing")
        self.assertEqual(self.refusal(self.source.replace('data-controls="Release"', 'data-controls="Attack"')),
                         "control 'Attack' doesn't exist")
        self.assertEqual(self.refusal(self.source.replace('href="#oversampling"', 'href="#oversampled"')),
                         "anchor 'oversampled' doesn't exist")
        self.assertEqual(self.refusal(self.source.replace("{{latencies}}", "{{latency}}")),
                         "'{{latency}}' has no meaning")
        self.assertIn("has 0 tables", self.refusal(self.source.replace("| material |", "| matter |")))

    def test_the_same_sources_make_the_same_bytes(self):
        kavhost = self.folder / "kavhost"
        kavhost.write_text(f'#!/bin/sh\ncp "{BUILD}/guide/panel.png" "$3"\n')
        kavhost.chmod(0o755)
        said = self.run_program(MAKER, "--facts", BUILD / "guide" / "facts.json", "--profile",
                                BUILD / "KAVSorrelLimiter.json", "--kavhost", kavhost, "--output",
                                self.folder / "again", timeout=120)
        for kind in ("html", "pdf"):
            self.assertEqual((self.folder / f"again.{kind}").read_bytes(),
                             GUIDE.with_name(f"{GUIDE.name}.{kind}").read_bytes(), said)
