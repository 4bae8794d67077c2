"""Media that lie in odd places, are reached in odd ways, or hold what they should not."""

import contextlib
import shutil
import subprocess
import time

import pytest

from conftest import INTEGRATED
import packs
import windows
from test_session import (INFORMATION, INTEGRATION, PATH_PROMPT, READER_KEY, SELECTION,
                          built_medium, choose_mode, completed, hosted,
                          standalone)
from test_work_folder import arrived, many_files, put_pack, temporaries

ODD = "Š Œ Ž & 100% d'è"
LONG = "a" * 96 + "/" + "b" * 100
MANAGER = "prodotti\\manager\\TrelvManager.exe"


def put_menu(folder, *lines):
    text = "\r\n".join(["Prodotti complementari - versione %V%", "", *lines, ""])
    (folder / "Setup.cmf").write_bytes(text.encode("cp1252"))


def choose_server(hand):
    choose_mode(hand, INTEGRATION)
    hand.press(PATH_PROMPT, "txtInput")
    hand.type("S:\\Lumo")
    hand.press(PATH_PROMPT, "btnOk")


def answer_until(hand, beginning, seconds=200):
    """Presses OK in every box and error form until the box of this beginning shows: the texts of all,
    of an error form its inner description."""
    texts = []
    deadline = time.monotonic() + seconds
    while time.monotonic() < deadline and not (texts and texts[-1].startswith(beginning)):
        titles = [each.get("title", "") for each in hand.ask("boxes")]
        for title in titles:
            if title.startswith("Segnalazione di errore"):
                texts.append(hand.dialog(title).text("txtErrDescrizioneInterna"))
                hand.click(title, "btnOk")
                break
        else:
            if "TrelvManager" in titles:
                texts.append(hand.box()[0])
        time.sleep(0.3)
    return texts


# --- Where it lies


@pytest.mark.parametrize("folder", [ODD, LONG], ids=["odd", "long"])
def test_a_medium_in_an_odd_folder_serves_as_well(hosted, folder):
    station, root = hosted.station, hosted.root / folder
    content = list(hosted.root.iterdir())
    root.mkdir(parents=True)
    for each in content:
        each.rename(root / each.name)
    (root / "prodotti/packs/nerio").rename(root / "prodotti/packs/Š & 1%")
    shutil.copy(station.programs / "product.exe", root / "prodotti/docs/dopo il pacco.exe")
    put_menu(root, "#PRIMA_LISTA#Qualità & 50% Š|prodotti\\packs\\Š & 1%|NERIO|"
             "\"%MEDIUM%\\prodotti\\docs\\dopo il pacco.exe\" \"%PATHSETUP%\"")
    station.manager = "D:\\" + folder.replace("/", "\\") + "\\" + MANAGER
    with hosted.session() as hand:
        choose_server(hand)
        assert hand.dialog(INTEGRATION).items("ListProd") == ["Qualità & 50% Š"]
        hand.press_row(INTEGRATION, "ListProd", 0)
        hand.press(INTEGRATION, "cmdExec")
        assert completed(answer_until(hand, "Installazione")[-1])
    assert {path.name for path in station.setups.glob("*.ini")} == {"agdvcomp.ini", "nerio.ini"}
    report = (root / "prodotti/docs/dopo il pacco.avvio.txt").read_text(encoding="utf-8")
    assert report.splitlines()[0].endswith("dopo il pacco.exe\" \"S:\\Lumo\"")


# --- How it is reached


def short_name(station, path):
    return subprocess.run([windows.PROJECT / "tools/wine", "winepath.exe", "-s", path], check=True,
                          capture_output=True, text=True,
                          env=station.prefix.environment).stdout.strip()


def expect_session(drive, program):
    """A whole session but for the installation: its medium is found, and its own file by name."""
    drive.station.manager = program
    with drive.session() as hand:
        hand.point_at(hand.dialog(SELECTION))
        hand.keys("F10")
        form = hand.dialog(INFORMATION)
        assert form.text("lblinfo_0") == "TrelvManager.exe"
        assert form.text("lblinfo_1") == "20/11/2026"
        hand.press(INFORMATION, "Command1")
        hand.press(SELECTION, "cmdhelp")
        assert hand.box()[0] == "Help non visualizzabile! Installare Acrobat Reader"
        hand.press(SELECTION, "cmdExit")
    assert [path.name for path in drive.station.log.parent.iterdir()] == ["TrelvManager.log"]


@pytest.mark.parametrize("root", ["\\\\pc\\dvd", "\\\\?\\D:", "\\\\?\\UNC\\pc\\dvd"],
                         ids=["share", "prefix", "share-prefix"])
def test_a_session_begins_wherever_its_program_is_started(standalone, root):
    server = standalone.station.prefix.folder / "dosdevices/unc/pc"
    server.mkdir(parents=True, exist_ok=True)
    with contextlib.suppress(FileExistsError):
        (server / "dvd").symlink_to(standalone.root)
    expect_session(standalone, f"{root}\\{MANAGER}")


def test_a_session_that_is_started_by_a_short_name_goes_by_the_long_one(standalone):
    program = short_name(standalone.station, "D:\\" + MANAGER)
    assert "~" in program
    expect_session(standalone, program)


# --- What it holds

NO_PACK = b"no zip at all"
EMPTY_ZIP = b"PK\x05\x06" + bytes(18)
NO_TREE = packs.tar_gz_bytes({"prg/altro/leggimi.txt": b"x"})


def protected(archive):
    """A zip archive of one entry, marked as one that asks for a password."""
    marked = bytearray(archive)
    for signature, flags in ((b"PK\x03\x04", 6), (b"PK\x01\x02", 8)):
        marked[marked.index(signature) + flags] |= 1
    return bytes(marked)



def test_whatever_packs_hold_the_others_are_installed_and_each_is_named(hosted):
    station = hosted.station
    bad = {"zip-falso": NO_PACK,
           "zip-vuoto": EMPTY_ZIP,
           "senza-gz": packs.zip_bytes({"leggimi.txt": b"x"}),
           "gz-falso": packs.zip_bytes({"falso.gz": NO_PACK}),
           "senza-albero": packs.zip_bytes({"spoglio.gz": NO_TREE}),
           "protetto": protected(packs.zip_bytes({"segreto.gz": NO_TREE}))}
    for name, content in bad.items():
        folder = hosted.root / "prodotti/packs" / name
        folder.mkdir()
        (folder / "p.zip").write_bytes(content)
    (hosted.root / "prodotti/packs/file").write_bytes(b"x")
    folders = [*[f"prodotti\\packs\\{name}" for name in [*bad, "file", "manca"]], "..\\..\\altrove",
               "C:\\Lumo", "prodotti\\packs\\nerio"]
    put_menu(hosted.root, *[f"#SECONDA_LISTA#V{number}|{folder}|NERIO"
                            for number, folder in enumerate(folders)])
    before = hosted.state()
    with hosted.session() as hand:
        choose_server(hand)
        for row in range(len(folders)):
            hand.press_row(INTEGRATION, "ListProd", row)
        hand.press(INTEGRATION, "cmdExec")
        texts = answer_until(hand, "Installazione")
    assert texts[-1] == "\r\n".join([
        "Installazione non completata.", "", "Non è stato possibile aprire i seguenti pacchi:",
        "V0: prodotti\\packs\\zip-falso\\p.zip",
        "V1: prodotti\\packs\\zip-vuoto",
        "V2: prodotti\\packs\\senza-gz",
        "V3: falso.gz",
        "V4: spoglio.gz",
        "V5: prodotti\\packs\\protetto\\p.zip",
        "V6: prodotti\\packs\\file",
        "V7: prodotti\\packs\\manca",
        "V8: altrove",
        "V9: Lumo", "",
        "I prodotti verranno installati al prossimo avvio di uno di essi."])
    assert texts[0].startswith("Errore in esecuzione comando: \"D:\\prodotti\\manager\\7z.exe\"")
    assert {path.name for path in station.setups.glob("*.ini")} == {"agdvcomp.ini", "nerio.ini"}
    assert not list(station.work_folder.glob("~pacchi*"))
    assert not (station.work_folder / "prg").exists()
    assert hosted.state() == before


NOT_INSTALLED = "Il prodotto selezionato Bilancio non risulta installato"


def test_a_session_beside_a_start_of_the_same_user_loses_nothing(hosted):
    station = hosted.station
    waiting = {name: many_files(name, 60) for name in ("uno", "due")}
    with hosted.session() as hand:
        choose_server(hand)
        hand.press_row(INTEGRATION, "ListProd", 0)
        for name, files in waiting.items():
            put_pack(station, f"{name}.zip", files)
        start = station.prefix.start(station.manager, *INTEGRATED.split(), "MVBIL")
        hand.press(INTEGRATION, "cmdExec")
        # The start ends with a box of its own, before or behind the session's: its product is not there.
        texts = answer_until(hand, "Installazione")
        if not any(text.startswith(NOT_INSTALLED) for text in texts):
            texts += answer_until(hand, NOT_INSTALLED)
        assert start.wait(timeout=150) == 0
    assert sorted(text.split("\r\n")[0] for text in texts) == [NOT_INSTALLED, "Installazione completata."]
    for name, files in waiting.items():
        assert arrived(station, files), name
    assert "nerio.ini" in {path.name for path in station.setups.glob("*.ini")}
    assert temporaries(station) == []
    assert not (station.work_folder / "prg").exists()


def test_a_medium_that_is_taken_out_is_told_and_nothing_is_half_installed(hosted):
    station = hosted.station
    before = sorted(path.name for path in station.setups.glob("*"))
    with hosted.session() as hand:
        choose_server(hand)
        hand.press_row(INTEGRATION, "ListProd", 0)
        (station.prefix.folder / "dosdevices/d:").unlink()
        hand.press(INTEGRATION, "cmdExec")
        text = answer_until(hand, "Installazione")[-1]
    assert text.startswith("Installazione non completata.")
    assert "Nerio: prodotti\\packs\\nerio" in text
    assert sorted(path.name for path in station.setups.glob("*")) == before
    assert not list(station.work_folder.glob("~pacchi*"))


# --- Its manual


@pytest.mark.parametrize("registered", ["{}", "\"{}\"", "\"{}\" /n \"%1\""],
                         ids=["plain", "quoted", "arguments"])
@pytest.mark.parametrize("folder", ["Lettore", "Un lettore"])
def test_what_is_registered_for_the_reader_is_started_as_it_stands(standalone, folder, registered):
    station = standalone.station
    reader = station.disk / "Lumo" / folder / "lettore.exe"
    reader.parent.mkdir(parents=True)
    shutil.copy(station.programs / "product.exe", reader)
    program = f"C:\\Lumo\\{folder}\\lettore.exe"
    command = registered.format(program)
    station.prefix.set_value("HKLM", READER_KEY, "", command)
    try:
        with standalone.session() as hand:
            hand.press(SELECTION, "cmdhelp")
            report = reader.with_name("lettore.avvio.txt")
            assert windows.wait_for_file(report)
            hand.press(SELECTION, "cmdExit")
    finally:
        station.prefix.delete_key("HKLM", READER_KEY)
    line = report.read_text(encoding="utf-8").splitlines()[0]
    expected = (f"Linea di comando: {command} "
                "\"D:\\prodotti\\manager\\..\\..\\prodotti\\docs\\kodamuri.pdf\"")
    # The system itself puts quotes round a program whose path has blanks.
    assert line.replace(f'"{program}"', program) == expected.replace(f'"{program}"', program)


def test_a_reader_that_is_missing_is_reported_and_the_form_stays(standalone):
    station = standalone.station
    station.prefix.set_value("HKLM", READER_KEY, "", "C:\\Lumo\\via.exe")
    try:
        with standalone.session() as hand:
            hand.press(SELECTION, "cmdhelp")
            deadline = time.monotonic() + 30
            reports = []
            while not reports and time.monotonic() < deadline:
                reports = [each["title"] for each in hand.ask("boxes")
                           if each.get("title", "").startswith("Segnalazione di errore")]
            text = hand.dialog(reports[0]).text("txtErrDescrizioneInterna")
            hand.click(reports[0], "btnOk")
            hand.press(SELECTION, "cmdExit")
    finally:
        station.prefix.delete_key("HKLM", READER_KEY)
    assert text.startswith("Errore in esecuzione programma: C:\\Lumo\\via.exe \"D:\\")
