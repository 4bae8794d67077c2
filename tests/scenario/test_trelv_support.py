"""trelv for whoever supports a customer: locks, verify, explain, with the real program beside real
starts of the manager."""

import json
import re
import shutil
import subprocess

import pytest

from conftest import INTEGRATED
import installation
import windows

ZB = installation.ZB
NEW = "09.94.00.00"
HOST = installation.HOST_FOLDER
LOCK = HOST + "\\prg\\tempterm\\agdv.lck"
TAKEN = "16/11/2026 01:02:03"
# Wine writes both dates alike.
OPENING = re.compile(r'NtCreateFile .*access=([0-9a-f]+) name=L?"([^"]*)".* sharing=([0-9a-f]+)')
# To write data, attributes or rights, to append, to delete, all of it.
CHANGES = 0x40000000 | 0x10000000 | 0x10000 | 0x40000 | 0x80000 | 0x2 | 0x4 | 0x10 | 0x100
SHARED_READ_AND_WRITE = 0x3


class Trelv:
    """The second program on a workstation."""

    def __init__(self, station):
        self.station = station
        folder = station.manager_folder
        folder.mkdir(parents=True, exist_ok=True)
        shutil.copy(station.prefix.build.release / "trelv.exe", folder)

    def run(self, *arguments, debug="-all"):
        """A finished process with what it wrote."""
        prefix = self.station.prefix
        return subprocess.run(
            [*prefix._as_a_user(), windows.PROJECT / "tools/wine",
             "C:\\Lumo\\Manager\\trelv.exe", *arguments],
            cwd=prefix.disk, env={**prefix.environment, "WINEDEBUG": debug}, timeout=120,
            stdin=subprocess.DEVNULL, capture_output=True, check=False)

    def result(self, *arguments, exit_code):
        done = self.run(*arguments, "--json")
        assert done.returncode == exit_code, done.stderr.decode("utf-8", "replace")
        document = json.loads(done.stdout.decode("utf-8"))
        assert list(document) == ["schema", "verb", "program", "findings", "result"]
        assert document["verb"] == arguments[0]
        return document["result"]

    def openings(self, *arguments):
        """(path, access, sharing) of every file of the host that the program opened."""
        done = self.run(*arguments, debug="+file")
        found = []
        for access, name, sharing in OPENING.findall(done.stderr.decode("utf-8", "replace")):
            path = name.replace("\\\\", "\\")
            if "S:\\Lumo" in path or installation.CLIENT_FOLDER in path:
                found.append((path, int(access, 16), int(sharing, 16)))
        return found


@pytest.fixture
def trelv(installed):
    return Trelv(installed)


def put_lock(station):
    installation.write_text(station.server_lock, TAKEN + "\n")


def all_files(station):
    """Content and date of every file of the share and of the workstation's own folder."""
    folders = (station.share, station.disk / "Lumo", station.log.parent)
    return {path: (path.read_bytes(), path.stat().st_mtime_ns)
            for folder in folders for path in folder.rglob("*") if path.is_file()}


def test_a_lock_is_told_with_its_age_its_owner_and_what_waits(installed, trelv):
    installed.offer(ZB, NEW)
    installed.write_catalogue(ZB)
    put_lock(installed)
    [lock] = trelv.result("locks", HOST, exit_code=1)["locks"]
    assert list(lock) == ["path", "side", "written", "age", "owner", "open", "waiting"]
    assert (lock["path"], lock["side"], lock["written"]) == (LOCK, "Server", TAKEN)
    assert lock["age"] > 0
    assert lock["owner"]
    assert lock["waiting"] == ["ZB"]


def test_without_a_lock_there_is_nothing_to_tell(trelv):
    assert trelv.result("locks", HOST, exit_code=0) == {"locks": []}


def test_the_locks_of_the_workstation_are_told_too(installed, trelv):
    installation.write_text(installed.disk / "Lumo/Clientagdv.lck", TAKEN + "\n")
    [lock] = trelv.result("locks", HOST, exit_code=1)["locks"]
    assert (lock["path"], lock["side"]) == ("C:\\Lumo\\Clientagdv.lck", "Client")


def test_a_lock_that_a_program_has_open_is_never_removed(installed, trelv):
    put_lock(installed)
    installed.put_test_program("holder", installed.share / "holder.exe")
    holder = installed.prefix.start("S:\\holder.exe", LOCK, "S:\\running", "S:\\go-on")
    assert windows.wait_for_file(installed.share / "running")
    [lock] = trelv.result("locks", HOST, exit_code=1)["locks"]
    assert lock["open"] is True
    done = trelv.run("locks", HOST, "--remove", "--yes")
    assert done.returncode == 2
    assert done.stderr.decode("utf-8").startswith(f"trelv: {LOCK}: ")
    assert installed.server_lock.exists()
    (installed.share / "go-on").write_bytes(b"")
    assert holder.wait(timeout=30) == 0
    assert trelv.run("locks", HOST, "--remove", "--yes").returncode == 0
    assert not installed.server_lock.exists()


def test_nobody_who_could_confirm_removes_nothing(installed, trelv):
    put_lock(installed)
    assert trelv.run("locks", HOST, "--remove").returncode == 2
    assert installed.server_lock.exists()


def test_products_that_are_up_to_date_are_all_right(installed, trelv):
    rows = trelv.result("verify", HOST, exit_code=0)["rows"]
    assert [(row["product"], row["side"]) for row in rows] == [
        (product.id, side) for product in installation.PRODUCTS for side in ("Server", "Client")]
    versions = {product.id: product.version for product in installation.PRODUCTS}
    for row in rows:
        assert list(row) == ["product", "side", "recorded", "configured", "found", "mode", "state"]
        assert row["recorded"] == row["configured"] == versions[row["product"]]
        assert row["state"] == "ok"


def test_a_product_that_waits_for_its_update_is_older(installed, trelv):
    installed.offer(ZB, NEW)
    rows = trelv.result("verify", HOST, exit_code=1)["rows"]
    assert {(row["product"], row["configured"]) for row in rows if row["state"] == "older"} == {
        ("ZB", NEW)}


def test_what_a_start_met_is_explained_from_its_log(installed, trelv):
    installed.offer(ZB, NEW)
    installed.write_catalogue(ZB)
    put_lock(installed)
    installed.run(f"{INTEGRATED} MVBIL")
    log = installed.facts["temporary"] + "log\\TrelvManager.log"
    found = trelv.result("explain", "zb", "--host", HOST, "--log", log, exit_code=1)
    assert list(found) == ["product", "cause", "step", "evidence", "remedy"]
    assert (found["product"], found["cause"]) == ("ZB", "lock")
    assert found["evidence"]["file"] == log
    line = windows.log_lines(installed.log)[found["evidence"]["line"] - 1]
    assert found["evidence"]["text"] == line
    assert "per presenza altre sessioni" in line
    installed.server_lock.unlink()
    installed.run(f"{INTEGRATED} MVBIL")
    found = trelv.result("explain", "ZB", "--host", HOST, "--log", log, exit_code=0)
    assert found["cause"] == "up-to-date"


def test_what_only_reads_changes_nothing_and_is_in_nobodys_way(installed, trelv):
    installed.offer(ZB, NEW)
    installed.start()
    put_lock(installed)
    before = all_files(installed)
    log = installed.facts["temporary"] + "log\\TrelvManager.log"
    for arguments in (("locks", HOST), ("verify", HOST),
                      ("explain", "ZB", "--host", HOST, "--log", log)):
        openings = trelv.openings(*arguments)
        assert openings, "the trace has no opening of the host's files"
        for path, access, sharing in openings:
            assert access & CHANGES == 0, path
            # The version of a program is read by Windows, for every start too.
            if not path.endswith(".exe"):
                assert sharing & SHARED_READ_AND_WRITE == SHARED_READ_AND_WRITE, path
    assert all_files(installed) == before


def test_whoever_may_only_read_gets_the_same(installed, trelv):
    installed.offer(ZB, NEW)
    put_lock(installed)
    whole = {verb: trelv.run(verb, HOST, "--json").stdout for verb in ("verify",)}
    modes = {path: path.stat().st_mode for path in installed.share.rglob("*")}
    for path in modes:
        path.chmod(0o555 if path.is_dir() else 0o444)
    try:
        for verb, text in whole.items():
            assert trelv.run(verb, HOST, "--json").stdout == text
        assert trelv.run("locks", HOST, "--remove", "--yes").returncode == 2
        assert installed.server_lock.exists()
    finally:
        for path, mode in modes.items():
            path.chmod(mode)
