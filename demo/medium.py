"""Builds the demonstration's medium: lays out what demo/medium.txt names, then calls tools/medium."""

import shutil
import subprocess

import installation
import windows

MANAGER_FOLDER = "D:\\prodotti\\manager"
DESCRIPTION = windows.PROJECT / "demo/medium.txt"
MANUAL = windows.PROJECT / "build/manual/kodamuri.pdf"
VERSIONS = {product.id: [product.version] for product in installation.PRODUCTS}
VERSIONS["ZB"].append("09.94.00.00")
README = """Prodotti complementari: supporto di dimostrazione.

Il manuale si trova in prodotti\\docs\\kodamuri.pdf.
"""


def tree_name(product, version):
    return f"{product.name.lower()}-{version}"


def lay_out_sources(folder, station, build):
    """The description with all that it names beside it; the folder is new. `station` makes the
    set-ups, `build` is the manager that goes on the medium."""
    folder.mkdir(parents=True)
    shutil.copy(DESCRIPTION, folder)
    build.put_release(folder / "release")
    put_manual(folder / "kodamuri.pdf")
    installation.write_text(folder / "leggimi.txt", README)
    for product in installation.PRODUCTS:
        for version in VERSIONS[product.id]:
            put_tree(folder / tree_name(product, version), station.pack_files(product, version))
    return folder / DESCRIPTION.name


def put_manual(file):
    """The manual as tools/manual builds it."""
    subprocess.run([windows.PROJECT / "tools/manual", "--quiet"], check=True)
    shutil.copy(MANUAL, file)


def put_tree(folder, files):
    """The set-up tree of {path from a pack's root: content}."""
    for name, content in files.items():
        file = folder / name.removeprefix(installation.SETUP_FOLDER + "/")
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_bytes(content)


def build(description, medium):
    """Builds a medium; what went wrong, "" when it is there."""
    done = subprocess.run([windows.PROJECT / "tools/medium", description, medium], check=False,
                          capture_output=True, text=True)
    return done.stderr.strip() if done.returncode else ""
