"""The command-line client: cameras by name, frames, and who somebody is to the service."""

import json
import os
import re
import socket
import subprocess

import test_access
from command import CLIENT, ClientTest, Listener, main, run
from proxy import read_request
from service import HOST, read_all


class Cameras(ClientTest):
    def setUp(self):
        super().setUp()
        self.variables = {"XDG_CONFIG_HOME": str(self.host.folder), "VARLO_ANALYTICS_URL": ""}

    def camera(self, *words, code=0):
        ran = run(*words, environment=self.variables)
        self.assertEqual(ran.code, code, ran.err)
        return ran

    def test_one_is_added_used_listed_and_removed(self):
        self.assertIn("no cameras", self.camera("camera", "list").out)
        file = self.host.folder / "varlo-analytics/cameras.ini"
        file.parent.mkdir()
        file.write_text("; mine\n[old]\nurl = http://192.0.2.9/\n", encoding="utf-8")
        self.camera("camera", "add", "gate", "--url", self.host.url, "--frame", "640x480")
        self.assertEqual(self.camera("--camera", "gate", "profile", "list", "--json").json, [])
        listed = self.camera("camera", "list", "--json").json
        self.assertEqual([(one["name"], one["url"], one["frame"]) for one in listed],
                         [("old", "http://192.0.2.9/", ""), ("gate", self.host.url, "640x480")])
        self.assertIn("already", self.camera("camera", "add", "gate", "--url", "x", code=2).err)
        self.camera("camera", "remove", "gate")
        self.assertEqual(file.read_text(encoding="utf-8").strip(), "; mine\n[old]\nurl = http://192.0.2.9/")
        self.assertIn("no camera 'gate'", self.camera("--camera", "gate", "profile", "list", code=2).err)
        self.assertIn("no camera 'gate'", self.camera("camera", "remove", "gate", code=2).err)

    def test_one_is_removed_however_its_section_is_written(self):
        file = self.host.folder / "varlo-analytics/cameras.ini"
        file.parent.mkdir()
        for section in ("[ gate ]", "  [gate\t] ; mine"):
            file.write_text(f"{section}\nurl = http://192.0.2.1/\n[yard]\nurl = http://192.0.2.2/\n", encoding="utf-8")
            self.camera("camera", "remove", "gate")
            self.assertEqual([one["name"] for one in self.camera("camera", "list", "--json").json], ["yard"])

    def test_those_that_are_added_and_removed_at_once(self):
        """A file that takes some time to be read."""
        file = self.host.folder / "varlo-analytics/cameras.ini"
        file.parent.mkdir()
        names = [f"old-{number}" for number in range(500)]
        file.write_text("".join(f"[{name}]\nurl = http://192.0.2.1/\n" for name in names), encoding="utf-8")
        runs = [subprocess.Popen([CLIENT, "camera", *words], stdout=subprocess.DEVNULL, env={**os.environ, **self.variables})
                for number in range(8)
                for words in (("add", f"new-{number}", "--url", "192.0.2.2"), ("remove", names[number]))]
        self.assertEqual([process.wait(timeout=120) for process in runs], [0] * len(runs))
        self.assertEqual(sorted(one["name"] for one in self.camera("camera", "list", "--json").json),
                         sorted([*names[8:], *(f"new-{number}" for number in range(8))]))

    def test_a_file_that_can_not_be_looked_at(self):
        """Neither is missing: a link to itself is in the way."""
        loop = self.host.folder / "loop"
        loop.symlink_to(loop)
        self.variables["XDG_CONFIG_HOME"] = str(loop)
        self.camera("profile", "create", "Day", "--url", self.host.url)
        self.camera("export", "Day", self.host.folder / "day", "--url", self.host.url)
        hosts = self.host.folder / "hosts.txt"
        hosts.write_text(f"{self.host.url}\n", encoding="utf-8")
        self.assertIn("1 host", self.camera("plan", self.host.folder / "day", "--hosts", hosts).out)
        for words in (("--camera", "gate", "profile", "list"), ("camera", "add", "gate", "--url", "x"), ("camera", "list")):
            self.assertRegex(self.camera(*words, code=4).err, r"cameras.ini: it can't be read: Too many levels of symbolic links. Look at its name")
        self.variables["TMPDIR"] = str(hosts)
        self.assertIn("Name another one in TMPDIR", self.camera("behavior", "edit", "Day", "loitering", "--url", self.host.url, code=4).err)

    def test_nobody_says_where_the_file_is(self):
        for home in ("", None):
            variables = {key: value for key, value in os.environ.items() if key not in ("HOME", "XDG_CONFIG_HOME")}
            variables.update({} if home is None else {"HOME": home})
            told = lambda *words: subprocess.run([CLIENT, "camera", *words], capture_output=True, text=True, env=variables, timeout=60)
            self.assertIn("no cameras", told("list").stdout)
            ran = told("add", "gate", "--url", "http://192.0.2.1/")
            self.assertEqual((ran.returncode, ran.stdout), (2, ""))
            self.assertIn("Set HOME to your home folder", ran.stderr)

    def test_what_the_system_refuses_is_told_as_json_too(self):
        gone = self.host.folder / "gone"
        gone.mkdir()
        ran = subprocess.run(["sh", "-c", 'cd "$1" && rmdir "$1" && exec "$2" camera add gate --url x --cacert mine.pem --json', "sh",
                              gone, CLIENT], capture_output=True, text=True, timeout=60)
        self.assertEqual((ran.returncode, ran.stdout), (1, ""))
        said = json.loads(ran.stderr)
        self.assertEqual(said["level"], "error")
        self.assertIn("No such file or directory", said["text"])

    def test_the_frame_is_that_of_the_command_line_the_camera_or_the_environment(self):
        self.camera("camera", "add", "gate", "--url", self.host.url, "--frame", "640x480")
        corner = lambda *words: self.camera("behavior", "example", "loitering", "--json", *words).json["document"]["rois"][0]["vertices"][0]
        self.assertEqual(corner(), [40, 40])
        self.assertEqual(corner("--camera", "gate"), [80, 80])
        self.variables["VARLO_ANALYTICS_FRAME"] = "960x240"
        self.assertEqual(corner(), [120, 40])
        self.assertEqual(corner("--camera", "gate"), [80, 80])
        self.assertEqual(corner("--camera", "gate", "--frame", "32x24"), [4, 4])
        for frame in ("640", "0x1", "1x", "axb"):
            self.assertIn("isn't a frame", self.camera("--frame", frame, "behavior", "example", "loitering", code=2).err)


class Status(ClientTest):
    def test_without_users_everybody_may_all(self):
        self.client("profile", "create", "Day")
        status = self.client("status", "--json").json
        self.assertEqual({key: status[key] for key in ("health", "role", "user", "profiles", "active")},
                         {"health": "ok", "role": "administrator", "user": None, "profiles": 1, "active": None})
        self.assertRegex(self.client("status").out, r"(?m)^may +read, run, stop and change profiles$")
        # Nothing has been changed by asking.
        self.assertEqual(len(self.client("profile", "list", "--json").json), 1)
        self.assertEqual(run("status", url="http://127.0.0.1:1/").code, 3)

    def test_a_service_that_tells_nothing_of_itself(self):
        def hide(connection):
            with socket.create_connection(("127.0.0.1", self.host.port), timeout=60) as inside:
                inside.sendall(read_request(connection)[0])
                connection.sendall(re.sub(rb"Varlo-Analytics-[^\n]*\n", b"", read_all(inside)))

        listener = Listener(hide)
        self.addCleanup(listener.close)
        status = run("status", "--json", url=f"http://127.0.0.1:{listener.port}/").json
        self.assertEqual([status[key] for key in ("health", "version", "user", "role", "may")],
                         ["ok", None, None, None, None])


class Roles(test_access.AccessTest):
    ROLES = """<users>users</users><audit>trail</audit><roles><administrator>ann</administrator>
        <operator>Zoë; 50 %41</operator></roles>"""

    def test_the_service_says_who_one_is_and_writes_no_line_of_it(self):
        version = subprocess.run([HOST, "--version"], capture_output=True, text=True).stdout.split()[1]
        self.users.write_text("".join(test_access.user(name, "secret") for name in ("ann", "Zoë; 50 %41", "guest")))
        self.start(test_access.TLS, self.ROLES)
        for name, role, may in (("ann", "administrator", "read, run, stop and change profiles"),
                                ("Zoë; 50 %41", "operator", "read, run and stop profiles, and not change them"),
                                ("guest", "viewer", "read, and nothing else")):
            ran = run("--cacert", self.tls / "authority.pem", "--user", name, "status", "--json", url=self.host.url,
                      environment={"VARLO_ANALYTICS_PASSWORD": "secret"})
            self.assertEqual(ran.code, 0, ran.err)
            self.assertEqual([ran.json[key] for key in ("user", "role", "may")], [name, role, may])
            self.assertEqual(ran.json["version"], version)
        self.assertEqual((self.host.folder / "trail").read_text(), "")


if __name__ == "__main__":
    main()
