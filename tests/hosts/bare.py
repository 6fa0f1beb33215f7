"""The Debian package in a system that has nothing else: installed with apt, used, and removed. Needs root's rights.

The system is made by debootstrap from the mirrors of this one, in the test's own folder. Programs run in it as if it
were the only one; what they share with this one is the network, the display and the test's folder, at the same path.
"""

import os
import pathlib
import re
import shutil
import subprocess

import ardour_windows
from ardour import run_scanner
from ardour_editor import PANEL
from installing import FILE, make_package
from support import HERE, NAME, ROOT, VERSION, HostTest, limited_material, read_wav, start_program, stop_program, write_wav

PACKAGE = "kav-sorrel-limiter"
LIBRARY = f"/usr/lib/vst/{FILE}"
SYSTEMS_OWN = ("/var/cache/", "/var/lib/apt/", "/var/lib/dpkg/", "/var/log/")
SECONDS = 1200  # for one call of apt, which fetches hundreds of packages
SETTINGS = ("--set", "Threshold (1)=-12", "--format", "float")
# Mounts and the change of the root end with the program, whose process number stays that of this script.
ENTER = """
root=$1 folder=$2
shift 2
mount -t proc proc "$root/proc"
mount --rbind /dev "$root/dev"
for place in "$folder" {here} /tmp/.X11-unix; do
    if [ -d "$place" ]; then mkdir -p "$root$place" && mount --bind "$place" "$root$place"; fi
done
exec chroot "$root" sh -c 'cd "$0" && exec "$@"' "$folder" "$@"
"""


def apt_sources():
    """Pairs of a mirror and a release of Debian, as this system's apt uses them; the release itself first."""
    said = subprocess.run(["apt-get", "indextargets", "--format", "$(REPO_URI) $(RELEASE)",
                           "Created-By: Packages", "Component: main", "Origin: Debian"],
                          capture_output=True, text=True, check=True).stdout
    return sorted({tuple(line.split()) for line in said.splitlines()}, key=lambda pair: len(pair[1]))


def files_in(root):
    """All that is in the system, without what programs there share with this one."""
    found = set()
    for folder, folders, files in os.walk(root):
        folders[:] = [name for name in folders if (pathlib.Path(folder) / name).relative_to(root).as_posix()
                      not in ("proc", "dev", "sys", "tmp", HERE.as_posix().lstrip("/"))]
        found |= {"/" + (pathlib.Path(folder) / name).relative_to(root).as_posix() for name in (*folders, *files)}
    return found


class BareDebian(HostTest):
    """One system. Each step uses what the steps before it have left."""

    @classmethod
    def set_up_once(cls):
        cls.package = make_package(cls)
        cls.root = cls.folder / "root"
        cls.entering = ("unshare", "--mount", "--propagation", "private", "sh", "-ec",
                               ENTER.format(here=HERE), "enter", cls.root, cls.folder)
        cls.make_system()
        write_wav(cls.folder / "in.wav", limited_material())
        cls.install_alone()
        cls.install_as_users_do()
        cls.open_in_ardour()
        cls.remove()

    @classmethod
    def environment(cls, **more):
        return super().environment(PATH="/usr/sbin:/usr/bin:/sbin:/bin", DEBIAN_FRONTEND="noninteractive", **more)

    @classmethod
    def finish(cls, *command, seconds=120):
        """The output of a program, which has to succeed."""
        process = start_program(command, cls.folder, cls.environment(), "program.log")
        try:
            status = process.wait(seconds)
        finally:
            stop_program(process)
        said = (cls.folder / "program.log").read_text(errors="replace")
        if status != 0:
            raise AssertionError(f"{command}: {status}\n{said}")
        return said

    @classmethod
    def inside(cls, *command, **more):
        """The same in the new system."""
        return cls.finish(*cls.entering, *command, **more)

    @classmethod
    def apt(cls, *arguments):
        return cls.inside("apt-get", "-q", "-y", *arguments, seconds=SECONDS)

    # The steps

    @classmethod
    def make_system(cls):
        sources = apt_sources()
        mirror, release = sources[0]
        cls.finish("debootstrap", "--variant=minbase", release, cls.root, mirror, seconds=SECONDS)
        (cls.root / "etc/apt/sources.list").write_text("".join(f"deb {at} {name} main\n" for at, name in sources))
        for file in ("etc/resolv.conf", "etc/hosts"):
            shutil.copy(pathlib.Path("/") / file, cls.root / file)
        shutil.copy(cls.package, cls.root / "root")
        no_services = cls.root / "usr/sbin/policy-rc.d"
        no_services.write_text("#!/bin/sh\nexit 101\n")
        no_services.chmod(0o755)
        cls.apt("update")

    @classmethod
    def install_alone(cls):
        """With what it depends on, and nothing that it recommends."""
        before = files_in(cls.root)
        cls.apt("install", "--no-install-recommends", f"/root/{cls.package.name}")
        cls.inside("kavhost", "render", "in.wav", "-o", "alone.wav", *SETTINGS)
        cls.files_alone = files_in(cls.root)
        cls.apt("purge", PACKAGE)
        cls.apt("autoremove", "--purge")
        cls.left_alone = files_in(cls.root) - before

    @classmethod
    def install_as_users_do(cls):
        cls.apt("install", f"/root/{cls.package.name}")
        cls.verified = cls.inside("dpkg", "-V", PACKAGE)
        cls.said_version = cls.inside("kavhost", "--version")
        cls.inside("kavhost", "content", "install")

    @classmethod
    def open_in_ardour(cls):
        """The effect is where Ardour looks by itself."""
        cls.apt("install", "--no-install-recommends", "ardour")
        ardour_windows.prepare_home(cls.home, "@default@")
        session = ardour_windows.new_session(cls, NAME, ["track"], run_scanner(cls, LIBRARY))
        with ardour_windows.opened(cls, session, NAME, "track") as (host, editor):
            cls.size = editor.rectangle[2:]
            cls.mapped = pathlib.Path(f"/proc/{host.process.pid}/maps").read_text()

    @classmethod
    def remove(cls):
        owned = set(cls.inside("dpkg", "-L", PACKAGE).split("\n"))
        cls.apt("purge", PACKAGE)
        cls.left = files_in(cls.root)
        # A folder may stay if it is another package's as well.
        cls.left_owned = sorted(owned & cls.left)
        if cls.left_owned:
            cls.inside("dpkg-query", "-S", *cls.left_owned)

    # What they have shown

    def test_the_dependencies_suffice_to_render(self):
        self.kavhost("render", "in.wav", "-o", "built.wav", *SETTINGS)
        alone, built = read_wav(self.folder / "alone.wav"), read_wav(self.folder / "built.wav")
        self.assertGreater(built.difference(read_wav(self.folder / "in.wav")), 0.1)
        self.assertEqual(alone.difference(built), 0.0)

    def test_the_dependencies_bring_no_display_and_no_sound(self):
        brought = re.compile("/(libSDL|libasound|libpulse|libxkb|libxcb-cursor|libEGL|Xorg|Xvfb)")
        self.assertEqual([file for file in self.files_alone if brought.search(file)], [])

    def test_the_package_is_as_it_was_made(self):
        self.assertEqual(self.verified, "")

    def test_its_version_is_that_of_the_package(self):
        self.assertEqual(self.said_version, f"kavhost {VERSION}\n")

    def test_the_editor_opens_in_ardour(self):
        self.assertEqual(self.size, PANEL)
        self.assertRegex(self.mapped, rf"root{LIBRARY}\n")

    def test_removing_it_leaves_the_users_files_and_nothing_else(self):
        patches = list((ROOT / "content/Patches").rglob("*.kvp"))
        self.assertEqual(len(list(self.home.rglob("*.kvp"))), len(patches))
        ours = re.compile("kav|sorrel", re.IGNORECASE)
        self.assertEqual([file for file in self.left if ours.search(file)], [f"/root/{self.package.name}"])
        self.assertEqual([file for file in self.left_alone if not file.startswith(SYSTEMS_OWN)], [])
