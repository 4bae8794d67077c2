"""Packs and media that trelv.exe builds: opened again by the 7-Zip that is shipped, the same bytes as
built on Linux."""

import functools
import json
import shutil
import subprocess

import pytest

import medium
import windows
from conftest import MANAGER_FOLDER

TRELV = MANAGER_FOLDER + "\\trelv.exe"
PLACE = "C:\\Costruzione"
DESCRIPTION = PLACE + "\\sorgenti\\medium.txt"


@functools.cache
def trelv_of_linux():
    """The program for this system, made ready once."""
    done = subprocess.run([windows.PROJECT / "tools/trelv", "--path"], check=True, capture_output=True,
                          text=True)
    return done.stdout.strip()


class Workshop:
    """A workstation with the release and the demonstration's description with all that it names."""

    def __init__(self, station, build):
        self.prefix = station.prefix
        self.folder = station.prefix.disk / "Costruzione"
        shutil.rmtree(self.folder, ignore_errors=True)
        self.folder.mkdir()
        self.seven_zip = station.manager_folder / "7z.exe"
        medium.lay_out_sources(self.folder / "sorgenti", station, build)

    def run(self, *words):
        return self.prefix.console(TRELV, *words)

    def built(self, *words):
        """What stands at the output, which is the third word, with its document."""
        done = self.run(*words, "--json")
        assert done.returncode == 0, (done.stderr, done.stdout)
        document = json.loads(done.stdout.decode())
        assert document["result"]["written"] in (words[2], [words[2]])
        return self.folder / words[2].removeprefix(PLACE + "\\")

    def built_on_linux(self, name, *words):
        output = self.folder / "linux" / name
        subprocess.run([trelv_of_linux(), words[0], self.folder / "sorgenti/medium.txt",
                        output, *words[1:]], check=True, capture_output=True)
        return output

    def names(self):
        return sorted(path.name for path in self.folder.iterdir())


@pytest.fixture
def workshop(laid_out, build, seven_zip):
    return Workshop(laid_out, build)


def state(folder):
    return {path.relative_to(folder).as_posix():
            (path.read_bytes() if path.is_file() else None, int(path.stat().st_mtime))
            for path in folder.rglob("*")}


def test_a_medium_is_the_same_as_built_on_linux(workshop):
    here = workshop.built("medium", DESCRIPTION, PLACE + "\\supporto")
    assert state(here) == state(workshop.built_on_linux("supporto", "medium"))
    # Built once more in its own place.
    assert state(workshop.built("medium", DESCRIPTION, PLACE + "\\supporto")) == state(here)
    assert workshop.names() == ["linux", "sorgenti", "supporto"]


def test_an_image_is_the_same_as_built_on_linux(workshop):
    here = workshop.built("medium", DESCRIPTION, PLACE + "\\supporto.iso", "--iso")
    assert here.read_bytes() == workshop.built_on_linux("supporto.iso", "medium", "--iso").read_bytes()


def test_packs_are_the_same_as_built_on_linux_and_opened_by_the_shipped_seven_zip(workshop):
    for name in ("bilancio-09.94.00.00.zip", "nerio-03.20.30.00.gz"):
        here = workshop.built("pack", DESCRIPTION, PLACE + "\\" + name)
        assert here.read_bytes() == workshop.built_on_linux(name, "pack").read_bytes()
    opened = workshop.prefix.console(MANAGER_FOLDER + "\\7z.exe", "x", "-y", f"-o{PLACE}\\aperto",
                                     PLACE + "\\bilancio-09.94.00.00.zip")
    assert opened.returncode == 0
    sources = workshop.folder / "sorgenti/bilancio-09.94.00.00"
    tree = workshop.folder / "aperto/prg/com/setup/aggdovra"
    assert {name: facts[0] for name, facts in state(tree).items()} == {
        name: facts[0] for name, facts in state(sources).items()}


def test_without_seven_zip_or_with_one_that_fails_nothing_is_built(workshop):
    output = PLACE + "\\bilancio-09.94.00.00.zip"
    whole = workshop.built("pack", DESCRIPTION, output).read_bytes()
    workshop.seven_zip.unlink()
    for program, told in ((None, MANAGER_FOLDER + "\\7z.exe: manca"), (TRELV, output + ": 7-Zip non lo apre")):
        if program:
            shutil.copy(workshop.seven_zip.with_name("trelv.exe"), workshop.seven_zip)
        done = workshop.run("pack", DESCRIPTION, output, "--json")
        assert (done.returncode, done.stdout) == (2, b"")
        assert "trelv: " + told in done.stderr.decode()
        assert workshop.names() == ["bilancio-09.94.00.00.zip", "sorgenti"]
        assert (workshop.folder / "bilancio-09.94.00.00.zip").read_bytes() == whole
