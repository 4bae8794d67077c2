"""Packs as they are delivered: a zip pack holds files below prg/com/setup/aggdovra, a gz pack holds
zip packs there."""

import io
import tarfile
import zipfile

from installation import SETUP_FOLDER


def zip_bytes(files):
    """A zip pack of {path with "/": content}."""
    buffer = io.BytesIO()
    with zipfile.ZipFile(buffer, "w", zipfile.ZIP_DEFLATED) as archive:
        for name, content in files.items():
            archive.writestr(name, content)
    return buffer.getvalue()


def gz_bytes(packs):
    """A gz pack of {name of the zip pack: its content}: what "tar czf" makes of the folder "prg"."""
    return tar_gz_bytes({f"{SETUP_FOLDER}/{name}": content for name, content in packs.items()})


def tar_gz_bytes(files):
    """A compressed tar archive of {path: content}; the folders above each file come before it."""
    buffer = io.BytesIO()
    with tarfile.open(fileobj=buffer, mode="w:gz", format=tarfile.GNU_FORMAT) as archive:
        for folder in dict.fromkeys(above for name in files for above in folders_above(name)):
            entry = tarfile.TarInfo(folder)
            entry.type, entry.mode = tarfile.DIRTYPE, 0o755
            archive.addfile(entry)
        for name, content in files.items():
            entry = tarfile.TarInfo(name)
            entry.size = len(content)
            archive.addfile(entry, io.BytesIO(content))
    return buffer.getvalue()


def folders_above(name):
    parts = name.split("/")[:-1]
    return ["/".join(parts[:length]) for length in range(1, len(parts) + 1)]
