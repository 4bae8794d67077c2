"""What trelv.exe plans of a start is what the start then does, and planning changes nothing."""

import contextlib
import json
import os
import pathlib
import re
import shutil
import subprocess

import pytest

from conftest import INTEGRATED, MANAGER_FOLDER
from made_up import MadeUp
import installation
import packs
import plan_check
import windows

ZB = installation.ZB
NEW = "09.94.00.00"
SETUPS = "S:\\Lumo\\prg\\com\\setup\\aggdovra"
TRELV = MANAGER_FOLDER + "\\trelv.exe"


class Answer:
    def __init__(self, done):
        self.code = done.returncode
        self.text = done.stdout.decode()
        self.errors = done.stderr.decode()

    @property
    def result(self):
        return json.loads(self.text)["result"]

    def steps(self, kind):
        return [step for step in self.result["steps"] if step["kind"] == kind]


def plan(station, *arguments):
    return Answer(station.prefix.console(TRELV, "plan", "--json", *arguments))


def assert_equals_run(station, planned, arguments=f"{INTEGRATED} MVBIL"):
    """Runs what was planned and compares log, commands, versions and started program."""
    station.log.unlink(missing_ok=True)
    run = station.run(arguments)
    assert [step["text"] for step in planned.steps("log")] == station.texts()
    assert [step["text"] for step in planned.steps("box")] == [
        box.text for box in run.boxes if "txtProcedura" not in box.texts]
    rows = {(row["product"], row["side"]): row["becomes"] for row in planned.result["updates"]}
    assert rows == {(product, side): version
                    for product, versions in station.versions().items()
                    for side, version in zip(("Server", "Client"), versions)}
    last = station.texts()[-1]
    start = "Gestione ProdTrelv - Esecuzione di: "
    assert planned.result["starts"] == (last[len(start):] if last.startswith(start) else None)


def assert_planned(station, *arguments):
    """The plan, which has left everything as it was."""
    before = plan_check.World(station)
    planned = plan(station, *arguments)
    assert planned.errors == ""
    assert before.differences(plan_check.World(station)) == []
    return planned


ARGUMENTS = ["INTEGRATEDRUN", "S:\\Lumo", "S:\\Lumo", "MVBIL"]


def test_of_a_start_with_nothing_to_do_only_the_program_is_left(installed):
    planned = assert_planned(installed, *ARGUMENTS)
    # The first start writes ini files of the Windows folder; the next one finds them.
    assert_equals_run(installed, planned)
    planned = assert_planned(installed, *ARGUMENTS)
    assert planned.code == 0, planned.text
    assert planned.result["starts"] == "S:\\Lumo\\mv\\bilancio\\bilancio.exe "
    assert [step["line"] for step in planned.steps("command")] == [planned.result["starts"]]
    assert_equals_run(installed, planned)


def test_a_first_start_is_planned_as_it_runs(laid_out):
    planned = assert_planned(laid_out, *ARGUMENTS)
    assert planned.code == 1
    assert len(planned.steps("command")) == 10
    assert all(step["waits"] for step in planned.steps("command"))
    assert planned.steps("store") == [{"kind": "store", "value": "S:\\Lumo"}]
    # What the set-ups bring is not known before: the requested program, for one.
    assert planned.result["starts"] is None
    laid_out.put_programs()
    planned = assert_planned(laid_out, *ARGUMENTS)
    assert len(planned.steps("command")) == 11
    assert_equals_run(laid_out, planned)


def test_what_a_waiting_pack_brings_is_planned(installed, seven_zip):
    files = installed.pack_files(ZB, NEW)
    (installed.setups / "zb.zip").write_bytes(packs.zip_bytes(files))
    planned = assert_planned(installed, *ARGUMENTS)
    assert planned.code == 1
    assert [row["becomes"] for row in planned.result["updates"] if row["product"] == "ZB"] == [NEW, NEW]
    assert {"kind": "delete", "path": SETUPS + "\\zb.zip"} in planned.steps("delete")
    assert not any("7z.exe" in step["line"] for step in planned.steps("command"))
    assert_equals_run(installed, planned)


def test_a_single_installation_is_planned_as_it_runs(installed, seven_zip):
    pack = packs.zip_bytes(installed.pack_files(ZB, NEW))
    (installed.manager_folder / "zb.gz").write_bytes(packs.gz_bytes({"bilancio.zip": pack}))
    planned = assert_planned(installed, "SINGLEINSTALL", "ZB", "zb.gz")
    assert planned.code == 1
    assert {"kind": "delete", "path": installed.work_folder_name + "\\prg\\com\\setup\\aggdovra"
            "\\bilancio.zip"} in planned.steps("delete")
    assert planned.result["starts"] is None
    run = installed.run("SINGLEINSTALL ZB zb.gz")
    assert [step["text"] for step in planned.steps("log")] == installed.texts()
    assert [step["text"] for step in planned.steps("box")] == [box.text for box in run.boxes]


def test_a_lock_stops_the_planned_run_as_the_real_one(installed):
    installed.offer(ZB, NEW)
    installation.write_text(installed.server / "prg/tempterm/agdv.lck", "16/11/2026 09:30:00\n")
    installed.write_catalogue(ZB)
    planned = assert_planned(installed, *ARGUMENTS)
    assert len(planned.steps("box")) == 1
    assert all(row["recorded"] == row["becomes"] for row in planned.result["updates"])
    assert "altre sessioni" in planned.result["updates"][0]["because"]


def test_a_program_that_fails_and_a_user_of_few_rights_are_planned_when_told(installed):
    installed.offer(ZB, NEW)
    planned = assert_planned(installed, "--fails", "1", *ARGUMENTS)
    rows = {row["side"]: row for row in planned.result["updates"] if row["product"] == "ZB"}
    assert (rows["Server"]["becomes"], rows["Client"]["becomes"]) == (ZB.version, NEW)
    assert rows["Server"]["because"].startswith("Esecuzione non effettuata di: ")
    assert planned.steps("form") == [{"kind": "form", "name": "frmError"}]
    planned = assert_planned(installed, "--as-user", *ARGUMENTS)
    assert planned.steps("box")[0]["title"] == "Errore"
    assert [step["line"] for step in planned.steps("command")] == [planned.result["starts"]]


def wine_server(prefix):
    """Number of the process that opens the files of the programs of this Windows."""
    status = os.stat(prefix.folder)
    folder = f"server-{status.st_dev:x}-{status.st_ino:x}"
    for process in pathlib.Path("/proc").iterdir():
        try:
            if process.name.isdigit() and os.readlink(process / "cwd").endswith(folder) and \
                    "wineserver" in (process / "cmdline").read_text():
                return process.name
        except OSError:
            continue
    raise AssertionError("no Wine server of this Windows runs")


@contextlib.contextmanager
def traced(prefix, trace):
    """What the Wine server opens meanwhile is written into a file."""
    strace = subprocess.Popen(["strace", "-f", "-y", "-s", "300", "-o", trace, "-e",
                               "trace=open,openat,creat,rename,unlink,mkdir,rmdir,utimensat",
                               "-p", wine_server(prefix)], stderr=subprocess.PIPE)
    assert b"attached" in strace.stderr.readline()
    yield
    strace.terminate()
    strace.wait(timeout=30)


def test_nothing_on_the_share_is_opened_for_writing(installed, seven_zip):
    installed.offer(ZB, NEW)
    (installed.setups / "q2.zip").write_bytes(
        packs.zip_bytes(installed.pack_files(installation.Q2, NEW)))
    trace = installed.prefix.folder / "plan.strace"
    with traced(installed.prefix, trace):
        planned = plan(installed, *ARGUMENTS)
    assert planned.code == 1, planned.errors
    on_share = [line for line in trace.read_text(errors="replace").splitlines()
                if "/share/Lumo" in line and "= -1" not in line]
    assert any("agdvcomp.ini" in line for line in on_share), "the trace saw nothing of the share"
    assert [line for line in on_share
            if not re.search(r"open(at)?\(.*O_RDONLY", line)] == []


# More by hand: as many for each Windows as the variable says, from the number on that another says.
MADE_UP = int(os.environ.get("TRELV_REAL_PLANS", "4"))
FIRST_MADE_UP = int(os.environ.get("TRELV_REAL_PLANS_FROM", "1"))


@pytest.mark.parametrize("number", range(FIRST_MADE_UP, FIRST_MADE_UP + MADE_UP))
def test_what_is_planned_on_a_made_up_installation_is_what_is_done(workstation, seven_zip, played, number):
    made = MadeUp(2 * number + (workstation.prefix.kind == "win64"))
    made.lay_out(workstation)
    played(made.edition)
    options = ["--as-user"] if made.restricted else []
    before = plan_check.World(workstation)
    planned = plan(workstation, *options, *made.arguments)
    assert planned.code in (0, 1), planned.errors
    assert planned.errors == ""
    assert before.differences(plan_check.World(workstation)) == []
    workstation.log.unlink(missing_ok=True)
    run = workstation.run(windows.command_line(made.arguments), restricted=made.restricted,
                          on_missing=lambda caption: None)
    plan_check.assert_is_run(workstation, planned.result, run, before)


# --- Beside others, and ended by force


# Exit code of a program that the driver has ended.
ENDED_BY_FORCE = 99


def private_folders(station):
    return sorted(folder.name for folder in station.work_folder.glob("trelv-*"))


def test_a_plan_that_was_ended_by_force_is_cleared_up_by_the_next_one(installed):
    (installed.setups / "q2.zip").write_bytes(packs.zip_bytes(installed.pack_files(installation.Q2, NEW)))
    # A 7-Zip that takes its time.
    installed.put_test_program("unpacker", installed.manager_folder / "7z.exe")
    before = plan_check.World(installed)
    ended = installed.prefix.run(TRELV, "plan " + windows.command_line(ARGUMENTS),
                                 kill_when=installed.work_folder_name + "\\trelv-*")
    assert ended.exit_code == ENDED_BY_FORCE
    assert private_folders(installed) != []
    assert outside_of_private_folders(before.differences(plan_check.World(installed))) == []
    (installed.manager_folder / "7z.exe").unlink()
    before = plan_check.World(installed)
    assert plan(installed, *ARGUMENTS).code == 1
    assert private_folders(installed) == []
    assert outside_of_private_folders(before.differences(plan_check.World(installed))) == []


def outside_of_private_folders(names):
    """Without what the ended plan left behind, and without the tests' driver's file of answers, which
    it may have made."""
    return [name for name in names if "\\Temp\\trelv-" not in name and name not in ("C:", "C:\\driver.out")]


def test_a_plan_beside_a_start_sees_its_lock_and_is_not_in_its_way(installed):
    installed.offer(ZB, NEW)
    installed.write_catalogue(ZB)
    sections = installation.configuration(ZB, [NEW])
    sections["Update02"]["Server01"] = SETUPS + "\\waiter.exe S:\\running S:\\go-on"
    installed.write_configuration(ZB, sections)
    installed.put_test_program("waiter", installed.setups / "waiter.exe")
    started = installed.prefix.start(installed.manager, *ARGUMENTS)
    assert windows.wait_for_file(installed.share / "running", seconds=30)
    planned = assert_planned(installed, *ARGUMENTS)
    assert "altre sessioni" in planned.result["updates"][0]["because"]
    assert planned.steps("box") != []
    (installed.share / "go-on").write_bytes(b"")
    assert started.wait(timeout=60) == 0
    assert installed.versions()["ZB"] == (NEW, NEW)


# The right to read, write and delete beside.
SHARED_WITH_ALL = 0x7
OPENING = re.compile(r'NtCreateFile .*access=([0-9a-f]+) name=L?"([^"]*)".* sharing=([0-9a-f]+)')


def test_a_pack_can_be_removed_while_a_plan_opens_it(installed):
    """Windows would refuse it while 7-Zip reads the pack: so 7-Zip gets a copy."""
    pack = installed.setups / "q2.zip"
    pack.write_bytes(packs.zip_bytes(installed.pack_files(installation.Q2, NEW)))
    openings = tracing(installed, "plan", "--json", *ARGUMENTS)
    assert any(path.lower().endswith("agdvcomp.ini") for path, _ in openings)
    # Folders are listed, versions of programs asked for as by every start.
    kept = [path for path, sharing in openings if sharing & SHARED_WITH_ALL != SHARED_WITH_ALL
            and not path.endswith("\\") and not path.lower().endswith(".exe")]
    assert kept == []


def tracing(station, *arguments):
    """(path, sharing) of all that the program, and those that it starts, open on the share."""
    done = subprocess.run([*station.prefix._as_a_user(), windows.PROJECT / "tools/wine", TRELV, *arguments],
                          cwd=station.prefix.disk, stdin=subprocess.DEVNULL, capture_output=True,
                          env={**station.prefix.environment, "WINEDEBUG": "+file"}, timeout=120, check=False)
    return [(name.replace("\\\\", "\\"), int(sharing, 16))
            for _, name, sharing in OPENING.findall(done.stderr.decode("utf-8", "replace"))
            if "S:\\\\Lumo" in name]


def test_a_share_that_is_not_there_is_planned_as_it_runs(installed):
    shutil.move(installed.share / "Lumo", installed.share / "Altrove")
    planned = assert_planned(installed, *ARGUMENTS)
    assert planned.result["updates"] == []
    assert planned.result["starts"] is None
    run = installed.run(f"{INTEGRATED} MVBIL")
    assert [step["text"] for step in planned.steps("log")] == installed.texts()
    assert [step["text"] for step in planned.steps("box")] == [box.text for box in run.boxes]


def test_a_failing_decoder_says_nothing_of_its_own(installed):
    (installed.manager_folder / "zb.gz").write_bytes(b"Non e' un pacco")
    planned = plan(installed, "SINGLEINSTALL", "ZB", "zb.gz")
    assert (planned.code, planned.errors) == (1, "")
    assert planned.result["steps"] != []
    done = installed.prefix.console(TRELV, "plan", "SINGLEINSTALL", "ZB", "zb.gz")
    assert done.stderr == b""
    assert "qalbunex:" not in done.stdout.decode()
