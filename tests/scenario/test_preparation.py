"""What the machine gets before a product's first set-up: ini files where the platform puts them,
registry values in the program's own view."""

import configparser
import shutil

import pytest

from conftest import INTEGRATED
from test_inventory import COMPONENT

PREPARED = ["rating.ini", "valutazione.ini", "RatingValutazione.ini", "zeltobilancio.ini",
            "bilancioconsolidato.ini", "calcoloimposte.ini", "BilancioIas.ini",
            "ConsolidatoIas.ini", "Cooperative.ini", "EntiFinanziari.ini"]


def ini(folder, name):
    """The file of that name in any case; None when there is none."""
    for file in folder.iterdir():
        if file.name.lower() == name.lower():
            parser = configparser.ConfigParser(interpolation=None)
            parser.read(file, encoding="cp1252")
            return parser
    return None


@pytest.fixture
def unprepared(laid_out):
    """No trace of an earlier preparation, before and after."""
    def clean():
        names = {name.lower() for name in PREPARED}
        for file in laid_out.windows_folder.iterdir():
            if file.name.lower() in names:
                file.unlink()
    clean()
    yield laid_out
    clean()


def test_the_suite_is_pointed_at_the_server_and_a_dovra_host_gets_no_further_ini_files(unprepared):
    unprepared.start()
    assert ini(unprepared.windows_folder, "Lumow.ini")["Archivi"]["Path"] == "S:\\Lumo"
    assert (unprepared.prefix.value("HKLM", "SOFTWARE\\LUMO\\Programmi", "PathLocale")
            == "C:\\Lumo\\Client\\dovra\\bilancio")
    assert [name for name in PREPARED if ini(unprepared.windows_folder, name)] == []


def test_another_host_gets_them_in_the_windows_folder(unprepared):
    shutil.rmtree(unprepared.server / "prg/com/dovra")
    unprepared.run(f"{INTEGRATED} MVBIL")
    for name in PREPARED:
        written = ini(unprepared.windows_folder, name)
        assert written, name
        assert written["TipoInstallazione"]["Tipo"] == "Client", name
        assert written["Parametri"]["PathCheck"].lower() == "c:\\windows", name


def test_what_is_recorded_is_not_prepared_again(unprepared):
    unprepared.run(f"{INTEGRATED} MVBIL")
    unprepared.log.unlink()
    unprepared.run(f"{INTEGRATED} MVBIL")
    assert [line for line in unprepared.texts() if "Prepara" in line] == []


@pytest.fixture
def with_old_component(unprepared):
    """Nerio's control is registered where an earlier installation had it, and a site's own program
    deregisters controls: it tells what it was started with."""
    folder = unprepared.disk / "Vecchio/setup"
    folder.mkdir(parents=True)
    for name in ("KorvatGestionePratiche.ocx", "Altra.OCX", "leggimi.txt"):
        (folder / name).write_bytes(b"MZ")
    shutil.copy(unprepared.prefix.build.demo_programs / "product.exe",
                unprepared.manager_folder / "regsrv32.exe")
    unprepared.prefix.set_value("HKLM", COMPONENT + "\\InprocServer32", "",
                                "C:\\Vecchio\\Setup\\KorvatGestionePratiche.ocx")
    yield unprepared
    unprepared.prefix.delete_key("HKLM", COMPONENT)
    shutil.rmtree(folder.parent)


def test_controls_of_an_earlier_nerio_are_deregistered(with_old_component):
    station = with_old_component
    station.run(f"{INTEGRATED} MVBIL")
    told = (station.manager_folder / "regsrv32.avvio.txt").read_text(encoding="utf-8").splitlines()
    assert told[0] == ('Linea di comando: regsrv32 /u /s '
                       '"c:\\vecchio\\setup\\KorvatGestionePratiche.ocx"')
    assert station.texts_after(
        "Gestione ProdTrelv - Preparazione installazione server/client Nerio")[:3] == [
        "Gestione ProdTrelv - Preparazione installazione Nerio. Verifica se esistono componenti "
        "registrate preesistenti",
        "Gestione ProdTrelv - Preparazione installazione Nerio.Deregistrazione componenti esistenti "
        "su altro path c:\\vecchio",
        'Gestione ProdTrelv - Inizio fase deregestrizazione componenti in: "c:\\vecchio\\setup"']
