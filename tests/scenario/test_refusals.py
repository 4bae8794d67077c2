"""What the user is told when something is refused or missing: the texts of the boxes, and what
happens after them."""

import pytest

from conftest import INTEGRATED, NO_RIGHTS, UPDATED_ALL, box, shown
import installation

ZB, NERIO = installation.ZB, installation.NERIO
PROGRAM_NOT_INSTALLED = box(
    "Il programma selezionato non risulta installato\r\n\r\nPremere Ok per interrompere")
NOT_ALLOWED = box("Esecuzione in modalità interattiva non consentita\r\n\r\nPremere Ok per interrompere")


def record_another_server(station):
    station.integrate("S:\\Altro")


def take_away_program(station):
    (station.server / "mv/tarsena2/tarsena2.exe").unlink()


def take_away_entry_and_rename_product(station):
    sections = installation.configuration(NERIO)
    del sections["Exec"]["VIRADO"]
    station.write_configuration(NERIO, sections)
    catalogue = installation.catalogue(installation.PRODUCTS)
    catalogue["prod01"]["name"] = "Nerio Contabilità"
    installation.write_text(station.setups / "agdvcomp.ini", installation.ini_text(catalogue))


def give_command_an_argument(station):
    sections = installation.configuration(ZB)
    sections["Exec"]["MVBIL"] += " /avvio"
    station.write_configuration(ZB, sections)


def take_away_catalogue(station):
    (station.setups / "agdvcomp.ini").unlink()


@pytest.mark.parametrize("arrange, code, told, line, started", [
    pytest.param(
        record_another_server, "MVBIL",
        "Sull'installazione corrente è stata rilevata l'integrazione con i prodotti complementari su "
        '"S:\\Altro" diverso dal percorso richiesto "S:\\Lumo"\r\n\r\nLa procedura pertanto non può '
        "essere completata\r\n\r\nPremere Ok per interrompere",
        "Gestione ProdTrelv - Integrazione disponibile ma su altro server - Impossibile proseguire",
        ["bilancio.exe"], id="another_server_is_refused_and_the_program_starts"),
    pytest.param(
        take_away_program, "Q2", PROGRAM_NOT_INSTALLED[1],
        "Gestione ProdTrelv - Il programma: S:\\Lumo\\mv\\tarsena2\\tarsena2.exe non è stato trovato "
        "su disco", [], id="a_program_that_is_not_on_disk_is_told"),
    pytest.param(
        take_away_entry_and_rename_product, "VIRADO",
        "Il prodotto selezionato Nerio Contabilità non risulta installato\r\n\r\nPremere Ok per "
        "interrompere", "Gestione ProdTrelv - Non è stato rilevato alcun programma per il prodotto: "
        "NERIO", [], id="a_program_without_entry_is_told_with_the_name_of_the_product"),
    pytest.param(
        give_command_an_argument, "MVBIL", PROGRAM_NOT_INSTALLED[1], UPDATED_ALL, [],
        id="a_command_with_arguments_counts_as_not_installed"),
    pytest.param(
        take_away_catalogue, "MVBIL",
        "Il prodotto selezionato  non risulta installato\r\n\r\nPremere Ok per interrompere",
        UPDATED_ALL, [], id="without_a_catalogue_nothing_is_updated")])
def test_what_keeps_a_program_from_its_update_or_start_is_told_once(installed, arrange, code, told, line,
                                                                    started):
    arrange(installed)
    run = installed.run(f"{INTEGRATED} {code}")
    assert shown(run) == [box(told)]
    assert line in installed.texts()
    assert installed.commands_run() == []
    assert list(installed.starts()) == started


def unknown_program(code):
    return box("Si è verificato un errore durante l'integrazione con il prodotto complementare richiesto: "
               f'\r\n\r\n(Programma "{code}" non riconosciuto)\r\n\r\nNon è stato pertanto possibile '
               "completare l'operazione richiesta")


ANALYSED = "Gestione prodTrelv - Analisi linea di comando effettuata"


@pytest.mark.parametrize("arguments, told, last_lines", [
    pytest.param(
        f"{INTEGRATED} mvbil", unknown_program("mvbil"),
        ['Gestione ProdTrelv - Errore in modulo principale: Programma "mvbil" non riconosciuto'],
        id="an_unknown_program_code_ends_in_the_main_failure_box"),
    pytest.param(
        "QUALCOSA S:\\Lumo S:\\Lumo XYZ", unknown_program("XYZ"),
        ['Gestione ProdTrelv - Errore in modulo principale: Programma "XYZ" non riconosciuto'],
        id="it_ends_the_modes_too_that_do_not_use_it"),
    pytest.param(
        INTEGRATED, box(
            "Non è possibile eseguire il prodotto richiesto, in quanto non è stata \r\nconfigurata "
            "correttamente la procedura di integrazione dei Prodotti Complementari.\r\n\r\nVerificare i "
            "parametri inseriti all'interno del configuratore di Dovra."),
        ["Gestione ProdTrelv - Numero parametri errato. Interruzione procedura."],
        id="three_arguments_are_too_few_for_the_integrated_run"),
    pytest.param(
        "", NOT_ALLOWED,
        ["Gestione ProdTrelv - Linea di comando ArgV = \t Numero parametri = 0", ANALYSED],
        id="no_arguments_are_refused"),
    pytest.param("STANDALONEINSTALL ZB", NOT_ALLOWED, [ANALYSED],
                 id="the_standalone_installation_is_refused"),
    pytest.param("INTEGRATEDRUNS S:\\Lumo S:\\Lumo MVBIL", NOT_ALLOWED, [ANALYSED],
                 id="an_unknown_mode_is_refused")])
def test_a_command_line_that_is_refused_ends_the_work(installed, arguments, told, last_lines):
    run = installed.run(arguments)
    assert shown(run) == [told]
    texts = installed.texts()
    assert texts[-len(last_lines):] == last_lines
    assert (ANALYSED in texts) == (ANALYSED in last_lines)
    assert "Gestione ProdTrelv - Inizio procedura" not in texts
    assert installed.started_nothing()


def test_the_recorded_server_is_compared_without_regard_to_case(installed):
    installed.integrate("s:\\LUMO")
    installed.start()
    assert UPDATED_ALL in installed.texts()


def test_the_ferax_suite_keeps_the_products_from_being_installed(laid_out):
    laid_out.put_programs([ZB])
    laid_out.prefix.set_value("HKLM", "Software\\FerPrg", "sistema", "0")
    laid_out.start()
    assert laid_out.commands_run() == []
    texts = laid_out.texts()
    assert ("Gestione ProdTrelv - SuiteFerax rilevata, nessun prodotto complementare viene "
            "installato/aggiornato") in texts
    assert "Gestione ProdTrelv - Verifica Esistenza Travolin" not in texts
    laid_out.started("bilancio.exe")


def test_another_value_than_0_is_no_ferax_suite(installed):
    installed.prefix.set_value("HKLM", "Software\\FerPrg", "sistema", "1")
    installed.start()
    assert UPDATED_ALL in installed.texts()


def test_a_configuration_file_that_is_missing_is_no_part_of_the_installation(installed):
    (installed.setups / "q2.ini").unlink()
    installed.start()
    assert ("Gestione ProdTrelv - Prodotto non rilevato, file di config non presente "
            "S:\\Lumo\\prg\\com\\setup\\aggdovra\\q2.ini") in installed.texts()
    installed.started("bilancio.exe")


def test_a_user_who_is_no_administrator_gets_one_box_for_each_refused_command(with_bilancio):
    station = with_bilancio
    run = station.run(f"{INTEGRATED} MVBIL", restricted=True)
    assert shown(run) == [NO_RIGHTS, NO_RIGHTS, PROGRAM_NOT_INSTALLED]
    assert station.commands_run() == []
    assert station.versions().get("ZB", ("", "")) == ("", "")
    assert not station.server_lock.exists()
    texts = station.texts()
    assert texts.count("Gestione ProdTrelv - Esecuzione prodotto complementare fallita, utente non "
                       "amministratore") == 2
    assert ("Gestione ProdTrelv - Esecuzione non effettuata di: "
            '"S:\\Lumo\\prg\\com\\setup\\aggdovra\\bilancio\\setup.exe" ZB 09.93.00.00 Server '
            '"S:\\Lumo\\mv\\bilancio" bilancio.exe consolidato.exe icad.exe personalizza.exe') in texts
    # The next start of an administrator does the work.
    station.start()
    assert station.versions()["ZB"] == ("09.93.00.00", "09.93.00.00")


def test_a_user_who_is_no_administrator_starts_what_is_up_to_date(installed):
    installed.start(restricted=True)
    installed.started("bilancio.exe")
