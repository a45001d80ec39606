"""The Ansible collection against services: the playbook of the documents, twice, in check mode, and the other states."""

import os
import re
import shutil
import subprocess

from command import main, run
from fleet import FleetTest
from service import SANITIZED, SOURCE

SECRET = "a-secret-that-no-log-shows"
# Each task is a Python program of its own.
COUNT = 4 if SANITIZED or not os.environ.get("FULL") else 20


class AnsibleTest(FleetTest):
    behaviors = ("loitering", "camera-sabotage")

    def setUp(self):
        super().setUp()
        collections = self.work / "ansible_collections" / "varlo"
        collections.mkdir(parents=True)
        shutil.copytree(SOURCE / "ansible", collections / "analytics")
        shutil.copytree(self.folder, self.work / "profiles" / "car-park")
        self.hosts = {}

    def inventory(self, urls):
        text = "[cameras]\n" + "".join(f"camera-{number} camera_url={url} ansible_python_interpreter=/usr/bin/python3\n"
                                       for number, url in enumerate(urls))
        (self.work / "inventory.ini").write_text(text, encoding="utf-8")

    def environment(self):
        path = os.path.dirname(os.environ["CLIENT"]) + ":" + os.environ["PATH"]
        return {**os.environ, "PATH": path, "HOME": str(self.work), "ANSIBLE_HOME": str(self.work / "ansible-home"),
                "ANSIBLE_COLLECTIONS_PATH": str(self.work), "ANSIBLE_NOCOLOR": "1", "ANSIBLE_FORKS": "4",
                "ANSIBLE_LOCALHOST_WARNING": "0", "ANSIBLE_LOCAL_TEMP": str(self.work / "tmp"), "LC_ALL": "C.UTF-8"}

    def command(self, *words, code=0):
        ran = subprocess.run([*map(str, words)], env=self.environment(), cwd=self.work, capture_output=True, text=True,
                             timeout=600, stdin=subprocess.DEVNULL)
        self.assertEqual(ran.returncode, code, ran.stdout + ran.stderr)
        return ran.stdout + ran.stderr

    def play(self, *words, playbook="playbook.yml", code=0):
        """What a playbook has told, and how many hosts it has changed."""
        told = self.command("ansible-playbook", "-i", "inventory.ini", playbook, "-e", f"camera_password={SECRET}",
                            *words, code=code)
        counts = [int(number) for number in re.findall(r"changed=(\d+)", told)]
        return told, sum(counts)

    def tasks(self, tasks):
        """A playbook of the tasks."""
        text = "---\n- hosts: cameras\n  connection: local\n  gather_facts: false\n  tasks:\n"
        (self.work / "tasks.yml").write_text(text + tasks, encoding="utf-8")
        return "tasks.yml"

    def write_example(self):
        page = (SOURCE / "docs/fleet.md").read_text(encoding="utf-8")
        text = re.search(r"```yaml\n(.*?)```", page, re.S).group(1)
        (self.work / "playbook.yml").write_text(text, encoding="utf-8")


class Playbook(AnsibleTest):
    def test_twice_and_the_second_time_nothing_changes(self):
        others = [self.another() for _ in range(COUNT)]
        self.inventory([other.url for other in others])
        self.write_example()
        told, changed = self.play("--check", "--diff", "-vvv")
        self.assertEqual(changed, COUNT)
        self.assertNotIn(SECRET, told)
        self.assertIn("+  <sensitivity>8</sensitivity>", told)
        for other in others:
            self.assertEqual(self.on(other, "profile", "list").json, [])
        told, changed = self.play("-vvv")
        self.assertEqual(changed, COUNT)
        self.assertNotIn(SECRET, told)
        for other in others:
            self.assertEqual(self.on(other, "profile", "list").json,
                             [{"id": 1, "name": "Car park", "active": True, "preset": ""}])
            self.assertEqual(self.on(other, "plan", self.folder, "--run", "--prune").json["state"], "same")
        self.assertEqual(self.play()[1], 0)
        self.assertEqual(self.play("--check")[1], 0)

    def test_a_difference_is_predicted_shown_and_gone(self):
        self.inventory([self.host.url])
        self.client("profile", "run", "1")
        self.write_example()
        self.edit("loitering.xml", r"(<dwellTime[^>]*>)\d+<", r"\g<1>77<", self.work / "profiles" / "car-park")
        for words in (("--check", "--diff"), ("--diff",)):
            told, changed = self.play(*words)
            self.assertEqual(changed, 1)
            self.assertRegex(told, r"(?m)^-\s+<dwellTime.*>5<.*\n\+\s+<dwellTime.*>77<")
        self.assertEqual(self.play()[1], 0)

    def test_lint_is_content(self):
        self.write_example()
        shutil.copy(self.work / "playbook.yml", self.work / "ansible_collections/varlo/analytics/playbook.yml")
        folder = self.work / "ansible_collections/varlo/analytics"
        ran = subprocess.run(["ansible-lint", "--offline", "--profile", "production", "--nocolor", str(folder / "playbook.yml"),
                              str(folder / "galaxy.yml"), str(folder / "meta/runtime.yml"),
                              str(folder / "plugins/modules/profile.py")],
                             env=self.environment(), cwd=folder, capture_output=True, text=True, timeout=600)
        self.assertEqual(ran.returncode, 0, ran.stdout + ran.stderr)
        self.assertIn("0 failure(s), 0 warning(s)", ran.stderr)

    def test_the_documentation_is_read(self):
        told = self.command("ansible-doc", "-t", "module", "varlo.analytics.profile")
        for option in ("src", "state", "name", "url", "user", "password", "cacert", "cert", "key", "frame", "run", "prune"):
            self.assertRegex(told, rf"(?m)^[-=] {option}\b")


class States(AnsibleTest):
    GATHER = """    - varlo.analytics.profile:
        url: "{{ camera_url }}"
        state: gathered
      register: camera
    - assert:
        that:
          - camera is not changed
          - camera.profiles | map(attribute='name') == ['Car park', 'Bare']
          - camera.profiles[0].active == false
          - camera.profiles[0].scene.sceneType == 2
          - camera.profiles[0].behaviors | list == ['camera-sabotage', 'loitering']
          - camera.profiles[0].behaviors.loitering.rois[0].dwellTime == 5
          - camera.profiles[0].behaviors['camera-sabotage'].active == 1
          - camera.profiles[1].scene is none
          - camera.profiles[1].behaviors == {}
    - varlo.analytics.profile:
        url: "{{ camera_url }}"
        name: Bare
        state: gathered
      register: one
    - assert:
        that: one.profiles | map(attribute='name') == ['Bare']
"""
    ABSENT = """    - varlo.analytics.profile:
        url: "{{ camera_url }}"
        name: Car park
        state: absent
"""

    def test_what_there_is(self):
        self.client("profile", "create", "Bare")
        self.inventory([self.host.url])
        self.play(playbook=self.tasks(self.GATHER))

    def test_absent(self):
        self.inventory([self.host.url])
        playbook = self.tasks(self.ABSENT)
        told, changed = self.play("--check", "--diff", playbook=playbook)
        self.assertEqual(changed, 1)
        self.assertIn("-Car park", told)
        self.assertEqual(len(self.on(self.host, "profile", "list").json), 1)
        self.assertEqual(self.play(playbook=playbook)[1], 1)
        self.assertEqual(self.on(self.host, "profile", "list").json, [])
        self.assertEqual(self.play(playbook=playbook)[1], 0)

    def test_failures_are_the_client_s_sentence(self):
        self.inventory([self.host.url])
        self.write_example()
        self.edit("loitering.xml", "</rois>", "", self.work / "profiles" / "car-park")
        told = self.play(code=2)[0]
        self.assertRegex(told, r'"msg": "[^"]*loitering\.xml:\d+')
        self.host.stop()
        told = self.play("-vvv", playbook=self.tasks(self.ABSENT), code=2)[0]
        self.assertIn("Connection refused", told)
        self.assertNotIn(SECRET, told)


if __name__ == "__main__":
    main()
