"""The command-line client: one handshake a run, lists of revoked certificates, and errors for programs."""

import json
import ssl

from certificates import EMPTY, Certificates
from command import Listener, answer, main, run


class Connections(Certificates):
    def test_one_run_shakes_hands_once(self):
        context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        context.load_cert_chain(self.folder / "server.pem", self.folder / "server.key")
        reused = []

        def serve(connection):
            with context.wrap_socket(connection, server_side=True) as outside:
                reused.append(outside.session_reused)
                answer("200 OK", EMPTY.replace("GetProfileList", "DeleteProfile"))(outside)
        for version in (ssl.TLSVersion.TLSv1_2, ssl.TLSVersion.TLSv1_3):
            context.maximum_version = version
            reused.clear()
            with Listener(serve) as listener:
                ran = run("profile", "delete", "1", "2", "3", "--cacert", self.folder / "authority.pem",
                          url=f"https://127.0.0.1:{listener.port}/")
            self.assertEqual((ran.code, ran.err), (0, ""))
            self.assertEqual(reused, [False, True, True], version)

    def test_in_json_it_is_one_object(self):
        ran = run("profile", "list", "--json", "--cacert", self.folder / "authority.pem", url=self.end("expired", ssl.TLSVersion.TLSv1_3))
        self.assertEqual(ran.code, 3)
        told = json.loads(ran.err)
        self.assertEqual(told["level"], "error")
        self.assertIn("expired since", told["text"])

    def test_a_list_counts_for_its_authority_alone(self):
        both = self.folder / "both.pem"
        both.write_text("".join((self.folder / file).read_text() for file in ("stranger.pem", "authority-and-list.pem")))
        for name in ("server", "stranger"):
            ran = run("profile", "list", "--json", "--cacert", both, url=self.end(name, ssl.TLSVersion.TLSv1_3))
            self.assertEqual((ran.code, ran.err, ran.out), (0, "", "[]\n"))


if __name__ == "__main__":
    main()
