"""A Windows (a Wine prefix) with the manager in it, driven from outside.

The driver program stays alive in the prefix and starts the manager, reads and answers its boxes and
reaches the registry; see tests/scenario/programs/driver.cpp for what it is asked.
"""

import dataclasses
import functools
import json
import os
import pathlib
import select
import shutil
import subprocess
import tempfile
import time

PROJECT = pathlib.Path(__file__).resolve().parent.parent
MESSAGE_TEXT = 65535  # identifier of the text of a message box


@dataclasses.dataclass
class Build:
    """The built programs: a build folder of CMake's "windows" preset, and the folder that holds the
    manager as it is shipped."""

    folder: pathlib.Path
    release: pathlib.Path

    @staticmethod
    def of_environment():
        """What tools/build made; or the build folder that TRELV_BUILD names, without a release."""
        if "TRELV_BUILD" in os.environ:
            folder = pathlib.Path(os.environ["TRELV_BUILD"])
            return Build(folder, folder / "bin")
        return Build(PROJECT / "build/windows", PROJECT / "build/release")

    @property
    def manager(self):
        return self.release / "TrelvManager.exe"

    @property
    def trelv(self):
        return self.release / "trelv.exe"

    @functools.cached_property
    def seven_zip(self):
        """The files of 7-Zip that are shipped, by name; {} where they could not be fetched."""
        done = subprocess.run([PROJECT / "tools/seven-zip", "--check"], capture_output=True, text=True,
                              check=False)
        folder = pathlib.Path(done.stdout.strip())
        return {} if done.returncode else {name: folder / name for name in ("7z.exe", "7z.dll")}

    def put_release(self, folder):
        """Puts what is shipped into a folder, with its dates; the manager, what it opens packs with
        and the pictures of its forms where the build has no release."""
        if self.release.name == "release":
            shutil.copytree(self.release, folder, dirs_exist_ok=True)
            return
        folder.mkdir(parents=True, exist_ok=True)
        for file in (*self.release.glob("*.exe"), *self.seven_zip.values()):
            shutil.copy2(file, folder)
        shutil.copytree(PROJECT / "images", folder / "images", dirs_exist_ok=True)

    @property
    def driver(self):
        return self.folder / "tests/programs/driver.exe"

    @property
    def test_programs(self):
        return self.folder / "tests/programs"

    @property
    def libraries(self):
        return self.folder / "tests/libraries"

    @property
    def demo_programs(self):
        return self.folder / "demo/programs"


def control_names():
    """{identifier: name} of the controls of the program's own dialogs."""
    names = {}
    for line in (PROJECT / "src/win32/resource.h").read_text().splitlines():
        words = line.split()
        if len(words) == 3 and words[1].startswith("IDC_") and words[2].isdigit():
            names[int(words[2])] = words[1][len("IDC_"):]
    return names


@dataclasses.dataclass
class Box:
    """A message box or dialog as it was on the screen. `buttons` are captions in capitals, `texts`
    the texts by control name, or by identifier where the control has none."""

    title: str
    text: str
    buttons: list
    texts: dict

    @staticmethod
    def of(event):
        names = control_names()
        controls = event["controls"]
        texts = {names.get(each["id"], each["id"]): each["text"] for each in controls}
        return Box(event["title"], texts.get(MESSAGE_TEXT, ""),
                   [each["text"].replace("&", "").upper() for each in controls if each["class"] == "Button"],
                   texts)


PICTURE_SECONDS = 10


@dataclasses.dataclass
class Run:
    """What a run of the manager did on the screen: the boxes that were answered, and the windows
    that only told something."""

    boxes: list
    notices: list
    exit_code: int
    milliseconds: int
    late: bool


class Screen:
    """A display of its own that nobody sees; ended by close()."""

    def __init__(self):
        read, write = os.pipe()
        self.process = subprocess.Popen(
            ["Xvfb", "-displayfd", str(write), "-screen", "0", "1280x1024x24", "-nolisten", "tcp",
             "-noreset"], pass_fds=[write], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        os.close(write)
        number = b""
        while not number.endswith(b"\n"):
            piece = os.read(read, 64)
            if not piece:
                raise RuntimeError("Xvfb did not start")
            number += piece
        os.close(read)
        self.display = ":" + number.decode().strip()

    def close(self):
        self.process.terminate()
        self.process.wait()

    def picture(self, path):
        """Writes what is on the screen into a PNG file. A window answers before it is drawn: waits
        until something is there and two looks show the same, but not longer than PICTURE_SECONDS."""
        deadline = time.monotonic() + PICTURE_SECONDS
        before = None
        while True:
            subprocess.run(["import", "-display", self.display, "-window", "root", str(path)],
                           check=True)
            colours, seen = subprocess.run(["identify", "-format", "%k %#", str(path)], check=True,
                                           capture_output=True, text=True).stdout.split()
            if (seen == before and colours != "1") or time.monotonic() > deadline:
                return
            before = seen


class Prefix:
    """A Wine prefix with a living driver. `kind` is win32 or win64; the folder is made when it is
    missing. close() ends everything that runs in it."""

    def __init__(self, folder, kind, build, screen):
        self.folder = pathlib.Path(folder)
        self.kind = kind
        self.build = build
        self.screen = screen
        self.disk = self.folder / "drive_c"
        if not self.folder.exists():
            subprocess.run([PROJECT / "tools/wine-prefix", self.folder, kind], check=True)
        self.environment = {**os.environ, "WINEPREFIX": str(self.folder), "DISPLAY": screen.display}
        # The driver runs from the prefix: a build may replace the built one meanwhile.
        self.driver_program = self.disk / "driver.exe"
        self.driver_program.unlink(missing_ok=True)
        shutil.copy(build.driver, self.driver_program)
        self.driver = subprocess.Popen(
            [*self._as_a_user(), PROJECT / "tools/wine", self.driver_program], cwd=self.disk,
            env=self.environment, stdin=subprocess.PIPE, stdout=subprocess.PIPE,
            stderr=subprocess.DEVNULL)
        self.pending = b""

    def _as_a_user(self):
        """Read-only files refuse writing, as on Windows, only where the superuser's right to pass
        over file permissions is given away."""
        if os.geteuid() != 0:
            return []
        return ["setpriv", "--bounding-set=-dac_override,-dac_read_search",
                "--inh-caps=-dac_override,-dac_read_search"]

    def start(self, *words):
        """Starts a program beside the driver (Windows path, arguments); its process."""
        return subprocess.Popen([*self._as_a_user(), PROJECT / "tools/wine", *words], cwd=self.disk,
                                env=self.environment, stdout=subprocess.DEVNULL,
                                stderr=subprocess.DEVNULL)

    def console(self, *words):
        """Runs a console program beside the driver (Windows path, arguments), its output caught. In
        files: what Windows itself starts meanwhile would keep a pipe open."""
        with tempfile.TemporaryFile() as output, tempfile.TemporaryFile() as errors:
            done = subprocess.run([*self._as_a_user(), PROJECT / "tools/wine", *words], cwd=self.disk,
                                  env=self.environment, stdin=subprocess.DEVNULL, stdout=output,
                                  stderr=errors, timeout=120, check=False)
            output.seek(0)
            errors.seek(0)
            return subprocess.CompletedProcess(words, done.returncode, output.read(), errors.read())

    def close(self):
        self.driver.stdin.close()
        subprocess.run([PROJECT / "tools/wine-stop", self.folder], check=True)
        self.driver.wait(timeout=30)

    def map_drive(self, letter, folder):
        """Lets a drive letter show a folder of this system."""
        link = self.folder / f"dosdevices/{letter.lower()}:"
        link.unlink(missing_ok=True)
        link.symlink_to(folder)

    def _line(self, deadline):
        while b"\n" not in self.pending:
            wait = deadline - time.monotonic()
            if wait <= 0 or not select.select([self.driver.stdout], [], [], wait)[0]:
                raise TimeoutError("the driver does not answer")
            piece = os.read(self.driver.stdout.fileno(), 65536)
            if not piece:
                raise RuntimeError("the driver has ended")
            self.pending += piece
        line, self.pending = self.pending.split(b"\n", 1)
        return json.loads(line)

    def ask(self, *words, limit=60):
        """One request; yields the driver's answers, the last of which has "done"."""
        self.driver.stdin.write("\t".join(words).encode() + b"\n")
        self.driver.stdin.flush()
        deadline = time.monotonic() + limit
        while True:
            answer = self._line(deadline)
            yield answer
            if "done" in answer:
                if not answer["done"]:
                    raise RuntimeError(f"{words[0]}: {answer}")
                return

    def ask_once(self, *words):
        return list(self.ask(*words))[-1]

    def facts(self):
        return self.ask_once("facts")

    def set_value(self, hive, key, name, value):
        self.ask_once("registry-set", hive, key, name, value)

    def value(self, hive, key, name):
        """A text of the registry, as a 32-bit program sees it; None when it is missing."""
        return self.ask_once("registry-get", hive, key, name)["value"]

    def delete_key(self, hive, key):
        self.ask_once("registry-delete", hive, key)

    def close_window(self, window_class):
        """Closes the window of a class that shows within ten seconds; its title."""
        return self.ask_once("close", window_class)["title"]

    def path(self, windows_path):
        """Where a path of drive C lies on this system."""
        assert windows_path[:3].upper() == "C:\\", windows_path
        found = self.disk
        for name in windows_path[3:].rstrip("\\").split("\\"):
            same = [each for each in (found.iterdir() if found.is_dir() else ())
                    if each.name.lower() == name.lower()]
            found = same[0] if same else found / name
        return found

    def run(self, program, arguments, *, limit=30, kill_when="", restricted=False,
            folder="", answers=(), on_box=None, on_missing=None):
        """Starts a program (Windows path) with raw arguments and answers its boxes: "OK", or the
        captions in `answers` in turn. `kill_when` is a file (Windows path, its name may be a
        pattern) whose appearance ends the program; `restricted` takes the administrators from its user. `on_box` is called with
        each box before it is answered, `on_missing` with a button that a box does not have: then
        its close box is pressed."""
        boxes, notices, late = [], [], False
        for event in self.ask("run", str(limit), kill_when, str(int(restricted)),
                              str(int(on_box is not None)), folder,
                              "|".join(answers), program, f'"{program}" {arguments}',
                              limit=limit + 30):
            if "box" in event:
                boxes.append(Box.of(event))
                if on_box:
                    on_box(boxes[-1])
                    self.driver.stdin.write(b"\n")
                    self.driver.stdin.flush()
            elif "notice" in event:
                notices.append(Box.of(event))
            elif "missing button" in event and on_missing:
                on_missing(event["missing button"])
            elif "missing button" in event:
                raise AssertionError(f"{boxes[-1]} has no button {event['missing button']}")
            late = late or "late" in event
        return Run(boxes, notices, event["exit"], event["milliseconds"], late)


def command_line(arguments):
    """A raw command line of these arguments, by the manager's own rules: quotes keep blanks."""
    return " ".join(f'"{each}"' if not each or set(each) & set(" \t") else each
                    for each in arguments)


def log_lines(path, code_page=1252):
    """Lines of a run log without line ends; the file is in the system's code page with CR LF."""
    if not path.exists():
        return []
    return path.read_bytes().decode(f"cp{code_page}").split("\r\n")[:-1]


def wait_for_file(path, seconds=30):
    """True once the file is there; false when it does not come."""
    deadline = time.monotonic() + seconds
    while not path.exists():
        if time.monotonic() > deadline:
            return False
        time.sleep(0.01)
    return True
