"""Keeps what was measured, and makes one table of it."""

import json
import statistics
import sys
import time

from .copying import WORKS

COLUMNS = [("floor", "x11"), ("velmora", "x11"), ("polybar", "x11"), ("tint2", "x11"),
           ("floor", "wayland"), ("velmora", "wayland"), ("waybar", "wayland")]
DROPPED_MS = 25  # between two steps of the shape: more than a frame and a half
BLIND_MS = 12  # between two looks: a gap seen across such a hole says nothing about the program


class Results:
    """All runs of all figures, in a file that is written after each run."""

    def __init__(self, path):
        self.path = path
        self.data = json.loads(path.read_text()) if path.exists() else {}

    def clear(self, figure):
        self.data.pop(figure, None)

    def add(self, figure, subject, values):
        entry = self.data.setdefault(figure, {})
        entry["when"] = time.strftime("%Y-%m-%d %H:%M")
        with open("/proc/loadavg", encoding="utf-8") as file:
            load = float(file.read().split()[0])
        entry.setdefault("load", []).append(load)
        entry.setdefault("runs", {}).setdefault(f"{subject.name} {subject.desk}", []).append(values)
        self.save()

    def fail(self, figure, subject, message):
        print(f"{figure}: {subject.name} {subject.desk}: {message}", file=sys.stderr, flush=True)
        failures = self.data.setdefault(figure, {}).setdefault("failures", {})
        failures[f"{subject.name} {subject.desk}"] = message.strip().splitlines()[0] if message else "?"
        self.save()

    def save(self):
        self.path.parent.mkdir(parents=True, exist_ok=True)
        self.path.write_text(json.dumps(self.data, indent=1))

    def rounds(self, figure):
        runs = self.data.get(figure, {}).get("runs", {})
        return min((len(values) for values in runs.values()), default=0)

    def runs(self, figure, column):
        return self.data.get(figure, {}).get("runs", {}).get(" ".join(column), [])

    def values(self, figure, key, column):
        """The runs that have this value; a missing one (no text seen, say) is left out."""
        return [run[key] for run in self.runs(figure, column) if run.get(key) is not None]

    def median(self, figure, key, column):
        values = self.values(figure, key, column)
        return statistics.median(values) if values else None


def spread(values, digits):
    if not values:
        return "–"
    text = f"{statistics.median(values):.{digits}f}"
    if len(values) > 1:
        text += f" ({min(values):.{digits}f}–{max(values):.{digits}f})"
    return text


def verdict(bounds):
    """Of pairs (ours, limit): met if each of ours is below its limit. Nothing without both."""
    known = [(ours, limit) for ours, limit in bounds if ours is not None and limit is not None]
    if not known:
        return ""
    return " **met**" if all(ours <= limit for ours, limit in known) else " **missed**"


class Table:
    def __init__(self, results):
        self.results = results
        self.rows = []

    def row(self, label, figure, key, digits, goal):
        cells = [spread(self.results.values(figure, key, column), digits) for column in COLUMNS]
        if any(cell != "–" for cell in cells):
            self.rows.append([label, *cells, goal])

    def median(self, figure, key, name, desk):
        return self.results.median(figure, key, (name, desk))

    def both(self, figure, key, limit):
        """Our medians on both desks, each with its limit."""
        return [(self.median(figure, key, "velmora", desk), limit(desk)) for desk in ("x11", "wayland")]

    def scaled(self, figure, key, name, desk, factor=1.0, plus=0.0):
        value = self.median(figure, key, name, desk)
        return None if value is None else value * factor + plus

    def build(self):
        start = self.both("start", "frame_ms", lambda d: self.scaled("start", "frame_ms", "floor", d, 1.5))
        start.append((self.median("start", "frame_ms", "velmora", "wayland"),
                      self.median("start", "frame_ms", "waybar", "wayland")))
        self.row("exec to first frame, ms", "start", "frame_ms", 0,
                 "≤ 1.5 × floor, ahead of waybar" + verdict(start))
        self.row("exec to first text, ms", "start", "text_ms", 0, "(for comparison)")

        pss = self.both("memory", "pss", lambda d: self.scaled("memory", "pss", "floor", d, plus=10))
        self.row("proportional memory, MB", "memory", "pss", 1, "≤ floor + 10" + verdict(pss))
        self.row("private memory, MB", "memory", "private", 1, "(for comparison)")

        idle = self.both("idle", "cpu", lambda d: 0.2)
        idle += [(self.median("idle", "cpu", "velmora", desk), self.median("idle", "cpu", peer, desk))
                 for peer, desk in (("polybar", "x11"), ("waybar", "wayland"))]
        self.row("CPU idle, % of a core", "idle", "cpu", 3, "< 0.2, ahead of polybar and waybar" + verdict(idle))
        self.row("wake-ups a second, idle", "idle", "wakeups", 1, "stated")
        self.storm_rows()
        self.music_rows()
        return self.rows

    def music_rows(self):
        x11 = [(self.median("music", "cpu", "velmora", "x11"), 0.3)]
        self.row("CPU, collapsed, a track plays, %", "music", "cpu", 3, "< 0.3" + verdict(x11))
        pss = [(self.median("music", "pss", "velmora", "x11"), self.scaled("music", "pss", "floor", "x11", plus=14))]
        self.row("proportional memory, a track plays, MB", "music", "pss", 1, "≤ floor + 14" + verdict(pss))
        panel = [(self.median("panel", "cpu", "velmora", "x11"), 6)]
        self.row("CPU, panel open, title slides, %", "panel", "cpu", 2, "< 6" + verdict(panel))
        self.row("different pictures a second meanwhile", "panel", "per_second", 1, "60, as the display")

    def storm_rows(self):
        for place in ("desktop", "notch", "panel"):
            floor = "desktop" if place == "desktop" else "notch"
            ours = self.both("storm", place, lambda d: 2 if d == "x11" else self.scaled("storm", floor, "floor", d))
            self.row(f"CPU, 10,000 moves/s (Wayland: 1,000) over the {place}, %", "storm", place, 2,
                     "< 2 (Wayland: ≤ floor)" + verdict(ours))

    def text(self, facts):
        lines = [f"Machine: {facts}", ""]
        rows = self.build()
        if rows:
            head = ["figure: median (min–max)", *(f"{n}, {'X11' if d == 'x11' else 'Wayland'}" for n, d in COLUMNS),
                    "goal"]
            lines += ["| " + " | ".join(head) + " |", "|" + "---|" * len(head)]
            lines += ["| " + " | ".join(row) + " |" for row in rows]
        for part in (self.memory_lines, self.hover_lines, self.storm_lines, self.soak_lines, self.copy_lines,
                     self.calendar_lines, self.player_lines, self.drag_lines, self.thread_lines, self.provenance):
            lines += part()
        return "\n".join(lines)

    # What does not fit the table ------------------------------------------------------------------------------

    def hover_lines(self):
        lines = []
        for name, desk in (("velmora", "x11"), ("velmora", "wayland"), ("hover_floor", "wayland")):
            traces = [trace for run in self.results.runs("hover", (name, desk)) for trace in run["traces"]]
            good = [trace for trace in traces if "error" not in trace]
            if not traces:
                continue
            unclear = [t for t in good if t["longest_ms"] > DROPPED_MS and t["blind_ms"] > BLIND_MS]
            dropped = [t for t in good if t["longest_ms"] > DROPPED_MS and t["blind_ms"] <= BLIND_MS]
            first = [t["first_ms"] for t in good]
            smooth = len(traces) - len(dropped) - len(unclear) - (len(traces) - len(good))
            bare = "" if name == "velmora" else ", by a bare client that only draws a bar"
            lines += ["", f"Hover ({desk}), {len(traces)} expansions{bare}:",
                      f"- pointer enters to first growth, ms: {spread(first, 1)}; within 34 ms:"
                      f" {sum(value <= 34 for value in first)} of {len(traces)}"
                      + verdict([(statistics.median(first) if first else None, 34)]),
                      f"- to full width, ms: {spread([t['settled_ms'] for t in good], 0)};"
                      f" distinct steps: {spread([t['steps'] for t in good], 0)};"
                      f" longest gap, ms: {spread([t['longest_ms'] for t in good], 1)}",
                      f"- without a dropped frame: {smooth} of {len(traces)} (goal: 95 of 100); a gap over {DROPPED_MS} ms in"
                      f" {len(dropped)}; {len(unclear)} more where the observer itself was held up over {BLIND_MS} ms"]
            errors = [trace["error"] for trace in traces if "error" in trace]
            if errors:
                lines.append(f"- failed: {len(errors)}, first: {errors[0]}")
        return lines

    def storm_lines(self):
        rates = [value for column in COLUMNS for run in self.results.runs("storm", column)
                 for key, value in run.items() if key.endswith("_rate")]
        return ["", f"Moves a second that were really sent: {spread(rates, 0)}"] if rates else []

    def soak_lines(self):
        runs = self.results.runs("soak", ("velmora", "x11"))
        if not runs:
            return []
        soak = runs[-1]
        lines = ["", "Soak, in one process on X11:"]
        medians = {}
        for screens, times in soak.get("apply_ms_per_screen", {}).items():
            medians[screens] = statistics.median(times)
            lines.append(f"- `apply` with {screens} screens, ms a screen: {spread(times, 2)}"
                         + verdict([(medians[screens], 5)]))
        for name, label in (("apply", "`apply`"), ("hover", "hover cycles"), ("plug", "screens plugged and unplugged")):
            if name in soak:
                left = soak[name]
                objects = sum(left["objects"].values())
                held = [(left["megabytes"], 2), (objects, 0), (left["windows"], 0), (left["files"], 0)]
                lines.append(f"- {left['cycles']} {label}: left behind {left['megabytes']:+.2f} MB (of"
                             f" {left['megabytes_total']:.1f}), {objects:+d} objects, {left['windows']:+d} windows,"
                             f" {left['files']:+d} open files; {left['seconds']:.0f} s{verdict(held)}")
                if left["objects"]:
                    lines.append("  - objects by class: " + ", ".join(f"{n} {c:+d}" for n, c in left["objects"].items()))
        if "warnings" in soak:
            lines.append(f"- warnings: {soak['warnings']} {soak['first_warning']}" + verdict([(soak["warnings"], 0)]))
        return lines

    def copy_lines(self):
        if not self.results.runs("copy", ("velmora", "disk")):
            return []
        lines = ["", "Copying, beside `cp -a` on the same disk, ms:"]
        for work, label in WORKS.items():
            ours, theirs = (self.results.values("copy", f"{work}_ms", (name, "disk")) for name in ("velmora", "cp"))
            ratio = statistics.median(ours) / statistics.median(theirs)
            lines.append(f"- {label}: {spread(ours, 0)}, cp {spread(theirs, 0)}: {ratio:.2f} × cp (goal: 1.2)"
                         + verdict([(ratio, 1.2)]) + f"; the quickest runs {min(ours) / min(theirs):.2f} ×")
        held_up = [value for work in WORKS
                   for value in self.results.values("copy", f"{work}_held_up_ms", ("velmora", "disk"))]
        lines.append(f"- longest time in which the main loop did not turn meanwhile, ms: {spread(held_up, 1)}")
        return lines

    def calendar_lines(self):
        if not self.results.runs("calendar", ("velmora", "disk")):
            return []
        lines = ["", "Calendars in folders, 20,000 items in 20 of them, 4,000 recurring:"]
        for key, label, goal in (("many_first_answer_ms", "first answer after the start, ms", 1500),
                                 ("many_longest_stop_ms", "longest stop of the main loop meanwhile, ms", 16),
                                 ("many_unchanged_refresh_cpu_ms", "CPU of a refresh, nothing changed, ms", 5),
                                 ("many_changed_refresh_cpu_ms", "the same, one file changed, ms", 15),
                                 ("many_change_to_signal_ms", "change of a file to its notice, ms", 200),
                                 ("many_add_to_file_ms", "a new reminder to its file, ms", 50)):
            values = self.results.values("calendar", key, ("velmora", "disk"))
            lines.append(f"- {label}: {spread(values, 1)} (goal: {goal}){verdict([(statistics.median(values), goal)])}")
        for size, label, goal in (("many", "20,000", 12), ("some", "50", 1)):
            values = [(run[f"{size}_memory_written_kb"] - run["none_memory_written_kb"]) * 1024 / 1e6
                      for run in self.results.runs("calendar", ("velmora", "disk"))]
            lines.append(f"- memory written for {label} items, over none, MB: {spread(values, 1)} (goal: {goal})"
                         + verdict([(statistics.median(values), goal)]))
        for run in self.results.runs("calendar", ("khal", "disk")):
            lines.append(f"- khal list, for the same day: {run['first_ms']:.0f} ms, then {run['again_ms']:.0f} ms")
        return lines

    def player_lines(self):
        runs = self.results.runs("player", ("velmora", "x11"))
        lines = ["", f"Players (x11), {len(runs)} runs:"] if runs else []
        for key, label, limit in (("strip", "a change of track to the strip that shows it", 50),
                                  ("crowd", "the same among 20 more players, 3 of them without an answer", 50),
                                  ("press", "the button's release to the player's call, X server and bus included", 5)):
            times = [time for run in runs for time in run[key]["ms"]]
            missing = sum(run[key]["missing"] for run in runs)
            if times or missing:
                late = sum(time > limit for time in times) + missing
                lines.append(f"- {label}, ms: {spread(times, 1)}; over {limit}: {late} of {len(times) + missing}"
                             f" (goal: none){verdict([(late, 0)])}")
        for key, label in (("calm", "nothing changes"), ("changes", "1,000 changes a second"),
                           ("tracks", "200 tracks and covers a second")):
            if runs:
                lines += self.loop_lines(label, [run[key] for run in runs], key != "calm")
        return lines

    @staticmethod
    def loop_lines(label, runs, has_goal):
        """What the main loop was held up while the players did this, and what was left behind."""
        over = sum(run["over"] for run in runs)
        starved = sum(run["starved"] for run in runs)
        growth = statistics.median(run["growth"] for run in runs)
        return [f"- {label} for {runs[-1]['seconds']:.0f} s: longest answer of the main loop, ms:"
                f" {spread([run['loop_ms'] for run in runs], 1)} (99 of 100:"
                f" {spread([run['loop_p99_ms'] for run in runs], 1)}); over 16 ms: {over} of"
                f" {sum(run['asked'] for run in runs)}, {starved} of these for want of a processor (goal: none"
                f" else){verdict([(over - starved, 0)]) if has_goal else ''}",
                f"  - longest answer of the bus itself, ms: {spread([run['bus_ms'] for run in runs], 1)}; most that the"
                f" main thread worked during one question, ms: {spread([run['worked_ms'] for run in runs], 1)}",
                f"  - CPU, %: {spread([run['cpu'] for run in runs], 1)}; anonymous memory, MB: {growth:+.2f} (goal:"
                f" within 1){verdict([(abs(growth), 1)]) if has_goal else ''}, proportional"
                f" {statistics.median(run['pss_growth'] for run in runs):+.2f}"]

    def drag_lines(self):
        runs = self.results.runs("drags", ("velmora", "x11"))
        if not runs:
            return []
        run = runs[-1]
        lines = ["", "Drags of files (x11):"]
        for key, label, limit in (("few", "one file", 50), ("many", "50,000 files", 100)):
            times, missing = [time for time, _ in run[key]["ms"]], run[key]["missing"]
            unclear = sum(time - blind <= limit < time for time, blind in run[key]["ms"])
            late = sum(time > limit for time in times) + missing - unclear
            first = f", the first {times[0]:.1f}" if times and not missing else ""
            lines.append(f"- a drag begins to the panel's first step, {label}, ms: {spread(times, 1)}{first}; over {limit} or"
                         f" never: {late} of {len(times) + missing} (goal: none), {unclear} more that the observer may have"
                         f" been late to see{verdict([(late, 0)])}; not closed after it: {run[key]['stuck']}"
                         + verdict([(run[key]["stuck"], 0)]))
        loop, hold, soak = run["loop"], run["hold"], run["soak"]
        lines += [f"- longest answer of the main loop while 50,000 files are dragged, ms: {loop['loop_ms']:.1f} (99 of 100:"
                  f" {loop['loop_p99_ms']:.1f}; the bus itself: {loop['bus_ms']:.1f}; most that the main thread worked"
                  f" meanwhile: {loop['worked_ms']:.1f}; goal: 50){verdict([(loop['loop_ms'], 50), (loop['missing'], 0)])}",
                  f"- CPU, {hold['per_second']:.0f} moves a second with the button down, %: {hold['cpu']:.2f} (goal: 1)"
                  f"{verdict([(hold['cpu'], 1)])}; asked for the files meanwhile: {hold['asked']}"
                  f"{verdict([(hold['asked'], 0)])}",
                  f"- {soak['drags']} drags in a row, {soak['drops']} dropped: {soak['refused']} refused,"
                  f" {soak['unfinished']} unfinished, {soak['lost']} copies lost,"
                  f" not closed after {soak['stuck']}; {soak['seconds']:.0f} s"
                  + verdict([(abs(soak[key]), 0) for key in ("refused", "unfinished", "lost", "stuck")]),
                  f"  - anonymous memory, MB: {soak['growth']:+.2f} (goal: within 1){verdict([(abs(soak['growth']), 1)])},"
                  f" proportional {soak['pss_growth']:+.2f}"]
        return lines

    def memory_lines(self):
        disturbed = sum(run.get("sharers", 0) > 0 for figure in ("memory", "music") for column in COLUMNS
                        for run in self.results.runs(figure, column))
        if not disturbed:
            return []
        return ["", f"Memory: in {disturbed} samples another program with Qt was running on the machine; the proportional"
                    " figure of these is too small, and comparisons with the floor do not hold."]

    def thread_lines(self):
        lines = []
        for column in COLUMNS:
            runs = self.results.runs("idle", column)
            if runs:
                threads = ", ".join(f"{name} {rate}" for name, rate in runs[-1]["threads"].items())
                lines.append(f"- {' '.join(column)}: {threads or 'none'}")
        return ["", "Wake-ups a second by thread, last idle run:", *lines] if lines else []

    def provenance(self):
        lines = ["", "Runs:"]
        for figure, entry in self.results.data.items():
            load = entry.get("load", [])
            text = f"- {figure}: {self.results.rounds(figure)} runs, {entry.get('when', '?')}"
            if load:
                text += f", load average of the machine {spread(load, 1)}"
            lines.append(text)
            lines += [f"  - FAILED: {who}: {why}" for who, why in entry.get("failures", {}).items()]
        return lines
