#!/usr/bin/python
# -*- coding: utf-8 -*-
# Copyright: Varlo Analytics Maintainers
# GNU General Public License v2.0 or later (see https://www.gnu.org/licenses/gpl-2.0.txt)
"""Keeps an analytic profile of a camera as the files of a folder say."""

from __future__ import absolute_import, division, print_function

__metaclass__ = type

DOCUMENTATION = r"""
---
module: profile
short_description: Keep an analytic profile of a camera
description:
  - Writes what differs between the files of a folder and the profile of that name on a camera, and nothing else.
  - A camera on which a write fails gets back what it had.
  - Deletes a profile, or gathers what there is.
version_added: "1.0.0"
author:
  - Varlo Analytics Maintainers (@varlo-analytics)
requirements:
  - the command-line client varlo-analytics in the PATH
options:
  state:
    description:
      - With V(present), the profile is as the folder says.
      - With V(absent), there is no profile of the name.
      - With V(gathered), nothing is changed, and the profiles are returned.
    type: str
    choices: [present, absent, gathered]
    default: present
  src:
    description: A folder that C(varlo-analytics export) has written. Needed for O(state=present).
    type: path
  name:
    description:
      - The profile that is to be absent, or to be gathered. Without it, all are gathered.
    type: str
  url:
    description: Address of the service. Without it, the client's own default.
    type: str
  user:
    description: User of the service.
    type: str
  password:
    description: Password of the user.
    type: str
  cacert:
    description: File with the authorities to trust with https, in PEM form.
    type: path
  cert:
    description: File with a client certificate, in PEM form.
    type: path
  key:
    description: File with the key of the certificate, in PEM form.
    type: path
  frame:
    description: The picture that the camera's coordinates count in, as in V(640x360).
    type: str
  run:
    description: Run the profile.
    type: bool
    default: false
  prune:
    description: Delete the behaviors that the folder doesn't have.
    type: bool
    default: false
attributes:
  check_mode:
    description: Tells what would change, and writes nothing.
    support: full
  diff_mode:
    description: Shows the documents before and after.
    support: full
"""

EXAMPLES = r"""
- name: Have the profile as in the folder, and run it
  varlo.analytics.profile:
    url: https://camera-1.example/
    user: admin
    password: "{{ camera_password }}"
    src: profiles/car-park
    run: true

- name: Have no profile of the name
  varlo.analytics.profile:
    url: https://camera-1.example/
    name: Car park
    state: absent

- name: Look at all profiles
  varlo.analytics.profile:
    url: https://camera-1.example/
    state: gathered
  register: camera
"""

RETURN = r"""
changes:
  description: What was written, or would be in check mode, each with the documents before and after.
  returned: when state is present
  type: list
  elements: dict
  sample:
    - element: behavior
      id: loitering
      action: set
      before: <behavior ...>
      after: <behavior ...>
profiles:
  description: The profiles, with their documents as JSON.
  returned: when state is gathered
  type: list
  elements: dict
  sample:
    - id: 1
      name: Car park
      active: true
      preset: ""
      scene: {"sceneType": 2}
      behaviors: {"loitering": {"active": 1}}
"""

import json
import os
import tempfile
from xml.etree import ElementTree

from ansible.module_utils.basic import AnsibleModule

# Behind these options stands what the module was given under the same name.
ACCESS = ("url", "user", "cacert", "cert", "key", "frame")


class Client(object):
    """The command-line client, for one camera."""

    def __init__(self, module):
        self.module = module
        self.command = [module.get_bin_path("varlo-analytics", required=True), "--json"]
        for option in ACCESS:
            if module.params[option]:
                self.command += ["--" + option, module.params[option]]
        self.environment = {}
        if module.params["password"] is not None:
            self.environment["VARLO_ANALYTICS_PASSWORD"] = module.params["password"]

    def call(self, *words):
        """What a command has written to standard output, or the end of the module with what was wrong."""
        code, output, errors = self.module.run_command(self.command + list(words), environ_update=self.environment)
        told = sentences(errors)
        if code != 0:
            self.module.fail_json(msg=told[-1] if told else "varlo-analytics ended with %d." % code)
        for sentence in told:
            self.module.warn(sentence)
        return json.loads(output)


def sentences(errors):
    """What the client has said on standard error, with the place in front that it is about."""
    told = []
    for line in errors.splitlines():
        try:
            said = json.loads(line)
            place = [str(said[key]) for key in ("file", "line") if said.get(key)]
            told.append(": ".join(part for part in (":".join(place), said["text"]) if part))
        except (ValueError, KeyError, TypeError, AttributeError):
            prefix = "varlo-analytics: "
            told.append(line[len(prefix):] if line.startswith(prefix) else line)
    return told


def diff_of(change):
    title = "%s %s" % (change["element"], change["id"])
    return {"before_header": title, "after_header": title,
            "before": lines_of(change["before"]), "after": lines_of(change["after"])}


def lines_of(text):
    return text + "\n" if text and not text.endswith("\n") else text


def present(module, client):
    words = [module.params["src"]]
    words += [option for option in ("--run", "--prune") if module.params[option[2:]]]
    # The plan holds for check mode as well, and refuses documents that the roll-out's --force would let pass.
    host = client.call("plan", *words)
    if host["changes"] and not module.check_mode:
        host = client.call("apply", "--force", *words)
    changes = host["changes"]
    module.exit_json(changed=bool(changes), changes=changes, diff=[diff_of(change) for change in changes])


def absent(module, client):
    name = module.params["name"]
    ids = [str(profile["id"]) for profile in client.call("profile", "list") if profile["name"] == name]
    if not module.check_mode:
        for number in ids:
            client.call("profile", "delete", number)
    change = {"element": "profile", "id": name, "before": name if ids else "", "after": ""}
    module.exit_json(changed=bool(ids), diff=[diff_of(change)] if ids else [])


def gathered(module, client):
    name = module.params["name"]
    profiles = [profile for profile in client.call("profile", "list") if name in (None, profile["name"])]
    for profile in profiles:
        number = str(profile["id"])
        profile["scene"] = client.call("scene", "get", number)["document"]
        documents = [client.call("behavior", "get", number, behavior) for behavior in behaviors_of(module, client, number)]
        profile["behaviors"] = dict((one["behavior"], one["document"]) for one in documents)
    module.exit_json(changed=False, profiles=profiles)


def behaviors_of(module, client, number):
    """The identifiers of the behaviors that a profile holds, of which its export has the list."""
    folder = os.path.join(tempfile.mkdtemp(dir=module.tmpdir), "profile")
    client.call("export", number, folder)
    root = ElementTree.parse(os.path.join(folder, "profile.xml")).getroot()
    return [behavior.get("id") for behavior in root.findall("behavior")]


def main():
    states = {"present": present, "absent": absent, "gathered": gathered}
    module = AnsibleModule(
        argument_spec=dict(
            state=dict(type="str", choices=list(states), default="present"),
            src=dict(type="path"),
            name=dict(type="str"),
            url=dict(type="str"),
            user=dict(type="str"),
            password=dict(type="str", no_log=True),
            cacert=dict(type="path"),
            cert=dict(type="path"),
            key=dict(type="path", no_log=False),
            frame=dict(type="str"),
            run=dict(type="bool", default=False),
            prune=dict(type="bool", default=False),
        ),
        required_if=[("state", "present", ["src"]), ("state", "absent", ["name"])],
        required_by={"user": ["password"]},
        supports_check_mode=True,
    )
    states[module.params["state"]](module, Client(module))


if __name__ == "__main__":
    main()
