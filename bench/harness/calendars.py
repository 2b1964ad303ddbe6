"""Calendars in folders: what the program's own library takes for them, beside khal."""

import os
import shutil
import subprocess
import sys
import time
from collections import namedtuple
from pathlib import Path

from .desk import BenchError

Reader = namedtuple("Reader", "name desk")
OURS, KHAL = Reader("velmora", "disk"), Reader("khal", "disk")
SIZES = {"none": 0, "some": 50, "many": 20_000}
KHAL_CONFIGURATION = """[calendars]
[[all]]
path = {folder}/many/*
type = discover
[sqlite]
path = {folder}/khal.db
[locale]
dateformat = %Y-%m-%d
"""


class Calendars:
    def __init__(self, options):
        self.tool = options.build / "bench" / "velmora_calendar"
        if not self.tool.exists():
            raise BenchError("velmora_calendar has not been built")
        self.folder = options.build / "bench" / "calendar-data"
        shutil.rmtree(self.folder, ignore_errors=True)
        generator = Path(__file__).resolve().parent.parent / "calendar" / "generate.py"
        for name, items in SIZES.items():
            subprocess.run([sys.executable, str(generator), str(self.folder / name), "--items", str(items),
                            "--recurring", str(items // 5)], check=True)

    def ours(self):
        """The values of each size, by "size_value"."""
        found = {}
        for size in SIZES:
            lines = subprocess.run([str(self.tool), str(self.folder / size)], check=True, capture_output=True, text=True,
                                   timeout=600, env=dict(os.environ, DBUS_SESSION_BUS_ADDRESS="")).stdout.splitlines()
            found.update({f"{size}_{name}": float(value) for name, value in (line.split() for line in lines)})
            shutil.rmtree(f"{self.folder / size}-own", ignore_errors=True)
        return found

    def khal(self):
        """The same question, the first time and when its database is complete. Takes minutes."""
        (self.folder / "khal.conf").write_text(KHAL_CONFIGURATION.format(folder=self.folder))
        found = {}
        for name in ("first_ms", "again_ms"):
            start = time.monotonic()
            subprocess.run(["/usr/bin/khal", "-c", str(self.folder / "khal.conf"), "list", "today", "1d"], check=True,
                           stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
            found[name] = (time.monotonic() - start) * 1000
        return found

    def close(self):
        shutil.rmtree(self.folder, ignore_errors=True)
