#!/usr/bin/env python3
"""Reads docs/zmiany.md, the list of changes in plain words, and prints it in the form that a package needs:

release_notes.py --version 0.9.1 debian     a Debian changelog
release_notes.py --version 0.9.1 metainfo   the <releases> of AppStream metainfo
release_notes.py --version 0.9.1 html       the newest release's changes as a list, for the update feed
release_notes.py --version 0.9.1 epoch      midnight of the newest release's day, in seconds

Fails unless the newest release is of that version."""

import argparse
import datetime
import re
import sys
import textwrap
from email.utils import format_datetime
from html import escape
from pathlib import Path
from typing import NamedTuple

CHANGES = Path(__file__).parents[1] / "docs/zmiany.md"
HEADING = re.compile(r"## (\d+(?:\.\d+)*) — (\d{4}-\d\d-\d\d)")


class Release(NamedTuple):
    version: str
    date: datetime.datetime
    changes: list


def read_releases(text):
    releases = []
    for number, line in enumerate(text.splitlines(), 1):
        if line.startswith("## "):
            if not (heading := HEADING.fullmatch(line)):
                raise ValueError(f"line {number}: expected '## version — year-month-day', found '{line}'")
            date = datetime.datetime.fromisoformat(heading[2]).replace(tzinfo=datetime.timezone.utc)
            releases.append(Release(heading[1], date, []))
        elif releases and line.startswith("- "):
            releases[-1].changes.append(line[2:].strip())
        elif releases and line.startswith("  ") and releases[-1].changes:
            releases[-1].changes[-1] += " " + line.strip()
        elif releases and line.strip():
            raise ValueError(f"line {number}: expected an item that begins with '- ', found '{line}'")
    if not releases or not all(release.changes for release in releases):
        raise ValueError("a release has no changes, or there is no release")
    return releases


def debian(releases, maintainer):
    return "\n".join(
        f"rotika ({release.version}) stable; urgency=medium\n\n" +
        "".join(textwrap.fill(change, 78, initial_indent="  * ", subsequent_indent="    ") + "\n"
                for change in release.changes) +
        f"\n -- {maintainer}  {format_datetime(release.date)}\n" for release in releases)


def html(release):
    return "<ul>" + "".join(f"<li>{escape(change)}</li>" for change in release.changes) + "</ul>"


def metainfo(releases):
    return "".join(f'<release version="{release.version}" date="{release.date:%Y-%m-%d}"><description>'
                   f"{html(release)}</description></release>\n" for release in releases)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--version", required=True)
    parser.add_argument("--maintainer", default="Rotika")
    parser.add_argument("form", choices=("debian", "metainfo", "html", "epoch"))
    options = parser.parse_args()
    try:
        releases = read_releases(CHANGES.read_text(encoding="utf-8"))
    except ValueError as error:
        sys.exit(f"{CHANGES}: {error}")
    newest = releases[0]
    if newest.version != options.version:
        sys.exit(f"{CHANGES} begins with {newest.version}, but the program's version is {options.version}.")
    forms = {"debian": lambda: debian(releases, options.maintainer), "metainfo": lambda: metainfo(releases),
             "html": lambda: html(newest) + "\n", "epoch": lambda: f"{newest.date.timestamp():.0f}\n"}
    sys.stdout.buffer.write(forms[options.form]().encode())


if __name__ == "__main__":
    main()
