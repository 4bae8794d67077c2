"""tools/medium: the documented description gives the documented files, the same bytes again and again,
and a bad description one line that tells where."""

import importlib.machinery
import importlib.util
import io
import os
import pathlib
import re
import subprocess
import sys
import tarfile
import time
import zipfile

import pytest

PROJECT = pathlib.Path(__file__).resolve().parents[2]


def tool(name):
    """A tool of the project as a module."""
    loader = importlib.machinery.SourceFileLoader(name, str(PROJECT / "tools" / name))
    module = importlib.util.module_from_spec(importlib.util.spec_from_loader(name, loader))
    sys.modules[name] = module
    sys.dont_write_bytecode = True
    loader.exec_module(module)
    return module


medium_tool = tool("medium")
DOCUMENT = (PROJECT / "docs/medium.md").read_text(encoding="utf-8")
EXAMPLES = dict(re.findall(r"^```\w+ file=(\S+)\n(.*?)^```$", DOCUMENT, re.MULTILINE | re.DOTALL))
DESCRIPTION = EXAMPLES["supporto.txt"]
SETUP = "prg/com/setup/aggdovra"
DATE = 1795255200  # 2026-11-21 10:00:00
MANAGER_DATE = 1795197600  # 2026-11-20 18:00:00
OLD_PACK_DATE = 1781515800  # 2026-06-15 09:30:00


def put(folder, files):
    for name, content in files.items():
        (folder / name).parent.mkdir(parents=True, exist_ok=True)
        (folder / name).write_bytes(content)


@pytest.fixture
def sources(tmp_path):
    """The documented description with all that it names beside it."""
    folder = tmp_path / "sources"
    put(folder, {"supporto.txt": DESCRIPTION.encode(), "release/TrelvManager.exe": b"manager",
                 "release/images/product.jpg": b"picture", "kodamuri.pdf": b"manual",
                 "testi/leggimi.txt": b"text"})
    for tree in ("nerio", "bilancio-09.93", "bilancio-09.94", "modelli"):
        put(folder / tree, {"agdvcomp.ini": b"[prod01]", f"{tree}/setup.exe": tree.encode()})
    put(folder / "tabelle", {"2025/tabelle/a.txt": b"2025", "2026/tabelle/a.txt": b"2026"})
    return folder


def run(*words, **environment):
    return subprocess.run([PROJECT / "tools/medium", *words], capture_output=True, text=True,
                          check=False, env={**os.environ, **environment})


def build(sources, output, **environment):
    done = run(sources / "supporto.txt", output, **environment)
    assert done.returncode == 0, done.stderr
    return output


def fault(sources, text):
    """What is said of a description, without the folder of its sources; nothing is built."""
    (sources / "supporto.txt").write_text(text, encoding="utf-8")
    output = sources.parent / "medium"
    told = medium_tool.build(sources / "supporto.txt", output)
    assert told and "\n" not in told
    assert list(sources.parent.iterdir()) == [sources]
    return told.replace(str(sources) + "/", "")


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
        "Setup.cmf", "Versione.ver", "Products.cmf", "prodotti/manager/TrelvManager.exe",
        "prodotti/manager/images/product.jpg", "prodotti/docs/kodamuri.pdf",
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
        f"{SETUP}/agdvcomp.ini": b"[prod01]", f"{SETUP}/nerio/setup.exe": b"nerio"}


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
    assert dates.pop("prodotti/manager/TrelvManager.exe") == MANAGER_DATE
    assert dates.pop("prodotti/manager/images/product.jpg") == MANAGER_DATE
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
    assert (done.returncode, done.stderr) == (2, f"medium: {output}: is there already and is no medium\n")
    assert files_of(output)["dear.txt"][0] == b"dear"


def test_the_documented_message_is_the_real_one(sources, tmp_path):
    (sources / "supporto.txt").write_text(changed("product = ZB", "product = PIPPO"), encoding="utf-8")
    done = run(sources / "supporto.txt", tmp_path / "medium")
    told = re.search(r"^```text message\n(.*\n)```$", DOCUMENT, re.MULTILINE)[1]
    assert (done.returncode, done.stderr.replace(str(sources) + "/", "")) == (2, told)


BAD = {
    "a section that there is not": ("[list 2]", "[menu 2]", "unknown section [menu 2]: there are "
                                    "medium, products, documents, list, entry, pack"),
    "a fifth list": ("[list 2]", "[list 5]", "the lists are [list 1] to [list 4]"),
    "a list without number": ("[list 2]", "[list]", "section [list] needs a name"),
    "a name where none belongs": ("[entry]", "[entry 1]", "section [entry] has no name"),
    "an unknown key": ("folder = nerio", "cartella = nerio", "section [entry] has no key cartella"),
    "a key twice": ("product = NERIO", "folder = nerio", "folder stands twice in its section"),
    "a key without value": ("caption = Nerio", "caption =", "caption has no value"),
    "a line that is nothing": ("caption = Nerio", "Nerio", "neither a section nor key = value"),
    "a day that there is not": ("date = 2026-06-15", "date = 2026-06-31",
                                "date: a date is YYYY-MM-DD or YYYY-MM-DD HH:MM:SS"),
    "a year that zip does not know": ("date = 2026-06-15", "date = 1979-06-15",
                                      "date: years 1980 to 2107, even seconds"),
    "an odd second": ("09:30:00", "09:30:01", "date: years 1980 to 2107, even seconds"),
    "neither yes nor no": ("show-integration-path = yes", "show-integration-path = true",
                           "show-integration-path: yes or no"),
    "a letter outside the code page": ("caption = Contabilità", "caption = Contabilità Ω",
                                       "caption: Ω is not in code page 1252"),
    "a control character": ("version = 2026.2", "version = 2026\x1a.2", "version: a control character"),
    "the mark of the option in a text": ("version = 2026.2", "version = %SHOW_PATH_INTEGRATION%",
                                         "version: %SHOW_PATH_INTEGRATION% stands for "
                                         "show-integration-path"),
    "a bar in a caption": ("caption = Nerio", "caption = Nerio|Luda",
                           "caption: | parts the values of the medium's files"),
    "a bar in a command": ("command = notepad.exe", "command = a | b",
                           "command: | parts the values of the medium's files"),
    "an unknown product in the list of products": ("ZM = Zeltomodelli", "XY = Zeltomodelli",
                                                   "products: XY is none of NERIO LUDA ZB Q2 ZM"),
    "a folder name that leads elsewhere": ("folder = nerio", "folder = ..\\nerio",
                                           "folder: ..\\nerio is no file name on Windows"),
    "a document name of a device": ("leggimi.txt = testi", "con.txt = testi",
                                    "documents: con.txt is no file name on Windows"),
    "a document that is not there": ("testi/leggimi.txt", "testi/altro.txt",
                                     "leggimi.txt: testi/altro.txt is no file"),
    "a tree that is not there": ("tree = nerio", "tree = niente", "tree: niente is no folder"),
    "a manager that is not there": ("manager = release", "manager = testi",
                                    "manager: no TrelvManager.exe in the folder"),
    "a pack that is not described": ("pack = nerio-03.20.30.00", "pack = nerio-03.21.00.00",
                                     "there is no section [pack nerio-03.21.00.00]"),
    "a folder of two entries": ("folder = modelli", "folder = NERIO",
                                "folder: NERIO has an entry already"),
}


@pytest.mark.parametrize("name", BAD)
def test_a_bad_description_is_told_with_its_line(sources, name):
    old, new, told = BAD[name]
    line = DESCRIPTION[:DESCRIPTION.index(old)].count("\n") + 1
    assert fault(sources, changed(old, new)) == f"supporto.txt:{line}: {told}"


def test_a_second_head_is_told(sources):
    text = DESCRIPTION + DESCRIPTION.split("\n\n")[0] + "\n"
    line = DESCRIPTION.count("\n") + 1
    assert fault(sources, text) == f"supporto.txt:{line}: section [medium] stands twice"


def test_what_is_missing_is_told_with_the_line_of_its_section(sources):
    text = changed("version = 2026.2\n", "")
    assert fault(sources, text) == "supporto.txt:1: section [medium] has no version"
    text = changed("folder = nerio\n", "")
    assert fault(sources, text) == (f"supporto.txt:{line_of(text, 'caption = Nerio') - 1}: "
                                    "entry Nerio: folder or pack is missing")
    assert fault(sources, "# nothing\n") == "supporto.txt: there is no section [medium]"
    assert fault(sources, "date = 1\n") == "supporto.txt:1: a line before the first section"


def test_packs_that_would_lose_something_are_refused(sources):
    text = changed("pack = nerio-03.20.30.00\n", "")
    line = line_of(text, "caption = Nerio") - 1
    assert fault(sources, text) == f"supporto.txt:{line}: entry Nerio: folder or pack is missing"
    text = changed("command = notepad", "pack = nerio-03.20.30.00\ncommand = notepad") + "[pack di troppo]\ntree = nerio\n"
    line = line_of(text, "[pack di troppo]")
    assert fault(sources, text) == f"supporto.txt:{line}: pack di troppo belongs to no entry"
    text = changed("gz = tabelle", "gz = bilancio-09.93.00.00")
    line = line_of(text, "caption = Bilancio") - 1
    assert fault(sources, text) == (f"supporto.txt:{line}: entry Bilancio: "
                                    "bilancio-09.93.00.00.gz stands twice")
    text = changed("tree = tabelle/2026\n", "tree = tabelle/2026\ntree = tabelle/2025\n")
    line = line_of(text, "tree = tabelle/2026") + 1
    assert fault(sources, text) == (f"supporto.txt:{line}: tree: tabelle/a.txt is already in "
                                    "tabelle-2026.zip")
    text = changed("tree = tabelle/2026\n", "")
    line = line_of(text, "[pack bilancio-09.94.00.00]")
    assert fault(sources, text) == (f"supporto.txt:{line}: pack bilancio-09.94.00.00: "
                                    "tabelle.gz holds nothing")


def test_trees_that_windows_cannot_have_are_refused(sources):
    line = line_of(DESCRIPTION, "tree = nerio")
    tree = sources / "nerio"
    put(tree, {"AGDVCOMP.INI": b""})
    assert fault(sources, DESCRIPTION) == (f"supporto.txt:{line}: tree: AGDVCOMP.INI and "
                                           "agdvcomp.ini are one name on Windows")
    (tree / "AGDVCOMP.INI").unlink()
    put(tree, {"aux.dll": b""})
    assert "nerio/aux.dll has a name that Windows does not take" in fault(sources, DESCRIPTION)
    (tree / "aux.dll").unlink()
    (tree / "link").symlink_to("agdvcomp.ini")
    assert "nerio/link is neither a file nor a folder" in fault(sources, DESCRIPTION)
    (tree / "link").unlink()
    (tree / "agdvcomp.ini").unlink()
    line = line_of(DESCRIPTION, "[pack nerio")
    assert fault(sources, DESCRIPTION) == (f"supporto.txt:{line}: pack nerio-03.20.30.00: "
                                           "no tree with agdvcomp.ini in its root")


def test_a_description_that_cannot_be_read_is_told(sources, tmp_path):
    (sources / "supporto.txt").write_bytes(b"[medium]\nheader = Contabilit\xe0\n")
    done = run(sources / "supporto.txt", tmp_path / "medium")
    assert (done.returncode, done.stderr) == (2, f"medium: {sources / 'supporto.txt'}: is not in UTF-8\n")
    done = run(sources / "niente.txt", tmp_path / "medium")
    assert (done.returncode, done.stderr) == (
        2, f"medium: {sources / 'niente.txt'}: No such file or directory\n")


def test_wrong_arguments_are_answered_with_the_usage(sources):
    for words in ([], [sources / "supporto.txt"], ["--quick", "a"]):
        done = run(*words)
        assert done.returncode == 64
        assert "tools/medium DESCRIPTION OUTPUT" in done.stderr


def test_the_demonstration_description_names_what_the_demonstration_lays_out():
    text = (PROJECT / "demo/medium.txt").read_text(encoding="utf-8")
    trees = re.findall(r"^tree = (\S+)$", text, re.MULTILINE)
    assert len(trees) == 6
    assert len(set(re.findall(r"^product = (\w+)$", text, re.MULTILINE))) == 5
