"""The package for Windows, unpacked below a non-ASCII name and run under Wine. Needs a build of the preset mingw."""

import os
import re
import shlex
import subprocess
import zipfile

from support import NAME, ROOT, VERSION, HostTest, broken_links, limited_material, read_wav, write_wav
from windows import fact, made_packages, resources_of, run_wine

# The libraries that kavhost.exe loads, with the source package of each.
LIBRARIES = {"libFLAC.dll": "flac", "libebur128.dll": "libebur128", "libmp3lame.dll": "lame", "libmpg123.dll": "mpg123",
             "libogg.dll": "libogg", "libopus.dll": "opus", "libsndfile.dll": "libsndfile", "libtag.dll": "taglib",
             "libvorbis.dll": "libvorbis", "libvorbisenc.dll": "libvorbis"}


def loaded_by(image):
    """The libraries that the system loads with a program or a library, as its own header names them."""
    said = subprocess.run(["x86_64-w64-mingw32-objdump", "-p", image], capture_output=True, check=True, timeout=60)
    return set(re.findall(r"DLL Name: (\S+)", said.stdout.decode()))


class WindowsPackage(HostTest):
    @classmethod
    def set_up_once(cls):
        archive = made_packages().archive
        with zipfile.ZipFile(archive) as package:
            cls.names = package.namelist()
            package.extractall(cls.folder / "Größe – 音")
        cls.top = cls.folder / "Größe – 音" / archive.stem

    def run_there(self, *arguments):
        """kavhost.exe in that folder."""
        done = run_wine(self.top / "kavhost.exe", *arguments, cwd=self.folder)
        said = done.stdout.decode()
        self.assertEqual(done.returncode, 0, said + done.stderr.decode())
        return said

    def test_holds_what_runs_and_its_documents_in_one_folder(self):
        self.assertEqual({name.split("/")[0] for name in self.names}, {self.top.name})
        there = {file.name for file in self.top.iterdir()}
        self.assertEqual(there, {"KAVSorrelLimiter.dll", "KAVSorrelLimiter.json", "kavhost.exe", "content", "docs",
                                 "README.md", "CHANGELOG.md", "LICENSE", "licences", *LIBRARIES,
                                 *(f"{NAME} User Guide.{kind}" for kind in ("html", "pdf"))})

    def test_every_library_is_loaded_by_kavhost_and_none_by_the_plugin(self):
        found, new = set(), {"kavhost.exe"}
        while new:
            image = new.pop()
            found.add(image)
            new |= {name for name in loaded_by(self.top / image) if (self.top / name).exists()} - found
        self.assertEqual(found - {"kavhost.exe"}, set(LIBRARIES))
        self.assertFalse(loaded_by(self.top / "KAVSorrelLimiter.dll") & set(LIBRARIES))

    def test_the_plugin_says_what_it_is_and_who_has_made_it(self):
        carried = resources_of(self.top / "KAVSorrelLimiter.dll")
        words = ", ".join(VERSION.split("."))
        self.assertIn(f"FILEVERSION {words}\n", carried)
        self.assertIn(f"PRODUCTVERSION {words}\n", carried)
        texts = dict(re.findall(r'VALUE "(\w+)", "([^"]*)"', carried))
        for name, value in {"ProductName": "PRODUCT", "FileDescription": "PRODUCT", "CompanyName": "VENDOR",
                            "FileVersion": "VERSION", "ProductVersion": "VERSION"}.items():
            self.assertEqual(texts[name], fact(value), name)
        self.assertEqual(texts["OriginalFilename"], "KAVSorrelLimiter.dll")

    def test_the_plugin_carries_its_pictures_and_a_manifest(self):
        library = self.top / "KAVSorrelLimiter.dll"
        carried = resources_of(library)
        rows = [line.split() for line in (ROOT / "resources/manifest.txt").read_text().splitlines()
                if line and not line.startswith("#")]
        self.assertGreater(len(rows), 30)
        self.assertEqual(sorted(re.findall(r'^"([^"]+)" "IMG"', carried, re.MULTILINE)), sorted(row[1] for row in rows))
        content = library.read_bytes()
        for file, _ in rows:
            self.assertIn((ROOT / "resources" / file).read_bytes(), content, file)
        self.assertRegex(carried, r"(?m)^2 24 ", "the manifest of a library has the number 2")
        self.assertIn((ROOT / "resources/library.manifest").read_bytes(), content)

    def test_names_the_licence_and_the_source_of_every_library(self):
        licences = self.top / "licences"
        packages = {folder.name for folder in licences.iterdir() if folder.is_dir()}
        self.assertEqual(packages, set(LIBRARIES.values()))
        origin = (licences / "SOURCES.txt").read_text()
        for package in packages:
            texts = list((licences / package).iterdir())
            self.assertTrue(texts and all(len(text.read_bytes()) > 1000 for text in texts), package)
            self.assertRegex(origin, rf"(?m)^[0-9a-f]{{64}}  {package}_\S+\.orig\.tar\.\w+$")
        for package in ("lame", "libsndfile", "mpg123", "taglib"):
            words = "".join(text.read_text(errors="replace") for text in (licences / package).iterdir())
            self.assertRegex(words, r"(?i)GNU\s+(LESSER|LIBRARY)\s+GENERAL\s+PUBLIC\s+LICENSE", package)

    def test_no_library_contains_a_folder_of_the_machine_that_built_it(self):
        for name in LIBRARIES:
            self.assertNotIn(os.fsencode(ROOT), (self.top / name).read_bytes(), name)

    def test_links_of_its_documents_lead_to_files_of_it(self):
        found = broken_links(self.top)
        self.assertEqual(found.broken, [])
        self.assertGreater(found.whole, 20)

    def test_kavhost_finds_plugin_profile_and_content(self):
        said = self.run_there("info")
        self.assertIn("KAVSorrelLimiter.dll", said)
        self.assertIn("Threshold (1)", said, "full names come from the profile")
        patches = list((ROOT / "content/Patches").rglob("*.kvp"))
        self.assertEqual(self.run_there("content", "list").count(".kvp"), len(patches))

    def test_the_readme_begins_with_five_lines_for_windows(self):
        lines = (self.top / "README.md").read_text(encoding="utf-8").splitlines()
        self.assertTrue(all(lines[:5]))
        self.assertEqual(lines[5], "")
        # Links to files that are not in the package have become their texts.
        texts = [re.sub(r"\[([^][]*)\]\([^()]*\)", r"\1", line) for line in lines[6:]]
        usual = (ROOT / "README.md").read_text(encoding="utf-8").splitlines()
        self.assertEqual(texts, [re.sub(r"\[([^][]*)\]\([^()]*\)", r"\1", line) for line in usual])
        commands = [shlex.split(text)[1:] for text in re.findall(r"`(kavhost [^`]+)`", "\n".join(lines[:5]))]
        self.assertEqual([command[0] for command in commands], ["render", "render", "content", "--help"])
        write_wav(self.folder / "song.wav", limited_material())
        write_wav(self.folder / "other.wav", limited_material())
        self.kavhost("render", "song.wav", "-o", "song.flac")
        self.addCleanup(self.run_there, "content", "uninstall")  # Wine's Documents outlive the test
        for command in commands:
            self.run_there(*command)
        self.assertTrue((self.folder / "limited.wav").exists())
        self.assertEqual({file.name for file in (self.folder / "limited").iterdir()},
                         {file.name for file in self.folder.glob("*.wav")})

    def test_renders_what_linux_renders(self):
        write_wav(self.folder / "in.wav", limited_material())
        settings = ("--set", "Threshold (1)=-12", "--format", "float")
        self.run_there("render", "in.wav", "-o", "there.wav", *settings)
        self.kavhost("render", "in.wav", "-o", "here.wav", *settings)
        there, here = read_wav(self.folder / "there.wav"), read_wav(self.folder / "here.wav")
        self.assertEqual(there.frames, here.frames)
        self.assertGreater(here.difference(read_wav(self.folder / "in.wav")), 0.1, "nothing was limited")
        self.assertLessEqual(there.difference(here), 1e-6)
