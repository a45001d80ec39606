#!/usr/bin/python3 -B
"""Drives a host with all operations from many clients at a time, and checks every answer against what
the clients know of the store.

    tests/soak/soak.py [--seconds 1800] [--clients 8] [--tls] [--seed 1]

The programs and files come from the environment that CTest sets for the wire tests, of which short runs
are one (wire.soak). Without it, they are those of the build in BUILD, build/dev if that isn't set.

Roles (with --tls), the audit trail and the metrics are on, and are held against what the clients have done.
Beside the clients there are peers that send a byte a second or nothing. Ends with 0 if every answer was
right, no connection was dropped that needn't be, and each change has one line in the audit trail. If it runs for ten minutes or longer, the memory of
the host at the end has to be within 5 % of that after the first minute.
"""

import argparse
import collections
import multiprocessing
import os
import random
import ssl
import sys
import time
import traceback
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent.parent
BUILD = Path(os.environ.get("BUILD", ROOT / "build/dev")).absolute()
for name, place in (("HOST", BUILD / "host/varlo-analytics-host"), ("GENERATED", BUILD / "schema/generated"),
                    ("LIBRARY", BUILD / "source/libvarlo-analytics-api.so"), ("DATA", ROOT / "platform/data"),
                    ("SOURCE", ROOT), ("BUILD", BUILD)):
    os.environ.setdefault(name, str(place))
sys.path.insert(0, str(ROOT / "tests/wire"))

import connection
import operations
from peers import SlowPeers
from service import Host
from watch import Watch

SETTINGS = """<settings><server><endpoint name="kestrile-server" address="127.0.0.1" port="0"{tls}/>
<maxRequestBytes>262144</maxRequestBytes><requestSeconds>10</requestSeconds>{roles}<audit>trail</audit>
<metrics address="127.0.0.1" port="0"/></server></settings>"""
ROLES = "<roles><administrator>CN=client</administrator></roles>"
SLOW_PEERS = 50
MOST_COMPLAINTS = 5  # of a client, which then ends
LONG_SECONDS = 600
MAX_GROWTH = 0.05


def run_client(number, wire, seed, end, out):
    """The whole life of one client, in a process of its own."""
    client = operations.Operations(wire, random.Random(seed * 1000 + number), controls=number == 0)
    complaints = []
    while time.monotonic() < end and len(complaints) < MOST_COMPLAINTS:
        try:
            client.act()
        except operations.Dropped as drop:
            complaints.append(f"client {number}: {drop} was dropped without an answer")
        except Exception:  # whatever it is, it is not what has to happen
            complaints.append(f"client {number}: {traceback.format_exc(limit=-3)}")
    profiles = {i: (p.name, {a: b[0] for a, b in p.behaviors.items()}) for i, p in client.profiles.items()}
    out.put((client.counts, complaints, profiles))


def check_end(wire, profiles):
    """When all are gone: exactly the profiles that the clients left, with what is in them."""
    client = operations.Operations(wire, random.Random(0), controls=False)
    listed = {int(p.get("id")): p.text or "" for p in client.ask("GetProfileList").iter("profile")}
    client.equal(listed, {i: name for i, (name, _) in profiles.items()}, "profiles at the end")
    for profile, (_, behaviors) in profiles.items():
        for alias, expected in behaviors.items():
            text = client.ask("GetProfileBehavior", profileId=profile, behaviorId=alias).findtext("config")
            client.equal(operations.plain(text), expected, f"{alias} of profile {profile} at the end")


def collect(outputs, count, patience):
    counts, complaints, profiles = collections.Counter(), [], {}
    for _ in range(count):
        its_counts, its_complaints, its_profiles = outputs.get(timeout=patience)
        counts.update(its_counts)
        complaints += its_complaints
        profiles.update(its_profiles)
    return counts, complaints, profiles


def drive(host, wire, options):
    """Returns the counts, the complaints and the memory after the first minute (or third) and at the end."""
    context = multiprocessing.get_context("fork")
    outputs = context.Queue()
    start = time.monotonic()
    clients = [context.Process(target=run_client, args=(n, wire, options.seed, start + options.seconds, outputs))
               for n in range(options.clients)]
    for client in clients:
        client.start()
    slow = SlowPeers(wire, SLOW_PEERS)
    watch = Watch(host, host.folder / "trail")
    time.sleep(min(60, options.seconds / 3))
    early = host.memory_kib()
    counts, complaints, profiles = collect(outputs, len(clients), options.seconds + 300)
    late = host.memory_kib()
    counts["slow peers"], refused_late = slow.end()
    complaints += refused_late + watch.end(counts, "CN=client" if options.tls else None)
    for client in clients:
        client.join()
    if not complaints:
        check_end(wire, profiles)
        host.restart()
        wire.port = host.port
        check_end(wire, profiles)
    return counts, complaints, early, late


def secured(folder):
    """The attributes of an endpoint with certificates, and the context of a client that has one."""
    connection.make_certificates(folder)
    context = ssl.create_default_context(cafile=str(folder / "authority.pem"))
    context.load_cert_chain(str(folder / "client.pem"), str(folder / "client.key"))
    return (f' certificate="{folder}/service.pem" privateKey="{folder}/service.key"'
            f' clientCertificates="{folder}/authority.pem"'), context


def report(counts, complaints, early, late, options):
    for complaint in complaints:
        print(complaint)
    used = sorted(o for o in counts if o[0].isupper() and o != "Reboot")
    growth = late / early - 1
    print(f"soak{' with certificates' if options.tls else ''}: {counts['requests']} requests by {options.clients} "
          f"clients in {options.seconds:g} s, {len(used)} operations, {counts['refused']} refused as they had to be, "
          f"{counts['changes']} changes with a line in the audit trail each, {counts['resumed']} sessions resumed; "
          f"{len(complaints)} wrong answers or drops, {counts['required drops']} drops that are required; "
          f"{counts['slow']} slow requests, {counts['vanished']} peers vanished, {counts['slow peers']} too slow; "
          f"memory {early} KiB after {min(60, options.seconds / 3):.0f} s, {late} KiB at the end ({growth:+.1%})")
    return 1 if complaints or options.seconds >= LONG_SECONDS and abs(growth) > MAX_GROWTH else 0


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    parser.add_argument("--seconds", type=float, default=1800)
    parser.add_argument("--clients", type=int, default=8)
    parser.add_argument("--tls", action="store_true", help="with certificates on both sides")
    parser.add_argument("--seed", type=int, default=1)
    options = parser.parse_args()
    host = Host(settings="")
    try:
        attributes, context = secured(host.folder) if options.tls else ("", None)
        host.settings.write_text(SETTINGS.format(tls=attributes, roles=ROLES if options.tls else ""))
        host.start()
        counts, complaints, early, late = drive(host, connection.Wire(host.port, context), options)
        code = host.stop()
        complaints += [f"the host ended with {code}"] if code else []
        complaints += [line for line in host.errors if not line.startswith(("listening on", "metrics on"))]
        return report(counts, complaints, early, late, options)
    finally:
        host.stop()
        host.clean()


if __name__ == "__main__":
    sys.exit(main())
