"""The first start on a new installation: real set-ups of five products on both sides."""

import re

from conftest import INTEGRATED
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


def test_set_ups_run_in_catalogue_order_server_side_first(laid_out):
    run = laid_out.run(f"{INTEGRATED} MVBIL")
    assert run.boxes == []
    assert laid_out.commands_run() == [setup_command(product, side, laid_out.facts)
                                       for product in installation.PRODUCTS
                                       for side in ("Server", "Client")]


def test_versions_are_recorded_on_both_sides_and_nothing_stays_locked(laid_out):
    laid_out.run(f"{INTEGRATED} MVBIL")
    assert laid_out.versions() == {
        "NERIO": ("03.20.30.00", "03.20.30.00"), "LUDA": ("07.10.00.00", "07.10.00.00"),
        "ZB": ("09.93.00.00", "09.93.00.00"), "Q2": ("02.92.00.00", "02.92.00.00"),
        "ZM": ("06.50.30.00", "06.50.30.00")}
    assert not laid_out.server_lock.exists()
    assert not laid_out.client_lock.exists()


def test_what_the_set_ups_put_in_place_is_there(laid_out):
    laid_out.run(f"{INTEGRATED} MVBIL")
    for product in installation.PRODUCTS:
        for file in product.files:
            assert (laid_out.server / "mv" / product.folder / file).exists(), file
        key = f"SOFTWARE\\LUMO\\Prodotti\\{product.id}"
        assert laid_out.prefix.value("HKLM", key, "Server") == product.version
        assert laid_out.prefix.value("HKLM", key, "Client") == product.version


def test_the_whole_log_is_the_expected_one(laid_out):
    laid_out.run(f"{INTEGRATED} MVBIL")
    assert_log(laid_out, "first-install.log")


def test_every_log_line_is_dated_and_in_the_ansi_code_page(laid_out):
    laid_out.run(f"{INTEGRATED} MVBIL")
    log = laid_out.log.read_bytes()
    lines = log.split(b"\r\n")
    assert lines.pop() == b""
    assert all(DATED.match(line) for line in lines)
    assert b"Esecuzione in modalit\xe0 integrata - parametri:  4 (" in log
    assert b"\xc3\xa0" not in log


def test_the_integration_is_recorded_in_the_store(laid_out):
    laid_out.run(f"{INTEGRATED} MVBIL")
    laid_out.log.unlink()
    laid_out.run(f"{INTEGRATED} MVBIL")
    assert ("Gestione ProdTrelv - Integrazione Dovra SP rilevata con: S:\\Lumo"
            in laid_out.texts())
    store = laid_out.store.read_text(encoding="utf-8")
    assert "Complementary_Products" in store
    # What the suite had recorded is still there.
    assert '<product name="DOVRA">' in store


def test_the_program_is_started_with_the_variables_of_its_product(laid_out):
    laid_out.run(f"{INTEGRATED} MVBIL")
    report = laid_out.started("bilancio.exe")
    # The blank after the command stands there without arguments too.
    assert report[0] == "Linea di comando: S:\\Lumo\\mv\\bilancio\\bilancio.exe "
    assert report[2:] == [
        "MVBil_BIL-COOSOC=Yes", "MVBil_BIL-ENTFIN=Yes", "MVBil_BIL-IASCON=Yes",
        "MVBil_BIL-IASIFR=Yes", "MVBil_Bilancio=Yes", "MVBil_Consolidato=Yes",
        "MVBil_HostedByLumo=Yes", "MVBil_ICAD=Yes"]


def test_a_second_start_runs_nothing_and_changes_no_record(laid_out):
    laid_out.run(f"{INTEGRATED} MVBIL")
    ran, records = laid_out.commands_run(), laid_out.versions()
    store = laid_out.store.read_bytes()
    run = laid_out.run(f"{INTEGRATED} LUDA")
    assert run.boxes == []
    assert laid_out.commands_run() == ran
    assert laid_out.versions() == records
    assert laid_out.store.read_bytes() == store
    report = laid_out.started("LUDA2003.exe")
    assert report[2:] == ["LUDAComRap=1", "LUDAIndFin=1", "LUDAIntermed=1", "LUDAProf=1"]


def test_a_host_other_than_dovra_gets_no_correction_lines(workstation):
    workstation.lay_out(products=[installation.ZB], dovra=False)
    workstation.run(f"{INTEGRATED} MVBIL")
    texts = workstation.texts()
    assert "Gestione ProdTrelv - Gestione specifica per Dovra pre 11.0 (UNDICIZERO)" in texts
    assert "Gestione ProdTrelv - Prodotto Dovra riconosciuto" not in texts
    assert workstation.versions() == {"ZB": ("09.93.00.00", "09.93.00.00")}
