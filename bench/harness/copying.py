"""Copying files, beside cp -a: on one disk, in turns, each into a folder of its own."""

import json
import os
import random
import shutil
import subprocess
import time
from collections import namedtuple

from .desk import BenchError

Copier = namedtuple("Copier", "name desk")
COPIERS = [Copier("velmora", "disk"), Copier("cp", "disk")]
WORKS = {"tree": "a folder of 10,000 small files", "items": "10,000 small files, dropped one by one",
         "large": "one file of 2 GB"}
FILES = 10_000
LARGE = 2 << 30


class Copying:
    def __init__(self, options):
        self.tool = options.build / "bench" / "velmora_copy"
        if not self.tool.exists():
            raise BenchError("velmora_copy has not been built")
        self.folder = options.build / "bench" / "copy-data"
        self.large = LARGE >> 4 if options.quick else LARGE
        shutil.rmtree(self.folder, ignore_errors=True)
        self.make()

    def make(self):
        numbers = random.Random(1)
        for index in range(FILES):
            folder = self.folder / "tree" / f"{index // 100:02}"
            folder.mkdir(parents=True, exist_ok=True)
            (folder / f"file {index}.txt").write_bytes(numbers.randbytes(numbers.randint(0, 8192)))
        block = numbers.randbytes(1 << 20)
        with open(self.folder / "large", "wb") as file:
            for index in range(self.large >> 20):
                file.write(index.to_bytes(8, "little") + block[8:])

    def sources(self, work):
        if work == "items":
            return sorted(map(str, (self.folder / "tree").glob("*/*")))
        return [str(self.folder / work)]

    def round(self, number):
        """Both copiers twice, there and back, the first of them changing from round to round; returns pairs of
        copier and values."""
        first, second = COPIERS if number % 2 == 0 else COPIERS[::-1]
        runs = [(copier, {}) for copier in (first, second, second, first)]
        for work in WORKS:
            self.once(first, work)  # whoever comes first fetches what the others find in memory
            for copier, values in runs:
                values.update({f"{work}_{key}": value for key, value in self.once(copier, work).items()})
        return runs

    def once(self, copier, work):
        target = self.folder / "target"
        target.mkdir()
        try:
            os.sync()  # what one has left to the disk must not slow down the other
            command = [str(self.tool)] if copier.name == "velmora" else ["cp", "-a", "--"]
            start = time.monotonic()
            result = subprocess.run([*command, *self.sources(work), str(target)], capture_output=True, text=True,
                                    stdin=subprocess.DEVNULL, timeout=600)
            elapsed = (time.monotonic() - start) * 1000
            if result.returncode != 0:
                raise BenchError(f"{copier.name}: {result.stderr.strip()[-500:]}")
            # Velmora runs already when something is dropped: its own time counts, not that of its start.
            return json.loads(result.stdout) if copier.name == "velmora" else {"ms": elapsed}
        finally:
            shutil.rmtree(target)

    def close(self):
        shutil.rmtree(self.folder, ignore_errors=True)
