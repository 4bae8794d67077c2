"""The first start on a new installation: real set-ups of five products on both sides."""

import re

import pytest

from golden_log import assert_log
import installation

DATED = re.compile(rb"\d\d/\d\d/\d{4} \d\d:\d\d:\d\d -- ")


def setup_command(product, side, facts):
    folder = f"S:\\Lumo\\prg\\com\\setup\\aggdovra\\{product.folder}\\setup.exe"
    if side == "Server":
        target, files = f"S:\\Lumo\\mv\\{product.folder}", " ".join(product.files)
    else:
        target, files = f"{facts['program files']}\\Lumo\\{product.name}", "componenti.exe"
    return f'"{folder}" {product.id} {product.version} {side} "{target}" {files}'


@pytest.fixture
def started(laid_out):
    """After the first start."""
    laid_out.start()
    return laid_out


def test_set_ups_run_in_catalogue_order_server_side_first(started):
    assert started.commands_run() == [setup_command(product, side, started.facts)
                                      for product in installation.PRODUCTS
                                      for side in ("Server", "Client")]


def test_versions_are_recorded_on_both_sides_and_nothing_stays_locked(started):
    assert started.versions() == {
        "NERIO": ("03.20.30.00", "03.20.30.00"), "LUDA": ("07.10.00.00", "07.10.00.00"),
        "ZB": ("09.93.00.00", "09.93.00.00"), "Q2": ("02.92.00.00", "02.92.00.00"),
        "ZM": ("06.50.30.00", "06.50.30.00")}
    assert not started.server_lock.exists()
    assert not started.client_lock.exists()


def test_what_the_set_ups_put_in_place_is_there(started):
    for product in installation.PRODUCTS:
        for file in product.files:
            assert (started.server / "mv" / product.folder / file).exists(), file
        key = f"SOFTWARE\\LUMO\\Prodotti\\{product.id}"
        assert started.prefix.value("HKLM", key, "Server") == product.version
        assert started.prefix.value("HKLM", key, "Client") == product.version


def test_the_whole_log_is_the_expected_one_dated_and_in_the_ansi_code_page(started):
    assert_log(started, "first-install.log")
    log = started.log.read_bytes()
    *lines, end = log.split(b"\r\n")
    assert end == b""
    assert all(DATED.match(line) for line in lines)
    assert b"Esecuzione in modalit\xe0 integrata - parametri:  4 (" in log
    assert b"\xc3\xa0" not in log


def test_the_program_is_started_by_its_command(started):
    # The blank after the command stands there without arguments too.
    assert started.started("bilancio.exe")[0] == (
        "Linea di comando: S:\\Lumo\\mv\\bilancio\\bilancio.exe ")


def test_a_second_start_finds_the_integration_runs_nothing_and_changes_no_record(started):
    ran, records, store = started.commands_run(), started.versions(), started.store.read_bytes()
    started.log.unlink()
    started.start("LUDA")
    assert ("Gestione ProdTrelv - Integrazione Dovra SP rilevata con: S:\\Lumo"
            in started.texts())
    assert started.commands_run() == ran
    assert started.versions() == records
    assert started.store.read_bytes() == store
    assert b"Complementary_Products" in store
    # What the suite had recorded is still there.
    assert b'<product name="DOVRA">' in store


def test_a_host_other_than_dovra_gets_no_correction_lines(workstation):
    workstation.lay_out(products=[installation.ZB], dovra=False)
    workstation.start()
    texts = workstation.texts()
    assert "Gestione ProdTrelv - Gestione specifica per Dovra pre 11.0 (UNDICIZERO)" in texts
    assert "Gestione ProdTrelv - Prodotto Dovra riconosciuto" not in texts
    assert workstation.versions() == {"ZB": ("09.93.00.00", "09.93.00.00")}
