"""The installer for Windows, run under Wine. Needs a build of the preset mingw."""

import contextlib
import os
import pathlib
import re
import shutil
import subprocess
import time
import zipfile

from support import NAME, ROOT, HostTest, limited_material, start_program, stop_program, wait_for, write_wav
from windows import BUILD, WINE, fact, made_packages, resources_of, run_wine

VENDOR, PRODUCT, VERSION = fact("VENDOR"), fact("PRODUCT"), fact("VERSION")
LIBRARY, GUIDE = "KAVSorrelLimiter.dll", f"{NAME} User Guide.pdf"
KEY = rf"Software\Microsoft\Windows\CurrentVersion\Uninstall\{PRODUCT}"
SETTINGS = rf"HKCU\Software\{VENDOR}\{PRODUCT}"
DRIVE = WINE / "prefix/drive_c"
DOCUMENTS = WINE / "home" / VENDOR
DONE, FAILED, IN_USE = 0, 2, 3  # the installer's exit codes


def files_of(*folders):
    """Every file below these folders, with its bytes."""
    return {file: file.read_bytes() for folder in folders for file in folder.rglob("*") if file.is_file()}


def make_installer(folder, version, files):
    """An installer of a few files, by the script of the real one."""
    tree = folder / f"tree-{version}"
    for name, content in files.items():
        (tree / name).parent.mkdir(parents=True, exist_ok=True)
        (tree / name).write_bytes(content)
    facts = {"TEMPORARY_DIRECTORY": tree, "TOPLEVEL_DIRECTORY": folder, "PACKAGE_DIRECTORY": folder,
             "PACKAGE_FILE_NAME": f"installer-{version}", "PACKAGE_VENDOR": VENDOR, "PACKAGE_VERSION": version,
             "KAV_PRODUCT": PRODUCT}
    subprocess.run(["cmake", *(f"-DCPACK_{name}={value}" for name, value in facts.items()), "-P",
                    ROOT / "packaging/installer/installer.cmake"], check=True, timeout=60, stdout=subprocess.DEVNULL)
    return folder / f"installer-{version}.exe"


def registry(*places):
    """The values of these keys and of the keys below them, as texts."""
    values = {}
    for place in places:
        said = run_wine("reg", "query", place, "/s").stdout.decode(errors="replace")
        values |= {name: value.strip() for name, value in re.findall(r"(?m)^    (\S+) +REG_\w+ +(.*)$", said)}
    return values


def windows_path(path):
    return "C:\\" + str(path.relative_to(DRIVE)).replace("/", "\\")


def is_loaded(library):
    """By any process that runs."""
    for maps in pathlib.Path("/proc").glob("[0-9]*/maps"):
        with contextlib.suppress(OSError):
            if str(library.resolve()) in maps.read_text():
                return True
    return False


class WindowsInstaller(HostTest):
    @classmethod
    def set_up_once(cls):
        run_wine("cmd", "/c", "echo", "the prefix is there")
        users = [folder for folder in (DRIVE / "users").iterdir() if folder.name != "Public"]
        cls.everyones, cls.own = DRIVE / "Program Files", users[0] / "AppData/Local/Programs"
        small = {"LICENSE": b"licence", "docs/a.md": b"new", LIBRARY: b"new", GUIDE: b"new"}
        cls.new = make_installer(cls.folder, VERSION, small)
        cls.old = make_installer(cls.folder, "0.9.0.0", small | {LIBRARY: b"old", "docs/old/gone.md": b"old"})

    def setUp(self):
        self.addCleanup(self.clean)
        self.clean()

    def clean(self):
        """Removes what tests have left in the folders and the registry of Wine, which outlive them."""
        for folder in (*(top / name for top in (self.everyones, self.own) for name in (VENDOR, "VSTPlugins")),
                       DRIVE / "Music", DOCUMENTS):
            shutil.rmtree(folder, ignore_errors=True)
        script = self.folder / "clean.reg"
        keys = (rf"LOCAL_MACHINE\{KEY}", rf"CURRENT_USER\{KEY}", r"LOCAL_MACHINE\Software\VST",
                rf"CURRENT_USER\Software\{VENDOR}")
        script.write_text("\n".join(["REGEDIT4", *(rf"[-HKEY_{key}]" for key in keys), ""]))
        run_wine("reg", "import", script)

    def install(self, installer, *switches, code=DONE):
        done = run_wine(installer, *switches, "/S")
        self.assertEqual(done.returncode, code, (done.stdout + done.stderr).decode())

    def uninstall(self, top, code=DONE):
        """Waits for the end, which leaves the uninstaller itself."""
        folder = top / VENDOR / PRODUCT
        done = run_wine(folder / "Uninstall.exe", "/S", *f"_?={windows_path(folder)}".split(" "))  # without quotes
        self.assertEqual(done.returncode, code, (done.stdout + done.stderr).decode())

    def uninstall_as_the_system_does(self, root):
        """By the command of the entry, which returns before it is done."""
        values = registry(rf"{root}\{KEY}")
        run_wine(*re.fullmatch('"([^"]*)" (/S)', values["QuietUninstallString"]).groups())
        program = DRIVE / values["DisplayIcon"].removeprefix("C:\\").replace("\\", "/")
        wait_for(lambda: not program.exists(), 60, "uninstalled")
        wait_for(lambda: registry(rf"{root}\{KEY}") == {}, 10, "no entry")

    def find_plugins_in(self, folder):
        run_wine("reg", "add", r"HKLM\Software\VST", "/v", "VSTPluginsPath", "/d", folder, "/f")

    def all_files(self):
        return files_of(self.everyones / VENDOR, self.everyones / "VSTPlugins", self.own, DRIVE / "Music", DOCUMENTS)

    def plugin_in(self, folder):
        """What is installed in a plug-in folder is the new version's."""
        self.assertEqual({name: (folder / name).read_bytes() for name in (LIBRARY, GUIDE)},
                         {LIBRARY: b"new", GUIDE: b"new"})

    def test_installs_the_archive_and_the_content_and_removes_them_but_for_the_users_own(self):
        packages = made_packages()
        run_wine("reg", "add", SETTINGS, "/v", "Renderer", "/d", "own", "/f")
        self.install(packages.installer, "/AllUsers")
        with zipfile.ZipFile(packages.archive) as archive:
            top = archive.namelist()[0].split("/")[0]
            wanted = {name.removeprefix(f"{top}/"): archive.read(name) for name in archive.namelist()
                      if not name.endswith("/")}
        folder, plugins = self.everyones / VENDOR / PRODUCT, self.everyones / "VSTPlugins"
        there = {str(file.relative_to(folder)): content for file, content in files_of(folder).items()}
        self.assertEqual(set(there) - set(wanted), {"Uninstall.exe", "installed-files.txt"})
        self.assertEqual({name: there.get(name) for name in wanted}, wanted)
        self.assertEqual(files_of(plugins), {plugins / name: wanted[name] for name in (LIBRARY, GUIDE)})
        patches = {file.name for file in (ROOT / "content/Patches").rglob("*.kvp")}
        self.assertEqual({file.name for file in DOCUMENTS.rglob("*.kvp")}, patches)
        self.assertEqual([file.read_bytes() for file in DOCUMENTS.rglob("*.pdf")], [wanted[GUIDE]])

        values = registry(rf"HKLM\{KEY}")
        self.assertEqual({name: values.get(name) for name in (
            "DisplayName", "DisplayVersion", "Publisher", "InstallLocation", "DisplayIcon", "UninstallString",
            "QuietUninstallString", "NoModify", "NoRepair")}, {
            "DisplayName": PRODUCT, "DisplayVersion": VERSION, "Publisher": VENDOR,
            "InstallLocation": windows_path(folder), "DisplayIcon": windows_path(folder / "Uninstall.exe"),
            "UninstallString": f'"{windows_path(folder / "Uninstall.exe")}"',
            "QuietUninstallString": f'"{windows_path(folder / "Uninstall.exe")}" /S', "NoModify": "0x1",
            "NoRepair": "0x1"})
        kilobytes = sum(map(len, [*wanted.values(), wanted[LIBRARY], wanted[GUIDE]])) / 1024
        self.assertAlmostEqual(int(values["EstimatedSize"], 16) / kilobytes, 1, delta=0.05)
        self.assertEqual(registry(rf"HKCU\{KEY}"), {})

        changed, own = DOCUMENTS / PRODUCT / sorted(patches)[0], DOCUMENTS / PRODUCT / "Mine.kvp"
        for file in (changed, own, folder / "docs" / "notes.txt"):
            file.write_bytes(b"the user's own")
        self.uninstall_as_the_system_does("HKLM")
        self.assertEqual(set(self.all_files()), {changed, own, folder / "docs" / "notes.txt"})
        self.assertFalse(plugins.exists())
        self.assertEqual(registry(SETTINGS), {"Renderer": "own"})

    def test_nothing_that_is_in_use_is_replaced_or_removed(self):
        self.install(made_packages().installer, "/AllUsers")
        write_wav(self.folder / "song.wav", limited_material())
        own, plugin = self.everyones / VENDOR / PRODUCT, self.everyones / "VSTPlugins" / LIBRARY
        before = self.all_files(), registry(rf"HKLM\{KEY}")
        # The host loads the library of the plug-in folder, or is an installed program itself.
        for program, library in (BUILD / "kavhost.exe", plugin), (own / "kavhost.exe", own / LIBRARY):
            host = start_program([ROOT / "tests/support/wine-run", program, "edit", "song.wav", "--plugin",
                                  windows_path(library)], self.folder, os.environ, "host.log")
            self.addCleanup(stop_program, host)
            wait_for(lambda: is_loaded(library), 60, "a host has loaded it")
            self.install(self.new, code=IN_USE)
            self.uninstall(self.everyones, code=IN_USE)
            self.assertEqual((self.all_files(), registry(rf"HKLM\{KEY}")), before)
            stop_program(host)
            wait_for(lambda: not is_loaded(library), 10, "the host has gone")
        self.install(self.new)
        self.plugin_in(plugin.parent)

    def test_the_plugin_goes_where_the_system_says(self):
        foreign = DRIVE / "Music/VST 2/Other.dll"
        foreign.parent.mkdir(parents=True)
        foreign.write_bytes(b"another plug-in")
        self.find_plugins_in("C:\\Music\\VST 2\\")
        self.install(self.new, "/AllUsers")
        self.plugin_in(foreign.parent)
        self.assertFalse((self.everyones / "VSTPlugins").exists())
        self.uninstall(self.everyones)
        self.assertEqual(files_of(DRIVE / "Music"), {foreign: b"another plug-in"})

    def test_a_path_in_the_registry_that_is_not_absolute_counts_as_missing(self):
        self.find_plugins_in("VST")
        self.install(self.new, "/AllUsers")
        self.plugin_in(self.everyones / "VSTPlugins")

    def test_a_plugin_folder_that_was_there_stays(self):
        (DRIVE / "Music").mkdir()
        self.find_plugins_in("C:\\Music")
        self.install(self.new, "/AllUsers")
        self.uninstall(self.everyones)
        self.assertEqual(list((DRIVE / "Music").iterdir()), [])

    def test_for_one_user_nothing_is_outside_their_folders(self):
        self.find_plugins_in("C:\\Music")
        self.install(self.new, "/CurrentUser")
        self.plugin_in(self.own / "VSTPlugins")
        self.assertEqual({file.name for file in (self.own / VENDOR / PRODUCT).iterdir()},
                         {"LICENSE", "docs", LIBRARY, GUIDE, "Uninstall.exe", "installed-files.txt"})
        self.assertEqual(files_of(self.everyones / VENDOR, DRIVE / "Music"), {})
        self.assertEqual(registry(rf"HKLM\{KEY}"), {})
        self.assertEqual(registry(rf"HKCU\{KEY}")["DisplayVersion"], VERSION)
        self.uninstall_as_the_system_does("HKCU")
        self.assertEqual(self.all_files(), {})

    def test_an_upgrade_removes_what_it_lacks_moves_the_plugin_and_has_one_entry(self):
        folder = self.everyones / VENDOR / PRODUCT
        self.install(self.old, "/AllUsers")
        self.assertTrue((folder / "docs/old/gone.md").exists())
        (folder / "docs/notes.txt").write_bytes(b"own")
        self.find_plugins_in("C:\\Music")
        self.install(self.new)
        self.plugin_in(DRIVE / "Music")
        self.assertFalse((self.everyones / "VSTPlugins").exists())
        self.assertEqual({str(file.relative_to(folder)) for file in folder.rglob("*")},
                         {"LICENSE", "docs", "docs/a.md", "docs/notes.txt", LIBRARY, GUIDE, "Uninstall.exe",
                          "installed-files.txt"})
        self.assertEqual(registry(rf"HKLM\{KEY}")["DisplayVersion"], VERSION)
        self.assertEqual(registry(rf"HKCU\{KEY}"), {})

    def test_an_upgrade_is_for_the_same_user_and_in_the_folder_that_was_chosen(self):
        self.install(self.old, "/CurrentUser", *r"/PluginFolder=C:\Music\My plug-ins".split(" "))  # no quotes
        self.install(self.new)
        self.plugin_in(DRIVE / "Music/My plug-ins")
        self.assertEqual(files_of(self.everyones / VENDOR), {})
        self.assertFalse((self.own / "VSTPlugins").exists())

    def test_repairs_an_installation_that_is_damaged(self):
        folder = self.everyones / VENDOR / PRODUCT
        self.install(self.new, "/AllUsers")
        whole = set(self.all_files())
        for name in ("Uninstall.exe", "installed-files.txt", "docs/a.md", LIBRARY):
            (folder / name).unlink()
        self.install(self.new)
        self.assertEqual(set(self.all_files()), whole)
        (folder / "installed-files.txt").unlink()
        self.uninstall(self.everyones)
        self.assertEqual([file.name for file in self.all_files()], ["Uninstall.exe"])

    def test_what_cannot_be_written_changes_nothing(self):
        self.install(self.old, "/AllUsers")
        before = self.all_files(), registry(rf"HKLM\{KEY}")
        (DRIVE / "Music").mkdir()
        (DRIVE / "Music/file").write_bytes(b"no folder")
        self.install(self.new, "/PluginFolder=C:\\Music\\file\\VST", code=FAILED)
        before[0][DRIVE / "Music/file"] = b"no folder"
        self.assertEqual((self.all_files(), registry(rf"HKLM\{KEY}")), before)
        self.assertFalse((self.everyones / VENDOR / PRODUCT / "new").exists())

    def test_says_what_it_installs_and_is_the_same_from_the_same_files(self):
        carried = resources_of(self.new)
        self.assertIn(f"PRODUCTVERSION {', '.join(VERSION.split('.'))}\n", carried)
        self.assertEqual(dict(re.findall(r'VALUE "(CompanyName|ProductName|ProductVersion)", "([^"]*)"', carried)),
                         {"CompanyName": VENDOR, "ProductName": PRODUCT, "ProductVersion": VERSION})
        first = self.new.read_bytes()
        time.sleep(1.1)  # the times of files and of programs count in seconds
        for file in (self.folder / f"tree-{VERSION}").rglob("*"):
            file.touch()
        self.assertEqual(make_installer(self.folder, VERSION, {}).read_bytes(), first)
