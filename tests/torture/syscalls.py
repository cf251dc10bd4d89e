"""Lets the k-th system call of a kind fail in commands that write the settings store, for every k."""

import plistlib
import resource
import shutil
import subprocess

FAILURES = {"pwrite64": "ENOSPC EIO", "write": "ENOSPC", "fsync": "EIO", "fdatasync": "EIO ENOSPC", "openat": "EMFILE",
            "ftruncate": "ENOSPC", "rename": "EIO", "unlink": "EIO", "close": "EIO", "fcntl": "ENOLCK",
            "mkdir": "ENOSPC", "pread64": "EIO", "mmap": "ENOMEM", "pwrite64,ftruncate,fdatasync": "ENOSPC"}
COMMANDS = {"create": "store set one string after", "set": "store set one string after", "remove": "store remove one",
            "import": "store import import.plist", "repair": "store repair",
            "theme": "call ThemeManager setCurrentSelectedThemeTypeWithType: 2"}


def run(programs, folder, count):
    findings, codes, log = [], [], folder / "log"
    (folder / "import.plist").write_bytes(plistlib.dumps({"one": "after", "two": "after", "three": 3}))

    def brightledger(words, store, around=(), **more):
        return subprocess.run([*around, programs / "brightledger", *words.split(), "--data-dir", store],
                              capture_output=True, cwd=folder, timeout=60, **more)

    def content(store):
        shutil.rmtree(folder / "copy", ignore_errors=True)
        read = brightledger("store export", shutil.copytree(store, folder / "copy"))
        return read.stdout if read.returncode == 0 else b"damaged"

    def disturb(command, states, what, **disturbance):
        store = folder / "store"
        shutil.rmtree(store, ignore_errors=True)
        shutil.copytree(folder / command, store)
        done = brightledger(COMMANDS[command], store, **disturbance)
        if "around" in disturbance and "(INJECTED)" not in log.read_text():
            return False
        state, code, lines = content(store), done.returncode, done.stderr.count(b"\n")
        codes.append(code)
        # Without its file there is no time zone, hence no day and night for a theme.
        is_fatal = code == -6 and done.stderr.startswith(b"fatal error: no 07:00") and state == states[0]
        if lines != (code != 0) or not (is_fatal or code in (0, 1) and state in states[code == 0:]):
            known = "old" if state == states[0] else "new" if state == states[1] else "neither old nor new"
            findings.append(f"{command}, {what}: exit code {code}, {known}: {done.stderr.decode()!r}")
        return True

    # While a program starts it loads its libraries; calls that wrong usage makes as well are left alone.
    subprocess.run(["strace", "-f", "-o", log, programs / "brightledger", "store"], capture_output=True)
    startup = {calls: log.read_text().count(f" {calls}(") for calls in FAILURES}
    for command, words in COMMANDS.items():
        (folder / command).mkdir()
        for key in ("one", "two") if command != "create" else ():
            brightledger(f"store set {key} string before", folder / command)
        if command == "repair":
            next((folder / command).glob("*.sqlite")).write_bytes(b"damage" * 2000)
        changed = shutil.copytree(folder / command, folder / f"{command}.changed")
        brightledger(words, changed)
        states = content(folder / command), content(changed)
        for calls, error in ((calls, error) for calls, errors in FAILURES.items() for error in errors.split()):
            for k in range(startup[calls] + 1, startup[calls] + (count or 9999)):
                inject = f"inject={calls}:error={error}:when={k}{'+' * (',' in calls)}"
                strace = ["strace", "-f", "--seccomp-bpf", "-o", log, "-e", f"trace={calls}", "-e", inject]
                if not disturb(command, states, inject, around=strace):
                    break
        for size in range(0, 64 << 10, 512):
            # The signal stays ignored, as Python has it, so that the call fails.
            disturb(command, states, f"files of {size} bytes", restore_signals=False,
                    preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (size, size)))
    print(f"  {len(codes)} disturbed runs of {len(COMMANDS)} commands: {codes.count(0)} done, {codes.count(1)} refused,"
          f" {codes.count(-6)} fatal; {len(findings)} in a wrong way")
    return findings if codes.count(1) > len(codes) // 4 else [*findings, "the failing calls disturbed nothing"]
