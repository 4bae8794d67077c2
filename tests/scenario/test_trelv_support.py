"""trelv for whoever supports a customer: locks, verify, explain, with the real program beside real
starts of the manager."""

import json
import re
import shutil
import subprocess
import zipfile

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
# Reading data or running it; sharing is looked at for these rights and those above alone.
READS = 0x80000000 | 0x20000000 | 0x1 | 0x20
SHARED_READ_AND_WRITE = 0x3


class Trelv:
    """The second program on a workstation."""

    def __init__(self, station):
        self.station = station
        folder = station.manager_folder
        folder.mkdir(parents=True, exist_ok=True)
        shutil.copy(station.prefix.build.release / "trelv.exe", folder)

    def run(self, *arguments, debug="-all", stdout=subprocess.PIPE):
        """A finished process with what it wrote."""
        prefix = self.station.prefix
        return subprocess.run(
            [*prefix._as_a_user(), windows.PROJECT / "tools/wine",
             "C:\\Lumo\\Manager\\trelv.exe", *arguments],
            cwd=prefix.disk, env={**prefix.environment, "WINEDEBUG": debug}, timeout=120,
            stdin=subprocess.DEVNULL, stdout=stdout, stderr=subprocess.PIPE, check=False)

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


def pack(station):
    """A pack that brings a file, beside trelv."""
    path = station.manager_folder / "novità.zip"
    with zipfile.ZipFile(path, "w") as archive:
        archive.writestr("prg/com/setup/aggdovra/bilancio/perché.txt", "testo")
    return f"C:\\Lumo\\Manager\\{path.name}"


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


def test_a_lock_that_is_read_only_stays(installed, trelv):
    put_lock(installed)
    installed.server_lock.chmod(0o444)
    assert trelv.run("locks", HOST, "--remove", "--yes").returncode == 2
    assert installed.server_lock.exists()
    installed.server_lock.chmod(0o644)
    assert trelv.run("locks", HOST, "--remove", "--yes").returncode == 0
    assert not installed.server_lock.exists()


def test_an_answer_that_cannot_be_written_is_a_failure(trelv):
    with open("/dev/full", "wb") as full:
        done = trelv.run("verify", HOST, stdout=full)
    assert done.returncode == 2
    assert done.stderr.decode("utf-8") == "trelv: standard output: Disco pieno\n"


def test_what_only_reads_changes_nothing_and_is_in_nobodys_way(installed, trelv):
    installed.offer(ZB, NEW)
    installed.start()
    put_lock(installed)
    assert trelv.run("publish", HOST, pack(installed)).returncode == 0
    before = all_files(installed)
    log = installed.facts["temporary"] + "log\\TrelvManager.log"
    for arguments in (("locks", HOST), ("verify", HOST), ("publish", HOST, "--list"),
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
    installed.write_catalogue(ZB)
    put_lock(installed)
    installed.run(f"{INTEGRATED} MVBIL")
    packed = pack(installed)
    assert trelv.run("publish", HOST, packed).returncode == 0
    log = installed.facts["temporary"] + "log\\TrelvManager.log"
    reading = (("verify", HOST), ("locks", HOST), ("publish", HOST, "--list"),
               ("explain", "ZB", "--host", HOST, "--log", log))

    def told():
        # The lock grows older.
        return [(done.returncode, re.sub(rb'"age": \d+', b"", done.stdout))
                for done in (trelv.run(*arguments, "--json") for arguments in reading)]

    whole = told()
    assert [code for code, _ in whole] == [1, 1, 0, 1]
    modes = {path: path.stat().st_mode for path in installed.share.rglob("*")}
    for path in modes:
        path.chmod(0o555 if path.is_dir() else 0o444)
    try:
        assert told() == whole
        assert trelv.run("locks", HOST, "--remove", "--yes").returncode == 2
        assert installed.server_lock.exists()
        refused = trelv.run("publish", HOST, "--undo")
        assert refused.returncode == 2
        assert refused.stderr.decode("utf-8").startswith("trelv: ")
    finally:
        for path, mode in modes.items():
            path.chmod(mode)


def test_a_publication_is_opened_by_a_start_and_taken_back(installed, trelv):
    brought = installed.share / "Lumo/prg/com/setup/aggdovra/bilancio/perché.txt"
    packed = pack(installed)
    result = trelv.result("publish", HOST, packed, exit_code=0)
    assert list(result) == ["journal", "published", "present", "replaces", "adds"]
    assert (result["published"], result["adds"]) == (["novità.zip"], ["bilancio\\perché.txt"])
    installed.start()
    assert brought.exists()
    assert trelv.result("publish", HOST, packed, exit_code=0)["present"] == ["novità.zip"]
    [listed] = trelv.result("publish", HOST, "--list", exit_code=0)["journals"]
    assert (listed["name"], listed["state"]) == (result["journal"], "opened")
    assert trelv.result("publish", HOST, "--undo", exit_code=0)["removed"] == result["adds"]
    assert not brought.exists()


@pytest.fixture
def release(installed, trelv):
    """The host with the client copy of this release."""
    installed.prefix.build.put_release(installed.client_copy)
    return installed


def findings(trelv, *arguments, exit_code=1):
    done = trelv.run("lint", *arguments, "--json")
    assert done.returncode == exit_code, done.stderr.decode("utf-8", "replace")
    return [(each["code"], each["file"], each["line"])
            for each in json.loads(done.stdout.decode("utf-8"))["findings"]]


def test_lint_finds_nothing_on_the_installed_demonstration(release, trelv):
    assert findings(trelv, HOST, exit_code=0) == []
    release.offer(ZB, NEW)
    assert findings(trelv, HOST, exit_code=0) == []


def test_lint_shows_paths_as_they_were_given(release, trelv):
    (release.server / "prg/etc/dvrel").unlink()
    unc = release.prefix.folder / "dosdevices/unc/server"
    unc.mkdir(parents=True, exist_ok=True)
    (unc / "lumo").symlink_to(release.share)
    try:
        for given, shown in ((HOST + "\\", HOST), ("s:\\lumo", "s:\\lumo"), ("S:/Lumo/", "S:/Lumo"),
                             ("\\\\server\\lumo\\Lumo\\", "\\\\server\\lumo\\Lumo")):
            assert findings(trelv, given) == [("TK405", shown + "\\prg\\etc\\dvrel", None)]
        # Two names of one folder.
        assert len(findings(trelv, HOST, "\\\\server\\lumo\\Lumo")) == 1
    finally:
        (unc / "lumo").unlink()


def test_lint_is_in_nobodys_way(release, trelv):
    release.offer(ZB, NEW)
    before = all_files(release)
    openings = trelv.openings("lint", HOST)
    assert len(openings) > 10, "the trace has no opening of the host's files"
    for path, access, sharing in openings:
        # The folder is asked whether this user may make files in it.
        if not path.endswith(HOST + "\\prg\\etc"):
            assert access & CHANGES == 0, path
        if access & READS and not path.endswith(".exe"):
            assert sharing & SHARED_READ_AND_WRITE == SHARED_READ_AND_WRITE, path
    assert all_files(release) == before
