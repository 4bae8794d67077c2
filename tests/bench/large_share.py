#!/usr/bin/env python3
"""Lays out a host of 100 products with 100 sections each, for docs/performance.md.

  tests/bench/large_share.py FOLDER
"""

import pathlib
import sys

SETUPS = "prg\\com\\setup\\aggdovra"
PRODUCTS = ("NERIO", "LUDA", "ZB", "Q2", "ZM")
UPDATES = 99


def section(name, version, command):
    return (f"[{name}]\r\nversion={version}\r\nServer01={command}{version} Server -s\r\n"
            f"Client01={command}{version} Client -s\r\n")


def configuration(folder):
    command = f'"%PATHSETUP%\\{SETUPS}\\{folder}\\setup.exe" '
    versions = [f"09.{number:02d}.00.00" for number in range(1, UPDATES + 1)]
    return (section("Setup01", versions[-1], command)
            + "".join(section(f"Update{number:02d}", version, command)
                      for number, version in enumerate(versions, 1))
            + f"[Exec]\r\n[Remove]\r\nServer01={command}-rimuovi\r\n")


def main(root):
    setups = root / SETUPS.replace("\\", "/")
    for folder in (setups, root / "prg/etc", root / "prg/tempterm"):
        folder.mkdir(parents=True)
    (root / "prg/etc/ambver").write_bytes(b"000011 14/09/26 17:40\r\n")
    catalogue = ""
    for number in range(1, 101):
        name = f"p{number}"
        (setups / name).mkdir()
        (setups / name / "setup.exe").write_bytes(b"MZ")
        (setups / f"{name}.ini").write_bytes(configuration(name).encode())
        catalogue += (f"[prod{number:02d}]\r\nid={PRODUCTS[number % len(PRODUCTS)]}\r\n"
                      f"name={name}\r\nconf={SETUPS}\\{name}.ini\r\n")
    (setups / "agdvcomp.ini").write_bytes(catalogue.encode())


if len(sys.argv) != 2:
    sys.exit(__doc__.strip())
main(pathlib.Path(sys.argv[1]))
