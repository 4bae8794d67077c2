"""Packs that wait on the server are opened by the next start, with the real 7-Zip."""

import os
import shutil
import subprocess
import threading
import time

import pytest

from conftest import INTEGRATED, MANAGER_FOLDER, UPDATED_ALL, box, shown
import installation
import packs
import windows

ZB = installation.ZB
VERSION = "09.94.00.00"
SETUP = installation.SETUP_FOLDER
SETUP_ON_SHARE = "S:\\Lumo\\prg\\com\\setup\\aggdovra"
NEWS = "bilancio/Novità di questa versione.txt"
NEWS_TEXT = "Più veloce.".encode("cp1252")

pytestmark = pytest.mark.usefixtures("seven_zip")


@pytest.fixture
def station(installed):
    """All products installed; nothing waits but what a test puts there."""
    return installed


def command(pack, folder, manager=MANAGER_FOLDER, share=SETUP_ON_SHARE):
    return f'"{manager}\\7z.exe" x -y -o"{folder}" "{share}\\{pack}"'


def opened(station, pack):
    """The log lines of a pack that was opened and removed."""
    return ["Gestione ProdTrelv - Apertura pacco zip con comando: "
            + command(pack, station.work_folder_name),
            f"Gestione ProdTrelv - Rimozione pacco zip: {SETUP_ON_SHARE}\\{pack}",
            f"Cancellazione file: {SETUP_ON_SHARE}\\{pack} effettuata con successo"]


def lines_of_packs(station):
    return [text for text in station.texts()
            if text.startswith(("Gestione ProdTrelv - Apertura pacco",
                                "Gestione ProdTrelv - Rimozione pacco")) or ".zip effettuata" in text]


def failure_box(station, pack):
    return box("Errore in esecuzione comando: " + command(pack, station.work_folder_name))


def put_pack(station, name, files, outside=None):
    """A zip pack on the server; `files` by their paths below the setup folder, those `outside` it by
    their whole paths."""
    below = {f"{SETUP}/{file}": content for file, content in files.items()}
    (station.setups / name).write_bytes(packs.zip_bytes({**below, **(outside or {})}))


def bilancio_update(station):
    return {**station.pack_files(ZB, VERSION), f"{SETUP}/{NEWS}": NEWS_TEXT}


def content_of(station, *names):
    """The bytes of files of the setup folder; None where there is none."""
    files = [station.setups / name for name in names]
    return [file.read_bytes() if file.exists() else None for file in files]


# --- Writers of packs

def put_source(station, files):
    folder = station.disk / "Lumo/Sorgente"
    for name, content in files.items():
        (folder / name).parent.mkdir(parents=True, exist_ok=True)
        (folder / name).write_bytes(content)
    return folder


def with_7_zip(station, files):
    put_source(station, files)
    done = station.prefix.run(MANAGER_FOLDER + "\\7z.exe",
                              f'a -tzip "{SETUP_ON_SHARE}\\bilancio.zip" prg',
                              folder="C:\\Lumo\\Sorgente")
    assert done.exit_code == 0


def with_info_zip(station, files):
    subprocess.run(["zip", "-q", "-r", station.setups / "bilancio.zip", "prg"],
                   cwd=put_source(station, files), env={**os.environ, "LC_ALL": "C.UTF-8"}, check=True)


def with_zipfile(station, files):
    (station.setups / "bilancio.zip").write_bytes(packs.zip_bytes(files))


@pytest.mark.parametrize("write", [with_7_zip, with_info_zip, with_zipfile])
def test_a_pack_of_any_writer_is_opened_and_its_update_is_done(station, write):
    write(station, bilancio_update(station))
    station.start()
    assert not (station.setups / "bilancio.zip").exists()
    assert (station.setups / NEWS).read_bytes() == NEWS_TEXT
    assert lines_of_packs(station) == opened(station, "bilancio.zip")
    assert station.set_ups_run() == [f"ZB {VERSION} Server", f"ZB {VERSION} Client"]
    assert station.versions()["ZB"] == (VERSION, VERSION)
    assert not (station.work_folder / "prg").exists()
    station.started("bilancio.exe")


def test_a_file_that_a_scanner_holds_for_a_moment_is_waited_for(station):
    (station.setups / "nota.txt").write_bytes(b"old")
    (station.share / "holder.exe").write_bytes(
        (station.prefix.build.test_programs / "holder.exe").read_bytes())
    holder = station.prefix.start("S:\\holder.exe", SETUP_ON_SHARE + "\\nota.txt", "S:\\running",
                                  "S:\\go-on")
    assert windows.wait_for_file(station.share / "running")
    put_pack(station, "bilancio.zip", {"nota.txt": b"new", "poi.txt": b"1"})

    def let_go():
        # The line comes right before the copy.
        while not any("Rimozione pacco zip" in text for text in station.texts()):
            time.sleep(0.02)
        time.sleep(1.5)
        (station.share / "go-on").write_bytes(b"")

    scanner = threading.Thread(target=let_go, daemon=True)
    scanner.start()
    assert station.run(f"{INTEGRATED} MVBIL").boxes == []
    scanner.join()
    assert holder.wait(timeout=30) == 0
    assert (station.setups / "nota.txt").read_bytes() == b"new"
    assert (station.setups / "poi.txt").read_bytes() == b"1"


def test_a_pack_with_a_long_path_is_opened_copied_and_removed(station):
    name = "/".join(["d" * 60] * 5) + "/nota.txt"
    put_pack(station, "bilancio.zip", {name: b"1"})
    assert station.run(f"{INTEGRATED} MVBIL").boxes == []
    assert (station.setups / name).read_bytes() == b"1"
    assert not (station.setups / "bilancio.zip").exists()
    assert not (station.work_folder / "prg").exists()


def test_a_pack_is_opened_before_the_first_product_is_looked_at(station):
    put_pack(station, "bilancio.zip", {"nota.txt": b"1"})
    station.run(f"{INTEGRATED} MVBIL")
    scan = ('Gestione ProdTrelv - Inizio verifica presenza di pacchi zip in cartella: '
            f'"{SETUP_ON_SHARE}"')
    assert station.texts_after(scan)[:3] == opened(station, "bilancio.zip")
    # Once for each product and side.
    assert station.texts().count(scan) == 2 * len(installation.PRODUCTS)


def test_a_pack_can_bring_a_new_product(station):
    station.write_catalogue(ZB)
    new = installation.Q2
    station.record_versions([ZB])
    files = {**station.pack_files(new, "02.93.00.00"),
             f"{SETUP}/agdvcomp.ini": installation.text_bytes(
                 installation.ini_text(installation.catalogue([ZB, new])))}
    with_zipfile(station, files)
    station.start("Q2")
    assert station.versions()["Q2"] == ("02.93.00.00", "02.93.00.00")
    station.started("tarsena2.exe")


def test_of_two_packs_with_one_file_the_one_listed_later_wins(station):
    # Wine lists names in alphabetical order.
    put_pack(station, "b.zip", {"comune.txt": b"b", "b.txt": b"b"})
    put_pack(station, "a.zip", {"comune.txt": b"a", "a.txt": b"a"})
    station.start()
    assert lines_of_packs(station) == [*opened(station, "a.zip"), *opened(station, "b.zip")]
    assert content_of(station, "comune.txt", "a.txt", "b.txt") == [b"b", b"a", b"b"]


@pytest.mark.parametrize("name", ["NOVITA.ZIP", "novita.Zip", "novita.zipx", "novita.zip.old", "zip"])
def test_only_the_ending_zip_in_small_letters_makes_a_pack(station, name):
    put_pack(station, name, {"nota.txt": b"1"})
    before = content_of(station, name)
    station.start()
    assert content_of(station, name, "nota.txt") == [*before, None]
    assert lines_of_packs(station) == []


@pytest.mark.parametrize("name, files", [
    pytest.param("novita.2026.exe.zip", {"nota.txt": b"1"}, id="of_several_endings_the_last_one_counts"),
    pytest.param("aggiornamento di novità è.zip", {NEWS: NEWS_TEXT, "più giù/città.txt": b"1"},
                 id="names_with_accents_and_blanks")])
def test_a_pack_with_any_other_name_is_opened(station, name, files):
    put_pack(station, name, files)
    station.start()
    assert lines_of_packs(station) == opened(station, name)
    assert content_of(station, *files) == list(files.values())


def test_a_host_folder_with_accents_and_blanks(station):
    station.rename_host("Lumo Società")
    station.integrate("S:\\Lumo Società")
    put_pack(station, "bilancio.zip", {NEWS: NEWS_TEXT})
    run = station.run('INTEGRATEDRUN "S:\\Lumo Società" "S:\\Lumo Società" MVBIL')
    assert shown(run) == []
    assert content_of(station, NEWS) == [NEWS_TEXT]
    assert ("Gestione ProdTrelv - Apertura pacco zip con comando: "
            + command("bilancio.zip", station.work_folder_name,
                      share=SETUP_ON_SHARE.replace("Lumo", "Lumo Società"))) in station.texts()


def test_what_a_pack_holds_outside_the_setup_folder_is_not_copied(station):
    put_pack(station, "bilancio.zip", {"dentro.txt": b"1"},
             outside={"prg/etc/fuori.txt": b"2", "fuori.txt": b"3"})
    station.start()
    assert content_of(station, "dentro.txt") == [b"1"]
    assert not (station.server / "prg/etc/fuori.txt").exists()
    assert not (station.server / "fuori.txt").exists()
    # It stays in the work folder; only "prg" is removed there.
    left = station.work_folder / "fuori.txt"
    assert left.read_bytes() == b"3"
    left.unlink()


def test_what_an_earlier_start_left_in_the_work_folder_goes(station):
    old = station.work_folder / "prg/com/setup/aggdovra/vecchio.txt"
    old.parent.mkdir(parents=True)
    old.write_bytes(b"1")
    station.start()
    assert not (station.work_folder / "prg").exists()
    assert not (station.setups / "vecchio.txt").exists()


# --- Packs that cannot be opened

def cut_short(content):
    return content[:len(content) * 2 // 3]


def one_file_damaged(content):
    """The content of the first file has a wrong byte; all the rest is good."""
    damaged = bytearray(content)
    # Behind the header of the first file and its name.
    start = 30 + damaged[26] + 256 * damaged[27] + damaged[28] + 256 * damaged[29]
    damaged[start + 20] ^= 0xFF
    return bytes(damaged)


def empty(_content):
    return b""


def no_pack(_content):
    return b"Non e' un pacco"


@pytest.mark.parametrize("damage", [cut_short, one_file_damaged, empty, no_pack])
def test_a_damaged_pack_is_told_once_and_kept_and_nothing_of_it_reaches_the_share(station, damage):
    content = {f"{SETUP}/primo.txt": os.urandom(3000), f"{SETUP}/zb.ini": b"[Setup01]\r\n",
               f"{SETUP}/ultimo.txt": os.urandom(3000)}
    (station.setups / "a.zip").write_bytes(damage(packs.zip_bytes(content)))
    put_pack(station, "b.zip", {"buono.txt": b"1"})
    before = content_of(station, "a.zip", "zb.ini")
    run = station.run(f"{INTEGRATED} MVBIL")
    assert shown(run) == [failure_box(station, "a.zip")]
    assert content_of(station, "a.zip", "zb.ini", "primo.txt", "ultimo.txt") == [*before, None, None]
    # The next pack is opened, and the start goes on.
    assert content_of(station, "buono.txt") == [b"1"]
    assert lines_of_packs(station) == [opened(station, "a.zip")[0], *opened(station, "b.zip")]
    assert station.texts()[-2] == UPDATED_ALL
    station.started("bilancio.exe")


def test_a_damaged_pack_is_told_at_every_start_until_it_is_replaced(station):
    (station.setups / "a.zip").write_bytes(b"Non e' un pacco")
    for _ in range(2):
        assert shown(station.run(f"{INTEGRATED} MVBIL")) == [failure_box(station, "a.zip")]
    put_pack(station, "a.zip", {"buono.txt": b"1"})
    station.start()
    assert content_of(station, "a.zip", "buono.txt") == [None, b"1"]


def test_without_7_zip_beside_the_manager_the_command_is_reported_and_told(station):
    (station.manager_folder / "7z.exe").unlink()
    put_pack(station, "a.zip", {"nota.txt": b"1"})
    run = station.run(f"{INTEGRATED} MVBIL")
    line = command("a.zip", station.work_folder_name)
    assert shown(run) == [("Execute", "modLibrary", f"Errore in esecuzione programma: {line}"),
                          failure_box(station, "a.zip")]
    assert (station.setups / "a.zip").exists()
    assert not (station.setups / "nota.txt").exists()
    station.started("bilancio.exe")


def test_7_zip_without_its_library_counts_as_failed(station):
    (station.manager_folder / "7z.dll").unlink()
    put_pack(station, "a.zip", {"nota.txt": b"1"})
    assert shown(station.run(f"{INTEGRATED} MVBIL")) == [failure_box(station, "a.zip")]
    assert (station.setups / "a.zip").exists()
    station.started("bilancio.exe")


def test_7_zip_is_looked_for_nowhere_else(station):
    """Neither in the current folder, nor in the system folder."""
    (station.manager_folder / "7z.exe").unlink()
    (station.disk / "Lumo/Altrove").mkdir()
    shutil.copy(station.prefix.build.seven_zip["7z.exe"], station.disk / "Lumo/Altrove")
    put_pack(station, "a.zip", {"nota.txt": b"1"})
    station.run(f"{INTEGRATED} MVBIL", folder="C:\\Lumo\\Altrove")
    assert (station.setups / "a.zip").exists()


def test_names_that_lead_out_of_the_work_folder_stay_inside(station):
    put_pack(station, "a.zip", {"buono.txt": b"5"}, outside={
        "../../fuori1.txt": b"1", "/fuori2.txt": b"2", f"{SETUP}/../../fuori3.txt": b"3",
        "C:/fuori4.txt": b"4"})
    station.start()
    found = {*station.disk.rglob("fuori*"), *station.share.rglob("fuori*")}
    assert [file for file in found if station.work_folder not in file.parents
            and file.parent != station.setups] == []
    assert content_of(station, "buono.txt") == [b"5"]
    for file in found:
        file.unlink()


# --- Targets that refuse

@pytest.fixture
def next_start_goes_on(station):
    """Whatever a start met, the next one finishes and clears what was left."""
    yield
    station.log.unlink()
    station.start()
    assert station.texts()[-2] == UPDATED_ALL
    assert not (station.work_folder / "prg").exists()


def test_a_program_that_runs_from_the_share_keeps_its_file(station, next_start_goes_on):
    """The copy's failure ends the first run and with it the update; the program starts."""
    program = station.setups / "waiter.exe"
    station.put_test_program("waiter", program)
    source = program.read_bytes()
    put_pack(station, "a.zip", {"waiter.exe": source + b"nuovo"})
    running = station.prefix.start(f"{SETUP_ON_SHARE}\\waiter.exe", "S:\\running", "S:\\go-on")
    try:
        assert windows.wait_for_file(station.share / "running")
        run = station.run(f"{INTEGRATED} MVBIL")
    finally:
        (station.share / "go-on").touch()
        assert running.wait(timeout=30) == 0
    assert shown(run) == []
    assert not (station.setups / "a.zip").exists()
    (failure,) = [text for text in station.texts()
                  if text.startswith("Gestione ProdTrelv - Comando non eseguito: ")]
    assert "waiter.exe" in failure
    assert UPDATED_ALL not in station.texts()
    station.started("bilancio.exe")
    assert program.read_bytes() == source


def test_a_read_only_file_on_the_share_is_overwritten_as_any_other(station):
    target = station.setups / "protetto.txt"
    target.write_bytes(b"vecchio")
    target.chmod(0o444)
    put_pack(station, "a.zip", {"protetto.txt": b"nuovo"})
    station.start()
    assert target.read_bytes() == b"nuovo"


# --- Other targets

def test_a_target_that_is_the_work_folder_keeps_the_unpacked_tree_there(station):
    work = station.work_folder_name
    put_pack(station, "a.zip", {"nota.txt": b"1"})
    station.run(f"INTEGRATEDRUN S:\\Lumo {work.upper()} MVBIL")
    assert lines_of_packs(station) == opened(station, "a.zip")
    assert not (station.setups / "nota.txt").exists()
    assert (station.work_folder / SETUP / "nota.txt").read_bytes() == b"1"
    # Nothing was copied onto itself.
    assert UPDATED_ALL in station.texts()


def test_the_setup_folder_of_the_target_is_made(station):
    put_pack(station, "a.zip", {"nota.txt": b"1"})
    station.run("INTEGRATEDRUN S:\\Lumo S:\\Nuovo MVBIL")
    assert (station.share / "Nuovo" / SETUP / "nota.txt").read_bytes() == b"1"
    assert station.texts_after(opened(station, "a.zip")[-1])[:5] == [
        "Creazione path avvenuta correttamente:S:\\Nuovo" + below
        for below in ("", "\\prg", "\\prg\\com", "\\prg\\com\\setup", "\\prg\\com\\setup\\aggdovra")]


def test_the_wait_form_shows_while_the_content_is_copied_and_goes(station):
    # Enough files for the copy to be seen.
    put_pack(station, "a.zip", {f"molti/{number}.txt": b"x" * 2000 for number in range(300)})
    run = station.start()
    assert len(list((station.setups / "molti").iterdir())) == 300
    assert [(form.title, form.text) for form in run.notices] == [
        ("TrelvManager", "Attendere prego: copia dei file in corso...")]


def test_packs_are_opened_by_the_client_copy_on_the_share_too(station):
    station.prefix.build.put_release(station.client_copy)
    station.manager = installation.CLIENT_COPY + "\\TrelvManager.exe"
    with_zipfile(station, bilancio_update(station))
    station.start()
    assert ("Gestione ProdTrelv - Apertura pacco zip con comando: "
            + command("bilancio.zip", station.work_folder_name,
                      manager=installation.CLIENT_COPY)) in station.texts()
    assert station.versions()["ZB"] == (VERSION, VERSION)
