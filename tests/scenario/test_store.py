"""The configuration store of ours in every state that a workstation can be in."""

import pytest

from conftest import INTEGRATED, shown
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
FOUND = "Gestione ProdTrelv - Integrazione Dovra SP rilevata con: S:\\Lumo"
CLIENT_FOLDER_FAILED = "Verificare i seguenti parametri: \r\nsPathProgrammi: "


def reports(run):
    """The error reports among the boxes: (procedure, headline, the caller's message)."""
    return [(box.texts["txtProcedura"], box.texts["txtErrLabel"],
             box.texts["txtErrDescrizioneInterna"])
            for box in run.boxes if "txtErrDescrizioneInterna" in box.texts]


def messages(run):
    return [box.text for box in run.boxes if "txtErrDescrizioneInterna" not in box.texts]


def point_at_the_schema_alone(station):
    station.prefix.delete_key("HKLM", installation.STORE_KEY)
    key, name, value = station.registry_values()[0]
    station.prefix.set_value("HKLM", key, name, value)


@pytest.mark.parametrize("take_away, code, text", [
    pytest.param(lambda station: station.prefix.delete_key("HKLM", installation.STORE_KEY),
                 -4001, "Registry Key Schema Not Found", id="the_pointer_to_the_schema"),
    pytest.param(point_at_the_schema_alone, -4002, "Registry Key Config Not Found",
                 id="the_pointer_to_the_file"),
    pytest.param(lambda station: (station.client / "lumoconf.xsd").unlink(),
                 -4011, "Schema File Not Found", id="the_schema"),
    pytest.param(lambda station: station.store.unlink(), -4012, "Config File Not Found", id="the_file")])
def test_without_its_place_nothing_is_recorded_and_all_else_is_done(laid_out, take_away, code, text):
    """The programs path is empty then."""
    take_away(laid_out)
    run = laid_out.run(f"{INTEGRATED} MVBIL")
    assert messages(run) == []
    found = reports(run)
    assert found.count(("SetParameterXML", PROGRAM_HEADLINE, WRITE_FAILED.format(text))) == 1
    assert {message for procedure, _, message in found if procedure != "SetParameterXML"} <= {
        CLIENT_FOLDER_FAILED}
    texts = laid_out.texts()
    # Asked before the writing, by the writing, and for Travolin.
    assert texts.count(f"Suite Lumo non trovata in registro: Errore riscontrato {code}") >= 3
    assert "Gestione ProdTrelv - scrittura integrazione su macchina: S:\\Lumo" in texts
    assert [version for version, _ in laid_out.versions().values()] == [
        product.version for product in installation.PRODUCTS]
    laid_out.started("bilancio.exe")


def cut(length):
    return lambda content: content[:length]


def put(text):
    return lambda content: text.encode()


@pytest.mark.parametrize("damage, text", [
    pytest.param(put(""), "Document Empty", id="empty"),
    *[pytest.param(cut(length), "Navigate Generic Error", id=f"cut_at_{length}")
      for length in (1, 40, 200, -3)],
    *[pytest.param(put(content), "Navigate Generic Error", id=f"not_well_formed_{number}")
      for number, content in enumerate([
          "nessun XML", "<configuration>", "<configuration></altro>", "<a><b></a></b>",
          "<configuration><product name=SYSTEM/></configuration>", "\0\0\0\0\0\0\0\0"])]])
def test_where_its_file_cannot_be_read_another_server_counts_as_recorded(installed, damage, text):
    """The one of an empty path."""
    before = damage(installed.store.read_bytes())
    installed.store.write_bytes(before)
    run = installed.run(f"{INTEGRATED} MVBIL")
    assert reports(run) == [("GetParameterXML", FILE_HEADLINE, READ_FAILED.format(text))]
    assert messages(run) == [OTHER_SERVER]
    assert installed.commands_run() == []
    assert installed.store.read_bytes() == before
    installed.started("bilancio.exe")


def put_entities(station, value, entities):
    """A store whose recorded path is `value`, below declarations of these entities."""
    head, body = installation.store_xml([installation.integration_setting(value)]).split("\r\n", 1)
    station.store.write_bytes(f"{head}<!DOCTYPE configuration [{entities}]>{body}".encode())


def test_entities_that_multiply_are_not_followed(installed):
    put_entities(installed, "&e11;", '<!ENTITY e0 "bomba">' + "".join(
        f'<!ENTITY e{level} "{f"&e{level - 1};" * 10}">' for level in range(1, 12)))
    run = installed.run(f"{INTEGRATED} MVBIL", limit=15)
    # Refused, or another server: in neither case the value that the entities stand for.
    assert not any("bomba" in box.text for box in run.boxes)
    assert len(messages(run)) == 1
    assert messages(run)[0].startswith("Sull'installazione corrente è stata rilevata")
    installed.started("bilancio.exe")


def test_an_external_entity_is_not_read(installed):
    (installed.client / "segreto.txt").write_text("S:\\Lumo")
    put_entities(installed, "&file;", '<!ENTITY file SYSTEM "file:///C:/Lumo/Client/segreto.txt">')
    installed.run(f"{INTEGRATED} MVBIL")
    assert FOUND not in installed.texts()


def test_names_are_found_in_any_case(installed):
    text = installed.store.read_text(encoding="utf-8")
    installed.store.write_text(
        text.replace("SYSTEM", "System").replace("Complementary_Products", "COMPLEMENTARY_PRODUCTS")
        .replace("Integration", "integration"), encoding="utf-8")
    installed.start()
    assert FOUND in installed.texts()


def test_the_marker_stored_literally_counts_as_no_record(installed):
    installed.integrate("_DEFAULT_VALUE_")
    installed.start()
    assert ("Gestione ProdTrelv - scrittura integrazione su macchina: S:\\Lumo" in installed.texts())


def test_an_empty_value_counts_as_recorded(installed):
    installed.integrate("")
    run = installed.run(f"{INTEGRATED} MVBIL")
    assert messages(run) == [OTHER_SERVER]
    assert reports(run) == []


def test_an_accented_path_is_recorded_and_found_again(with_bilancio):
    station = with_bilancio
    station.rename_host("Contabilità")
    folder = "S:\\Contabilità"
    for line in (f"Gestione ProdTrelv - scrittura integrazione su macchina: {folder}",
                 f"Gestione ProdTrelv - Integrazione Dovra SP rilevata con: {folder}"):
        station.log.unlink(missing_ok=True)
        assert shown(station.run(f"INTEGRATEDRUN {folder} {folder} MVBIL")) == []
        assert line in station.texts()
        assert folder in station.store.read_text(encoding="utf-8")


def test_two_writers_at_once_lose_neithers_value(installed):
    """Real programs, 50 values each; a write that is refused would count in the exit code."""
    writer = "Z:" + str(installed.prefix.build.test_programs / "writer.exe").replace("/", "\\")
    writers = [installed.prefix.start(writer, name, "50") for name in ("uno", "due")]
    assert [each.wait(timeout=120) for each in writers] == [0, 0]
    text = installed.store.read_text(encoding="utf-8")
    lost = [f"{name}{number}" for name in ("uno", "due") for number in range(1, 51)
            if f'<key name="{name}{number}">' not in text]
    assert lost == []
    assert sorted(path.name for path in installed.client.iterdir()
                  if path.name.startswith(installed.store.name)) == [installed.store.name]
    installed.start()
    assert FOUND in installed.texts()
