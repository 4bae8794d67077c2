"""The manager renews its client copy on the share and stamps the host's environment file."""

import contextlib
import os
import re
import time

import pytest

from conftest import box, shown
import installation
import packs
import windows

CLIENT = "S:\\Lumo\\prg\\com\\bin\\cpy\\client"
COPIED = "Gestione ProdTrelv - Copia Trelvmanager.Exe eseguita"
NOT_COPIED = ("Gestione ProdTrelv - Copia Trelvmanager.Exe non eseguita: Il file destinazione è più "
              "recente")
DONE = box("Installazione completata correttamente del prodotto ZB in: S:\\LUMO")
OLD = b"MZ the earlier manager"

pytestmark = pytest.mark.usefixtures("seven_zip")


@pytest.fixture
def station(laid_out):
    """An integrated machine with a delivery that brings next to nothing."""
    laid_out.integrate()
    pack = packs.zip_bytes({f"{installation.SETUP_FOLDER}/nota.txt": b"1"})
    (laid_out.manager_folder / "nota.gz").write_bytes(packs.gz_bytes({"nota.zip": pack}))
    return laid_out


def client_copy(station):
    return station.client_copy / "TrelvManager.exe"


def put_client_copy(station, older_by):
    """A client copy whose date is so many seconds before that of the manager."""
    client_copy(station).write_bytes(OLD)
    date = (station.manager_folder / "TrelvManager.exe").stat().st_mtime_ns - older_by * 10 ** 9
    os.utime(client_copy(station), ns=(date, date))


def install(station):
    """Opens the delivery; the self-update has nothing to tell."""
    assert shown(station.run("SINGLEINSTALL ZB nota.gz")) == [DONE]


def fail_to_install(station):
    """The self-update fails and is reported once; the installation itself goes well."""
    (procedure, _, message), done = shown(station.run("SINGLEINSTALL ZB nota.gz"))
    assert procedure == "UpdateTrelvManager"
    assert message.startswith("Gestione ProdTrelv - Errore in aggiornamento TrelvManager ")
    assert done == DONE


def is_own(station):
    return client_copy(station).read_bytes() == station.prefix.build.manager.read_bytes()


def left_in_tempterm(station):
    return sorted(file.name for file in (station.server / "prg/tempterm").iterdir())


def nothing_left_over(station):
    """No half copy stays, neither in the work area of the share nor beside what it was for."""
    return (left_in_tempterm(station) == []
            and sorted(file.name for file in (station.server / "prg/etc").iterdir())
            == ["agdvver.ini", "ambver", "dvrel"]
            and [file.name for file in station.client_copy.iterdir()] in ([], ["TrelvManager.exe"]))


# --- The client copy

def test_a_client_copy_that_is_a_minute_older_is_renewed(station):
    put_client_copy(station, older_by=60)
    install(station)
    assert is_own(station)
    assert station.texts_after(f"Gestione ProdTrelv - Copia Trelvmanager.Exe su {CLIENT}") == [
        COPIED, "Gestione ProdTrelv - Modifica file ambver su S:\\Lumo\\prg\\etc"]
    assert nothing_left_over(station)


def test_after_it_was_renewed_both_have_one_date_and_nothing_is_copied_again(station):
    put_client_copy(station, older_by=60)
    install(station)
    own = (station.manager_folder / "TrelvManager.exe").stat().st_mtime
    assert abs(client_copy(station).stat().st_mtime - own) < 0.001
    station.log.unlink()
    install(station)
    assert NOT_COPIED in station.texts()


@pytest.mark.parametrize("older_by", [0, -60])
def test_a_client_copy_of_the_same_or_a_later_date_stays(station, older_by):
    put_client_copy(station, older_by)
    install(station)
    assert client_copy(station).read_bytes() == OLD
    assert NOT_COPIED in station.texts()
    assert COPIED not in station.texts()
    # The environment is stamped all the same.
    assert stamped(station, b"000012 ")


def test_a_client_copy_that_is_missing_is_put_there(station):
    install(station)
    assert is_own(station)
    assert COPIED in station.texts()


def fail_to_copy(station):
    """The environment file is as it was."""
    before = station.environment.read_bytes()
    fail_to_install(station)
    assert station.environment.read_bytes() == before
    assert COPIED not in station.texts()


def test_a_client_folder_that_is_missing_is_reported(station):
    station.client_copy.rmdir()
    fail_to_copy(station)
    assert not station.client_copy.exists()
    assert left_in_tempterm(station) == []


def test_a_client_copy_that_runs_is_put_aside_and_goes_with_the_next_update(station):
    station.prefix.build.put_release(station.client_copy)
    client_copy(station).write_bytes(client_copy(station).read_bytes() + b" earlier")
    os.utime(client_copy(station), (1_000_000_000, 1_000_000_000))
    running = station.prefix.start(CLIENT + "\\TrelvManager.exe")
    try:
        wait_for_box(station)
        install(station)
        assert is_own(station)
        assert stamped(station, b"000012 ")
        assert left_in_tempterm(station) == []
        [aside] = put_aside(station)
        assert re.fullmatch(r"TrelvManager-.+-\d+-\d+-\d+-\d+\.old", aside)
        # The one that runs goes on.
        assert running.poll() is None
    finally:
        station.prefix.ask_once("press", "OK")
        assert running.wait(timeout=30) == 0
    install(station)
    assert left_in_tempterm(station) == []
    assert put_aside(station) == []


def test_what_is_put_in_place_keeps_the_rights_of_what_it_replaces(station):
    put_client_copy(station, older_by=60)
    # Rights lists that the Unix side's modes can stand for whole.
    rights = {client_copy(station): 0o770, station.environment: 0o777}
    for file, mode in rights.items():
        file.chmod(mode)
    install(station)
    assert is_own(station)
    assert {file: file.stat().st_mode & 0o777 for file in rights} == rights


def test_a_file_that_somebody_else_put_aside_is_no_client_copy(station):
    for folder in (station.client_copy.parent, station.server / "prg/tempterm"):
        (folder / "TrelvManager.old").write_bytes(b"estraneo")
    install(station)
    assert is_own(station)
    assert put_aside(station) == ["TrelvManager.old"]
    assert left_in_tempterm(station) == ["TrelvManager.old"]


def read_only(station, _file):
    """A client copy that nobody may write."""
    client_copy(station).chmod(0o444)
    return contextlib.nullcontext()


def put_aside(station):
    return sorted(file.name for file in station.client_copy.parent.iterdir() if file.is_file())


@contextlib.contextmanager
def held(station, file):
    """While inside, another program keeps a file (Windows path) to itself."""
    station.put_test_program("holder", station.share / "holder.exe")
    holder = station.prefix.start("S:\\holder.exe", file, "S:\\running", "S:\\go-on")
    try:
        assert windows.wait_for_file(station.share / "running")
        yield
    finally:
        (station.share / "go-on").touch()
        assert holder.wait(timeout=30) == 0


@pytest.mark.parametrize("keep", [held, read_only])
def test_a_client_copy_that_cannot_be_replaced_is_reported_and_stays(station, keep):
    put_client_copy(station, older_by=60)
    with keep(station, CLIENT + "\\TrelvManager.exe"):
        fail_to_copy(station)
    assert client_copy(station).read_bytes() == OLD
    assert nothing_left_over(station)


def wait_for_box(station):
    for _ in range(500):
        if len(list(station.prefix.ask("boxes"))) > 1:
            return
        time.sleep(0.02)
    raise AssertionError("the client copy shows no box")


def test_the_client_copy_itself_opens_deliveries_and_finds_nothing_to_renew(station):
    station.prefix.build.put_release(station.client_copy)
    (station.client_copy / "nota.gz").write_bytes(
        (station.manager_folder / "nota.gz").read_bytes())
    station.manager = CLIENT + "\\TrelvManager.exe"
    install(station)
    assert (station.setups / "nota.txt").exists()
    assert NOT_COPIED in station.texts()


# --- The environment file

def stamped(station, field):
    """Whether the file is one line: the field, then a date of this minute or the one before."""
    content = station.environment.read_bytes()
    found = re.fullmatch(re.escape(field) + rb"(\d\d/\d\d/\d\d \d\d:\d\d)\r\n", content)
    return bool(found) and found[1].decode() in (
        time.strftime("%d/%m/%y %H:%M", time.localtime(time.time() - back)) for back in (0, 60))


@pytest.mark.parametrize("content, field", [
    # Of several lines the last one stays.
    (b"000010 01/02/25 10:00\r\n000011 14/09/26 17:40\r\n000012 20/10/26 08:15\r\n", b"000012 "),
    # Seven characters are kept, whatever they are: the blank behind them is not.
    (b"AMB-001 20/10/26 08:15\r\n", b"AMB-001"),
    # Without an end, or with the ends of other systems.
    (b"000012 20/10/26 08:15", b"000012 "),
    (b"000011 14/09/26 17:40\n000012 20/10/26 08:15\n", b"000012 "),
    # A shorter line is kept whole.
    (b"12\r\n", b"12"),
    (b"\r\n\r\n000012 20/10/26 08:15\r\n", b"000012 "),
    # Characters, not bytes of another encoding.
    ("Società20/10/26 08:15\r\n".encode("cp1252"), "Società".encode("cp1252")),
    (b"   \r\n", b"   "),
])
def test_the_environment_file_is_stamped(station, content, field):
    station.environment.write_bytes(content)
    install(station)
    assert stamped(station, field), station.environment.read_bytes()
    assert nothing_left_over(station)


@pytest.mark.parametrize("content", [b"", b"000012 20/10/26 08:15\r\n\r\n", b"\r\n"])
def test_an_environment_file_whose_last_line_is_empty_stays(station, content):
    station.environment.write_bytes(content)
    install(station)
    assert station.environment.read_bytes() == content


def test_an_environment_file_that_is_missing_is_reported_after_the_copy(station):
    station.environment.unlink()
    put_client_copy(station, older_by=60)
    fail_to_install(station)
    assert is_own(station)
    assert not station.environment.exists()


def test_a_scratch_copy_of_an_earlier_run_is_deleted_first(station):
    scratch = station.work_folder / "ambver"
    scratch.write_bytes(b"vecchio\r\nvecchio\r\n")
    install(station)
    assert stamped(station, b"000012 ")
    assert (f"Cancellazione file: {station.facts['temporary']}ambver effettuata con successo"
            in station.texts())


def test_an_environment_file_that_another_program_keeps_open_is_reported_and_stays(station):
    before = station.environment.read_bytes()
    with held(station, "S:\\Lumo\\prg\\etc\\ambver"):
        fail_to_install(station)
    assert station.environment.read_bytes() == before
    assert nothing_left_over(station)
