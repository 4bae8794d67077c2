"""How comparisons that fail are shown, in all tests of this language."""

import itertools
import os
from unittest import mock

import pytest

# Of characters and bytes in the values of a comparison.
LARGE = 50_000
# Of a line that tells how they differ.
LONGEST = 300


def size(value):
    if isinstance(value, (str, bytes, bytearray)):
        return len(value)
    if isinstance(value, dict):
        return sum(size(key) + size(each) for key, each in value.items())
    if isinstance(value, (list, tuple, set, frozenset)):
        return sum(map(size, value))
    return 0


def first_unlike_lines(left, right):
    """In the place of all that two texts have in common, which may take hours to find."""
    unlike = ((old, new) for old, new in itertools.zip_longest(left, right, fillvalue="") if old != new)
    return [sign + line for old, new in itertools.islice(unlike, 1) for sign, line in (("- ", old), ("+ ", new))]


@pytest.hookimpl(hookwrapper=True)
def pytest_assertrepr_compare(left, right):
    """Texts are always compared line by line; on a machine that builds for others, which these
    variables tell, all other values too. Of two programs that takes hours, of two disks more memory
    than there is. The first difference of large values is told at once."""
    if size(left) + size(right) <= LARGE:
        yield
        return
    with mock.patch.dict(os.environ), mock.patch("difflib.ndiff", first_unlike_lines):
        os.environ.pop("CI", None)
        os.environ.pop("BUILD_NUMBER", None)
        told = yield
    told.force_result([[line if len(line) <= LONGEST else line[:LONGEST] + "..." for line in lines]
                       for lines in told.get_result() if lines])
