"""Figures about music: what players on the session bus cost, and how soon they are shown and obeyed."""

import contextlib
import subprocess
import time

from .desk import BenchError, Running, WIDTH
from .figures import Figures, MIDDLE
from .players import FakePlayers, make_covers
from .proc import Activity, memory, qt_processes, tree

# The text of the strip, and what the panel shows of a track in its first zone.
STRIP_TEXT = f"138x30+{MIDDLE - 72}+3"
PANEL_LEFT = WIDTH // 2 - 400
PANEL_TITLE = f"80x16+{PANEL_LEFT + 76}+25"
PLAY_BUTTON = f"{PANEL_LEFT + 117},70"

LONG_TITLE = "A title that is much too long for its place, so that it has to slide to and fro until its end has come"
CROWD, SILENT = 20, 3
STORMS = {"calm": (0, 0), "changes": (1000, 1), "tracks": (200, 23)}  # changes of track a second, covers
TRACKS = 10_000  # changes of cover in a full run of 60 seconds
PANEL_SECONDS = 20


class MusicFigures(Figures):
    """The figures of which a player is a part, on X11."""

    @staticmethod
    def on_x11(subjects, *names):
        return [s for s in subjects if s.desk == "x11" and s.name in names]

    def covers(self, count):
        # Without a cover of its own, the program would look for one elsewhere.
        return make_covers(self.options.build / "bench" / "covers", count)

    @contextlib.contextmanager
    def holding(self, desk, seconds, length, title):
        """A player that plays one track and says nothing more."""
        process = subprocess.Popen(
            [str(self.tools / "player_trace"), "hold", str(seconds), str(length), title, self.covers(1)[0]],
            env=desk.environment, stdin=subprocess.DEVNULL)
        try:
            yield
            if process.poll() is not None:
                raise BenchError("the player has ended too early")
        finally:
            process.kill()
            process.wait()

    # Music ---------------------------------------------------------------------------------------------------

    def music(self, subjects):
        """Memory one at a time, since they share pages; then the CPU of both in the same minute."""
        pair = self.on_x11(subjects, "floor", "velmora")
        with self.holding(self.desks["x11"], 3600, 3600, "A track"):
            values = {s: self.memory_alone(s) for s in pair}
            with self.all_running(pair) as running:
                time.sleep(min(10, self.options.settle))
                before = {s: Activity(running[s].checked_pid()) for s in pair}
                time.sleep(self.options.window)
                for subject in pair:
                    values[subject].update(Activity(running[subject].checked_pid()).since(before[subject]))
        self.each("music", pair, lambda s: self.store("music", s, values[s]))

    def memory_alone(self, subject):
        with Running(subject, self.desks[subject.desk]) as program:
            time.sleep(self.options.settle)
            sharers = qt_processes() - set(tree(program.process.pid))
            return {**memory(program.checked_pid()), "sharers": len(sharers)}

    # Panel ---------------------------------------------------------------------------------------------------

    def panel(self, subjects):
        self.each("panel", self.on_x11(subjects, "velmora"), self.panel_of)

    def panel_of(self, subject):
        desk = self.desks[subject.desk]
        with Running(subject, desk) as program:
            time.sleep(3)
            self.move(desk, "notch", 0.2)
            time.sleep(1)
            self.move(desk, "panel", 0.1)
            # The track has to last until the frames have been counted as well.
            with self.holding(desk, 60, PANEL_SECONDS + 10, LONG_TITLE):
                time.sleep(1.5)
                before = Activity(program.checked_pid())
                time.sleep(PANEL_SECONDS)
                values = Activity(program.checked_pid()).since(before)
                frames = self.tool("frame_trace", desk.display, PANEL_TITLE, 6, timeout=30)[0]
            program.checked_pid()
            self.move(desk, "desktop", 0.1)
        if frames["moving_s"] < 3:
            raise BenchError(f"the panel is not open, or its title does not slide: {frames}")
        self.store("panel", subject, {**values, **frames})

    # Player --------------------------------------------------------------------------------------------------

    def player(self, subjects):
        self.each("player", self.on_x11(subjects, "velmora"), self.player_of)

    def player_of(self, subject):
        desk = self.desks[subject.desk]
        values = {}
        with Running(subject, desk) as program:
            time.sleep(3)
            values["strip"] = self.trace(desk, "change", STRIP_TEXT)
            with FakePlayers(self.options.build, desk) as players:
                players.crowd(CROWD, SILENT)
                time.sleep(1)
                values["crowd"] = self.trace(desk, "change", STRIP_TEXT)
            values["press"] = self.trace(desk, "press", PLAY_BUTTON)
            program.checked_pid()
        for storm in STORMS:
            # Each has a program of its own: what one of them leaves behind is no part of the next.
            with Running(subject, desk) as program:
                values[storm] = self.storm_of_changes(desk, program, *STORMS[storm])
        self.store("player", subject, values)

    def trace(self, desk, mode, place):
        count = self.options.changes
        return self.tool("player_trace", mode, desk.display, place, count, self.covers(1)[0],
                         timeout=30 + 3 * count, environment=desk.environment)[0]

    def storm_of_changes(self, desk, program, rate, covers):
        seconds = self.options.window
        if covers > 1:
            seconds *= TRACKS / rate / 60
        with FakePlayers(self.options.build, desk) as players:
            players.tell(player="storm", set={"PlaybackStatus": "Playing", "Position": 0}, covers=self.covers(covers))
            players.tell(player="storm", storm=1, appear="storm")
            time.sleep(3)
            # What is filled once, such as the memory for covers, is full after this.
            players.tell(player="storm", rate=rate)
            time.sleep(self.options.window / 6)
            players.tell(player="storm", rate=0)
            time.sleep(3)
            held = memory(program.checked_pid())
            players.tell(player="storm", rate=rate)
            before = Activity(program.checked_pid())
            times = self.tool("loop_trace", program.checked_pid(), seconds,
                              timeout=60 + 2 * seconds, environment=desk.environment)[0]
            times["cpu"] = Activity(program.checked_pid()).since(before)["cpu"]
            players.tell(player="storm", rate=0)
            time.sleep(3)
            now = memory(program.checked_pid())
            times["growth"] = now["anonymous"] - held["anonymous"]
            times["pss_growth"] = now["pss"] - held["pss"]
        return {**times, "seconds": seconds, "rate": rate}
