"""What a client was told is stored is there after SIGKILL in a stream of writes."""

import random
import threading
import time
import unittest

import service
from service import ServiceTest

KILLS = 50


class Kill(ServiceTest):
    def test_every_acknowledged_profile_is_there(self):
        seed = random.randrange(2**32)
        print(f"seed {seed}")
        chance = random.Random(seed)
        acknowledged = {}
        for number in range(KILLS):
            delay = chance.uniform(0.0, 0.15)
            writer = threading.Thread(target=self.write, args=(acknowledged, number))
            writer.start()
            time.sleep(delay)
            self.host.kill()
            writer.join(timeout=120)
            self.assertFalse(writer.is_alive())
            self.host.start()
            listed = {int(p.get("id")): p.text for p in self.host.call("GetProfileList").iter("profile")}
            lost = {i: n for i, n in acknowledged.items() if listed.get(i) != n}
            self.assertEqual(lost, {}, f"after kill {number + 1}")
        print(f"{KILLS} kills, {len(acknowledged)} acknowledged profiles, all there; {len(listed)} stored")
        self.assertGreater(len(acknowledged), KILLS, "the stream has to be in full flow")

    def write(self, acknowledged, number):
        for count in range(100000):
            name = f"{number}.{count}"
            try:
                profile = int(self.host.call("CreateProfile", name=name).findtext("profileId"))
            except (OSError, service.NoAnswer, service.http.client.HTTPException, ValueError,
                    service.etree.XMLSyntaxError):
                return
            acknowledged[profile] = name


if __name__ == "__main__":
    unittest.main()
