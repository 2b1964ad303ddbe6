#!/usr/bin/python3
"""Makes a collection of calendars: generate.py FOLDER [--items 20000] [--calendars 20] [--recurring 4000].

A tenth of the items are tasks; the recurring events go on for ten years around today. The same arguments make the same
files, apart from their dates."""

import argparse
import datetime
import pathlib
import random

ZONES = ["Europe/Berlin", "America/New_York", "Asia/Tokyo", "Europe/London"]
RULES = [
    "FREQ=DAILY", "FREQ=WEEKLY", "FREQ=WEEKLY;BYDAY=MO,WE,FR", "FREQ=WEEKLY;INTERVAL=2;BYDAY=TU",
    "FREQ=MONTHLY;BYDAY=2TH", "FREQ=MONTHLY;BYMONTHDAY=-1", "FREQ=YEARLY", "FREQ=MONTHLY;INTERVAL=3",
]
ZONE_TEXT = """BEGIN:VTIMEZONE
TZID:{zone}
BEGIN:STANDARD
DTSTART:19701025T030000
RRULE:FREQ=YEARLY;BYMONTH=10;BYDAY=-1SU
TZOFFSETFROM:+0200
TZOFFSETTO:+0100
TZNAME:CET
END:STANDARD
BEGIN:DAYLIGHT
DTSTART:19700329T020000
RRULE:FREQ=YEARLY;BYMONTH=3;BYDAY=-1SU
TZOFFSETFROM:+0100
TZOFFSETTO:+0200
TZNAME:CEST
END:DAYLIGHT
END:VTIMEZONE
"""


def event(chance: random.Random, number: int, today: datetime.date, recurring: bool) -> str:
    zone = chance.choice(ZONES)
    years = datetime.timedelta(days=chance.randrange(-5 * 365, 0 if recurring else 5 * 365))
    start = datetime.datetime.combine(today + years, datetime.time(chance.randrange(7, 20), chance.choice([0, 15, 30])))
    end = start + datetime.timedelta(minutes=chance.choice([30, 45, 60, 90]))
    lines = [f"UID:item-{number}@bench", "DTSTAMP:20240101T000000Z", f"SUMMARY:Meeting {number} about the usual things"]
    if chance.random() < 0.1:
        lines += [f"DTSTART;VALUE=DATE:{start:%Y%m%d}", f"DTEND;VALUE=DATE:{start + datetime.timedelta(days=1):%Y%m%d}"]
        form = "%Y%m%d"
    else:
        lines += [f"DTSTART;TZID={zone}:{start:%Y%m%dT%H%M%S}", f"DTEND;TZID={zone}:{end:%Y%m%dT%H%M%S}"]
        form = "%Y%m%dT%H%M%SZ"
    if recurring:
        until = start + datetime.timedelta(days=3652)
        lines.append(f"RRULE:{chance.choice(RULES)};UNTIL={until.strftime(form)}")
    lines += ["LOCATION:Room 1", "DESCRIPTION:Some lines of text that nobody reads\\, but that every program writes",
              "BEGIN:VALARM", "ACTION:DISPLAY", "TRIGGER:-PT15M", "DESCRIPTION:Soon", "END:VALARM"]
    return ZONE_TEXT.format(zone=zone) + "BEGIN:VEVENT\n" + "\n".join(lines) + "\nEND:VEVENT\n"


def task(chance: random.Random, number: int, today: datetime.date) -> str:
    due = today + datetime.timedelta(days=chance.randrange(-30, 30))
    done = "STATUS:COMPLETED\nCOMPLETED:20240102T000000Z\n" if chance.random() < 0.9 else "STATUS:NEEDS-ACTION\n"
    return (f"BEGIN:VTODO\nUID:item-{number}@bench\nDTSTAMP:20240101T000000Z\nSUMMARY:Task {number}\n"
            f"DUE;VALUE=DATE:{due:%Y%m%d}\n{done}END:VTODO\n")


def main() -> None:
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("folder", type=pathlib.Path)
    parser.add_argument("--items", type=int, default=20000)
    parser.add_argument("--calendars", type=int, default=20)
    parser.add_argument("--recurring", type=int, default=4000)
    options = parser.parse_args()
    options.folder.mkdir(parents=True, exist_ok=True)
    chance = random.Random(1)
    today = datetime.date.today()
    for number in range(options.items):
        calendar = options.folder / f"calendar-{number % options.calendars:02}"
        calendar.mkdir(parents=True, exist_ok=True)
        if number < options.calendars:
            (calendar / "color").write_text(f"#{chance.randrange(0x1000000):06X}\n")
            (calendar / "displayname").write_text(f"Calendar {number}\n")
        if chance.random() < 0.1 and number >= options.recurring:
            body = task(chance, number, today)
        else:
            body = event(chance, number, today, number < options.recurring)
        text = f"BEGIN:VCALENDAR\nVERSION:2.0\nPRODID:-//bench//EN\n{body}END:VCALENDAR\n"
        (calendar / f"item-{number}.ics").write_text(text.replace("\n", "\r\n"), newline="")


if __name__ == "__main__":
    main()
