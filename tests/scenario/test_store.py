"""The configuration store of ours in every state that a workstation can be in."""

import pytest

from conftest import INTEGRATED
import installation

READ_FAILED = ("Errore in lettura chiave da file di configurazione: {}\r\nSezione: "
               "Complementary_Products\r\nChiave: Integration\r\nProdotto: SYSTEM")
WRITE_FAILED = READ_FAILED.replace("lettura", "scrittura")
FILE_HEADLINE = ("Si è verificato un errore non previsto durante la gestione del file di "
                 "configurazione. Riportare la segnalazione al servizio di assistenza.")
PROGRAM_HEADLINE = ("Si è verificato un errore non previsto durante l'esecuzione del programma. "
                    "Riportare la segnalazione al servizio di assistenza.")
OTHER_SERVER = ("Sull'installazione corrente è stata rilevata l'integrazione con i prodotti "
                'complementari su "" diverso dal percorso richiesto "S:\\Lumo"\r\n\r\nLa procedura '
                "pertanto non può essere completata\r\n\r\nPremere Ok per interrompere")
CLIENT_FOLDER_FAILED = "Verificare i seguenti parametri: \r\nsPathProgrammi: "


def reports(run):
    """The error reports among the boxes: (procedure, headline, the caller's message)."""
    return [(box.texts["txtProcedura"], box.texts["txtErrLabel"],
             box.texts["txtErrDescrizioneInterna"])
            for box in run.boxes if "txtErrDescrizioneInterna" in box.texts]


def messages(run):
    return [box.text for box in run.boxes if "txtErrDescrizioneInterna" not in box.texts]


def run_without_place(station, code, text):
    """A store that has no place: the integration cannot be recorded, everything else is done with
    an empty programs path."""
    run = station.run(f"{INTEGRATED} MVBIL")
    assert messages(run) == []
    found = reports(run)
    assert found.count(("SetParameterXML", PROGRAM_HEADLINE, WRITE_FAILED.format(text))) == 1
    others = [each for each in found if each[0] != "SetParameterXML"]
    assert {message for _, _, message in others} <= {CLIENT_FOLDER_FAILED}
    texts = station.texts()
    # Asked before the writing, by the writing, and for Travolin.
    assert texts.count(f"Suite Lumo non trovata in registro: Errore riscontrato {code}") >= 3
    assert "Gestione ProdTrelv - scrittura integrazione su macchina: S:\\Lumo" in texts
    assert [version for version, _ in station.versions().values()] == [
        product.version for product in installation.PRODUCTS]
    station.started("bilancio.exe")


def test_without_the_pointer_to_the_schema(laid_out):
    laid_out.prefix.delete_key("HKLM", installation.STORE_KEY)
    run_without_place(laid_out, -4001, "Registry Key Schema Not Found")


def test_without_the_pointer_to_the_file(laid_out):
    laid_out.prefix.delete_key("HKLM", installation.STORE_KEY)
    key, name, value = laid_out.registry_values()[0]
    laid_out.prefix.set_value("HKLM", key, name, value)
    run_without_place(laid_out, -4002, "Registry Key Config Not Found")


def test_without_the_schema(laid_out):
    (laid_out.client / "lumoconf.xsd").unlink()
    run_without_place(laid_out, -4011, "Schema File Not Found")


def test_without_the_file(laid_out):
    laid_out.store.unlink()
    run_without_place(laid_out, -4012, "Config File Not Found")


def run_unreadable(station, text, limit=30):
    """A store whose file cannot be read: an empty path counts as recorded, for another server."""
    before = station.store.read_bytes()
    run = station.run(f"{INTEGRATED} MVBIL", limit=limit)
    assert reports(run) == [("GetParameterXML", FILE_HEADLINE, READ_FAILED.format(text))]
    assert messages(run) == [OTHER_SERVER]
    assert station.commands_run() == []
    assert station.store.read_bytes() == before
    station.started("bilancio.exe")


def test_an_empty_file(installed):
    installed.store.write_bytes(b"")
    run_unreadable(installed, "Document Empty")


@pytest.mark.parametrize("length", [1, 40, 200, -3])
def test_a_truncated_file(installed, length):
    installed.store.write_bytes(installed.store.read_bytes()[:length])
    run_unreadable(installed, "Navigate Generic Error")


@pytest.mark.parametrize("text", [
    "nessun XML", "<configuration>", "<configuration></altro>", "<a><b></a></b>",
    "<configuration><product name=SYSTEM/></configuration>", "\0\0\0\0\0\0\0\0"])
def test_a_file_that_is_not_well_formed(installed, text):
    installed.store.write_bytes(text.encode())
    run_unreadable(installed, "Navigate Generic Error")


def test_entities_that_multiply_are_not_followed(installed):
    entities = "".join(f'<!ENTITY e{level} "{f"&e{level - 1};" * 10}">' for level in range(1, 12))
    text = installation.store_xml([installation.integration_setting("&e11;")])
    head, body = text.split("\r\n", 1)
    installed.store.write_bytes(
        f'{head}<!DOCTYPE configuration [<!ENTITY e0 "bomba">{entities}]>{body}'.encode())
    run = installed.run(f"{INTEGRATED} MVBIL", limit=15)
    # Refused, or another server: in neither case the value that the entities stand for.
    assert not any("bomba" in box.text for box in run.boxes)
    assert len(messages(run)) == 1
    assert messages(run)[0].startswith("Sull'installazione corrente è stata rilevata")
    installed.started("bilancio.exe")


def test_an_external_entity_is_not_read(installed):
    (installed.client / "segreto.txt").write_text("S:\\Lumo")
    text = installation.store_xml([installation.integration_setting("&file;")])
    head, body = text.split("\r\n", 1)
    installed.store.write_bytes(
        (f'{head}<!DOCTYPE configuration [<!ENTITY file SYSTEM "file:///C:/Lumo/Client/segreto.txt">]>'
         f"{body}").encode())
    installed.run(f"{INTEGRATED} MVBIL")
    assert ("Gestione ProdTrelv - Integrazione Dovra SP rilevata con: S:\\Lumo"
            not in installed.texts())


def test_names_are_found_in_any_case(installed):
    text = installed.store.read_text(encoding="utf-8")
    installed.store.write_text(
        text.replace("SYSTEM", "System").replace("Complementary_Products", "COMPLEMENTARY_PRODUCTS")
        .replace("Integration", "integration"), encoding="utf-8")
    assert installed.run(f"{INTEGRATED} MVBIL").boxes == []
    assert ("Gestione ProdTrelv - Integrazione Dovra SP rilevata con: S:\\Lumo" in installed.texts())


def test_the_marker_stored_literally_counts_as_no_record(installed):
    installed.integrate("_DEFAULT_VALUE_")
    assert installed.run(f"{INTEGRATED} MVBIL").boxes == []
    assert ("Gestione ProdTrelv - scrittura integrazione su macchina: S:\\Lumo" in installed.texts())


def test_an_empty_value_counts_as_recorded(installed):
    installed.integrate("")
    run = installed.run(f"{INTEGRATED} MVBIL")
    assert messages(run) == [OTHER_SERVER]
    assert reports(run) == []


def test_an_accented_path_is_recorded_and_found_again(workstation):
    workstation.lay_out(products=[installation.ZB])
    workstation.rename_host("Contabilità")
    folder = "S:\\Contabilità"
    assert workstation.run(f"INTEGRATEDRUN {folder} {folder} MVBIL").boxes == []
    assert "S:\\Contabilità" in workstation.store.read_text(encoding="utf-8")
    workstation.log.unlink()
    assert workstation.run(f"INTEGRATEDRUN {folder} {folder} MVBIL").boxes == []
    assert (f"Gestione ProdTrelv - Integrazione Dovra SP rilevata con: {folder}"
            in workstation.texts())
