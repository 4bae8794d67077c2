"""The real qalbunex.exe on packs as tar programs make them, and on packs that nobody should open."""

import gzip
import io
import os
import resource
import shutil
import signal
import struct
import subprocess
import tarfile

import pytest

import windows

USAGE = "Uso: qalbunex PACCO CARTELLA"
FORMS = [tarfile.USTAR_FORMAT, tarfile.GNU_FORMAT, tarfile.PAX_FORMAT]


class Decoder:
    """Drive C of the prefix with a pack folder C:\\P and an output folder C:\\T."""

    def __init__(self, prefix):
        self.prefix = prefix
        # Once the driver answers, Windows has started.
        prefix.facts()
        self.packs = prefix.disk / "P"
        self.output = prefix.disk / "T"
        self.program = prefix.build.release / "qalbunex.exe"
        for folder in (self.packs, self.output, prefix.disk / "e"):
            shutil.rmtree(folder, ignore_errors=True)
        self.packs.mkdir()

    def call(self, *arguments, **named):
        """Exit code and lines of standard error."""
        return self.ended(self.begin(*arguments, **named))

    def begin(self, *arguments, **named):
        environment = {**os.environ, "WINEPREFIX": str(self.prefix.folder)}
        return subprocess.Popen([windows.PROJECT / "tools/wine", self.program, *arguments],
                                env=environment, stdout=subprocess.PIPE, stderr=subprocess.PIPE, **named)

    def ended(self, process):
        """Exit code and lines of standard error."""
        try:
            output, errors = process.communicate(timeout=120)
        finally:
            process.kill()
        assert output == b""
        return process.returncode, errors.decode("cp1252").splitlines()

    def open(self, data):
        (self.packs / "a.gz").write_bytes(data)
        return self.call("C:\\P\\a.gz", "C:\\T")

    def opened(self, data):
        assert self.open(data) == (0, [])

    def refused(self, data):
        """The one line of a refused pack, which leaves nothing anywhere."""
        before = everything(self.prefix.disk)
        code, lines = self.open(data)
        assert code == 2
        assert len(lines) == 1
        after = everything(self.prefix.disk)
        assert [path for path in after if path not in before and path not in ("T", "P/a.gz")] == []
        assert {path: after.get(path) for path in before if path != "P/a.gz"} == {
            path: facts for path, facts in before.items() if path != "P/a.gz"}
        assert lines[0].startswith("qalbunex: C:\\P\\a.gz: ")
        return lines[0].removeprefix("qalbunex: C:\\P\\a.gz: ")


def everything(folder):
    """{path: size and time} of all that is below a folder, without what Wine writes by itself."""
    found = {}
    for path in folder.rglob("*"):
        name = path.relative_to(folder).as_posix()
        if not name.startswith(("windows/", "users/", "ProgramData/")):
            facts = path.lstat()
            found[name] = None if path.is_dir() else (facts.st_size, facts.st_mtime_ns)
    return found


@pytest.fixture
def decoder(prefix):
    return Decoder(prefix)


def entry(name, kind=tarfile.REGTYPE, content=b"", link="", **values):
    found = tarfile.TarInfo(name)
    found.type, found.linkname, found.size, found.mtime = kind, link, len(content), 1767323045
    for key, value in values.items():
        setattr(found, key, value)
    return found, content


def archive(*entries, form=tarfile.GNU_FORMAT):
    data = io.BytesIO()
    with tarfile.open(fileobj=data, mode="w", format=form) as tar:
        for found, content in entries:
            tar.addfile(found, io.BytesIO(content))
    return data.getvalue()


def pack(*entries, **named):
    return gzip.compress(archive(*entries, **named))


def tree(folder):
    return {path.relative_to(folder).as_posix(): path.read_bytes() if path.is_file() else None
            for path in folder.rglob("*")}


@pytest.fixture(scope="module")
def source(tmp_path_factory):
    """A tree such as a pack holds, with long and accented names, empty and large files."""
    folder = tmp_path_factory.mktemp("pack")
    setup = folder / "prg/com/setup/aggdovra"
    setup.mkdir(parents=True)
    (setup / "nerio.zip").write_bytes(os.urandom(700000))
    (setup / "vuoto.zip").write_bytes(b"")
    (setup / "perché così.txt").write_text("accenti")
    (folder / "prg/cartella vuota").mkdir()
    long = folder / "prg" / ("d" * 60) / ("e" * 60)
    long.mkdir(parents=True)
    (long / ("f" * 50 + ".zip")).write_bytes(b"long")
    return folder


V7 = "prg/com/setup/aggdovra/"  # long names and letters with accents are more than that form keeps


@pytest.mark.parametrize("program, options, members", [
    *[pytest.param("tar", [f"--format={form}"], ["prg"], id=f"gnu_tar_{form}")
      for form in ("ustar", "gnu", "pax", "oldgnu")],
    pytest.param("tar", ["--format=v7"], [V7 + "nerio.zip", V7 + "vuoto.zip"], id="gnu_tar_v7"),
    pytest.param("tar", [], ["."], id="gnu_tar_of_the_folder_itself"),
    *[pytest.param("bsdtar", [f"--format={form}"], ["prg"], id=f"bsdtar_{form}",
                   marks=pytest.mark.skipif(not shutil.which("bsdtar"),
                                            reason="bsdtar is missing (libarchive-tools)"))
      for form in ("pax", "gnutar", "ustar")]])
def test_packs_of_tar_programs(decoder, source, program, options, members, tmp_path):
    subprocess.run([program, "-czf", tmp_path / "a.gz", *options, "-C", source, *members],
                   check=True, env={**os.environ, "LC_ALL": "C.UTF-8"})
    decoder.opened((tmp_path / "a.gz").read_bytes())
    expected = {name: content for name, content in tree(source).items() if members in (["prg"], ["."])
                or any(member == name or member.startswith(name + "/") for member in members)}
    assert tree(decoder.output) == expected


@pytest.mark.parametrize("form", FORMS)
def test_packs_of_python(decoder, source, form, tmp_path):
    with tarfile.open(tmp_path / "a.gz", "w:gz", format=form) as tar:
        tar.add(source / "prg", "prg")
    decoder.opened((tmp_path / "a.gz").read_bytes())
    assert tree(decoder.output) == tree(source)


def test_files_keep_their_times(decoder):
    decoder.opened(pack(entry("a.zip", content=b"x")))
    assert (decoder.output / "a.zip").stat().st_mtime == 1767323045


def test_an_empty_archive_makes_the_folder_only(decoder):
    decoder.opened(pack())
    assert tree(decoder.output) == {}


def test_the_output_folder_is_made_with_its_parents(decoder):
    (decoder.packs / "a.gz").write_bytes(pack(entry("x")))
    for folder in ("C:\\T\\u\\v", "C:\\T\\w\\", "C:\\T\\perché Ω"):
        assert decoder.call("C:\\P\\a.gz", folder) == (0, [])
    assert {"u/v/x", "w/x", "perché Ω/x"} <= set(tree(decoder.output))


def test_decoders_that_make_one_output_folder_at_once(decoder):
    """Each finds some of its levels missing and, when it makes them, already there."""
    for number in range(4):
        (decoder.packs / f"{number}.gz").write_bytes(pack(entry(f"x{number}")))
    for turn in range(5):
        folder = f"C:\\T\\{turn}" + "\\livello" * 25
        together = [decoder.begin(f"C:\\P\\{number}.gz", folder) for number in range(4)]
        assert [decoder.ended(process) for process in together] == [(0, [])] * 4
        below = decoder.output / str(turn) / "/".join(["livello"] * 25)
        assert sorted(tree(below)) == ["x0", "x1", "x2", "x3"]


def test_a_pack_with_any_name(decoder):
    (decoder.packs / "più Ω 😀.gz").write_bytes(pack(entry("x")))
    assert decoder.call("C:\\P\\più Ω 😀.gz", "C:\\T") == (0, [])


@pytest.mark.parametrize("form", FORMS)
def test_entries_with_any_letters(decoder, form):
    """The last one takes two units of Windows."""
    decoder.opened(pack(entry("più Ω 😀.zip", content=b"x"), form=form))
    assert tree(decoder.output) == {"più Ω 😀.zip": b"x"}


def test_files_that_stand_are_overwritten_also_read_only_ones(decoder):
    (decoder.output / "prg").mkdir(parents=True)
    (decoder.output / "prg/A.ZIP").write_bytes(b"old")
    (decoder.output / "prg/A.ZIP").chmod(0o444)
    (decoder.output / "prg/mine").write_bytes(b"mine")
    decoder.opened(pack(entry("prg/", tarfile.DIRTYPE), entry("prg/a.zip", content=b"new")))
    found = {name.lower(): content for name, content in tree(decoder.output).items()}
    assert found == {"prg": None, "prg/a.zip": b"new", "prg/mine": b"mine"}


@pytest.mark.parametrize("arguments", [(), ("C:\\P\\a.gz",), ("a", "b", "c"), ("", "C:\\T")])
def test_wrong_arguments_are_answered_with_the_usage(decoder, arguments):
    assert decoder.call(*arguments) == (7, [USAGE])


def test_a_pack_that_is_missing(decoder):
    assert decoder.call("C:\\P\\b.gz", "C:\\T") == (
        2, ["qalbunex: C:\\P\\b.gz: Impossibile trovare il file: C:\\P\\b.gz"])
    assert not decoder.output.exists()


def test_an_output_folder_that_is_a_file(decoder):
    decoder.output.write_bytes(b"file")
    try:
        assert decoder.refused(pack(entry("x"))) == "Il percorso non è una cartella: C:\\T"
    finally:
        decoder.output.unlink()


@pytest.mark.parametrize("name, reason", [
    ("../e", "percorso che risale"), ("a/../../e", "percorso che risale"),
    ("/e", "percorso assoluto"), ("C:/e", "percorso assoluto"), ("C:e", "percorso assoluto"),
    ("\\e", "percorso assoluto"), ("\\\\srv\\share\\e", "percorso assoluto"),
    ("\\\\?\\C:\\e", "percorso assoluto"), ("\\\\.\\COM1", "percorso assoluto"),
    ("a\\..\\..\\e", "carattere che Windows non ammette"),
    ("x:stream", "percorso assoluto"), ("xy:stream", "carattere che Windows non ammette"),
    ("a?", "carattere che Windows non ammette"), ("a\x07", "carattere che Windows non ammette"),
    ("NUL", "nome di un dispositivo"), ("a/con.txt", "nome di un dispositivo"),
    ("CONIN$", "nome di un dispositivo"), ("LPT1 .x", "nome di un dispositivo"),
    ("a. ", "nome che termina con uno spazio o un punto"),
    (".. /e", "nome che termina con uno spazio o un punto"),
    ("PROGRA~1/e", "nome che può valere come nome breve di un altro"),
    ("n" * 256, "nome troppo lungo"), ("/".join(["d" * 60] * 40), "percorso troppo lungo"),
    ("~qalbunex1.tmp/e", "nome riservato ai file temporanei")])
@pytest.mark.parametrize("form", [tarfile.GNU_FORMAT, tarfile.PAX_FORMAT])
def test_hostile_names_are_refused(decoder, name, reason, form):
    shown = name if len(name) <= 200 else name[:200] + "..."
    line = decoder.refused(pack(entry("first.zip", content=b"1"), entry(name, content=b"2"),
                                entry("last.zip", content=b"3"), form=form))
    assert line == f'{reason}: "{shown.replace(chr(7), "?")}"'


def test_names_of_an_old_code_page_are_refused(decoder):
    old = archive(entry("perchX.txt")).replace(b"perchX", b"perch\xe9")
    header = bytearray(old[:512])
    header[148:156] = b" " * 8
    header[148:155] = f"{sum(header):06o}\0".encode()
    assert decoder.refused(gzip.compress(bytes(header) + old[512:])).startswith(
        "archivio tar non valido")


def test_a_path_of_more_than_259_characters_is_unpacked(decoder):
    name = "/".join(["d" * 60] * 5) + "/a.txt"
    decoder.opened(pack(entry(name, content=b"1")))
    assert (decoder.output / name).read_bytes() == b"1"


@pytest.mark.parametrize("entries", [
    [entry("a.zip", content=b"1"), entry("l", tarfile.SYMTYPE, link="a.zip")],
    [entry("a.zip", content=b"1"), entry("l", tarfile.LNKTYPE, link="a.zip")],
    [entry("l", tarfile.SYMTYPE, link="C:\\"), entry("l/e", content=b"1")]])
def test_links_are_refused(decoder, entries):
    assert decoder.refused(pack(*entries)) == 'collegamento: "l"'


@pytest.mark.parametrize("kind", [tarfile.CHRTYPE, tarfile.BLKTYPE, tarfile.FIFOTYPE])
def test_devices_and_pipes_are_refused(decoder, kind):
    assert decoder.refused(pack(entry("d", kind))) == (
        'voce che non è né un file né una cartella: "d"')


@pytest.mark.parametrize("first, second", [("a.zip", "A.ZIP"), ("a", "A/b"), ("a/b", "A"),
                                           ("perché", "PERCHÉ")])
def test_names_that_are_one_to_windows_are_refused(decoder, first, second):
    assert decoder.refused(pack(entry(first), entry(second))).startswith(
        "nome presente due volte nel pacco")


def test_a_link_in_the_output_folder_is_not_followed(decoder):
    outside = decoder.prefix.disk / "outside"
    shutil.rmtree(outside, ignore_errors=True)
    outside.mkdir()
    decoder.output.mkdir()
    (decoder.output / "prg").symlink_to(outside)
    assert decoder.refused(pack(entry("prg/a.zip", content=b"1"))) == (
        "nella cartella di destinazione c'è un collegamento al posto di una voce del pacco: "
        '"C:\\T\\prg"')
    assert tree(outside) == {}


def test_damaged_packs_leave_nothing(decoder):
    good = pack(entry("a.zip", content=os.urandom(300000)))
    for length in (1, 9, 20, 1000, 200000, len(good) - 9, len(good) - 1):
        assert decoder.refused(good[:length]) == "pacco troncato"
    assert decoder.refused(b"") == "pacco vuoto"
    assert decoder.refused(b"PK\3\4") == "il file non è un pacco gzip"
    wrong = good[:-8] + struct.pack("<I", struct.unpack("<I", good[-8:-4])[0] ^ 1) + good[-4:]
    assert decoder.refused(wrong) == "pacco danneggiato (incorrect data check)"
    assert decoder.refused(good + b"x") == "dati estranei dopo la fine del pacco"
    assert decoder.refused(gzip.compress(b"x" * 5000)).startswith("archivio tar non valido")
    decoder.opened(good + b"\0" * 100)


def test_a_long_archive_of_zeros_is_unpacked_as_it_comes(decoder):
    """300 MB in 300 KB: no more than any file of that length."""
    size = 300 << 20
    found, _ = entry("zeros")
    found.size = size
    data = gzip.compress(found.tobuf() + b"\0" * (size + 10240), 1)
    decoder.opened(data)
    assert (decoder.output / "zeros").stat().st_size == size


def test_a_map_of_a_sparse_file_that_would_fill_the_memory_is_refused(decoder):
    parts = 3_000_000
    found, content = entry("s", content=f"{parts}\n".encode() + b"0\n0\n" * parts, pax_headers={
        "GNU.sparse.major": "1", "GNU.sparse.minor": "0", "GNU.sparse.realsize": "1"})
    assert decoder.refused(pack((found, content), form=tarfile.PAX_FORMAT)) == (
        "archivio tar con un'intestazione troppo lunga")


def limited_files():
    """For a process that is about to start: no file may become longer than half a megabyte, as if
    the disk were full."""
    signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
    resource.setrlimit(resource.RLIMIT_FSIZE, (1 << 19, 1 << 19))


def test_a_disk_that_takes_no_more_ends_the_work_and_is_cleared(decoder):
    (decoder.packs / "a.gz").write_bytes(
        pack(entry("a", content=b"1"), entry("b", content=os.urandom(1 << 20))))
    code, lines = decoder.call("C:\\P\\a.gz", "C:\\T", preexec_fn=limited_files)
    assert code == 2
    assert len(lines) == 1
    assert lines[0].startswith("qalbunex: C:\\P\\a.gz: ")
    assert lines[0].endswith(": C:\\T\\~qalbunex1.tmp\\b")
    assert tree(decoder.output) == {}
