"""The pictures of the forms are those that tools/draw-pictures draws, of the kind that the oldest
Windows reads."""

import pathlib
import subprocess

import pytest

PROJECT = pathlib.Path(__file__).resolve().parents[2]
NAMES = ("setup_fase1.jpg", "product.jpg")
BASELINE, PROGRESSIVE = b"\xff\xc0", b"\xff\xc2"


@pytest.fixture(scope="module")
def drawn(tmp_path_factory):
    folder = tmp_path_factory.mktemp("images")
    subprocess.run([PROJECT / "tools/draw-pictures", folder], check=True)
    return folder


def decoded(file):
    """(width, height, grey samples in rows) of a quarter of the size, where encoders hardly differ."""
    done = subprocess.run(["convert", file, "-filter", "Box", "-resize", "25%", "-colorspace", "Gray", "-depth", "8",
                           "gray:-"], check=True, capture_output=True)
    return done.stdout


@pytest.mark.parametrize("name", NAMES)
def test_the_picture_is_a_baseline_jpeg_twice_as_large_as_at_96_dpi(name):
    content = (PROJECT / "images" / name).read_bytes()
    frame = content.index(BASELINE)
    assert PROGRESSIVE not in content[:frame]
    height, width = (int.from_bytes(content[frame + at:frame + at + 2], "big") for at in (5, 7))
    assert (width, height, content[frame + 9]) == (328, 628, 3)


@pytest.mark.parametrize("name", NAMES)
def test_the_picture_is_what_the_tool_draws(drawn, name):
    kept, new = decoded(PROJECT / "images" / name), decoded(drawn / name)
    assert len(kept) == len(new) == 82 * 157
    assert max(abs(one - other) for one, other in zip(kept, new)) <= 4
