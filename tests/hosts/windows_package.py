"""The package for Windows, unpacked below a non-ASCII name and run under Wine. Needs a build of the preset mingw."""

import os
import subprocess
import zipfile

from support import ROOT, HostTest, limited_material, read_wav, write_wav

BUILD = ROOT / "build" / "mingw"
WINE_RUN = ROOT / "tests" / "support" / "wine-run"


class WindowsPackage(HostTest):
    @classmethod
    def set_up_once(cls):
        packages = cls.folder / "packages"
        said = cls.run_program("cpack", "--config", BUILD / "CPackConfig.cmake", "-B", packages, timeout=120)
        made = list(packages.glob("*.zip"))
        if len(made) != 1:
            raise AssertionError(said)
        with zipfile.ZipFile(made[0]) as package:
            cls.names = package.namelist()
            package.extractall(cls.folder / "Größe – 音")
        cls.top = cls.folder / "Größe – 音" / made[0].stem

    def run_there(self, *arguments):
        """kavhost.exe in that folder."""
        # Under Wine the home folder is that of the prefix.
        done = subprocess.run([WINE_RUN, self.top / "kavhost.exe", *arguments], env=os.environ, cwd=self.folder,
                              stdin=subprocess.DEVNULL, capture_output=True, timeout=120, check=False)
        said = done.stdout.decode()
        self.assertEqual(done.returncode, 0, said + done.stderr.decode())
        return said

    def test_holds_what_runs_and_its_documents_in_one_folder(self):
        self.assertEqual({name.split("/")[0] for name in self.names}, {self.top.name})
        there = {file.name for file in self.top.iterdir()}
        self.assertEqual(there, {"KAVSorrelLimiter.dll", "KAVSorrelLimiter.json", "kavhost.exe", "content", "docs",
                                 "README.md", "CHANGELOG.md", "LICENSE"})

    def test_kavhost_finds_plugin_profile_and_content(self):
        said = self.run_there("info")
        self.assertIn("KAVSorrelLimiter.dll", said)
        self.assertIn("Threshold (1)", said, "full names come from the profile")
        patches = list((ROOT / "content/Patches").rglob("*.kvp"))
        self.assertEqual(self.run_there("content", "list").count(".kvp"), len(patches))

    def test_renders_what_linux_renders(self):
        write_wav(self.folder / "in.wav", limited_material())
        settings = ("--set", "Threshold (1)=-12", "--format", "float")
        self.run_there("render", "in.wav", "-o", "there.wav", *settings)
        self.kavhost("render", "in.wav", "-o", "here.wav", *settings)
        there, here = read_wav(self.folder / "there.wav"), read_wav(self.folder / "here.wav")
        self.assertEqual(there.frames, here.frames)
        self.assertGreater(here.difference(read_wav(self.folder / "in.wav")), 0.1, "nothing was limited")
        self.assertLessEqual(there.difference(here), 1e-6)
