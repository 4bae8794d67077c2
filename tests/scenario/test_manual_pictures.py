"""The forms that no other scenario pictures for the manual, in the state that it shows them."""

import forms
import installation
from conftest import INTEGRATED
from test_maintenance import MAINTAIN, TITLE as MAINTENANCE


def test_the_maintenance_form_is_pictured(installed):
    installed.write_configuration(installation.ZB, installation.configuration(installation.ZB, ["09.94.00.00"]))
    with forms.running(installed, MAINTAIN, MAINTENANCE) as hand:
        hand.choose(MAINTENANCE, "cmbProduct", 2)
        hand.choose(MAINTENANCE, "lstVersion", 0)
        hand.picture(MAINTENANCE, "manutenzione")
        hand.click(MAINTENANCE, "btnExit")


def test_the_error_form_is_pictured(installed):
    sections = installation.configuration(installation.ZB, ["09.94.00.00"])
    sections["Update02"]["Server01"] = "S:\\Lumo\\manca.exe"
    installed.write_configuration(installation.ZB, sections)
    hand = forms.Hand(installed.prefix)
    try:
        run = installed.run(f"{INTEGRATED} MVBIL", on_box=lambda box: hand.picture(box.title, "errore"))
    finally:
        hand.close()
    assert [box.texts["txtProcedura"] for box in run.boxes] == ["Execute"]
