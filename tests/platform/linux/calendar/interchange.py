#!/usr/bin/python3
"""Calendars and tasks that khal and todoman use as well: interchange.py STORE_CLIENT.

What they write shows here, item by item as they show it themselves; what is added, completed and removed here shows
there."""

import datetime
import json
import os
import pathlib
import subprocess
import sys
import tempfile
import zoneinfo

ZONE = "Europe/Berlin"
# Days around both changes of the clock, and others.
DAYS = [datetime.date(2026, 3, 23) + datetime.timedelta(days=n) for n in range(14)]
DAYS += [datetime.date(2026, 10, 21) + datetime.timedelta(days=n) for n in range(10)]

STARTS = [
    "DTSTART;TZID=Europe/Berlin:20260302T090000\nDTEND;TZID=Europe/Berlin:20260302T103000",
    "DTSTART;TZID=America/New_York:20251203T200000\nDURATION:PT2H",
    "DTSTART:20260105T223000Z\nDTEND:20260105T233000Z",
    "DTSTART;VALUE=DATE:20260103\nDTEND;VALUE=DATE:20260105",
]
RULES = [
    "FREQ=DAILY", "FREQ=DAILY;INTERVAL=3", "FREQ=DAILY;COUNT=90", "FREQ=WEEKLY", "FREQ=WEEKLY;INTERVAL=2;BYDAY=MO,WE,SU",
    "FREQ=WEEKLY;BYDAY=TU,TH;WKST=SU", "FREQ=WEEKLY;COUNT=12", "FREQ=MONTHLY", "FREQ=MONTHLY;BYMONTHDAY=-1,1,15",
    "FREQ=MONTHLY;BYDAY=-1SU", "FREQ=MONTHLY;BYDAY=4TH;INTERVAL=2", "FREQ=MONTHLY;BYDAY=MO,TU,WE,TH,FR;BYSETPOS=-2",
    "FREQ=YEARLY;BYMONTH=3,10;BYDAY=-1SU", "FREQ=YEARLY", "FREQ=DAILY;BYMONTH=10;BYDAY=SA,SU",
]
OTHERS = {
    "excepted": "DTSTART;TZID=Europe/Berlin:20260320T080000\nDURATION:PT1H\nRRULE:FREQ=DAILY;COUNT=10\n"
                "EXDATE;TZID=Europe/Berlin:20260325T080000,20260329T080000",
    "additional": "DTSTART;TZID=Europe/Berlin:20260320T080000\nDURATION:PT1H\nRRULE:FREQ=WEEKLY;COUNT=2\n"
                  "RDATE;TZID=Europe/Berlin:20260325T190000,20261022T190000",
    "until": "DTSTART;TZID=Europe/Berlin:20260301T073000\nDURATION:PT15M\nRRULE:FREQ=DAILY;UNTIL=20260330T053000Z",
    "until-date": "DTSTART;VALUE=DATE:20260301\nRRULE:FREQ=DAILY;INTERVAL=2;UNTIL=20260331",
    "over-night": "DTSTART;TZID=Europe/Berlin:20260328T220000\nDTEND;TZID=Europe/Berlin:20260329T060000",
    "long": "DTSTART;TZID=Europe/Berlin:20260326T120000\nDTEND;TZID=Europe/Berlin:20260401T120000",
    "holiday": "DTSTART;VALUE=DATE:20261023\nDTEND;VALUE=DATE:20261027",
    "floating": "DTSTART:20261025T120000\nDTEND:20261025T130000",
    "moved": "DTSTART;TZID=Europe/Berlin:20260322T100000\nDURATION:PT1H\nRRULE:FREQ=DAILY;COUNT=8\nEND:VEVENT\n"
             "BEGIN:VEVENT\nUID:moved\nDTSTAMP:20260101T000000Z\nSUMMARY:moved away\n"
             "RECURRENCE-ID;TZID=Europe/Berlin:20260324T100000\nDTSTART;TZID=Europe/Berlin:20260402T160000\nDURATION:PT30M",
    "tokyo": "DTSTART;TZID=Asia/Tokyo:20260324T023000\nDURATION:PT45M\nRRULE:FREQ=WEEKLY;BYDAY=TU",
    "folded": "DTSTART:20260324T100000Z\nDURATION:PT1H\nDESCRIPTION:" + "words\\, and " * 30,
}


def write_events(folder: pathlib.Path) -> int:
    bodies = {f"rule-{i}-{j}": f"{start}\nRRULE:{rule}" for i, start in enumerate(STARTS) for j, rule in enumerate(RULES)}
    bodies.update(OTHERS)
    for name, body in bodies.items():
        text = (f"BEGIN:VCALENDAR\nVERSION:2.0\nPRODID:-//test//EN\nBEGIN:VEVENT\nUID:{name}\nDTSTAMP:20260101T000000Z\n"
                f"SUMMARY:{name}\n{body}\nEND:VEVENT\nEND:VCALENDAR\n")
        lines = []
        for line in text.split("\n"):
            while len(line) > 70:
                lines.append(line[:70])
                line = " " + line[70:]
            lines.append(line)
        (folder / f"{name}.ics").write_text("\r\n".join(lines), newline="")
    return len(bodies)


class Peers:
    def __init__(self, client: str, home: pathlib.Path) -> None:
        self.client, self.home = client, home
        self.calendar, self.tasks = home / "c" / "events", home / "c" / "tasks"
        self.calendar.mkdir(parents=True)
        self.tasks.mkdir()
        formats = "\n".join(f"{name} = {form}" for name, form in [
            ("timeformat", "%H:%M"), ("dateformat", "%Y-%m-%d"), ("longdateformat", "%Y-%m-%d"),
            ("datetimeformat", "%Y-%m-%d %H:%M"), ("longdatetimeformat", "%Y-%m-%d %H:%M")])
        (home / "khal.conf").write_text(
            f"[calendars]\n[[events]]\npath = {self.calendar}\n[locale]\n{formats}\nlocal_timezone = {ZONE}\n"
            f"default_timezone = {ZONE}\n[default]\ndefault_calendar = events\n[sqlite]\npath = {home}/khal.db\n")
        (home / "todoman.py").write_text(
            f'path = "{home}/c/*"\ndate_format = "%Y-%m-%d"\ntime_format = "%H:%M"\ndefault_list = "tasks"\n'
            f'cache_path = "{home}/todo.sqlite3"\nhumanize = False\n')
        self.environment = dict(os.environ, TZ=ZONE, HOME=str(home), LANG="C.UTF-8", XDG_CACHE_HOME=str(home / "cache"),
                                XDG_DATA_HOME=str(home / "own"))

    def run(self, *command: str) -> str:
        return subprocess.run(command, env=self.environment, check=True, stdout=subprocess.PIPE, text=True).stdout

    def khal(self, *command: str) -> str:
        return self.run("/usr/bin/khal", "-c", str(self.home / "khal.conf"), *command)

    def todo(self, *command: str) -> str:
        return self.run("/usr/bin/todoman", "--config", str(self.home / "todoman.py"), *command)

    def own(self, *command: str) -> str:
        return self.run(self.client, str(self.home / "c"), *command)

    def events_of_khal(self, day: datetime.date) -> set[str]:
        form = "{uid}|{start-long-full}|{end-long-full}|{title}"
        lines = self.khal("list", "--notstarted", "--day-format", "", "--format", form, str(day), "1d").splitlines()
        return {line for line in lines if line.count("|") == 3 and line.split("|")[1].startswith(str(day))}

    def events_of_ours(self, day: datetime.date) -> set[str]:
        found = set()
        for line in self.own("list", f"{day}T00:00:00", f"{day + datetime.timedelta(days=1)}T00:00:00").splitlines():
            uid, start, end, title, is_all_day = line.split("|")
            if start[:10] == str(day):
                if is_all_day:  # khal tells the last day
                    last = datetime.datetime.fromisoformat(end) - datetime.timedelta(minutes=1)
                    end = f"{last:%Y-%m-%d} 00:00"
                found.add(f"{uid}|{start}|{end}|{title}")
        return found

    def open_of_todoman(self) -> dict[str, str]:
        """Titles and dues to identifiers."""
        found = {}
        for task in json.loads(self.todo("--porcelain", "list")):
            due = datetime.datetime.fromtimestamp(task["due"], zoneinfo.ZoneInfo(ZONE)) if task["due"] else None
            found[f"{task['summary']} {due:%Y-%m-%d %H:%M}" if due else task["summary"]] = str(task["id"])
        return found

    def open_of_ours(self) -> dict[str, str]:
        found = {}
        for line in self.own("open").splitlines():
            uid, due, title = line.split("|", 2)
            found[f"{title} {due}" if due else title] = uid
        return found


def same(what: object, theirs: object, ours: object) -> int:
    if theirs == ours:
        return 0
    print(f"{what}\n  theirs: {theirs}\n  ours:   {ours}")
    if isinstance(theirs, set) and isinstance(ours, set):
        print(f"  only theirs: {sorted(theirs - ours)}\n  only ours:   {sorted(ours - theirs)}")
    return 1


def main() -> int:
    with tempfile.TemporaryDirectory() as home:
        peers = Peers(sys.argv[1], pathlib.Path(home))
        count = write_events(peers.calendar)
        peers.khal("new", "2026-03-24", "13:00", "14:00", "Written by khal :: with a description")
        failures = seen = 0
        for day in DAYS:
            theirs = peers.events_of_khal(day)
            seen += len(theirs)
            failures += same(day, theirs, peers.events_of_ours(day))

        for title in ["One", "Two; with, signs", "Three"]:
            peers.todo("new", "--list", "tasks", "--due", "2026-03-24 10:00", title)
        (peers.tasks / "weekly.ics").write_text(
            "BEGIN:VCALENDAR\nVERSION:2.0\nPRODID:x\nBEGIN:VTODO\nUID:weekly\nDTSTAMP:20260101T000000Z\nSUMMARY:Weekly\n"
            "DTSTART;TZID=Europe/Berlin:20260325T080000\nDUE;TZID=Europe/Berlin:20260325T090000\n"
            "RRULE:FREQ=WEEKLY;COUNT=9\nEND:VTODO\nEND:VCALENDAR\n")

        def agree(what: str, expected: set[str]) -> int:
            return same(f"{what}, todoman", set(peers.open_of_todoman()), expected) + same(what, set(peers.open_of_ours()), expected)

        theirs = {"One 2026-03-24 10:00", "Two; with, signs 2026-03-24 10:00", "Three 2026-03-24 10:00"}
        weekly = "Weekly 2026-03-25 09:00"
        failures += agree("their tasks", theirs | {weekly})
        ours = "Ours; with, signs \\ and ünïcode"
        peers.own("add", ours)
        peers.own("add", "Ours too")
        failures += agree("tasks of both", theirs | {weekly, ours, "Ours too"})
        for title in ["One 2026-03-24 10:00", weekly]:
            peers.own("complete", peers.open_of_ours()[title])
        peers.own("remove", peers.open_of_ours()["Ours too"])
        theirs.remove("One 2026-03-24 10:00")
        failures += agree("after our changes", theirs | {"Weekly 2026-04-01 09:00", ours})
        identifiers = peers.open_of_todoman()
        peers.todo("done", identifiers["Weekly 2026-04-01 09:00"], identifiers[ours])
        peers.todo("delete", "--yes", identifiers["Three 2026-03-24 10:00"])
        failures += agree("after their changes", {"Two; with, signs 2026-03-24 10:00", "Weekly 2026-04-08 09:00"})
        print(f"{count} events, {seen} occurrences on {len(DAYS)} days, {failures} differences")
        return 1 if failures or seen < 100 else 0


if __name__ == "__main__":
    sys.exit(main())
