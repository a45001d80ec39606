"""The service without TLS, on a camera that has no room for their libraries."""

import os
import re
import unittest
from pathlib import Path

import service
from service import ENVELOPES, MESSAGES, etree
from test_access import user

SETTINGS = """<settings><server><endpoint name="kestrile-server" {0}/><users>users</users><audit>audit.log</audit></server>
</settings>"""
LEFT_OUT = re.compile(r"lib(ssl|crypto)\.so")
OPERATOR = {"Authorization": "Basic YW5uOnNlY3JldA=="}  # ann:secret


class Small(service.StartTest):
    def setUp(self):
        service.HOST, whole = os.environ["SMALL_HOST"], service.HOST
        self.addCleanup(setattr, service, "HOST", whole)
        self.host = service.Host(settings=SETTINGS.format(""))
        (self.host.folder / "users").write_text(user("ann", "secret"))
        self.addCleanup(self.host.clean)
        self.addCleanup(self.host.stop)

    def test_it_answers_all_operations_with_none_of_their_libraries(self):
        self.host.start()
        self.assertEqual(self.host.post(service.envelope("GetProfileList"))[0], 401)
        for operation, element in MESSAGES.items():
            with self.subTest(operation=operation):
                status, _, answer = self.host.post(
                    f'<s:Envelope xmlns:s="{ENVELOPES["1.1"]}"><s:Body>{etree.tostring(element, encoding="unicode")}'
                    "</s:Body></s:Envelope>", headers=OPERATOR)
                self.assertEqual((status, "Fault" in answer), (200, False), answer)
        loaded = Path(f"/proc/{self.host.process.pid}/maps").read_text(encoding="utf-8")
        self.assertIn("libvarlo-analytics-api.so", loaded)
        self.assertEqual(sorted({line.split()[-1] for line in loaded.splitlines() if LEFT_OUT.search(line)}), [])
        self.assertIn('"change":"CreateProfile"', (self.host.folder / "audit.log").read_text(encoding="utf-8"))

    def test_a_certificate_is_refused(self):
        for name in ("camera.pem", "camera.key"):
            (self.host.folder / name).write_text("")
        self.host.settings.write_text(SETTINGS.format('certificate="camera.pem" privateKey="camera.key"'))
        self.refused_to_start("camera.pem: this service was built without TLS", "listen on 127.0.0.1")

    def test_passwords_are_not_sent_to_others(self):
        self.host.options = ["--listen", "0.0.0.0:0"]
        self.refused_to_start("passwords would be sent to 0.0.0.0 unencrypted")


if __name__ == "__main__":
    unittest.main()
