"""Behavior availability over the wire, on settings and plug-ins of the test's own.

Its plug-ins are delivered behaviors, so that clients can configure them, with costs and needs of their own.
"""

import shutil
import unittest

import service
from service import DATA, ServiceTest
from test_profiles import client

BEHAVIORS = {"R1": "loiteringdetection", "R2": "objectcounting", "R3": "adaptivemotion", "R4": "camerasabotage",
             "H": "directionalmotion"}
SETTINGS = """<settings>
  <maxResource>100</maxResource>
  <maxSelectableRules>
    <numberOfCount>2</numberOfCount>
    <countOnlyConfigurable>{only}</countOnlyConfigurable>
  </maxSelectableRules>
  <nonUserConfigurableRules>{hidden}</nonUserConfigurableRules>
</settings>
"""
# name, type, cost, dependencies, needs a still camera
PLUGINS = (("R1", "rule", 30, ["E1"], 1), ("R2", "rule", 30, ["E1"], 1), ("R3", "rule", 20, ["E2"], 1),
           ("R4", "rule", 10, [], 0), ("H", "rule", 5, [], 1),
           ("E1", "engine", 40, [], 0), ("E2", "engine", 30, [], 0))
AVAILABLE, ACTIVE = "1", "2"
# active rules, MD function on, countOnlyConfigurable, R1 to R4, H
ROWS = (
    ([], False, 0, "1111", "1"),
    (["R1"], False, 0, "2100", "1"),
    (["R1", "R2"], False, 0, "2200", "0"),
    (["R4"], False, 0, "0002", "1"),
    (["R1", "R4"], False, 0, "0002", "0"),
    (["R1"], True, 0, "2000", "0"),
    (["R1"], True, 1, "2100", "1"),
    (["H"], False, 0, "1110", "2"),
    (["R1", "R1"], False, 0, "2000", "0"),
)


def identifier(name):
    return f"com.varlo.rule.{BEHAVIORS[name]}" if name in BEHAVIORS else name


def alias(name):
    manifest = DATA / "plugins" / identifier(name) / "manifest.xml"
    return service.etree.parse(str(manifest)).findtext("alias") if manifest.exists() else f"urn:{name}"


def settings(only=0, hidden=("H",)):
    return SETTINGS.format(only=only, hidden="".join(f"<id>{identifier(name)}</id>" for name in hidden))


def install(folder, name, kind, cost, dependencies, fixed):
    plugin = folder / f"{kind}.{name}"
    plugin.mkdir(parents=True)
    (plugin / "manifest.xml").write_text(
        f'<manifest type="{kind}"><id>{identifier(name)}</id><alias>{alias(name)}</alias><name>The {name}</name>'
        f"<resourceRequirement>{cost}</resourceRequirement><fixedCameraPosition>{fixed}</fixedCameraPosition>"
        f"<dependencies>{''.join(f'<id>{d}</id>' for d in dependencies)}</dependencies></manifest>")
    for document in (DATA / "plugins" / identifier(name)).glob("[be]*.xml"):
        shutil.copy(document, plugin)


def shown(response, tag):
    return "".join(b.findtext("availability") for b in response.iter(tag))


class Availability(ServiceTest):
    def setUp(self):
        self.host = service.Host(settings=settings())
        self.host.plugins = self.host.folder / "plugins"
        for plugin in PLUGINS:
            install(self.host.plugins, *plugin)
        self.addCleanup(self.host.clean)
        self.addCleanup(self.host.stop)
        self.host.start()

    def prepare(self, md, only):
        self.host.call("AlgorithmControl", command=3 if md else 2)
        self.host.settings.write_text(settings(only))

    def test_worked_examples_with_named_behaviors(self):
        soap = client(self.host.url, "1.2")
        for active, md, only, visible, _ in ROWS:
            with self.subTest(active=active, md=md, only=only):
                self.prepare(md, only)
                for form in (identifier, alias):
                    response = self.host.call("GetBehaviorAvailability2", activeBehaviors=[form(a) for a in active])
                    self.assertTrue(response.tag.endswith("}GetBehaviorAvailabilityResponse"))
                    self.assertEqual(shown(response, "behavior"), visible)
                    self.assertEqual(shown(response, "hiddenBehavior"), "")
                listed = soap.GetBehaviorAvailability2({"behavior": [identifier(a) for a in active]})
                self.assertEqual("".join(str(b.availability) for b in listed.behavior), visible)

    def test_worked_examples_with_the_active_rules_of_a_profile(self):
        soap = client(self.host.url, "1.1")
        for active, md, only, visible, hidden in ROWS:
            if len(set(active)) < len(active):
                continue  # a profile holds a rule once
            with self.subTest(active=active, md=md, only=only):
                self.prepare(md, only)
                profile = int(self.host.call("CreateProfile", name="p").findtext("profileId"))
                self.activate(profile, active)
                response = self.host.call("GetBehaviorAvailability", profileId=profile)
                self.assertEqual(shown(response, "behavior"), visible)
                self.assertEqual(shown(response, "hiddenBehavior"), hidden)
                listed = soap.GetBehaviorAvailability(profile)
                self.assertEqual([b.userName for b in listed.behavior], ["The R1", "The R2", "The R3", "The R4"])
                self.assertEqual("".join(str(b.availability) for b in listed.hiddenBehavior), hidden)

    def activate(self, profile, names):
        for name in names:
            document = self.host.call("GetDefaultConfiguration", behaviorId=alias(name)).findtext("config")
            self.host.call("SetProfileBehavior", profileId=profile, behaviorId=alias(name),
                           config=document.replace('active="0"', 'active="1"', 1))

    def test_a_behavior_that_is_set_inactive_or_deleted_is_available_again(self):
        def first(profile):
            return shown(self.host.call("GetBehaviorAvailability", profileId=profile), "behavior")[0]

        profile = int(self.host.call("CreateProfile", name="p").findtext("profileId"))
        self.activate(profile, ["R1", "R2"])
        self.assertEqual(first(profile), ACTIVE)
        document = self.host.call("GetDefaultConfiguration", behaviorId=alias("R1")).findtext("config")
        self.host.call("SetProfileBehavior", profileId=profile, behaviorId=alias("R1"), config=document)
        self.assertEqual(first(profile), AVAILABLE)
        self.activate(profile, ["R1"])
        self.host.restart()
        self.assertEqual(first(profile), ACTIVE)
        self.host.call("DeleteProfileBehavior", profileId=profile, behaviorId=alias("R1"))
        self.assertEqual(first(profile), AVAILABLE)

    def test_changes_show_at_the_next_request(self):
        def visible():
            return shown(self.host.call("GetBehaviorAvailability", profileId=-1), "behavior")

        self.assertEqual(visible(), "1111")
        install(self.host.plugins, "R5", "rule", 101, [], 1)
        self.assertEqual(visible(), "11111"[:4] + "0")
        self.host.settings.write_text(settings().replace("<maxResource>100", "<maxResource>101"))
        self.assertEqual(visible(), "11111")
        self.host.settings.write_text(settings().replace("<numberOfCount>2", "<numberOfCount>0"))
        self.assertEqual(visible(), "00000")

    def test_without_a_visible_behavior_there_is_no_list(self):
        self.host.settings.write_text(settings(hidden=[p[0] for p in PLUGINS]))
        self.assertEqual(len(self.host.call("GetBehaviorAvailability", profileId=-1)), 0)
        self.assertEqual(len(self.host.call("GetBehaviorAvailability2")), 0)

    def test_a_profile_that_does_not_exist_has_nothing_active(self):
        self.assertEqual(shown(self.host.call("GetBehaviorAvailability", profileId=77), "behavior"), "1111")


if __name__ == "__main__":
    unittest.main()
