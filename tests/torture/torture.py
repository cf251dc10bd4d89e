#!/usr/bin/env python3
"""torture.py [PART...]: mistreats the built programs with real processes, prints numbers, fails when one is missed.

COUNT in the environment makes a part shorter or longer.
"""

import os
import pathlib
import sys
import tempfile
import time

import deaths
import store_kills
import syscalls

PARTS = {"store-kills": store_kills.run,
         "syscalls": syscalls.run,
         "deaths": deaths.run}


def main():
    chosen = sys.argv[1:] or list(PARTS)
    if unknown := [part for part in chosen if part not in PARTS]:
        sys.exit(f"unknown part {unknown[0]}; choose {', '.join(PARTS)}")
    programs = pathlib.Path(__file__).resolve().parents[2] / "build"
    missed = 0
    for part in chosen:
        start = time.monotonic()
        with tempfile.TemporaryDirectory() as folder:
            findings = PARTS[part](programs, pathlib.Path(folder), int(os.environ.get("COUNT", 0)))
        for finding in findings[:20]:
            print(f"  MISSED: {finding}")
        print(f"{part}: {len(findings)} missed, {time.monotonic() - start:.0f} s", flush=True)
        missed += len(findings)
    sys.exit(1 if missed else 0)


if __name__ == "__main__":
    main()
