"""trelv medium, as tools/medium calls it: the documented description gives the documented files, the same bytes again and again,
and a bad description one line that tells where."""

import functools
import io
import os
import pathlib
import re
import subprocess
import tarfile
import time
import zipfile

import pytest

PROJECT = pathlib.Path(__file__).resolve().parents[2]
DOCUMENT = (PROJECT / "docs/medium.md").read_text(encoding="utf-8")
EXAMPLES = dict(re.findall(r"^```\w+ file=(\S+)\n(.*?)^```$", DOCUMENT, re.MULTILINE | re.DOTALL))
DESCRIPTION = EXAMPLES["supporto.txt"]
SETUP = "prg/com/setup/aggdovra"
DATE = 1795255200  # 2026-11-21 10:00:00
MANAGER_DATE = 1795197600  # 2026-11-20 18:00:00
OLD_PACK_DATE = 1781515800  # 2026-06-15 09:30:00


RELEASE = ("TrelvManager.exe", "qalbunex.exe", "7z.exe", "7z.dll", "images/product.jpg")
TREES = {"nerio": "NERIO", "bilancio-09.93": "ZB", "bilancio-09.94": "ZB", "modelli": "ZM"}


PROGRAMS = {"NERIO": ("NERIO", "VIRADO"), "ZB": ("MVBIL", "MVCON", "MVICAD", "MVPERS"), "ZM": ("ZM",)}


def catalogue(product):
    return (f"[prod01]\r\nid={product}\r\nname={product}\r\n"
            f"conf=prg\\com\\setup\\aggdovra\\{product.lower()}.ini\r\n").encode()


def configuration(tree):
    return ("[Setup01]\r\nversion=01.00.00.00\r\n"
            f"Server01=%PATHSETUP%\\prg\\com\\setup\\aggdovra\\{tree}\\setup.exe -s\r\n"
            "[Exec]\r\n" + "".join(f"{code}=%PATHWORK%\\mv\\{tree}\\{code}.exe\r\n"
                                     for code in PROGRAMS[TREES[tree]]) +
            f"[Remove]\r\nServer01=%PATHWORK%\\mv\\{tree}\\togli.exe -s\r\n").encode()


def put(folder, files):
    for name, content in files.items():
        (folder / name).parent.mkdir(parents=True, exist_ok=True)
        (folder / name).write_bytes(content)


@pytest.fixture
def sources(tmp_path):
    """The documented description with all that it names beside it."""
    folder = tmp_path / "sources"
    put(folder, {"supporto.txt": DESCRIPTION.encode(), "kodamuri.pdf": b"manual",
                 "testi/leggimi.txt": b"text"})
    put(folder / "release", {name: name.encode() for name in RELEASE})
    for tree, product in TREES.items():
        put(folder / tree, {"agdvcomp.ini": catalogue(product),
                            f"{product.lower()}.ini": configuration(tree), f"{tree}/setup.exe": tree.encode()})
    put(folder / "tabelle", {"2025/tabelle/a.txt": b"2025", "2026/tabelle/a.txt": b"2026"})
    return folder


@functools.cache
def trelv():
    """The program, made ready once."""
    done = subprocess.run([PROJECT / "tools/trelv", "--path"], check=True, capture_output=True, text=True)
    return done.stdout.strip()


def run(*words, **environment):
    return subprocess.run([trelv(), "medium", *words], capture_output=True, text=True,
                          check=False, env={**os.environ, **environment})


def build(sources, output, **environment):
    done = run(sources / "supporto.txt", output, **environment)
    assert done.returncode == 0, done.stderr + done.stdout
    return output


def fault(sources, text):
    """What is said of a description, without the folder of its sources; nothing is built."""
    (sources / "supporto.txt").write_text(text, encoding="utf-8")
    output = sources.parent / "medium"
    done = run(sources / "supporto.txt", output)
    assert done.returncode == 2 and not done.stdout and done.stderr.count("\n") == 1
    assert list(sources.parent.iterdir()) == [sources]
    return done.stderr.strip().removeprefix("trelv: ").replace(str(sources) + "/", "")


def changed(old, new):
    assert DESCRIPTION.count(old) >= 1, old
    return DESCRIPTION.replace(old, new, 1)


def line_of(text, part):
    return next(number for number, line in enumerate(text.splitlines(), 1) if part in line)


def files_of(folder):
    return {path.relative_to(folder).as_posix(): (path.read_bytes(), int(path.stat().st_mtime))
            for path in folder.rglob("*") if path.is_file()}


def unzipped(content):
    with zipfile.ZipFile(io.BytesIO(content)) as archive:
        return {name: archive.read(name) for name in archive.namelist()}


def untarred(content):
    with tarfile.open(fileobj=io.BytesIO(content), mode="r:gz") as archive:
        return {entry.name: archive.extractfile(entry).read() for entry in archive if entry.isfile()}


def test_the_documented_description_gives_the_documented_files(sources, tmp_path):
    medium = build(sources, tmp_path / "medium")
    for name in ("Setup.cmf", "Versione.ver", "Products.cmf"):
        assert (medium / name).read_bytes().decode("cp1252") == EXAMPLES[name].replace("\n", "\r\n")


def test_everything_lies_where_the_program_looks_for_it(sources, tmp_path):
    medium = build(sources, tmp_path / "medium")
    assert sorted(files_of(medium)) == sorted([
        "Setup.cmf", "Versione.ver", "Products.cmf", "prodotti/docs/kodamuri.pdf",
        *(f"prodotti/manager/{name}" for name in RELEASE),
        "prodotti/docs/leggimi.txt", "prodotti/packs/nerio/nerio-03.20.30.00.zip",
        "prodotti/packs/bilancio/bilancio-09.93.00.00.zip",
        "prodotti/packs/bilancio/bilancio-09.94.00.00.zip",
        "prodotti/packs/modelli/zeltomodelli-06.50.30.00.zip"])


def test_a_pack_of_one_tree_has_three_archives_of_its_name(sources, tmp_path):
    medium = build(sources, tmp_path / "medium")
    gz_packs = unzipped((medium / "prodotti/packs/nerio/nerio-03.20.30.00.zip").read_bytes())
    assert list(gz_packs) == ["nerio-03.20.30.00.gz"]
    zip_packs = untarred(gz_packs["nerio-03.20.30.00.gz"])
    assert list(zip_packs) == [f"{SETUP}/nerio-03.20.30.00.zip"]
    assert unzipped(zip_packs[f"{SETUP}/nerio-03.20.30.00.zip"]) == {
        f"{SETUP}/agdvcomp.ini": catalogue("NERIO"), f"{SETUP}/nerio.ini": configuration("nerio"),
        f"{SETUP}/nerio/setup.exe": b"nerio"}


def test_a_pack_may_hold_several_archives(sources, tmp_path):
    medium = build(sources, tmp_path / "medium")
    gz_packs = unzipped((medium / "prodotti/packs/bilancio/bilancio-09.94.00.00.zip").read_bytes())
    assert list(gz_packs) == ["programma.gz", "tabelle.gz"]
    tables = untarred(gz_packs["tabelle.gz"])
    assert {name: unzipped(content) for name, content in tables.items()} == {
        f"{SETUP}/tabelle-2025.zip": {f"{SETUP}/tabelle/a.txt": b"2025"},
        f"{SETUP}/tabelle-2026.zip": {f"{SETUP}/tabelle/a.txt": b"2026"}}


def test_dates_come_from_the_description(sources, tmp_path):
    medium = build(sources, tmp_path / "medium")
    dates = {name: date for name, (_, date) in files_of(medium).items()}
    assert {dates.pop(f"prodotti/manager/{name}") for name in RELEASE} == {MANAGER_DATE}
    assert dates.pop("prodotti/packs/bilancio/bilancio-09.93.00.00.zip") == OLD_PACK_DATE
    assert set(dates.values()) == {DATE}
    assert {int(path.stat().st_mtime) for path in [medium, *medium.rglob("*")] if path.is_dir()} == {DATE}
    pack = zipfile.ZipFile(medium / "prodotti/packs/bilancio/bilancio-09.93.00.00.zip")
    assert [entry.date_time for entry in pack.infolist()] == [(2026, 6, 15, 9, 30, 0)]
    content = pack.read("bilancio-09.93.00.00.gz")
    assert int.from_bytes(content[4:8], "little") == OLD_PACK_DATE
    with tarfile.open(fileobj=io.BytesIO(content), mode="r:gz") as archive:
        assert {entry.mtime for entry in archive} == {OLD_PACK_DATE}


def test_the_same_input_gives_the_same_bytes_elsewhere_and_later(sources, tmp_path):
    first = files_of(build(sources, tmp_path / "first"))
    elsewhere = tmp_path / "elsewhere"
    # Written in another order, at another time, read in another zone and language.
    for path in sorted(sources.rglob("*"), reverse=True):
        if path.is_file():
            put(elsewhere, {path.relative_to(sources).as_posix(): path.read_bytes()})
    time.sleep(1.1)
    second = files_of(build(elsewhere, tmp_path / "second", TZ="Asia/Tokyo", LC_ALL="C"))
    assert first == second


def test_a_medium_is_replaced_whole(sources, tmp_path):
    medium = build(sources, tmp_path / "medium")
    (medium / "prodotti/packs/nerio/old.zip").write_bytes(b"old")
    before = files_of(medium)
    after = files_of(build(sources, medium))
    assert set(before) - set(after) == {"prodotti/packs/nerio/old.zip"}


def test_a_folder_that_is_no_medium_is_left_alone(sources, tmp_path):
    output = tmp_path / "letters"
    put(output, {"dear.txt": b"dear"})
    done = run(sources / "supporto.txt", output)
    assert (done.returncode, done.stderr) == (2, f"trelv: {output}: c'è già e non è un supporto\n")
    assert files_of(output)["dear.txt"][0] == b"dear"


def test_the_documented_message_is_the_real_one(sources, tmp_path):
    (sources / "supporto.txt").write_text(changed("product = ZB", "product = PIPPO"), encoding="utf-8")
    done = run(sources / "supporto.txt", tmp_path / "medium")
    told = re.search(r"^```text message\n(.*\n)```$", DOCUMENT, re.MULTILINE)[1]
    assert (done.returncode, done.stderr.replace(str(sources) + "/", "")) == (2, told)


BAD = {
    "a section that there is not": ("[list 2]", "[menu 2]", "sezione sconosciuta [menu 2]: ci sono "
                                    "medium, products, documents, list, entry, pack"),
    "a fifth list": ("[list 2]", "[list 5]", "gli elenchi vanno da [list 1] a [list 4]"),
    "a list without number": ("[list 2]", "[list]", "la sezione [list] vuole un nome"),
    "a name where none belongs": ("[entry]", "[entry 1]", "la sezione [entry] non ha un nome"),
    "an unknown key": ("folder = nerio", "cartella = nerio", "la sezione [entry] non ha una chiave cartella"),
    "a key twice": ("product = NERIO", "folder = nerio", "folder compare due volte nella sua sezione"),
    "a key without value": ("caption = Nerio", "caption =", "caption non ha un valore"),
    "a line that is nothing": ("caption = Nerio", "Nerio", "né una sezione né chiave = valore"),
    "a day that there is not": ("date = 2026-06-15", "date = 2026-06-31",
                                "date: una data è AAAA-MM-GG o AAAA-MM-GG HH:MM:SS"),
    "a year that zip does not know": ("date = 2026-06-15", "date = 1979-06-15",
                                      "date: anni da 1980 a 2107, secondi pari"),
    "an odd second": ("09:30:00", "09:30:01", "date: anni da 1980 a 2107, secondi pari"),
    "neither yes nor no": ("show-integration-path = yes", "show-integration-path = true",
                           "show-integration-path: yes o no"),
    "a letter outside the code page": ("caption = Contabilità", "caption = Contabilità Ω",
                                       "caption: Ω non è nel codice 1252"),
    "a control character": ("version = 2026.2", "version = 2026\x1a.2", "version: un carattere di controllo"),
    "the mark of the option in a text": ("version = 2026.2", "version = %SHOW_PATH_INTEGRATION%",
                                         "version: %SHOW_PATH_INTEGRATION% sta per "
                                         "show-integration-path"),
    "a bar in a caption": ("caption = Nerio", "caption = Nerio|Luda",
                           "caption: | separa i valori nei file del supporto"),
    "a bar in a command": ("command = notepad.exe", "command = a | b",
                           "command: | separa i valori nei file del supporto"),
    "an unknown product in the list of products": ("ZM = Zeltomodelli", "XY = Zeltomodelli",
                                                   "products: XY non è uno di NERIO LUDA ZB Q2 ZM"),
    "a folder name that leads elsewhere": ("folder = nerio", "folder = ..\\nerio",
                                           "folder: ..\\nerio non è un nome di file per Windows "
                                           "(carattere che Windows non ammette)"),
    "a document name of a device": ("leggimi.txt = testi", "con.txt = testi",
                                    "documents: con.txt non è un nome di file per Windows "
                                    "(nome di un dispositivo)"),
    "a document that is not there": ("testi/leggimi.txt", "testi/altro.txt",
                                     "leggimi.txt: testi/altro.txt non è un file"),
    "a tree that is not there": ("tree = nerio", "tree = niente", "tree: niente non è una cartella"),
    "a manager that is not there": ("manager = release", "manager = testi",
                                    "manager: nella cartella manca TrelvManager.exe"),
    "a pack that is not described": ("pack = nerio-03.20.30.00", "pack = nerio-03.21.00.00",
                                     "manca la sezione [pack nerio-03.21.00.00]"),
    "a folder of two entries": ("folder = modelli", "folder = NERIO",
                                "folder: NERIO ha già una voce"),
}


@pytest.mark.parametrize("name", BAD)
def test_a_bad_description_is_told_with_its_line(sources, name):
    old, new, told = BAD[name]
    line = DESCRIPTION[:DESCRIPTION.index(old)].count("\n") + 1
    assert fault(sources, changed(old, new)) == f"supporto.txt:{line}: {told}"


def test_a_second_head_is_told(sources):
    text = DESCRIPTION + DESCRIPTION.split("\n\n")[0] + "\n"
    line = DESCRIPTION.count("\n") + 1
    assert fault(sources, text) == f"supporto.txt:{line}: la sezione [medium] compare due volte"


def test_what_is_missing_is_told_with_the_line_of_its_section(sources):
    text = changed("version = 2026.2\n", "")
    assert fault(sources, text) == "supporto.txt:1: la sezione [medium] non ha version"
    text = changed("folder = nerio\n", "")
    assert fault(sources, text) == (f"supporto.txt:{line_of(text, 'caption = Nerio') - 1}: "
                                    "voce Nerio: manca folder o pack")
    assert fault(sources, "# nothing\n") == "supporto.txt: manca la sezione [medium]"
    assert fault(sources, "date = 1\n") == "supporto.txt:1: una riga prima della prima sezione"


def test_packs_that_would_lose_something_are_refused(sources):
    text = changed("pack = nerio-03.20.30.00\n", "")
    line = line_of(text, "caption = Nerio") - 1
    assert fault(sources, text) == f"supporto.txt:{line}: voce Nerio: manca folder o pack"
    text = changed("command = notepad", "pack = nerio-03.20.30.00\ncommand = notepad") + "[pack di troppo]\ntree = nerio\n"
    line = line_of(text, "[pack di troppo]")
    assert fault(sources, text) == f"supporto.txt:{line}: il pacco di troppo non appartiene a nessuna voce"
    text = changed("gz = tabelle", "gz = bilancio-09.93.00.00")
    line = line_of(text, "caption = Bilancio") - 1
    assert fault(sources, text) == (f"supporto.txt:{line}: voce Bilancio: "
                                    "bilancio-09.93.00.00.gz compare due volte")
    text = changed("tree = tabelle/2026\n", "tree = tabelle/2026\ntree = tabelle/2025\n")
    line = line_of(text, "tree = tabelle/2026") + 1
    assert fault(sources, text) == (f"supporto.txt:{line}: tree: tabelle/a.txt è già in "
                                    "tabelle-2026.zip")
    text = changed("tree = tabelle/2026\n", "")
    line = line_of(text, "[pack bilancio-09.94.00.00]")
    assert fault(sources, text) == (f"supporto.txt:{line}: pacco bilancio-09.94.00.00: "
                                    "tabelle.gz non contiene nulla")


def test_trees_that_windows_cannot_have_are_refused(sources):
    line = line_of(DESCRIPTION, "tree = nerio")
    tree = sources / "nerio"
    put(tree, {"AGDVCOMP.INI": b""})
    assert fault(sources, DESCRIPTION) == (f"supporto.txt:{line}: tree: AGDVCOMP.INI e "
                                           "agdvcomp.ini sono un solo nome per Windows")
    (tree / "AGDVCOMP.INI").unlink()
    put(tree, {"aux.dll": b""})
    assert "nerio/aux.dll ha un nome che Windows non ammette" in fault(sources, DESCRIPTION)
    (tree / "aux.dll").unlink()
    (tree / "link").symlink_to("agdvcomp.ini")
    assert "nerio/link non è né un file né una cartella" in fault(sources, DESCRIPTION)
    (tree / "link").unlink()
    (tree / "agdvcomp.ini").unlink()
    line = line_of(DESCRIPTION, "[pack nerio")
    assert fault(sources, DESCRIPTION) == (f"supporto.txt:{line}: pacco nerio-03.20.30.00: "
                                           "nessun albero ha agdvcomp.ini alla radice")


def test_a_description_that_cannot_be_read_is_told(sources, tmp_path):
    (sources / "supporto.txt").write_bytes(b"[medium]\nheader = Contabilit\xe0\n")
    done = run(sources / "supporto.txt", tmp_path / "medium")
    assert (done.returncode, done.stderr) == (2, f"trelv: {sources / 'supporto.txt'}:2: non è in UTF-8\n")
    done = run(sources / "niente.txt", tmp_path / "medium")
    assert (done.returncode, done.stderr) == (
        2, f"trelv: {sources / 'niente.txt'}: Impossibile trovare il file\n")


def test_wrong_arguments_are_answered_with_the_usage(sources):
    for words in ([], [sources / "supporto.txt"], ["--quick", "a"]):
        done = run(*words)
        assert done.returncode == 64
        assert done.stderr.startswith("trelv: ") and done.stderr.endswith("(trelv --help)\n")
    assert "DESCRIPTION" in run("--help").stdout


def test_the_tool_is_that_call(sources, tmp_path):
    done = subprocess.run([PROJECT / "tools/medium", sources / "supporto.txt", tmp_path / "a.iso", "--iso"],
                          check=True, capture_output=True, text=True)
    assert done.stdout.endswith(f"Pronto: {tmp_path}/a.iso\n")
    assert subprocess.run([PROJECT / "tools/medium"], check=False, capture_output=True).returncode == 64


def test_a_medium_with_a_trap_is_told_and_stays_away(sources, tmp_path):
    (sources / "nerio/nerio.ini").write_bytes(
        configuration("nerio").replace(b"version=01.00.00.00\r\n", b""))
    done = run(sources / "supporto.txt", tmp_path / "medium")
    assert done.returncode == 1 and not done.stderr
    assert (f"{tmp_path}/medium/prodotti/packs/nerio/nerio-03.20.30.00.zip!nerio-03.20.30.00.gz!"
            in done.stdout) and "TK201" in done.stdout
    assert list(tmp_path.iterdir()) == [sources]
    done = run(sources / "supporto.txt", tmp_path / "medium", "--ignore", "TK201")
    assert done.returncode == 0 and "TK201" not in done.stdout
    assert (tmp_path / "medium/Setup.cmf").exists()


def test_the_demonstration_description_names_what_the_demonstration_lays_out():
    text = (PROJECT / "demo/medium.txt").read_text(encoding="utf-8")
    trees = re.findall(r"^tree = (\S+)$", text, re.MULTILINE)
    assert len(trees) == 6
    assert len(set(re.findall(r"^product = (\w+)$", text, re.MULTILINE))) == 5
