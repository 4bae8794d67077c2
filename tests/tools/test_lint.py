"""trelv lint on real files: the demonstration and the documents' examples hold no trap, odd paths end
with a clear line, and whoever looks on changes nothing and is in nobody's way."""

import json
import os
import pathlib
import re
import shutil
import subprocess
import sys

import pytest

PROJECT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(PROJECT / "demo"))

import installation  # noqa: E402
import medium as demonstration_medium  # noqa: E402
import packs  # noqa: E402

ZB = installation.ZB
SETUPS = "prg/com/setup/aggdovra"
PROGRAMS = ("TrelvManager.exe", "qalbunex.exe", "7z.exe", "7z.dll")
PICTURES = ("product.jpg", "setup_fase1.jpg")
# To write, to make, to change, to lock.
OPENED_TO_CHANGE = re.compile(r"O_WRONLY|O_RDWR|O_CREAT|O_TRUNC|O_APPEND")


@pytest.fixture(scope="module")
def trelv():
    done = subprocess.run([PROJECT / "tools/trelv", "--path"], capture_output=True, text=True, check=True)
    return done.stdout.strip()


def run(trelv, *words, **named):
    return subprocess.run([trelv, "lint", *map(str, words)], capture_output=True, check=False,
                          timeout=60, **named)


def findings(trelv, *words, exit_code=1):
    done = run(trelv, "--json", *words)
    assert done.returncode == exit_code, (done.stdout, done.stderr)
    assert done.stderr == b""
    document = json.loads(done.stdout.decode("utf-8"))
    assert list(document) == ["schema", "verb", "program", "findings", "result"]
    assert document["result"] == {}
    for each in document["findings"]:
        assert list(each) == ["code", "severity", "file", "line", "text", "remedy"]
    return [(each["code"], each["file"], each["line"]) for each in document["findings"]]


def refusal(trelv, path, *words):
    """What is said where nothing can be done."""
    done = run(trelv, path, *words)
    assert (done.returncode, done.stdout) == (2, b"")
    line = done.stderr.decode("utf-8", "surrogateescape")
    start = f"trelv: {path}: "
    assert line.startswith(start) and line.endswith("\n") and line.count("\n") == 1
    return line[len(start):-1]


def put_release(folder):
    for name in (*PROGRAMS, *(f"images/{picture}" for picture in PICTURES)):
        (folder / name).parent.mkdir(parents=True, exist_ok=True)
        (folder / name).write_bytes(b"MZ")


@pytest.fixture
def station(tmp_path):
    """The demonstration's share before the first start."""
    programs = tmp_path / "programs"
    programs.mkdir()
    for name in ("setup.exe", "product.exe"):
        (programs / name).write_bytes(b"MZ" + name.encode() * 100)
    station = installation.Installation(tmp_path / "Lumo", tmp_path / "disk", programs)
    station.lay_out()
    return station


@pytest.fixture
def host(station):
    """The same when all products are installed."""
    station.put_programs()
    station.record_versions()
    return station.server


# --- Nothing to find

def test_the_demonstration_holds_no_trap_before_its_first_start(trelv, station):
    assert findings(trelv, station.server, exit_code=0) == []


def test_the_demonstration_holds_no_trap_when_it_is_installed(trelv, station, host):
    assert findings(trelv, host, exit_code=0) == []
    station.write_configuration(ZB, installation.configuration(ZB, ["09.94.00.00"]))
    assert findings(trelv, host, exit_code=0) == []


def test_the_demonstrations_packs_hold_no_trap(trelv, station, host, tmp_path):
    pack = packs.zip_bytes(station.pack_files(ZB, "09.94.00.00"))
    (tmp_path / "zb.zip").write_bytes(pack)
    (tmp_path / "zb.gz").write_bytes(packs.gz_bytes({"zb.zip": pack}))
    alone = [tmp_path / "zb.zip", tmp_path / "zb.gz"]
    assert findings(trelv, *alone, exit_code=0) == []
    assert findings(trelv, host, *alone, exit_code=0) == []
    (station.setups / "zb.zip").write_bytes(pack)
    assert findings(trelv, host, exit_code=0) == []


@pytest.fixture(params=["tools/medium", "trelv medium"])
def medium(request, trelv, station, tmp_path):
    """The demonstration's medium, by either builder."""
    sources = tmp_path / "sources"
    sources.mkdir()
    shutil.copy(demonstration_medium.DESCRIPTION, sources)
    put_release(sources / "release")
    (sources / "kodamuri.pdf").write_bytes(b"%PDF-1.4")
    installation.write_text(sources / "leggimi.txt", demonstration_medium.README)
    for product in installation.PRODUCTS:
        for version in demonstration_medium.VERSIONS[product.id]:
            demonstration_medium.put_tree(sources / demonstration_medium.tree_name(product, version),
                                          station.pack_files(product, version))
    builder = [PROJECT / "tools/medium"] if request.param == "tools/medium" else [trelv, "medium"]
    done = subprocess.run([*builder, sources / demonstration_medium.DESCRIPTION.name,
                           tmp_path / "medium"], capture_output=True, text=True, check=False)
    assert done.returncode == 0, done.stderr + done.stdout
    return tmp_path / "medium"


def test_the_demonstrations_medium_holds_no_trap(trelv, medium, host):
    assert findings(trelv, medium, exit_code=0) == []
    assert findings(trelv, host, medium, exit_code=0) == []


def examples(document):
    text = (PROJECT / "docs" / document).read_text(encoding="utf-8")
    return dict(re.findall(r"^```\w+ file=(\S+)\n(.*?)^```$", text, re.MULTILINE | re.DOTALL))


def test_the_examples_of_the_formats_hold_no_trap(trelv, station):
    shutil.rmtree(station.server)
    station.lay_out(products=[])
    files = {path: text for path, text in examples("formats.md").items() if path.startswith("S:\\")}
    assert len(files) == 3
    for path, text in files.items():
        file = station.server.parent / path[3:].replace("\\", "/")
        file.write_bytes(text.replace("\n", "\r\n").encode("cp1252"))
    assert findings(trelv, station.server, "--ignore", "TK104,TK208,TK222", exit_code=0) == []
    for name in ("agdvcomp.ini", "zb.ini"):
        assert findings(trelv, station.setups / name, exit_code=0) == []


def test_the_examples_of_the_medium_hold_no_trap(trelv, station, tmp_path):
    root = tmp_path / "supporto"
    put_release(root / "prodotti/manager")
    (root / "prodotti/docs").mkdir()
    (root / "prodotti/docs/kodamuri.pdf").write_bytes(b"%PDF-1.4")
    files = {name: text for name, text in examples("medium.md").items() if name != "supporto.txt"}
    assert sorted(files) == ["Products.cmf", "Setup.cmf", "Versione.ver"]
    for name, text in files.items():
        (root / name).write_bytes(text.replace("\n", "\r\n").encode("cp1252"))
    pack = packs.zip_bytes(station.pack_files(ZB, "09.94.00.00"))
    zip_pack = packs.zip_bytes({"zb.gz": packs.gz_bytes({"zb.zip": pack})})
    for folder in set(re.findall(r"\|(prodotti[^|\n]*)\|", files["Setup.cmf"])):
        place = root / folder.replace("\\", "/")
        place.mkdir(parents=True, exist_ok=True)
        (place / "a.zip").write_bytes(zip_pack)
    assert findings(trelv, root, exit_code=0) == []


# --- Odd paths

def test_what_is_not_there_or_is_something_else_is_refused(trelv, tmp_path):
    (tmp_path / "vuota").mkdir()
    (tmp_path / "vuoto.ini").write_bytes(b"")
    (tmp_path / "a.bin").write_bytes(bytes(range(256)) * 40)
    for name in ("manca", "vuota", "vuoto.ini", "a.bin"):
        assert refusal(trelv, tmp_path / name)


def test_links_in_a_circle_end_with_a_line(trelv, tmp_path, host):
    circle = tmp_path / "giro"
    circle.symlink_to(circle)
    assert refusal(trelv, circle)
    inside = host / SETUPS / "giro"
    inside.symlink_to(host)
    assert findings(trelv, host, exit_code=0) == []
    pack = host / SETUPS / "giro.zip"
    pack.symlink_to(pack)
    done = run(trelv, host)
    assert done.returncode in (0, 2) and done.stderr.count(b"\n") <= 1


def test_a_name_that_is_no_utf8_is_told_all_the_same(trelv, host, tmp_path):
    (pathlib.Path(os.fsdecode(os.fsencode(host / SETUPS) + b"/perch\xe9.ZIP"))).write_bytes(b"x")
    [(code, file, line)] = findings(trelv, host)
    assert (code, line) == ("TK501", None)
    assert file.endswith("perch\ufffd.ZIP")
    assert run(trelv, os.fsencode(tmp_path) + b"/perch\xe9").returncode == 2


def test_paths_are_shown_as_they_were_given(trelv, host, tmp_path):
    (host / "prg/etc/dvrel").unlink()
    for given, shown in (("Lumo", "Lumo"), ("Lumo/", "Lumo"), ("./Lumo//", "./Lumo"),
                         (str(host) + "/", str(host))):
        done = run(trelv, "--json", given, cwd=tmp_path)
        [found] = json.loads(done.stdout)["findings"]
        assert found["file"] == shown + "/prg/etc/dvrel"


def test_a_large_pack_costs_neither_time_nor_memory(trelv, tmp_path):
    """More entries than are read, told within a minute and 800 MB, whatever else the pack holds."""
    import io
    import zipfile
    bytes_ = io.BytesIO()
    with zipfile.ZipFile(bytes_, "w") as archive:
        for number in range(250_000):
            archive.writestr(zipfile.ZipInfo(f"{SETUPS}/{number}"), b"")
    (tmp_path / "a.zip").write_bytes(bytes_.getvalue())
    with subprocess.Popen([trelv, "lint", tmp_path / "a.zip"], stderr=subprocess.PIPE, text=True) as process:
        told = process.stderr.read()
        _, status, usage = os.wait4(process.pid, 0)
        process.returncode = os.waitstatus_to_exitcode(status)
    assert process.returncode == 2
    assert told == f"trelv: {tmp_path}/a.zip: ha più di 200000 voci\n"
    assert usage.ru_utime + usage.ru_stime < 60
    assert usage.ru_maxrss < 800_000


# --- Whoever looks on

def state(folder):
    return {path: (path.lstat().st_mtime_ns, path.lstat().st_mode,
                   path.read_bytes() if path.is_file() else None) for path in folder.rglob("*")}


def test_nothing_is_opened_to_be_changed_and_nothing_is_locked(trelv, station, host, tmp_path):
    (station.setups / "zb.zip").write_bytes(packs.zip_bytes(station.pack_files(ZB, "09.94.00.00")))
    before = state(host)
    trace = tmp_path / "trace"
    # A build with sanitizers cannot look for leaks while it is traced.
    done = subprocess.run(["strace", "-f", "-o", trace, trelv, "lint", host], capture_output=True,
                          text=True, check=False, env=dict(os.environ, ASAN_OPTIONS="detect_leaks=0"))
    assert done.returncode == 0, done.stdout + done.stderr
    calls = trace.read_text(encoding="utf-8", errors="replace").splitlines()
    opened = [call for call in calls if "open" in call and str(host) in call]
    assert len(opened) > 20
    assert [call for call in opened if OPENED_TO_CHANGE.search(call)] == []
    # Ends of lines of a trace are "= answer".
    assert [call for call in calls if re.search(
        r"\b(flock|mkdir(at)?|unlink(at)?|rename(at2?)?|link(at)?|symlink(at)?|f?chmod(at)?|"
        r"utimensat|truncate|ftruncate|F_SETLK|F_OFD_SETLK)\w*\(", call)] == []
    assert state(host) == before


def test_whoever_may_only_read_gets_the_same_answers(trelv, station, host):
    (station.setups / "zb.zip").write_bytes(packs.zip_bytes(station.pack_files(ZB, "09.94.00.00")))
    (host / "prg/etc/dvrel").unlink()
    whole = findings(trelv, host)
    assert [code for code, _, _ in whole] == ["TK405"]
    for path in (host, *host.rglob("*")):
        path.chmod(0o555 if path.is_dir() else 0o444)
    for parent in list(host.parents)[:-1]:
        parent.chmod(parent.stat().st_mode | 0o011)
    nobody = ["setpriv", "--reuid=65534", "--regid=65534", "--clear-groups"] if os.getuid() == 0 else []
    done = subprocess.run([*nobody, trelv, "lint", "--json", host], capture_output=True, check=False)
    assert done.stderr == b""
    codes = [each["code"] for each in json.loads(done.stdout)["findings"]]
    # And that the record cannot be written.
    assert codes == ["TK303", "TK405"]
