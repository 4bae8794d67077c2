"""Starts of one user share the temporary folder that packs pass through: they take turns, a start
that is ended by force leaves nothing half, and nothing that it left reaches the share."""

import subprocess
import threading
import time

import pytest

from conftest import INTEGRATED, MANAGER_FOLDER
import installation
import packs
import windows

SETUP = installation.SETUP_FOLDER
SETUP_ON_SHARE = "S:\\Lumo\\prg\\com\\setup\\aggdovra"

# Who takes turns may have to wait for a whole copy, on a slow machine for a minute.
LONGEST = 150

pytestmark = pytest.mark.usefixtures("seven_zip")


@pytest.fixture
def station(installed):
    """All products installed; nothing waits but what a test puts there."""
    return installed


def many_files(name, count=150):
    """Content of a pack by its paths below the set-up folder: set-ups, and what names them."""
    files = {f"{name}/{number}.bin": name.encode() * 500 for number in range(count)}
    return {**files, f"{name}.ini": b"[Setup01]\r\nversion=01.00\r\n"}


def put_pack(station, name, files):
    (station.setups / name).write_bytes(
        packs.zip_bytes({f"{SETUP}/{path}": content for path, content in files.items()}))


def arrived(station, files):
    return all((station.setups / path).exists() and (station.setups / path).read_bytes() == content
               for path, content in files.items())


def temporaries(station):
    return list(station.setups.rglob("*.tmp"))


# --- Two starts at once

@pytest.mark.parametrize("pause", [0, 0.3, 1])
def test_two_starts_of_one_user_lose_no_file_of_any_pack(station, pause):
    contents = {name: many_files(name, 60) for name in ("uno", "due", "tre")}
    for name, files in contents.items():
        put_pack(station, f"{name}.zip", files)
    second = station.prefix.start(station.manager, *INTEGRATED.split(), "MVBIL")
    time.sleep(pause)
    run = station.run(f"{INTEGRATED} MVBIL", limit=LONGEST)
    assert second.wait(timeout=LONGEST) == 0
    assert run.boxes == []
    for name, files in contents.items():
        assert arrived(station, files), name
        assert not (station.setups / f"{name}.zip").exists()
    assert temporaries(station) == []
    assert not (station.work_folder / "prg").exists()
    assert not (station.work_folder / "TrelvManager.lck").exists()


@pytest.mark.parametrize("pause", [0, 0.3])
def test_a_single_installation_beside_a_start_loses_nothing(station, pause):
    waits, delivered = many_files("uno", 100), many_files("due", 100)
    put_pack(station, "uno.zip", waits)
    (station.manager_folder / "due.gz").write_bytes(packs.gz_bytes(
        {"due.zip": packs.zip_bytes({f"{SETUP}/{path}": text for path, text in delivered.items()})}))
    start = station.prefix.start(station.manager, *INTEGRATED.split(), "MVBIL")
    time.sleep(pause)
    run = station.run("SINGLEINSTALL ZB due.gz", limit=LONGEST)
    assert start.wait(timeout=LONGEST) == 0
    assert [box.text for box in run.boxes] == [
        "Installazione completata correttamente del prodotto ZB in: S:\\LUMO"]
    assert arrived(station, waits)
    assert arrived(station, delivered)


def test_a_start_waits_for_whoever_has_the_work_folder_and_shows_nothing(station):
    """The mark is a file that somebody keeps open; one that stayed behind is taken."""
    put_pack(station, "uno.zip", many_files("uno", 5))
    (station.work_folder / "TrelvManager.lck").write_bytes(b"anna, ALTRA")
    holder = station.prefix.start(
        "Z:" + str(station.prefix.build.test_programs / "holder.exe").replace("/", "\\"),
        station.work_folder_name + "\\TrelvManager.lck", "S:\\holding", "S:\\go-on")
    assert windows.wait_for_file(station.share / "holding")
    runs = []
    start = threading.Thread(target=lambda: runs.append(station.run(f"{INTEGRATED} MVBIL")))
    start.start()
    time.sleep(2)
    assert (station.setups / "uno.zip").exists()
    (station.share / "go-on").touch()
    start.join(timeout=60)
    assert holder.wait(timeout=30) == 0
    assert runs[0].boxes == []
    assert arrived(station, many_files("uno", 5))
    assert not (station.work_folder / "TrelvManager.lck").exists()


# --- Starts that are ended by force

def test_a_start_that_is_ended_while_it_copies_leaves_whole_files_and_no_version(station):
    files = many_files("uno", 300)
    put_pack(station, "uno.zip", files)
    station.run(f"{INTEGRATED} MVBIL", kill_when=SETUP_ON_SHARE + "\\uno\\100.bin")
    found = {path for path in files if (station.setups / path).exists()}
    assert found != set(files), "it was ended too late"
    assert "uno.ini" not in found
    for path in found:
        assert (station.setups / path).read_bytes() == files[path], path
    # The next start takes away what was left; the pack is delivered again and arrives whole.
    assert station.run(f"{INTEGRATED} MVBIL").boxes == []
    assert temporaries(station) == []
    assert not (station.work_folder / "prg").exists()
    put_pack(station, "uno.zip", files)
    assert station.run(f"{INTEGRATED} MVBIL").boxes == []
    assert arrived(station, files)


def test_what_an_earlier_start_left_does_not_reach_the_share(station):
    left = station.work_folder / SETUP / "zb.ini"
    left.parent.mkdir(parents=True)
    left.write_bytes(b"[Setup01]\r\nversion=01.00\r\n")
    before = (station.setups / "zb.ini").read_bytes()
    put_pack(station, "uno.zip", many_files("uno", 5))
    assert station.run(f"{INTEGRATED} MVBIL").boxes == []
    assert arrived(station, many_files("uno", 5))
    assert (station.setups / "zb.ini").read_bytes() == before


def test_a_file_in_the_place_of_the_unpacked_tree_keeps_no_pack_closed(station):
    (station.work_folder / "prg").write_bytes(b"x")
    put_pack(station, "uno.zip", many_files("uno", 5))
    assert station.run(f"{INTEGRATED} MVBIL").boxes == []
    assert arrived(station, many_files("uno", 5))


# --- Packs that ask for a password

@pytest.mark.parametrize("method", ["ZipCrypto", "AES256"])
def test_a_pack_with_a_password_is_told_and_kept_and_does_not_wait_for_it(station, method):
    source = station.disk / "Lumo/Sorgente"
    (source / SETUP).mkdir(parents=True)
    (source / SETUP / "segreto.txt").write_bytes(b"1")
    done = station.prefix.run(MANAGER_FOLDER + "\\7z.exe",
                              f'a -tzip -mem={method} -psegreto "{SETUP_ON_SHARE}\\a.zip" prg',
                              folder="C:\\Lumo\\Sorgente")
    assert done.exit_code == 0
    put_pack(station, "b.zip", many_files("uno", 5))
    run = station.run(f"{INTEGRATED} MVBIL")
    assert [box.text for box in run.boxes] == [
        f'Errore in esecuzione comando: "{MANAGER_FOLDER}\\7z.exe" x -y -o"{station.work_folder_name}" '
        f'"{SETUP_ON_SHARE}\\a.zip"']
    assert (station.setups / "a.zip").exists()
    assert not (station.setups / "segreto.txt").exists()
    assert arrived(station, many_files("uno", 5))
    station.started("bilancio.exe")


# --- The work folder is the host's folder

def test_the_hosts_folder_as_temporary_folder_keeps_all_it_holds(station):
    """Its name is another one: the share's."""
    folder = station.prefix.folder / "dosdevices/unc/server"
    folder.mkdir(parents=True, exist_ok=True)
    if not (folder / "lumo").exists():
        (folder / "lumo").symlink_to(station.share)
    (station.server / "prg/applidir").mkdir(exist_ok=True)
    before = sorted(file for file in station.server.rglob("*") if file.is_file())
    script = station.share / "avvio.bat"
    script.write_bytes(b"set TEMP=\\\\server\\lumo\\Lumo\r\nset TMP=\\\\server\\lumo\\Lumo\r\n"
                       + f'"{station.manager}" {INTEGRATED} MVBIL\r\n'.encode())
    put_pack(station, "uno.zip", many_files("uno", 5))
    for _ in range(2):
        done = subprocess.run(
            [windows.PROJECT / "tools/wine", "cmd", "/c", "S:\\avvio.bat"], check=False, timeout=90,
            env=station.prefix.environment, cwd=station.disk)
        assert done.returncode == 0
    assert arrived(station, many_files("uno", 5))
    missing = [file for file in before if not file.exists()]
    assert missing == []
    log = "\n".join(windows.log_lines(station.server / "log/TrelvManager.log"))
    assert log.count("il suo contenuto non viene rimosso") == 2, "one line in each start"
