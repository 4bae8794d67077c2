"""Whole run logs as they have to be: tests/golden/NAME, with {TEMP}, {WORK} (the same without its trailing
backslash) and {PROGRAMFILES} for folders of the Windows in question. Dates are taken off before;
nothing else is."""

import pathlib

GOLDEN = pathlib.Path(__file__).parent.parent / "golden"


def golden(name):
    """The lines of a golden file as they stand."""
    return (GOLDEN / name).read_text(encoding="utf-8").splitlines()


def expected_log(name, facts):
    """The expected log, folders of this Windows put in."""
    return [line.replace("{TEMP}", facts["temporary"])
            .replace("{WORK}", facts["temporary"].rstrip("\\"))
            .replace("{PROGRAMFILES}", facts["program files"]) for line in golden(name)]


def assert_log(station, name):
    """Shows the first line that differs."""
    expected, found = expected_log(name, station.facts), station.texts()
    for number, (wanted, line) in enumerate(zip(expected, found), 1):
        assert line == wanted, f"line {number} of the log"
    assert len(found) == len(expected)
