"""trelv pack and trelv medium --iso on real files: archives that other readers take, the same bytes
whatever zone, language and day, and a publication on a plain folder."""

import json
import os
import pathlib
import random
import resource
import signal
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
WORK = ".costruzione.trelv"
# What only a machine that builds could bring in: zone, language, rights of new files.
ELSEWHERE = {"TZ": "America/New_York", "LC_ALL": "C.UTF-8", "LANG": "it_IT.UTF-8"}


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
    done = answer(trelv, *words, env={**os.environ, **environment})
    assert done.returncode == 0, done.stderr + done.stdout
    return done.stdout


def answer(trelv, *words, **options):
    return subprocess.run([trelv, *map(str, words)], capture_output=True, text=True, check=False,
                          **options)


def refusal(trelv, *words, **options):
    """The one line with which something could not be done."""
    done = answer(trelv, *words, **options)
    assert (done.returncode, done.stdout, done.stderr.count("\n")) == (2, "", 1), done
    return done.stderr.removeprefix("trelv: ").rstrip("\n")


def state(folder):
    """Everything in a folder: bytes, time and rights by path."""
    return {path.relative_to(folder).as_posix():
            (path.read_bytes() if path.is_file() else None, path.stat().st_mtime_ns,
             path.stat().st_mode) for path in [folder, *folder.rglob("*")]}


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
    assert built(tmp_path / "second", **ELSEWHERE) == first


def test_a_medium_is_the_same_with_its_times_and_rights_whoever_builds_it(trelv, sources, tmp_path):
    def built(name, umask, sources, **environment):
        before = os.umask(umask)
        try:
            run(trelv, "medium", sources / "supporto.txt", tmp_path / name, **environment)
        finally:
            os.umask(before)
        return state(tmp_path / name)

    first = built("first", 0o022, sources, TZ="Asia/Tokyo", LC_ALL="C")
    # The same files in another folder, made in another order, with other times and rights.
    other = tmp_path / "other"
    for path in sorted(sources.rglob("*"), reverse=True):
        if path.is_file():
            put(other, {path.relative_to(sources).as_posix(): path.read_bytes()})
            (other / path.relative_to(sources)).chmod(0o640)
            os.utime(other / path.relative_to(sources), (1, 1))
    assert built("second", 0o077, other, **ELSEWHERE) == first
    assert {stat for _, _, stat in first.values()} == {0o100644, 0o040755}


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


def test_an_image_keeps_accents_long_names_and_deep_levels(trelv, sources, tmp_path):
    # With the two folders above and its own name the eight levels of an image.
    deep = "/".join(f"livello {level}" for level in range(1, 5))
    names = ["Perché no, è così (àèéìòù €).txt", "n" * 65 + ".txt", "è" * 99 + ".txt",
             "CITTÀ/città di prova.txt", f"{deep}/in fondo.txt", ".nascosto", "senza estensione",
             "due.punti.qui.txt", "a b  c.txt", "UPPER.TXT"]
    put(sources / "release", {name: name.encode() for name in names})
    run(trelv, "medium", sources / "supporto.txt", tmp_path / "medium.iso", "--iso")
    files, _ = joliet((tmp_path / "medium.iso").read_bytes())
    for name in names:
        assert files[f"prodotti/manager/{name}"] == name.encode()


@pytest.mark.parametrize("name", [
    "n" * 100 + ".txt", "a;1.txt", "1/2/3/4/5/a.txt", f"{'1' * 100}/{'2' * 100}/{'3' * 30}.txt"],
    ids=["long", "semicolon", "deep", "long path"])
def test_a_name_that_no_image_keeps_is_told(trelv, sources, tmp_path, name):
    put(sources / "release", {name: b"x"})
    told = refusal(trelv, "medium", sources / "supporto.txt", tmp_path / "medium.iso", "--iso")
    assert told == (f"{tmp_path}/medium.iso/prodotti/manager/{name}: "
                    "un'immagine non può tenere questo nome")
    assert list(tmp_path.iterdir()) == [sources]
    # In a folder it may stand.
    run(trelv, "medium", sources / "supporto.txt", tmp_path / "medium")


# --- Where it goes

def builds(sources, tmp_path):
    """Each kind of building: (its words, its output)."""
    return [(["pack", sources / "pacchi.txt", tmp_path / "zb.zip"], tmp_path / "zb.zip"),
            (["pack", sources / "pacchi.txt", tmp_path / "zb.gz"], tmp_path / "zb.gz"),
            (["medium", sources / "supporto.txt", tmp_path / "medium"], tmp_path / "medium"),
            (["medium", sources / "supporto.txt", tmp_path / "m.iso", "--iso"], tmp_path / "m.iso")]


def test_paths_may_be_given_in_any_way(trelv, sources, tmp_path):
    (tmp_path / "packs").mkdir()
    for output in ("packs", "packs/", "./packs//", "new/packs/"):
        done = answer(trelv, "pack", "sources/pacchi.txt", output, "--json", cwd=tmp_path)
        assert done.returncode == 0, done.stderr
        assert json.loads(done.stdout)["result"]["written"] == [output.rstrip("/") + "/zb.zip"]
        assert (tmp_path / output / "zb.zip").is_file()
    done = answer(trelv, "medium", "./sources/supporto.txt", "medium/", cwd=tmp_path)
    assert done.returncode == 0 and done.stdout.endswith("Pronto: medium\n")
    done = answer(trelv, "medium", "supporto.txt", "../medium", cwd=sources)
    assert done.returncode == 0 and done.stdout.endswith("Pronto: ../medium\n")
    assert refusal(trelv, "medium", "../sources/supporto.txt", ".", cwd=tmp_path / "medium") == (
        ".: non finisce con il nome di ciò che si costruisce")


def test_the_document_has_the_contract_s_keys_and_nothing_stands_beside_it(trelv, sources, tmp_path):
    for words, output in builds(sources, tmp_path):
        done = answer(trelv, *words, "--json", "--quiet")
        assert (done.returncode, done.stderr) == (0, "")
        document = json.loads(done.stdout)
        assert list(document) == ["schema", "verb", "program", "findings", "result"]
        written = document["result"]["written"]
        assert written == ([str(output)] if words[0] == "pack" else str(output))


def test_wrong_usage_is_answered_as_such(trelv, sources, tmp_path):
    for words in (["pack"], ["medium", "a"], ["pack", "a", "b", "c"], ["pack", "a", "b.zip", "--iso"],
                  ["medium", "a", "b", "--ignore", "TK999"],
                  ["pack", sources / "pacchi.txt", tmp_path / "zb.ZIP"]):
        assert answer(trelv, *words).returncode == 64, words


def test_sources_are_never_built_into_nor_replaced(trelv, sources, tmp_path):
    (tmp_path / "link").symlink_to(sources / "bilancio")
    before = state(sources)
    for output in (sources / "bilancio/zb.zip", sources / "bilancio/deep/zb.zip", tmp_path / "link/zb.zip"):
        assert "sta in ciò da cui si costruisce" in refusal(trelv, "pack", sources / "pacchi.txt", output)
    for output in (sources / "release/medium", sources / "bilancio/medium"):
        assert "sta in ciò" in refusal(trelv, "medium", sources / "supporto.txt", output)
    for output in (sources / "supporto.txt", sources / "kodamuri.pdf"):
        refusal(trelv, "medium", sources / "supporto.txt", output, "--iso")
    # A medium that holds its own sources.
    (sources / "Setup.cmf").write_text("x")
    (sources / "prodotti").mkdir()
    assert "contiene ciò da cui si costruisce" in refusal(trelv, "medium", sources / "supporto.txt", sources)
    (sources / "prodotti").rmdir()
    (sources / "Setup.cmf").unlink()
    assert {name: facts[0] for name, facts in state(sources).items()} == {
        name: facts[0] for name, facts in before.items()}


def test_a_full_disk_keeps_what_stood_there(trelv, sources, tmp_path):
    (sources / "bilancio/bilancio/setup.exe").write_bytes(random.Random(1).randbytes(400000))

    def full():
        signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
        resource.setrlimit(resource.RLIMIT_FSIZE, (200000, 200000))

    for words, output in builds(sources, tmp_path):
        (sources / "bilancio/bilancio/setup.exe").write_bytes(b"x" * 70000)
        run(trelv, *words)
        before = state(output) if output.is_dir() else output.read_bytes()
        (sources / "bilancio/bilancio/setup.exe").write_bytes(random.Random(1).randbytes(400000))
        told = refusal(trelv, *words, preexec_fn=full, restore_signals=False)
        assert told.startswith(str(output)), told
        assert (state(output) if output.is_dir() else output.read_bytes()) == before
        assert not list(tmp_path.glob("*" + WORK + "*"))


def test_a_place_that_cannot_be_written_is_told(trelv, sources, tmp_path):
    (tmp_path / "file").write_text("x")
    assert refusal(trelv, "pack", sources / "pacchi.txt", tmp_path / "file/zb.zip").startswith(
        f"{tmp_path}/file/zb.zip: ")
    (tmp_path / "folder.iso").mkdir()
    assert refusal(trelv, "medium", sources / "supporto.txt", tmp_path / "folder.iso", "--iso") == (
        f"{tmp_path}/folder.iso: è una cartella")
    assert refusal(trelv, "medium", sources / "supporto.txt", tmp_path / "file") == (
        f"{tmp_path}/file: c'è già e non è un supporto")


def test_ended_by_force_at_any_time_leaves_the_old_or_the_new(trelv, sources, tmp_path):
    times = random.Random(7)
    for words, output in builds(sources, tmp_path):
        whole = {}
        for content in (b"old" * 30000, b"new" * 30000):
            (sources / "bilancio/bilancio/setup.exe").write_bytes(content)
            run(trelv, *words)
            whole[content] = state(output) if output.is_dir() else output.read_bytes()
        began = time.monotonic()
        run(trelv, *words)
        takes = time.monotonic() - began
        for _ in range(12):
            (sources / "bilancio/bilancio/setup.exe").write_bytes(times.choice(list(whole)))
            with subprocess.Popen([trelv, *map(str, words)], stdout=subprocess.DEVNULL) as building:
                time.sleep(takes * times.random())
                building.kill()
            assert (state(output) if output.is_dir() else output.read_bytes()) in whole.values()
        run(trelv, *words)
        assert not list(tmp_path.glob("*" + WORK + "*"))


def test_two_that_build_the_same_at_once_do_not_mix(trelv, sources, tmp_path):
    for words, output in builds(sources, tmp_path):
        run(trelv, *words)
        whole = state(output) if output.is_dir() else output.read_bytes()
        for _ in range(4):
            both = [subprocess.Popen([trelv, *map(str, words)], stdout=subprocess.DEVNULL,
                                     stderr=subprocess.PIPE, text=True) for _ in range(2)]
            told = [each.communicate()[1] for each in both]
            codes = [each.returncode for each in both]
            assert 0 in codes and set(codes) <= {0, 2}, told
            assert all(not text or "lo sta costruendo un altro programma" in text for text in told)
            assert (state(output) if output.is_dir() else output.read_bytes()) == whole
        assert not list(tmp_path.glob("*" + WORK + "*"))


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
