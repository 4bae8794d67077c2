"""What stands in the program file itself."""

import shutil
import struct

import pytest

# What a Windows XP without any addition offers.
SYSTEM_LIBRARIES = {
    "ADVAPI32.DLL", "COMCTL32.DLL", "COMDLG32.DLL", "GDI32.DLL", "KERNEL32.DLL", "MPR.DLL",
    "MSVCRT.DLL", "NETAPI32.DLL", "OLE32.DLL", "OLEAUT32.DLL", "SHELL32.DLL", "USER32.DLL",
    "USERENV.DLL", "VERSION.DLL", "WINSPOOL.DRV"}


class Executable:
    """The few fields of a 32-bit program that are looked at."""

    def __init__(self, data):
        self.data = data
        self.header = struct.unpack_from("<I", data, 0x3C)[0]
        assert data[self.header:self.header + 4] == b"PE\0\0"
        self.machine, sections = struct.unpack_from("<HH", data, self.header + 4)
        optional_size = struct.unpack_from("<H", data, self.header + 20)[0]
        optional = self.header + 24
        self.magic = struct.unpack_from("<H", data, optional)[0]
        self.system_version = struct.unpack_from("<HH", data, optional + 40)
        self.subsystem_version = struct.unpack_from("<HH", data, optional + 48)
        self.subsystem, self.characteristics = struct.unpack_from("<HH", data, optional + 68)
        self.directories = optional + 96
        table = optional + optional_size
        self.sections = [struct.unpack_from("<IIII", data, table + 40 * i + 8) for i in range(sections)]

    def offset(self, address):
        for size, start, raw_size, raw in self.sections:
            if start <= address < start + max(size, raw_size):
                return raw + address - start
        raise AssertionError(f"no section holds {address:#x}")

    def text(self, address):
        start = self.offset(address)
        return self.data[start:self.data.index(b"\0", start)].decode()

    def libraries(self):
        """Names of the libraries that must be there for the program to load, in capitals."""
        address = struct.unpack_from("<I", self.data, self.directories + 8)[0]
        names, at = [], self.offset(address)
        while name := struct.unpack_from("<I", self.data, at + 12)[0]:
            names.append(self.text(name).upper())
            at += 20
        return names


@pytest.fixture(scope="module")
def executable(build):
    return Executable(build.manager.read_bytes())


def test_it_is_a_32_bit_program_with_windows(executable):
    assert executable.machine == 0x14C
    assert executable.magic == 0x10B
    assert executable.subsystem == 2


def test_it_loads_on_windows_xp(executable):
    assert executable.subsystem_version <= (5, 1)
    assert executable.system_version <= (5, 1)


def test_it_does_not_claim_to_know_terminal_servers(executable):
    # With the bit set, the system would no longer give each session its own ini files.
    assert executable.characteristics & 0x8000 == 0


def test_it_needs_nothing_but_the_system(executable):
    assert set(executable.libraries()) <= SYSTEM_LIBRARIES


def test_it_is_small_enough_to_be_loaded_over_the_share_by_every_start(build):
    assert build.manager.stat().st_size <= 700_000


def test_it_is_read_whole_before_it_starts_so_that_share_or_medium_may_go_away(executable):
    marks = struct.unpack_from("<H", executable.data, executable.header + 22)[0]
    assert marks & 0x0C00 == 0x0C00


def test_it_does_not_tell_when_or_where_it_was_built(build, executable):
    assert struct.unpack_from("<I", executable.data, executable.header + 8)[0] == 0
    assert str(build.folder).encode() not in executable.data


def test_it_shows_the_version_of_the_project(executable, project_version):
    assert project_version.encode("utf-16-le") in executable.data


def test_its_manifest_asks_for_no_elevation(executable):
    assert b'level="asInvoker"' in executable.data
    assert b"requireAdministrator" not in executable.data


def test_failures_of_the_library_arrive_where_they_are_trapped(prefix, build):
    shutil.copy(build.test_programs / "failures.exe", prefix.disk)
    assert prefix.run("C:\\failures.exe", "").exit_code == 0
