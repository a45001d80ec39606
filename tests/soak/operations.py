"""The sixteen operations as a client uses them, each with what the service has to answer."""

import documents
import service
from client import Client, Dropped, Profile
from connection import http, split
from documents import BEHAVIORS, plain
from service import etree

MISSING = 2_000_000_000  # no profile has this identifier
NAMES = ("", "Day", "Night & <fog>", "T\u00fcr \U0001F600", "n" * 255)
MOST_PROFILES = 6


class Operations(Client):
    def act(self):
        """One act at random. Wrong or Dropped is raised if the service isn't what it has to be."""
        if len(self.profiles) > MOST_PROFILES:
            self.delete()
        else:
            self.dice.choice(ACTS)(self)

    def own(self):
        return self.dice.choice(list(self.profiles)) if self.profiles else self.create()

    def create(self):
        name = self.dice.choice(NAMES)
        profile = int(self.ask("CreateProfile", name=name).findtext("profileId"))
        self.check(profile > max([0, *self.profiles, *self.deleted]), f"identifier {profile} was used before")
        self.profiles[profile] = Profile(name)
        return profile

    def delete(self):
        profile = self.own()
        self.ask("DeleteProfile", profileId=profile)
        del self.profiles[profile]
        self.may_run.discard(profile)
        self.deleted.add(profile)

    def list_profiles(self):
        listed = list(self.ask("GetProfileList").iter("profile"))
        ids = [int(p.get("id")) for p in listed]
        self.equal(ids, sorted(set(ids)), "order of the list")
        self.check(sum(p.get("active") == "true" for p in listed) <= 1, "several active profiles are listed")
        mine = {i: (p.text or "", p.get("preset")) for i, p in zip(ids, listed) if i in self.profiles}
        self.equal(mine, {i: (p.name, None) for i, p in self.profiles.items()}, "list of profiles")
        self.check(not self.deleted.intersection(ids), "a deleted profile is listed")

    def execute(self):
        profile = self.own()
        self.may_run = {profile}
        self.ask("ExecuteProfile", id=profile)

    def stop(self):
        profile = self.dice.choice((None, -1, self.own()))
        self.ask("StopProfile", **({} if profile is None else {"profileId": profile}))
        self.may_run -= {profile} if profile in self.profiles else self.may_run

    def active_profile(self):
        active = int(self.ask("GetActiveProfile").findtext("profileId"))
        self.check(active == -1 or active > 0, f"active profile {active}")
        self.check(active not in self.deleted, f"deleted profile {active} is active")
        self.check(active not in self.profiles or active in self.may_run, f"profile {active} runs unasked")

    def control(self):
        command = self.dice.choice((0, 1, 2, 3) if self.controls else (0, 1))
        self.ask("AlgorithmControl", command=command)
        self.md = command == 3 if command >= 2 else self.md

    def set_behavior(self):
        profile = self.own()
        behavior = self.dice.choice(BEHAVIORS)
        sent, back, active = self.dice.choice(behavior.documents)
        self.ask("SetProfileBehavior", profileId=profile, config=sent,
                 behaviorId=self.dice.choice((behavior.id, behavior.alias)))
        self.profiles[profile].behaviors[behavior.alias] = (back, active)
        self.profiles[profile].engines |= behavior.has_engine
        if behavior.has_engine:
            self.count("done SetEngineConfig")  # its second line

    def get_behavior(self, profile=None, behavior=None):
        profile = profile or self.own()
        behavior = behavior or self.dice.choice(BEHAVIORS)
        model = self.profiles[profile]
        if model.empty():
            self.refused("Unsupported behavior Id", "GetProfileBehavior", profileId=profile, behaviorId=behavior.id)
            return
        text = self.ask("GetProfileBehavior", profileId=profile, behaviorId=behavior.alias).findtext("config")
        if behavior.alias in model.behaviors:
            self.equal(plain(text), model.behaviors[behavior.alias][0], behavior.id)
        elif text:
            root = etree.fromstring(text)
            self.check(root.get("active") == "0" and not root.findall("rois/roi"), f"{behavior.id} is there unasked")

    def delete_behavior(self):
        profile = self.own()
        behavior = self.dice.choice(BEHAVIORS)
        if self.profiles[profile].behaviors.pop(behavior.alias, None):
            self.ask("DeleteProfileBehavior", profileId=profile, behaviorId=behavior.alias)
        else:
            self.refused(f"Profile {profile} has no behavior {behavior.id}", "DeleteProfileBehavior",
                         profileId=profile, behaviorId=behavior.alias)

    def set_scene(self):
        profile = self.own()
        model = self.profiles[profile]
        name = self.dice.choice(NAMES)
        sent = documents.scene(self.dice, name)
        self.ask("SetProfileScene", profileId=profile, scene=sent)
        model.name = name or model.name
        root = etree.fromstring(sent)
        root.set("name", model.name)
        model.scene = root

    def get_scene(self, profile=None):
        profile = profile or self.own()
        model = self.profiles[profile]
        try:
            text = self.ask("GetProfileScene", profileId=profile).findtext("scene")
        except Dropped:
            self.check(model.scene is None, f"the scene of profile {profile} is lost")
            self.count("required drops")
            return
        self.check(model.scene is not None, f"profile {profile} has a scene unasked")
        self.equal(plain(text), plain(etree.tostring(model.scene)), "scene")

    # ---- what needs no profile, or one of anybody -------------------------------------------------

    def default_behavior(self):
        behavior = self.dice.choice(BEHAVIORS)
        text = self.ask("GetDefaultConfiguration", behaviorId=self.dice.choice((behavior.id, behavior.alias)))
        self.equal(plain(text.findtext("config")), behavior.default, behavior.id)

    def default_scene(self):
        self.equal(plain(self.ask("GetDefaultScene").findtext("scene")), plain(documents.SCENE), "default scene")

    def availability(self):
        profile = self.dice.choice((-1, MISSING, self.own()))
        active = self.profiles[profile].active() if profile in self.profiles else []
        self.check_availability(active, self.ask("GetBehaviorAvailability", profileId=profile))

    def availability2(self):
        active = [b.alias for b in self.dice.sample(BEHAVIORS, self.dice.randint(0, 3))]
        self.check_availability(active, self.ask("GetBehaviorAvailability2", activeBehaviors=active))

    def check_availability(self, active, response):
        got = [(b.findtext("type"), int(b.findtext("availability"))) for b in response.iter("behavior")]
        expected = [list(zip((b.alias for b in BEHAVIORS), documents.availability(active, md)))
                    for md in ([self.md] if self.controls else [False, True])]
        self.check(got in expected, f"availability beside {active}: {got}")

    # ---- what has to be refused -------------------------------------------------------------------

    def refuse_words(self):
        profile = self.own()
        missing = f"Profile {MISSING} does not exist"
        behavior = self.dice.choice(BEHAVIORS)
        operation, fields, text = self.dice.choice((
            ("DeleteProfile", {"profileId": MISSING}, missing),
            ("ExecuteProfile", {"id": MISSING}, missing),
            ("StopProfile", {"profileId": MISSING}, missing),
            ("SetProfileBehavior", {"profileId": MISSING, "behaviorId": behavior.id, "config": "x"}, missing),
            ("SetProfileScene", {"profileId": MISSING, "scene": "x"}, missing),
            ("SetProfileBehavior", {"profileId": profile, "behaviorId": behavior.id, "config": "no XML"},
             "The behavior document could not be read"),
            ("SetProfileBehavior", {"profileId": profile, "behaviorId": "other", "config": "x"},
             "Unsupported behavior Id"),
            ("SetProfileScene", {"profileId": profile, "scene": "<a>"}, "The scene document could not be read"),
            ("SetProfileScene", {"profileId": profile, "scene": documents.scene(self.dice, "n" * 256)},
             "The profile name is longer than 255 bytes"),
            ("CreateProfile", {"name": "\u00e9" * 128}, "The profile name is longer than 255 bytes"),
            ("GetDefaultConfiguration", {"behaviorId": "other"}, "Unsupported behavior Id"),
            ("GetProfileBehavior", {"profileId": MISSING, "behaviorId": behavior.id}, "Unsupported behavior Id"),
            ("AlgorithmControl", {"command": 4}, "Unknown algorithm command 4")))
        self.refused(text, operation, **fields)

    def refuse_bytes(self):
        """What is no message of the service, or none at all."""
        good = service.envelope("GetProfileList").encode()
        garbage = bytearray(good)
        for _ in range(self.dice.randint(1, 20)):
            garbage[self.dice.randrange(len(garbage))] = self.dice.randrange(256)
        data, statuses = self.dice.choice((
            (http(good[:-20]), (500,)), (http(service.envelope("Reboot")), (500,)), (http(bytes(garbage)), (200, 400, 500)),
            (b"hello\r\n\r\n", (400,)), (http(good).replace(b"HTTP/1.1", b"HTTP/3.0"), (400,)),
            (http(good).replace(b"POST", b"GET"), (405,)), (http(b"x" * 300_000), (413,)),
            (b"POST / HTTP/1.1\r\nContent-Length: 99999999\r\n\r\n", (413,))))
        self.count("refused")
        answer = self.exchange(data, "no message")
        self.check(answer != b"", f"no answer to {data[:200]!r}")
        status, body = split(answer)
        self.check(status in statuses, f"{status} for {data[:200]!r}")
        if body:
            try:
                service.body_of(body)
            except service.Fault:
                pass

    def vanish(self):
        self.count("vanished")
        profile = self.own()
        message = self.dice.choice((service.envelope("GetProfileList"), service.envelope("GetDefaultScene"),
                                    service.envelope("GetProfileScene", profileId=profile)))
        self.wire.vanish(http(message), self.dice)


# Weighed by how often each is drawn; reading is more common than writing.
ACTS = 2 * [Operations.create, Operations.delete, Operations.execute, Operations.stop, Operations.control,
            Operations.delete_behavior, Operations.vanish]
ACTS += 4 * [Operations.list_profiles, Operations.active_profile, Operations.set_scene, Operations.get_scene,
             Operations.default_behavior, Operations.default_scene, Operations.availability,
             Operations.availability2, Operations.refuse_words, Operations.refuse_bytes]
ACTS += 6 * [Operations.set_behavior, Operations.get_behavior]
