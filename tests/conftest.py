"""How comparisons that fail are shown, in all tests of this language."""

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


@pytest.hookimpl(hookwrapper=True)
def pytest_assertrepr_compare(left, right):
    """On a machine that builds for others, which these variables tell, pytest looks for all that two
    values have in common and writes both out: two programs take it hours, and two disks more memory
    than there is. The first difference is told all the same."""
    if size(left) + size(right) <= LARGE:
        yield
        return
    with mock.patch.dict(os.environ):
        os.environ.pop("CI", None)
        os.environ.pop("BUILD_NUMBER", None)
        told = yield
    told.force_result([[line if len(line) <= LONGEST else line[:LONGEST] + "..." for line in lines]
                       for lines in told.get_result() if lines])
