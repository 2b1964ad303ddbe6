"""Private desktops, and the programs that are measured on them."""

import json
import os
import select
import signal
import subprocess
import sys
import time
from dataclasses import dataclass, field
from pathlib import Path

BENCH = Path(__file__).resolve().parent.parent
DESKTOP = BENCH.parent / "tests" / "support" / "desktop"
PEERS = BENCH / "peers"
WIDTH, HEIGHT = 1600, 900
BACKGROUND = "#336699"  # neither black nor grey, so that every program differs from it


class BenchError(Exception):
    """A measurement could not be taken; the message says why."""


class Desk:
    """One private desktop: an X server with a window manager, or sway nested in an X server."""

    OPTIONS = {"x11": ["--x11"], "wayland": ["--sway"]}

    def __init__(self, kind, width=WIDTH):
        self.kind = kind
        # The command hands its environment out and stays, so that we can start programs in it.
        script = "import json,os,sys; print(json.dumps(dict(os.environ)), flush=True); sys.stdin.read()"
        self.process = subprocess.Popen(
            [str(DESKTOP), *self.OPTIONS[kind], "--size", f"{width}x{HEIGHT}", "--pipewire", "--system-bus",
             "--interactive", "--", sys.executable, "-c", script],
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, start_new_session=True)
        ready, _, _ = select.select([self.process.stdout], [], [], 60)
        line = self.process.stdout.readline() if ready else b""
        if not line:
            self.close()
            raise BenchError(f"the {kind} desktop could not be made")
        self.environment = json.loads(line)
        self.display = self.environment.get("VELMORA_HOST_DISPLAY") or self.environment["DISPLAY"]
        try:
            self.prepare()
        except (subprocess.SubprocessError, OSError) as error:
            self.close()
            raise BenchError(f"the {kind} desktop could not be prepared: {error}") from error

    def prepare(self):
        self.environment["BENCH_INTERFACE"] = network_interface()
        self.skip_first_launch()
        if self.kind == "x11":
            self.call("xsetroot", "-solid", BACKGROUND)
            return
        self.call("swaymsg", f"output * bg {BACKGROUND} solid_color")
        left = (WIDTH - 200) // 2
        # One rule each: a comma would end the rule when it comes over the socket.
        for action in ("floating enable", f"move absolute position {left} 0"):
            self.call("swaymsg", f'for_window [app_id="velmora_floor"] {action}')

    def skip_first_launch(self):
        """The questions of a first launch are no part of what is measured."""
        settings = Path(self.environment["XDG_CONFIG_HOME"]) / "velmora" / "velmora.conf"
        settings.parent.mkdir(parents=True, exist_ok=True)
        settings.write_text("[General]\nhasPromptedLoginItem=true\nhasRequestedPermissions=true\n")

    def call(self, *arguments):
        subprocess.run(arguments, env=self.environment, check=True, timeout=20,
                       stdout=subprocess.DEVNULL, stdin=subprocess.DEVNULL)

    def close(self):
        if self.process.poll() is None:
            self.process.terminate()
            try:
                self.process.wait(20)
            except subprocess.TimeoutExpired:
                self.process.kill()
                self.process.wait()


def network_interface():
    """The first interface that is up and is not the loopback; else the loopback."""
    for path in sorted(Path("/sys/class/net").iterdir()):
        try:
            if path.name != "lo" and (path / "operstate").read_text().strip() == "up":
                return path.name
        except OSError:
            continue
    return "lo"


@dataclass(frozen=True)
class Subject:
    """A program that is measured."""

    name: str
    desk: str
    command: list = field(hash=False)
    uses_qt: bool = False


def subjects(build, desks):
    floor = [str(build / "bench" / "velmora_floor")]
    velmora = [str(build / "velmora")]
    everything = [
        Subject("floor", "x11", floor, uses_qt=True),
        Subject("velmora", "x11", velmora, uses_qt=True),
        Subject("polybar", "x11", ["polybar", "--quiet", f"--config={PEERS / 'polybar.ini'}", "bench"]),
        Subject("tint2", "x11", ["tint2", "-c", str(PEERS / "tint2rc")]),
        Subject("floor", "wayland", floor, uses_qt=True),
        Subject("velmora", "wayland", velmora, uses_qt=True),
        Subject("waybar", "wayland",
                ["waybar", "-c", str(PEERS / "waybar.json"), "-s", str(PEERS / "waybar.css")]),
    ]
    return [s for s in everything if s.desk in desks and is_present(s)]


def is_present(subject):
    program = subject.command[0]
    if os.path.isabs(program):
        return os.access(program, os.X_OK)
    return any(os.access(Path(folder) / program, os.X_OK) for folder in os.environ["PATH"].split(":"))


class Running:
    """A subject while it runs. What it says goes to a log in the desk's folder."""

    def __init__(self, subject, desk):
        self.subject = subject
        self.log = Path(desk.environment["VELMORA_DESKTOP"]) / "log" / f"bench-{subject.name}.log"
        with open(self.log, "ab") as log:
            self.process = subprocess.Popen(subject.command, env=desk.environment, stdin=subprocess.DEVNULL,
                                            stdout=log, stderr=log, start_new_session=True)

    def checked_pid(self):
        """Its process id, if it still runs; figures of a dead process are worth nothing."""
        if self.process.poll() is not None:
            raise BenchError(f"{self.subject.name} ended with status {self.process.returncode}:\n"
                             + self.log.read_text(errors="replace")[-2000:])
        return self.process.pid

    def __enter__(self):
        return self

    def __exit__(self, *details):
        for number in (signal.SIGTERM, signal.SIGKILL):
            try:
                os.killpg(self.process.pid, number)
            except ProcessLookupError:
                pass
            try:
                self.process.wait(3)
                break
            except subprocess.TimeoutExpired:
                continue
        time.sleep(0.2)  # the windows go a moment after their process
