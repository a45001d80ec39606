"""The profile operations over the wire: in both SOAP versions, with a client that we did not write."""

import unittest

import zeep
import zeep.exceptions
import zeep.plugins
import zeep.transports

import service
from service import ENVELOPES, GENERATED, NAMESPACE, XSI_TYPE, Fault, ServiceTest


class Validate(zeep.plugins.Plugin):
    """Checks every response that zeep receives against the schema."""

    def ingress(self, envelope, http_headers, operation):
        for space in ENVELOPES.values():
            body = envelope.find(f"{{{space}}}Body")
            if body is not None and not body[0].tag.endswith("}Fault"):
                service.SCHEMA.assertValid(service.etree.fromstring(service.etree.tostring(body[0])))
        return envelope, http_headers


def client(url, version):
    binding = {"1.1": "VideoAnalytics", "1.2": "VideoAnalyticsSoap12"}[version]
    wsdl = zeep.Client(str(GENERATED / "VideoAnalytics.wsdl"), plugins=[Validate()],
                       transport=zeep.transports.Transport(timeout=60, operation_timeout=60))
    return wsdl.create_service(f"{{{NAMESPACE}}}{binding}", url)


class ZeepTour(ServiceTest):
    def test_every_profile_operation_in_both_versions(self):
        for version in ENVELOPES:
            with self.subTest(version=version):
                self.tour(client(self.host.url, version))

    def tour(self, soap):
        self.assertFalse(soap.GetProfileList())
        self.assertEqual(soap.GetActiveProfile(), -1)
        day = soap.CreateProfile("Day")
        night = soap.CreateProfile("Nacht & <Nebel> \u00e9\u4e2d\U0001F600")
        self.assertEqual(night, day + 1)
        listed = soap.GetProfileList()
        self.assertEqual([(p.id, p._value_1, p.active, p.preset) for p in listed],
                         [(day, "Day", None, None), (night, "Nacht & <Nebel> \u00e9\u4e2d\U0001F600", None, None)])
        soap.ExecuteProfile(night)
        self.assertEqual(soap.GetActiveProfile(), night)
        self.assertEqual([p.active for p in soap.GetProfileList()], [None, True])
        soap.StopProfile(day)
        self.assertEqual(soap.GetActiveProfile(), night)
        soap.StopProfile()
        self.assertEqual(soap.GetActiveProfile(), -1)
        for command in (0, 1, 2, 3):
            soap.AlgorithmControl(command)
        with self.assertRaisesRegex(zeep.exceptions.Fault, "^Unknown algorithm command 4$") as caught:
            soap.AlgorithmControl(4)
        self.assertIn(caught.exception.code, ("SOAP-ENV:Client", "SOAP-ENV:Sender"))
        for operation in (soap.DeleteProfile, soap.ExecuteProfile, soap.StopProfile):
            with self.assertRaisesRegex(zeep.exceptions.Fault, "^Profile 999 does not exist$"):
                operation(999)
        soap.ExecuteProfile(day)
        soap.DeleteProfile(day)
        self.assertEqual(soap.GetActiveProfile(), -1)
        soap.DeleteProfile(night)
        self.assertFalse(soap.GetProfileList())


class Profiles(ServiceTest):
    def test_identifiers_are_never_used_again_and_all_survives_a_restart(self):
        self.assertEqual(self.created("a"), 1)
        self.assertEqual(self.created("b"), 2)
        self.host.call("DeleteProfile", profileId=2)
        self.host.restart()
        self.assertEqual(self.created("b"), 3)
        self.host.call("ExecuteProfile", id=3)
        self.host.restart()
        self.assertEqual(self.host.call("GetActiveProfile").findtext("profileId"), "3")
        self.assertEqual([p.text for p in self.host.call("GetProfileList").iter("profile")], ["a", "b"])

    def test_names_that_cannot_be_stored_are_refused_and_change_nothing(self):
        longest = "n" * 253 + "\u00e9"
        self.assertEqual(self.created(longest), 1)
        self.refused(service.envelope("CreateProfile", name=longest + "x"),
                     "The profile name is longer than 255 bytes")
        forbidden = "The profile name holds a character that XML does not allow"
        body = service.envelope("CreateProfile", name="NAME")
        self.refused(body.replace("NAME", "a&#1;b"), forbidden)
        self.refused(body.replace("NAME", "a&#xFFFE;b"), forbidden)
        self.refused(body.encode().replace(b"NAME", b"\xed\xa0\x80"), forbidden)
        self.refused(body.encode().replace(b"NAME", b"\xf5\x80\x80\x80"), forbidden)
        self.assertEqual([p.text for p in self.host.call("GetProfileList").iter("profile")], [longest])
        self.assertEqual(self.created(""), 2)

    def test_bytes_that_are_no_utf_8_are_taken_for_latin_1_and_leave_the_list_readable(self):
        body = service.envelope("CreateProfile", name="NAME").encode()
        self.assertEqual(self.host.post(body.replace(b"NAME", b"caf\xe9"))[0], 200)
        self.assertEqual([p.text for p in self.host.call("GetProfileList").iter("profile")], ["caf\u00e9"])

    def created(self, name):
        return int(self.host.call("CreateProfile", name=name).findtext("profileId"))

    def refused(self, message, text):
        for version in ENVELOPES:
            data = message if isinstance(message, bytes) else message.encode()
            data = data.replace(ENVELOPES["1.1"].encode(), ENVELOPES[version].encode())
            status, _, answer = self.host.post(data, version)
            self.assertEqual(status, {"1.1": 500, "1.2": 400}[version])
            with self.assertRaises(Fault) as caught:
                service.body_of(answer, version)
            self.assertEqual(caught.exception.text, text)
            self.assertEqual(caught.exception.code, {"1.1": "SOAP-ENV:Client", "1.2": "SOAP-ENV:Sender"}[version])

    def test_response_as_bytes(self):
        self.host.call("CreateProfile", name="Day")
        self.host.call("ExecuteProfile", id=1)
        body = service.envelope("GetProfileList").encode()
        answer = self.host.raw(b"POST / HTTP/1.1\r\nHost: x\r\nContent-Type: text/xml\r\nContent-Length: "
                               + str(len(body)).encode() + b"\r\n\r\n" + body)
        head, _, text = answer.partition(b"\r\n\r\n")
        lines = head.split(b"\r\n")
        self.assertEqual(lines[0], b"HTTP/1.1 200 OK")
        self.assertIn(b"Connection: close", lines)
        self.assertIn(b"Content-Type: text/xml; charset=utf-8", lines)
        self.assertNotIn(b"Status", head)
        self.assertTrue(text.startswith(b'<?xml version="1.0" encoding="UTF-8"?>'))
        profiles = service.body_of(text.decode())
        self.assertEqual(profiles[0].get(XSI_TYPE), "VideoAnalytics:ProfileList")
        self.assertEqual(dict(profiles[0][0].attrib),
                         {"id": "1", "active": "true", XSI_TYPE: "VideoAnalytics:ProfileSummary"})

    def test_messages_that_are_none(self):
        for body, text in ((service.envelope("Reboot"), "not implemented"),
                           (service.envelope("GetProfileList").replace(NAMESPACE, "urn:other"), "not implemented"),
                           ("<a>", ""), ("", ""), (service.envelope("GetProfileList")[:-20], "")):
            status, _, answer = self.host.post(body)
            self.assertIn(status, (400, 500), body)
            with self.assertRaises(Fault) as caught:
                service.body_of(answer)
            self.assertIn(text, caught.exception.text)
            self.assertEqual(caught.exception.code, "SOAP-ENV:Client")

    def test_a_call_that_says_nil_has_its_fields_missing(self):
        nil = ' xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance" xsi:nil="true"/>'
        for operation in service.MESSAGES:
            for version in ENVELOPES:
                with self.subTest(operation=operation, version=version):
                    plain = service.envelope(operation, version)
                    self.assertIn(f"<va:{operation}/>", plain)
                    status, _, answer = self.host.post(plain.replace("/>", nil), version)
                    self.assertEqual(status, self.host.post(plain, version)[0])
                    if status == 200:
                        service.body_of(answer, version)
        self.assertIsNotNone(self.host.call("GetProfileList"))


if __name__ == "__main__":
    unittest.main()
