"""The host as an operator meets it: options, messages, exit codes, readiness, and bad days."""

import os
import re
import shutil
import signal
import socket
import subprocess
import tempfile
import threading
import time
import unittest
import unittest.mock
from pathlib import Path

import service
from service import HOST, Host, ServiceTest, StartTest


def run(*options, timeout=120, env=None):
    return subprocess.run([HOST, *options], stdin=subprocess.DEVNULL, capture_output=True, text=True,
                          timeout=timeout, env=env)


class Options(unittest.TestCase):
    def test_help_and_version(self):
        answer = run("--help")
        self.assertEqual(answer.returncode, 0)
        for option in ("--listen", "--settings", "--plugins", "--state", "--library", "--recover", "--backup", "--restore",
                       "--help", "--version"):
            self.assertIn(option, answer.stdout)
        for default in ("/etc/varlo-analytics/settings.xml", "/usr/share/varlo-analytics/plugins", "/var/lib/varlo-analytics"):
            self.assertIn(default, answer.stdout)
        version = run("--version")
        self.assertEqual(version.returncode, 0)
        self.assertRegex(version.stdout, r"^varlo-analytics-host \d+\.\d+\.\d+\nSQLite 3\.\d+\.\d+\n$")

    def test_wrong_options_exit_2_and_are_named(self):
        for options, named in ((["--colour"], "--colour"), (["--state"], "--state"), (["extra"], "extra"),
                               (["--listen", "8080"], "8080"), (["--listen", "127.0.0.1:65536"], "65536"),
                               (["--listen", "127.0.0.1:80x"], "80x"), (["--listen", "::1:80"], "::1:80"),
                               (["--listen", ":80"], ":80"), (["--listen", "127.0.0.1:"], "127.0.0.1:"),
                               (["--backup", "a", "--restore", "b"], "--restore"), (["--backup", ""], "--backup"),
                               (["--restore", ""], "--restore"), (["--library", ""], "--library")):
            with self.subTest(options=options):
                answer = run(*options)
                self.assertEqual(answer.returncode, 2)
                self.assertIn(named, answer.stderr)
                self.assertEqual(answer.stdout, "")


class BadDays(StartTest):
    def setUp(self):
        self.host = Host()
        self.addCleanup(self.host.clean)
        self.addCleanup(self.host.stop)

    def test_settings_missing(self):
        self.host.settings = self.host.folder / "none.xml"
        self.refused_to_start(str(self.host.settings), "No such file", "name another one with --settings")

    def test_settings_not_well_formed(self):
        self.host.settings.write_text("<settings>\n  <backlog>5</backlog>\n  <server>\n</settings>\n")
        self.refused_to_start(f"{self.host.settings}:4: ")

    def test_port_in_use(self):
        with socket.socket() as other:
            other.bind(("127.0.0.1", 0))
            other.listen()
            self.host.port = other.getsockname()[1]
            self.refused_to_start(f"127.0.0.1:{self.host.port}", "in use")

    def test_address_that_is_none(self):
        self.host.options = ["--listen", "camera:80"]
        self.refused_to_start("camera")

    def test_state_folder_that_cannot_be_made(self):
        (self.host.folder / "file").write_text("")
        self.host.state = self.host.folder / "file" / "state"
        self.refused_to_start(str(self.host.folder / "file"), "isn't a folder")

    def test_library_missing_or_none(self):
        for file, text in (("/nowhere/api.so", "/nowhere/api.so"), (os.environ["PLATFORM"], "StartVarloAnalyticsApi")):
            self.host.options = ["--library", file]
            self.refused_to_start(text, "Name another one with --library")

    def test_library_in_the_working_folder(self):
        name = Path(os.environ["PLATFORM"]).name  # which the loader finds elsewhere, too, and is no API library there
        (self.host.folder / name).symlink_to(service.LIBRARY)
        self.host.options = ["--library", name]
        before = os.getcwd()
        self.addCleanup(os.chdir, before)
        os.chdir(self.host.folder)
        self.host.start()
        self.assertEqual(len(self.host.call("GetProfileList")), 0)

    def test_second_process_on_the_same_store(self):
        self.host.start()
        second = Host(folder=self.host.folder)
        with self.assertRaisesRegex(RuntimeError, "the host ended with 1: .*in use by another process"):
            second.start()
        self.assertEqual(len(self.host.call("GetProfileList")), 0)

    def test_damaged_store(self):
        self.host.start()
        self.host.call("CreateProfile", name="Day")
        self.host.stop()
        store = next(self.host.state.glob("*.db"))
        store.write_bytes(b"no database at all" * 1000)
        self.refused_to_start(str(self.host.state))
        self.assertEqual(store.read_bytes(), b"no database at all" * 1000)

    def test_damaged_store_is_recovered_when_told_so(self):
        self.host.start()
        self.host.call("CreateProfile", name="Day")
        self.host.restart()  # with a last good copy
        self.host.stop()
        store = self.host.state / "profiles.db"
        damaged = b"x" * 100 + store.read_bytes()[100:]
        store.write_bytes(damaged)
        self.refused_to_start(str(self.host.state), "it is damaged", "--recover")
        self.assertEqual(store.read_bytes(), damaged)

        self.host.options = ["--recover"]
        self.host.start()
        self.assertRegex(self.host.errors[0], r"the last good copy, \d+ \w+ old, is in its place and holds 1 profile and "
                                              r"0 configurations; what was there is kept as .*damaged-1")
        self.assertEqual((self.host.state / "profiles.db.damaged-1").read_bytes(), damaged)
        self.assertEqual([p.text for p in self.host.call("GetProfileList").iter("profile")], ["Day"])
        self.assertEqual(self.host.call("CreateProfile", name="new").findtext("profileId"), "2")
        self.host.restart()
        self.assertIn("is sound; nothing was changed", self.host.errors[0])

    def test_missing_store_is_recovered_when_told_so_and_its_copy_is_kept_otherwise(self):
        self.host.start()
        self.host.call("CreateProfile", name="Day")
        self.host.restart()  # with a last good copy
        self.host.stop()
        store = self.host.state / "profiles.db"
        store.unlink()
        self.host.options = ["--recover"]
        self.host.start()
        self.assertRegex(self.host.errors[0], r"was missing; the last good copy, \d+ \w+ old, is in its place and holds "
                                              r"1 profile and 0 configurations$")
        self.assertEqual([p.text for p in self.host.call("GetProfileList").iter("profile")], ["Day"])
        self.host.stop()
        store.unlink()
        self.host.options = []
        self.host.start()
        self.assertIn("is missing; its last good copy is kept as", self.host.errors[0])
        self.assertEqual(self.host.call("CreateProfile", name="new").findtext("profileId"), "1")
        self.host.stop()
        answer = run("--restore", f"{store}.last-1", "--state", str(self.host.state))
        self.assertIn("restored 1 profile and 0 configurations", answer.stderr)
        self.host.start()
        self.assertEqual([p.text for p in self.host.call("GetProfileList").iter("profile")], ["Day"])

    def test_damaged_store_without_a_copy_is_not_recovered(self):
        self.host.start()
        self.host.stop()
        (self.host.state / "profiles.db").write_bytes(b"")
        self.refused_to_start("it is damaged")  # of no length beside a copy
        (self.host.state / "profiles.db").write_bytes(b"x" * 10000)
        (self.host.state / "profiles.db.last").unlink()
        self.host.options = ["--recover"]
        self.refused_to_start("is damaged, and there is no last good copy")
        self.assertEqual((self.host.state / "profiles.db").read_bytes(), b"x" * 10000)

    def test_backup_and_restore(self):
        self.host.start()
        self.host.call("CreateProfile", name="Day")
        copy = self.host.folder / "copy.db"
        state = ["--state", str(self.host.state)]
        answer = run("--backup", str(copy), *state)
        self.assertEqual((answer.returncode, answer.stdout), (0, ""))
        self.assertIn(f"saved 1 profile and 0 configurations to {copy}", answer.stderr)
        self.assertEqual(copy.stat().st_mode & 0o777, 0o600)
        before = copy.read_bytes()
        answer = run("--backup", str(copy), *state)
        self.assertEqual(answer.returncode, 1)
        self.assertIn("exists", answer.stderr)
        self.assertEqual(copy.read_bytes(), before)
        self.host.call("DeleteProfile", profileId=1)
        answer = run("--restore", str(copy), *state)
        self.assertEqual(answer.returncode, 1)
        self.assertIn("in use by another process", answer.stderr)
        self.host.stop()
        answer = run("--restore", str(copy), *state)
        self.assertEqual(answer.returncode, 0, answer.stderr)
        self.host.start()
        self.assertEqual([p.text for p in self.host.call("GetProfileList").iter("profile")], ["Day"])

    def test_plugin_with_a_broken_manifest_is_named_once_and_left_out_and_so_is_its_end(self):
        self.host.plugins = self.host.folder / "plugins"
        shutil.copytree(service.DATA / "plugins", self.host.plugins)
        broken = self.host.plugins / "zzz"
        broken.mkdir()
        (broken / "manifest.xml").write_text("<manifest>\n<id>x</id>\n")
        self.host.start()
        self.assertIn("zzz/manifest.xml:3: ", self.host.errors[0])  # before it listens
        for _ in range(3):
            response = self.host.call("GetBehaviorAvailability", profileId=-1)
            self.assertEqual(len(response[0]), len(list(service.DATA.glob("plugins/*.rule.*"))))
        (broken / "manifest.xml").write_text('<manifest type="rule"><id>x</id></manifest>')
        for _ in range(3):
            self.host.call("GetBehaviorAvailability", profileId=-1)
        self.host.stop()
        told = [line for line in self.host.errors if "zzz" in line]
        self.assertEqual(len(told), 2, told)
        self.assertIn("zzz/manifest.xml:3: ", told[0])
        self.assertEqual(told[1], f"{broken}: what was wrong there is no longer so.")

    def test_settings_broken_while_running_keep_their_last_values(self):
        self.host.start()
        good = self.host.settings.read_text()

        def free():
            return {b.findtext("availability") for b in self.host.call("GetBehaviorAvailability", profileId=-1)[0]}

        self.assertIn("1", free())
        self.host.settings.write_text("<settings>")
        self.assertIn("1", free())
        self.host.settings.write_text(good.replace("<maxResource>100", "<maxResource>0"))
        self.assertEqual(free(), {"0"})
        self.host.stop()
        self.assertEqual(len([line for line in self.host.errors if "settings.xml" in line]), 1)


@unittest.skipIf(os.geteuid() != 0, "mounting needs root")
class SmallDisk(unittest.TestCase):
    def setUp(self):
        self.mount = tempfile.mkdtemp(prefix="varlo-disk-")
        subprocess.run(["mount", "-t", "tmpfs", "-o", "size=1m", "tmpfs", self.mount], check=True)
        self.addCleanup(shutil.rmtree, self.mount, True)
        self.addCleanup(subprocess.run, ["umount", "-l", self.mount])
        self.host = Host(state=Path(self.mount) / "state")
        self.addCleanup(self.host.clean)
        self.addCleanup(self.host.stop)
        self.host.start()

    def fails(self, text):
        with self.assertRaises(service.Fault) as caught:
            for _ in range(20):
                self.host.call("CreateProfile", name="n" * 255)
        self.assertEqual(caught.exception.code, "SOAP-ENV:Server")
        self.assertRegex(caught.exception.text, text)

    def names(self):
        return [p.text for p in self.host.call("GetProfileList").iter("profile")]

    def test_full_disk(self):
        self.host.call("CreateProfile", name="first")
        ballast = Path(self.mount) / "ballast"
        with open(ballast, "wb", buffering=0) as file:
            try:
                while True:
                    file.write(b"x" * 4096)
            except OSError:
                pass
        self.fails("full")
        before = self.names()
        self.assertEqual(before[0], "first")
        ballast.unlink()
        self.host.call("CreateProfile", name="after")
        self.assertEqual(self.names(), before + ["after"])
        self.host.restart()
        self.assertEqual(self.names(), before + ["after"])

    def test_read_only_disk(self):
        self.host.call("CreateProfile", name="first")
        subprocess.run(["mount", "-o", "remount,ro", self.mount], check=False)
        if os.statvfs(self.mount).f_flag & os.ST_RDONLY:
            self.fails(".")
            subprocess.run(["mount", "-o", "remount,rw", self.mount], check=True)
        self.host.call("CreateProfile", name="after")
        self.assertEqual(self.names()[0], "first")
        self.assertEqual(self.names()[-1], "after")


class Life(ServiceTest):
    def test_both_signals_end_it_with_0(self):
        for number in (signal.SIGTERM, signal.SIGINT):
            self.assertEqual(self.host.stop(number), 0)
            self.host.start()

    def test_a_request_that_never_ends_does_not_keep_it(self):
        self.host.stop()
        with unittest.mock.patch.object(service, "LIBRARY", os.environ["STUCK_LIBRARY"]):
            self.host.start()
        with socket.create_connection(("127.0.0.1", self.host.port), timeout=60) as client:
            client.sendall(b"POST / HTTP/1.1\r\nHost: camera\r\nContent-Length: 1\r\n\r\nx")
            while "a request is stuck" not in self.host.errors:
                time.sleep(0.01)
            self.host.process.send_signal(signal.SIGTERM)
            self.assertEqual(client.recv(1), b"")
        self.assertEqual(self.host.process.wait(timeout=60), 0)

    def test_requests_in_progress_are_finished(self):
        acknowledged, broken = {}, []

        def write(number):
            for count in range(100000):
                name = f"{number}.{count}"
                try:
                    acknowledged[int(self.host.call("CreateProfile", name=name).findtext("profileId"))] = name
                except (OSError, service.NoAnswer):
                    return  # refused as a whole
                except Exception as error:  # an answer that was cut off, or a fault
                    broken.append(error)
                    return

        writers = [threading.Thread(target=write, args=(number,)) for number in range(4)]
        for writer in writers:
            writer.start()
        while len(acknowledged) < 20 and not broken:
            time.sleep(0.005)
        self.assertEqual(self.host.stop(), 0)
        for writer in writers:
            writer.join(timeout=60)
        self.assertEqual(broken, [])
        self.host.start()
        listed = {int(p.get("id")): p.text for p in self.host.call("GetProfileList").iter("profile")}
        self.assertEqual({i: listed.get(i) for i in acknowledged}, acknowledged)

    def test_readiness_is_told_to_systemd(self):
        self.host.stop()
        with tempfile.TemporaryDirectory() as folder:
            # A file, or a name without one, which the variable writes with an @ for its first zero.
            for name in (f"{folder}/notify", f"@{folder}"):
                with self.subTest(name=name), socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM) as notify:
                    notify.bind(name.replace("@", "\0"))
                    notify.settimeout(60)
                    os.environ["NOTIFY_SOCKET"] = name
                    try:
                        self.host.start()
                    finally:
                        del os.environ["NOTIFY_SOCKET"]
                    message = notify.recv(4096).decode()
                    self.assertIn("READY=1", message.split("\n"))
                    self.assertIn(self.host.url, message)
                    self.host.stop()
                    self.assertEqual("STOPPING=1", notify.recv(4096).decode())

    def test_endpoint_of_the_settings(self):
        self.host.stop()
        with socket.socket() as probe:
            probe.bind(("127.0.0.1", 0))
            port = probe.getsockname()[1]
        text = self.host.settings.read_text()
        self.host.settings.write_text(re.sub(r'port="\d+"', f'port="{port}"', text))
        options = ["--library", service.LIBRARY, "--settings", str(self.host.settings), "--plugins",
                   str(self.host.plugins), "--state", str(self.host.state)]
        with subprocess.Popen([HOST, *options], stderr=subprocess.PIPE, text=True) as process:
            self.assertEqual(process.stderr.readline(), f"listening on http://127.0.0.1:{port}/\n")
            process.terminate()
            self.assertEqual(process.wait(timeout=60), 0)

    def test_ipv6(self):
        self.host.stop()
        command = self.host.command()
        command[command.index("--listen") + 1] = "[::1]:0"
        with subprocess.Popen(command, stderr=subprocess.PIPE, text=True) as process:
            self.assertRegex(process.stderr.readline(), r"^listening on http://\[::1\]:\d+/\n$")
            process.terminate()
            self.assertEqual(process.wait(timeout=60), 0)


if __name__ == "__main__":
    unittest.main()
