"""Products that stand on their own: how they are found, what is refused beside them and what the
product report tells; and the ini files that a start puts in place for the user."""

import re
import shutil
import socket
import subprocess

import pytest

from conftest import INTEGRATED, KINDS, shown
from golden_log import golden
import installation
import windows

COMPONENT = "SOFTWARE\\Classes\\CLSID\\{5F2A7D10-1B2C-4D3E-9F00-0123456789AB}"
MODELS = "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\App Paths\\ZeltoMod.exe"
ALL = "10 40 30 20 50"
DATED = re.compile(r"^\[\d\d/\d\d/\d{4} \d\d:\d\d:\d\d\] - ")


def ini(path, **sections):
    """Writes an ini file: section=dict of keys."""
    installation.write_text(path, installation.ini_text(sections))


@pytest.fixture
def station(laid_out):
    """A workstation with the report program and nothing of what a test registers."""
    laid_out.put_test_program("report", laid_out.manager_folder / "report.exe")
    yield laid_out
    for key in (COMPONENT, MODELS):
        laid_out.prefix.delete_key("HKLM", key)


def report(station, codes=ALL):
    """Runs the report program; its exit code and the report's lines without their dates."""
    run = station.prefix.run(installation.CLIENT_FOLDER.replace("Client", "Manager\\report.exe"), codes)
    assert run.boxes == []
    text = (station.log.parent / "ProdInfo.txt").read_bytes().decode("cp1252")
    assert text.endswith("\r\n")
    lines = text.split("\r\n")[:-1]
    assert all(DATED.match(line) for line in lines), lines
    return run.exit_code, [DATED.sub("", line) for line in lines]


def install_on_its_own(station):
    """Nerio by its registered component, Tarsena2 on both sides, Luda, Zeltomodelli; of Bilancio
    only the host's archives."""
    ini(station.windows_folder / "nerio.ini", NERIO={"Versione": "03.20.30.00"})
    ini(station.server / "mv/nerio/nerio.ini", NERIO={"Versione": "03.20.30.00"})
    station.prefix.set_value("HKLM", COMPONENT + "\\InprocServer32", "",
                             "S:\\Lumo\\mv\\nerio\\Setup\\KorvatGestionePratiche.ocx")
    ini(station.windows_folder / "lumow.ini", Archivi={"Path": "S:\\Lumo"})
    station.prefix.set_value("HKLM", "SOFTWARE\\LUMO\\Programmi", "PathLocale",
                             installation.CLIENT_FOLDER)
    for root in (station.server, station.client):
        ini(root / "mv/q2/mvq2.ini", AMBIENTE={"VRINST": "02.92"})
    ini(station.windows_folder / "luda.ini", PathNames={"HomeDir": "C:\\Lumo\\Luda"})
    (station.disk / "Lumo/Luda").mkdir()
    # The ini file has no version, the program has.
    station.put_test_program("versioned", station.disk / "Lumo/Luda/luda2003.exe")
    station.prefix.set_value("HKLM", MODELS, "Path", "C:\\Lumo\\ZM")
    ini(station.windows_folder / "zeltomodelli.ini", Parametri={"PathModelli": "C:\\Lumo\\ZM"})
    installation.write_text(station.disk / "Lumo/ZM/vers.ini", "06.50.30.00\n")


def test_the_report_tells_each_step(station):
    install_on_its_own(station)
    assert report(station) == (4, golden("product-report.txt"))


def test_the_report_of_a_machine_without_products_is_begun_anew_each_time(station):
    nothing = golden("product-report-of-nothing.txt")
    assert report(station) == (0, nothing)
    assert report(station, "20")[1] == nothing[17:20]


# The program "versioned" has version 7.10.2.1, "waiter" has no version resource.
@pytest.mark.parametrize("program, recorded, found", [
    ("versioned", "", True), ("versioned", "01.00", True), ("waiter", "01.00", True),
    ("waiter", "", False), (None, "01.00", True), (None, "", False)])
def test_luda_is_known_by_its_program_else_by_its_ini_file(station, program, recorded, found):
    ini(station.windows_folder / "luda.ini", PathNames={"HomeDir": "C:\\Lumo\\Luda"},
        LUDA={"Versione": recorded} if recorded else {})
    (station.disk / "Lumo/Luda").mkdir()
    if program:
        station.put_test_program(program, station.disk / "Lumo/Luda/LUDA2003.EXE")
    assert report(station, "20")[1][1] == f"File ini locale {'PRESENTE' if found else 'ASSENTE'}"


def coloured(picture, wanted):
    """How many points of a picture have a colour that `wanted` (red, green, blue) accepts."""
    colours = subprocess.run(["convert", str(picture), "-depth", "8", "-format", "%c", "histogram:info:"],
                             check=True, capture_output=True, text=True).stdout
    counted = re.findall(r"(\d+): \((\d+),(\d+),(\d+)", colours)
    return sum(int(points) for points, *colour in counted if wanted(*map(int, colour)))


def orange(red, green, blue):
    """The colour of the exclamation icon, and of no other."""
    return red > 180 and 80 < green < 200 and blue < 100


def start_seen(station, path):
    """A start whose boxes are looked at; and {title of a box: orange points of the screen}."""
    noted = {}

    def note(box):
        station.prefix.screen.picture(path)
        noted[box.title] = coloured(path, orange)
    return station.run(f"{INTEGRATED} MVBIL", on_box=note), noted


def test_a_refusal_that_ends_the_work_has_another_icon(station, tmp_path):
    station.install()
    station.integrate("S:\\Altro")
    run, signs = start_seen(station, tmp_path / "box.png")
    assert [box.title for box in run.boxes] == ["TrelvManager"]
    assert signs["TrelvManager"] < 150


def test_products_on_their_own_refuse_the_integration(station, tmp_path):
    install_on_its_own(station)
    station.put_programs()
    # Without the store nobody knows of an integration.
    station.prefix.delete_key("HKLM", installation.STORE_KEY)
    run, signs = start_seen(station, tmp_path / "box.png")
    assert signs["Gestione prodotti complementari"] > 300
    assert [each for each in shown(run) if each[0] == "Gestione prodotti complementari"] == [(
        "Gestione prodotti complementari", "Sulla macchina corrente è stata rilevata la presenza dei seguenti prodotti "
        "complementari:\r\n\r\nNerio Standalone\r\nTarsena2 Standalone\r\nLuda Standalone\r\n"
        "Zeltomodelli Standalone\r\n\r\nL'installazione/aggiornamento non avverra' finche' questi "
        "ultimi non verrano rimossi manualmente dal sistema\r\n\r\nPremere Ok per proseguire",
        ["OK"])]
    assert station.commands_run() == []
    texts = station.texts()
    assert "Gestione ProdTrelv - Rilevato almeno un prodotto complementare standalone" in texts
    assert "Gestione ProdTrelv - Inizio gestione anomalia Corvel" not in texts
    # A start writes no report by itself.
    assert not (station.log.parent / "ProdInfo.txt").exists()
    station.started("bilancio.exe")


def test_an_integrated_machine_is_not_asked_for_products(station):
    install_on_its_own(station)
    station.install()
    station.start()
    assert ("Gestione ProdTrelv - Rilevata integrazione, nessun prodotto complementare standalone "
            "rilevato") in station.texts()


def test_a_start_puts_the_ini_files_of_the_user_in_place(station):
    station.install()
    installation.write_text(station.server / "mv/LUDA2003/Luda.ini", "[LUDA]\nVersione=01.00\n")
    station.put_test_program("versioned", station.server / "mv/LUDA2003/LUDA2003.exe")
    station.run(f"{INTEGRATED} MVBIL")
    nerio = (station.windows_folder / "nerio.ini").read_bytes()
    assert nerio == (station.server / "mv/nerio/nerio.ini").read_bytes()
    luda = installation.read_ini(station.windows_folder / "luda.ini")
    version = "7.10.2.1"
    folder = "S:\\Lumo\\mv\\luda2003"
    assert luda == {
        "PathNames": {"Homedir": folder, "DataBase": folder + "\\database", "Exec": folder,
                      "FileDir": folder + "\\AscFile", "CrittaDir": folder + "\\critta"},
        "LUDA": {"Versione": version, "Aggiornamento": version},
        "Drive": {"Floppy": "A:"}, "ConfigViste": {"Vista": "0"}}
    assert installation.read_ini(station.server / "mv/LUDA2003/Luda.ini") == {
        "LUDA": {"Versione": version}}
    assert station.texts_after("Gestione ProdTrelv - Inizio Gestione anomalia Luda")[:2] == [
        "Gestione ProdTrelv - creazione file ini mancante : c:\\windows\\luda.ini",
        "Gestione ProdTrelv - Ambiente Terminal non rilevato. Nessun intervento Anomalia Luda"]
    assert not (station.windows_folder / "zeltomodelli.ini").exists()
    before = files_of(station.windows_folder)
    station.start()
    assert files_of(station.windows_folder) == before


@pytest.fixture
def terminal_server(station):
    """The one terminal server that Wine can play, and what a user has of a Windows folder there."""
    prefix = station.prefix
    suite = ("HKLM", "System\\CurrentControlSet\\Control\\ProductOptions", "ProductSuite")
    version = ("HKCU", "Software\\Wine", "Version")
    prefix.set_value(*suite, "Terminal Server")
    prefix.set_value(*version, "nt40")
    station.profile = station.facts["temporary"].removesuffix("\\Temp\\")
    folder = prefix.path(station.profile + "\\windows")
    folder.mkdir()
    yield folder
    shutil.rmtree(folder)
    prefix.set_value(*suite, "")
    prefix.set_value(*version, "")


def repairs(station):
    """What the log tells behind the begin of the repairs of a session's ini files."""
    return [text.removeprefix("Gestione ProdTrelv - ") for text in station.texts_after(
        "Gestione ProdTrelv - Inizio gestione anomalia Corvel")]


def test_a_session_on_a_terminal_server_gets_its_ini_files(station, terminal_server):
    station.install()
    station.put_test_program("versioned", station.server / "mv/LUDA2003/LUDA2003.exe")
    installation.write_text(station.server / "mv/ZM/Dovra2010.ini", "[x]\n")
    ini(station.windows_folder / "lumow.ini", Archivi={"Path": "S:\\Lumo"})
    station.start()
    user = station.profile + "\\windows"
    profile = user + "\\..\\..\\" + station.profile.split("\\")[-1] + "\\windows"
    lines = [
        f"Inizio copia da: c:\\windows\\lumow.ini a: {profile}\\lumow.ini",
        "Inizio Gestione Anomalia Nerio",
        f"copia file ini mancante da: S:\\Lumo\\mv\\nerio\\nerio.ini a: {user}\\nerio.ini",
        "Ricerca mancanza file: c:\\windows\\nerio.ini",
        f"copia file ini mancante da: {profile}\\nerio.ini a: c:\\windows\\nerio.ini",
        "Inizio Gestione anomalia ZeltoModelli",
        f"creazione file ini mancante : {user}\\zeltomodelli.ini",
        "Cancellazione file: S:\\Lumo\\mv\\ZM\\Dovra2010.ini effettuata con successo",
        "Ricerca esistenza file: S:\\Lumo\\mv\\ZM\\zeltomodelli.ini",
        "Ricerca mancanza file: c:\\windows\\zeltomodelli.ini",
        f"copia file ini mancante da: {profile}\\zeltomodelli.ini a: c:\\windows\\zeltomodelli.ini",
        "Inizio Gestione anomalia Luda",
        f"creazione file ini mancante : {user}\\luda.ini",
        "Ricerca mancanza file: c:\\windows\\luda.ini",
        f"copia file ini mancante da: {profile}\\luda.ini a: c:\\windows\\luda.ini"]
    assert repairs(station)[:len(lines)] == lines
    made = files_of(terminal_server)
    assert sorted(made) == ["luda.ini", "lumow.ini", "nerio.ini", "zeltomodelli.ini"]
    everyones = files_of(station.windows_folder)
    for name, content in made.items():
        assert everyones[name] == content
    assert made["nerio.ini"] == (station.server / "mv/nerio/nerio.ini").read_bytes()
    assert made["zeltomodelli.ini"] == b"[Parametri]\r\nPathModelli=S:\\Lumo\\mv\\ZM\r\n"
    assert installation.read_ini(terminal_server / "luda.ini")["LUDA"] == {
        "Versione": "7.10.2.1", "Aggiornamento": "7.10.2.1"}
    # The next start finds nothing to do.
    station.log.unlink()
    station.start()
    assert repairs(station)[:4] == [
        "Inizio Gestione Anomalia Nerio",
        "Inizio Gestione anomalia ZeltoModelli",
        "Ricerca esistenza file: S:\\Lumo\\mv\\ZM\\zeltomodelli.ini",
        "Inizio Gestione anomalia Luda"]
    assert files_of(terminal_server) == made
    assert files_of(station.windows_folder) == everyones


def files_of(folder):
    return {file.name.lower(): file.read_bytes() for file in folder.glob("*.ini*")}


ANOTHER, THIS = "SRVLUMO", socket.gethostname()


# Each share has a drive. Nobody tells that of P: its device, which names no computer, is asked for.
SHARES = {"n": (ANOTHER, "Dati"), "o": (THIS, "Dati"), "p": ("", "")}


@pytest.fixture(scope="module", params=KINDS)
def with_shares(request, build, screen, tmp_path_factory):
    """A Windows of its own, since drives are looked for when it starts."""
    folder = tmp_path_factory.mktemp("shares") / request.param
    tools = windows.PROJECT / "tools"
    subprocess.run([tools / "wine-prefix", folder, request.param], check=True)
    for letter, (server, share) in SHARES.items():
        place = folder / f"share-{letter}"
        subprocess.run([tools / "wine-share", folder, letter, server, share, place], check=True)
        ini(place / "mv/q2/mvq2.ini", AMBIENTE={"VRINST": "02.92"})
    prefix = windows.Prefix(folder, request.param, build, screen)
    shutil.copy(build.test_programs / "report.exe", prefix.disk)
    yield prefix
    prefix.close()
    shutil.rmtree(folder)


@pytest.mark.parametrize("path, here", [
    ("N:", False), ("O:", True), ("P:", False),
    (f"\\\\{ANOTHER}\\Dati", False), (f"\\\\{THIS.upper()}\\Dati", True),
    (f"\\\\{THIS.lower()}\\dati", True)])
def test_a_server_folder_lies_where_its_share_is(with_shares, path, here):
    facts = with_shares.facts()
    ini(with_shares.path(facts["windows"]) / "lumow.ini", Archivi={"Path": path})
    run = with_shares.run("C:\\report.exe", "40")
    text = with_shares.path(facts["temporary"] + "log\\ProdInfo.txt").read_bytes().decode("cp1252")
    assert "Ini Server PRESENTE\r\n" in text
    assert run.exit_code == (1 if here else 0)
    assert text.endswith("Rilevata presenza componenti server\r\n" if here
                         else "Il prodotto Q2 non è installato.\r\n")
