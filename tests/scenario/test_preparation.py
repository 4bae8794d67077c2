"""What the machine gets before a product's first set-up: ini files where the platform puts them,
registry values in the program's own view."""

import configparser
import shutil

import pytest

from conftest import INTEGRATED

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


def test_the_suite_is_pointed_at_the_server(unprepared):
    unprepared.run(f"{INTEGRATED} MVBIL")
    assert ini(unprepared.windows_folder, "Lumow.ini")["Archivi"]["Path"] == "S:\\Lumo"


def test_the_local_path_is_registered(unprepared):
    unprepared.run(f"{INTEGRATED} MVBIL")
    assert (unprepared.prefix.value("HKLM", "SOFTWARE\\LUMO\\Programmi", "PathLocale")
            == "C:\\Lumo\\Client\\dovra\\bilancio")


def test_a_dovra_host_gets_no_further_ini_files(unprepared):
    unprepared.run(f"{INTEGRATED} MVBIL")
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
