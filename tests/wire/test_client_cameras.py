"""The command-line client: cameras by name, frames, and who somebody is to the service."""

from command import ClientTest, main, run


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
            self.assertIn("is no frame", self.camera("--frame", frame, "behavior", "example", "loitering", code=2).err)


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


if __name__ == "__main__":
    main()
