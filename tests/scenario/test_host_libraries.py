"""Where the host suite's own libraries stand beside the manager, they are used instead of ours."""

import shutil

import pytest

from conftest import INTEGRATED
import installation

INTEGRATION = "SYSTEM.Complementary_Products.Integration.Path"


def put(station, library, settings, name=None):
    """Puts a library beside the manager, with the file that tells it what to answer."""
    name = name or library
    shutil.copy(station.prefix.build.libraries / f"{library}.dll", station.manager_folder / f"{name}.dll")
    installation.write_text(station.manager_folder / f"{name}.ini", installation.ini_text(settings))


def calls(station, library):
    file = station.manager_folder / f"{library}.txt"
    return file.read_bytes().decode("cp1252").splitlines() if file.exists() else []


def store(station, codes=None, values=None, code="0"):
    put(station, "mviconf", {"GetConfigPath": {"path": installation.CLIENT_FOLDER, "code": code},
                             "Codes": codes or {}, "Values": values or {}})


def test_the_hosts_store_takes_the_integration_record(laid_out):
    store(laid_out)
    before = laid_out.store.read_bytes()
    laid_out.start()
    noted = calls(laid_out, "mviconf")
    assert f"GetParameter {INTEGRATION} _DEFAULT_VALUE_ 1000 -> -3003" in noted
    assert [call for call in noted if call.startswith("SetParameter")] == [
        f"SetParameter {INTEGRATION} 1 S:\\Lumo"]
    assert "GetConfigPath 1" in noted
    assert laid_out.store.read_bytes() == before
    # Its path is the programs path.
    assert laid_out.versions()["ZB"] == ("09.93.00.00", "09.93.00.00")


def test_without_pointers_in_the_registry_the_hosts_store_is_enough(laid_out):
    laid_out.prefix.delete_key("HKLM", installation.STORE_KEY)
    store(laid_out, values={INTEGRATION: "S:\\Lumo"})
    laid_out.start()
    assert laid_out.versions()["ZB"] == ("09.93.00.00", "09.93.00.00")


def test_a_document_that_is_empty_twice_is_read_the_third_time(installed):
    store(installed, values={INTEGRATION: "S:\\Lumo"}, codes={INTEGRATION: "-1000 -1000 0"})
    installed.start()
    noted = [call for call in calls(installed, "mviconf") if INTEGRATION in call]
    assert [call.split(" -> ")[1] for call in noted[:3]] == ["-1000", "-1000", "0"]


def test_a_document_that_stays_empty_is_asked_three_times_and_reported(installed):
    store(installed, values={INTEGRATION: "S:\\Lumo"}, codes={INTEGRATION: "-1000"})
    run = installed.run(f"{INTEGRATED} MVBIL")
    assert run.boxes[0].texts["txtErrDescrizioneInterna"].startswith(
        "Errore in lettura chiave da file di configurazione: Document Empty\r\n")
    assert run.boxes[0].texts["txtModulo"] == "modConfig"
    asked = [call for call in calls(installed, "mviconf") if INTEGRATION in call]
    questions = installed.texts().count("Gestione ProdTrelv - Verifica integrazione con Dovra SP")
    assert questions >= 1
    assert len(asked) == 3 * questions


@pytest.mark.parametrize("code, text", [("-3000", "Navigate Generic Error"),
                                        ("-5000", "Schema Validation Failed"),
                                        ("-1", "Unknown Error"), ("-9999", "")])
def test_a_failure_code_is_told_by_its_text(installed, code, text):
    store(installed, values={INTEGRATION: "S:\\Lumo"}, codes={INTEGRATION: code})
    run = installed.run(f"{INTEGRATED} MVBIL")
    assert run.boxes[0].texts["txtErrDescrizioneInterna"] == (
        f"Errore in lettura chiave da file di configurazione: {text}\r\nSezione: "
        "Complementary_Products\r\nChiave: Integration\r\nProdotto: SYSTEM")


def test_a_workstation_without_client_configuration_stays_silent(laid_out):
    store(laid_out, codes={INTEGRATION: "-4013"})
    laid_out.start()


def travolin(station, address):
    """Lets every product of the store's answer one address with a folder."""
    names = [line.split()[1].split(".")[0] for line in calls(station, "mviconf")
             if line.startswith("GetParameter") and ".PathPelan." in line]
    assert names, "the store was not asked for Travolin"
    store(station, values={INTEGRATION: "S:\\Lumo", f"{names[0]}.{address}": "C:\\Travolin"})


@pytest.mark.parametrize("address", ["Client.PathPelan.default", "Server.Path.default"])
def test_the_travolin_suite_keeps_the_products_from_being_updated(laid_out, address):
    laid_out.put_programs([installation.ZB])
    # The store's name of the asked product is a site's choice: a start without catalogue tells it.
    store(laid_out, values={INTEGRATION: "S:\\Lumo"})
    (laid_out.setups / "agdvcomp.ini").rename(laid_out.setups / "aside.ini")
    laid_out.run(f"{INTEGRATED} MVBIL")
    (laid_out.setups / "aside.ini").rename(laid_out.setups / "agdvcomp.ini")
    laid_out.log.unlink()
    travolin(laid_out, address)
    laid_out.start()
    assert laid_out.commands_run() == []
    assert laid_out.texts_after("Suite travolin trovata cartella : C:\\Travolin")[0] == (
        "Gestione ProdTrelv - SuiteTravolin rilevata, nessun prodotto complementare viene "
        "installato/aggiornato")
    laid_out.started("bilancio.exe")


def test_the_hosts_support_library_tells_who_is_administrator(with_bilancio):
    put(with_bilancio, "tovrautil", {"tovrautil": {"administrator": "0"}})
    run = with_bilancio.run(f"{INTEGRATED} MVBIL")
    assert [box.title for box in run.boxes] == ["Errore", "Errore", "TrelvManager"]
    assert calls(with_bilancio, "tovrautil").count("IsAdministrator") == 1
    assert with_bilancio.commands_run() == []
    put(with_bilancio, "tovrautil", {"tovrautil": {"administrator": "1"}})
    # Its answer counts, whatever the user's token says.
    with_bilancio.start(restricted=True)
    assert len(with_bilancio.commands_run()) == 2


FORCED = "Errore in esecuzione verifica di diritti di amministratore, forzato IsAdmin=TRUE"


def put_library_without_entry(station):
    put(station, "broken", {}, name="tovrautil")


def put_no_library(station):
    (station.manager_folder / "tovrautil.dll").write_bytes(b"no library")


@pytest.mark.parametrize("put_library", [put_library_without_entry, put_no_library])
def test_with_a_support_library_that_cannot_be_used_everyone_is_administrator(with_bilancio, put_library):
    put_library(with_bilancio)
    with_bilancio.start(restricted=True)
    assert with_bilancio.texts().count(FORCED) == 1
    assert len(with_bilancio.commands_run()) == 2


def test_a_store_library_that_cannot_be_used_is_reported_and_the_program_starts(installed):
    (installed.manager_folder / "mviconf.dll").write_bytes(b"no library")
    run = installed.run(f"{INTEGRATED} MVBIL")
    assert run.boxes
    installed.started("bilancio.exe")


def test_libraries_of_the_current_folder_are_not_used(with_bilancio):
    put(with_bilancio, "mviconf", {})
    put(with_bilancio, "tovrautil", {"tovrautil": {"administrator": "0"}})
    for name in ("mviconf.dll", "mviconf.ini", "tovrautil.dll", "tovrautil.ini"):
        (with_bilancio.manager_folder / name).rename(with_bilancio.client / name)
    with_bilancio.start(folder=installation.CLIENT_FOLDER)
    assert not (with_bilancio.client / "mviconf.txt").exists()
    assert not (with_bilancio.client / "tovrautil.txt").exists()
    assert len(with_bilancio.commands_run()) == 2
