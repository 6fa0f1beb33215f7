"""A batch over several machines: GNU parallel with two logins on this one, of which one is ended in the middle."""

import collections
import getpass
import json
import os
import pathlib
import signal
import socket
import subprocess

from support import KAVHOST, HostTest, limited_material, start_program, stop_program, wait_for, write_wav

SSHD = "/usr/sbin/sshd"
FILES = 16
SECONDS = 20
# What makes a file take long enough to be in the middle of it when a machine ends.
SLOW = "--os 8 --hq on --set 'Threshold (1)=-12'"


def free_port():
    with socket.socket() as one:
        one.bind(("127.0.0.1", 0))
        return one.getsockname()[1]


class Machines(HostTest):
    @classmethod
    def set_up_once(cls):
        for key in ("host", "user"):
            subprocess.run(["ssh-keygen", "-q", "-t", "ed25519", "-N", "", "-f", cls.folder / key], check=True)
        (cls.folder / "authorized").write_text((cls.folder / "user.pub").read_text())
        # Where the server of a system drops its rights; it is in memory and gone after a restart.
        if os.getuid() == 0:
            pathlib.Path("/run/sshd").mkdir(mode=0o755, exist_ok=True)
        (cls.folder / "archive").mkdir()
        sound = limited_material(SECONDS)
        write_wav(cls.folder / "archive/0.wav", sound)
        one = (cls.folder / "archive/0.wav").read_bytes()
        for number in range(1, FILES):
            (cls.folder / f"archive/{number}.wav").write_bytes(one)

    def machine(self, name):
        """A server for logins to a machine of that name, and its port."""
        port = free_port()
        server = start_program(
            [SSHD, "-D", "-e", "-f", "/dev/null", "-p", port, "-o", "ListenAddress=127.0.0.1", "-h", self.folder / "host",
             "-o", f"AuthorizedKeysFile={self.folder / 'authorized'}", "-o", "StrictModes=no", "-o", "UsePAM=no",
             "-o", "PidFile=none"], self.folder, self.environment(), f"{name}.log")
        self.addCleanup(stop_program, server)

        def answers():
            with socket.socket() as one:
                return one.connect_ex(("127.0.0.1", port)) == 0

        wait_for(answers, 20, f"the server of {name}")
        with open(self.folder / "config", "a", encoding="utf-8") as config:
            config.write(f"Host {name}\n HostName 127.0.0.1\n Port {port}\n User {getpass.getuser()}\n"
                         f" IdentityFile {self.folder / 'user'}\n StrictHostKeyChecking no\n"
                         " UserKnownHostsFile /dev/null\n LogLevel ERROR\n BatchMode yes\n")
        return server, port

    def batch(self, machines, *more):
        """The command of the documentation, with these machines."""
        where = self.folder / "archive"
        words = ["parallel", "--ssh", f"ssh -F {self.folder / 'config'}", "--sshlogin",
                 ",".join(f"1/{name}" for name in machines), "--joblog", self.folder / "jobs.log", *more,
                 f"{KAVHOST} render {{}} -o {self.folder}/limited/{{/}} --report jsonl {SLOW} "
                 f">{self.folder}/reports/{{/.}}.jsonl", ":::", *sorted(where.iterdir())]
        return [str(word) for word in words]

    def jobs(self):
        """The log's lines: the number of a job and its exit status, in the order in which they ended."""
        lines = (self.folder / "jobs.log").read_text().splitlines()[1:]
        return [(int(line.split("\t")[0]), int(line.split("\t")[6])) for line in lines]

    def test_a_batch_survives_a_machine_that_ends_in_the_middle(self):
        limited = self.folder / "limited"
        limited.mkdir()
        (self.folder / "reports").mkdir()
        self.machine("first")
        server, port = self.machine("second")
        running = start_program(self.batch(["first", "second"]), self.folder, self.environment(SHELL="/bin/sh"),
                                "first_run.log")
        said = self.folder / "first_run.log"
        wait_for(lambda: len(list(limited.glob("*.wav"))) >= 3, 120, "the first files")
        # With all that it runs: the machine is gone.
        os.killpg(server.pid, signal.SIGKILL)
        for child in self.sessions_of(port):
            os.kill(child, signal.SIGKILL)
        self.assertNotEqual(running.wait(240), 0, said.read_text())
        failed = {job for job, status in self.jobs() if status != 0}
        self.assertGreater(len(failed), 0)
        self.assertLess(len(failed), FILES - 2, said.read_text())
        done = {file.name: file.stat().st_mtime_ns for file in limited.glob("*.wav")}
        self.assertGreaterEqual(len(done), FILES - len(failed))
        for name in done:  # none is half
            self.kavhost("render", limited / name, "-o", "whole.wav")
        before = len(self.jobs())

        resumed = subprocess.run(self.batch(["first"], "--resume-failed"), env=self.environment(SHELL="/bin/sh"),
                                 cwd=self.folder, stdin=subprocess.DEVNULL, capture_output=True, timeout=240, check=False)
        self.assertEqual(resumed.returncode, 0, resumed.stderr.decode())
        again = {job for job, _ in self.jobs()[before:]}
        self.assertEqual(again, failed, "only what was missing")
        files = sorted(limited.iterdir())
        self.assertEqual(len(files), FILES, files)
        self.assertEqual(len({file.read_bytes() for file in files}), 1, "equal inputs, equal outputs")

        reports = [json.loads(line) for report in sorted((self.folder / "reports").iterdir())
                   for line in report.read_text().splitlines()]
        names = collections.Counter(pathlib.Path(report["output"]).name for report in reports)
        self.assertEqual(names, collections.Counter(file.name for file in files), "one report of each")

    @staticmethod
    def sessions_of(port):
        """What runs for those who have logged in at that port."""
        found = []
        for process in pathlib.Path("/proc").glob("[0-9]*"):
            try:
                parts = (process / "environ").read_bytes().split(b"\0")
            except OSError:
                continue
            connection = next((part for part in parts if part.startswith(b"SSH_CONNECTION=")), b"")
            if connection.endswith(f" {port}".encode()):
                found.append(int(process.name))
        return found
