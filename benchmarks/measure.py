"""Measures everything, or the parts that are named, and prints a table of each.

    measure.py [PART...]   nine rounds; each part takes one to four minutes
    measure.py --smoke     tiny counts: does everything still run and answer?
"""

import argparse
import os
import re
import statistics
import subprocess
import sys
import tempfile
import time
from pathlib import Path

sys.path.insert(0, str(Path(__file__).parent / "wire"))

import secured  # noqa: E402
import servers  # noqa: E402
from servers import BUILD, LOITERING, NUMBER, SOURCE, envelope, load  # noqa: E402

CLIENTS = (1, 8, 64)
FULL = 2  # the profile that holds every behavior
GOOGLE = ("availability", "conversion", "documents", "scene", "store")


class Table:
    def __init__(self, title, *columns):
        self.lines = [f"### {title}", "", "| " + " | ".join(columns) + " |", "|---" * len(columns) + "|"]

    def row(self, *cells):
        self.lines.append("| " + " | ".join(str(cell) for cell in cells) + " |")

    def text(self):
        return "\n".join(self.lines) + "\n"


def medians(results):
    return {key: statistics.median(result[key] for result in results) for key in results[0]}


def checked(result, what):
    if result["unanswered"] or result["refused"]:
        sys.exit(f"{what}: {result['unanswered']} requests without an answer, {result['refused']} refused")
    return result


class Numbers:
    """Numbers for requests that must differ; each is given once."""

    def __init__(self):
        self.next = 1

    def take(self, count):
        self.next += count
        return self.next - count


NUMBERS = Numbers()


def settle(options):
    """Settings that have just been written are read again by each request, for three seconds."""
    time.sleep(0 if options.smoke else 4)


def interleaved(options, bodies, clients):
    """Rounds over pairs of server and body, in turn; the medians of each, in their order."""
    results = [[] for _ in bodies]
    for _ in range(options.rounds):
        for (server, body), kept in zip(bodies, results):
            round_ = load(server, body, clients, options.requests, NUMBERS.take(options.requests))
            kept.append(checked(round_, server.name))
    return [medians(kept) for kept in results]


def compare(options, title, pairs):
    """A table of servers that do the same, with the ratios of the first one to each."""
    table = Table(title, "clients", "server", "requests/s", "p50 µs", "p99 µs", "CPU µs/request", "memory KiB",
                  "host's requests/s to it", "host's CPU to it", "host's p50 to it")
    settle(options)
    for clients in CLIENTS:
        figures = interleaved(options, pairs, clients)
        host = figures[0]
        for (server, _), row in zip(pairs, figures):
            table.row(clients, server.name, f"{row['rate']:.0f}", f"{row['p50']:.0f}", f"{row['p99']:.0f}",
                      f"{row['cpu']:.1f}", f"{row['memory']:.0f}", f"{host['rate'] / row['rate']:.2f}",
                      f"{host['cpu'] / row['cpu']:.2f}", f"{host['p50'] / row['p50']:.2f}")
    return table.text()


def list_profiles(options):
    every = (servers.OurHost(), servers.plain_peer(fresh=True), servers.plain_peer(), servers.fixed_peer())
    try:
        idle = servers.resident_kib(every[0])
        body = envelope("GetProfileList")
        table = compare(options, "GetProfileList on five profiles, a new connection each",
                        [(server, body) for server in every])
        return f"{table}\nThe idle host, before its first request: {idle} KiB resident.\n"
    finally:
        for server in every:
            server.end()


def sync_micros():
    """What one write of 8 KiB takes until it is on the disk."""
    times = []
    with tempfile.TemporaryFile() as file:
        for _ in range(200):
            os.pwrite(file.fileno(), bytes(8192), 0)
            begin = time.perf_counter()
            os.fdatasync(file.fileno())
            times.append((time.perf_counter() - begin) * 1e6)
    return statistics.median(times)


def durable(options):
    host = servers.OurHost()
    document = servers.behavior(host)
    body = envelope("SetProfileBehavior", profileId=1, behaviorId=LOITERING, config=document)
    host.call("SetProfileBehavior", profileId=1, behaviorId=LOITERING, config=document)
    with tempfile.NamedTemporaryFile("w", suffix=".xml") as file:
        file.write(servers.stored(host, 1))
        file.flush()
        plain = servers.plain_peer(file.name)
    try:
        before = sync_micros()
        table = compare(options, "Durable SetProfileBehavior, loitering with four zones, every document another",
                        [(host, body), (plain, body)])
        return f"{table}\nA sync takes {before:.0f} µs before it, {sync_micros():.0f} µs behind it.\n"
    finally:
        host.end()
        plain.end()


def operations(host):
    """Every operation with a message for it. Those on profile NUMBER come in an order in which each finds
    what it needs: created, given a behavior, relieved of it, deleted."""
    document, scene = servers.behavior(host), host.call("GetDefaultScene").findtext("scene")
    on_own = {"profileId": NUMBER, "behaviorId": LOITERING}
    on_first = {"profileId": 1, "behaviorId": LOITERING}
    yield "CreateProfile", {"name": f"Profile {NUMBER}"}
    yield "SetProfileBehavior", {**on_own, "config": document}
    yield "DeleteProfileBehavior", on_own
    yield "DeleteProfile", {"profileId": NUMBER}
    yield "GetProfileList", {}
    yield "ExecuteProfile", {"id": 1}
    yield "GetActiveProfile", {}
    yield "GetBehaviorAvailability", {"profileId": 1}
    yield "GetBehaviorAvailability2", {"activeBehaviors": [LOITERING]}
    yield "GetProfileBehavior", on_first
    yield "GetProfileBehavior of eight", {"profileId": FULL, "behaviorId": LOITERING}
    yield "GetDefaultConfiguration", {"behaviorId": LOITERING}
    yield "GetDefaultScene", {}
    yield "SetProfileScene", {"profileId": 1, "scene": scene}
    yield "GetProfileScene", {"profileId": 1}
    yield "AlgorithmControl", {"command": 3}
    yield "StopProfile", {"profileId": 1}


def all_operations(options):
    host, plain, fixed = servers.OurHost(), servers.plain_peer(), servers.fixed_peer()
    host.call("SetProfileBehavior", profileId=1, behaviorId=LOITERING, config=servers.behavior(host))
    for urn in servers.behaviors():
        host.call("SetProfileBehavior", profileId=FULL, behaviorId=urn, config=servers.behavior(host, urn))
    bodies = [(name, envelope(name.split()[0], **fields)) for name, fields in operations(host)]
    listing = envelope("GetProfileList")
    results = {name: ([], [], []) for name, _ in bodies}
    settle(options)
    first = len(servers.PROFILES) + 1
    for _ in range(options.rounds):
        for name, body in bodies:
            for server, sent, kept in zip((host, plain, fixed), (body, listing, listing), results[name]):
                kept.append(checked(load(server, sent, 8, options.requests, first), name))
        first += options.requests
    for server in (host, plain, fixed):
        server.end()
    table = Table("Every operation at 8 clients, beside the peers' lists", "operation", "requests/s", "p50 µs",
                  "p99 µs", "CPU µs/request", "memory KiB", "CPU to GetProfileList", "CPU to plain gSOAP",
                  "CPU to fixed answer")
    list_cpu = medians(results["GetProfileList"][0])["cpu"]
    for name, kept in results.items():
        ours, peer, bare = (medians(results) for results in kept)
        table.row(name, f"{ours['rate']:.0f}", f"{ours['p50']:.0f}", f"{ours['p99']:.0f}", f"{ours['cpu']:.1f}",
                  f"{ours['memory']:.0f}", f"{ours['cpu'] / list_cpu:.2f}", f"{ours['cpu'] / peer['cpu']:.2f}",
                  f"{ours['cpu'] / bare['cpu']:.2f}")
    return table.text()


def growth(options):
    """What a host of many profiles costs; start and memory before its first request."""
    table = Table("Profiles stored", "profiles", "start to listening ms", "idle KiB", "GetProfileList p50 µs",
                  "CPU µs/request", "CPU µs/profile")
    body = envelope("GetProfileList")
    for profiles in options.profiles:
        host = servers.OurHost([f"Profile {i}" for i in range(profiles)])
        start = statistics.median(host.seconds_to_listen() for _ in range(options.rounds))
        idle = servers.resident_kib(host)
        count = max(3, options.requests * 10 // profiles)
        figures = medians([checked(load(host, body, 1, count), "GetProfileList") for _ in range(3)])
        table.row(profiles, f"{start * 1000:.1f}", idle, f"{figures['p50']:.0f}", f"{figures['cpu']:.1f}",
                  f"{figures['cpu'] / profiles:.2f}")
        host.end()
    return table.text()


def tls(options):
    table = Table("GetProfileList over TLS, beside an empty answer of nginx with the same key; one client", "key", "TLS",
                  "server", "CPU µs/request", "p50 µs", "p99 µs", "CPU to nginx", "p50 to nginx")
    body = envelope("GetProfileList")
    with tempfile.TemporaryDirectory() as folder:
        for kind in secured.KEYS:
            key = secured.make_key(Path(folder), kind)
            every = nginx, host, asking = secured.Nginx(key), secured.SecuredHost(key), secured.SecuredHost(key, True)
            for version in "1.3", "1.2":
                again = "resumed-" + version
                rows = {"nginx, new": (nginx, version), "host, new": (host, version), "host, resumed": (host, again),
                        "host, new, remembered password": (asking, version, secured.PASSWORD),
                        "host, resumed, remembered password": (asking, again, secured.PASSWORD)}
                kept = {name: [] for name in rows}
                for _ in range(options.rounds):
                    for name, (server, *how) in rows.items():
                        round_ = checked(load(server, body, 1, max(16, options.requests // 5), 1, *how), name)
                        if ("resumed" in name) != (round_["resumed"] > 0):
                            sys.exit(f"{name}: {round_['resumed']} sessions resumed")
                        kept[name].append(round_)
                peer = medians(kept["nginx, new"])
                for name, figures in zip(kept, map(medians, kept.values())):
                    table.row(kind, version, name, f"{figures['cpu']:.0f}", f"{figures['p50']:.0f}", f"{figures['p99']:.0f}",
                              f"{figures['cpu'] / peer['cpu']:.2f}", f"{figures['p50'] / peer['p50']:.2f}")
            for server in every:
                server.end()
    return table.text()


def scrape(options):
    """What a scrape a second costs a busy host, which is less than one round differs from the next: so beside the
    throughput with and without it stands the processor time of a scrape, over that of a second."""
    host = secured.SecuredHost(more='<metrics address="127.0.0.1" port="0"/>')
    body, kept = envelope("GetProfileList"), {False: [], True: []}
    for _ in range(options.rounds):
        for scraped, rounds in kept.items():
            scraper = secured.Scraper(host) if scraped else None
            rounds.append(checked(load(host, body, 64, options.requests * 20), "GetProfileList"))
            if scraper:
                scraper.close()
    before = secured.processor_micros(host.process)
    for _ in range(options.rounds * 10):
        scraper.scrape()
    each = (secured.processor_micros(host.process) - before) / (options.rounds * 10)
    host.end()
    without, scraped = medians(kept[False]), medians(kept[True])
    busy = without["rate"] * without["cpu"]
    table = Table("A scrape a second at 64 clients", "requests/s without", "with", "ratio", "CPU µs of a scrape",
                  "CPU µs of a second", "ratio")
    table.row(f"{without['rate']:.0f}", f"{scraped['rate']:.0f}", f"{scraped['rate'] / without['rate']:.3f}",
              f"{each:.0f}", f"{busy:.0f}", f"{each / busy:.4f}")
    return table.text()


def library_size(_options):
    with tempfile.NamedTemporaryFile() as stripped:
        subprocess.run(["strip", "-o", stripped.name, os.environ["LIBRARY"]], check=True)
        size = os.path.getsize(stripped.name)
    return f"The API library, stripped: {size} bytes.\n"


def google(name):
    def run(options):
        command = [BUILD / f"benchmarks/{name}-benchmark", "--benchmark_min_time=0" if options.smoke
                   else "--benchmark_min_time=0.1"]
        if options.smoke:
            command.append("--benchmark_filter=-.*(/|:)1000+(/|$).*")
        output = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, check=True).stdout
        if "ERROR" in output or len(output.splitlines()) < 4:
            sys.exit(f"{name}-benchmark measured nothing:\n{output}")
        return f"### {name}-benchmark\n\n```\n{output.rstrip()}\n```\n"
    return run


PARTS = {"list": list_profiles, "durable": durable, "operations": all_operations, "growth": growth,
         "tls": tls, "scrape": scrape, "library": library_size, **{name: google(name) for name in GOOGLE}}


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("parts", nargs="*", choices=[[], *PARTS], metavar="PART", help=", ".join(PARTS))
    parser.add_argument("--smoke", action="store_true")
    options = parser.parse_args()
    options.rounds = 1 if options.smoke else 9
    options.requests = 16 if options.smoke else 1000
    options.profiles = (10,) if options.smoke else (10, 100, 1000, 10000, 100000)
    for name in options.parts or PARTS:
        print(PARTS[name](options), flush=True)


if __name__ == "__main__":
    main()
