"""Real installations that are made up from a number: catalogue, configurations, records, programs,
packs, locks, broken files, what is already on the workstation, the Windows, the user's rights, and a
command line of the manager."""

import random

import installation
import packs

LOCK_TEXT = "16/11/2026 09:30:00\n"
OTHER_SERVER = "T:\\Altro"
EDITIONS = ("nt40", "win2k", "winxp", "winxp", "win2003", "vista", "win2008", "win7", "win10", "win10")
VERSIONS = ("", "", "01.00", "02.00.00.00", "03.20.30.00", "09.93.00.00", "3.x", "99.00.00.00")
BROKEN = (b"", b"\0\1[prod01]\r\nconf", b"\xef\xbb\xbf[prod01]\r\nid=ZB\r\n",
          "[prod01]\r\nid=ZB\r\n".encode("utf-16"))
# Commands of all kinds in the place of a product's own.
COMMANDS = (
    '"%PATHSETUP%\\prg\\com\\setup\\aggdovra\\{folder}\\manca.exe" {id} 1 Server "%PATHWORK%\\x"',
    "%PATHSETUP%\\prg\\com\\setup\\aggdovra\\{folder}\\testo.exe -S",
    "%PATHSETUP%\\prg\\com\\setup\\aggdovra\\{folder}\\setup.exe {id} 77 Server %PATHWORK%/mv/{folder}",
    "%PATHSETUP%\\prg\\com\\setup\\aggdovra\\{folder}\\setup {id} 78 Client %PATHWORK%\\mv\\{folder}",
    "%PATHSETUP%\\prg\\com\\setup\\aggdovra\\due parole\\setup.exe {id} 79 Server %PATHWORK%\\mv\\{folder}",
)


class MadeUp:
    """What is made up; `arguments` of the manager, `edition` of Windows, `restricted`: its user is no
    administrator."""

    def __init__(self, seed):
        self.seed = seed
        self.random = random.Random(seed)
        self.edition = self.random.choice(EDITIONS)
        self.restricted = self.one_in(8)
        self.asked = self.random.choice(installation.PRODUCTS)
        self.arguments = self._arguments()

    def one_in(self, count):
        return self.random.randrange(count) == 0

    def version(self):
        return self.random.choice(VERSIONS)

    def _arguments(self):
        mode = self.random.choice(("INTEGRATEDRUN",) * 13 + ("SINGLEINSTALL",) * 4 +
                                  ("INTEGRATEDMAINTAIN", "STANDALONEINSTALL", "ALTRO"))
        if mode == "INTEGRATEDRUN":
            server = self.random.choice(["S:\\Lumo"] * 6 + ["s:\\lumo", "S:\\Lumo\\", "S:/Lumo", "S:\\Manca"])
            code = self.random.choice([*self.asked.programs] * 3 + ["UNDEFINED", "FALSO"])
            words = [mode, server, server, code, "azienda uno", "12"]
            return words[:self.random.choice((3, 4, 4, 4, 4, 5, 6))]
        if mode == "SINGLEINSTALL":
            name = "manca.gz" if self.one_in(8) else "pacco.gz"
            return [mode, self.random.choice((self.asked.id, self.asked.id.lower(), "RR")), name]
        return [mode, "S:\\Lumo", "S:\\Lumo"]

    def lay_out(self, station):
        products = [each for each in installation.PRODUCTS if not self.one_in(6)]
        self.random.shuffle(products)
        station.lay_out(products=products, dovra=self.one_in(2),
                        release=self.random.choice(("10.70.00", "11.00.00", "11.20.00")))
        station.put_programs()
        (station.work_folder / "leggimi.txt").unlink(missing_ok=True)
        self._put_setups(station)
        for product in products:
            self._put_configuration(station, product)
        self._put_records(station)
        self._put_host(station)
        self._put_packs(station)
        self._put_workstation(station)
        self._break_files(station)

    def _put_setups(self, station):
        """What the commands name besides the products' set-ups."""
        (station.setups / "due parole").mkdir()
        for product in installation.PRODUCTS:
            station.put_setup(product)
            (station.setups / product.folder / "testo.exe").write_bytes(b"no program")
        for file in (station.setups / "nerio").iterdir():
            (station.setups / "due parole" / file.name).write_bytes(file.read_bytes())

    def _put_configuration(self, station, product):
        updates = [each for each in ("09.94.00.00", "09.95.00.00", "77.00") if self.one_in(3)]
        sections = installation.configuration(product, updates)
        for section, keys in sections.items():
            if section != "Exec" and self.one_in(4):
                self._change_section(product, keys)
        if self.one_in(12):
            sections["Exec"][self.random.choice([*product.programs])] = "%PATHWORK%\\mv\\manca.exe"
        if self.one_in(12):
            del sections["Setup01"]
        station.write_configuration(product, sections)
        if self.one_in(15):
            (station.setups / f"{product.id.lower()}.ini").unlink()

    def _change_section(self, product, keys):
        way = self.random.randrange(4)
        if way == 0:
            keys.pop("version", None)
        elif way == 1:
            keys.pop("Server01", None)
        elif way == 2:
            keys["Client02"] = keys.get("Client01", "")
        else:
            keys[self.random.choice(("Server01", "Client01"))] = self.random.choice(COMMANDS).format(
                id=product.id, folder=product.folder)

    def _put_records(self, station):
        for path in (station.server_record, station.client_record):
            sections = {}
            for product in installation.PRODUCTS:
                version = product.version if self.one_in(2) else self.version()
                if version or self.one_in(3):
                    sections[product.id] = {"version": version}
            installation.write_text(path, installation.ini_text(sections))
        if self.one_in(10):
            station.client_record.unlink()
        if not self.one_in(4):
            station.integrate(self.random.choice(["S:\\Lumo"] * 6 + ["s:\\lumo", OTHER_SERVER]))

    def _put_host(self, station):
        if self.one_in(6):
            installation.write_text(station.server_lock, LOCK_TEXT)
            station.server_lock.chmod(self.random.choice((0o644, 0o444)))
        elif self.one_in(20):
            station.server_lock.mkdir()
        elif self.one_in(10):
            station.server_lock.parent.rmdir()
        if self.one_in(10):
            installation.write_text(station.client_lock, LOCK_TEXT)
        if self.one_in(8):
            station.environment.unlink()
        if self.one_in(2):
            (station.client_copy / "TrelvManager.exe").write_bytes(b"MZ old")
            (station.client_copy / "TrelvManager.exe").chmod(self.random.choice((0o644, 0o644, 0o444)))

    def _pack(self, station):
        """Bytes of a zip pack, or of something that is none."""
        product = self.random.choice(installation.PRODUCTS)
        files = station.pack_files(product, self.random.choice(("09.94.00.00", "88.00.00.00")))
        if self.one_in(3):
            del files[f"{installation.SETUP_FOLDER}/agdvcomp.ini"]
        if self.one_in(4):
            files["leggimi.txt"] = b"fuori"
        if self.one_in(4):
            files[f"{installation.SETUP_FOLDER}/sotto/dati/è.txt"] = b"dati"
        if self.one_in(6):
            files[f"{installation.SETUP_FOLDER}/altro.zip"] = packs.zip_bytes(
                {f"{installation.SETUP_FOLDER}/secondo.txt": b"2"})
        whole = packs.zip_bytes(files)
        return self.random.choice([whole] * 5 + [whole[:len(whole) // 2], b"no pack"])

    def _put_packs(self, station):
        for name in ("a.zip", "due parole.zip", "C.ZIP"):
            if self.one_in(4):
                (station.setups / name).write_bytes(self._pack(station))
        pack = packs.gz_bytes({"zb.zip": self._pack(station)})
        if self.one_in(8):
            pack = pack[:len(pack) // 2]
        (station.manager_folder / "pacco.gz").write_bytes(pack)
        if self.one_in(12):
            (station.manager_folder / "7z.exe").unlink()
        if self.one_in(6):
            installation.write_text(station.work_folder / installation.SETUP_FOLDER / "vecchio.txt", "x\n")

    def _put_workstation(self, station):
        ini = station.windows_folder
        if self.one_in(3):
            installation.write_text(ini / "lumow.ini", "[Archivi]\nPath=" + self.random.choice(
                ("S:\\Lumo", OTHER_SERVER)) + "\n")
        if self.one_in(4):
            installation.write_text(ini / "nerio.ini", "[Pathnames]\nHomedir=C:\\Nerio\n[NERIO]\nVersione=03.20\n")
        if self.one_in(4):
            station.prefix.set_value("HKLM", "SOFTWARE\\LUMO\\Programmi", "PathLocale",
                                     self.random.choice(("C:\\Lumo\\Client\\dovra\\bilancio", "C:\\Altro")))
        if self.one_in(15):
            station.prefix.set_value("HKLM", "SOFTWARE\\FerPrg", "sistema", "0")
        if self.one_in(15):
            station.store.write_bytes(self.random.choice((b"", b"<configuration>")))

    def _break_files(self, station):
        for path in (station.setups / "agdvcomp.ini", station.server_record, station.client_record,
                     station.setups / "zb.ini", station.setups / "a.zip"):
            if not path.exists() or not self.one_in(12):
                continue
            if self.one_in(2):
                path.chmod(0o444)
            else:
                path.write_bytes(self.random.choice(BROKEN))
