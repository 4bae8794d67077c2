"""SINGLEINSTALL: one product from a pack that was delivered beside the manager, on a machine with the
host's integration and on one without it."""

import os

import pytest

from conftest import INTEGRATED, NO_RIGHTS, box, shown
from golden_log import assert_log
import installation
import packs

ZB = installation.ZB
Q2 = installation.Q2
VERSION = "09.94.00.00"
SETUP = installation.SETUP_FOLDER

pytestmark = pytest.mark.usefixtures("seven_zip")


def done_box(product="ZB", folder="S:\\LUMO"):
    return box(f"Installazione completata correttamente del prodotto {product} in: {folder}")


def deliver(station, zip_packs, name="bilancio.gz"):
    """Puts a gz pack of {name of a zip pack: content} beside the manager."""
    (station.manager_folder / name).write_bytes(packs.gz_bytes(zip_packs))


def deliver_bilancio(station):
    deliver(station, {"bilancio.zip": packs.zip_bytes(station.pack_files(ZB, VERSION))})


def install(station, product="ZB", **named):
    """Installs the delivery; what was shown."""
    return shown(station.run(f"SINGLEINSTALL {product} bilancio.gz", **named))


def note(name, text=b"1"):
    """A zip pack with one file."""
    return packs.zip_bytes({f"{SETUP}/{name}": text})


# --- With the host's integration

@pytest.fixture
def integrated(laid_out):
    """Integrated, nothing installed, with an old client copy of the manager."""
    laid_out.integrate()
    (laid_out.client_copy / "TrelvManager.exe").write_bytes(b"MZ vecchio")
    os.utime(laid_out.client_copy / "TrelvManager.exe", (1_000_000_000, 1_000_000_000))
    return laid_out


def test_on_an_integrated_machine_the_pack_comes_to_the_server_and_nothing_is_set_up(integrated):
    deliver_bilancio(integrated)
    assert install(integrated) == [done_box()]
    assert_log(integrated, "single-install-integrated.log")
    for name, content in integrated.pack_files(ZB, VERSION).items():
        assert (integrated.server / name).read_bytes() == content, name
    assert not (integrated.setups / "bilancio.zip").exists()
    assert not (integrated.work_folder / "prg").exists()
    assert integrated.commands_run() == []
    assert integrated.versions() == {}
    # A delivery can be installed on several machines.
    assert (integrated.manager_folder / "bilancio.gz").exists()


def test_the_next_start_of_the_host_sets_the_product_up_with_the_new_client_copy(integrated):
    integrated.prefix.build.put_release(integrated.client_copy)
    deliver_bilancio(integrated)
    install(integrated)
    integrated.manager = installation.CLIENT_COPY + "\\TrelvManager.exe"
    integrated.start()
    assert integrated.versions()["ZB"] == (VERSION, VERSION)
    integrated.started("bilancio.exe")


def test_the_name_is_shown_as_it_was_typed_and_the_folder_in_capitals(integrated):
    integrated.integrate("S:\\Lumo\\")
    deliver_bilancio(integrated)
    run = integrated.run('singleinstall "Bilancio e note" bilancio.gz')
    assert shown(run) == [done_box("Bilancio e note")]
    # Without the trailing backslash of the record.
    assert "Apertura pacco in: S:\\Lumo" in integrated.texts()
    assert (integrated.setups / "zb.ini").read_bytes() == integrated.pack_files(
        ZB, VERSION)[f"{SETUP}/zb.ini"]


def test_a_delivery_of_two_packs(integrated):
    deliver(integrated, {"a.zip": note("comune.txt", b"a"), "b.zip": note("comune.txt", b"b")})
    assert install(integrated) == [done_box()]
    assert (integrated.setups / "comune.txt").read_bytes() == b"b"
    assert not (integrated.setups / "a.zip").exists()
    # The second pack was copied along with what the first one held: the next start opens it again.
    assert (integrated.setups / "b.zip").exists()
    integrated.run(f"{INTEGRATED} MVBIL")
    assert not (integrated.setups / "b.zip").exists()
    assert (integrated.setups / "comune.txt").read_bytes() == b"b"


def test_a_damaged_pack_of_a_delivery_is_told_and_the_others_are_opened(integrated):
    damaged = bytearray(packs.zip_bytes({f"{SETUP}/uno.txt": b"1" * 5000, f"{SETUP}/due.txt": b"2"}))
    damaged[70] ^= 0xFF
    deliver(integrated, {"a.zip": bytes(damaged), "b.zip": note("buono.txt")})
    work = integrated.work_folder_name
    failed = (f'"C:\\Lumo\\Manager\\7z.exe" x -y -o"{work}" '
              f'"{work}\\prg\\com\\setup\\aggdovra\\a.zip"')
    assert install(integrated) == [
        box(f"Errore in esecuzione comando: {failed}"), done_box()]
    assert (integrated.setups / "buono.txt").read_bytes() == b"1"
    assert not (integrated.setups / "uno.txt").exists()
    assert not (integrated.setups / "due.txt").exists()
    assert not (integrated.work_folder / "prg").exists()


OPENING_FAILED = ("OpenSinglePacks", "ModProdTrelvManager", "Errore in Apertura Pacco ")


@pytest.mark.parametrize("content", [None, b"", b"Non e' un pacco", "cut"])
def test_a_delivery_that_cannot_be_decoded_is_reported(integrated, content):
    """The decoder's own failure is not told; that it left no set-up folder is."""
    deliver_bilancio(integrated)
    file = integrated.manager_folder / "bilancio.gz"
    if content is None:
        file.unlink()
    else:
        file.write_bytes(file.read_bytes()[:2000] if content == "cut" else content)
    before = sorted(integrated.setups.rglob("*"))
    assert install(integrated) == [OPENING_FAILED, done_box()]
    assert sorted(integrated.setups.rglob("*")) == before
    # What follows is done all the same.
    assert "Gestione ProdTrelv - Copia Trelvmanager.Exe eseguita" in integrated.texts()


def test_without_the_decoder_beside_the_manager_its_command_is_reported(integrated):
    deliver_bilancio(integrated)
    (integrated.manager_folder / "qalbunex.exe").unlink()
    line = (f'"C:\\Lumo\\Manager\\qalbunex.exe" "C:\\Lumo\\Manager\\bilancio.gz" '
            f'"{integrated.work_folder_name}"')
    assert install(integrated) == [
        ("Execute", "modLibrary", f"Errore in esecuzione programma: {line}"), OPENING_FAILED,
        done_box()]


@pytest.mark.parametrize("name", ["../uscito.zip", "prg/../../uscito.zip", "/uscito.zip",
                                  "C:/uscito.zip"])
def test_a_delivery_that_leads_out_of_the_work_folder_is_refused_whole(integrated, name):
    content = packs.tar_gz_bytes({f"{SETUP}/buono.zip": note("buono.txt"), name: note("male.txt")})
    (integrated.manager_folder / "bilancio.gz").write_bytes(content)
    install(integrated)
    assert list(integrated.disk.rglob("uscito.zip")) == []
    assert list(integrated.share.rglob("uscito.zip")) == []
    assert not (integrated.setups / "male.txt").exists()
    assert not (integrated.setups / "buono.txt").exists()


# --- Without it

@pytest.fixture
def standalone(workstation):
    """A machine with the manager and the host suite's store, which records no integration."""
    workstation.lay_out_without_server()
    return workstation


def programs(station, product=ZB):
    folder = station.prefix.path(f"{station.facts['program files']}\\Lumo\\{product.name}")
    return sorted(file.name for file in folder.glob("*.exe")) if folder.exists() else []


def noted_version(station, product=ZB):
    return station.prefix.value("HKLM", f"SOFTWARE\\LUMO\\Prodotti\\{product.id}", "Standalone")


def test_without_integration_the_product_is_set_up_on_the_machine(standalone):
    deliver_bilancio(standalone)
    assert install(standalone) == []
    assert_log(standalone, "single-install-standalone.log")
    assert programs(standalone) == sorted(ZB.files)
    assert noted_version(standalone) == VERSION
    assert not (standalone.work_folder / "prg").exists()
    assert not standalone.client_lock.exists()
    # No integration is recorded by it, and no version.
    assert "Integration" not in standalone.store.read_text(encoding="utf-8")
    assert not standalone.client_record.exists()
    assert list(standalone.share.iterdir()) == []


def test_the_product_is_found_in_any_case(standalone):
    deliver_bilancio(standalone)
    assert install(standalone, "zb") == []
    assert programs(standalone) == sorted(ZB.files)
    # Named as the catalogue has it where it is run, as it was typed before.
    texts = standalone.texts()
    assert ("Gestione ProdTrelv - Esecuzione diretta Setup del prodotto zb. Sono caso Standard"
            in texts)
    assert "Gestione ProdTrelv - Lancio installazione ZB" in texts


def test_a_product_that_the_catalogue_does_not_have_ends_quietly(standalone):
    deliver_bilancio(standalone)
    assert install(standalone, "XX") == []
    assert programs(standalone) == []
    assert standalone.texts()[-1] == (
        "Gestione ProdTrelv - Avvio lancio setup per prodotti complementari in modalità standalone")
    assert not (standalone.work_folder / "prg").exists()


def test_only_the_named_product_of_a_delivery_of_several_is_set_up(standalone):
    deliver(standalone, {"a.zip": packs.zip_bytes(standalone.pack_files(ZB, VERSION)),
                         "b.zip": packs.zip_bytes(standalone.pack_files(Q2, "02.93.00.00"))})
    assert install(standalone, "Q2") == []
    assert programs(standalone, Q2) == Q2.files
    assert programs(standalone, ZB) == []
    assert noted_version(standalone, Q2) == "02.93.00.00"


def test_an_entry_without_configuration_file_is_passed_over(standalone):
    sections = installation.catalogue([installation.NERIO, installation.LUDA, ZB])
    del sections["prod02"]["conf"]
    files = {**standalone.pack_files(ZB, VERSION), f"{SETUP}/agdvcomp.ini":
             installation.text_bytes(installation.ini_text(sections))}
    deliver(standalone, {"bilancio.zip": packs.zip_bytes(files)})
    assert install(standalone) == []
    assert programs(standalone) == sorted(ZB.files)


def test_a_delivery_that_cannot_be_decoded_sets_nothing_up(standalone):
    (standalone.manager_folder / "bilancio.gz").write_bytes(b"Non e' un pacco")
    assert install(standalone) == [OPENING_FAILED]
    assert programs(standalone) == []


def test_a_user_who_is_no_administrator_is_told_and_nothing_is_set_up(standalone):
    deliver_bilancio(standalone)
    # Server side and client side.
    assert install(standalone, restricted=True) == [NO_RIGHTS, NO_RIGHTS]
    assert programs(standalone) == []


def test_a_machine_without_the_host_suite(standalone):
    """The store has no place: the product is set up all the same."""
    standalone.prefix.delete_key("HKLM", installation.STORE_KEY)
    deliver_bilancio(standalone)
    install(standalone)
    assert programs(standalone) == sorted(ZB.files)
    assert "Suite Lumo non trovata in registro: Errore riscontrato -4001" in standalone.texts()
