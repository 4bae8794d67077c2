"""Whole run logs as they have to be: tests/golden/NAME, with {TEMP}, {WORK} (the same without its trailing
backslash) and {PROGRAMFILES} for folders of the Windows in question. Dates are taken off before;
nothing else is."""

import pathlib
import re

import windows

GOLDEN = pathlib.Path(__file__).parent.parent / "golden"


def golden(name):
    """The lines of a golden file as they stand."""
    return (GOLDEN / name).read_text(encoding="utf-8").splitlines()


def not_built():
    """The units that docs/not-built.txt lists."""
    listed = (windows.PROJECT / "docs/not-built.txt").read_text().splitlines()
    return {line.split()[0] for line in listed if line and not line.startswith("#")}


def expected_log(name, facts):
    """The expected log: folders of this Windows put in, and without the lines of units that are
    not built yet, each of which begins with its unit in brackets. They are expected as soon as
    their unit leaves docs/not-built.txt."""
    missing = not_built()
    lines = []
    for line in golden(name):
        unit = re.match(r"\(([a-z]+/\w+)\) ", line)
        if unit and unit[1] in missing:
            continue
        line = line[unit.end():] if unit else line
        lines.append(line.replace("{TEMP}", facts["temporary"])
                     .replace("{WORK}", facts["temporary"].rstrip("\\"))
                     .replace("{PROGRAMFILES}", facts["program files"]))
    return lines


def assert_log(station, name):
    """Shows the first line that differs."""
    expected, found = expected_log(name, station.facts), station.texts()
    for number, (wanted, line) in enumerate(zip(expected, found), 1):
        assert line == wanted, f"line {number} of the log"
    assert len(found) == len(expected)
