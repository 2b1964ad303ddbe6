"""Players on the session bus of a desk, for figures about music."""

import json
import subprocess
from pathlib import Path

from .desk import BenchError


class FakePlayers:
    """The process of the tests whose players do what they are told; see fake_player.cpp."""

    def __init__(self, build, desk):
        path = build / "tests" / "fake_player"
        if not path.exists():
            raise BenchError("fake_player has not been built")
        self.process = subprocess.Popen([str(path)], env=desk.environment, stdin=subprocess.PIPE,
                                        stdout=subprocess.PIPE, text=True)

    def tell(self, **command):
        self.process.stdin.write(json.dumps(command) + "\n")
        self.process.stdin.flush()
        for line in self.process.stdout:
            if line.strip() == "done":
                return
        raise BenchError("the players are gone")

    def crowd(self, count, silent):
        """So many players that do not play; some of them never answer."""
        for number in range(count):
            metadata = {"mpris:trackid": f"/track/{number}", "xesam:title": f"Waiting {number}"}
            self.tell(player=f"p{number}", set={"PlaybackStatus": "Paused", "Metadata": metadata})
            if number < silent:
                for method in ("GetAll", "Get"):
                    self.tell(player=f"p{number}", on=method, do="hang")
            self.tell(player=f"p{number}", appear=f"crowd{number}")

    def __enter__(self):
        return self

    def __exit__(self, *details):
        self.process.stdin.close()
        try:
            self.process.wait(5)
        except subprocess.TimeoutExpired:
            self.process.kill()
            self.process.wait()


def make_covers(folder, count):
    """Pictures of 600 × 600 points that differ; as many as are not there yet. Returns their addresses."""
    folder = Path(folder)
    folder.mkdir(parents=True, exist_ok=True)
    paths = [folder / f"cover-{number}.png" for number in range(count)]
    for number, path in enumerate(paths):
        if not path.exists():
            subprocess.run(["convert", "-size", "600x600", "-seed", str(number), "plasma:fractal", "-strip", str(path)],
                           check=True)
    return [path.as_uri() for path in paths]
