"""What the manager finds out on each Windows that Wine can play. Wine's names for 7 and 2008 R2
are exchanged in the setting that is used here: "win7" plays the server."""

import pytest

from conftest import INTEGRATED
import installation

@pytest.mark.parametrize("version, answer", [
    ("win95", "Falso"), ("win98", "Falso"), ("winme", "Falso"), ("nt40", "Falso"),
    ("win2k", "Falso"), ("winxp", "Falso"), ("winxp64", "Falso"), ("win2003", "Falso"),
    ("vista", "Falso"), ("win2008", "Vero"), ("win7", "Vero"), ("win2008r2", "Falso"),
    ("win8", "Falso"), ("win81", "Falso"), ("win10", "Falso")])
def test_the_log_tells_whether_it_is_a_server_of_2008(installed, played, version, answer):
    played(version)
    installed.start()
    texts = installed.texts()
    start = texts.index(f"IsWin2008Server = {answer}")
    # No application-server mode here: never a terminal server.
    assert texts[start + 1] == "IsWin2008TS = Falso"
    installed.started("bilancio.exe")


def test_on_windows_98_everyone_is_administrator(with_bilancio, played):
    played("win98")
    with_bilancio.start(restricted=True)
    assert len(with_bilancio.commands_run()) == 2


def test_on_windows_xp_rights_are_asked_for(with_bilancio, played):
    played("winxp")
    run = with_bilancio.run(f"{INTEGRATED} MVBIL", restricted=True)
    assert [box.title for box in run.boxes] == ["Errore", "Errore", "TrelvManager"]
    assert with_bilancio.commands_run() == []


def test_the_two_windows_are_a_32_bit_and_a_64_bit_one(prefix):
    facts = prefix.facts()
    assert facts["wow64"] == (prefix.kind == "win64")
    assert facts["code page"] == 1252
