"""Sessions from a medium that are ended by force, run out of room, lose their medium or meet another
one: nothing half is left, and the next session does what they did not."""

import functools
import os
import shutil
import time

import pytest

import installation
import packs
import windows
from conftest import KINDS
from test_media import answer_until, choose_server, put_menu
from test_session import (INTEGRATION, NEW_VERSION, QUESTION, SELECTION, STANDARD, VERSIONS, ZB,
                          built_medium, choose_mode, completed, hosted, installed_programs,
                          standalone, standard_version, turn_to, wait_until)
from test_updates import lock_box
from test_work_folder import SETUP, SETUP_ON_SHARE, arrived, temporaries

MEGABYTE = 1 << 20
# 7-Zip and the decoder need some tenths of a second for it.
LARGE = 24
# The standard installation is refused on a 64-bit Windows, and what ends a program does so on both.
ON_32_BIT = pytest.mark.parametrize("prefix", KINDS[:1], indirect=True)


@functools.lru_cache
def tree(name, megabytes):
    """A set-up tree that cannot be packed any smaller: {path below the set-up folder: content}."""
    return {f"{name}/dati.bin": os.urandom(megabytes * MEGABYTE),
            **{f"{name}/{number}.bin": name.encode() * 500 for number in range(100)},
            f"{name}.ini": b"[Setup01]\r\nversion=01.00\r\n"}


@functools.lru_cache
def pack(name, megabytes):
    """A zip pack of a medium that holds this tree."""
    files = {f"{SETUP}/{path}": content for path, content in tree(name, megabytes).items()}
    return packs.zip_bytes({f"{name}.gz": packs.gz_bytes({f"{name}.zip": packs.zip_bytes(files)})})


def offer(drive, *sizes):
    """The medium offers Nerio behind one entry for each (name, megabytes)."""
    for name, megabytes in sizes:
        folder = drive.root / "prodotti/packs" / name
        folder.mkdir()
        (folder / f"{name}.zip").write_bytes(pack(name, megabytes))
    names = [*[name for name, _ in sizes], "nerio"]
    put_menu(drive.root, *[f"#PRIMA_LISTA#{name}|prodotti\\packs\\{name}|NERIO" for name in names])


def press_all_rows(hand):
    for row in range(len(hand.dialog(INTEGRATION).items("ListProd"))):
        hand.press_row(INTEGRATION, "ListProd", row)


def begin(hand):
    """Chooses the server and all entries, and goes on."""
    choose_server(hand)
    press_all_rows(hand)
    hand.press(INTEGRATION, "cmdExec")


def delivered(station):
    """{path below the set-up folder: content} of what packs brought to the server."""
    return {path.relative_to(station.setups).as_posix(): path.read_bytes()
            for path in station.setups.rglob("*")
            if path.is_file() and path.suffix != ".tmp" and path.name != "agdvcomp.ini"}


def left_of_packs(station):
    """What sessions left in the temporary folder that packs pass through."""
    return {path.name for path in station.work_folder.iterdir()
            if path.name.startswith("~") or path.name in ("prg", "TrelvManager.lck")
            or path.suffix in (".zip", ".gz")}


# --- Ended by force

TEMPORARY = "{temporary}"


@ON_32_BIT
@pytest.mark.parametrize("step, line", [
    pytest.param("S:\\fine", "Gestione ProdTrelv - ", id="while-the-first-form-stands"),
    pytest.param(TEMPORARY + "~pacchi1.tmp\\grande.gz",
                 "Gestione ProdTrelv - Apertura pacco zip con comando: ", id="while-7-Zip-unpacks"),
    pytest.param(TEMPORARY + "~qalbunex*.tmp",
                 "Gestione ProdTrelv - Apertura pacco :S:\\Lumo\\grande.gz",
                 id="while-the-decoder-unpacks"),
    pytest.param(SETUP_ON_SHARE + "\\grande\\20.bin", "Cancellazione file: ",
                 id="while-the-tree-is-copied"),
    pytest.param("S:\\Lumo\\prg\\tempterm\\TrelvManager-*.tmp",
                 "Gestione ProdTrelv - Copia Trelvmanager.Exe su ",
                 id="while-the-client-copy-is-renewed")])
def test_the_next_session_does_what_one_that_was_ended_by_force_did_not(hosted, step, line):
    station = hosted.station
    offer(hosted, ("grande", LARGE))
    manager = hosted.root / "prodotti/manager/TrelvManager.exe"
    # Long enough to be met while it is copied.
    os.truncate(manager, manager.stat().st_size + 200 * MEGABYTE)
    client = station.client_copy / "TrelvManager.exe"
    before, medium = delivered(station), hosted.state()
    with hosted.session(kill_when=step.format(temporary=station.work_folder_name + "\\")) as hand:
        if step == "S:\\fine":
            (station.share / "fine").touch()
        else:
            begin(hand)
    assert station.texts()[-1].startswith(line)
    expected = {**before, **tree("grande", LARGE)}
    assert all(expected.get(path) == content for path, content in delivered(station).items())
    assert client.read_bytes() == b"old"
    assert "Integration" not in station.store.read_text(encoding="utf-8")
    with hosted.session() as hand:
        begin(hand)
        texts = answer_until(hand, "Installazione")
    assert len(texts) == 1 and completed(texts[0])
    assert arrived(station, tree("grande", LARGE))
    assert (station.setups / "nerio.ini").exists()
    assert client.stat().st_size == manager.stat().st_size
    assert temporaries(station) == [] and list((station.server / "prg/tempterm").iterdir()) == []
    assert left_of_packs(station) == set()
    assert "S:\\Lumo" in station.store.read_text(encoding="utf-8").split("Integration")[1]
    assert hosted.state() == medium


def start_standard(hand):
    choose_mode(hand, STANDARD)
    turn_to(hand, STANDARD, "Bilancio")
    hand.press_row(STANDARD, "ListProd", 0)
    hand.press(STANDARD, "cmdExec")
    assert hand.box("Sì")[0] == QUESTION + "Bilancio"
    hand.press_row(VERSIONS, "ListProd", 1)
    hand.press(VERSIONS, "cmdExec")


def put_slow_setup(drive):
    """The set-up of Bilancio's newest version waits until S:\\go-on exists."""
    station = drive.station
    station.put_test_program("waiter", station.share / "waiter.exe")
    (station.share / "lento.bat").write_bytes(b"S:\\waiter.exe S:\\running S:\\go-on\r\n")
    files = station.pack_files(ZB, NEW_VERSION)
    sections = installation.configuration(ZB, [NEW_VERSION])
    sections["Setup01"]["Server01"] = "S:\\lento.bat"
    files[f"{SETUP}/zb.ini"] = installation.text_bytes(installation.ini_text(sections))
    drive.pack("bilancio", NEW_VERSION).write_bytes(
        packs.zip_bytes({"bilancio.gz": packs.gz_bytes({"bilancio.zip": packs.zip_bytes(files)})}))


@ON_32_BIT
def test_the_lock_of_a_session_that_was_ended_in_a_set_up_is_told_until_it_is_removed(standalone):
    station = standalone.station
    good = standalone.pack("bilancio", NEW_VERSION).read_bytes()
    put_slow_setup(standalone)
    lock = station.work_folder / "prg/tempterm/agdv.lck"
    with standalone.session(kill_when="S:\\running") as hand:
        start_standard(hand)
    assert lock.exists() and installed_programs(station) == []
    (station.share / "go-on").touch()
    standalone.pack("bilancio", NEW_VERSION).write_bytes(good)
    with standalone.session() as hand:
        start_standard(hand)
        assert ("TrelvManager", hand.box_of(60)[0], ["OK"]) == lock_box("Server")
        wait_until(hand, STANDARD, lambda form: not form.enabled("cmdback"))
        lock.unlink()
        turn_to(hand, STANDARD, "Bilancio")
        hand.press_row(STANDARD, "ListProd", 0)
        hand.press(STANDARD, "cmdExec")
        hand.box("Sì")
        hand.press_row(VERSIONS, "ListProd", 1)
        hand.press(VERSIONS, "cmdExec")
        wait_until(hand, STANDARD, lambda form: form.enabled("cmdExec"))
        hand.press(STANDARD, "cmdExit")
    assert standard_version(station) == NEW_VERSION
    assert not lock.exists() and left_of_packs(station) == {"prg"}


# --- Without room

def use_as_temporary_folder(drive, path):
    """The host's support library names it to the manager."""
    manager = drive.root / "prodotti/manager"
    shutil.copy(drive.station.prefix.build.libraries / "tovrautil.dll", manager)
    installation.write_text(manager / "tovrautil.ini",
                            installation.ini_text({"tovrautil": {"temporary": path}}))


def test_packs_that_find_no_room_are_named_and_come_with_the_next_session(hosted, small_disk):
    station = hosted.station
    # The first finds no room for what 7-Zip unpacks, the second none for what the decoder unpacks.
    sizes = (("grande", 5), ("medio", 2))
    offer(hosted, *sizes)
    use_as_temporary_folder(hosted, "T:\\Temp\\")
    before = delivered(station)
    with hosted.session() as hand:
        begin(hand)
        texts = answer_until(hand, "Installazione")
    assert texts[-1] == "\r\n".join([
        "Installazione non completata.", "", "Non è stato possibile aprire i seguenti pacchi:",
        "grande: prodotti\\packs\\grande\\grande.zip", "grande: grande.gz", "medio: medio.gz", "",
        "I prodotti verranno installati al prossimo avvio di uno di essi."])
    assert texts[0].startswith('Errore in esecuzione comando: "D:\\prodotti\\manager\\7z.exe"')
    assert "Gestione ProdTrelv - Apertura pacco :S:\\Lumo\\medio.gz" in station.texts()
    assert station.texts()[-1] == "Gestione ProdTrelv - scrittura integrazione su macchina: S:\\Lumo"
    nerio = {path: content for path, content in delivered(station).items() if path not in before}
    assert "nerio.ini" in nerio and not [path for path in nerio if path.startswith(("grande", "medio"))]
    assert temporaries(station) == []
    assert {path.name for path in (small_disk / "Temp").iterdir()} == {"ambver"}
    (hosted.root / "prodotti/manager/tovrautil.dll").unlink()
    with hosted.session() as hand:
        choose_recorded(hand)
        press_all_rows(hand)
        hand.press(INTEGRATION, "cmdExec")
        texts = answer_until(hand, "Installazione")
    assert len(texts) == 1 and completed(texts[0])
    assert all(arrived(station, tree(*size)) for size in sizes)


def choose_recorded(hand):
    """Chooses the installation that an earlier session recorded: nothing is asked but whether."""
    hand.press_row(SELECTION, "ListAmb", 1)
    hand.press(SELECTION, "cmdExec")
    assert hand.box("Sì")[0].startswith(QUESTION + INTEGRATION)


# --- Without the medium

def test_a_medium_that_is_taken_out_while_packs_are_opened_is_told(hosted):
    station = hosted.station
    offer(hosted, ("grande", LARGE), ("altro", 0))
    drive = station.prefix.folder / "dosdevices/d:"
    before = delivered(station)
    with hosted.session() as hand:
        begin(hand)
        deadline = time.monotonic() + 60
        while not (station.work_folder / "~pacchi1.tmp/grande.gz").exists():
            assert time.monotonic() < deadline
            time.sleep(0.001)
        drive.unlink()
        hosted.root.rename(hosted.root.with_name("taken out"))
        texts = answer_until(hand, "Installazione")
    hosted.root.with_name("taken out").rename(hosted.root)
    station.prefix.map_drive("d", hosted.root)
    assert texts[-1].startswith("Installazione non completata.")
    for name in ("altro", "nerio"):
        assert f"{name}: prodotti\\packs\\{name}" in texts[-1]
        assert [text for text in station.texts() if f"packs\\{name} (" in text
                and text.startswith("Gestione ProdTrelv - Errore in ordinamento cartella D:\\")]
    expected = {**before, **tree("grande", LARGE)}
    assert all(expected.get(path) == content for path, content in delivered(station).items())
    assert temporaries(station) == [] and left_of_packs(station) == set()


# --- Beside another session

def test_two_sessions_of_one_user_at_once_both_install_all(hosted):
    station = hosted.station
    offer(hosted, ("grande", LARGE))
    with hosted.session() as hand:
        choose_server(hand)
        press_all_rows(hand)
        # Its forms cover those of the first.
        second = station.prefix.start(station.manager, "INTERACTIVE")
        choose_server(hand)
        wait_until(hand, INTEGRATION, lambda _: hand.titles().count(INTEGRATION) == 2)
        press_all_rows(hand)
        hand.press(INTEGRATION, "cmdExec")
        hand.click(INTEGRATION, "cmdExec")
        texts = answer_until(hand, "Installazione") + answer_until(hand, "Installazione")
        assert second.wait(timeout=30) == 0
    assert [completed(text) for text in texts] == [True, True]
    assert arrived(station, tree("grande", LARGE)) and (station.setups / "nerio.ini").exists()
    manager = hosted.root / "prodotti/manager/TrelvManager.exe"
    assert (station.client_copy / "TrelvManager.exe").read_bytes() == manager.read_bytes()
    assert temporaries(station) == [] and left_of_packs(station) == set()
    assert list((station.server / "prg/tempterm").iterdir()) == []


# --- A user who does not wait

@ON_32_BIT
def test_what_is_pressed_while_a_set_up_runs_does_nothing(standalone):
    station = standalone.station
    put_slow_setup(standalone)
    at_work = STANDARD + " - Installazione in corso"
    with standalone.session() as hand:
        start_standard(hand)
        assert windows.wait_for_file(station.share / "running", 60)
        form = hand.dialog(at_work)
        assert [name for name in form.controls if form.enabled(name)
                and name in ("labTab", "ListProd", "cmdExec", "cmdback", "cmdExit", "cmdhelp")] == []
        for name in ("cmdExit", "cmdExec", "cmdback"):
            hand.mouse(form.place(name), clicks=2)
        hand.mouse(form.row("ListProd", 0), clicks=2)
        hand.point_at(form)
        hand.keys("Escape", "Return", "alt+e", "space", "alt+F4")
        (station.share / "go-on").touch()
        form = wait_until(hand, STANDARD, lambda form: form.enabled("cmdExec"))
        assert form.chosen("ListProd") == [] and hand.titles() == [STANDARD]
        hand.press(STANDARD, "cmdExit")
    assert station.texts().count("Avvio apertura pacco.") == 1


def test_a_double_click_on_the_button_begins_one_installation(hosted):
    offer(hosted, ("altro", 0))
    with hosted.session() as hand:
        choose_server(hand)
        press_all_rows(hand)
        hand.mouse(hand.dialog(INTEGRATION).place("cmdExec"), clicks=4)
        assert completed(answer_until(hand, "Installazione")[-1])
    assert hosted.station.texts().count("Avvio apertura pacco.") == 1


def test_esc_leaves_each_form_as_its_exit_does(standalone):
    with standalone.session() as hand:
        choose_mode(hand, STANDARD)
        turn_to(hand, STANDARD, "Bilancio")
        hand.press_row(STANDARD, "ListProd", 0)
        if standalone.station.prefix.kind == "win32":
            hand.press(STANDARD, "cmdExec")
            hand.box("Sì")
            hand.point_at(hand.dialog(VERSIONS))
            hand.keys("Escape")
            wait_until(hand, STANDARD, lambda _: hand.titles() == [STANDARD])
        hand.point_at(hand.dialog(STANDARD))
        hand.keys("Escape")
    with standalone.session() as hand:
        hand.point_at(hand.dialog(SELECTION))
        hand.keys("Escape")
    assert "Avvio apertura pacco." not in standalone.station.texts()


def test_a_thousand_products_with_long_names_are_listed_and_the_last_is_installed(hosted):
    long = "Aggiornamento dei modelli & delle tabelle, periodo d'imposta " + "x" * 300
    put_menu(hosted.root, *[f"#PRIMA_LISTA#{number} {long}|prodotti\\packs\\manca|NERIO"
                            for number in range(999)],
             "#QUARTA_LISTA#Ultimo|prodotti\\packs\\nerio|NERIO")
    with hosted.session() as hand:
        choose_server(hand)
        form = hand.dialog(INTEGRATION)
        assert len(form.items("ListProd")) == 1000 and form.items("ListProd")[998] == f"998 {long}"
        hand.point_at(form)
        hand.keys("End", "space")
        assert hand.dialog(INTEGRATION).chosen("ListProd") == ["Ultimo"]
        hand.picture(INTEGRATION, "mille")
        hand.keys("Return")
        assert completed(answer_until(hand, "Installazione")[-1])
    assert (hosted.station.setups / "nerio.ini").exists()
