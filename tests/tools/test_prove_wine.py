"""tools/prove-wine keeps what ran for the last commit that changed it, and tells what ran alone."""

import pathlib
import shutil
import subprocess

import pytest

from histories import change, commit, git

PROJECT = pathlib.Path(__file__).resolve().parents[2]

# In the place of the real ones. "bad" beside the checkout names the tests that fail; each call is noted.
CONTRACT = """#!/bin/bash
top=$(cd "$(dirname "$0")/.." && pwd)
echo "$*" >>"$top/build/calls"
code=0
for test in Files.AreWhole Boxes.Show; do
  case $2 in *--gtest_filter=*) case $2 in *$test*) ;; *) continue ;; esac ;; esac
  if grep -qx "$test" "$top/build/bad" 2>/dev/null; then
    printf '[  FAILED  ] %s (3 ms)\\n' "$test"
    code=1
  else
    printf '[       OK ] %s (3 ms)\\n' "$test"
  fi
done
printf 'no such drive\\nSkipped\\nno drive here\\n\\n[  SKIPPED ] Drives.Map (0 ms)\\n'
exit $code
"""
SCENARIOS = """#!/usr/bin/python3
import pathlib, sys
top = pathlib.Path(__file__).resolve().parent.parent
words = sys.argv[1:]
with (top / "build/calls").open("a") as calls:
    calls.write(" ".join(words[words.index("-k"):]) + "\\n")
report = [word for word in words if word.startswith("--junitxml=")][0].split("=", 1)[1]
bad = (top / "build/bad").read_text().split("\\n") if (top / "build/bad").exists() else []
chosen = [word for word in words if "::" in word]
cases = ""
for name in ("test_starts[win32]", "test_updates[win32-1]"):
    if not chosen or "tests/scenario/test_a.py::" + name in chosen:
        cases += '<testcase classname="tests.scenario.test_a" name="%s">%s</testcase>' % (
            name, "<failure/>" if name in bad else "")
pathlib.Path(report).write_text("<testsuites><testsuite>" + cases + "</testsuite></testsuites>")
"""
HEAD = "| Wine | prefix | Windows | contract tests | commit | scenarios | commit | when |"


@pytest.fixture
def checkout(tmp_path):
    """A history with one commit, and programs that are built already."""
    for name, text in (("src/program.cpp", "1"), ("docs/page.md", "1"), ("tests/scenario/test_a.py", "1"),
                       ("tests/contract/a.cpp", "1"), ("tools/run-contract", CONTRACT),
                       ("tools/with-display", SCENARIOS), ("build/windows/tests/contract_win32.exe", "")):
        (tmp_path / name).parent.mkdir(parents=True, exist_ok=True)
        (tmp_path / name).write_text(text)
        (tmp_path / name).chmod(0o755)
    for name in ("prove", "prove-wine"):
        shutil.copy(PROJECT / "tools" / name, tmp_path / "tools" / name)
    (tmp_path / ".gitignore").write_text("build\n")
    git(tmp_path, "init", "-q")
    commit(tmp_path)
    return tmp_path


def prove_wine(folder, *words):
    """Exit code, the rows and what is told below them."""
    (folder / "build/calls").write_text("")
    done = subprocess.run([folder / "tools/prove-wine", *words], capture_output=True, text=True)
    if HEAD not in done.stdout:
        return done.returncode, [], done.stderr
    table, _, told = done.stdout[done.stdout.index(HEAD):].partition("\n\n")
    rows = [[cell.strip() for cell in line.strip("|").split("|")][:7] for line in table.splitlines()[2:]]
    return done.returncode, rows, told.splitlines()


def calls(folder):
    return (folder / "build/calls").read_text().splitlines()


def let_fail(folder, *names):
    (folder / "build/bad").write_text("\n".join(names) + "\n")


CONTRACT_RUN, SCENARIO_RUN = "10-win32-own-contract", "10-win32-own-scenario"
SKIPPED = "- 10-win32-own-contract: skipped Drives.Map: no drive here"


def test_what_was_not_run_has_no_row(checkout):
    assert prove_wine(checkout, "--report") == (0, [], [])


def test_a_row_has_what_came_of_both_and_the_commit_of_each(checkout):
    at = git(checkout, "rev-parse", "HEAD")[:10]
    code, rows, told = prove_wine(checkout, CONTRACT_RUN, SCENARIO_RUN)
    assert (code, told) == (0, [SKIPPED])
    assert rows == [["10", "win32", "own", "2 passed, 0 failed, 1 skipped", at,
                     "2 passed, 0 failed, 0 skipped", at]]
    assert (checkout / "build/prove/wine.md").read_text().startswith(HEAD)


def test_each_run_counts_for_the_last_commit_that_changed_what_it_is_about(checkout):
    begun = git(checkout, "rev-parse", "HEAD")[:10]
    prove_wine(checkout, CONTRACT_RUN, SCENARIO_RUN)
    change(checkout, "docs/page.md")
    scenario = change(checkout, "tests/scenario/test_a.py")
    [row] = prove_wine(checkout, SCENARIO_RUN)[1]
    assert (row[4], row[6]) == (begun, scenario)
    contract = change(checkout, "tests/contract/a.cpp")
    [row] = prove_wine(checkout, CONTRACT_RUN)[1]
    assert (row[4], row[6]) == (contract, scenario)


def test_the_latest_commit_of_this_history_is_shown(checkout):
    begun = git(checkout, "rev-parse", "HEAD")[:10]
    prove_wine(checkout, CONTRACT_RUN)
    git(checkout, "switch", "-q", "-c", "other")
    change(checkout, "src/program.cpp")
    prove_wine(checkout, CONTRACT_RUN)
    git(checkout, "switch", "-q", "-")
    assert prove_wine(checkout, "--report")[1][0][4] == begun
    # Not the same commit again.
    change(checkout, "tests/contract/a.cpp")
    assert prove_wine(checkout, "--report")[1][0][4] == begun


def test_what_is_not_committed_has_a_state_of_its_own(checkout):
    begun = git(checkout, "rev-parse", "HEAD")[:10]
    prove_wine(checkout, CONTRACT_RUN)
    (checkout / "src/program.cpp").write_text("2")
    name = prove_wine(checkout, CONTRACT_RUN)[1][0][4]
    assert name.startswith(begun + "-")
    git(checkout, "checkout", "-q", "src/program.cpp")
    assert prove_wine(checkout, "--report")[1][0][4] == begun


def test_failures_are_named_and_end_with_exit_code_1(checkout):
    let_fail(checkout, "Boxes.Show", "test_updates[win32-1]")
    code, [row], told = prove_wine(checkout, CONTRACT_RUN, SCENARIO_RUN)
    assert (code, row[3], row[5]) == (1, "1 passed, 1 failed, 1 skipped", "1 passed, 1 failed, 0 skipped")
    assert told == ["- 10-win32-own-contract: FAILED Boxes.Show", SKIPPED,
                    "- 10-win32-own-scenario: FAILED tests/scenario/test_a.py::test_updates[win32-1]"]


def test_failed_ones_run_alone_at_a_later_commit_and_the_row_tells_so(checkout):
    let_fail(checkout, "Boxes.Show", "test_updates[win32-1]")
    begun = git(checkout, "rev-parse", "HEAD")[:10]
    prove_wine(checkout, CONTRACT_RUN, SCENARIO_RUN)
    let_fail(checkout)
    mended = change(checkout, "src/program.cpp")
    code, [row], told = prove_wine(checkout, "--failed", CONTRACT_RUN, SCENARIO_RUN)
    assert calls(checkout) == [
        "win32 --gtest_filter=Boxes.Show",
        "-k win32 -p no:cacheprovider "
        f"--junitxml={checkout}/build/prove/wine/{mended}/10-win32-own-scenario.xml "
        "tests/scenario/test_a.py::test_updates[win32-1]"]
    assert code == 0
    assert row[3] == f"1 passed, 1 failed, 1 skipped; these alone at {mended}: 1 passed, 0 failed, 1 skipped"
    assert row[5] == f"1 passed, 1 failed, 0 skipped; these alone at {mended}: 1 passed, 0 failed, 0 skipped"
    assert (row[4], row[6]) == (begun, begun)
    assert "- 10-win32-own-contract: FAILED Boxes.Show" in told


def test_failed_ones_that_fail_again_are_told(checkout):
    let_fail(checkout, "Boxes.Show")
    at = git(checkout, "rev-parse", "HEAD")[:10]
    prove_wine(checkout, CONTRACT_RUN)
    code, [row], told = prove_wine(checkout, "--failed", CONTRACT_RUN)
    assert code == 1 and row[3].endswith(f"; these alone at {at}: 0 passed, 1 failed, 1 skipped")
    assert "- 10-win32-own-contract, alone: FAILED Boxes.Show" in told


def test_a_whole_run_takes_the_place_of_the_one_with_failures(checkout):
    let_fail(checkout, "Boxes.Show")
    prove_wine(checkout, CONTRACT_RUN)
    prove_wine(checkout, "--failed", CONTRACT_RUN)
    let_fail(checkout)
    code, [row], _ = prove_wine(checkout, CONTRACT_RUN)
    assert (code, row[3]) == (0, "2 passed, 0 failed, 1 skipped")


def test_what_ran_alone_before_a_whole_run_is_not_told_of_it(checkout):
    let_fail(checkout, "Boxes.Show")
    prove_wine(checkout, CONTRACT_RUN)
    let_fail(checkout)
    prove_wine(checkout, "--failed", CONTRACT_RUN)
    change(checkout, "src/program.cpp")
    let_fail(checkout, "Boxes.Show")
    code, [row], _ = prove_wine(checkout, CONTRACT_RUN)
    assert (code, row[3]) == (1, "1 passed, 1 failed, 1 skipped")


def test_as_another_windows_the_main_scenarios_run(checkout):
    prove_wine(checkout, "8-win64-winxp-scenario")
    [call] = calls(checkout)
    assert call.startswith("-k win64 ") and "tests/scenario/test_updates.py" in call
    assert "tests/scenario " not in call + " "


def test_without_names_only_what_was_not_run_is(checkout):
    code, rows, _ = prove_wine(checkout)
    assert (code, len(rows), len(calls(checkout))) == (0, 34, 68)
    assert [row[:3] for row in rows[:6]] == [
        ["10", "win32", "own"], ["10", "win64", "own"], ["8", "win32", "own"], ["8", "win64", "own"],
        ["10", "win32", "winxp"], ["10", "win64", "win2003"]]
    prove_wine(checkout)
    assert calls(checkout) == []


def test_a_name_that_no_run_has_is_refused(checkout):
    code, _, told = prove_wine(checkout, "10-win32-own")
    assert code == 2 and "no run of this name: 10-win32-own" in told
    assert prove_wine(checkout, "--failed")[0] == 2
