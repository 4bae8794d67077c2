"""trelv pack and trelv medium --iso on real files: archives that other readers take, the same bytes
whatever zone, language and day, and a publication on a plain folder."""

import os
import pathlib
import struct
import subprocess
import tarfile
import time
import zipfile

import pytest

PROJECT = pathlib.Path(__file__).resolve().parents[2]
SETUP = "prg/com/setup/aggdovra"
CATALOGUE = b"[prod01]\r\nid=ZB\r\nname=Bilancio\r\nconf=prg\\com\\setup\\aggdovra\\zb.ini\r\n"
CONFIGURATION = (b"[Setup01]\r\nversion=09.95.00.00\r\n"
                 b"Server01=\"%PATHSETUP%\\prg\\com\\setup\\aggdovra\\bilancio\\setup.exe\" -s\r\n"
                 b"[Exec]\r\nMVBIL=%PATHWORK%\\mv\\bilancio\\bilancio.exe\r\n"
                 b"[Remove]\r\nServer01=%PATHWORK%\\mv\\bilancio\\togli.exe -s\r\n")
TREE = {"agdvcomp.ini": CATALOGUE, "zb.ini": CONFIGURATION, "bilancio/setup.exe": b"x" * 70000,
        "bilancio/Novità €.txt": "perché".encode()}
PICTURES = ("product", "server", "standard", "integrated", "update")


@pytest.fixture(scope="module")
def trelv():
    done = subprocess.run([PROJECT / "tools/trelv", "--path"], capture_output=True, text=True, check=True)
    return done.stdout.strip()


def put(folder, files):
    for name, content in files.items():
        (folder / name).parent.mkdir(parents=True, exist_ok=True)
        (folder / name).write_bytes(content)


@pytest.fixture
def sources(tmp_path):
    folder = tmp_path / "sources"
    put(folder / "bilancio", TREE)
    put(folder, {"pacchi.txt": b"[pack zb]\ndate = 2026-11-21 10:00:00\ntree = bilancio\n",
                 "kodamuri.pdf": b"manual"})
    put(folder / "release", {name: name.encode() for name in (
        "TrelvManager.exe", "qalbunex.exe", "7z.exe", "7z.dll", *(f"images/{n}.jpg" for n in PICTURES))})
    (folder / "supporto.txt").write_text(
        "[medium]\ndate = 2026-11-21 10:00:00\nversion = 2026.2\nheader = Prodotti %V%\n"
        "manager = release\nmanual = kodamuri.pdf\n[products]\nZB = Bilancio\n[list 1]\n[entry]\n"
        "caption = Bilancio\nfolder = bilancio\nproduct = ZB\npack = perché\n"
        "[pack perché]\ntree = bilancio\n", encoding="utf-8")
    return folder


def run(trelv, *words, **environment):
    done = subprocess.run([trelv, *map(str, words)], capture_output=True, text=True, check=False,
                          env={**os.environ, **environment})
    assert done.returncode == 0, done.stderr + done.stdout
    return done.stdout


def test_a_zip_pack_is_read_by_another_reader(trelv, sources, tmp_path):
    run(trelv, "pack", sources / "pacchi.txt", tmp_path / "zb.zip")
    with zipfile.ZipFile(tmp_path / "zb.zip") as pack:
        assert pack.testzip() is None
        assert {name: pack.read(name) for name in pack.namelist()} == {
            f"{SETUP}/{name}": content for name, content in TREE.items()}
        assert pack.namelist() == sorted(pack.namelist())
        assert {entry.date_time for entry in pack.infolist()} == {(2026, 11, 21, 10, 0, 0)}
    assert int((tmp_path / "zb.zip").stat().st_mtime) == 1795255200


def test_a_gz_pack_is_read_by_another_reader(trelv, sources, tmp_path):
    run(trelv, "pack", sources / "pacchi.txt", tmp_path / "zb.gz")
    with tarfile.open(tmp_path / "zb.gz") as pack:
        entries = {entry.name: entry for entry in pack}
    assert list(entries) == ["prg", "prg/com", "prg/com/setup", SETUP, f"{SETUP}/zb.zip"]
    assert {(entry.uid, entry.gid, entry.mtime) for entry in entries.values()} == {(0, 0, 1795255200)}
    assert entries[f"{SETUP}/zb.zip"].mode == 0o644


@pytest.mark.parametrize("name", ["zb.zip", "zb.gz", "supporto.iso"])
def test_the_same_input_gives_the_same_bytes_elsewhere_and_later(trelv, sources, tmp_path, name):
    def built(folder, **environment):
        words = (["medium", sources / "supporto.txt", folder / name, "--iso"] if name.endswith("iso")
                 else ["pack", sources / "pacchi.txt", folder / name])
        folder.mkdir()
        run(trelv, *words, **environment)
        return (folder / name).read_bytes()

    first = built(tmp_path / "first", TZ="Asia/Tokyo", LC_ALL="C")
    for path in sources.rglob("*"):
        os.utime(path, (1, 1))
    time.sleep(2.1)
    assert built(tmp_path / "second", TZ="America/New_York", LC_ALL="C.UTF-8") == first


def joliet(image):
    """{path: content} of an image, read by its Joliet names; dates as (year, …, second, zone)."""
    volume = next(image[at:at + 2048] for at in range(16 * 2048, 32 * 2048, 2048)
                  if image[at] == 2 and image[at + 88:at + 91] in (b"%/@", b"%/C", b"%/E"))
    files, dates = {}, set()

    def walk(record, path):
        start, size = struct.unpack("<I4xI", record[2:14])
        at = start * 2048
        while at < start * 2048 + size:
            length = image[at]
            if length == 0:
                at = (at // 2048 + 1) * 2048
                continue
            entry = image[at:at + length]
            name = entry[33:33 + entry[32]]
            dates.add(tuple(entry[18:25]))
            if name not in (b"\0", b"\1"):
                below = path + "/" + name.decode("utf-16-be").removesuffix(";1")
                if entry[25] & 2:
                    walk(entry, below)
                else:
                    first, count = struct.unpack("<I4xI", entry[2:14])
                    files[below[1:]] = image[first * 2048:first * 2048 + count]
            at += length

    walk(volume[156:190], "")
    return files, dates


def test_an_image_has_the_medium_under_its_names(trelv, sources, tmp_path):
    run(trelv, "medium", sources / "supporto.txt", tmp_path / "medium")
    run(trelv, "medium", sources / "supporto.txt", tmp_path / "medium.iso", "--iso")
    files, dates = joliet((tmp_path / "medium.iso").read_bytes())
    assert "prodotti/packs/bilancio/perché.zip" in files
    assert files == {path.relative_to(tmp_path / "medium").as_posix(): path.read_bytes()
                     for path in (tmp_path / "medium").rglob("*") if path.is_file()}
    assert dates == {(126, 11, 21, 10, 0, 0, 0)}


def test_a_pack_is_published_and_taken_back_on_a_plain_folder(trelv, sources, tmp_path):
    host = tmp_path / "Lumo"
    put(host, {f"{SETUP}/agdvcomp.ini": CATALOGUE, f"{SETUP}/zb.ini": CONFIGURATION,
               "prg/etc/ambver": b"1\r\n2\r\n", "prg/tempterm/x": b""})
    before = {path: path.read_bytes() for path in (host / SETUP).rglob("*") if path.is_file()}
    run(trelv, "pack", sources / "pacchi.txt", tmp_path / "zb.zip")
    run(trelv, "publish", host, tmp_path / "zb.zip")
    assert (host / SETUP / "zb.zip").read_bytes() == (tmp_path / "zb.zip").read_bytes()
    with zipfile.ZipFile(host / SETUP / "zb.zip") as pack:
        pack.extractall(host)
    (host / SETUP / "zb.zip").unlink()
    assert "Novità" in run(trelv, "publish", host, "--undo")
    assert {path: path.read_bytes() for path in (host / SETUP).rglob("*") if path.is_file()} == before
    assert not (host / SETUP / "bilancio").exists()
