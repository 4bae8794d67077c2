"""The real TrelvManager.exe on a 32-bit and a 64-bit Windows (Wine prefixes made anew for the
session, one driver alive in each). Every test lays out its own server share and workstation."""

import os
import pathlib
import re
import shutil
import subprocess
import sys

import pytest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "demo"))

import installation  # noqa: E402
import windows  # noqa: E402

MANAGER_FOLDER = "C:\\Lumo\\Manager"
SMALL_DISK = 4 << 20
INTEGRATED = f"INTEGRATEDRUN {installation.HOST_FOLDER} {installation.HOST_FOLDER}"
UPDATED_ALL = "Gestione ProdTrelv - Termine procedura UpdateAllProdottiComplementari"
NO_RIGHTS = ("Errore", "Per il corretto funzionamento il sistema richiede l'aggiornamento di alcuni "
             "componenti.\r\nL'utente corrente non dispone dei privilegi necessari per effettuare tale "
             "operazione, impossibile proseguire.", ["OK"])


def box(text):
    """A message box of the manager's with a button to confirm it, as `shown` gives it."""
    return ("TrelvManager", text, ["OK"])


def shown(run):
    """What a run showed: message boxes as (title, text, buttons), error reports as (procedure, module,
    the caller's message)."""
    return [(each.texts["txtProcedura"], each.texts["txtModulo"],
             each.texts["txtErrDescrizioneInterna"]) if "txtProcedura" in each.texts
            else (each.title, each.text, each.buttons) for each in run.boxes]


@pytest.fixture(scope="session")
def build():
    build = windows.Build.of_environment()
    for program in (build.manager, build.driver, build.demo_programs / "setup.exe"):
        if not program.exists():
            pytest.exit(f"{program} is missing: run tools/build, or name a build folder in "
                        "TRELV_BUILD", returncode=1)
    return build


@pytest.fixture(scope="session")
def project_version():
    text = (windows.PROJECT / "CMakeLists.txt").read_text(encoding="utf-8")
    return re.search(r"project\(TrelvManager VERSION (\d+\.\d+\.\d+\.\d+)", text).group(1)


@pytest.fixture(scope="session")
def seven_zip(build):
    """Without 7-Zip no pack can be opened."""
    if not build.seven_zip:
        pytest.skip("7-Zip for Windows is missing: tools/seven-zip fetches it and says what to do")


@pytest.fixture(scope="session")
def screen():
    screen = windows.Screen()
    yield screen
    screen.close()


# Each Windows belongs to one of the processes that play the scenarios side by side.
KINDS = [pytest.param(kind, marks=pytest.mark.xdist_group(kind)) for kind in ("win32", "win64")]


@pytest.fixture(scope="session", params=KINDS)
def prefix(request, build, screen, tmp_path_factory):
    folder = tmp_path_factory.mktemp("wine") / request.param
    small_disk = folder.with_name("small disk")
    # Wine sees what is mounted before its first program starts.
    mounted = mount_small_disk(small_disk)
    prefix = windows.Prefix(folder, request.param, build, screen)
    prefix.small_disk = small_disk if mounted else None
    yield prefix
    prefix.close()
    if mounted:
        subprocess.run(["umount", small_disk], check=True)
    shutil.rmtree(folder)


def mount_small_disk(folder):
    """Mounts a disk of SMALL_DISK bytes; false where the system does not let us."""
    folder.mkdir()
    return subprocess.run(["mount", "-t", "tmpfs", "-o", f"size={SMALL_DISK}", "tmpfs", folder],
                          check=False, capture_output=True).returncode == 0


@pytest.fixture
def small_disk(prefix):
    """An empty disk with next to no room, in drive T."""
    if not prefix.small_disk:
        pytest.skip("nothing can be mounted here: run the tests as root, where the system allows it")
    for each in prefix.small_disk.iterdir():
        shutil.rmtree(each)
    prefix.map_drive("t", prefix.small_disk)
    return prefix.small_disk


class Workstation(installation.Installation):
    """A laid-out installation with the manager on the workstation."""

    def __init__(self, prefix, share):
        super().__init__(share / "Lumo", prefix.disk, prefix.build.demo_programs)
        self.prefix = prefix
        self.share = share
        self.facts = prefix.facts()
        self.manager = MANAGER_FOLDER + "\\TrelvManager.exe"
        self.manager_folder = self.disk / "Lumo/Manager"
        self.log = prefix.path(self.facts["temporary"] + "log\\TrelvManager.log")
        self.windows_folder = prefix.path(self.facts["windows"])
        # Where packs are unpacked.
        self.work_folder_name = self.facts["temporary"].rstrip("\\")
        self.work_folder = prefix.path(self.work_folder_name)

    def clear(self):
        """Takes away whatever an earlier test left."""
        for folder in (self.share, self.disk / "Lumo", self.log.parent, self.work_folder / "prg",
                       self.prefix.path(self.facts["program files"] + "\\Lumo")):
            shutil.rmtree(folder, ignore_errors=True)
        (self.work_folder / "ambver").unlink(missing_ok=True)
        for name in ("lumow.ini", "nerio.ini", "luda.ini", "zeltomodelli.ini"):
            for file in self.windows_folder.iterdir():
                if file.name.lower() == name:
                    file.unlink()
        for key in ("SOFTWARE\\LUMO", "SOFTWARE\\FerPrg"):
            self.prefix.delete_key("HKLM", key)

    def lay_out(self, *arguments, **named):
        super().lay_out(*arguments, **named)
        self.prefix.build.put_release(self.manager_folder)
        self.write_pointers()

    def lay_out_without_server(self):
        """A workstation of the host suite that no server share knows."""
        self.client.mkdir(parents=True)
        self.store.write_bytes(installation.store_xml().encode())
        (self.client / "lumoconf.xsd").write_bytes(installation.SCHEMA.encode())
        self.prefix.build.put_release(self.manager_folder)
        self.write_pointers()

    def write_pointers(self):
        for key, name, value in self.registry_values():
            self.prefix.set_value("HKLM", key, name, value)

    def write_catalogue(self, *products):
        installation.write_text(self.setups / "agdvcomp.ini",
                                installation.ini_text(installation.catalogue(products)))

    def offer(self, product, *versions):
        """Offers updates of a product."""
        self.write_configuration(product, installation.configuration(product, versions))

    def put_test_program(self, name, path):
        """Copies one of the programs of tests/scenario/programs."""
        shutil.copy(self.prefix.build.test_programs / f"{name}.exe", path)

    def rename_host(self, name):
        """Gives the server path another name on the share."""
        self.server = self.server.rename(self.share / name)
        self.place_server(self.server)

    def integrate(self, path=installation.HOST_FOLDER, *more):
        """Records the integration with a server folder in the store."""
        self.store.write_bytes(
            installation.store_xml([installation.integration_setting(path), *more]).encode())

    def install(self, products=installation.PRODUCTS):
        """The state after a first start: all products there and recorded."""
        self.put_programs(products)
        self.record_versions(products)
        self.integrate()

    def run(self, arguments, **named):
        """Runs the manager, which must end by itself unless the run was to be ended, and waits for
        the report of the program that it started, so that none is left for the next test."""
        for report in self.reports():
            report.unlink()
        run = self.prefix.run(self.manager, arguments, **named)
        assert not run.late, f"the manager did not end; its boxes were {run.boxes}"
        self.wait_for_started()
        return run

    def start(self, code="MVBIL", **named):
        """A start by the host that has nothing to tell the user."""
        run = self.run(f"{INTEGRATED} {code}", **named)
        assert shown(run) == []
        return run

    def wait_for_started(self):
        last = (self.texts() or [""])[-1]
        start = "Gestione ProdTrelv - Esecuzione di: S:\\"
        if last.startswith(start):
            program = last[len(start):].split(".exe")[0].replace("\\", "/")
            assert windows.wait_for_file(self.share / (program + ".avvio.txt")), f"{last}: not seen"

    def texts(self):
        """Texts of the log lines, without date and time."""
        return [re.sub(r"^\d\d/\d\d/\d{4} \d\d:\d\d:\d\d -- ", "", line)
                for line in windows.log_lines(self.log, self.facts["code page"])]

    def texts_after(self, text):
        """The texts behind the first one that is this."""
        texts = self.texts()
        return texts[texts.index(text) + 1:]

    def set_ups_run(self):
        """The set-ups that ran to their end, as "PRODUCT VERSION SIDE"."""
        return [" ".join(command.split('"')[2].split()[:3]) for command in self.commands_run()]

    def started(self, file):
        """What a product's program was started with by the last run, line by line."""
        assert list(self.starts()) == [file]
        return self.starts()[file]

    def started_nothing(self):
        return self.starts() == {}


@pytest.fixture
def workstation(prefix, tmp_path_factory):
    share = prefix.folder / "share"
    station = Workstation(prefix, share)
    station.clear()
    share.mkdir(exist_ok=True)
    if not os.path.lexists(prefix.folder / "dosdevices/s:"):
        prefix.map_drive("s", share)
    return station


@pytest.fixture
def played(prefix):
    """Lets the next programs run on a Windows version, in Wine's words."""
    yield lambda version: prefix.set_value("HKCU", "Software\\Wine", "Version", version)
    # No such version: the prefix is itself again.
    prefix.set_value("HKCU", "Software\\Wine", "Version", "")


@pytest.fixture
def with_bilancio(workstation):
    """One product in the catalogue, nothing installed."""
    workstation.lay_out(products=[installation.ZB])
    return workstation


@pytest.fixture
def laid_out(workstation):
    """Five products in the catalogue, nothing installed."""
    workstation.lay_out()
    return workstation


@pytest.fixture
def installed(laid_out):
    """Five products installed and recorded: nothing is left to do."""
    laid_out.install()
    return laid_out
