"""How the libraries for Windows are fetched: by apt, once, from lists made of the system's own. apt is a double here."""

import os
import pathlib
import subprocess

from support import ROOT, HostTest

SCRIPT = ROOT / "packaging" / "windows-libraries"
PACKAGES = [line for line in (ROOT / "packaging" / "sources.txt").read_text().splitlines()
            if line and not line.startswith("#")]

# Writes down each call and the lists that it gets, and makes an archive for each package. The second package was
# corrected since the release.
APT_GET = """#!/usr/bin/env bash
echo "$*" >>{record}/calls
words=()
for word in "$@"; do
    case $word in
    Dir::Etc::sourcelist=*) cp "${{word#*=}}" {record}/sources.list ;;
    Dir::Etc::sourceparts=*) cp -r "${{word#*=}}" {record}/ ;;
    esac
    if [[ $word =~ ^[a-z0-9]+$ && $word != source && $word != update ]]; then words+=("$word"); fi
done
if [ -e {record}/offline ]; then exit 100; fi
for word in "${{words[@]}}"; do
    version=1.0-1
    if [ "$word" = {corrected} ]; then version=1.0-1+deb12u3; fi
    case " $* " in
    *" --print-uris "*) echo "'scheme://place/$word' ${{word}}_$version.debian.tar.xz 1 SHA256:0" ;;
    *" --tar-only "*) echo "$word" >"${{word}}_1.0.orig.tar.gz" ;;
    *" --diff-only "*) echo "$word" >"${{word}}_$version.debian.tar.xz" ;;
    esac
done
"""


class WindowsLibraries(HostTest):
    def setUp(self):
        self.place = self.folder / self.id().rsplit(".", maxsplit=1)[-1]
        self.record, self.cache, system = self.place / "record", self.place / "cache", self.place / "system"
        for folder in (self.record, self.place / "bin", system / "parts"):
            folder.mkdir(parents=True)
        self.lists = {
            system / "sources.list": "# the release\ndeb scheme://one/debian stable main\n"
                                     "deb-src scheme://one/debian stable main\n#deb scheme://off/debian stable main\n",
            system / "parts" / "more.list": "deb [arch=amd64 signed-by=/a/key] scheme://two/debian stable main\n",
            system / "parts" / "new.sources": "Types: deb\nURIs: scheme://three/debian\nSuites: stable\nComponents: main\n"
                                              "Signed-By: /a/key\n",
            system / "parts" / "off.sources.disabled": "Types: deb\nURIs: scheme://off/debian\n",
        }
        for file, text in self.lists.items():
            file.write_text(text)
        self.program("apt-get", APT_GET.format(record=self.record, corrected=PACKAGES[1]))
        self.program("apt-config",
                     f"#!/bin/sh\necho \"list='{system}/sources.list'\"\necho \"parts='{system}/parts'\"\n")
        self.program("cmake", f"#!/bin/sh\necho built >>{self.record}/cmake\nexit 1\n")

    def program(self, name, text):
        file = self.place / "bin" / name
        file.write_text(text)
        file.chmod(0o755)

    def run_script(self):
        path = f"{self.place / 'bin'}:{os.environ['PATH']}"
        return subprocess.run([SCRIPT], env=self.environment(PATH=path, KAV_CACHE=self.cache),
                              stdin=subprocess.DEVNULL, capture_output=True, timeout=60, check=False)

    def calls(self):
        file = self.record / "calls"
        return file.read_text().splitlines() if file.exists() else []

    def test_apt_gets_the_systems_lists_with_the_sources_of_each(self):
        self.run_script()
        self.assertEqual((self.record / "sources.list").read_text().splitlines(),
                         ["deb-src [arch=amd64 signed-by=/a/key] scheme://two/debian stable main",
                          "deb-src scheme://one/debian stable main"])
        parts = self.record / "parts"
        self.assertEqual([file.name for file in parts.iterdir()], ["new.sources"])
        self.assertEqual((parts / "new.sources").read_text(),
                         self.lists[self.place / "system" / "parts" / "new.sources"].replace("deb\n", "deb-src\n", 1))

    def test_the_systems_lists_stay_as_they_are(self):
        self.run_script()
        self.assertEqual({file: file.read_text() for file in self.lists}, self.lists)
        for call in self.calls():
            for name in ("Dir::Etc::sourcelist", "Dir::Etc::sourceparts", "Dir::State::lists", "Dir::Cache"):
                self.assertIn(f"{name}={self.cache}/", call)

    def test_fetches_the_archive_of_each_package_and_corrections_only(self):
        self.run_script()
        there = {file.name for file in (self.cache / "sources").iterdir()}
        self.assertEqual({name for name in there if ".tar." in name},
                         {f"{package}_1.0.orig.tar.gz" for package in PACKAGES} |
                         {f"{PACKAGES[1]}_1.0-1+deb12u3.debian.tar.xz"})

    def test_fetches_once(self):
        self.run_script()
        calls = self.calls()
        self.assertTrue(calls)
        self.run_script()
        self.assertEqual(self.calls(), calls)

    def test_fetches_again_what_is_no_longer_as_it_was(self):
        self.run_script()
        calls = len(self.calls())
        archive = self.cache / "sources" / f"{PACKAGES[0]}_1.0.orig.tar.gz"
        text = archive.read_text()
        archive.write_text("damaged")
        self.run_script()
        self.assertEqual(len(self.calls()), 2 * calls)
        self.assertEqual(archive.read_text(), text)

    def test_without_the_archives_nothing_is_built_or_kept(self):
        (self.record / "offline").touch()
        done = self.run_script()
        self.assertNotEqual(done.returncode, 0)
        self.assertEqual(done.stdout, b"")
        self.assertIn(b"apt-get update has failed", done.stderr)
        self.assertFalse((self.record / "cmake").exists())
        self.assertEqual({file.name for file in self.cache.iterdir()}, {"windows", "lock"})

    def test_a_build_that_fails_leaves_nothing_that_looks_built(self):
        done = self.run_script()
        self.assertNotEqual(done.returncode, 0)
        self.assertEqual(done.stdout, b"")
        self.assertTrue((self.record / "cmake").exists())
        self.assertEqual(list((self.cache / "windows").iterdir()), [])

    def test_the_tree_names_no_host(self):
        for file in (ROOT / "packaging").rglob("*"):
            if file.is_file():
                self.assertNotRegex(file.read_bytes(), rb"://(?!\$)", file)  # pictures among them


class BuiltWindowsLibraries(HostTest):
    """What the preset mingw has built."""

    def test_are_there_without_apt_and_cmake(self):
        for name in ("apt-get", "cmake"):
            (self.folder / name).write_text("#!/bin/sh\nexit 1\n")
            (self.folder / name).chmod(0o755)
        environment = self.environment(PATH=f"{self.folder}:{os.environ['PATH']}")
        done = subprocess.run([SCRIPT], env=environment, stdin=subprocess.DEVNULL, capture_output=True, timeout=60,
                              check=False)
        self.assertEqual(done.returncode, 0, done.stderr.decode())
        built = pathlib.Path(done.stdout.decode().rstrip("\n"))
        self.assertEqual(built, (ROOT / "build" / "mingw" / "windows_libraries").resolve())
        self.assertTrue((built / "bin" / "libsndfile.dll").exists())
