"""The run log as the support finds it."""

from conftest import INTEGRATED
import windows

HEAD = "21/11/2026 08:00:00 -- riga vecchia"


def fill(log, size):
    log.parent.mkdir(parents=True, exist_ok=True)
    log.write_bytes((HEAD.encode() + b"x" * (size - len(HEAD) - 2)) + b"\r\n")
    assert log.stat().st_size == size


def test_a_log_over_102400_bytes_is_thrown_away_whole(installed):
    fill(installed.log, 102401)
    installed.run(f"{INTEGRATED} MVBIL")
    texts = installed.texts()
    path = installed.facts["temporary"] + "log\\TrelvManager.log"
    assert texts[:2] == [f"Cancellazione file: {path} effettuata con successo",
                         "IsWin2008Server = Falso"]
    assert not any("riga vecchia" in text for text in texts)


def test_a_log_of_102400_bytes_is_kept(installed):
    fill(installed.log, 102400)
    installed.run(f"{INTEGRATED} MVBIL")
    lines = windows.log_lines(installed.log)
    assert lines[0].startswith(HEAD)
    assert lines[1].endswith(" -- IsWin2008Server = Falso")


def test_the_second_start_appends(installed):
    installed.run(f"{INTEGRATED} MVBIL")
    first = windows.log_lines(installed.log)
    installed.run(f"{INTEGRATED} MVBIL")
    assert windows.log_lines(installed.log)[:len(first)] == first


def test_a_deleted_log_folder_comes_back(installed):
    installed.run(f"{INTEGRATED} MVBIL")
    installed.log.unlink()
    installed.log.parent.rmdir()
    installed.run(f"{INTEGRATED} MVBIL")
    assert installed.texts()[0] == (
        "Creazione path avvenuta correttamente:" + installed.facts["temporary"] + "log")
