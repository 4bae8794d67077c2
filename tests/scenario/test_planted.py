"""What somebody put beside the manager, into the current folder or on the search path does not run in
the place of the system's own."""

import shutil

import pytest

from conftest import INTEGRATED
import installation
from test_preparation import unprepared, with_old_component  # noqa: F401 (fixtures)
from test_updates import update_by

# The manager loads them when it first needs one of their functions.
OF_THE_SYSTEM = ["user32.dll", "gdi32.dll", "comctl32.dll", "comdlg32.dll", "shell32.dll", "ole32.dll",
                 "oleaut32.dll", "version.dll", "mpr.dll", "netapi32.dll", "userenv.dll",
                 "winspool.drv", "uxtheme.dll", "imm32.dll"]
OF_THE_HOST = ["mviconf.dll", "tovrautil.dll"]


class Planted:
    def __init__(self, source):
        self.source = source
        self.files = []

    def put(self, folder, names):
        for name in names:
            assert not (folder / name).exists(), folder / name
            shutil.copy(self.source, folder / name)
            self.files.append(folder / name)

    def loaded(self):
        """Which of them ran, and in which program."""
        told = {file.name: file.with_name(file.name + ".caricata.txt") for file in self.files}
        return {name: file.read_bytes().decode("utf-16-le")
                for name, file in told.items() if file.exists()}

    def clear(self):
        for file in self.files:
            file.unlink(missing_ok=True)
            file.with_name(file.name + ".caricata.txt").unlink(missing_ok=True)


# Wine takes its own library for each of these names, wherever one is found, unless it is told.
WINES_CHOICE = "Software\\Wine\\AppDefaults\\TrelvManager.exe"


@pytest.fixture
def planted(prefix):
    planted = Planted(prefix.build.libraries / "planted.dll")
    for name in OF_THE_SYSTEM:
        prefix.set_value("HKCU", WINES_CHOICE + "\\DllOverrides", name.removesuffix(".dll"),
                         "native,builtin")
    yield planted
    prefix.delete_key("HKCU", WINES_CHOICE)
    planted.clear()


def folder_of_the_path(prefix):
    """A folder of the search path that is neither the system's nor Windows' own, as a 32-bit program
    sees it."""
    windows_folder = prefix.path(prefix.facts()["windows"])
    system = "syswow64" if prefix.kind == "win64" else "system32"
    return windows_folder / system / "wbem"


def start_with_a_report(station):
    """A start that shows a form, with a picture and all."""
    update_by(station, "S:\\manca.exe")
    run = station.run(f"{INTEGRATED} MVBIL", folder=installation.CLIENT_FOLDER)
    assert [box.texts["txtProcedura"] for box in run.boxes] == ["Execute"]
    assert station.versions()["ZB"] == ("09.93.00.00", "09.94.00.00")
    station.started("bilancio.exe")


def test_libraries_of_the_system_come_from_its_folder_alone(installed, planted):
    for folder in (installed.manager_folder, installed.client, folder_of_the_path(installed.prefix)):
        planted.put(folder, [name for name in OF_THE_SYSTEM if not (folder / name).exists()])
    start_with_a_report(installed)
    assert planted.loaded() == {}


def test_the_hosts_libraries_come_neither_from_the_current_folder_nor_from_the_path(installed, planted):
    for folder in (installed.client, folder_of_the_path(installed.prefix), installed.share):
        planted.put(folder, OF_THE_HOST)
    start_with_a_report(installed)
    assert planted.loaded() == {}


def test_what_lies_beside_the_manager_is_what_would_have_run(installed, planted):
    """The test's library is one that can be loaded: the host's names it may have there."""
    planted.put(installed.manager_folder, OF_THE_HOST)
    installed.run(f"{INTEGRATED} MVBIL")
    assert sorted(planted.loaded()) == OF_THE_HOST
    assert set(planted.loaded().values()) == {installed.manager}


def put_program(station, folder, name):
    shutil.copy(station.prefix.build.demo_programs / "product.exe", folder / name)
    return folder / name.replace(".exe", ".avvio.txt")


def test_the_log_is_shown_by_the_systems_notepad(installed):
    told = put_program(installed, installed.client, "notepad.exe")
    update_by(installed, "S:\\manca.exe")
    run = installed.run(f"{INTEGRATED} MVBIL", folder=installation.CLIENT_FOLDER,
                        answers=["Dettagli...", "OK"])
    assert len(run.boxes) == 2
    assert "TrelvManager.log" in installed.prefix.close_window("Notepad")
    assert not told.exists()


def test_controls_are_not_deregistered_by_a_program_of_the_current_folder(with_old_component):  # noqa: F811
    station = with_old_component
    (station.manager_folder / "regsrv32.exe").unlink()
    told = put_program(station, station.client, "regsrv32.exe")
    run = station.run(f"{INTEGRATED} MVBIL", folder=installation.CLIENT_FOLDER)
    command = 'regsrv32 /u /s "c:\\vecchio\\setup\\KorvatGestionePratiche.ocx"'
    # Looked for on the server's side and on the workstation's.
    assert [box.texts["txtErrDescrizioneInterna"] for box in run.boxes
            if box.texts.get("txtProcedura") == "Execute"] == [
        f"Errore in esecuzione programma: {command}"] * 2
    assert not told.exists()
