"""A test that fails says why, soon."""

import os
import random
import shutil
import subprocess
import sys
from pathlib import Path

SHARED = Path(__file__).resolve().parents[1] / "conftest.py"
# As large as a program; nothing is the same, so whoever looks for what is does not come to an end.
UNLIKE = """
import random

LEFT, RIGHT = (random.Random(seed).randbytes(400_000) for seed in (1, 2))

def test_contents(): assert LEFT == RIGHT

def test_of_a_folder(): assert {"a": b"1", "zb.exe": LEFT} == {"a": b"1", "zb.exe": RIGHT}

def test_in_order(): assert [b"1", LEFT] == [b"1", RIGHT]

def test_texts():
    left, right = ("".join(f"{number.random()}\\n" for _ in range(20_000))
                   for number in (random.Random(1), random.Random(2)))
    assert "first\\n" + left == "first\\n" + right

def test_small(): assert {"a": b"1", "zb.ini": b"2"} == {"a": b"1", "zb.ini": b"3"}
"""


def test_unlike_contents_of_programs_are_told_at_once(tmp_path):
    shutil.copy(SHARED, tmp_path)
    (tmp_path / "test_unlike.py").write_text(UNLIKE, encoding="utf-8")
    done = subprocess.run([sys.executable, "-m", "pytest", "-q", "-p", "no:cacheprovider", "--tb=short", tmp_path],
                          cwd=tmp_path, env={**os.environ, "CI": "true"}, capture_output=True, text=True,
                          timeout=60, check=False)
    assert "5 failed" in done.stdout
    assert "At index 0 diff" in done.stdout
    assert "{'zb.exe': b" in done.stdout
    assert "At index 1 diff" in done.stdout
    assert f"E     - {random.Random(2).random()}" in done.stdout
    # What is small is shown whole, as a machine that builds for others needs it.
    assert "'zb.ini': b'3'" in done.stdout and "Full diff" in done.stdout
    assert len(done.stdout) < 20_000
