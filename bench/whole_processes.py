#!/usr/bin/env python3
"""Measures whole processes: the extension's start, memory and refresh.

Starts the demo service and asks a new extension process for a timeline many times, with the command line's
--stats. Prints medians with the smallest and the largest value.
"""

import json
import pathlib
import plistlib
import statistics
import subprocess
import sys
import tempfile

ROUNDS = 15


def start_demo(programs):
    demo = subprocess.Popen([programs / "brightledger-demo", "--port", "0"], stdout=subprocess.PIPE, text=True)
    return demo, demo.stdout.readline().strip()


def write_information(folder, origin):
    entries = {"ENVIRONMENT": "prod", "AD_TEST_MODE": "FALSE"}
    for key in ("ProductionAPIHost", "StagingAPIHost", "ProductionWebHost", "StagingWebHost"):
        entries[key] = origin
    file = folder / "Info.plist"
    file.write_bytes(plistlib.dumps(entries))
    return file


def ask(programs, information, data, kind, family, command):
    result = subprocess.run(
        [programs / "brightledger", command, kind, "--family", family, "--stats",
         "--info-plist", information, "--data-dir", data] + (["-o", data / "card.png"] if command == "draw" else []),
        capture_output=True, text=True, check=True)
    return json.loads(result.stderr.splitlines()[-1])


def show(label, values, unit):
    middle = statistics.median(values)
    print(f"  {label:<28}{middle:>10.1f} {unit:<4} ({min(values):.1f} to {max(values):.1f})")


def measure(programs, information, data, kind, family):
    runs = [ask(programs, information, data, kind, family, "timeline")["extension"] for _ in range(ROUNDS)]
    print(f"{kind}, {family}: a timeline by a fresh extension process, {ROUNDS} times")
    show("resident at the peak", [run["peakRssKiB"] / 1024 for run in runs], "MiB")
    show("private", [run["privateKiB"] / 1024 for run in runs], "MiB")
    show("spawn to answer", [run["wallMs"] for run in runs], "ms")
    show("beyond the network", [run["wallMs"] - run["networkMs"] for run in runs], "ms")
    show("processor time", [run["userMs"] + run["systemMs"] for run in runs], "ms")
    drawn = [ask(programs, information, data, kind, family, "draw")["host"] for _ in range(ROUNDS)]
    show("layout, cold", [run["layoutMs"] for run in drawn], "ms")
    show("paint, cold", [run["paintMs"] for run in drawn], "ms")
    show("PNG, cold", [run["encodeMs"] for run in drawn], "ms")


def main(programs):
    demo, origin = start_demo(programs)
    try:
        with tempfile.TemporaryDirectory() as name:
            folder = pathlib.Path(name)
            information = write_information(folder, origin)
            data = folder / "data"
            data.mkdir()
            for kind, family in (("PerchWidget", "systemLarge"), ("PerchWidget", "systemMedium"),
                                 ("PerchWidget", "systemSmall"), ("NewsWidget", "systemLarge"),
                                 ("PortfolioWidget", "systemMedium")):
                measure(programs, information, data, kind, family)
    finally:
        demo.terminate()
        demo.wait()


if __name__ == "__main__":
    main(pathlib.Path(sys.argv[1]).resolve())
