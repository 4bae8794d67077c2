"""Later starts: what is updated, what is left alone, and what a lock does."""

import re
import threading
import time

from conftest import INTEGRATED, UPDATED_ALL, box, shown
from golden_log import assert_log
import installation
import windows

ZB = installation.ZB
NEW = "09.94.00.00"


def lock_box(side):
    return box("Il sistema ha rilevato la necessità di effettuare un aggiornamento del seguente prodotto "
               f"complementare installato lato: \r\n\r\n{side}\r\n\r\noperazione che però non può essere "
               "avviata per la presenza di una o più precedenti sessioni in corso. L'operazione di "
               "aggiornamento verrà ritentata alla prossima esecuzione del prodotto\r\n\r\n"
               "Premere Ok per proseguire")


def test_a_start_with_nothing_to_do_runs_no_command(installed):
    installed.start()
    assert installed.commands_run() == []
    installed.started("bilancio.exe")
    texts = installed.texts()
    for product in installation.PRODUCTS:
        for side in ("Server", "Client"):
            assert (f"Gestione ProdTrelv - Lato {side} la versione: {product.version} è minore o "
                    f"uguale a quella corrente: {product.version}") in texts
    assert texts[-2:] == [
        UPDATED_ALL,
        "Gestione ProdTrelv - Esecuzione di: S:\\Lumo\\mv\\bilancio\\bilancio.exe "]


def test_only_the_product_with_a_newer_version_is_updated(installed):
    installed.offer(ZB, NEW)
    installed.start("MVCON")
    assert installed.set_ups_run() == [f"ZB {NEW} Server", f"ZB {NEW} Client"]
    expected = {product.id: (product.version, product.version) for product in installation.PRODUCTS}
    expected["ZB"] = (NEW, NEW)
    assert installed.versions() == expected
    installed.started("consolidato.exe")


def test_the_whole_log_of_an_update_is_the_expected_one(installed):
    installed.offer(ZB, NEW)
    # What an earlier start has put there.
    for name in ("nerio.ini", "luda.ini"):
        installation.write_text(installed.windows_folder / name, "[Parametri]\nTipo=Client\n")
    installed.run(f"{INTEGRATED} Q2 -ditta 7")
    assert_log(installed, "update-of-one-product.log")


def test_a_side_that_is_behind_is_updated_alone(installed):
    installed.offer(ZB, NEW)
    installation.write_text(installed.server_record, installation.ini_text({"ZB": {"version": NEW}}))
    installed.write_catalogue(ZB)
    installed.start()
    assert installed.set_ups_run() == [f"ZB {NEW} Client"]


def test_every_update_section_above_the_recorded_version_runs_in_order(installed):
    offered = (NEW, "09.95.10.00", "10.00.00.00")
    installed.offer(ZB, *offered)
    installed.start()
    assert installed.set_ups_run() == [f"ZB {version} {side}" for side in ("Server", "Client")
                                       for version in offered]
    assert installed.versions()["ZB"] == (offered[-1], offered[-1])


def update_by(station, command):
    """Offers an update of Bilancio whose server side is this command."""
    sections = installation.configuration(ZB, [NEW])
    sections["Update02"]["Server01"] = command
    station.write_configuration(ZB, sections)


def test_a_command_that_cannot_be_started_is_reported_and_leaves_the_version(installed):
    update_by(installed, "%PATHSETUP%\\prg\\com\\setup\\aggdovra\\manca.exe ZB")
    run = installed.run(f"{INTEGRATED} MVBIL")
    command = "S:\\Lumo\\prg\\com\\setup\\aggdovra\\manca.exe ZB"
    assert [box.texts["txtErrDescrizioneInterna"] for box in run.boxes] == [
        f"Errore in esecuzione programma: {command}"]
    report = run.boxes[0].texts
    assert report["txtModulo"] == "modLibrary"
    assert report["txtErrCodice"] == "2"
    assert report["txtErrDescrizione"] == "Impossibile trovare il programma"
    assert report["txtProcedura"] == "Execute"
    assert report["txtProgetto"] == "TrelvManager"
    # The last line that stands in the log when the report shows.
    assert report["txtErrTrace"] == f'Gestione ProdTrelv - Esecuzione comando: "{command}"'
    assert re.fullmatch(r".+ - \d\d (gennaio|febbraio|marzo|aprile|maggio|giugno|luglio|agosto|"
                        r"settembre|ottobre|novembre|dicembre) \d{4}  \d\d:\d\d", run.boxes[0].title)
    assert report["txtErrLabel"] == (
        "Si è verificato un errore non previsto durante l'esecuzione del programma. Riportare la "
        "segnalazione al servizio di assistenza.")
    texts = installed.texts()
    told = texts.index(f"Gestione ProdTrelv - Errore in esecuzione programma: {command} "
                       "(2 Impossibile trovare il programma)")
    assert texts[told + 1] == f"Gestione ProdTrelv - Esecuzione non effettuata di: {command}"
    assert installed.versions()["ZB"] == ("09.93.00.00", NEW)
    installed.started("bilancio.exe")


def test_the_details_of_a_report_open_the_log(installed):
    update_by(installed, "S:\\manca.exe")
    run = installed.run(f"{INTEGRATED} MVBIL", answers=["Dettagli...", "OK"])
    assert [box.texts["txtProcedura"] for box in run.boxes] == ["Execute", "Execute"]
    title = installed.prefix.close_window("Notepad")
    assert "TrelvManager.log" in title


def test_a_lock_of_the_server_is_told_left_alone_and_stops_all_updating(installed):
    installed.offer(ZB, NEW)
    # Behind Bilancio in the catalogue: untouched too.
    installed.offer(installation.Q2, "02.93.00.00")
    # Products before it would free the lock, since they find no work.
    installed.write_catalogue(ZB, installation.Q2)
    installation.write_text(installed.server_lock, "20/11/2026 08:00:00\n")
    run = installed.run(f"{INTEGRATED} MVBIL")
    assert shown(run) == [lock_box("Server")]
    assert installed.server_lock.read_bytes() == b"20/11/2026 08:00:00\r\n"
    assert installed.commands_run() == []
    texts = installed.texts()
    # The command stands there as it is in the configuration file.
    assert ("Gestione ProdTrelv - esecuzione non effettuata per presenza altre sessioni: Tipo=Update "
            f"- Oggetto=Server - Comando={installation.server_command(ZB, NEW)}") in texts
    assert UPDATED_ALL not in texts
    installed.started("bilancio.exe")


def test_a_lock_of_the_workstation_stands_beside_the_client_folder(installed):
    installed.offer(ZB, NEW)
    installed.write_catalogue(ZB)
    installation.write_text(installed.client_lock, "20/11/2026 08:00:00\n")
    run = installed.run(f"{INTEGRATED} MVBIL")
    assert shown(run) == [lock_box("Client")]
    assert installed.client_lock.exists()
    assert installed.versions()["ZB"] == (NEW, "09.93.00.00")
    installed.started("bilancio.exe")


def test_a_start_without_work_frees_a_lock_that_it_did_not_take(installed):
    installation.write_text(installed.server_lock, "20/11/2026 08:00:00\n")
    installed.start()
    assert not installed.server_lock.exists()


def slow_update(station):
    """Bilancio's server update waits until the file that is returned exists."""
    station.write_catalogue(ZB)
    update_by(station, "S:\\waiter.exe S:\\running S:\\go-on")
    station.put_test_program("waiter", station.share / "waiter.exe")
    return station.share / "go-on"


def test_the_lock_of_a_manager_that_was_ended_blocks_the_next_start(installed):
    go_on = slow_update(installed)
    ended = installed.run(f"{INTEGRATED} MVBIL", kill_when="S:\\running")
    assert ended.exit_code == 99
    lock = installed.server_lock.read_bytes()
    go_on.touch()
    installed.log.unlink()
    run = installed.run(f"{INTEGRATED} MVBIL")
    assert shown(run) == [lock_box("Server")]
    assert installed.server_lock.read_bytes() == lock
    assert installed.versions()["ZB"] == ("09.93.00.00", "09.93.00.00")
    installed.started("bilancio.exe")
    # Removed by hand, as docs/messages.md tells: the update is done.
    installed.server_lock.unlink()
    installed.start()
    assert installed.versions()["ZB"] == (NEW, NEW)


def test_while_a_command_runs_the_lock_holds_the_date_it_was_taken_at(installed):
    go_on = slow_update(installed)
    seen = []

    def look():
        if windows.wait_for_file(installed.share / "running") and installed.server_lock.exists():
            seen.append(installed.server_lock.read_bytes())
        go_on.touch()

    watcher = threading.Thread(target=look)
    watcher.start()
    run = installed.run(f"{INTEGRATED} MVBIL")
    watcher.join()
    assert run.boxes == []
    assert len(seen) == 1
    assert seen[0].endswith(b"\r\n")
    time.strptime(seen[0].decode().strip(), "%d/%m/%Y %H:%M:%S")
    assert not installed.server_lock.exists()


def test_the_host_at_release_10_70_gets_its_records_corrected_once(workstation):
    workstation.lay_out(release="10.70.00 del 01/02/2026")
    workstation.put_programs()
    workstation.integrate()
    older = {product.id: {"version": "01.00"} for product in installation.PRODUCTS}
    installation.write_text(workstation.server_record, installation.ini_text(older))
    installation.write_text(workstation.client_record, installation.ini_text(older))
    workstation.start()
    assert workstation.commands_run() == []
    expected = {product.id: (product.version, product.version) for product in installation.PRODUCTS}
    assert workstation.versions() == expected
    assert workstation.texts_after("Gestione ProdTrelv - Release rilevata: 10.70.00")[:3] == [
        "Gestione ProdTrelv - Riconosciuta versione Dovra 05.70.00",
        "Gestione ProdTrelv - Inizio correzione file di versione server per Dovra",
        "Gestione ProdTrelv - Inizio correzione file di versione client per Dovra"]


def test_an_end_of_the_session_while_a_set_up_runs_leaves_no_lock(installed):
    source = installed.prefix.build.test_programs / "logoff.exe"
    (installed.share / "logoff.exe").write_bytes(source.read_bytes())
    sections = installation.configuration(ZB, ["09.94.00.00", "09.95.00.00"])
    sections["Update03"]["Server01"] = "S:\\logoff.exe"
    installed.write_configuration(ZB, sections)
    run = installed.run(f"{INTEGRATED} MVBIL")
    assert run.boxes == []
    assert ("Gestione ProdTrelv - Sessione di Windows terminata durante il comando: S:\\logoff.exe"
            == installed.texts()[-1])
    assert not (installed.server / "prg/tempterm/agdv.lck").exists()
    assert installed.versions()["ZB"] == ("09.94.00.00", "09.93.00.00")
