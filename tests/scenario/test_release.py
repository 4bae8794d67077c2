"""What is handed out: the same bytes each time, sums that hold, a list of the parts, signed programs."""

import hashlib
import json
import os
import re
import shutil
import subprocess
import zipfile

import pytest

import windows

RELEASE = windows.PROJECT / "tools/release"
# The sources need not be a checkout.
ENVIRONMENT = {**os.environ, "SOURCE_DATE_EPOCH": "1763800000"}
PROGRAMS = ("TrelvManager.exe", "qalbunex.exe", "trelv.exe")


@pytest.fixture
def hand_out(build, tmp_path):
    """Makes what is handed out from the built programs; gives its folder."""
    source = tmp_path / "release"
    source.mkdir()
    for program in PROGRAMS:
        shutil.copy2(build.release / program, source)
    (source / "licenze").mkdir()
    (source / "licenze/elenco.txt").write_text("licenze\n")

    def run(name, *more):
        target = tmp_path / name
        subprocess.run([RELEASE, "--from", source, "--symbols", build.folder / "symbols", "--to", target, *more],
                       check=True, env=ENVIRONMENT)
        return target

    run.source = source
    return run


def sums(text):
    return {name: total for total, name in (line.split("  ") for line in text.splitlines())}


def test_one_commit_gives_the_same_bytes_whatever_the_dates_of_the_files(hand_out):
    first = hand_out("first")
    for path in hand_out.source.rglob("*"):
        subprocess.run(["touch", "-d", "2001-02-03", path], check=True)
    second = hand_out("second")
    names = sorted(path.name for path in first.iterdir())
    assert names == sorted(path.name for path in second.iterdir())
    assert [(first / name).read_bytes() for name in names] == [(second / name).read_bytes() for name in names]


def test_every_file_has_its_sum_and_the_symbols_lie_apart(hand_out, project_version, tmp_path):
    made = hand_out("made")
    archives = [f"TrelvManager-{project_version}-simboli.zip", f"TrelvManager-{project_version}.zip"]
    assert sorted(path.name for path in made.iterdir()) == ["SHA256SUMS", *archives]
    assert sums((made / "SHA256SUMS").read_text()) == {
        name: hashlib.sha256((made / name).read_bytes()).hexdigest() for name in archives}
    with zipfile.ZipFile(made / archives[1]) as archive:
        told = sums(archive.read("SHA256SUMS").decode())
        assert set(told) == {*PROGRAMS, "licenze/elenco.txt", "parti.spdx.json"}
        assert set(archive.namelist()) == {*told, "SHA256SUMS"}
        assert told == {name: hashlib.sha256(archive.read(name)).hexdigest() for name in told}
    with zipfile.ZipFile(made / archives[0]) as archive:
        assert set(archive.namelist()) >= {f"{program}.debug" for program in PROGRAMS}


def test_the_list_of_parts_names_each_with_version_and_licence(hand_out, project_version):
    with zipfile.ZipFile(hand_out("made") / f"TrelvManager-{project_version}.zip") as archive:
        listed = json.loads(archive.read("parti.spdx.json"))
    assert listed["spdxVersion"] == "SPDX-2.3"
    packages = {package["name"]: package for package in listed["packages"]}
    assert packages["TrelvManager.exe"]["versionInfo"] == project_version
    assert {"7-Zip", "pugixml", "libarchive", "zlib", "nlohmann-json", "libstdc++ and libgcc", "mingw-w64 runtime"} <= set(packages)
    for name in ("7-Zip", "pugixml", "libarchive", "zlib", "nlohmann-json", "libstdc++ and libgcc", "mingw-w64 runtime"):
        assert re.match(r"\d+\.\d+", packages[name]["versionInfo"]), name
        assert packages[name]["licenseDeclared"] != "NOASSERTION", name
    known = {package["SPDXID"] for package in listed["packages"]} | {"SPDXRef-DOCUMENT"}
    for each in listed["relationships"]:
        assert {each["spdxElementId"], each["relatedSpdxElement"]} <= known


def test_all_programs_are_signed_when_there_is_a_certificate(hand_out, project_version, tmp_path):
    key, certificate = tmp_path / "key.pem", tmp_path / "certificate.pem"
    subprocess.run(["openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-days", "2", "-subj",
                    "/CN=Firma di prova", "-addext", "extendedKeyUsage=codeSigning", "-keyout", key, "-out",
                    certificate], check=True, capture_output=True)
    made = hand_out("signed", "--certificate", certificate, "--key", key)
    with zipfile.ZipFile(made / f"TrelvManager-{project_version}.zip") as archive:
        archive.extractall(tmp_path / "opened")
    for program in PROGRAMS:
        file = tmp_path / "opened" / program
        told = subprocess.run(["osslsigncode", "verify", "-CAfile", certificate, "-in", file],
                              capture_output=True, encoding="utf-8", check=False).stdout
        assert "Signature verification: ok" in told, told
        file.write_bytes(file.read_bytes().replace(b"This program", b"That program", 1))
        told = subprocess.run(["osslsigncode", "verify", "-CAfile", certificate, "-in", file],
                              capture_output=True, encoding="utf-8", check=False)
        assert told.returncode != 0


@pytest.mark.parametrize("words, told", [
    (["--certificate", "x"], "--certificate and --key go together"),
    (["--from", "x"], "--from and --symbols go together"),
    (["--from", "nowhere", "--symbols", "nowhere"], "nowhere lacks TrelvManager.exe, qalbunex.exe, trelv.exe")])
def test_what_cannot_be_done_is_said(words, told):
    done = subprocess.run([RELEASE, *words], capture_output=True, encoding="utf-8", check=False,
                          env=ENVIRONMENT)
    assert done.returncode != 0
    assert told in done.stderr
