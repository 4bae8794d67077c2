"""Starts of one user share the temporary folder that packs pass through: they take turns, a start
that is ended by force leaves nothing half, and nothing that it left reaches the share."""

import io
import stat
import subprocess
import threading
import time
import zipfile

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


def test_a_7_zip_whose_start_is_ended_unpacks_no_further(station):
    station.put_test_program("unpacker", station.manager_folder / "7z.exe")
    put_pack(station, "uno.zip", many_files("uno", 5))
    unpacked = station.work_folder / SETUP
    station.run(f"{INTEGRATED} MVBIL", kill_when=station.work_folder_name
                + "\\prg\\com\\setup\\aggdovra\\3.txt")
    found = len(list(unpacked.iterdir()))
    assert 3 < found < 100, "it was ended in the middle"
    time.sleep(1)
    assert len(list(unpacked.iterdir())) - found < 3
    assert (station.setups / "uno.zip").exists()


# --- Packs that are not given to 7-Zip

def put_protected(station, method):
    """A pack with a password, a.zip."""
    source = station.disk / "Lumo/Sorgente"
    (source / SETUP).mkdir(parents=True)
    (source / SETUP / "segreto.txt").write_bytes(b"1")
    done = station.prefix.run(MANAGER_FOLDER + "\\7z.exe",
                              f'a -tzip -mem={method} -psegreto "{SETUP_ON_SHARE}\\a.zip" prg',
                              folder="C:\\Lumo\\Sorgente")
    assert done.exit_code == 0


def hide_protection(station):
    """Only the headers before the contents say that a password is needed, as 7-Zip goes by."""
    pack = bytearray((station.setups / "a.zip").read_bytes())
    at = pack.find(b"PK\1\2")
    while at >= 0:
        pack[at + 8] &= 0xFE
        at = pack.find(b"PK\1\2", at + 1)
    (station.setups / "a.zip").write_bytes(pack)


def assert_a_is_kept_and_b_arrives(station):
    put_pack(station, "b.zip", many_files("uno", 5))
    run = station.run(f"{INTEGRATED} MVBIL")
    assert [box.text for box in run.boxes] == [
        f'Errore in esecuzione comando: "{MANAGER_FOLDER}\\7z.exe" x -y -o"{station.work_folder_name}" '
        f'"{SETUP_ON_SHARE}\\a.zip"']
    assert (station.setups / "a.zip").exists()
    assert not (station.setups / "segreto.txt").exists()
    assert arrived(station, many_files("uno", 5))
    station.started("bilancio.exe")


@pytest.mark.parametrize("method", ["ZipCrypto", "AES256"])
@pytest.mark.parametrize("change", [lambda station: None, hide_protection], ids=["told", "hidden"])
def test_a_pack_with_a_password_is_told_and_kept_and_does_not_wait_for_it(station, method, change):
    put_protected(station, method)
    change(station)
    assert_a_is_kept_and_b_arrives(station)


def test_a_pack_with_thousands_of_folders_in_each_other_is_told_and_kept(station):
    put_pack(station, "a.zip", {"a/" * 3000 + "x.txt": b"1"})
    assert_a_is_kept_and_b_arrives(station)


def test_a_pack_that_brings_a_link_to_another_folder_changes_nothing_there(station):
    other = station.disk / "Lumo/Altrove"
    other.mkdir()
    (other / "x.txt").write_bytes(b"1")
    (station.setups / "a.zip").write_bytes(
        packs_with_link({f"{SETUP}/y.txt": b"1"}, "prg/com/setup", "../../../Lumo/Altrove"))
    assert_a_is_kept_and_b_arrives(station)
    assert [path.name for path in other.iterdir()] == ["x.txt"]
    assert not (station.setups / "y.txt").exists()


def packs_with_link(files, link, target):
    """A zip pack whose first entry is a link, as Unix programs write it."""
    buffer = io.BytesIO()
    with zipfile.ZipFile(buffer, "w") as archive:
        entry = zipfile.ZipInfo(link)
        entry.create_system = 3
        entry.external_attr = (stat.S_IFLNK | 0o777) << 16
        archive.writestr(entry, target)
        for name, content in files.items():
            archive.writestr(name, content)
    return buffer.getvalue()


# --- Links

@pytest.fixture
def elsewhere(station):
    """A folder that looks as the work folder does while a pack is opened."""
    folder = station.disk / "Lumo/Altrove"
    (folder / SETUP).mkdir(parents=True)
    (folder / SETUP / "altro.zip").write_bytes(packs.zip_bytes({f"{SETUP}/altro.txt": b"1"}))
    (folder / SETUP / "altro.ini").write_bytes(b"1")
    return folder


def content(folder):
    return {path.relative_to(folder): path.read_bytes() for path in folder.rglob("*")
            if path.is_file() and "log" not in path.relative_to(folder).parts}


def put_link(station, level, elsewhere):
    """A link in the place of a level of the work folder's tree, to the same level elsewhere."""
    link = station.work_folder / level
    link.parent.mkdir(parents=True, exist_ok=True)
    link.symlink_to(elsewhere / level)
    return link


LEVELS = ["prg", "prg/com", "prg/com/setup", SETUP]


@pytest.mark.parametrize("level", LEVELS)
def test_a_single_installation_does_not_go_through_a_link(station, elsewhere, level):
    before = content(elsewhere)
    (station.manager_folder / "due.gz").write_bytes(packs.gz_bytes(
        {"due.zip": packs.zip_bytes({f"{SETUP}/due.txt": b"1"})}))
    link = put_link(station, level, elsewhere)
    try:
        run = station.run("SINGLEINSTALL ZB due.gz")
    finally:
        link.unlink()
    name = level.replace("/", "\\")
    assert [box.text.split("\r\n")[2] for box in run.boxes] == [
        f"(collegamento non seguito: {station.work_folder_name}\\{name})"]
    assert content(elsewhere) == before
    assert not (station.setups / "due.txt").exists()
    assert not (station.setups / "altro.txt").exists()


@pytest.mark.parametrize("level", LEVELS)
def test_a_start_removes_nothing_behind_a_link(station, elsewhere, level):
    """Windows removes the link itself and opens the pack; Wine cannot, and all stays closed."""
    before = content(elsewhere)
    put_pack(station, "uno.zip", many_files("uno", 5))
    link = put_link(station, level, elsewhere)
    try:
        run = station.run(f"{INTEGRATED} MVBIL")
    finally:
        link.unlink(missing_ok=True)
    assert run.boxes == []
    assert content(elsewhere) == before
    assert not (station.setups / "altro.txt").exists()
    assert (station.setups / "uno.zip").exists() != arrived(station, many_files("uno", 5))
    station.started("bilancio.exe")


def test_a_temporary_folder_that_is_a_link_is_not_worked_in(station, elsewhere):
    (station.disk / "Lumo/Temp").symlink_to(elsewhere)
    before = content(elsewhere)
    script = station.share / "avvio.bat"
    script.write_bytes(b"set TEMP=C:\\Lumo\\Temp\r\nset TMP=C:\\Lumo\\Temp\r\n"
                       + f'"{station.manager}" {INTEGRATED} MVBIL\r\n'.encode())
    put_pack(station, "uno.zip", many_files("uno", 5))
    done = subprocess.run(
        [windows.PROJECT / "tools/wine", "cmd", "/c", "S:\\avvio.bat"], check=False, timeout=90,
        env=station.prefix.environment, cwd=station.disk)
    assert done.returncode == 0
    assert (station.setups / "uno.zip").exists()
    assert content(elsewhere) == before
    log = "\n".join(windows.log_lines(elsewhere / "log/TrelvManager.log"))
    assert log.count("(collegamento non seguito: C:\\Lumo\\Temp)") == 1
    assert log.count("Cartella di lavoro") == 1


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
