"""Lays out an installation of the host suite with its five complementary products.

What lies where, as Windows sees it:

  S:\\Lumo                                    the server share: server path and integration path
    prg\\com\\setup\\aggdovra\\agdvcomp.ini     product catalogue
    prg\\com\\setup\\aggdovra\\PRODUCT.ini      configuration file of each product
    prg\\com\\setup\\aggdovra\\PRODUCT\\        its set-up
    prg\\com\\bin\\cpy\\client                 TrelvManager.exe and what it opens packs with
    prg\\etc\\agdvver.ini, dvrel, ambver       version record, release, environment of the host
    prg\\tempterm                             update locks
    prg\\com\\dovra\\plugin                    marks the host as Dovra
    prg\\applidir                             marks the folder as a host's
    mv\\PRODUCT                               the programs, put there by the set-ups
  C:\\Lumo\\Client                            the workstation: configuration store, version record
  C:\\Lumo\\Consegna                          a delivery: a newer TrelvManager.exe with a pack

Ini files are written as the suite writes them: code page 1252, lines ended by CR LF.
"""

import dataclasses
import pathlib
import shutil

HOST_FOLDER = "S:\\Lumo"
CLIENT_FOLDER = "C:\\Lumo\\Client"
STORE_KEY = "SOFTWARE\\LUMO\\Configurazione"
CLIENT_COPY = HOST_FOLDER + "\\prg\\com\\bin\\cpy\\client"
DELIVERY_FOLDER = "C:\\Lumo\\Consegna"
SETUP_FOLDER = "prg/com/setup/aggdovra"


@dataclasses.dataclass(frozen=True)
class Product:
    """A complementary product; `programs` gives the file of each program code, `folder` is the
    product's below "mv"."""

    id: str
    name: str
    version: str
    folder: str
    programs: dict

    @property
    def files(self):
        """Program files in the order of the codes, each once."""
        return list(dict.fromkeys(self.programs.values()))


NERIO = Product("NERIO", "Nerio", "03.20.30.00", "nerio",
                {"VIRADO": "virado.exe", "NERIO": "nerio.exe"})
LUDA = Product("LUDA", "Luda", "07.10.00.00", "LUDA2003", {"LUDA": "LUDA2003.exe"})
ZB = Product("ZB", "Bilancio", "09.93.00.00", "bilancio",
             {"MVBIL": "bilancio.exe", "MVCON": "consolidato.exe", "MVICAD": "icad.exe",
              "MVPERS": "personalizza.exe"})
Q2 = Product("Q2", "Tarsena2", "02.92.00.00", "tarsena2", {"Q2": "tarsena2.exe"})
ZM = Product("ZM", "Zeltomodelli", "06.50.30.00", "ZM", {"ZM": "zeltomodelli.exe"})
PRODUCTS = (NERIO, LUDA, ZB, Q2, ZM)


def text_bytes(text):
    """A text as the suite's programs write it."""
    return text.replace("\r\n", "\n").replace("\n", "\r\n").encode("cp1252")


def write_text(path, text):
    """Writes a file as the suite's programs do."""
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_bytes(text_bytes(text))


def ini_text(sections):
    """Text of an ini file from {section: {key: value}}."""
    blocks = []
    for section, keys in sections.items():
        blocks.append("\n".join([f"[{section}]"] + [f"{key}={value}" for key, value in keys.items()]))
    return "\n\n".join(blocks) + "\n"


def read_ini(path):
    """{section: {key: value}} of an ini file with the names as they stand; {} when it is missing."""
    sections = {}
    if path.exists():
        for line in path.read_bytes().decode("cp1252").splitlines():
            line = line.strip()
            if line.startswith("["):
                current = sections.setdefault(line[1:line.index("]")], {})
            elif "=" in line and not line.startswith(";"):
                key, value = line.split("=", 1)
                current[key.strip()] = value.strip()
    return sections


def server_command(product, version):
    """The set-up's command on the server, as it stands in the configuration file."""
    return (f'"%PATHSETUP%\\prg\\com\\setup\\aggdovra\\{product.folder}\\setup.exe" {product.id} {version}'
            f' Server "%PATHWORK%\\mv\\{product.folder}" {" ".join(product.files)}')


def client_command(product, version):
    """The set-up's command on a workstation: the components that belong on its own disk."""
    return (f'"%PATHSETUP%\\prg\\com\\setup\\aggdovra\\{product.folder}\\setup.exe" {product.id} {version}'
            f' Client "%PROGRAMFILES%\\Lumo\\{product.name}" componenti.exe')


def removal(product):
    """The commands that take a product away, as they stand in the configuration file."""
    setup = f'"%PATHSETUP%\\prg\\com\\setup\\aggdovra\\{product.folder}\\setup.exe" -rimuovi {product.id}'
    return {"Server01": f'{setup} Server "%PATHWORK%\\mv\\{product.folder}" {" ".join(product.files)}',
            "Client01": f'{setup} Client "%PROGRAMFILES%\\Lumo\\{product.name}" componenti.exe'}


def configuration(product, updates=()):
    """Configuration file of a product as {section: {key: value}}. Its set-up brings it to the
    product's version; each other version in `updates` is one update section more."""
    sections = {}
    last = updates[-1] if updates else product.version
    sections["Setup01"] = {"version": last, "Server01": server_command(product, last),
                           "Client01": client_command(product, last)}
    for index, version in enumerate(dict.fromkeys((product.version, *updates)), 1):
        sections[f"Update{index:02d}"] = {"version": version,
                                          "Server01": server_command(product, version),
                                          "Client01": client_command(product, version)}
    sections["Exec"] = {code: f"%PATHWORK%\\mv\\{product.folder}\\{file}"
                        for code, file in product.programs.items()}
    sections["Remove"] = removal(product)
    return sections


def standalone_configuration(product, version):
    """What a set-up reads that is started without arguments, as on a machine without the host."""
    return {"Standalone": {"Product": product.id, "Version": version,
                           "Folder": f"%ProgramFiles%\\Lumo\\{product.name}",
                           "Programs": " ".join(product.files)}}


def catalogue(products):
    """Product catalogue as {section: {key: value}}."""
    return {f"prod{index:02d}": {"id": product.id, "name": product.name,
                                 "conf": f"prg\\com\\setup\\aggdovra\\{product.id.lower()}.ini"}
            for index, product in enumerate(products, 1)}


def store_xml(settings=()):
    """Text of the configuration store; `settings` are (product, section, key, attribute, value)."""
    lines = ['<?xml version="1.0" encoding="UTF-8"?>', "<configuration>"]
    for product, section, key, attribute, value in (
            ("DOVRA", "Server", "Path", "default", HOST_FOLDER), *settings):
        lines += [f'  <product name="{product}">', f'    <section name="{section}">',
                  f'      <key name="{key}">',
                  f'        <attribute name="{attribute}" type="1">{value}</attribute>',
                  "      </key>", "    </section>", "  </product>"]
    return "\r\n".join(lines + ["</configuration>", ""])


def integration_setting(path):
    """The setting that records the integration with a server folder."""
    return ("SYSTEM", "Complementary_Products", "Integration", "Path", path)


SCHEMA = """<?xml version="1.0" encoding="UTF-8"?>
<xs:schema xmlns:xs="http://www.w3.org/2001/XMLSchema">
  <xs:element name="configuration">
    <xs:complexType>
      <xs:sequence>
        <xs:any processContents="lax" minOccurs="0" maxOccurs="unbounded"/>
      </xs:sequence>
    </xs:complexType>
  </xs:element>
</xs:schema>
"""


class Installation:
    """An installation in a Wine prefix. `server` is the server path's place on this system, `disk`
    the prefix's drive C, `programs` the folder of the built setup.exe and product.exe."""

    def __init__(self, server, disk, programs):
        self.disk = pathlib.Path(disk)
        self.programs = pathlib.Path(programs)
        self.place_server(server)
        self.client = self.disk / "Lumo/Client"
        self.client_record = self.client / "agdvver.ini"
        # The programs path's text with the file's name directly behind it.
        self.client_lock = self.disk / "Lumo/Clientagdv.lck"
        self.store = self.client / "lumoconf.xml"

    def place_server(self, folder):
        self.server = pathlib.Path(folder)
        self.setups = self.server / SETUP_FOLDER
        self.client_copy = self.server / "prg/com/bin/cpy/client"
        self.environment = self.server / "prg/etc/ambver"
        self.server_record = self.server / "prg/etc/agdvver.ini"
        self.server_lock = self.server / "prg/tempterm/agdv.lck"

    def lay_out(self, products=PRODUCTS, release="11.00.00", dovra=True):
        """The state before the first start: nothing is installed, nothing recorded."""
        for folder in ("prg/etc", "prg/tempterm", "prg/com/bin/cpy/client", "prg/applidir", "mv"):
            (self.server / folder).mkdir(parents=True, exist_ok=True)
        if dovra:
            (self.server / "prg/com/dovra/plugin").mkdir(parents=True, exist_ok=True)
        write_text(self.server / "prg/etc/dvrel", release + "\n")
        write_text(self.environment, "000011 14/09/26 17:40\n000012 20/10/26 08:15\n")
        write_text(self.server_record, "; versioni dei prodotti complementari sul server\n")
        write_text(self.setups / "agdvcomp.ini", ini_text(catalogue(products)))
        for product in products:
            self.write_configuration(product)
            self.put_setup(product)
        # The master of the ini file that each user of Nerio gets a copy of.
        write_text(self.server / "mv/nerio/nerio.ini", "[Nerio]\nLingua=Italiano\n")
        self.client.mkdir(parents=True, exist_ok=True)
        write_text(self.client_record, "; versioni dei prodotti complementari della stazione\n")
        self.store.write_bytes(store_xml().encode())
        (self.client / "lumoconf.xsd").write_bytes(SCHEMA.encode())

    def write_configuration(self, product, sections=None):
        """Writes a product's configuration file; without `sections` the one of `configuration`."""
        write_text(self.setups / f"{product.id.lower()}.ini",
                   ini_text(sections or configuration(product)))

    def put_setup(self, product):
        for name, content in self.setup_files(product, product.version).items():
            file = self.setups / name
            file.parent.mkdir(parents=True, exist_ok=True)
            file.write_bytes(content)

    def setup_files(self, product, version):
        """The set-up of a product: {path below the setup folder: content}."""
        return {f"{product.folder}/setup.exe": (self.programs / "setup.exe").read_bytes(),
                f"{product.folder}/product.exe": (self.programs / "product.exe").read_bytes(),
                f"{product.folder}/setup.ini":
                    text_bytes(ini_text(standalone_configuration(product, version)))}

    def pack_files(self, product, version):
        """What a pack brings that updates a product: {path from the pack's root: content}. The
        catalogue is in it because a machine without the host has none."""
        files = {"agdvcomp.ini": text_bytes(ini_text(catalogue(PRODUCTS))),
                 f"{product.id.lower()}.ini": text_bytes(ini_text(configuration(product, [version]))),
                 **self.setup_files(product, version)}
        return {f"{SETUP_FOLDER}/{name}": content for name, content in files.items()}

    def registry_values(self):
        """The pointers of the configuration store: (key, name, value) below HKEY_LOCAL_MACHINE."""
        return ((STORE_KEY, "Schema", CLIENT_FOLDER + "\\lumoconf.xsd"),
                (STORE_KEY, "Config", CLIENT_FOLDER + "\\lumoconf.xml"))

    def put_programs(self, products=PRODUCTS):
        """The programs of products as their server set-up leaves them."""
        for product in products:
            folder = self.server / "mv" / product.folder
            folder.mkdir(parents=True, exist_ok=True)
            for file in product.files:
                shutil.copy(self.programs / "product.exe", folder / file)

    def record_versions(self, products=PRODUCTS, server=True, client=True):
        """Records products at their versions, as if they were installed."""
        sections = {product.id: {"version": product.version} for product in products}
        if server:
            write_text(self.server_record, ini_text(sections))
        if client:
            write_text(self.client_record, ini_text(sections))

    def versions(self):
        """{product id: (server version, client version)} of the records; "" where there is none."""
        server, client = read_ini(self.server_record), read_ini(self.client_record)
        return {identifier: (server.get(identifier, {}).get("version", ""),
                             client.get(identifier, {}).get("version", ""))
                for identifier in dict.fromkeys((*server, *client))}

    def commands_run(self):
        """Command lines of the set-ups that ran to their end, in their order."""
        file = self.setups / "installazioni.txt"
        return file.read_bytes().decode().splitlines() if file.exists() else []

    def reports(self):
        """The files in which programs have told what they were started with."""
        return sorted((self.server / "mv").glob("*/*.avvio.txt"))

    def starts(self):
        """{program file: lines of what it was started with} of the products' programs."""
        return {file.name.replace(".avvio.txt", ".exe"): file.read_bytes().decode().splitlines()
                for file in self.reports()}
