"""Lets the k-th system call of a kind fail in commands that write the settings store, for every k."""

import plistlib
import resource
import shutil
import subprocess

FAILURES = {"pwrite64": "ENOSPC EIO", "write": "ENOSPC", "fsync": "EIO", "fdatasync": "EIO ENOSPC", "openat": "EMFILE",
            "ftruncate": "ENOSPC", "rename": "EIO", "unlink": "EIO", "close": "EIO", "fcntl": "ENOLCK",
            "mkdir": "ENOSPC", "pread64": "EIO", "mmap": "ENOMEM", "pwrite64,ftruncate,fdatasync": "ENOSPC"}
COMMANDS = {"create": "store set one string after", "set": "store set one string after", "remove": "store remove one",
            "import": "store import list", "repair": "store repair",
            "theme": "call ThemeManager setCurrentSelectedThemeTypeWithType: 2"}


def run(programs, folder, count):
    findings, codes, log, store, before = [], [], folder / "log", folder / "store", folder / "before"
    (folder / "list").write_bytes(plistlib.dumps({"one": "after", "two": "after", "three": 3}))

    def brightledger(words, around=(), **more):
        return subprocess.run([*around, programs / "brightledger", *words.split(), "--data-dir", store],
                              capture_output=True, cwd=folder, timeout=60, **more)

    def content():
        read = brightledger("store export")
        return read.stdout if read.returncode == 0 else b"damaged"

    def disturbed(what, **disturbance):
        shutil.rmtree(store)
        shutil.copytree(before, store)
        done = brightledger(words, **disturbance)
        if "around" in disturbance and "(INJECTED)" not in log.read_text():
            return False
        state, code, lines = content(), done.returncode, done.stderr.count(b"\n")
        codes.append(code)
        # Without its file there is no time zone, hence no day and night for a theme.
        is_fatal = code == -6 and done.stderr.startswith(b"fatal error: no 07:00") and state == old
        if lines != (code != 0) or not (is_fatal or code == 0 and state == new or code == 1 and state in (old, new)):
            known = "old" if state == old else "new" if state == new else "neither old nor new"
            findings.append(f"{name}, {what}: exit code {code}, {known}: {done.stderr.decode()!r}")
        return True

    # While a program starts it loads its libraries; calls that wrong usage makes as well are left alone.
    subprocess.run(["strace", "-f", "-o", log, programs / "brightledger", "store"], capture_output=True)
    startup = {calls: log.read_text().count(f" {calls}(") for calls in FAILURES}
    for name, words in COMMANDS.items():
        for path in (store, before):
            shutil.rmtree(path, ignore_errors=True)
        store.mkdir()
        for key in ("one", "two") if name != "create" else ():
            brightledger(f"store set {key} string before")
        if name == "repair":
            next(store.glob("*.sqlite")).write_bytes(b"damage" * 2000)
        shutil.copytree(store, before)
        old, _, new = content(), brightledger(words), content()
        for calls, error in ((calls, error) for calls, errors in FAILURES.items() for error in errors.split()):
            for k in range(startup[calls] + 1, startup[calls] + (count or 9999)):
                inject = f"inject={calls}:error={error}:when={k}{'+' * (',' in calls)}"
                strace = ["strace", "-f", "--seccomp-bpf", "-o", log, "-e", f"trace={calls}", "-e", inject]
                if not disturbed(inject, around=strace):
                    break
        for size in range(0, 64 << 10, 512):  # Python ignores the signal of a file that grows too large
            disturbed(f"files of {size} bytes", restore_signals=False,
                      preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (size, size)))
    print(f"  {len(codes)} disturbed runs of {len(COMMANDS)} commands: {codes.count(0)} done, {codes.count(1)} refused,"
          f" {codes.count(-6)} fatal; {len(findings)} in a wrong way")
    return findings if codes.count(1) > len(codes) // 4 else [*findings, "the failing calls disturbed nothing"]
