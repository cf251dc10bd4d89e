#!/usr/bin/env python3
"""Compares what two builds of the programs draw and answer.

usage: same_behaviour.py BEFORE AFTER [--except PATTERN]...

BEFORE and AFTER are folders with built programs. Both are asked the same questions, on stores of their own, at the
same instant, by a service that gives both the same answers: one demo service behind a recorder that keeps the first
answer to every request. Entries, view trees, display lists and the pictures of the gallery must be the same, apart
from identifiers. A difference whose title or line matches a PATTERN is counted apart. Exit code 1 on differences.
"""

import argparse
import atexit
import concurrent.futures
import difflib
import filecmp
import http.client
import http.server
import json
import pathlib
import plistlib
import re
import subprocess
import sys
import tempfile
import threading

NOW = "2026-11-20T06:30:00Z"
WIDGETS = [("PerchWidget", "systemSmall"), ("PerchWidget", "systemMedium"), ("PerchWidget", "systemLarge"),
           ("NewsWidget", "systemLarge"), ("PortfolioWidget", "systemSmall"), ("PortfolioWidget", "systemMedium")]
VERSIONS = ("18", "17", "16")
# Every tree is laid out for these screens' widgets too.
SIZES = ("141x141", "292x141", "364x382")
THEME = "call ThemeManager setCurrentSelectedThemeTypeWithType: {}"
# Each state: its name, what the service does, and the commands that make it.
STATES = [
    *[(f"theme {n}", "answers", [THEME.format(n)]) for n in range(4)],
    *[(f"{user}, theme {n}", "answers", [f"user {user}", THEME.format(n)]) for user in ("asha", "vikram", "meera")
      for n in range(2)],
    *[(f"asha, {fault}", fault, ["user asha", THEME.format(0)]) for fault in ("500", "garbage", "silence")],
    ("assets chosen", "answers", [THEME.format(1), "ASSETS"]),
    ("assets chosen, 500", "500", [THEME.format(1), "ASSETS"]),
]
UUID = re.compile(r"[0-9A-Fa-f]{8}(?:-[0-9A-Fa-f]{4}){3}-[0-9A-Fa-f]{12}")


class Recorder(http.server.ThreadingHTTPServer):
    """Hands requests on to the demo and keeps its first answers; plays a fault instead when one is set."""

    daemon_threads = True

    def __init__(self, demo):
        super().__init__(("127.0.0.1", 0), Handler)
        self.demo, self.fault, self.answers, self.lock = demo, "answers", {}, threading.Lock()
        self.origin = f"http://127.0.0.1:{self.server_port}"
        threading.Thread(target=self.serve_forever, daemon=True).start()

    def handle_error(self, *_):
        """Clients that hang up are nothing to report."""

    def answer(self, method, path, body):
        with self.lock:
            key = (method, path, body)
            if key not in self.answers:
                connection = http.client.HTTPConnection(self.demo.removeprefix("http://"))
                connection.request(method, path, body or None)
                reply = connection.getresponse()
                status, kind, content = reply.status, reply.headers["Content-Type"], reply.read()
                self.answers[key] = status, kind, content.replace(self.demo.encode(), self.origin.encode())
            return self.answers[key]


class Handler(http.server.BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"

    def handle_any(self):
        body = self.rfile.read(int(self.headers.get("Content-Length") or 0))
        fault = "answers" if self.path.startswith("/demo/") else self.server.fault
        if fault == "silence":
            self.close_connection = True
            return
        status, kind, content = self.server.answer(self.command.upper(), self.path, body)
        if fault == "500":
            status, content = 500, b"broken"
        if fault == "garbage":
            content = b"\xff\x00 not what was asked for"
        self.send_response(status)
        self.send_header("Content-Type", kind or "text/plain")
        self.send_header("Content-Length", str(len(content)))
        self.end_headers()
        self.wfile.write(content)

    do_GET = do_POST = do_get = do_post = handle_any

    def log_message(self, *_):
        pass


class Side:
    """One build with a folder of its own."""

    def __init__(self, programs, folder, origin):
        self.program, self.folder = programs / "brightledger", folder
        folder.mkdir()
        information = plistlib.loads((programs / "resources/Info.plist").read_bytes())
        for name in ("ProductionAPIHost", "StagingAPIHost", "ProductionWebHost", "StagingWebHost"):
            information[name] = origin
        (folder / "Info.plist").write_bytes(plistlib.dumps(information))

    def run(self, words, store, given=None):
        command = [self.program, *words, "--data-dir", self.folder / store, "--info-plist", self.folder / "Info.plist",
                   "--now", NOW, "--locale", "en_IN", "--time-zone", "Asia/Kolkata"]
        done = subprocess.run(command, input=given, capture_output=True, text=True, timeout=120)
        return f"{done.stdout}{done.stderr}exit code {done.returncode}\n"

    def prepare(self, steps, assets, store):
        for step in steps:
            words = ["store", "import", str(assets)] if step == "ASSETS" else step.split()
            answer = self.run(words, store)
            if not answer.endswith("exit code 0\n"):
                raise SystemExit(f"{self.program} {step}: {answer}")

    def answers(self, store):
        """Every answer of this state by its title."""
        found = {}
        for kind, family in WIDGETS:
            for version in VERSIONS:
                widget = [kind, "--family", family, "--os-version", version]
                title = f"{kind} {family} on {version}"
                found[f"entries, {title}"] = self.run(["timeline", *widget], store)
                tree = found[f"view tree, {title}"] = self.run(["view", *widget], store)
                for size in SIZES:
                    words = ["layout", "-", "--size", size, "--os-version", version]
                    found[f"display list, {size}, {title}"] = self.run(words, store, tree.removesuffix("exit code 0\n"))
                for request in ("timeline", "snapshot", "placeholder"):
                    words = ["draw", *widget, "--request", request]
                    found[f"display list, {request}, {title}"] = self.run(words, store)
        return found


def masked(text, side):
    return UUID.sub("UUID", text.replace(str(side.folder), "FOLDER"))


def chosen_assets(recorder, folder):
    """A property list with every fourth asset of the demo's catalogue."""
    keys = {"indices": "INDICES_WIDGET", "stock": "STOCK_WIDGET", "future": "FUTURE_WIDGET", "crypto": "CRYPTO_WIDGET"}
    # Without the mark the extension would put its own indices in place of the chosen ones.
    lists = {"firstTimeAppInstalledForWidget": True, **{key: [] for key in keys.values()}}
    for asset in json.loads(recorder.answer("GET", "/demo/catalogue", b"")[2])[::4]:
        lists[keys[asset["type"]]].append(asset)
    file = folder / "assets.plist"
    file.write_bytes(plistlib.dumps(lists))
    return file


def compare_pictures(before, after):
    """Titles of pictures that differ, and how many there are."""
    folders = []
    for side in (before, after):
        folders.append(side.folder / "gallery")
        said = side.run(["gallery", "-o", str(folders[-1])], "empty")
        if not said.endswith("exit code 0\n"):
            raise SystemExit(f"{side.program} gallery: {said}")
    names = {file.name for folder in folders for file in folder.glob("*.png")}
    _, different, missing = filecmp.cmpfiles(*folders, names, shallow=False)
    return [f"picture {name}" for name in sorted(different + missing)], len(names)


def main():
    parser = argparse.ArgumentParser(usage=__doc__.split("\n\n")[1].removeprefix("usage: "))
    parser.add_argument("before", type=pathlib.Path)
    parser.add_argument("after", type=pathlib.Path)
    parser.add_argument("--except", dest="expected", action="append", default=[])
    options = parser.parse_args()
    expected = re.compile("|".join(options.expected) or "(?!)")
    differences = excepted = 0
    counts = {"entries": 0, "view tree": 0, "display list": 0}

    demo = subprocess.Popen([options.before / "brightledger-demo"], stdout=subprocess.PIPE, text=True)
    atexit.register(demo.kill)
    with tempfile.TemporaryDirectory() as folder:
        folder = pathlib.Path(folder)
        recorder = Recorder(demo.stdout.readline().strip())
        before, after = (Side(programs.resolve(), folder / name, recorder.origin)
                         for name, programs in (("before", options.before), ("after", options.after)))
        assets = chosen_assets(recorder, folder)
        with concurrent.futures.ThreadPoolExecutor(2) as pool:
            for number, (state, recorder.fault, steps) in enumerate(STATES):
                store = f"store{number}"
                for side in (before, after):
                    side.prepare(steps, assets, store)
                old, new = pool.map(lambda side: side.answers(store), (before, after))
                for title in old:
                    counts[title.split(",")[0]] += 1
                    texts = [masked(text, side).splitlines() for text, side in ((old[title], before), (new[title], after))]
                    lines = [line for line in difflib.unified_diff(*texts, lineterm="", n=0)][2:]
                    if not lines:
                        continue
                    if all(expected.search(line) or line.startswith("@@") for line in lines) or expected.search(title):
                        excepted += 1
                        continue
                    differences += 1
                    print(f"{state}: {title}", *lines[:8], sep="\n    ")
        pictures, picture_count = compare_pictures(before, after)
        for title in pictures:
            excepted += bool(expected.search(title))
            differences += not expected.search(title)
            print(title)
    print(f"{picture_count} pictures, {counts['entries']} entries, {counts['view tree']} view trees and "
          f"{counts['display list']} display lists compared: {differences} differences, {excepted} expected ones")
    return 1 if differences else 0


if __name__ == "__main__":
    sys.exit(main())
