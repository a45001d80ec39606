"""The table of valid messages, of which other tests take theirs."""

import unittest

import service
from service import ENVELOPES, GENERATED, MESSAGES, SCHEMA, Host, etree

PORT = "{http://schemas.xmlsoap.org/wsdl/}portType/{http://schemas.xmlsoap.org/wsdl/}operation"


class Messages(unittest.TestCase):
    def test_each_operation_has_a_valid_message(self):
        wsdl = etree.parse(str(GENERATED / "VideoAnalytics.wsdl"))
        self.assertEqual(sorted(MESSAGES), sorted(operation.get("name") for operation in wsdl.iterfind(PORT)))
        for element in MESSAGES.values():
            SCHEMA.assertValid(etree.ElementTree(etree.fromstring(etree.tostring(element))))

    def test_an_empty_service_answers_all_of_them(self):
        for version, space in ENVELOPES.items():
            with Host() as host:
                for operation, element in MESSAGES.items():
                    with self.subTest(operation=operation, version=version):
                        status, _, answer = host.post(
                            f'<s:Envelope xmlns:s="{space}"><s:Body>{etree.tostring(element, encoding="unicode")}'
                            "</s:Body></s:Envelope>", version)
                        self.assertEqual(status, 200)
                        expected = operation.removesuffix("2") + "Response"
                        self.assertEqual(etree.QName(service.body_of(answer, version)).localname, expected)


if __name__ == "__main__":
    unittest.main()
