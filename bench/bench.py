#!/usr/bin/env python3
"""Runs the program and a DOM-based XML editor (xmlstarlet) on the same maps, in turn, and prints the
ratios and the memory as a table.

    bench/bench.py BUILD_FOLDER [PAIRS]

BUILD_FOLDER was made with -DTQS_BENCH=ON and -DTQS_TESTS=ON: the measured program is the one whose
paths lie below the working directory, a new folder beside the build, so that both files are on one
disk. Ratios are the median of pairs run one after the other; times of single runs say little on a
machine that does other things. Notifications are absent but in their own row.
"""
import os
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

BUILD = os.path.abspath(sys.argv[1])
PAIRS = int(sys.argv[2]) if len(sys.argv) > 2 else 15
PROGRAM = os.path.join(BUILD, "tests", "tqsmgr-test")
MAP = "usr/opt/tqs/config/SystemMap.xml"
QUIET = ["-nonotify", "web", "-nonotify", "kfxd"]
EDIT = ["xmlstarlet", "ed", "-L", "-u", "/SystemMap/@security", "-v", "true", "peer.xml"]


def measure(argv):
    """Wall seconds, processor seconds and peak memory in MiB of one run."""
    start = time.perf_counter()
    pid = os.posix_spawnp(argv[0], argv, os.environ, file_actions=[
        (os.POSIX_SPAWN_OPEN, 1, "/dev/null", os.O_WRONLY, 0)])
    _, status, usage = os.wait4(pid, 0)
    wall = time.perf_counter() - start
    if status != 0:
        sys.exit(f"{' '.join(argv)}: status {status}")
    return wall, usage.ru_utime + usage.ru_stime, usage.ru_maxrss / 1024


def make_map(platforms, consoles, *old):
    with open("made.xml", "wb") as out:
        subprocess.run([os.path.join(BUILD, "bench", "make_map"), str(platforms), str(consoles),
                        *old], stdout=out, check=True)


def run(*words):
    return [PROGRAM, *words]


def compare(label, ours, other, column=0, fresh=True, pairs=PAIRS):
    """One row: the median ratio of ours to other, in turn, from fresh copies of the map."""
    rows = []
    for _ in range(pairs + 1):
        for target in (MAP, "peer.xml"):
            if fresh:
                shutil.copy("made.xml", target)
        first = measure(ours)
        if fresh:
            shutil.copy("made.xml", MAP)
        rows.append((first, measure(other)))
    rows = rows[1:]
    ratio = statistics.median(a[column] / b[column] for a, b in rows)
    memory = statistics.median(a[2] / b[2] for a, b in rows)
    mib = statistics.median(a[2] for a, _ in rows)
    print(f"| {label} | {ratio:.2f} | {memory:.2f} | {mib:.0f} MiB |", flush=True)


def growth(label, words, small, large, pairs=5):
    """One row: processor time on the large map against the small one."""
    cost = {}
    for size in (small, large):
        make_map(*size)
        times = []
        for _ in range(pairs):
            shutil.copy("made.xml", MAP)
            times.append(measure(run(*words))[1])
        cost[size] = statistics.median(times)
    print(f"| {label} | {cost[large] / cost[small]:.1f} | | |", flush=True)


def prepare():
    for folder in ("config", "events", "logs"):
        os.makedirs(f"usr/opt/tqs/{folder}")
    with open("usr/opt/tqs/config/models", "w") as out:
        out.writelines(f"Model {i}|M{i}\n" for i in range(1, 101))
    with open("usr/opt/tqs/config/ostypes", "w") as out:
        out.writelines(f"type{i}|Type {i}\n" for i in range(1, 98))
        out.write("Unknown|\nlinux|\nAIX|\n")


def main():
    folder = tempfile.mkdtemp(prefix="bench-", dir=BUILD)
    os.chdir(folder)
    prepare()
    security = run("-security", "true")
    add = run(*QUIET, "-add", "platform", "-name", "new", "-model", "M100", "-addr", "192.0.2.1",
              "-port", "7001")
    print("| | ratio of times | ratio of peak memory | peak memory |")
    print("|---|---|---|---|")
    make_map(6, 16)
    compare("100 consoles: -security true / editor", security, EDIT, pairs=4 * PAIRS)
    compare("100 consoles: -write kfxconf / editor", run("-write", "kfxconf"), EDIT,
            pairs=4 * PAIRS)
    make_map(1000, 0)
    compare("1,000 platforms: adding one / -view security", add, run("-view", "security"))
    make_map(3125, 16)
    compare("50,000 consoles: -security true / editor", security, EDIT)
    compare("50,000 consoles: adding a platform / -security true", add, security)
    compare("50,000 consoles: -view kfxconf / -view security", run("-view", "kfxconf"),
            run("-view", "security"), fresh=False)
    for label, words in (("-security true", ["-security", "true"]),
                         ("adding a platform", add[1:]),
                         ("-view kfxconf", ["-view", "kfxconf"]),
                         ("-write kfxconf", ["-write", "kfxconf"])):
        growth(f"{label}: 50,000 / 5,000 consoles, processor time", words, (312, 16), (3125, 16))
    growth("-U: 16,000 / 2,000 platforms of 4 consoles, processor time", ["-U"],
           (2000, 4, "old"), (16000, 4, "old"))
    os.chdir(BUILD)
    shutil.rmtree(folder)


if __name__ == "__main__":
    main()
