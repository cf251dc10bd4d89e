"""Kills processes that write the settings store, at random moments."""

import random
import subprocess
import time

KILLS = 10_000
# The writers, and whether a repair runs beside them.
SETTINGS = ([1], False), ([1, 2], False), ([1, 2], True)
ROUNDS_OF_A_STORE = 50


def last_count(writer):
    lines = writer.stdout.read().split(b"\n")[:-1]
    return int(lines[-1]) if lines else 0


def one_round(programs, folder, numbers, has_repair, acknowledged, findings):
    """Starts writers, kills them after 1 to 40 ms, and compares the store with what they acknowledged."""
    tool = programs / "release/tests/torture/store_writer"
    writers = {number: subprocess.Popen([tool, folder, "write", str(number)], stdout=subprocess.PIPE,
                                        stderr=subprocess.PIPE) for number in numbers}
    repair = has_repair and subprocess.Popen([programs / "brightledger", "store", "repair", "--data-dir", folder],
                                             stdout=subprocess.PIPE, stderr=subprocess.PIPE)
    time.sleep(random.uniform(0.001, 0.040))
    for writer in writers.values():
        writer.kill()
    writes = 0
    for number, writer in writers.items():
        count = last_count(writer)
        if complaint := writer.stderr.read():
            findings.append(f"a writer failed: {complaint.decode()}")
        writer.communicate()
        writes += max(0, count - acknowledged[number])
        acknowledged[number] = max(count, acknowledged[number])
    if repair:
        said, complaint = repair.communicate(timeout=30)
        if b"in order" not in said and b"in use" not in complaint and said + complaint:
            findings.append(f"repair: {said + complaint}")
    check = subprocess.run([tool, folder, "check"], capture_output=True, timeout=30)
    if check.returncode != 0:
        findings.append(f"{'torn' if b'torn' in check.stderr else 'unusable'}: {check.stderr.decode()}")
        return writes
    for number, stored in enumerate(check.stdout.split(), start=1):
        # The write after the last acknowledged one may have been kept.
        if not acknowledged[number] <= int(stored) <= acknowledged[number] + 1:
            findings.append(f"writer {number}: {acknowledged[number]} acknowledged, {int(stored)} stored")
        acknowledged[number] = int(stored)
    return writes


def run(programs, folder, count):
    findings, kills, writes, stores = [], 0, 0, 0
    while kills < (count or KILLS):
        numbers, has_repair = SETTINGS[stores % len(SETTINGS)]
        stores += 1
        store, acknowledged = folder / str(stores), {1: 0, 2: 0}
        for _ in range(ROUNDS_OF_A_STORE):
            writes += one_round(programs, store, numbers, has_repair, acknowledged, findings)
            kills += len(numbers)
            if kills >= (count or KILLS):
                break
        findings += [f"{file.name} was set aside" for file in store.glob("*.damaged-*")]
    torn = sum(finding.startswith("torn") for finding in findings)
    lost = sum("acknowledged" in finding for finding in findings)
    print(f"  {kills} kills in {stores} stores, {writes} acknowledged writes: {torn} torn themes, {lost} lost writes")
    if writes < kills:
        findings.append("the writers were killed before they wrote")
    return findings
