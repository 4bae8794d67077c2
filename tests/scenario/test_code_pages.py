"""Windows of other languages: names of folders, and what stands in ini files, in their letters."""

import os
import subprocess

import pytest

from conftest import Workstation, shown
import installation
import windows

ZB = installation.ZB
NEW = "09.94.00.00"

# The second byte of the last letter but one is a backslash in code page 932.
LANGUAGES = [("pl_PL", 1250, "Łódź żółw"), ("ru_RU", 1251, "Архив данных"), ("ja_JP", 932, "申告表 ソ能")]


def make_locale(name, folder):
    """Makes a locale of the Unix side, which a Wine takes its code pages from."""
    root = subprocess.run([windows.PROJECT / "tools/wine-root", "--check"], capture_output=True, text=True,
                          check=False).stdout.strip()
    subprocess.run(["localedef", "--no-archive", "-i", name, "-f", "UTF-8", folder / f"{name}.UTF-8"],
                   env={**os.environ, "I18NPATH": f"{root}/usr/share/i18n"}, capture_output=True, check=False)
    assert (folder / f"{name}.UTF-8").is_dir()


@pytest.fixture(scope="module",
                params=[pytest.param(language, marks=pytest.mark.xdist_group("win32"),
                                     id=f"win32-{language[1]}") for language in LANGUAGES])
def station(request, build, screen, tmp_path_factory):
    locale, code_page, name = request.param
    folder = tmp_path_factory.mktemp("wine") / "win32"
    locales = tmp_path_factory.mktemp("locales")
    make_locale(locale, locales)
    with pytest.MonkeyPatch.context() as changed:
        changed.setenv("LOCPATH", str(locales))
        changed.setenv("LC_ALL", f"{locale}.UTF-8")
        prefix = windows.Prefix(folder, "win32", build, screen)
        share = prefix.folder / "share"
        share.mkdir()
        prefix.map_drive("s", share)
        station = Workstation(prefix, share)
        station.code_page, station.name = code_page, name
        station.clear()
        share.mkdir()
        yield station
        prefix.close()


def test_a_start_updates_below_folders_with_letters_of_the_language(station):
    assert station.facts["code page"] == station.code_page
    station.lay_out()
    station.rename_host(station.name)
    station.install()
    host = f"S:\\{station.name}"
    station.integrate(host)
    station.offer(ZB, NEW)
    run = station.run(f'INTEGRATEDRUN "{host}" "{host}" MVBIL "{station.name}"')
    assert shown(run) == []
    assert station.set_ups_run() == [f"ZB {NEW} Server", f"ZB {NEW} Client"]
    assert station.versions()["ZB"] == (NEW, NEW)
    assert station.texts()[-1].endswith(f"Esecuzione di: {host}\\mv\\bilancio\\bilancio.exe {station.name}")
