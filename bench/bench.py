#!/usr/bin/env python3
"""Runs the program and a DOM-based XML editor (xmlstarlet) on the same maps, in turn, and prints the
ratios and the memory as a table.

    bench/bench.py BUILD_FOLDER [PAIRS]

BUILD_FOLDER was made with -DTQS_BENCH=ON and -DTQS_TESTS=ON: the measured program is the one whose
paths lie below the working directory, a new folder beside the build, so that both files are on one
disk. Ratios are the median of pairs run one after the other, of processor time, which a busy disk
and neighbours disturb least; times of single runs say little on a machine that does other things.
Notifications are switched off but where a row says otherwise. "bare pass" starts the parser library
as the program does and reads the map, doing nothing with it: the floor for any program with this
parser's handlers.
"""
import os
import resource
import shutil
import statistics
import subprocess
import sys
import tempfile

BUILD = os.path.abspath(sys.argv[1])
PAIRS = int(sys.argv[2]) if len(sys.argv) > 2 else 15
PROGRAM = os.path.join(BUILD, "tests", "tqsmgr-test")
APPLY = [os.path.join(BUILD, "tests", "tqs-test"), "apply", "--no-notify", "web", "--no-notify", "kfxd"]
BARE_PASS = [os.path.join(BUILD, "bench", "bare_pass"), "peer.xml"]
MAP = "usr/opt/tqs/config/SystemMap.xml"
QUIET = ["-nonotify", "web", "-nonotify", "kfxd"]
GROWTH = "in proportion: 10"
EDIT = ["xmlstarlet", "ed", "-L", "-u", "/SystemMap/@security", "-v", "true", "peer.xml"]


def measure(argv):
    """Processor seconds, peak memory in MiB, and the user's part of the seconds of one run."""
    pid = os.posix_spawnp(argv[0], argv, os.environ, file_actions=[
        (os.POSIX_SPAWN_OPEN, 1, "/dev/null", os.O_WRONLY, 0)])
    _, status, usage = os.wait4(pid, 0)
    if status != 0:
        sys.exit(f"{' '.join(argv)}: status {status}")
    return usage.ru_utime + usage.ru_stime, usage.ru_maxrss / 1024, usage.ru_utime


def make_map(platforms, consoles, *old, name="made.xml"):
    with open(name, "wb") as out:
        subprocess.run([os.path.join(BUILD, "bench", "make_map"), str(platforms), str(consoles),
                        *old], stdout=out, check=True)


def run(*words):
    return [PROGRAM, *words]


def from_fresh_copies(argv, made="made.xml"):
    """Measures a run on copies of a map that have reached the disk, which is then quiet."""
    for target in (MAP, "peer.xml"):
        shutil.copy(made, target)
    os.sync()
    return measure(argv)


def compare(label, meaning, ours, other, pairs=PAIRS):
    """One row: the median ratio of ours to other, in pairs of which each begins with the other one,
    since a virtual machine may have to be given memory that the second run finds. A process that
    the system starts counts the memory of the one that started it, so that what is no larger than
    this script is left out."""
    rows = []
    for i in range(pairs + 1):
        runs = {}
        for words in ((ours, other), (other, ours))[i % 2]:
            runs[tuple(words)] = from_fresh_copies(words)
        rows.append((runs[tuple(ours)], runs[tuple(other)]))
    rows = rows[1:]
    processor = statistics.median(a[0] / b[0] for a, b in rows)
    memory = statistics.median(a[1] / b[1] for a, b in rows)
    mib = statistics.median(a[1] for a, _ in rows)
    own = resource.getrusage(resource.RUSAGE_SELF).ru_maxrss / 1024
    sizes = f"{memory:.2f} | {mib:.0f} MiB" if mib > own + 1 else "|"
    print(f"| {label} | {processor:.2f} | {sizes} | {meaning} |", flush=True)


def growth(label, words, small, large, meaning, pairs=7):
    """One row: the processor time on the large map against that on the small one, in turn."""
    make_map(*small, name="small.xml")
    make_map(*large, name="large.xml")
    argv = run(*words)
    ratio = statistics.median(
        from_fresh_copies(argv, "large.xml")[0] / from_fresh_copies(argv, "small.xml")[0]
        for _ in range(pairs))
    print(f"| {label} | {ratio:.1f} | | | {meaning} |", flush=True)


def make_scripts(platforms):
    """Change scripts of so many platforms of five consoles each, and the maps before and after."""
    names = [f"p{i}" for i in range(platforms)]
    consoles = [(f"{name}c{j}", name, j) for name in names for j in range(5)]
    make_map(0, 0, name="none.xml")
    steps = {
        "add": [f"-add platform -name {name} -model M1 -addr 10.{i >> 16}.{i >> 8 & 255}.{i & 255} -port 7001"
                for i, name in enumerate(names)] +
               [f"-add system -name {name} -platform {platform} -port {2001 + j}"
                for name, platform, j in consoles],
        "update": [f"-update system -name {name} -port {3001 + j} -comment 'of {platform}'"
                   for name, platform, j in consoles],
        "remove": [f"-remove system -name {name}" for name, _, _ in consoles],
    }
    before = "none.xml"
    for step, lines in steps.items():
        with open(f"{step}-{platforms}", "w") as out:
            out.writelines(f"tqsmgr {line}\n" for line in lines)
        from_fresh_copies([*APPLY, f"{step}-{platforms}"], before)
        after = f"{step}-{platforms}.xml"
        shutil.copy(MAP, after)
        yield step, [*APPLY, f"{step}-{platforms}"], before, after
        before = "add-%d.xml" % platforms


def bulk(pairs=PAIRS):
    """Rows for scripts: against reading the map that they make, and against a tenth of them."""
    small = {step: (argv, before) for step, argv, before, _ in make_scripts(1000)}
    for step, argv, before, after in make_scripts(10000):
        view = run("-view", "kfxconf")
        after = "add-10000.xml" if step == "remove" else after
        rows = [(from_fresh_copies(argv, before), from_fresh_copies(view, after),
                 from_fresh_copies(*small[step])) for _ in range(pairs)]
        time, memory = (statistics.median(row[0][i] / row[1][i] for row in rows) for i in (0, 1))
        growth_of_time = statistics.median(row[0][0] / row[2][0] for row in rows)
        label = f"tqs apply, {step} {60000 if step == 'add' else 50000}"
        print(f"| {label} / -view kfxconf of that map | {time:.2f} | {memory:.2f} "
              f"| {rows[0][0][1]:.0f} MiB | many changes as one |")
        print(f"| {label} / a tenth of them | {growth_of_time:.1f} | | | {GROWTH} |", flush=True)
    make_map(6, 16)
    with open("thousand", "w") as out:
        out.writelines(f"tqsmgr -nonotify web -nonotify kfxd -update system -name console-{1 + i % 6}-{i % 16} -comment {i}\n"
                       for i in range(1000))
    os.environ["PATH"] = os.getcwd() + os.pathsep + os.environ["PATH"]
    os.symlink(PROGRAM, "tqsmgr")
    ratio = statistics.median(from_fresh_copies(["sh", "thousand"])[0] /
                              from_fresh_copies([*APPLY, "thousand"])[0] for _ in range(3))
    print(f"| 100 consoles: 1,000 commands by sh / by tqs apply | {ratio:.0f} | | | what a run costs |")


def sync(pairs=PAIRS):
    """Rows for inventories in CSV, on the map of 10,000 platforms that the scripts made: in user time,
    since what the system takes for memory depends on what ran before."""
    tqs, quiet, full = APPLY[0], APPLY[2:], "add-10000.xml"
    text = subprocess.run([tqs, "list", "--format", "csv", "--map", full], stdout=subprocess.PIPE, check=True).stdout
    lines = text.decode().split("\r\n")
    for i in range(6, len(lines), 6000):
        lines[i] = lines[i].removesuffix(",") + "changed,"
    with open("all.csv", "wb") as every, open("ten.csv", "w", newline="") as ten:
        every.write(text)
        ten.write("\r\n".join(lines))
    makes, changes, writes = [], [], []
    for _ in range(pairs):
        script = from_fresh_copies([*APPLY, "add-10000"], "none.xml")[2]
        makes.append(from_fresh_copies([tqs, "sync", *quiet, "all.csv"], "none.xml")[2] / script)
        diff = from_fresh_copies([tqs, "diff", MAP, "all.csv"], full)[2]
        write = from_fresh_copies(run("-security", "true"), full)[2] - from_fresh_copies(run("-view", "security"), full)[2]
        changes.append(from_fresh_copies([tqs, "sync", *quiet, "ten.csv"], full)[2] / (diff + write))
        writes.append(from_fresh_copies([tqs, "sync", *quiet, "all.csv"], full)[2] / diff)
    for label, ratios, meaning in (
            ("60,000 elements in CSV / tqs apply of their script", makes, "what finding the steps costs"),
            ("ten changes of 60,000 / tqs diff and a write", changes, "what a small change costs"),
            ("nothing to do in 60,000 / tqs diff", writes, "the second time")):
        print(f"| tqs sync, {label}, user time | {statistics.median(ratios):.2f} | | | {meaning} |", flush=True)


def prepare():
    for folder in ("config", "events", "logs"):
        os.makedirs(f"usr/opt/tqs/{folder}")
    with open("usr/opt/tqs/config/models", "w") as out:
        out.writelines(f"Model {i}|M{i}\n" for i in range(1, 101))
    with open("usr/opt/tqs/config/ostypes", "w") as out:
        out.writelines(f"type{i}|Type {i}\n" for i in range(1, 98))
        out.write("Unknown|\nlinux|\nAIX|\n")
    for command in ("usr/opt/tqs/bin/notifyweb", "usr/opt/tqs/bin/notifylrp", "etc/init.d/kfxd"):
        os.makedirs(os.path.dirname(command), exist_ok=True)
        with open(command, "w") as out:
            out.write("#!/bin/sh\nexit 0\n")
        os.chmod(command, 0o755)


def main():
    folder = tempfile.mkdtemp(prefix="bench-", dir=BUILD)
    os.chdir(folder)
    prepare()
    security = run("-security", "true")
    add = ["-add", "platform", "-name", "new", "-model", "M100", "-addr", "192.0.2.1", "-port", "7001"]
    print("| measured / compared with | processor time | peak memory | of the first | what it tells |")
    print("|---|---|---|---|---|")
    change, start = "a whole change", "what the program adds to the parser"
    floor = "the share of the parser"
    make_map(6, 16)
    compare("100 consoles: -security true / editor", change, security, EDIT, pairs=4 * PAIRS)
    compare("100 consoles: bare pass / editor", floor, BARE_PASS, EDIT, pairs=4 * PAIRS)
    compare("100 consoles: -security true / bare pass", start, security, BARE_PASS, pairs=4 * PAIRS)
    compare("100 consoles: adding a platform, three notifications / -security true",
            "what shells cost", run(*add), security, pairs=4 * PAIRS)
    make_map(1000, 0)
    compare("1,000 platforms: adding one, a notification / -view security", "what a change adds to reading",
            run(*QUIET, *add), run("-view", "security"), pairs=4 * PAIRS)
    make_map(3125, 16)
    compare("50,000 consoles: -security true / editor", change, security, EDIT)
    compare("50,000 consoles: bare pass / editor", floor, BARE_PASS, EDIT)
    compare("50,000 consoles: -security true / bare pass", start, security, BARE_PASS)
    compare("50,000 consoles: -view security / bare pass", "reading without a tree",
            run("-view", "security"), BARE_PASS)
    compare("50,000 consoles: adding a platform / -security true", "what checks and kfx.conf cost",
            run(*QUIET, *add), security)
    compare("50,000 consoles: -view kfxconf / -view security", "what the tree and its lines cost",
            run("-view", "kfxconf"), run("-view", "security"))
    for words in (["-security", "true"], ["-view", "kfxconf"], ["-write", "kfxconf"]):
        growth(f"{' '.join(words)}: 50,000 / 5,000 consoles", words, (312, 16), (3125, 16), GROWTH)
    growth("adding a platform: 50,000 / 5,000 consoles", [*QUIET, *add], (312, 16), (3125, 16), GROWTH)
    growth("-U: 16,000 / 2,000 platforms of 4 consoles", ["-U"], (2000, 4, "old"), (16000, 4, "old"),
           "in proportion: 8")
    bulk()
    sync()
    os.chdir(BUILD)
    shutil.rmtree(folder)


if __name__ == "__main__":
    main()
