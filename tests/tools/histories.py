"""A small history of commits, for tools that ask git which commit changed what."""

import subprocess


def git(folder, *words):
    identity = ("-c", "user.name=test", "-c", "user.email=test@localhost")
    done = subprocess.run(["git", "-C", folder, *identity, *words], capture_output=True, text=True, check=True)
    return done.stdout.strip()


def commit(folder):
    git(folder, "add", "-A")
    git(folder, "commit", "-q", "-m", "one more")
    return git(folder, "rev-parse", "HEAD")[:10]


def change(folder, name):
    (folder / name).write_text((folder / name).read_text() + "1")
    return commit(folder)
