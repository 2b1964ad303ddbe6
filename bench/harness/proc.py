"""What /proc tells of a process and all that it has started."""

import os
import time
from collections import Counter
from pathlib import Path

TICK = 1 / os.sysconf("SC_CLK_TCK")


def stat_fields(pid):
    # The name in parentheses may hold anything, so count from its end.
    return Path(f"/proc/{pid}/stat").read_text(errors="replace").rpartition(")")[2].split()


def tree(root):
    """The process and its descendants."""
    children = {}
    for entry in os.listdir("/proc"):
        if entry.isdigit():
            try:
                children.setdefault(int(stat_fields(entry)[1]), []).append(int(entry))
            except (OSError, IndexError, ValueError):
                continue
    found, waiting = [], [root]
    while waiting:
        pid = waiting.pop()
        found.append(pid)
        waiting.extend(children.get(pid, []))
    return found


def qt_processes():
    """Whoever runs with Qt at this moment: what they share with a subject counts in part only."""
    found = set()
    for entry in os.listdir("/proc"):
        try:
            if entry.isdigit() and "libQt6Core" in Path(f"/proc/{entry}/maps").read_text(errors="replace"):
                found.add(int(entry))
        except OSError:
            continue
    return found


def memory(root):
    """Proportional, private and anonymous memory of the tree, in MB (10^6 bytes).

    The anonymous part is what the program itself has written; it does not depend on who else runs.
    """
    sums = Counter()
    for pid in tree(root):
        try:
            for line in Path(f"/proc/{pid}/smaps_rollup").read_text().splitlines()[1:]:
                name, size = line.split()[:2]
                sums[name.rstrip(":")] += int(size) * 1024
        except (OSError, ValueError):
            continue
    return {"pss": sums["Pss"] / 1e6, "private": (sums["Private_Clean"] + sums["Private_Dirty"]) / 1e6,
            "anonymous": sums["Anonymous"] / 1e6}


def process_clock(pid):
    """CPU time of all threads of a process, ended ones too, in seconds, to the nanosecond."""
    return time.clock_gettime((~pid << 3) | 2)  # CPUCLOCK_SCHED of that process


class Activity:
    """CPU time and voluntary context switches of a tree at one moment."""

    def __init__(self, root):
        self.moment = time.monotonic()
        self.cpu = {}
        self.switches = {}
        # Commands that came and went count through their parent, in ticks of the clock.
        fields = stat_fields(root)
        self.ended_children = (int(fields[13]) + int(fields[14])) * TICK
        for pid in tree(root):
            try:
                self.cpu[pid] = process_clock(pid)
                self.read_threads(pid)
            except OSError:
                continue

    def read_threads(self, pid):
        for thread in os.listdir(f"/proc/{pid}/task"):
            base = Path(f"/proc/{pid}/task/{thread}")
            try:
                name = (base / "comm").read_text().strip()
                for line in (base / "status").read_text().splitlines():
                    if line.startswith("voluntary_ctxt_switches:"):
                        self.switches[int(thread), name] = int(line.split()[1])
            except OSError:
                continue

    def since(self, earlier):
        """CPU in percent of one core, wake-ups a second, and the wake-ups of each thread."""
        span = self.moment - earlier.moment
        cpu = sum(used - earlier.cpu.get(pid, 0) for pid, used in self.cpu.items())
        cpu += self.ended_children - earlier.ended_children
        threads = Counter()
        for key, count in self.switches.items():
            threads[key[1]] += (count - earlier.switches.get(key, 0)) / span
        return {
            "cpu": 100 * cpu / span,
            "wakeups": sum(threads.values()),
            "threads": {name: round(rate, 2) for name, rate in threads.most_common() if rate >= 0.05},
        }
