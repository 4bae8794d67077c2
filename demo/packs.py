"""Packs as they are delivered: a zip pack holds files below prg/com/setup/aggdovra, a gz pack holds
zip packs there, and the zip pack of a medium holds gz packs.

The same content and date give the same bytes on every machine: nothing of the machine, its clock or
its user goes into a pack. Dates are universal time; a zip pack, which knows no zones, carries them as
they are written.
"""

import datetime
import gzip
import io
import tarfile
import zipfile

from installation import SETUP_FOLDER

# The first day that a zip pack can tell, for packs whose date does not matter.
SOME_DATE = datetime.datetime(1980, 1, 1)


def zip_bytes(files, date=SOME_DATE):
    """A zip archive of {path with "/": content}, in this order, with one date for all files."""
    buffer = io.BytesIO()
    with zipfile.ZipFile(buffer, "w") as archive:
        for name, content in files.items():
            entry = zipfile.ZipInfo(name, date.timetuple()[:6])
            entry.compress_type = zipfile.ZIP_DEFLATED
            # As made on Windows, an ordinary file.
            entry.create_system, entry.external_attr = 0, 0x20
            archive.writestr(entry, content)
    return buffer.getvalue()


def gz_bytes(packs, date=SOME_DATE):
    """A gz pack of {name of the zip pack: its content}: what "tar czf" makes of the folder "prg"."""
    return tar_gz_bytes({f"{SETUP_FOLDER}/{name}": content for name, content in packs.items()}, date)


def tar_gz_bytes(files, date=SOME_DATE):
    """A compressed tar archive of {path: content}; the folders above each file come before it."""
    seconds = int(date.replace(tzinfo=datetime.timezone.utc).timestamp())
    buffer = io.BytesIO()
    with gzip.GzipFile("", "wb", fileobj=buffer, mtime=seconds) as packed, \
            tarfile.open(fileobj=packed, mode="w", format=tarfile.GNU_FORMAT) as archive:
        for folder in dict.fromkeys(above for name in files for above in folders_above(name)):
            entry = tarfile.TarInfo(folder)
            entry.type, entry.mode, entry.mtime = tarfile.DIRTYPE, 0o755, seconds
            archive.addfile(entry)
        for name, content in files.items():
            entry = tarfile.TarInfo(name)
            entry.size, entry.mtime = len(content), seconds
            archive.addfile(entry, io.BytesIO(content))
    return buffer.getvalue()


def folders_above(name):
    parts = name.split("/")[:-1]
    return ["/".join(parts[:length]) for length in range(1, len(parts) + 1)]
