"""Documents and profiles up to their limits and beyond: what was acknowledged can be read again."""

import os
import random
import statistics
import threading
import time
import unittest

import service
from service import Fault, ServiceTest, etree
from test_behaviors import behaviors, values

ELEMENTS = 200_000
PROFILE_BYTES = 4 * 1024 * 1024
LARGE_REQUESTS = int(os.environ.get("LARGE_REQUESTS", "12"))  # at a time; 48 in a long run
DRAWS = int(os.environ.get("DRAWS", "4"))  # documents for each family
LIMITS = """<settings><limits><documentElements>{}</documentElements><profileBytes>{}</profileBytes></limits></settings>"""
TOO_MANY = "The {} document has more than {} elements"
TOO_LARGE = "The profile would hold more than {} bytes"
LOITERING = "urn:varlo-com:AlgorithmId:LoiteringDetection:1"
SABOTAGE = "urn:varlo-com:AlgorithmId:CameraSabotage:1"
REMOVAL = "urn:varlo-com:AlgorithmId:ObjectRemoval:1"


def vertices(count):
    return "".join(f"<vertex><x>{n % 10}</x><y>{n % 7}</y></vertex>" for n in range(count))


def zone(count, tag="roi"):
    return f"<{tag}><name>Zone</name><enable>1</enable><vertices>{vertices(count)}</vertices></{tag}>"


def behavior(alias, zones, points):
    """A document of that many zones of that many points; one without zones has other elements instead."""
    if alias == SABOTAGE:
        return f'<behavior id="{alias}" active="1"><alarmDelay>17</alarmDelay>{"<x/>" * (zones * points)}</behavior>'
    return f'<behavior id="{alias}" active="1"><rois>{zone(points) * zones}</rois></behavior>'


def scene(zones, points):
    return f'<analyticProfile name="drawn"><excludeZones>{zone(points, "excludeZone") * zones}</excludeZones></analyticProfile>'


def points_of(text):
    """Of the zones, without the boxes of sizes."""
    root = etree.fromstring(text)
    zones = root.findall(".//roi") + root.findall(".//excludeZone")
    return [(v.findtext("x"), v.findtext("y")) for zone in zones for v in zone.iterfind("vertices/vertex")]


def count(text):
    return sum(1 for _ in etree.fromstring(text).iter("*"))


class Drawn(ServiceTest):
    settings = LIMITS.format(600, 40_000)

    def config(self, profile, alias):
        return self.host.call("GetProfileBehavior", profileId=profile, behaviorId=alias).findtext("config")

    def scene(self, profile):
        return self.host.call("GetProfileScene", profileId=profile).findtext("scene")

    def tour(self, chance, set_it, read_it, make, word):
        """Sets drawn documents; returns how many were taken and how many refused."""
        taken = refused = 0
        before = read_it()
        for _ in range(DRAWS):
            zones = chance.choice((1, 1, 2, 5, 20, 60))
            text = make(zones, max(1, chance.randrange(1, 900 // (3 * zones) + 2)))
            try:
                set_it(text)
            except Fault as fault:
                refused += 1
                self.assertIn(fault.text, (TOO_MANY.format(word, 600), TOO_LARGE.format(40_000)))
                self.assertIn("Client", fault.code)
                self.assertEqual(read_it(), before)
                continue
            taken += 1
            self.assertLessEqual(count(text), 600)
            before = read_it()
            self.assertEqual(points_of(before), points_of(text))
        return taken, refused

    def test_what_is_acknowledged_reads_back_and_what_is_refused_changed_nothing(self):
        seed = random.randrange(2**32)
        print(f"seed {seed}")
        chance = random.Random(seed)
        taken = refused = 0
        for alias in behaviors():
            with self.subTest(alias=alias):
                profile = int(self.host.call("CreateProfile", name="drawn").findtext("profileId"))
                beside = SABOTAGE if alias != SABOTAGE else LOITERING
                small = behavior(beside, 1, 3)
                self.host.call("SetProfileBehavior", profileId=profile, behaviorId=beside, config=small)
                self.host.call("SetProfileBehavior", profileId=profile, behaviorId=alias, config=behavior(alias, 1, 3))
                kept = self.config(profile, beside)

                def set_it(text):
                    self.host.call("SetProfileBehavior", profileId=profile, behaviorId=alias, config=text)

                result = self.tour(chance, set_it, lambda: self.config(profile, alias),
                                   lambda zones, points: behavior(alias, zones, points), "behavior")
                taken, refused = taken + result[0], refused + result[1]
                self.assertEqual(values(self.config(profile, beside)), values(kept))
                # Just above each limit.
                for text, fault in ((behavior(alias, 1, 700), TOO_MANY.format("behavior", 600)),
                                    (behavior(alias, 1, 1).replace("Zone", "Z" * 50_000), TOO_LARGE.format(40_000))):
                    if alias == SABOTAGE and "bytes" in fault:
                        continue  # it stores nothing of what it doesn't know
                    before = self.config(profile, alias)
                    self.assertEqual(self.fault_of("SetProfileBehavior", profileId=profile, behaviorId=alias,
                                                   config=text).text, fault)
                    self.assertEqual(self.config(profile, alias), before)
        profile = int(self.host.call("CreateProfile", name="scene").findtext("profileId"))
        self.host.call("SetProfileScene", profileId=profile, scene=scene(1, 3))
        self.tour(chance, lambda text: self.host.call("SetProfileScene", profileId=profile, scene=text),
                  lambda: self.scene(profile), scene, "scene")
        self.assertEqual(self.fault_of("SetProfileScene", profileId=profile, scene=scene(1, 700)).text,
                         TOO_MANY.format("scene", 600))
        print(f"{taken} documents taken, {refused} refused")
        self.assertGreater(taken, 0)


class Delivered(ServiceTest):
    # The delivered settings, with time for a slow machine.
    settings = (service.DATA / "settings.xml").read_text().replace("<requestSeconds>30<", "<requestSeconds>600<")

    def create(self):
        return int(self.host.call("CreateProfile", name="large").findtext("profileId"))

    def set(self, profile, alias, text):
        body = service.envelope("SetProfileBehavior", profileId=profile, behaviorId=alias, config="@")
        status, _, answer = self.host.post(body.replace("@", f"<![CDATA[{text}]]>"), timeout=600)
        return service.body_of(answer)

    def test_a_zone_of_too_many_points_is_refused_and_not_read_as_none(self):
        profile = self.create()
        small = behavior(LOITERING, 1, 3)
        self.set(profile, LOITERING, small)
        before = self.host.call("GetProfileBehavior", profileId=profile, behaviorId=LOITERING).findtext("config")
        many = behavior(LOITERING, 1, 1).replace("<vertices>", "<vertices>" + "<vertex/>" * 340_000)
        with self.assertRaises(Fault) as caught:
            self.set(profile, LOITERING, many)
        self.assertEqual(caught.exception.text, TOO_MANY.format("behavior", ELEMENTS))
        self.assertEqual(self.host.call("GetProfileBehavior", profileId=profile, behaviorId=LOITERING).findtext("config"),
                         before)

    def test_an_engine_part_is_not_stored_without_its_rule(self):
        profile = self.create()
        self.set(profile, REMOVAL, f'<behavior id="{REMOVAL}" active="1"><sensitivity>9</sensitivity></behavior>')
        for rois in (ELEMENTS, ELEMENTS // 10):
            with self.assertRaises(Fault) as caught:
                self.set(profile, REMOVAL,
                         f'<behavior id="{REMOVAL}" active="1"><sensitivity>5</sensitivity><rois>{"<roi/>" * rois}</rois></behavior>')
            self.assertIn(caught.exception.text, (TOO_MANY.format("behavior", ELEMENTS), TOO_LARGE.format(PROFILE_BYTES)))
            config = self.host.call("GetProfileBehavior", profileId=profile, behaviorId=REMOVAL).findtext("config")
            self.assertEqual(etree.fromstring(config).findtext("sensitivity"), "9")

    def test_a_profile_takes_no_more_than_can_be_read(self):
        profile = self.create()
        self.set(profile, SABOTAGE, behavior(SABOTAGE, 1, 1))
        taken = 0
        for alias in behaviors():
            if alias == SABOTAGE:
                continue
            try:
                self.set(profile, alias, behavior(alias, 1, 60_000))
                taken += 1
            except Fault as fault:
                self.assertEqual(fault.text, TOO_LARGE.format(PROFILE_BYTES))
        self.assertIn(taken, (2, 3))
        begin = time.monotonic()
        config = self.host.call("GetProfileBehavior", profileId=profile, behaviorId=SABOTAGE).findtext("config")
        self.assertTrue(config)
        print(f"{taken} large behaviors; a small one beside them read in {time.monotonic() - begin:.2f} s")

    def test_many_large_documents_stay_within_the_memory(self):
        parallel = 4 if service.SANITIZED else LARGE_REQUESTS
        largest = behavior(LOITERING, 1, 66_000)
        profiles = [self.create() for _ in range(4)]
        for profile in profiles:
            self.set(profile, LOITERING, largest)
            self.set(profile, "urn:varlo-com:AlgorithmId:AdaptiveMotion:1",
                     behavior("urn:varlo-com:AlgorithmId:AdaptiveMotion:1", 1, 66_000))
        answers, latencies, ended = [], [], threading.Event()

        def work(number):
            profile = profiles[number % len(profiles)]
            if number % 2:
                self.set(profile, LOITERING, largest)
            else:
                body = service.envelope("GetProfileBehavior", profileId=profile, behaviorId=LOITERING)
                _, _, text = self.host.post(body, timeout=600)
                self.assertGreater(len(service.body_of(text).findtext("config")), 1_000_000)
            answers.append(number)

        def watch():
            while not ended.is_set():
                begin = time.monotonic()
                self.host.call("GetProfileList")
                latencies.append(time.monotonic() - begin)

        threads = [threading.Thread(target=work, args=(n,)) for n in range(parallel)]
        watcher = threading.Thread(target=watch)
        begin = time.monotonic()
        for thread in (*threads, watcher):
            thread.start()
        for thread in threads:
            thread.join()
        ended.set()
        watcher.join()
        peak = self.host.memory_kib("VmHWM") / 1024
        median = statistics.median(latencies) * 1000
        print(f"{len(answers)} of {parallel} large requests answered in {time.monotonic() - begin:.1f} s, peak {peak:.0f} MiB, "
              f"GetProfileList beside them {median:.0f} ms in the median of {len(latencies)}")
        self.assertEqual(len(answers), parallel)
        if not service.SANITIZED:
            self.assertLess(peak, 512)


if __name__ == "__main__":
    unittest.main()
