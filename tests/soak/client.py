"""One client of the soak: its exchanges with the service, and what is known of its profiles."""

import service
from connection import http, split
from documents import BEHAVIORS


# What the audit trail calls the operations that change the store.
CHANGES = {name: name for name in ("CreateProfile", "DeleteProfile", "ExecuteProfile", "StopProfile", "AlgorithmControl")}
CHANGES |= {"SetProfileBehavior": "SetRuleConfig", "DeleteProfileBehavior": "DeleteRule", "SetProfileScene": "SetEngineConfig"}


class Wrong(Exception):
    """The service answered otherwise than it has to."""


class Dropped(Exception):
    """The service closed a connection without an answer."""


class Profile:
    def __init__(self, name):
        self.name = name
        self.behaviors = {}  # by alias: what comes back, active
        self.scene = None  # as an element
        self.engines = False  # it holds settings of an engine, which outlive the behavior

    def empty(self):
        return not self.behaviors and self.scene is None and not self.engines

    def active(self):
        return [b.alias for b in BEHAVIORS if self.behaviors.get(b.alias, ("", False))[1]]


class Client:
    """Nobody else changes its profiles; which of all profiles is active is everybody's. The client that
    `controls` is the only one to switch the MD function."""

    def __init__(self, wire, dice, controls):
        self.wire = wire
        self.dice = dice
        self.controls = controls
        self.md = False
        self.profiles = {}
        self.deleted = set()
        self.may_run = set()  # of its own profiles, those that may be the active one
        self.counts = {}

    # ---- exchanges ------------------------------------------------------------------------------

    def count(self, what):
        self.counts[what] = self.counts.get(what, 0) + 1

    def exchange(self, data, what):
        self.count("requests")
        self.count(what)
        if self.dice.random() < 0.02:
            self.count("slow")
            return self.wire.dribble(data, self.dice)
        return self.wire.send(data)

    def ask(self, operation, **fields):
        """The response element; a service.Fault or Dropped is raised."""
        version = self.dice.choice(("1.1", "1.2"))
        answer = self.exchange(http(service.envelope(operation, version, **fields), version), operation)
        if not answer:
            raise Dropped(operation)
        status, body = split(answer)
        try:
            element = service.body_of(body, version)
        except service.Fault as fault:
            self.check(status == (500 if version == "1.1" else 400), f"a fault with status {status}")
            self.check(fault.code.endswith(("Client", "Sender")), f"{operation}: {fault}")
            raise
        self.check(status == 200, f"{operation}: {status}")
        if operation in CHANGES:
            self.count(f"done {CHANGES[operation]}")
        return element

    def refused(self, text, operation, **fields):
        self.count("refused")
        try:
            self.ask(operation, **fields)
        except service.Fault as fault:
            self.equal(fault.text, text, operation)
            return
        raise Wrong(f"{operation} {fields} was not refused with \"{text}\"")

    def check(self, holds, what):
        if not holds:
            raise Wrong(what)

    def equal(self, got, expected, what):
        self.check(got == expected, f"{what}: {got!r} instead of {expected!r}")
