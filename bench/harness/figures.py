"""The figures: each takes one round of a measurement and keeps what it saw."""

import contextlib
import json
import re
import subprocess
import sys
import time

from .desk import BenchError, Desk, HEIGHT, Running, Subject, WIDTH
from .proc import Activity, memory, qt_processes, tree

MIDDLE = WIDTH // 2
CENTRE = f"180x24+{MIDDLE - 90}+4"  # inside the notch, clear of its rounded corners
# Moves a second. X11 reports none to a program that does not want them; every Wayland compositor reports each.
MOVES = {"x11": 10_000, "wayland": 1_000}
PLACES = {
    "desktop": f"800x300+{MIDDLE - 400}+{HEIGHT // 2}",
    "notch": f"160x24+{MIDDLE - 80}+4",
    "panel": f"700x60+{MIDDLE - 350}+40",
}


class Figures:
    """Takes figures, one round at a time, and puts the outcome of each run into the results."""

    def __init__(self, options, desks, results):
        self.options = options
        self.desks = desks
        self.results = results
        self.tools = options.build / "bench"
        self.failed = set()

    def store(self, figure, subject, values):
        self.results.add(figure, subject, values)

    def each(self, figure, subjects, take):
        """One after the other; one that fails is reported and left out from then on."""
        for subject in subjects:
            if (figure, subject) in self.failed:
                continue
            try:
                take(subject)
            except (BenchError, OSError, subprocess.SubprocessError) as error:
                self.failed.add((figure, subject))
                self.results.fail(figure, subject, str(error))

    def tool(self, name, *arguments, timeout, environment=None):
        path = self.tools / name
        if not path.exists():
            raise BenchError(f"{name} has not been built")
        result = subprocess.run([str(path), *map(str, arguments)], capture_output=True, text=True,
                                timeout=timeout, env=environment, stdin=subprocess.DEVNULL)
        if result.returncode != 0:
            raise BenchError(f"{name}: {result.stderr.strip()[-1500:]}")
        return [json.loads(line) for line in result.stdout.splitlines() if line.startswith("{")]

    # Start ---------------------------------------------------------------------------------------------------

    def start_once(self, subject):
        desk = self.desks[subject.desk]
        # The eye looks at the outer X server; the program gets the desk's own environment.
        return self.tool("first_paint", desk.display, CENTRE, 15000, *subject.command, timeout=30,
                         environment=desk.environment)[0]

    def start_warm_up(self, subjects):
        self.each("start", subjects, self.start_once)

    def start(self, subjects):
        self.each("start", subjects, lambda s: self.store("start", s, self.start_once(s)))

    # Memory --------------------------------------------------------------------------------------------------

    def memory(self, subjects):
        # Two programs of one toolkit share its pages, which would halve the figure: one at a time.
        for group in [[s] for s in subjects if s.uses_qt] + [[s for s in subjects if not s.uses_qt]]:
            with self.all_running(group) as running:
                time.sleep(self.options.settle)
                sharers = qt_processes() - {pid for s in group for pid in tree(running[s].process.pid)}
                self.each("memory", group, lambda s: self.store(
                    "memory", s, {**memory(running[s].checked_pid()), "sharers": len(sharers)}))

    @contextlib.contextmanager
    def all_running(self, subjects):
        with contextlib.ExitStack() as stack:
            yield {s: stack.enter_context(Running(s, self.desks[s.desk])) for s in subjects}

    # Idle ----------------------------------------------------------------------------------------------------

    def idle(self, subjects, rounds):
        """All of them at once, so that they have the same minute; the rounds follow each other."""
        with self.all_running(subjects) as running:
            time.sleep(min(10, self.options.settle))
            for number in range(rounds):
                self.say(f"idle: run {number + 1} of {rounds}")
                before = {}
                self.each("idle", subjects,
                          lambda s: before.update({s: Activity(running[s].checked_pid())}))
                time.sleep(self.options.window)
                self.each("idle", subjects, lambda s: self.store(
                    "idle", s, Activity(running[s].checked_pid()).since(before[s])))

    # Hover ---------------------------------------------------------------------------------------------------

    def hover(self, subjects):
        # A nested compositor takes its own time, which a bare client tells.
        bare = [Subject("hover_floor", "wayland", [str(self.tools / "hover_floor")])] if "wayland" in self.desks else []
        self.each("hover", bare + [s for s in subjects if s.name == "velmora"], self.hover_of)

    def hover_of(self, subject):
        desk = self.desks[subject.desk]
        count = self.options.expansions
        with Running(subject, desk) as program:
            time.sleep(3)
            program.checked_pid()
            traces = self.tool("hover_trace", desk.display, count, 200, 800, timeout=30 + 5 * count)
            program.checked_pid()
            self.store("hover", subject, {"traces": traces})

    # Storm ---------------------------------------------------------------------------------------------------

    def storm(self, subjects):
        self.each("storm", [s for s in subjects if s.name in ("floor", "velmora", "polybar", "waybar")],
                  self.storm_of)

    def storm_of(self, subject):
        desk = self.desks[subject.desk]
        values = {}
        with Running(subject, desk) as program:
            time.sleep(2)
            for place in PLACES if subject.name == "velmora" else ("desktop", "notch"):
                # The way to the panel leads over the notch, which opens it.
                self.move(desk, "desktop" if place == "desktop" else "notch", 0.2)
                if place != "desktop":
                    time.sleep(0.7)
                for _ in range(3):  # a starved sender measures nothing
                    before = Activity(program.checked_pid())
                    sent = self.move(desk, place, self.options.storm_seconds)
                    values[place] = Activity(program.checked_pid()).since(before)["cpu"]
                    values[f"{place}_rate"] = sent["per_second"]
                    if sent["per_second"] > 0.95 * MOVES[subject.desk]:
                        break
                else:
                    raise BenchError(f"the machine is too busy: {sent['per_second']} moves a second over the {place}")
            self.move(desk, "desktop", 0.1)
        self.store("storm", subject, values)

    def move(self, desk, place, seconds):
        return self.tool("pointer_storm", desk.display, PLACES[place], MOVES[desk.kind], seconds, timeout=60)[0]

    # Soak ----------------------------------------------------------------------------------------------------

    def soak(self, subjects):
        """In-process: `apply`, hover cycles, plug cycles, and what they leave behind."""
        self.each("soak", [s for s in subjects if s.name == "velmora" and s.desk == "x11"], self.soak_of)

    def soak_of(self, subject):
        # A desktop of its own: the screens are divided and joined there.
        with contextlib.closing(Desk("x11", width=2 * WIDTH)) as desk:
            options = ["--quick"] if self.options.quick else []
            values = {}
            for report in self.tool("velmora_soak", *options, timeout=600, environment=desk.environment):
                values.update(report)
        self.store("soak", subject, values)

    @staticmethod
    def say(text):
        print(f"{time.strftime('%H:%M:%S')} {text}", file=sys.stderr, flush=True)


def machine_facts():
    with open("/proc/cpuinfo", encoding="utf-8") as file:
        info = file.read()
    model = re.search(r"model name\s*:\s*(.*)", info)
    cores = len(re.findall(r"^processor", info, re.M))
    with open("/proc/meminfo", encoding="utf-8") as file:
        total = int(re.search(r"MemTotal:\s*(\d+)", file.read())[1]) // 1024
    kernel = subprocess.run(["uname", "-sr"], capture_output=True, text=True, check=True).stdout.strip()
    return f"{model[1] if model else 'unknown CPU'}, {cores} cores, {total} MB, {kernel}"
