"""tools/prove goes on where it was, and its report names the commit that each number belongs to."""

import pathlib
import shutil
import subprocess

import pytest

from histories import change, commit, git

PROJECT = pathlib.Path(__file__).resolve().parents[2]

# In the place of the real one: each seed it is asked for has two runs, and the second seed a finding.
PROGRAM = """#!/bin/bash
if [ $# = 0 ]; then
  printf 'faults\\t3\\ta call that fails is told\\tevery call\\n'
  exit
fi
seeds=1-3
while [ $# -gt 0 ]; do
  case $1 in
    --state) state=$2 ;;
    --seeds) seeds=$2 ;;
  esac
  shift
done
for seed in $(seq "${seeds%-*}" "${seeds#*-}"); do
  grep -q "^seed $seed " "$state" 2>/dev/null && continue
  if [ "$seed" = 2 ]; then printf 'finding 2\\tstart 42 1\\tlocks-go: a lock is left .\\n' >>"$state"; fi
  printf 'seed %s runs=2 .\\n' "$seed" >>"$state"
done
"""
FUZZ = "#!/bin/bash\nprintf 'fuzz-tar\\t2\\tan archive is read whole\\tcoverage-guided\\n'\n"
HEAD = "| promise | how | count | found | when | commit | seeds | repeat |"


@pytest.fixture
def checkout(tmp_path):
    """A history with one commit, and programs that are built already."""
    for name, text in (("src/program.cpp", "1"), ("docs/page.md", "1"), ("tools/fuzz", FUZZ)):
        (tmp_path / name).parent.mkdir(exist_ok=True)
        (tmp_path / name).write_text(text)
    shutil.copy(PROJECT / "tools/prove", tmp_path / "tools/prove")
    program = tmp_path / "build/prove/tests/prove"
    program.parent.mkdir(parents=True)
    program.write_text(PROGRAM)
    for made in (program, tmp_path / "tools/fuzz"):
        made.chmod(0o755)
    (tmp_path / ".gitignore").write_text("build\n")
    git(tmp_path, "init", "-q")
    commit(tmp_path)
    return tmp_path


def work(folder, name, *options):
    """As tools/prove calls the program: the state of the last commit that changed what is proved."""
    changed = git(folder, "log", "-1", "--format=%H", "--", "src", "tests/prove")[:10]
    state = folder / "build/prove/state" / changed / name
    state.parent.mkdir(parents=True, exist_ok=True)
    subprocess.run([folder / "build/prove/tests/prove", name, "--state", state, *options], check=True)
    return changed


def rows(folder):
    done = subprocess.run([folder / "tools/prove", "--report"], capture_output=True, text=True)
    assert done.returncode == 0, done.stderr
    head, _, *lines = done.stdout.splitlines()
    assert head == HEAD
    return [[cell.strip() for cell in line.strip("|").split("|")] for line in lines]


def test_a_proof_that_was_not_begun_has_no_row(checkout):
    assert rows(checkout) == []


def test_a_row_has_counts_findings_commit_and_seeds(checkout):
    at = work(checkout, "faults")
    [[promise, how, count, found, _, name, seeds, repeat]] = rows(checkout)
    assert [promise, how, count] == ["a call that fails is told", "every call", "6 runs"]
    assert [found, name, seeds, repeat] == ["1", at, "1-3", "`tools/prove faults`"]


def test_the_report_is_a_file_too(checkout):
    work(checkout, "faults")
    done = subprocess.run([checkout / "tools/prove", "--report"], capture_output=True, text=True, check=True)
    assert (checkout / "build/prove/report.md").read_text() == done.stdout


def test_a_commit_that_changes_only_documents_keeps_what_was_done(checkout):
    at = work(checkout, "faults", "--seeds", "1-1")
    change(checkout, "docs/page.md")
    assert work(checkout, "faults", "--seeds", "3-3") == at
    [row] = rows(checkout)
    assert row[2] == "4 runs" and row[5] == at and row[6] == "2 of 1-3"


def test_the_latest_commit_at_which_it_is_whole_is_shown(checkout):
    whole = work(checkout, "faults")
    change(checkout, "src/program.cpp")
    work(checkout, "faults", "--seeds", "1-2")
    assert [row[5] for row in rows(checkout)] == [whole]
    latest = work(checkout, "faults")
    assert latest != whole
    assert [row[5] for row in rows(checkout)] == [latest]


def test_of_proofs_that_are_nowhere_whole_the_latest_is_shown(checkout):
    work(checkout, "faults", "--seeds", "1-2")
    change(checkout, "src/program.cpp")
    latest = work(checkout, "faults", "--seeds", "1-1")
    assert [(row[5], row[2]) for row in rows(checkout)] == [(latest, "2 runs")]


def test_another_history_has_no_row(checkout):
    git(checkout, "switch", "-q", "-c", "other")
    change(checkout, "src/program.cpp")
    work(checkout, "faults")
    git(checkout, "switch", "-q", "-")
    assert rows(checkout) == []


def test_a_name_that_no_proof_has_is_refused(checkout):
    done = subprocess.run([checkout / "tools/prove", "--report", "fault"], capture_output=True, text=True)
    assert done.returncode == 2 and "no proof of this name: fault" in done.stderr
