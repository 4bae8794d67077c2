"""The manual: the same file each time, with bookmarks, page numbers and text that can be searched, and
in it every message that a user can see."""

import pathlib
import re
import subprocess
import time

import pytest

PROJECT = pathlib.Path(__file__).resolve().parents[2]
SOURCES = PROJECT / "docs/manuale"
CHAPTERS = re.findall(r"^\.\. include:: (\S+)$", (SOURCES / "kodamuri.rst").read_text(encoding="utf-8"),
                      re.MULTILINE)


def build(file):
    subprocess.run([PROJECT / "tools/manual", "--quiet", file], check=True)
    return file


@pytest.fixture(scope="module")
def manual(tmp_path_factory):
    return build(tmp_path_factory.mktemp("manual") / "kodamuri.pdf")


def told(*words):
    return subprocess.run(words, check=True, capture_output=True, encoding="utf-8").stdout


@pytest.fixture(scope="module")
def pages(manual):
    """Text of each page, in the order in which it was set, on one line."""
    text = told("pdftotext", "-raw", "-enc", "UTF-8", manual, "-")
    return [" ".join(page.split()) for page in text.split("\f")[:-1]]


def chapter_texts():
    return [(SOURCES / name).read_text(encoding="utf-8") for name in CHAPTERS]


def headings(text):
    """(depth, title) of the headings of a chapter."""
    return [(1 if line[0] == "=" else 2, title)
            for title, line in re.findall(r"^(\S.*)\n(={4,}|-{4,})$", text, re.MULTILINE)
            if len(title) <= len(line)]


def test_the_same_text_gives_the_same_bytes_later(manual, tmp_path):
    time.sleep(1.1)
    assert build(tmp_path / "later.pdf").read_bytes() == manual.read_bytes()


def test_every_chapter_and_section_has_its_bookmark(manual):
    outline = re.findall(r"<item page=\"(\d+)\">(.*?)</item>", told("pdftohtml", "-xml", "-i", "-stdout", manual))
    found = [re.sub(r"^\d+[\s\xa0]+", "", title.replace("&apos;", "'").replace("&#39;", "'"))
             for _, title in outline]
    wanted = [title for text in chapter_texts() for _, title in headings(text)]
    assert len(wanted) > 20
    assert found == wanted
    page_numbers = [int(page) for page, _ in outline]
    assert page_numbers == sorted(page_numbers)


def terms(text):
    """Terms of the lists of a chapter: their lines are followed by an indented one."""
    return [term for term, begin in re.findall(r"^(\S.*)\n(.)", text, re.MULTILINE)
            if begin == " " and not term.startswith((".. ", "- ")) and not re.match(r"\d+\. ", term)]


def test_no_heading_and_no_message_is_parted_from_what_follows_it(manual):
    # The typesetter does not keep them together where a page ends; "FrameBreak HEIGHT" before them does.
    leading = {" ".join(each.split()) for text in chapter_texts()
               for each in [title for _, title in headings(text)] + terms(text)}
    assert len(leading) > 60
    for page in told("pdftotext", "-layout", "-enc", "UTF-8", manual, "-").split("\f")[1:-1]:
        lines = [" ".join(line.split()) for line in page.splitlines() if line.strip()]
        assert not any(each.endswith(lines[-2]) for each in leading), lines[-2]


def test_every_page_but_the_cover_carries_its_number(pages):
    assert len(pages) > 10
    assert not re.search(r"\d+ di \d+", pages[0])
    for number, page in enumerate(pages[1:], 2):
        assert f"{number} di {len(pages)}" in page


def test_text_is_text_in_embedded_fonts(manual):
    fonts = told("pdffonts", manual).splitlines()[2:]
    assert fonts
    for line in fonts:
        embedded, subset, unicode = line.split()[-5:-2]
        assert "LiberationSans" in line or "LiberationMono" in line
        assert (embedded, subset, unicode) == ("yes", "yes", "yes")


def test_every_picture_is_in_the_text_and_every_figure_in_the_manual(manual):
    named = [name for text in chapter_texts() for name in re.findall(r"^\.\. figure:: (\S+)$", text, re.MULTILINE)]
    kept = sorted(f"immagini/{path.name}" for path in (SOURCES / "immagini").iterdir())
    assert sorted(named) == kept
    assert len(told("pdfimages", "-list", manual).splitlines()[2:]) >= len(named) + 1


def test_chapter_numbers_that_the_text_names_are_right(pages):
    titles = [headings(text)[0][1] for text in chapter_texts()]
    for number, title in enumerate(titles, 1):
        assert any(f"{number} {title}" in page for page in pages), title
    assert max(int(number) for page in pages for number in re.findall(r"capitolo (\d+)", page)) <= len(titles)


def shown_messages():
    """The texts of boxes and forms in docs/messages.md, without what only explains them."""
    document = (PROJECT / "docs/messages.md").read_text(encoding="utf-8")
    for section in re.split(r"^## ", document, flags=re.MULTILINE)[1:]:
        if not section.startswith("Boxes"):
            continue
        for row in re.findall(r"^\| (.*?) \|", section, re.MULTILINE):
            # Values in quotes of their own.
            row = row.replace('"…"', "…").replace("`", "")
            row = re.sub(r'^title "[^"]*"[^"]*', "", row)
            yield from re.findall(r'"(.*?)"(?=$|,| or | \(|:)', row)


def test_every_message_of_boxes_and_forms_stands_in_it(pages):
    text = " ".join(pages)
    messages = list(shown_messages())
    assert len(messages) > 25
    missing = [part for message in messages for part in re.split(r"…| / ", message)
               if len(part.strip()) > 2 and part.strip() not in text]
    assert missing == []


def test_a_fault_of_the_text_ends_with_a_line(tmp_path):
    for name in ("docs", "tools", "images"):
        (tmp_path / name).mkdir()
    subprocess.run(["cp", "-r", SOURCES, tmp_path / "docs"], check=True)
    subprocess.run(["cp", PROJECT / "tools/manual", tmp_path / "tools"], check=True)
    subprocess.run(["cp", PROJECT / "images/setup_fase1.jpg", tmp_path / "images"], check=True)
    with (tmp_path / "docs/manuale" / CHAPTERS[-1]).open("a", encoding="utf-8") as chapter:
        chapter.write("\n.. figure:: immagini/niente.png\n")
    done = subprocess.run([tmp_path / "tools/manual", tmp_path / "m.pdf"], check=False, capture_output=True,
                          encoding="utf-8")
    assert done.returncode == 1
    assert "niente.png" in done.stderr
    assert not (tmp_path / "m.pdf").exists()
