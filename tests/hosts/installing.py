"""What ./run and the packages install is found by a host, works there, and is removed completely."""

import configparser
import gzip
import os
import re
import shlex
import shutil
import struct
import subprocess
import xml.etree.ElementTree as Xml

from ardour import run_scanner
from scanners import qtractor_scan
from support import BUILD, NAME, ROOT, VERSION, HostTest, broken_links, limited_material, read_wav, write_wav

FILE = "KAVSorrelLimiter.so"
LIST = ".KAVSorrelLimiter.installed"
COMPONENT = "invalid.kavelin.sorrel_limiter"


def files_in(folder):
    """Everything below a folder except folders."""
    return sorted(str(file.relative_to(folder)) for file in folder.rglob("*") if file.is_symlink() or not file.is_dir())


def make_package(test):
    """The Debian package of the build."""
    packages = test.folder / "packages"
    said = test.run_program("cpack", "--config", BUILD / "CPackConfig.cmake", "-B", packages, timeout=300)
    made = list(packages.glob("*.deb"))
    if len(made) != 1:
        raise AssertionError(said)
    return made[0]


class RunInstall(HostTest):
    """./run install and uninstall, each test with its own home."""

    def setUp(self):
        self.own_home = self.folder / self.id().rsplit(".", 1)[1]
        self.own_home.mkdir()
        self.plugins = self.own_home / ".vst"

    def run_script(self, *arguments, status=0, **environment):
        done = subprocess.run([ROOT / "run", *arguments], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, timeout=300, check=False, cwd=self.folder,
                              env=self.environment(HOME=self.own_home, **environment))
        said = done.stdout.decode()
        self.assertEqual(done.returncode, status, said)
        return said

    def test_installs_where_a_host_finds_it_and_removes_all_of_it(self):
        self.run_script("install")
        self.assertEqual(files_in(self.own_home), [f".vst/{LIST}", f".vst/{FILE}"])
        self.assertEqual((self.plugins / FILE).read_bytes(), (BUILD / FILE).read_bytes())
        self.assertEqual(qtractor_scan(self, self.plugins / FILE)[1], NAME)
        self.run_script("uninstall")
        self.assertEqual(list(self.own_home.iterdir()), [])

    def test_installs_for_the_machine_below_usr_local(self):
        root = self.own_home / "root"
        self.run_script("install", "--system", DESTDIR=root)
        self.assertEqual(files_in(root), [f"usr/local/lib/vst/{LIST}", f"usr/local/lib/vst/{FILE}"])
        self.run_script("uninstall", "--system", DESTDIR=root)
        self.assertEqual(files_in(root), [])

    def test_replaces_an_older_library_of_its_own(self):
        self.run_script("install")
        old = b"an older build"
        (self.plugins / FILE).write_bytes(old)
        sums = subprocess.run(["sha256sum"], input=old, capture_output=True, check=True).stdout.decode().split()[0]
        (self.plugins / LIST).write_text(f"{sums}  {FILE}\n")
        self.run_script("install")
        self.assertEqual((self.plugins / FILE).read_bytes(), (BUILD / FILE).read_bytes())
        self.run_script("uninstall")
        self.assertEqual(files_in(self.own_home), [])

    def test_keeps_other_plugins_and_a_folder_that_was_there(self):
        self.plugins.mkdir()
        (self.plugins / "other.so").write_text("another's")
        self.run_script("install")
        self.run_script("uninstall")
        self.assertEqual(files_in(self.own_home), [".vst/other.so"])
        (self.plugins / "other.so").unlink()
        self.run_script("install")
        self.run_script("uninstall")
        self.assertTrue(self.plugins.is_dir())

    def test_keeps_a_foreign_file_of_the_name_and_tells(self):
        self.plugins.mkdir()
        (self.plugins / FILE).write_text("somebody's own")
        for command in ("install", "uninstall"):
            said = self.run_script(command, status=1)
            self.assertIn(f"kept: {self.plugins / FILE}", said)
            self.assertEqual((self.plugins / FILE).read_text(), "somebody's own")
        self.assertEqual(files_in(self.own_home), [f".vst/{FILE}"])

    def test_keeps_what_was_changed_since(self):
        self.run_script("install")
        (self.plugins / FILE).write_text("changed since")
        self.assertIn("kept:", self.run_script("uninstall", status=1))
        self.assertEqual((self.plugins / FILE).read_text(), "changed since")

    def test_a_link_to_nothing_is_foreign(self):
        self.plugins.mkdir()
        (self.plugins / FILE).symlink_to("nowhere")
        self.assertIn("kept:", self.run_script("install", status=1))
        self.assertEqual(os.readlink(self.plugins / FILE), "nowhere")

    def test_uninstalling_what_is_not_there_is_no_failure(self):
        self.assertIn("not installed", self.run_script("uninstall"))
        self.assertEqual(files_in(self.own_home), [])

    def test_forgets_the_server_of_an_earlier_build(self):
        cache = BUILD / "CMakeCache.txt"

        def origin():
            return [line.partition("=")[2] for line in cache.read_text().splitlines()
                    if line.startswith("KAV_SERVICE_ORIGIN:")]

        self.run_program("cmake", "-S", ROOT, "--preset", "release", "-DKAV_SERVICE_ORIGIN=https://host.invalid",
                         timeout=120)
        self.assertEqual(origin(), ["https://host.invalid"])
        self.run_script("install")
        self.assertEqual(origin(), [""])
        self.assertNotIn("host.invalid".encode("utf-16-le"), (self.plugins / FILE).read_bytes())

    def test_refuses_other_options(self):
        self.run_script("install", "--everywhere", status=2)
        self.assertEqual(files_in(self.own_home), [])


class Package(HostTest):
    """The Debian package, unpacked into an empty root."""

    @classmethod
    def set_up_once(cls):
        cls.package = make_package(cls)
        cls.root = cls.folder / "root"
        subprocess.run(["dpkg-deb", "-x", cls.package, cls.root], check=True)
        cls.library = cls.root / "usr/lib/vst" / FILE
        cls.command = cls.root / "usr/bin/kavhost"

    def field(self, name):
        return subprocess.run(["dpkg-deb", "-f", self.package, name], check=True, capture_output=True,
                              text=True).stdout.strip()

    def run_command(self, *arguments):
        """kavhost in that root."""
        done = subprocess.run([self.command, *arguments], env=self.environment(), cwd=self.folder, timeout=120,
                              stdin=subprocess.DEVNULL, capture_output=True, check=False)
        self.assertEqual(done.returncode, 0, done.stderr.decode())
        return done.stdout.decode()

    def test_names_the_libraries_that_it_needs_and_no_more(self):
        needed = {word.split()[0] for word in self.field("Depends").split(",")}
        self.assertEqual(needed, {"libc6", "libcairo2", "libebur128-1", "libgcc-s1", "libglib2.0-0", "libpango-1.0-0",
                                  "libpangocairo-1.0-0", "libsndfile1", "libstdc++6", "libtag1v5", "libxcb1"})

    def test_holds_nothing_that_lintian_warns_of(self):
        # Warnings and more; notes of hardening, which it counts as less, are among those that are looked for.
        done = subprocess.run(["lintian", "--allow-root", "--display-info", self.package], env=self.environment(),
                              capture_output=True, text=True, timeout=600, check=False)
        complaints = [line for line in done.stdout.splitlines() + done.stderr.splitlines()
                      if line.startswith(("E:", "W:")) or "hardening" in line]
        self.assertEqual(complaints, [])
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)

    def test_holds_only_what_runs_and_its_documents(self):
        known = ("usr/bin/kavhost", "usr/lib/kav-sorrel-limiter/", "usr/lib/vst/", "usr/share/doc/kav-sorrel-limiter/",
                 "usr/share/lintian/overrides/kav-sorrel-limiter", "usr/share/icons/hicolor/",
                 f"usr/share/metainfo/{COMPONENT}.metainfo.xml", "usr/share/applications/kavhost.desktop",
                 "usr/share/man/man1/kavhost.1.gz",
                 "usr/share/bash-completion/completions/kavhost", "usr/share/zsh/vendor-completions/_kavhost")
        self.assertEqual([file for file in files_in(self.root) if not file.startswith(known)], [])
        for file in known[-5:]:
            self.assertTrue((self.root / file).is_file(), file)
        for document in ("copyright", "README.md", "changelog.gz", "changelog.Debian.gz", f"{NAME} User Guide.pdf",
                         f"{NAME} User Guide.html"):
            self.assertTrue((self.root / "usr/share/doc/kav-sorrel-limiter" / document).is_file(), document)
        for link in (file for file in self.root.rglob("*") if file.is_symlink()):
            self.assertTrue(link.resolve().is_relative_to(self.root.resolve()) and link.exists(), link)

    def test_desktops_accept_its_entry_and_its_description(self):
        applications = self.root / "usr/share/applications"
        self.assertEqual(self.run_program("desktop-file-validate", "--warn-kde", applications / "kavhost.desktop"), "")
        said = self.run_program("appstreamcli", "validate", "--no-net", "--no-color", self.metainfo())
        # The vendor has no domain, so the component is named after none.
        self.assertEqual(re.findall(r"^[EWI]: .*", said, re.MULTILINE),
                         [f"I: {COMPONENT}:3: cid-maybe-not-rdns {COMPONENT}"], said)

    def metainfo(self):
        return self.root / f"usr/share/metainfo/{COMPONENT}.metainfo.xml"

    def desktop_entry(self):
        entry = configparser.ConfigParser(interpolation=None)
        entry.optionxform = str
        entry.read(self.root / "usr/share/applications/kavhost.desktop", encoding="utf-8")
        return entry["Desktop Entry"]

    def test_its_desktop_entry_starts_what_the_package_has(self):
        entry = self.desktop_entry()
        program, *arguments = shlex.split(entry["Exec"])
        self.assertTrue((self.root / "usr/bin" / program).exists())
        self.assertEqual(entry["TryExec"], program)
        self.assertEqual(arguments[-1], "%f")
        for option in arguments[1:-1]:
            self.assertIn(option, self.run_command("help", arguments[0]))
        icons = sorted((self.root / "usr/share/icons/hicolor").glob(f"*/apps/{entry['Icon']}.png"))
        self.assertEqual(sorted(int(icon.parts[-3].split("x")[0]) for icon in icons), [16, 24, 32, 48, 64, 128, 256])
        for icon in icons:
            width, height = struct.unpack_from(">II", icon.read_bytes(), 16)
            self.assertEqual(icon.parts[-3], f"{width}x{height}")

    def test_it_opens_the_types_of_audio_that_kavhost_reads(self):
        encoders = {"audio/x-wav": ["-f", "wav"], "audio/flac": ["-f", "flac"], "audio/x-aiff": ["-f", "aiff"],
                    "audio/ogg": ["-f", "ogg", "-c:a", "libopus"],
                    "audio/x-vorbis+ogg": ["-f", "ogg", "-c:a", "libvorbis"], "audio/x-opus+ogg": ["-f", "opus"],
                    "audio/mpeg": ["-f", "mp3"]}
        types = self.desktop_entry()["MimeType"].rstrip(";").split(";")
        self.assertEqual(sorted(types), sorted(encoders))
        listed = [kind.text for kind in Xml.parse(self.metainfo()).iterfind("provides/mediatype")]
        self.assertEqual(listed, types)
        for n, encoder in enumerate(encoders.values()):
            self.run_program("ffmpeg", "-v", "error", "-f", "lavfi", "-i", "sine=d=0.2:r=48000", *encoder, f"type{n}")
            self.run_command("render", f"type{n}", "-o", f"type{n}.wav", "--no-measure")

    def test_every_part_names_the_same_version(self):
        self.assertEqual(self.field("Version"), f"{VERSION}-0kavelin1")
        self.assertEqual(self.run_command("--version"), f"kavhost {VERSION}\n")
        documents = self.root / "usr/share/doc/kav-sorrel-limiter"
        manual = gzip.decompress((self.root / "usr/share/man/man1/kavhost.1.gz").read_bytes()).decode()
        self.assertIn(f'"kavhost {VERSION}"', manual.splitlines()[0])
        debian = gzip.decompress((documents / "changelog.Debian.gz").read_bytes()).decode()
        self.assertTrue(debian.startswith(f"kav-sorrel-limiter ({VERSION}-0kavelin1) "))
        release, = Xml.parse(self.metainfo()).iterfind("releases/release")
        self.assertEqual(release.get("version"), VERSION)
        # The log of changes has a section of it, which is dated once the version has been released.
        changes = gzip.decompress((documents / "changelog.gz").read_bytes()).decode()
        day = re.search(rf"^## \[{re.escape(VERSION)}\] - (.*)$", changes, re.MULTILINE)[1]
        if day == "Unreleased":
            self.assertEqual(release.get("type"), "development")
        else:
            self.assertEqual((release.get("date"), release.get("type")), (day, "stable"))

    def test_every_part_names_the_same_licences(self):
        copyright = (self.root / "usr/share/doc/kav-sorrel-limiter/copyright").read_text()
        self.assertEqual(copyright, (ROOT / "LICENSE").read_text())
        named = re.findall(r"^SPDX-License-Identifier: (.*)$", copyright, re.MULTILINE)
        licences = Xml.parse(self.metainfo()).findtext("project_license").split(" AND ")
        self.assertEqual(sorted(licences), sorted(set(named)))
        self.assertEqual(named[0], "MIT", "the product's own comes first")
        self.assertTrue(copyright.split("\n\n")[1].startswith("MIT License"))

    def test_links_of_its_documents_lead_to_files_of_it(self):
        found = broken_links(self.root / "usr/share/doc/kav-sorrel-limiter")
        self.assertEqual(found.broken, [])
        self.assertGreater(found.whole, 20)

    def test_runs_no_script_when_it_is_installed(self):
        control = self.folder / "control"
        subprocess.run(["dpkg-deb", "-e", self.package, control], check=True)
        self.assertEqual(files_in(control), ["control", "md5sums"])

    def test_nothing_in_it_names_the_folders_of_its_making(self):
        for file in (self.library, self.command):
            self.assertNotIn(str(ROOT).encode(), file.read_bytes(), file.name)

    def test_qtractor_finds_the_effect(self):
        self.assertEqual(qtractor_scan(self, self.library)[1], NAME)

    def test_ardour_finds_the_effect(self):
        self.assertIn(f'name="{NAME}"', run_scanner(self, self.library))

    def test_kavhost_finds_plugin_profile_and_content(self):
        self.assertIn("Threshold (1)", self.run_command("info"), "full names come from the profile")
        self.run_command("content", "install")
        self.assertEqual(len(list(self.home.rglob("*.kvp"))), len(list((ROOT / "content/Patches").rglob("*.kvp"))))

    def test_content_brings_the_guide_that_the_package_has_once(self):
        self.run_command("content", "install")
        own = list(self.home.rglob("Tessel User Guide.pdf"))
        self.assertEqual([file.parent.name for file in own], [NAME])
        shared = self.root / "usr/share/doc/kav-sorrel-limiter" / f"{NAME} User Guide.pdf"
        self.assertEqual(own[0].read_bytes(), shared.read_bytes())
        files = [file for file in self.root.rglob("*.pdf") if not file.is_symlink()]
        self.assertEqual(files, [shared])
        own[0].write_bytes(b"with notes of mine")
        self.run_command("content", "uninstall")
        self.assertEqual(own[0].read_bytes(), b"with notes of mine")
        own[0].unlink()

    def test_kavhost_renders_as_the_build_does(self):
        write_wav(self.folder / "in.wav", limited_material())
        settings = ("--set", "Threshold (1)=-12", "--format", "float")
        self.run_command("render", "in.wav", "-o", "packaged.wav", *settings)
        self.kavhost("render", "in.wav", "-o", "built.wav", *settings)
        packaged, built = read_wav(self.folder / "packaged.wav"), read_wav(self.folder / "built.wav")
        self.assertGreater(built.difference(read_wav(self.folder / "in.wav")), 0.1)
        self.assertEqual(packaged.difference(built), 0.0)


class Prefix(HostTest):
    """cmake --install below a folder of the user's choice."""

    def test_works_from_there_after_it_was_moved(self):
        first, moved = self.folder / "first", self.folder / "moved – 移動"
        said = self.run_program("cmake", "--install", BUILD, "--prefix", first, timeout=60)
        self.assertTrue((first / "lib/vst" / FILE).is_file(), said)
        shutil.move(first, moved)
        done = subprocess.run([moved / "bin/kavhost", "info"], env=self.environment(), capture_output=True, timeout=60,
                              check=False)
        self.assertEqual(done.returncode, 0, done.stderr.decode())
        self.assertIn("Threshold (1)", done.stdout.decode())
        self.assertIn(str(moved), done.stdout.decode())
