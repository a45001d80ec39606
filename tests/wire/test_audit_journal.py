"""The audit trail in the system's journal, which a socket stands in for."""

import os
import socket
import struct
import unittest

import own_mounts
from service import Host

SETTINGS = """<settings><server><endpoint name="kestrile-server"/><audit>journal</audit></server></settings>"""
SOCKET = "/run/systemd/journal/socket"


def fields(datagram):
    """The fields of a message to the journal: a line each, or a length and the bytes."""
    found = {}
    while datagram:
        line, _, datagram = datagram.partition(b"\n")
        name, plain, value = line.partition(b"=")
        if not plain:
            size, = struct.unpack("<Q", datagram[:8])
            value, datagram = datagram[8:8 + size], datagram[8 + size + 1:]
        found[name.decode()] = value.decode()
    return found


class Journal(unittest.TestCase):
    def setUp(self):
        own_mounts.mount("-t", "tmpfs", "tmpfs", "/run")
        self.addCleanup(os.system, "umount -l /run")
        self.host = Host(settings=SETTINGS)
        self.addCleanup(self.host.clean)
        self.addCleanup(self.host.stop)

    def test_lines_are_sent_as_fields(self):
        os.makedirs(os.path.dirname(SOCKET))
        with socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM) as journal:
            journal.bind(SOCKET)
            journal.settimeout(60)
            self.host.start()
            self.host.call("CreateProfile", name="a")
            seen = fields(journal.recv(65536))
            self.assertEqual((seen["VARLO_CHANGE"], seen["VARLO_PROFILE"], seen["VARLO_RESULT"]),
                             ("CreateProfile", "1", "done"))
            self.assertEqual((seen["SYSLOG_IDENTIFIER"], seen["MESSAGE"][:9]), ("varlo-analytics-host", '{"time":"'))
            self.assertFalse([line for line in self.host.errors if "CreateProfile" in line])

    def test_without_a_journal_they_go_to_standard_error(self):
        self.host.start()
        self.host.call("CreateProfile", name="a")
        self.host.stop()
        self.assertEqual(len([line for line in self.host.errors if '"change":"CreateProfile"' in line]), 1)


if __name__ == "__main__":
    own_mounts.enter()
    unittest.main()
