"""What an operator has of the service: the audit trail and the metrics, held against what the clients have done."""

import collections
import json
import re
import threading
import urllib.request


class Watch:
    """Asks for the metrics and the health once a second. `trail` is the file of the audit trail."""

    def __init__(self, host, trail):
        line = next(line for line in host.errors if line.startswith("metrics on "))
        self.url = line.removeprefix("metrics on ")
        self.trail = trail
        self.complaints = []
        self.ending = threading.Event()
        self.thread = threading.Thread(target=self.run, daemon=True)
        self.thread.start()

    def get(self, path):
        with urllib.request.urlopen(self.url + path, timeout=10) as answer:
            return answer.read().decode()

    def run(self):
        while not self.ending.wait(1):
            try:
                self.get("metrics")
                self.get("healthz")
            except OSError as error:
                self.complaints.append(f"metrics: {error}")

    def shown(self, metric):
        return re.search(rf"(?m)^{re.escape(metric)} (\S+)$", self.get("metrics")).group(1)

    def end(self, counts, user):
        """What is wrong: each change has one line, by this user, and counts once."""
        self.ending.set()
        self.thread.join()
        lines = [json.loads(line) for line in self.trail.read_text(encoding="utf-8").splitlines()]
        counts["resumed"] = int(self.shown('varlo_tls_handshakes_total{kind="resumed"}'))
        written = collections.Counter(line["change"] for line in lines if line["result"] == "done")
        expected = {what.removeprefix("done "): count for what, count in counts.items() if what.startswith("done ")}
        if written != expected:
            self.complaints.append(f"the audit trail has {dict(written)} for {expected}")
        refused = sum(line["result"] == "refused" and line["change"] != "access" for line in lines)
        if refused > counts["refused"]:
            self.complaints.append(f"the audit trail has {refused} refusals of {counts['refused']}")
        others = [line for line in lines if line["result"] == "failed" or line["change"] != "access"
                  and (line.get("user"), line["role"]) != (user, "administrator")]
        self.complaints += [f"a line of the audit trail: {line}" for line in others[:5]]
        counts["changes"] = int(self.shown("varlo_store_changes_total"))
        if counts["changes"] != sum(expected.values()):
            self.complaints.append(f"the metrics have {counts['changes']} changes of {sum(expected.values())}")
        return self.complaints
