"""The examples of docs/formats.md, laid out as they stand there, are an installation that the
program works on as the text says."""

import re

import pytest

from conftest import INTEGRATED
import installation
import windows

DOCUMENT = (windows.PROJECT / "docs/formats.md").read_text(encoding="utf-8")
FILES = dict(re.findall(r"^```\w+ file=(\S+)\n(.*?)^```$", DOCUMENT, re.MULTILINE | re.DOTALL))
LOCK = "C:\\Lumo\\Clientagdv.lck"


def pointers():
    """(key, name, value) of the registry example."""
    text = re.search(r"^```reg\n(.*?)^```$", DOCUMENT, re.MULTILINE | re.DOTALL)[1]
    key = re.search(r"^\[HKEY_LOCAL_MACHINE\\(.*)\]$", text, re.MULTILINE)[1]
    return [(key, name, value.replace("\\\\", "\\"))
            for name, value in re.findall(r'^"(\w+)"="(.*)"$', text, re.MULTILINE)]


def place(station, path):
    """Where a file of the examples lies on this system."""
    if path.startswith("S:\\"):
        return station.share / path[3:].replace("\\", "/")
    return station.prefix.path(path)


@pytest.fixture
def documented(workstation):
    """The installation of the document, without the lock."""
    workstation.lay_out(products=[])
    workstation.prefix.delete_key("HKLM", "SOFTWARE\\LUMO")
    for key, name, value in pointers():
        workstation.prefix.set_value("HKLM", key, name, value)
    for path, text in FILES.items():
        if path != LOCK:
            encoding = "utf-8" if path.endswith((".xml", ".xsd")) else "cp1252"
            place(workstation, path).write_bytes(text.replace("\n", "\r\n").encode(encoding))
    workstation.put_setup(installation.ZB)
    return workstation


def test_the_examples_are_the_files_of_one_installation():
    assert sorted(FILES) == sorted([
        "S:\\Lumo\\prg\\com\\setup\\aggdovra\\agdvcomp.ini", "S:\\Lumo\\prg\\etc\\agdvver.ini",
        "C:\\Lumo\\Client\\agdvver.ini", "S:\\Lumo\\prg\\com\\setup\\aggdovra\\zb.ini", LOCK,
        "C:\\Lumo\\Client\\lumoconf.xml", "C:\\Lumo\\Client\\lumoconf.xsd"])
    assert [name for _, name, _ in pointers()] == ["Schema", "Config"]


def test_the_documented_installation_is_brought_up_to_date_and_started(documented):
    documented.start()
    assert documented.set_ups_run() == ["ZB 09.94.00.00 Server", "ZB 09.94.00.00 Client"]
    assert documented.versions()["ZB"] == ("09.94.00.00", "09.94.00.00")
    assert ("Gestione ProdTrelv - Integrazione Dovra SP rilevata con: S:\\Lumo"
            in documented.texts())
    assert ("Gestione ProdTrelv - Prodotto non rilevato, file di config non presente "
            "S:\\Lumo\\prg\\com\\setup\\aggdovra\\q2.ini") in documented.texts()
    documented.started("bilancio.exe")


def test_without_records_the_set_up_section_runs(documented):
    documented.server_record.unlink()
    documented.client_record.unlink()
    documented.run(f"{INTEGRATED} MVBIL")
    assert documented.versions()["ZB"] == ("09.94.00.00", "09.94.00.00")
    assert [text.split(" - ")[1:3] for text in documented.texts()
            if text.startswith("Gestione ProdTrelv - esecuzione effettuata")] == [
        ["esecuzione effettuata: Tipo=Setup", "Oggetto=Server"],
        ["esecuzione effettuata: Tipo=Setup", "Oggetto=Client"]]


def test_the_documented_lock_keeps_the_workstation_from_being_updated(documented):
    place(documented, LOCK).write_bytes(FILES[LOCK].replace("\n", "\r\n").encode())
    run = documented.run(f"{INTEGRATED} MVBIL")
    assert len(run.boxes) == 1
    assert "\r\n\r\nClient\r\n\r\n" in run.boxes[0].text
    assert documented.versions()["ZB"] == ("09.94.00.00", "09.93.00.00")
    documented.started("bilancio.exe")
