"""Compares what trelv.exe plans of a start with what the manager then does: log, boxes, programs, ini
files, registry, store, files. What a set-up of the demonstration brings is not the manager's doing."""

import pathlib
import re
import time

MAINTENANCE = "Manutenzione prodotti complementari integrati"
MAINTENANCE_FORM = ("frmProdTrelvMaintain", "")
# Names of temporary files have the number of their process.
PROCESS = re.compile(r"-\d+-\d+\.tmp")
# What others write: set-ups and programs of the demonstration, the tests' driver, 7-Zip what a pack
# has outside of its set-up tree; the log is compared line by line.
OTHERS = re.compile(r"(?i)^(S:\\Lumo\\mv\\.*|C:\\Program Files[^\\]*\\Lumo(\\.*)?|.*\\installazioni\.txt|"
                    r"C:\\driver\.out|.*\\Temp\\leggimi\.txt|.*\\Temp\\log(\\.*)?)$")


def same_process(text):
    return PROCESS.sub("-N.tmp", text)


class Places:
    """Windows paths of what lies on a workstation and its share."""

    def __init__(self, station):
        self.station = station
        self.tops = {"S:": station.share, "C:": station.disk}

    def shown(self, file):
        for drive, top in self.tops.items():
            if file.is_relative_to(top):
                return "\\".join([drive, *file.relative_to(top).parts])
        raise ValueError(file)

    def full(self, path):
        """The full path of an ini file, which may be a bare name."""
        path = path.replace("/", "\\")
        bare = "\\" not in path
        return f"{self.station.facts['windows']}\\{path}" if bare else path

    def find(self, path):
        """Where a Windows path lies on this system; None where nothing stands."""
        found = self.tops[path[:2].upper()]
        for name in filter(None, self.full(path)[3:].split("\\")):
            same = [each for each in (found.iterdir() if found.is_dir() else ())
                    if each.name.upper() == name.upper()]
            if not same:
                return None
            found = same[0]
        return found


class World:
    """Everything that a workstation and its share hold: bytes, dates and rights of files, the keys of
    the suite, the store."""

    def __init__(self, station):
        places = Places(station)
        self.files = {}
        self.dates = {}
        for top in places.tops.values():
            for path in [top, *top.rglob("*")]:
                self._look(station, places, path)
        self.store = station.store.read_bytes() if station.store.exists() else None
        self.keys = {hive: station.prefix.console("reg", "query", f"{hive}\\SOFTWARE\\LUMO", "/s").stdout
                     for hive in ("HKLM", "HKCU")}

    def _look(self, station, places, path):
        status = path.lstat()
        name = places.shown(path)
        # Where the private folder was made and is gone.
        if path != station.work_folder:
            self.dates[name] = (status.st_mtime_ns, status.st_mode)
        if path.is_symlink() or path.is_dir():
            self.files[name] = "folder"
        else:
            own = not path.is_relative_to(station.windows_folder) or path.suffix == ".ini"
            self.files[name] = (status.st_size, status.st_mtime_ns, path.read_bytes() if own else b"")

    def value(self, name):
        """A text below HKEY_LOCAL_MACHINE\\SOFTWARE\\LUMO\\Programmi."""
        found = re.search(rf"(?mi)^\s+{name}\s+REG_SZ\s+(.*?)\r?$", self.keys["HKLM"].decode("cp1252"))
        return found and found[1]

    def differences(self, other):
        """Names of what is not the same."""
        names = [name for name in self.files.keys() | other.files.keys()
                 if self.files.get(name) != other.files.get(name)
                 or self.dates.get(name) != other.dates.get(name)]
        return sorted(names) + [part for part in ("store", "keys")
                                if getattr(self, part) != getattr(other, part)]


def touched(places, steps):
    """{path in capitals: does it stand there then?} of all files and folders of the steps."""
    stands = {}
    for step in steps:
        kind = step["kind"]
        if kind in ("write", "append", "make", "delete"):
            stands[step["path"].upper()] = kind != "delete"
        elif kind in ("copy", "rename"):
            stands[step["to"].upper()] = True
            if kind == "rename":
                stands[step["path"].upper()] = False
        elif kind == "ini":
            stands[places.full(step["file"]).upper()] = True
    return {path.replace("/", "\\").rstrip("\\").replace("\\\\", "\\"): there
            for path, there in stands.items()}


def boxes_of_plan(steps):
    found = []
    for step in steps:
        if step["kind"] == "box":
            found.append((step["title"], step["text"].rstrip()))
        elif step["kind"] == "form" and step["name"] != "frmwait":
            found.append((step["name"], ""))
    return found


def boxes_of_run(run):
    found = []
    for box in run.boxes:
        if "txtProcedura" in box.texts:
            found.append(("frmError", ""))
        elif box.title == MAINTENANCE:
            # Until it has closed it is seen again.
            found = [*(each for each in found if each != MAINTENANCE_FORM), MAINTENANCE_FORM]
        else:
            found.append((box.title, box.text.rstrip()))
    return found


def assert_files(places, before, after, steps):
    stands = touched(places, steps)
    changed = {name.upper() for name in before.files.keys() | after.files.keys()
               if before.files.get(name) != after.files.get(name) and not OTHERS.match(name)}
    changed.discard(places.shown(places.station.store).upper())
    assert changed <= stands.keys(), f"not planned: {sorted(changed - stands.keys())}"
    there = {name.upper() for name in after.files}
    for path, stays in stands.items():
        if not OTHERS.match(path) and not path.endswith(".TMP"):
            assert (path in there) == stays, path


def ini_values(file):
    """{(section, key) in capitals: value} of an ini file, however broken; the first of each counts."""
    content = file.read_bytes()
    text = content.decode("utf-16") if content[:2] == b"\xff\xfe" else content.decode("cp1252", "replace")
    values, section = {}, None
    for line in map(str.strip, text.splitlines()):
        if line.startswith("["):
            section = line[1:].split("]")[0].upper()
        elif "=" in line and section is not None:
            key, value = line.split("=", 1)
            values.setdefault((section, key.strip().upper()), value.strip())
    return values


def assert_values(places, before, after, steps):
    """Ini values, keys and the store are what the last step said of each."""
    values = {}
    for step in steps:
        if step["kind"] == "ini":
            values[places.full(step["file"]), step["section"].upper(), step["key"].upper()] = step["value"]
        elif step["kind"] == "rename":
            values = {(step["to"] if file.upper() == step["path"].upper() else file, *names): value
                      for (file, *names), value in values.items()}
    for (file, section, key), value in values.items():
        assert places.find(file), file
        assert ini_values(places.find(file)).get((section, key)) == value, (file, section, key)
    written = [step["value"] for step in steps if step["kind"] == "registry" and step["name"]]
    assert after.value("PathLocale") == (written or [before.value("PathLocale")])[-1]
    stored = [step["value"] for step in steps if step["kind"] == "store"]
    if stored:
        assert f">{stored[-1]}</attribute>".encode() in after.store
    else:
        assert after.store == before.store


def wait_for_starts(station, seconds=30):
    """What the programs that were started with nobody waiting have told."""
    deadline = time.monotonic() + seconds
    while not station.starts() and time.monotonic() < deadline:
        time.sleep(0.02)
    return station.starts()


def assert_programs(station, steps):
    commands = [step for step in steps if step["kind"] == "command"]
    waited = [step["line"] for step in commands if step["waits"]]
    # The set-ups that the share has kept a note of.
    noted = station.commands_run()
    assert [line for line in waited if line in noted] == noted
    started = [step["line"] for step in commands if not step["waits"]]
    variables = [f"{step['name']}={step['value']}" for step in steps if step["kind"] == "environment"]
    if started:
        [(file, report)] = wait_for_starts(station).items()
        assert report[0] == "Linea di comando: " + started[0]
        assert file == pathlib.PureWindowsPath(started[0].split(".exe")[0] + ".exe").name
        assert report[2:] == sorted(variables)
    else:
        assert station.started_nothing()


def assert_is_run(station, planned, run, before):
    """`planned`: the result of the plan; `before`: the world before the run."""
    steps = planned["steps"]
    places = Places(station)
    assert [same_process(step["text"]) for step in steps if step["kind"] == "log"] == [
        same_process(text) for text in station.texts()]
    assert boxes_of_plan(steps) == boxes_of_run(run)
    assert_programs(station, steps)
    after = World(station)
    assert_files(places, before, after, steps)
    assert_values(places, before, after, steps)
    last = station.texts()[-1]
    start = "Gestione ProdTrelv - Esecuzione di: "
    assert planned["starts"] == (last[len(start):] if last.startswith(start) else None)
