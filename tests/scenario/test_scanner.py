"""A virus scanner that opens every new file without sharing it, and keeps it for a second: nothing
may be lost for it."""

import contextlib

import pytest

from conftest import INTEGRATED, shown
import installation
import packs
import windows

ZB = installation.ZB
NEW = "09.94.00.00"
MILLISECONDS = 1000
START = f"{INTEGRATED} MVBIL"
KEPT = 2000
SETUPS = "S:\\Lumo\\prg\\com\\setup\\aggdovra\\"


@contextlib.contextmanager
def scanner(station):
    """While inside, a scanner is at work on the server, the workstation and the temporary folder;
    gives a list that has the files that it held when it is left."""
    station.put_test_program("scanner", station.share / "scanner.exe")
    held = []
    process = station.prefix.start(
        "S:\\scanner.exe", str(MILLISECONDS), "S:\\running", "S:\\stop", "S:\\held",
        "S:\\Lumo\\prg", "C:\\Lumo", station.work_folder_name)
    try:
        assert windows.wait_for_file(station.share / "running", 30)
        yield held
    finally:
        (station.share / "stop").touch()
        assert process.wait(timeout=30) == 0
    held += (station.share / "held").read_text(encoding="utf-8").splitlines()


@contextlib.contextmanager
def kept(station, file, sharing="none"):
    """Another program has a file (Windows path) in hand when the inside begins, for KEPT
    milliseconds."""
    station.put_test_program("keeper", station.share / "keeper.exe")
    (station.share / "keeping").unlink(missing_ok=True)
    process = station.prefix.start("S:\\keeper.exe", str(KEPT), sharing, "S:\\keeping", file)
    assert windows.wait_for_file(station.share / "keeping", 30)
    yield
    assert process.wait(timeout=30) == 0


def names(held):
    """The file names of what was held."""
    return {path.split("\\")[-1] for path in held}


def test_an_update_is_done_while_a_scanner_is_at_work(installed):
    installed.offer(ZB, NEW)
    with scanner(installed) as held:
        run = installed.run(START, limit=90)
    assert shown(run) == []
    assert installed.set_ups_run() == [f"ZB {NEW} Server", f"ZB {NEW} Client"]
    assert installed.versions()["ZB"] == (NEW, NEW)
    assert {"agdv.lck", "Clientagdv.lck"} <= names(held)
    assert not any("non eseguito" in text or "fallita" in text for text in installed.texts())


@pytest.mark.usefixtures("seven_zip")
def test_a_pack_is_opened_and_its_set_ups_run_while_a_scanner_is_at_work(installed):
    with scanner(installed) as held:
        (installed.setups / "nuovo.zip").write_bytes(packs.zip_bytes(installed.pack_files(ZB, NEW)))
        run = installed.run(START, limit=90)
    assert shown(run) == []
    assert not (installed.setups / "nuovo.zip").exists()
    assert installed.set_ups_run() == [f"ZB {NEW} Server", f"ZB {NEW} Client"]
    assert installed.versions()["ZB"] == (NEW, NEW)
    assert {"nuovo.zip", "zb.ini", "setup.exe"} <= names(held)


def test_a_first_start_records_its_integration_while_a_scanner_is_at_work(laid_out):
    with scanner(laid_out) as held:
        run = laid_out.run(START, limit=90)
    assert shown(run) == []
    assert laid_out.versions() == {product.id: (product.version, product.version)
                                   for product in installation.PRODUCTS}
    assert {"TrelvManager.log", "agdv.lck", "Clientagdv.lck"} <= names(held)


@pytest.mark.parametrize("file, sharing", [
    (SETUPS + "agdvcomp.ini", "none"), (SETUPS + "zb.ini", "none"), (SETUPS + "bilancio\\setup.exe", "none"),
    ("S:\\Lumo\\prg\\etc\\agdvver.ini", "none"), ("S:\\Lumo\\prg\\etc\\agdvver.ini", "read"),
    ("C:\\Lumo\\Client\\agdvver.ini", "read"), ("C:\\Lumo\\Client\\lumoconf.xml", "none")])
def test_an_update_waits_for_a_file_that_is_let_go(installed, file, sharing):
    installed.offer(ZB, NEW)
    with kept(installed, file, sharing):
        run = installed.run(START, limit=60)
    assert shown(run) == []
    assert installed.set_ups_run() == [f"ZB {NEW} Server", f"ZB {NEW} Client"]
    assert installed.versions()["ZB"] == (NEW, NEW)


@pytest.mark.usefixtures("seven_zip")
def test_a_pack_that_is_still_in_hand_is_opened_when_it_is_let_go(installed):
    (installed.setups / "nuovo.zip").write_bytes(packs.zip_bytes(installed.pack_files(ZB, NEW)))
    with kept(installed, SETUPS + "nuovo.zip"):
        run = installed.run(START, limit=60)
    assert shown(run) == []
    assert not (installed.setups / "nuovo.zip").exists()
    assert installed.versions()["ZB"] == (NEW, NEW)
