"""The session from a medium that tools/medium built, in its drive: worked by the mouse and by the
keyboard alone, through whole installations, and from media that are not what they should be."""

import contextlib
import os
import shutil
import time

import pytest

import forms
import installation
import medium
from conftest import INTEGRATED

ZB, NERIO = installation.ZB, installation.NERIO
SELECTION = "Prodotti complementari - versione 2026.2"
STANDARD = "Installazione Standard"
INTEGRATION = "Installazione Integrata"
VERSIONS = "Versioni del prodotto"
INFORMATION = "Informazioni sul programma"
PATH_PROMPT = "Setup Prodotti Complementari 2026.2"
QUESTION = "Confermi l'avvio della procedura \r"
NEW_VERSION = "09.94.00.00"
PRODUCTS = ["Nerio", "Luda", "Bilancio", "Tarsena2", "Zeltomodelli"]
OLD = 1000000000  # a day in 2001
READER_KEY = "Software\\Microsoft\\Windows\\CurrentVersion\\App Paths\\AcroRd32.exe"


@pytest.fixture(scope="session")
def built_medium(build, seven_zip, tmp_path_factory):
    folder = tmp_path_factory.mktemp("medium")
    station = installation.Installation(folder / "server", folder / "disk", build.demo_programs)
    description = medium.lay_out_sources(folder / "sources", station, build)
    assert medium.build(description, folder / "medium") == ""
    return folder / "medium"


class Drive:
    """A copy of the built medium in drive D of a workstation."""

    def __init__(self, station, built):
        self.station = station
        self.root = station.prefix.folder / "medium"
        shutil.rmtree(self.root, ignore_errors=True)
        shutil.copytree(built, self.root)
        station.prefix.map_drive("d", self.root)
        station.manager = medium.MANAGER_FOLDER + "\\TrelvManager.exe"

    def pack(self, name, version):
        return self.root / f"prodotti/packs/{name}/{name}-{version}.zip"

    def session(self, kill_when=""):
        return forms.running(self.station, "INTERACTIVE", SELECTION, kill_when)

    def refused(self):
        """The box with which a session ends before its first form."""
        run = self.station.run("INTERACTIVE")
        assert len(run.boxes) == 1
        return run.boxes[0]

    def state(self):
        return {path.relative_to(self.root).as_posix(): (path.stat().st_mtime_ns, path.stat().st_size)
                for path in self.root.rglob("*")}


@pytest.fixture
def standalone(workstation, built_medium):
    """A workstation of the suite that no server knows."""
    workstation.lay_out_without_server()
    return Drive(workstation, built_medium)


@pytest.fixture
def hosted(laid_out, built_medium):
    """A workstation beside a host's folder that it is not integrated with yet, with an old manager
    in its client copy."""
    (laid_out.client_copy / "TrelvManager.exe").write_bytes(b"old")
    os.utime(laid_out.client_copy / "TrelvManager.exe", (OLD, OLD))
    for product in installation.PRODUCTS:
        (laid_out.setups / f"{product.id.lower()}.ini").unlink()
    return Drive(laid_out, built_medium)


def turn_to(hand, title, first):
    """Clicks the tabs from the left until the page shows whose first entry this is."""
    left, top, right, _ = hand.dialog(title).place("labTab")
    for x in range(left + 10, right, 20):
        hand.mouse((x, top + 4, x, top + 16))
        if hand.dialog(title).items("ListProd")[0] == first:
            return
    raise AssertionError(f"no page begins with {first}")


def choose_mode(hand, mode, pictured=False):
    """Clicks a mode of the selection form and confirms it."""
    form = hand.dialog(SELECTION)
    assert form.items("ListAmb")[:2] == [STANDARD, INTEGRATION]
    assert form.selected("ListAmb") is None
    hand.press_row(SELECTION, "ListAmb", form.items("ListAmb").index(mode))
    if pictured:
        hand.picture(SELECTION, "scelta")
    hand.press(SELECTION, "cmdExec")
    assert hand.box("Sì") == (QUESTION + mode, ["SÌ", "NO"])


def installed_programs(station):
    folder = station.prefix.path(station.facts["program files"] + "\\Lumo\\Bilancio")
    return sorted(path.name for path in folder.glob("*")) if folder.exists() else []


def standard_version(station):
    folder = station.prefix.path(station.facts["program files"] + "\\Lumo\\Bilancio")
    return (folder / "versione.txt").read_text().strip()


def left_in_work_folder(station):
    return {path.name.lower() for path in station.work_folder.iterdir()
            if path.name.lower() in ("prg", "log", "ambver") or path.suffix in (".zip", ".gz")
            or path.name.lower().startswith("trelv")}


# --- Standard


def test_a_standard_installation_is_clicked_through_and_pictured(standalone):
    station = standalone.station
    before = standalone.state()
    with standalone.session() as hand:
        choose_mode(hand, STANDARD, pictured=True)
        form = hand.dialog(STANDARD)
        assert form.items("ListProd") == ["Nerio", "Luda"]
        assert form.chosen("ListProd") == []
        assert form.enabled("cmdback")
        turn_to(hand, STANDARD, "Bilancio")
        hand.press_row(STANDARD, "ListProd", 0)
        hand.picture(STANDARD, "standard")
        hand.press(STANDARD, "cmdExec")
        if station.prefix.kind == "win64":
            assert hand.box()[0] == ("La procedura non può essere avviata su sistemi a 64 Bit\r\n"
                                     "Premere Ok per interrompere l'esecuzione")
            assert hand.dialog(STANDARD).chosen("ListProd") == ["Bilancio"]
            hand.press(STANDARD, "cmdExit")
        else:
            assert hand.box("Sì")[0] == QUESTION + "Bilancio"
            form = hand.dialog(VERSIONS)
            assert form.text("lblHeading") == "Bilancio. Selezionare le versioni da installare"
            assert form.items("ListProd") == ["bilancio-09.93.00.00.zip", "bilancio-09.94.00.00.zip"]
            assert form.chosen("ListProd") == []
            hand.press(VERSIONS, "cmdExec")
            assert hand.box() == ("Selezionare almeno una voce", ["OK"])
            hand.press_row(VERSIONS, "ListProd", 1)
            assert hand.dialog(VERSIONS).chosen("ListProd") == ["bilancio-09.94.00.00.zip"]
            hand.picture(VERSIONS, "versioni")
            hand.press(VERSIONS, "cmdExec")
            form = wait_until(hand, STANDARD, lambda form: not form.enabled("cmdback"))
            assert form.enabled("cmdExec")
            hand.picture(STANDARD, "standard-finito")
            hand.press(STANDARD, "cmdExit")
    if station.prefix.kind == "win64":
        assert installed_programs(station) == []
        assert "Gestione ProdTrelv - Sono su un sistema a 64bit" in station.texts()
    else:
        assert installed_programs(station) == sorted([*ZB.files, "versione.txt"])
        assert standard_version(station) == NEW_VERSION
        assert ("Gestione ProdTrelv - Esecuzione diretta Setup. Sono caso Standalone"
                in station.texts())
        assert left_in_work_folder(station) <= {"log", "prg", "ambver"}
    assert standalone.state() == before


def wait_until(hand, title, holds, seconds=200):
    """The dialog of the title once it is there and something holds of it."""
    deadline = time.monotonic() + seconds
    while time.monotonic() < deadline:
        with contextlib.suppress(RuntimeError):
            form = hand.dialog(title)
            if holds(form):
                return form
        time.sleep(1)
    raise AssertionError(f"{title}: it does not come")


def press_keys(hand, title, *keys):
    hand.point_at(hand.dialog(title))
    hand.keys(*keys)


def keyed(hand, title, *keys):
    """The dialog after these keys."""
    press_keys(hand, title, *keys)
    return hand.dialog(title)


def ask_for_help(hand, title):
    press_keys(hand, title, "alt+u")
    assert hand.answer_by_keys("Return")[0] == "Help non visualizzabile! Installare Acrobat Reader"


def confirm_by_keys(hand, title, question, *keys):
    press_keys(hand, title, *keys)
    assert hand.answer_by_keys("alt+s")[0] == QUESTION + question


def test_the_keyboard_alone_goes_through_a_standard_installation(standalone):
    station = standalone.station
    with standalone.session() as hand:
        assert hand.dialog(SELECTION).focus == "ListAmb"
        ask_for_help(hand, SELECTION)
        assert keyed(hand, SELECTION, "alt+m").focus == "txtProgress"
        assert keyed(hand, SELECTION, "Tab").focus == "cmdExec"
        hand.keys("F10")
        press_keys(hand, INFORMATION, "Escape")
        confirm_by_keys(hand, SELECTION, STANDARD, "alt+t", "Home", "space", "alt+a")
        ask_for_help(hand, STANDARD)
        press_keys(hand, STANDARD, "alt+i")
        assert hand.dialog(SELECTION).selected("ListAmb") == STANDARD
        confirm_by_keys(hand, SELECTION, STANDARD, "Return")
        assert keyed(hand, STANDARD, "alt+p", "shift+Tab").focus == "labTab"
        assert keyed(hand, STANDARD, "Right", "Right").items("ListProd") == ["Zeltomodelli"]
        form = keyed(hand, STANDARD, "ctrl+shift+Tab", "alt+p", "Home", "space")
        assert form.items("ListProd") == ["Bilancio", "Tarsena2"]
        assert form.chosen("ListProd") == ["Bilancio"]
        if station.prefix.kind == "win64":
            hand.keys("Return")
            assert "64 Bit" in hand.answer_by_keys("Return")[0]
        else:
            confirm_by_keys(hand, STANDARD, "Bilancio", "Return")
            press_keys(hand, VERSIONS, "alt+e")
            confirm_by_keys(hand, STANDARD, "Bilancio", "alt+a")
            form = keyed(hand, VERSIONS, "Home", "Down", "space")
            assert form.chosen("ListProd") == ["bilancio-09.94.00.00.zip"]
            hand.keys("Return")
            wait_until(hand, STANDARD, lambda form: not form.enabled("cmdback"))
        press_keys(hand, STANDARD, "alt+e")
    if station.prefix.kind == "win32":
        assert standard_version(station) == NEW_VERSION


# --- Integrated


def check_integrated(drive):
    """The packs of Bilancio and Nerio are on the server, which the workstation is integrated with; the
    next start by the host sets them up."""
    station = drive.station
    assert {path.name for path in station.setups.glob("*.ini")} == {"agdvcomp.ini", "nerio.ini", "zb.ini"}
    assert "S:\\Lumo" in station.store.read_text(encoding="utf-8").split("Integration")[1]
    manager = drive.root / "prodotti/manager/TrelvManager.exe"
    assert (station.client_copy / "TrelvManager.exe").read_bytes() == manager.read_bytes()
    assert station.versions() == {}
    assert station.commands_run() == []
    station.manager = "C:\\Lumo\\Manager\\TrelvManager.exe"
    assert station.run(f"{INTEGRATED} MVBIL").boxes == []
    assert station.versions()["ZB"] == (NEW_VERSION, NEW_VERSION)
    assert station.versions()["NERIO"] == (NERIO.version, NERIO.version)
    station.started("bilancio.exe")


def start_integrated(hand):
    """Starts the installation of Nerio and Bilancio beside the host's folder."""
    choose_mode(hand, INTEGRATION)
    hand.press(PATH_PROMPT, "txtInput")
    hand.type("S:\\Lumo")
    hand.press(PATH_PROMPT, "btnOk")
    hand.press_row(INTEGRATION, "ListProd", 2)
    hand.press(INTEGRATION, "cmdExec")


def completed(text):
    return text.startswith("Installazione completata")


def test_an_integrated_installation_is_clicked_through_and_pictured(hosted):
    before = hosted.state()
    with hosted.session() as hand:
        choose_mode(hand, INTEGRATION)
        form = hand.dialog(PATH_PROMPT)
        assert form.text("lblPrompt") == "Indicare il path di localizzazione del server"
        hand.press(PATH_PROMPT, "txtInput")
        hand.type("S:\\Lumo\\")
        hand.picture(PATH_PROMPT, "percorso")
        hand.press(PATH_PROMPT, "btnOk")
        form = hand.dialog(INTEGRATION)
        assert form.items("ListProd") == PRODUCTS
        assert form.chosen("ListProd") == []
        hand.press_row(INTEGRATION, "ListProd", 2)
        assert hand.dialog(INTEGRATION).chosen("ListProd") == ["Nerio", "Bilancio"]
        hand.picture(INTEGRATION, "integrata")
        hand.press(INTEGRATION, "cmdExec")
        text, buttons = hand.box_of(200)
        assert completed(text) and buttons == ["OK"]
    assert hosted.state() == before
    check_integrated(hosted)


def test_the_keyboard_alone_goes_through_an_integrated_installation(hosted):
    with hosted.session() as hand:
        confirm_by_keys(hand, SELECTION, INTEGRATION, "Home", "Down", "Return")
        assert hand.dialog(PATH_PROMPT).focus == "txtInput"
        press_keys(hand, PATH_PROMPT, "alt+s")
        press_keys(hand, hand.other_title([SELECTION, PATH_PROMPT]), "Escape")
        press_keys(hand, PATH_PROMPT, "Escape")
        assert "senza indicazione del path" in hand.answer_by_keys("Return")[0]
        confirm_by_keys(hand, SELECTION, INTEGRATION, "Return")
        hand.point_at(hand.dialog(PATH_PROMPT))
        hand.type("S:\\nulla")
        hand.keys("Return")
        assert hand.answer_by_keys("Return")[0] == "Path inesistente o errato"
        hand.point_at(hand.dialog(PATH_PROMPT))
        hand.type("S:\\Lumo")
        hand.keys("Return")
        assert hand.dialog(INTEGRATION).focus == "ListProd"
        ask_for_help(hand, INTEGRATION)
        press_keys(hand, INTEGRATION, "alt+i")
        assert hand.dialog(SELECTION).selected("ListAmb") == INTEGRATION
        confirm_by_keys(hand, SELECTION, INTEGRATION, "Return")
        hand.point_at(hand.dialog(PATH_PROMPT))
        hand.type("S:\\Lumo")
        hand.keys("Return")
        form = keyed(hand, INTEGRATION, "Home", "Down", "Down", "space")
        assert form.chosen("ListProd") == ["Nerio", "Bilancio"]
        hand.keys("alt+a")
        deadline = time.monotonic() + 200
        while hand.no_box() and time.monotonic() < deadline:
            time.sleep(1)
        assert completed(hand.answer_by_keys("Return")[0])
    check_integrated(hosted)


# --- Help and information


def test_f10_tells_the_build_and_is_pictured(standalone):
    with standalone.session() as hand:
        hand.point_at(hand.dialog(SELECTION))
        hand.keys("F10")
        form = hand.dialog(INFORMATION)
        assert form.text("lblinfo_0") == "TrelvManager.exe"
        assert form.text("lblinfo_1") == "20/11/2026"
        assert form.text("lblinfo_2").count(".") == 3
        hand.picture(INFORMATION, "informazioni")
        hand.press(INFORMATION, "Command1")
        hand.press(SELECTION, "cmdExit")


def test_without_a_reader_the_help_says_what_to_install(standalone):
    with standalone.session() as hand:
        hand.press(SELECTION, "cmdhelp")
        assert hand.box() == ("Help non visualizzabile! Installare Acrobat Reader", ["OK"])
        hand.press(SELECTION, "cmdExit")


# --- Media that are not what they should be


@pytest.mark.parametrize("name", ["Setup.cmf", "Versione.ver"])
def test_an_incomplete_medium_is_refused(standalone, name):
    (standalone.root / name).unlink()
    box = standalone.refused()
    assert box.title == "TrelvManager"
    assert box.text == ("Il supporto DVD che si sta utilizzando non contiene alcuni file di sistema "
                        "necessari per il proseguimento delle operazioni\r\n\r\n"
                        "Premere Ok per interrompere l'esecuzione")
    assert not [text for text in standalone.station.texts() if "Lettura versione CD" in text]


def test_without_the_list_of_products_the_session_goes_on(standalone):
    (standalone.root / "Products.cmf").unlink()
    with standalone.session() as hand:
        hand.press(SELECTION, "cmdExit")
    assert "Gestione ProdTrelv - Nessun prodotto da leggere" in standalone.station.texts()


def test_a_pack_that_is_no_zip_is_told_and_the_others_are_opened(hosted):
    station = hosted.station
    hosted.pack("bilancio", NEW_VERSION).write_bytes(b"no zip at all")
    with hosted.session() as hand:
        start_integrated(hand)
        text, _ = hand.box_of(200)
        assert text.startswith("Errore in esecuzione comando: \"D:\\prodotti\\manager\\7z.exe\"")
        text, _ = hand.box_of(200)
        assert text.startswith("Installazione non completata")
        assert "bilancio-09.94.00.00.zip" in text
    versions = installation.read_ini(station.setups / "zb.ini")
    assert versions["Setup01"]["version"] == ZB.version
    assert (station.setups / "nerio.ini").exists()
    assert hosted.pack("bilancio", NEW_VERSION).exists()


def test_a_read_only_medium_serves_as_well(hosted):
    for path in [hosted.root, *hosted.root.rglob("*")]:
        path.chmod(path.stat().st_mode & ~0o222)
    try:
        before = hosted.state()
        with hosted.session() as hand:
            start_integrated(hand)
            assert completed(hand.box_of(200)[0])
        assert hosted.state() == before
    finally:
        for path in [hosted.root, *hosted.root.rglob("*")]:
            path.chmod(path.stat().st_mode | 0o200)
    check_integrated(hosted)
