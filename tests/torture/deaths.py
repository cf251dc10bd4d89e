"""Lets the extension die in every way and at every moment, and looks at what the home screen keeps."""

import concurrent.futures
import datetime
import json
import os
import pathlib
import shutil
import subprocess
import time
import urllib.request

DEATHS, HOMES, LEDGER, MOST_GROWTH_KIB = 1000, 8, 2000, 256
# How a death reads in the history. A number is a signal that the extension sends itself.
KINDS = {"9": "by signal 9", "11": "by signal 11", "6": "by signal 6", "19": "answered no ping", "exit0": "exit code 0",
         "exit1": "exit code 1", "half": "exit code 0", "close": "closed its output", "garbage": "not a message",
         "grow": "memory passed 30 MB", "19 start": "did not start", "garbage answering": "cannot be used"}
ALL = [f"{kind} {phase}" for kind in list(KINDS)[:10] for phase in ("start", "greeted", "asked", "answering", "idle")]
LADDERS = "9 asked", "exit1 start", "garbage greeted", "close answering", "19 asked"


class Home:
    """A home screen with one widget, whose extension dies as it is told."""

    def __init__(self, programs, folder, findings):
        self.folder, self.findings, self.color = folder, findings, "#000000"
        shutil.copytree(programs / "resources", folder / "resources")
        shutil.copy(programs / "brightledger", folder)
        shutil.copy(pathlib.Path(__file__).with_name("dying_extension.py"), folder / "brightledger-extension")
        (folder / "home-screen.json").write_text('{"widgets":[{"kind":"NewsWidget","family":"systemLarge"}]}')
        (folder / "plan").write_text("none none #000000 #000000")
        # With one arena that is trimmed, the memory that is held is close to the memory in use.
        self.host = subprocess.Popen(
            [folder / "brightledger", "run", "--service", "configured", "--data-dir", folder, "--for", "1500"],
            text=True, stdout=subprocess.PIPE, env={"MALLOC_ARENA_MAX": "1", "MALLOC_TRIM_THRESHOLD_": "0", **os.environ})
        self.origin, _, key = self.host.stdout.readline().strip().partition("/?")
        self.opener = urllib.request.build_opener(urllib.request.HTTPCookieProcessor())
        self.get(f"?{key}")
        self.wait(lambda: any(entry["result"] == "shown" for entry in self.ledger()), "the first picture")
        self.picture = self.get("picture/1")

    def get(self, path, **action):
        body = json.dumps(action).encode() if action else None
        with self.opener.open(urllib.request.Request(f"{self.origin}/{path}", body, {"Origin": self.origin})) as answer:
            return answer.read()

    def ledger(self, after=0):
        return json.loads(self.get(f"ledger?after={after}"))

    def child(self):
        return json.loads(self.get("state"))["extension"]["process"]

    def check(self, is_right, what):
        self.findings += [] if is_right else [f"{self.folder.name}: {what}"]

    def wait(self, condition, what):
        end = time.monotonic() + 40
        while not (is_so := condition()) and time.monotonic() < end:
            time.sleep(0.01)
        self.check(is_so, f"waited for {what} in vain")

    def plan(self, death, color):
        (self.folder / "new").write_text(f"{death} {color} {self.color}")
        (self.folder / "new").rename(self.folder / "plan")
        if process := self.child():
            os.kill(process, 9)
            self.wait(lambda: self.child() != process, "the end of the extension")

    def die(self, death, number):
        """One death, and what must be as before after it. Before an idle death comes a new picture."""
        kind, is_idle, last = death.split()[0], "idle" in death, self.ledger()[-1]["number"]
        self.color = f"#0000{number:02X}" if is_idle else self.color
        self.plan(death, self.color if is_idle else "#FF0000")
        self.get("act", action="reload", id=1)
        if is_idle:
            self.wait(lambda: self.get("picture/1") != self.picture, f"a picture before {kind}")
            self.picture = self.get("picture/1")
        # Only the next question finds out that an idle one hangs or is too large.
        is_over = is_idle and kind not in ("19", "grow")
        if is_idle and not is_over:
            self.get("act", action="reload", id=1)
        self.wait(lambda: not self.child() if is_over else any(
            KINDS.get(death, KINDS[kind]) in entry["reason"] for entry in self.ledger(last)), death)
        self.check(self.get("picture/1") == self.picture, f"another picture after {death}")

    def pauses(self, rate=1, latest=1e9):
        """How long the timeline's requests waited after failures: 1, 2, 4 … 300 seconds."""
        pauses, failures, end = [], 0, 0.0
        for entry in (entry for entry in self.ledger() if entry["result"] not in ("held", "running")):
            start = datetime.datetime.fromisoformat(entry["decided"].replace("Z", "+00:00")).timestamp() / rate
            if entry["asker"] == "policy" and failures:
                pauses.append(start - end)
                late = pauses[-1] - min(2 ** (failures - 1), 300)
                self.check(-0.01 <= late <= latest, f"a pause of {pauses[-1]:.2f} s after {failures} failures")
            end, failures = start + entry["durationMs"] / 1000, (failures + 1) * (entry["result"] == "failed")
        return pauses

    def held(self):
        """Descriptors and children, and KiB of anonymous memory, without an extension."""
        proc = pathlib.Path(f"/proc/{self.host.pid}")
        children = sum(len(file.read_text().split()) for file in proc.glob("task/*/children"))
        kibibytes = (proc / "smaps_rollup").read_text().partition("Anonymous:")[2].split()[0]
        return len(os.listdir(proc / "fd")), children, int(kibibytes)

    def hammer(self, deaths):
        while len(self.ledger()) < LEDGER:  # so that it grows no more
            for _ in range(200):
                self.get("act", action="reload", id=1)
        self.die("9 asked", 0)
        before = self.held()
        for number, death in enumerate(deaths, start=1):
            self.die(death, number)
        self.plan("none none", self.color)
        self.wait(lambda: self.held()[:2] <= (before[0], 0), "no more descriptors and children than before")
        self.check(self.held()[2] <= before[2] + MOST_GROWTH_KIB, f"memory grew from {before} to {self.held()}")
        return self.pauses(), f"{before} to {self.held()}"

    def climb(self, number, rungs):
        rate = 3600 if number == 0 else 1
        self.get("act", action="mode", mode="phone" if number == 1 else "live")
        (self.folder / "ladder").touch()
        self.plan(LADDERS[number], "#FF0000")
        self.get("act", action="clock", rate=rate)
        time.sleep(2 ** rungs - 1)
        self.wait(lambda: f"for {min(2 ** rungs, 300)} s" in self.ledger()[-1]["reason"], "the last pause")
        self.check(self.get("picture/1") == self.picture, "another picture")
        return self.pauses(rate, latest=1), ""


def run(programs, folder, count):
    findings, deaths = [], (ALL * 1000)[:count or DEATHS]
    rungs = 3 if count else 9  # 1 to 256 s take 511 s; then comes the pause of 300 s
    # One after the other: no process may start while a program is being copied.
    homes = [Home(programs, folder / str(number), findings) for number in range(HOMES + len(LADDERS))]

    def live(number, home):
        result = home.hammer(deaths[number::HOMES]) if number < HOMES else home.climb(number - HOMES, rungs)
        home.host.terminate()
        home.check(home.host.wait(20) == 0, f"exit code {home.host.returncode}")
        return result

    with concurrent.futures.ThreadPoolExecutor(len(homes)) as threads:
        lives = list(threads.map(live, range(len(homes)), homes))
    pauses = [pause for pauses, _ in lives for pause in pauses]
    print(f"  {len(deaths)} deaths at a person's reloads, {(rungs + 1) * len(LADDERS)} at the timeline's; {len(pauses)} pauses"
          f" up to {max(pauses):.1f} s\n  descriptors, children, KiB:", *(held for _, held in lives if held), sep="\n  ")
    return findings
