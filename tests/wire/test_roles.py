"""Who may do what: every operation by every role, by password and by certificate, and messages that try to mislead."""

import re
import ssl
import unittest

import requests

import service
from service import CONTENT_TYPES, ENVELOPES, MESSAGES, NAMESPACE, Fault, etree
from test_access import AccessTest, make_certificate, user

READ = {"GetProfileList", "GetDefaultConfiguration", "GetProfileBehavior", "GetBehaviorAvailability",
        "GetBehaviorAvailability2", "GetDefaultScene", "GetProfileScene", "GetActiveProfile"}
RUN = {"ExecuteProfile", "StopProfile", "AlgorithmControl"}
CHANGE = {"CreateProfile", "DeleteProfile", "SetProfileBehavior", "DeleteProfileBehavior", "SetProfileScene"}
ROLES = {"viewer": READ, "operator": READ | RUN, "administrator": READ | RUN | CHANGE}
SETTINGS = """<settings><server>
  <endpoint name="kestrile-server" certificate="tls/camera.pem" privateKey="tls/camera.key"{client}/>{users}
  <roles>
    <administrator>administrator</administrator><administrator>CN=administrator</administrator>
    <operator>operator</operator><operator> CN=operator </operator>
  </roles>
</server></settings>"""
DIRECTIONAL = "urn:varlo-com:AlgorithmId:DirectionalMotion:1"


def message(operation, version):
    root = etree.Element(f"{{{ENVELOPES[version]}}}Envelope", nsmap={"s": ENVELOPES[version]})
    body = etree.SubElement(root, f"{{{ENVELOPES[version]}}}Body")
    body.append(etree.fromstring(etree.tostring(MESSAGES[operation])))
    return etree.tostring(root, encoding="unicode")


class Roles(AccessTest):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        for role in ROLES:
            make_certificate(cls.certificates, role, "authority")

    def serve(self, by_certificate):
        self.users.write_text("".join(user(role, role) for role in ROLES))
        self.host.settings.write_text(SETTINGS.format(
            client=' clientCertificates="tls/authority.pem"' if by_certificate else "",
            users="" if by_certificate else "<users>users</users>"))
        self.host.start()
        self.as_role("administrator", by_certificate)

    def as_role(self, role, by_certificate):
        """From here on the role calls."""
        self.host.tls = ssl.create_default_context(cafile=str(self.tls / "authority.pem"))
        self.headers = {}
        if by_certificate:
            self.host.tls.load_cert_chain(self.tls / f"{role}.pem", self.tls / f"{role}.key")
        else:
            self.headers = {"Authorization": requests.auth._basic_auth_str(role, role)}

    def post(self, body, version="1.1", headers=None):
        return self.host.post(body, version, {**self.headers, **(headers or {})})

    def refusal(self, operation, version):
        """What the operation is refused with for its role; None if it isn't."""
        status, _, text = self.post(message(operation, version), version)
        if status is None:  # a scene that isn't there
            return None
        try:
            service.body_of(text, version)
        except Fault as fault:
            if " may not " in fault.text:
                self.assertIn("Client" if version == "1.1" else "Sender", fault.code)
                return fault.text
        return None

    def content(self):
        """All that there is, as the role that calls sees it."""
        return [self.post(message(operation, "1.1"))[2] for operation in
                ("GetProfileList", "GetActiveProfile", "GetProfileBehavior", "GetProfileScene")]

    def test_each_operation_by_each_role(self):
        self.assertEqual(READ | RUN | CHANGE, set(MESSAGES))
        for by_certificate in (False, True):
            self.serve(by_certificate)
            for operation in ("CreateProfile", "SetProfileBehavior", "SetProfileScene", "ExecuteProfile"):
                self.assertIsNone(self.refusal(operation, "1.1"))
            for role, allowed in ROLES.items():
                name = f"CN={role}" if by_certificate else role
                for version in ENVELOPES:
                    for operation in MESSAGES:
                        if role == "administrator" and operation == "DeleteProfile":
                            continue  # below
                        with self.subTest(role=role, operation=operation, version=version, certificate=by_certificate):
                            self.as_role(role, by_certificate)
                            before = self.content()
                            expected = None
                            if operation not in allowed:
                                expected = f"{name} may not " + ("run or stop anything" if operation in RUN else "change profiles")
                            self.assertEqual(self.refusal(operation, version), expected)
                            if expected:
                                self.assertEqual(self.content(), before)
            self.assertIsNone(self.refusal("DeleteProfile", "1.2"))
            self.host.stop()
            for file in self.host.state.iterdir():
                file.unlink()

    def test_no_message_gets_round_it(self):
        self.serve(False)
        for operation in ("CreateProfile", "SetProfileBehavior"):
            self.assertIsNone(self.refusal(operation, "1.1"))
        self.as_role("viewer", False)
        before = self.content()
        space = ENVELOPES["1.1"]
        read = f'<v:GetProfileList xmlns:v="{NAMESPACE}"/>'
        create = f'<v:CreateProfile xmlns:v="{NAMESPACE}"><name>x</name></v:CreateProfile>'
        change = etree.tostring(MESSAGES["SetProfileBehavior"], encoding="unicode")
        forms = []
        for evil in (create, change):
            operation = re.match(r"<\w+:(\w+)", evil).group(1)
            forms += [
                f'<s:Envelope xmlns:s="{space}"><s:Body>{read}{evil}</s:Body></s:Envelope>',
                f'<s:Envelope xmlns:s="{space}"><s:Body>{evil}{read}</s:Body></s:Envelope>',
                f'<s:Envelope xmlns:s="{space}"><s:Header>{read}</s:Header><s:Body>{evil}</s:Body></s:Envelope>',
                f'<s:Envelope xmlns:s="{space}"><s:Header>{evil}</s:Header><s:Body>{read}</s:Body></s:Envelope>',
                f'<s:Envelope xmlns:s="{space}"><s:Body>{evil}</s:Body><s:Body>{read}</s:Body></s:Envelope>',
                f'<GetProfileList:Envelope xmlns:GetProfileList="{space}"><GetProfileList:Body>'
                + evil.replace("v:", "GetProfileList2:").replace("xmlns:v=", "xmlns:GetProfileList2=")
                + "</GetProfileList:Body></GetProfileList:Envelope>",
                f'<!-- {read} --><s:Envelope xmlns:s="{space}"><s:Body><!-- {read} -->{evil}</s:Body></s:Envelope>',
                f'<s:Envelope xmlns:s="{space}"><s:Body>'
                + evil.replace(f"<v:{operation}", f"<{operation}").replace(f"</v:{operation}", f"</{operation}")
                .replace("xmlns:v=", "xmlns=").replace("<name>", '<name xmlns="">').replace("<config>", '<config xmlns="">')
                .replace("<profileId>", '<profileId xmlns="">').replace("<behaviorId>", '<behaviorId xmlns="">')
                + "</s:Body></s:Envelope>",
                f'<s:Envelope xmlns:s="{space}"><s:Body>{evil.replace(">x<", "><![CDATA[x]]><")}</s:Body></s:Envelope>',
            ]
        for form in forms:
            with self.subTest(form=form[:300]):
                for headers in ({}, {"SOAPAction": f'"{NAMESPACE}#GetProfileList"'}):
                    self.post(form, headers=headers)
                self.chunked(form)
        self.assertEqual(self.content(), before)
        # The same forms change something when an administrator sends them.
        self.as_role("administrator", False)
        for form in forms:
            self.post(form)
        self.assertNotEqual(self.content(), before)

    def chunked(self, form):
        data = form.encode()
        chunks = (data[i:i + 7] for i in range(0, len(data), 7))
        connection = service.http.client.HTTPSConnection("127.0.0.1", self.host.port, timeout=60, context=self.host.tls)
        try:
            connection.request("POST", "/", chunks, {"Content-Type": CONTENT_TYPES["1.1"], "Transfer-Encoding": "chunked",
                                                     **self.headers}, encode_chunked=True)
            connection.getresponse().read()
        finally:
            connection.close()

    def test_a_change_of_the_roles_shows_at_the_next_request(self):
        self.serve(False)
        self.as_role("operator", False)
        self.assertEqual(self.refusal("CreateProfile", "1.1"), "operator may not change profiles")
        text = self.host.settings.read_text()
        self.host.settings.write_text(text.replace("<operator>operator</operator>",
                                                   "<operator>operator</operator><administrator>operator</administrator>"))
        self.assertIsNone(self.refusal("CreateProfile", "1.1"))
        self.host.settings.write_text(re.sub(r"<roles>.*</roles>", "", text, flags=re.S))
        self.as_role("viewer", False)
        self.assertIsNone(self.refusal("CreateProfile", "1.1"))

    def test_nobody_is_a_viewer_where_roles_stand(self):
        self.host.settings.write_text('<settings><server><endpoint name="kestrile-server"/><roles/></server></settings>')
        self.host.start()
        self.headers = {}
        self.assertEqual(self.refusal("CreateProfile", "1.1"), "Nobody may not change profiles")
        self.assertEqual(self.refusal("AlgorithmControl", "1.2"), "Nobody may not run or stop anything")
        self.assertIsNone(self.refusal("GetProfileList", "1.1"))


if __name__ == "__main__":
    unittest.main()
