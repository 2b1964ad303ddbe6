"""Figures about files that are dragged over the desktop, on X11."""

import contextlib
import json
import tempfile
import time
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

from .desk import Running
from .figures import MIDDLE
from .music import MusicFigures
from .proc import memory

BESIDE = f"8x28+{MIDDLE - 109}+2"  # what the panel covers with its first step
MANY = 50_000  # files, in a list of about 4 MB
MOTIONS = 1000  # a second


class DragFigures(MusicFigures):
    """How soon a drag opens the panel, what drags cost, and what they leave behind."""

    def drags(self, subjects):
        self.each("drags", self.on_x11(subjects, "velmora"), self.drags_of)

    def drags_of(self, subject):
        desk = self.desks[subject.desk]
        count = self.options.drags
        with Running(subject, desk) as program:
            time.sleep(3)
            values = {"few": self.begin(desk, count, 1), "many": self.begin(desk, count // 3, MANY)}
            values["loop"] = self.loop_while_dragging(desk, program, count // 3)
            values["hold"] = self.drag("hold", desk, program.checked_pid(), MOTIONS, self.options.window / 6 + 4)
            program.checked_pid()
        values["soak"] = self.soak_of_drags(subject, desk)
        self.store("drags", subject, values)

    def drag(self, mode, desk, *arguments):
        return self.tool("drag_source", mode, desk.display, *arguments, timeout=900)[0]

    def begin(self, desk, count, files):
        return self.drag("begin", desk, BESIDE, count, files)

    def loop_while_dragging(self, desk, program, count):
        """The main loop is asked apart from the first frames, which the questions would hold up."""
        with ThreadPoolExecutor(1) as beside:
            dragging = beside.submit(self.begin, desk, count, MANY)
            seconds = 1 + 1.5 * count
            times = self.tool("loop_trace", program.checked_pid(), seconds, timeout=60 + 2 * seconds,
                              environment=desk.environment)[0]
            return {**times, **dragging.result()}

    # Soak ----------------------------------------------------------------------------------------------------

    def soak_of_drags(self, subject, desk):
        count = self.options.drags_in_a_row
        with tempfile.TemporaryDirectory() as folder, copying_to(desk, Path(folder) / "copies") as copies:
            file = Path(folder) / "a file.txt"
            file.write_text("one\n")
            with Running(subject, desk) as program:
                time.sleep(3)
                # What is filled once is full after these.
                before = self.drag("drop", desk, BESIDE, max(30, count // 10), file.as_uri())
                time.sleep(3)
                held = memory(program.checked_pid())
                start = time.monotonic()
                values = self.drag("drop", desk, BESIDE, count, file.as_uri())
                values["seconds"] = time.monotonic() - start
                time.sleep(3)
                now = memory(program.checked_pid())
            values["stuck"] += before["stuck"]
            values["lost"] = before["drops"] + values["drops"] - len(list(copies.iterdir()))
        return {**values, "growth": now["anonymous"] - held["anonymous"], "pss_growth": now["pss"] - held["pss"]}


@contextlib.contextmanager
def copying_to(desk, folder):
    """For a while, the panel offers nothing but to copy into this folder."""
    folder.mkdir()
    settings = Path(desk.environment["XDG_CONFIG_HOME"]) / "velmora" / "velmora.conf"
    before = settings.read_text()
    places = {name: str(folder) for name in ("shelfFolderPath", "copyFolderPath", "moveFolderPath")}
    config = json.dumps({"enabledActions": ["copy"], **places, "imageConvertFormat": "PNG"})
    # Twice: the file quotes a text as JSON does.
    settings.write_text(f"{before.rstrip()}\ndrop_actions_config_v1={json.dumps(config)}\n")
    try:
        yield folder
    finally:
        settings.write_text(before)
