"""The maintenance form, worked by messages and by the keyboard: removal, repair, what is pressed too
early, cancelled or pressed while something runs."""

import contextlib

import pytest

import forms
import installation
import windows

ZB = installation.ZB
TITLE = "Manutenzione prodotti complementari integrati"
MAINTAIN = f"INTEGRATEDMAINTAIN {installation.HOST_FOLDER} {installation.HOST_FOLDER}"
REMOVER = "S:\\Lumo\\mv\\togli\\togli.exe"
NOTHING_REMOVED = "Nessun comando di rimozione eseguito"
NOTHING_REPAIRED = "Nessun comando di ripristino eseguito"
REMOVED = "Procedura di rimozione terminata correttamente"
CONTROLS = ("btnRemove", "btnRepair", "btnExit", "cmbProduct")


class Maintenance:
    """The installation with a program that removes ZB: it runs until it is let go on."""

    def __init__(self, station):
        self.station = station
        self.began = station.share / "running"
        self.go_on = station.share / "go-on"
        self.remover = station.server / "mv/togli/togli.exe"
        self.remover.parent.mkdir(parents=True)
        station.put_test_program("waiter", self.remover)
        sections = installation.configuration(ZB, ["09.94.00.00"])
        sections["Remove"] = {"Server01": REMOVER + " S:\\running S:\\go-on",
                              "Client01": REMOVER + " S:\\running S:\\go-on"}
        station.write_configuration(ZB, sections)
        self.configuration = station.setups / "zb.ini"

    @contextlib.contextmanager
    def form(self):
        """Opens the form; leaves it by its button."""
        with forms.running(self.station, MAINTAIN, TITLE) as hand:
            yield hand
            hand.click(TITLE, "btnExit")

    @contextlib.contextmanager
    def keyboard(self):
        """Opens the form and points the keyboard at it."""
        with forms.running(self.station, MAINTAIN, TITLE) as hand:
            hand.point_at(hand.dialog(TITLE))
            yield hand


@pytest.fixture
def maintenance(installed):
    return Maintenance(installed)


def choose_zb(hand, side):
    hand.choose(TITLE, "cmbProduct", 2)
    hand.click(TITLE, f"opt{side}")


def press(hand, button, *texts, answer="OK"):
    """Presses a button and answers what it asks; the boxes have these texts, in turn."""
    hand.click(TITLE, button)
    for text in texts:
        asks = text.startswith("Procedere con ")
        assert hand.box(answer if asks else "OK") == (text, ["OK", "ANNULLA"] if asks else ["OK"])


def test_the_form_shows_products_versions_and_recorded_versions(maintenance):
    with maintenance.form() as hand:
        form = hand.dialog(TITLE)
        assert form.items("cmbProduct") == ["NERIO - Nerio", "LUDA - Luda", "ZB - Bilancio",
                                            "Q2 - Tarsena2", "ZM - Zeltomodelli"]
        assert form.selected("cmbProduct") is None
        assert form.focus == "cmbProduct"
        assert form.checked("optClient") and form.checked("optSetup")
        assert form.text("lblServerPath") == "S:\\Lumo"
        assert form.text("lblProgress") == "000%"
        hand.choose(TITLE, "cmbProduct", 2)
        form = hand.dialog(TITLE)
        assert form.text("lblServerVersion") == "versione registrata: 09.93.00.00"
        assert form.text("lblClientVersion") == "versione registrata: 09.93.00.00"
        assert form.items("lstVersion") == ["09.94.00.00   (Setup01)"]
        hand.click(TITLE, "optUpdate")
        assert hand.dialog(TITLE).items("lstVersion") == ["09.93.00.00   (Update01)",
                                                          "09.94.00.00   (Update02)"]
    assert ("Gestione ProdTrelv - Manutenzione prodotti complementari integrati"
            in maintenance.station.texts())


def test_a_button_that_is_pressed_too_early_says_what_is_missing(maintenance):
    with maintenance.form() as hand:
        press(hand, "btnRemove", "Selezionare un prodotto")
        press(hand, "btnRepair", "Selezionare una versione")
        choose_zb(hand, "Server")
        press(hand, "btnRepair", "Selezionare una versione")


def test_a_cancelled_removal_changes_nothing(maintenance):
    with maintenance.form() as hand:
        choose_zb(hand, "Server")
        press(hand, "btnRemove", "Procedere con la rimozione di: ZB - Server?", NOTHING_REMOVED,
              answer="Annulla")
    assert not maintenance.began.exists()
    assert maintenance.station.versions()["ZB"] == (ZB.version, ZB.version)
    assert maintenance.configuration.exists()


def test_a_removal_on_the_server_takes_everything_away(maintenance):
    with maintenance.form() as hand:
        choose_zb(hand, "Server")
        maintenance.go_on.touch()
        press(hand, "btnRemove", "Procedere con la rimozione di: ZB - Server?", REMOVED)
        form = hand.dialog(TITLE)
        assert form.text("lblServerVersion") == "nessuna versione registrata"
        assert form.text("lblClientVersion") == "versione registrata: 09.93.00.00"
        assert form.items("lstVersion") == []
        assert form.selected("cmbProduct") == "ZB - Bilancio"
        assert form.text("lblOutcome") == "Rimozione di ZB - Server terminata."
        assert form.text("lblProgress") == "100%"
        assert form.text("txtProgress") == maintenance.station.texts()[-1]
        assert form.focus == "btnRemove"
    station = maintenance.station
    assert station.versions()["ZB"] == ("", ZB.version)
    assert not maintenance.configuration.exists()
    assert not maintenance.remover.parent.exists()
    assert [line for line in station.texts() if "imozione" in line] == [
        f"Gestione ProdTrelv - Esecuzione comando di rimozione prodotto: {REMOVER} S:\\running S:\\go-on",
        "Gestione ProdTrelv - Rimozione cartella server di setup: S:\\Lumo\\mv\\togli",
        "Gestione ProdTrelv - Rimozione file di configurazione: "
        "S:\\Lumo\\prg\\com\\setup\\aggdovra\\zb.ini"]


def test_a_removal_on_the_client_leaves_the_server_alone(maintenance):
    with maintenance.form() as hand:
        choose_zb(hand, "Client")
        maintenance.go_on.touch()
        press(hand, "btnRemove", "Procedere con la rimozione di: ZB - Client?", REMOVED)
    assert maintenance.station.versions()["ZB"] == (ZB.version, "")
    assert maintenance.configuration.exists()
    assert maintenance.remover.exists()


def test_a_product_without_removal_commands_is_told_and_its_version_cleared(maintenance):
    sections = installation.configuration(installation.NERIO)
    del sections["Remove"]
    maintenance.station.write_configuration(installation.NERIO, sections)
    with maintenance.form() as hand:
        hand.choose(TITLE, "cmbProduct", 0)
        press(hand, "btnRemove", "Procedere con la rimozione di: NERIO - Client?", NOTHING_REMOVED)
        assert hand.dialog(TITLE).text("lblClientVersion") == "nessuna versione registrata"
    assert maintenance.station.versions()["NERIO"] == ("03.20.30.00", "")


def test_a_repair_runs_the_commands_of_the_selected_version_again(maintenance):
    with maintenance.form() as hand:
        choose_zb(hand, "Server")
        hand.click(TITLE, "optUpdate")
        hand.choose(TITLE, "lstVersion", 0)
        press(hand, "btnRepair", "Procedere con il ripristino di: ZB - 09.93.00.00 - Server?")
        windows.wait_for_file(maintenance.station.setups / "installazioni.txt")
        form = hand.dialog(TITLE)
        assert form.text("lblOutcome") == "Ripristino di ZB - 09.93.00.00 - Server terminato."
        assert form.selected("lstVersion") == "09.93.00.00   (Update01)"
        assert hand.no_box()
    assert maintenance.station.set_ups_run() == ["ZB 09.93.00.00 Server"]
    assert maintenance.station.versions()["ZB"] == (ZB.version, ZB.version)


def test_a_repair_that_is_cancelled_or_finds_no_command_says_so(maintenance):
    sections = installation.configuration(ZB)
    del sections["Setup01"]["Client01"]
    maintenance.station.write_configuration(ZB, sections)
    with maintenance.form() as hand:
        choose_zb(hand, "Client")
        hand.choose(TITLE, "lstVersion", 0)
        for answer in ("Annulla", "OK"):
            press(hand, "btnRepair", "Procedere con il ripristino di: ZB - 09.93.00.00 - Client?",
                  NOTHING_REPAIRED, answer=answer)
    assert maintenance.station.commands_run() == []


def test_clicks_and_the_close_box_during_a_removal_do_nothing(maintenance):
    with maintenance.form() as hand:
        choose_zb(hand, "Server")
        press(hand, "btnRemove", "Procedere con la rimozione di: ZB - Server?")
        assert windows.wait_for_file(maintenance.began)
        form = hand.dialog(TITLE)
        assert form.text("lblOutcome") == "Rimozione di ZB - Server in corso..."
        assert not any(form.enabled(each) for each in CONTROLS)
        # These messages stay until the next log line, and reach the form although its buttons are
        # disabled.
        for button in ("btnRemove", "btnRemove", "btnRepair", "btnExit"):
            hand.click(TITLE, button)
        hand.dismiss(TITLE)
        maintenance.go_on.touch()
        assert hand.box() == (REMOVED, ["OK"])
        form = hand.dialog(TITLE)
        assert all(form.enabled(each) for each in CONTROLS)
        assert hand.no_box()
    assert "\n".join(maintenance.station.texts()).count("Esecuzione comando di rimozione prodotto") == 1


def test_esc_and_the_close_box_leave_the_form(maintenance):
    with forms.running(maintenance.station, MAINTAIN, TITLE) as hand:
        hand.dismiss(TITLE)
    with maintenance.keyboard() as hand:
        hand.keys("Escape")


def test_the_keyboard_alone_repairs_and_removes(maintenance):
    with maintenance.keyboard() as hand:
        # Product ZB, server side, the second update, repair.
        hand.keys("alt+p", "Home", "Down", "Down", "alt+s")
        assert hand.dialog(TITLE).selected("cmbProduct") == "ZB - Bilancio"
        hand.keys("alt+u", "alt+v", "Home", "Down")
        form = hand.dialog(TITLE)
        assert form.checked("optServer") and form.checked("optUpdate")
        assert form.selected("lstVersion") == "09.94.00.00   (Update02)"
        hand.keys("Return")
        assert hand.no_box(), "Enter in a list presses no button"
        hand.keys("alt+i")
        assert hand.answer_by_keys("Return")[0] == (
            "Procedere con il ripristino di: ZB - 09.94.00.00 - Server?")
        assert windows.wait_for_file(maintenance.station.setups / "installazioni.txt")
        assert hand.dialog(TITLE).focus == "btnRepair"
        hand.point_at(hand.dialog(TITLE))
        # Removal, first cancelled by Esc, then confirmed.
        hand.keys("alt+r")
        hand.answer_by_keys("Escape")
        assert hand.answer_by_keys("Return")[0] == NOTHING_REMOVED
        maintenance.go_on.touch()
        hand.point_at(hand.dialog(TITLE))
        hand.keys("alt+r")
        hand.answer_by_keys("Return")
        assert hand.answer_by_keys("Return")[0] == REMOVED
        hand.point_at(hand.dialog(TITLE))
        hand.keys("alt+e")
    assert maintenance.station.versions()["ZB"] == ("", ZB.version)


def test_the_tab_key_goes_through_the_form_from_above(maintenance):
    with maintenance.keyboard() as hand:
        order = []
        for _ in range(9):
            order.append(hand.dialog(TITLE).focus)
            hand.keys("Tab")
        assert order == ["cmbProduct", "optClient", "btnRemove", "optSetup", "lstVersion",
                         "btnRepair", "txtProgress", "btnExit", "cmbProduct"]
        hand.keys("Escape")


def test_without_integration_the_form_is_empty(laid_out):
    with forms.running(laid_out, MAINTAIN, TITLE) as hand:
        form = hand.dialog(TITLE)
        assert form.items("cmbProduct") == []
        assert form.text("lblOutcome") == "Nessuna integrazione con Dovra registrata su questa stazione."
        press(hand, "btnRemove", "Selezionare un prodotto")
        hand.click(TITLE, "btnExit")
