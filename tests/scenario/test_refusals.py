"""What the user is told when something is refused or missing: the texts of the boxes, and what
happens after them."""

from conftest import INTEGRATED
import installation

ZB = installation.ZB
PROGRAM_NOT_INSTALLED = "Il programma selezionato non risulta installato\r\n\r\nPremere Ok per interrompere"


def shown(run):
    return [(box.title, box.text, box.buttons) for box in run.boxes]


def test_another_server_is_refused_and_the_program_starts(installed):
    installed.integrate("S:\\Altro")
    run = installed.run(f"{INTEGRATED} MVBIL")
    assert shown(run) == [(
        "TrelvManager",
        "Sull'installazione corrente è stata rilevata l'integrazione con i prodotti complementari su "
        '"S:\\Altro" diverso dal percorso richiesto "S:\\Lumo"\r\n\r\nLa procedura pertanto non può '
        "essere completata\r\n\r\nPremere Ok per interrompere", ["OK"])]
    assert ("Gestione ProdTrelv - Integrazione disponibile ma su altro server - Impossibile proseguire"
            in installed.texts())
    assert installed.commands_run() == []
    installed.started("bilancio.exe")


def test_the_recorded_server_is_compared_without_regard_to_case(installed):
    installed.integrate("s:\\LUMO")
    assert installed.run(f"{INTEGRATED} MVBIL").boxes == []
    assert ("Gestione ProdTrelv - Termine procedura UpdateAllProdottiComplementari"
            in installed.texts())


def test_the_ferax_suite_keeps_the_products_from_being_installed(laid_out):
    laid_out.put_programs([ZB])
    laid_out.prefix.set_value("HKLM", "Software\\FerPrg", "sistema", "0")
    run = laid_out.run(f"{INTEGRATED} MVBIL")
    assert run.boxes == []
    assert laid_out.commands_run() == []
    texts = laid_out.texts()
    assert ("Gestione ProdTrelv - SuiteFerax rilevata, nessun prodotto complementare viene "
            "installato/aggiornato") in texts
    assert "Gestione ProdTrelv - Verifica Esistenza Travolin" not in texts
    laid_out.started("bilancio.exe")


def test_another_value_than_0_is_no_ferax_suite(installed):
    installed.prefix.set_value("HKLM", "Software\\FerPrg", "sistema", "1")
    installed.run(f"{INTEGRATED} MVBIL")
    assert ("Gestione ProdTrelv - Termine procedura UpdateAllProdottiComplementari"
            in installed.texts())


def test_a_program_that_is_not_on_disk_is_told(installed):
    program = installed.server / "mv/tarsena2/tarsena2.exe"
    program.unlink()
    run = installed.run(f"{INTEGRATED} Q2")
    assert shown(run) == [("TrelvManager", PROGRAM_NOT_INSTALLED, ["OK"])]
    assert ("Gestione ProdTrelv - Il programma: S:\\Lumo\\mv\\tarsena2\\tarsena2.exe non è stato trovato "
            "su disco") in installed.texts()
    assert installed.started_nothing()


def test_a_program_without_entry_is_told_with_the_name_of_the_product(installed):
    sections = installation.configuration(installation.NERIO)
    del sections["Exec"]["VIRADO"]
    installed.write_configuration(installation.NERIO, sections)
    catalogue = installation.catalogue(installation.PRODUCTS)
    catalogue["prod01"]["name"] = "Nerio Contabilità"
    installation.write_text(installed.setups / "agdvcomp.ini", installation.ini_text(catalogue))
    run = installed.run(f"{INTEGRATED} VIRADO")
    assert shown(run) == [(
        "TrelvManager", "Il prodotto selezionato Nerio Contabilità non risulta installato\r\n\r\n"
        "Premere Ok per interrompere", ["OK"])]
    assert ("Gestione ProdTrelv - Non è stato rilevato alcun programma per il prodotto: NERIO"
            in installed.texts())
    assert installed.started_nothing()


def test_a_command_with_arguments_counts_as_not_installed(installed):
    sections = installation.configuration(ZB)
    sections["Exec"]["MVBIL"] += " /avvio"
    installed.write_configuration(ZB, sections)
    run = installed.run(f"{INTEGRATED} MVBIL")
    assert shown(run) == [("TrelvManager", PROGRAM_NOT_INSTALLED, ["OK"])]
    assert installed.started_nothing()


def test_an_unknown_program_code_ends_in_the_main_failure_box(installed):
    run = installed.run(f"{INTEGRATED} mvbil")
    assert shown(run) == [(
        "TrelvManager", "Si è verificato un errore durante l'integrazione con il prodotto complementare "
        'richiesto: \r\n\r\n(Programma "mvbil" non riconosciuto)\r\n\r\nNon è stato pertanto possibile '
        "completare l'operazione richiesta", ["OK"])]
    texts = installed.texts()
    assert texts[-1] == ('Gestione ProdTrelv - Errore in modulo principale: Programma "mvbil" non '
                         "riconosciuto")
    assert "Gestione ProdTrelv - Inizio procedura" not in texts


def test_an_unknown_program_code_ends_the_modes_too_that_do_not_use_it(installed):
    run = installed.run("QUALCOSA S:\\Lumo S:\\Lumo XYZ")
    assert '(Programma "XYZ" non riconosciuto)' in run.boxes[0].text
    assert len(run.boxes) == 1


def test_three_arguments_are_too_few_for_the_integrated_run(installed):
    run = installed.run(INTEGRATED)
    assert shown(run) == [(
        "TrelvManager", "Non è possibile eseguire il prodotto richiesto, in quanto non è stata \r\n"
        "configurata correttamente la procedura di integrazione dei Prodotti Complementari.\r\n\r\n"
        "Verificare i parametri inseriti all'interno del configuratore di Dovra.", ["OK"])]
    texts = installed.texts()
    assert texts[-1] == "Gestione ProdTrelv - Numero parametri errato. Interruzione procedura."
    assert "Gestione prodTrelv - Analisi linea di comando effettuata" not in texts
    assert installed.started_nothing()


NOT_ALLOWED = ("TrelvManager", "Esecuzione in modalità interattiva non consentita\r\n\r\n"
               "Premere Ok per interrompere", ["OK"])


def test_no_arguments_are_refused(installed):
    run = installed.run("")
    assert shown(run) == [NOT_ALLOWED]
    assert installed.texts()[-2:] == [
        "Gestione ProdTrelv - Linea di comando ArgV = \t Numero parametri = 0",
        "Gestione prodTrelv - Analisi linea di comando effettuata"]


def test_the_standalone_installation_is_refused_like_an_unknown_mode(installed):
    assert shown(installed.run("STANDALONEINSTALL ZB")) == [NOT_ALLOWED]
    assert shown(installed.run("INTEGRATEDRUNS S:\\Lumo S:\\Lumo MVBIL")) == [NOT_ALLOWED]


def test_without_a_catalogue_nothing_is_updated(installed):
    (installed.setups / "agdvcomp.ini").unlink()
    run = installed.run(f"{INTEGRATED} MVBIL")
    assert shown(run) == [(
        "TrelvManager", "Il prodotto selezionato  non risulta installato\r\n\r\n"
        "Premere Ok per interrompere", ["OK"])]
    assert ("Gestione ProdTrelv - Termine procedura UpdateAllProdottiComplementari"
            in installed.texts())


def test_a_configuration_file_that_is_missing_is_no_part_of_the_installation(installed):
    (installed.setups / "q2.ini").unlink()
    run = installed.run(f"{INTEGRATED} MVBIL")
    assert run.boxes == []
    assert ("Gestione ProdTrelv - Prodotto non rilevato, file di config non presente "
            "S:\\Lumo\\prg\\com\\setup\\aggdovra\\q2.ini") in installed.texts()
    installed.started("bilancio.exe")


REFUSED_COMMAND = ("Errore", "Per il corretto funzionamento il sistema richiede l'aggiornamento di "
                   "alcuni componenti.\r\nL'utente corrente non dispone dei privilegi necessari per "
                   "effettuare tale operazione, impossibile proseguire.", ["OK"])


def test_a_user_who_is_no_administrator_gets_one_box_for_each_refused_command(workstation):
    station = workstation
    station.lay_out(products=[ZB])
    run = station.run(f"{INTEGRATED} MVBIL", restricted=True)
    assert shown(run) == [REFUSED_COMMAND, REFUSED_COMMAND,
                          ("TrelvManager", PROGRAM_NOT_INSTALLED, ["OK"])]
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
    assert station.run(f"{INTEGRATED} MVBIL").boxes == []
    assert station.versions()["ZB"] == ("09.93.00.00", "09.93.00.00")


def test_a_user_who_is_no_administrator_starts_what_is_up_to_date(installed):
    assert installed.run(f"{INTEGRATED} MVBIL", restricted=True).boxes == []
    installed.started("bilancio.exe")
