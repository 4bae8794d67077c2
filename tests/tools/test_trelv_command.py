"""trelv on Linux as whoever types it meets it: its documents name all that it has, its answers arrive or
fail, and publications on a plain folder are whole whatever happens to the program."""

import hashlib
import json
import os
import pathlib
import random
import re
import subprocess
import time
import zipfile

import pytest

PROJECT = pathlib.Path(__file__).resolve().parents[2]
PAGE = PROJECT / "docs/trelv.1"
SETUP = "prg/com/setup/aggdovra"
VERBS = ("lint", "plan", "pack", "medium", "publish", "verify", "explain", "locks")


@pytest.fixture(scope="module")
def program():
    done = subprocess.run([PROJECT / "tools/trelv", "--path"], capture_output=True, text=True, check=True)
    return done.stdout.strip()


@pytest.fixture
def trelv(program, tmp_path):
    """Runs it in the test's folder; answers the finished process."""
    def run(*arguments, **options):
        options.setdefault("capture_output", True)
        return subprocess.run([program, *arguments], cwd=tmp_path, text=True, check=False, timeout=60,
                              stdin=subprocess.DEVNULL, **options)
    return run


def put(folder, files):
    for name, content in files.items():
        (folder / name).parent.mkdir(parents=True, exist_ok=True)
        (folder / name).write_bytes(content)


def configuration(version):
    return (f"[Setup01]\r\nversion={version}\r\n"
            'Server01="%PATHSETUP%\\prg\\com\\setup\\aggdovra\\zb\\setup.exe" -s\r\n'
            "[Exec]\r\nMVBIL=%PATHWORK%\\mv\\zb\\mvbil.exe\r\n"
            "[Remove]\r\nServer01=%PATHWORK%\\mv\\zb\\togli.exe\r\n").encode()


@pytest.fixture
def host(tmp_path):
    folder = tmp_path / "Lumo"
    put(folder, {
        SETUP + "/agdvcomp.ini":
            b"[prod01]\r\nid=ZB\r\nname=Bilancio\r\nconf=prg\\com\\setup\\aggdovra\\zb.ini\r\n",
        SETUP + "/zb.ini": configuration("09.94.00.00"), SETUP + "/zb/setup.exe": b"vecchio",
        "prg/etc/agdvver.ini": b"[ZB]\r\nversion=09.94.00.00\r\n",
        "mv/zb/mvbil.exe": b"programma", "mv/zb/togli.exe": b"programma"})
    (folder / "prg/tempterm").mkdir()
    return folder


def put_pack(path, files):
    with zipfile.ZipFile(path, "w") as archive:
        for name, content in files.items():
            archive.writestr(f"{SETUP}/{name}", content)
    return path.name


@pytest.fixture
def packs(tmp_path):
    """Three that bear on different files, each large enough to be met half copied."""
    return [put_pack(tmp_path / "zb.zip", {"zb.ini": configuration("09.95.00.00"),
                                           "zb/setup.exe": os.urandom(2_000_000)}),
            put_pack(tmp_path / "b.zip", {"b/b.bin": os.urandom(1_000_000)}),
            put_pack(tmp_path / "c.zip", {"c/c.bin": os.urandom(1_000_000)})]


def seen(host):
    """What a start sees of the set-up folder."""
    folder = host / SETUP
    return {str(path.relative_to(folder)): hashlib.sha256(path.read_bytes()).hexdigest()
            for path in folder.rglob("*") if path.is_file() and path.suffix != ".trelv"}


# --- Documents

def words_of(page):
    return page.read_text(encoding="utf-8").replace("\\-", "-")


def test_the_overview_lists_every_verb(trelv):
    assert tuple(re.findall(r"^  (\w+) ", trelv("--help").stdout, re.MULTILINE)) == VERBS


@pytest.mark.parametrize("verb", VERBS)
def test_the_documents_name_a_verb_with_all_its_options(trelv, verb):
    options = set(re.findall(r"^  (--[a-z-]+)", trelv(verb, "--help").stdout, re.MULTILINE))
    assert {"--json", "--quiet", "--help", "--version"} <= options
    page = words_of(PAGE)
    assert re.search(rf'^\.BI? "?{verb}\b', page, re.MULTILINE)
    guide = (PROJECT / "docs/trelv.md").read_text(encoding="utf-8")
    for option in options:
        assert option in page, option
        assert option in guide, option


def test_the_manual_page_renders_without_a_warning():
    done = subprocess.run(["groff", "-man", "-Tutf8", "-ww", "-Kutf8", PAGE], capture_output=True, text=True,
                          check=True)
    assert done.stderr == ""
    assert "trelv" in done.stdout


def test_every_rule_and_every_cause_has_its_entry():
    guide = (PROJECT / "docs/trelv.md").read_text(encoding="utf-8")
    rules = re.findall(r'"(TK\d{3})"', (PROJECT / "src/kit/LintRules.cpp").read_text(encoding="utf-8"))
    assert len(rules) > 70
    assert sorted(re.findall(r"^\| (TK\d{3}) \| .+ \| .+ \| .+ \|$", guide, re.MULTILINE)) == sorted(rules)
    causes = (PROJECT / "src/kit/Causes.cpp").read_text(encoding="utf-8")
    names = re.findall(r'Remedy\{"([a-z-]+)"|constexpr const char\* k\w+ = "(.+)"', causes)
    names = [one or other for one, other in names]
    assert len(names) == 25
    for name in names:
        assert re.search(rf"^\| `{name}` \| .+ \|.*\|.*\|$", guide, re.MULTILINE), name


# --- Answers

@pytest.mark.parametrize("arguments", [("verify", "Lumo"), ("verify", "Lumo", "--json"), ("--help",),
                                       ("lint", "--help"), ("--version",)])
def test_an_answer_that_cannot_be_written_is_a_failure(trelv, host, arguments):
    with open("/dev/full", "w", encoding="utf-8") as full:
        done = trelv(*arguments, capture_output=False, stdout=full, stderr=subprocess.PIPE)
    assert (done.returncode, done.stderr) == (2, "trelv: standard output: Disco pieno\n")
    reading, writing = os.pipe()
    os.close(reading)
    done = trelv(*arguments, capture_output=False, stdout=writing, stderr=subprocess.PIPE)
    os.close(writing)
    assert done.returncode == 2
    assert done.stderr.startswith("trelv: standard output: ")


def test_a_failure_is_one_line_with_the_path_as_given(trelv, host, packs, tmp_path):
    for words, path in ((("locks", "manca"), "manca"), (("verify", "./manca/"), "./manca"),
                        (("publish", "manca", "b.zip"), "manca/" + SETUP),
                        (("publish", "Lumo", "./manca.zip"), "./manca.zip"),
                        (("publish", "Lumo", "Lumo/mv/"), "Lumo/mv"),
                        (("publish", str(host), "--undo", "0007"), f"{host}/prg/tempterm/trelv/0007"),
                        (("publish", "Lumo", "--undo", "../.."), "Lumo/prg/tempterm/trelv/.."),
                        (("explain", "ZB", "--host", "Lumo", "--log", "è\nuna"), "è una")):
        done = trelv(*words, "--json")
        assert (done.returncode, done.stdout) == (2, ""), words
        assert done.stderr.startswith(f"trelv: {path}: "), done.stderr
        assert done.stderr.count("\n") == 1 and "Z:" not in done.stderr and "\\" not in done.stderr


def test_verify_tells_what_a_folder_alone_can_tell(trelv, host):
    done = trelv("verify", "Lumo", "--json")
    rows = json.loads(done.stdout)["result"]["rows"]
    assert [row["product"] for row in rows] == ["ZB", "NERIO", "LUDA", "Q2", "ZM"]
    assert rows[0] == {"product": "ZB", "side": "Server", "recorded": "09.94.00.00", "configured": "09.94.00.00",
                       "found": None, "mode": None, "state": "ok"}
    for row in rows[1:]:
        assert (row["side"], row["found"], row["mode"], row["state"]) == ("Server", None, None, "absent")
    assert done.returncode == 0


def test_explain_asks_for_host_and_log_where_no_manager_runs(trelv, host):
    for words in (("explain", "ZB"), ("explain", "ZB", "--host", "Lumo"), ("explain", "ZB", "--log", "a.log"),
                  ("explain", "PIPPO", "--host", "Lumo", "--log", "a.log")):
        done = trelv(*words)
        assert (done.returncode, done.stdout, done.stderr.count("\n")) == (64, "", 1), words


def test_paths_may_be_written_in_any_way(trelv, host):
    for path in ("Lumo", "Lumo/", "./Lumo//", "lumo", "LUMO/prg/..", str(host)):
        assert trelv("locks", path).returncode == 0, path


# --- Publishing

def test_a_refused_pack_leaves_nothing_behind(trelv, host):
    (host.parent / "rotto.zip").write_bytes(b"PK")
    before = sorted(host.rglob("*"))
    assert trelv("publish", "Lumo", "rotto.zip").returncode == 1
    assert sorted(host.rglob("*")) == before


def test_killed_at_any_moment_each_pack_is_old_or_new_and_a_repetition_finishes(trelv, program, host, packs):
    old = seen(host)
    begun = time.monotonic()
    assert trelv("publish", "Lumo", *packs).returncode == 0
    length = time.monotonic() - begun
    new = seen(host)
    assert trelv("publish", "Lumo", "--undo").returncode == 0
    moments = random.Random(20261122)
    for number in range(24):
        with subprocess.Popen([program, "publish", "Lumo", *packs], cwd=host.parent, stdout=subprocess.DEVNULL,
                              stderr=subprocess.DEVNULL) as process:
            time.sleep(moments.random() * length)
            process.kill()
        for name, content in seen(host).items():
            assert content in (old.get(name), new.get(name)), name
        if number % 2 == 0:
            done = trelv("publish", "Lumo", *packs)
            assert (done.returncode, seen(host)) == (0, new), done.stderr
        done = trelv("publish", "Lumo", "--undo")
        assert (done.returncode, seen(host)) == (0, old), done.stderr


def test_several_at_once_publish_all_of_theirs(trelv, program, host, packs):
    processes = [subprocess.Popen([program, "publish", "Lumo", *own], cwd=host.parent,
                                  stdout=subprocess.DEVNULL)
                 for own in (packs[:1], packs[1:2], packs[:1] + packs[2:])]
    assert [process.wait(timeout=60) for process in processes] == [0, 0, 0]
    assert set(packs) <= set(seen(host))
    while seen(host).keys() & set(packs):
        assert trelv("publish", "Lumo", "--undo").returncode == 0
    assert not list(host.rglob("*.trelv"))
