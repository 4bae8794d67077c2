"""A second driver in a prefix, for the forms: while the first one runs the manager, this one looks at
its dialogs and works in them, by messages or by the keyboard of the screen."""

import contextlib
import os
import pathlib
import subprocess
import threading
import time

import windows


# How long a manager may be worked in.
SECONDS = 400
# How long it may take to its end once nothing is done in it any more.
ENDING_SECONDS = 150
# Its exit code where the driver ended it.
ENDED_BY_FORCE = 99


class Dialog:
    """A dialog as it stands on the screen."""

    def __init__(self, answer):
        names = windows.control_names()
        self.left, self.top = answer["left"], answer["top"]
        self.right, self.bottom = answer["right"], answer["bottom"]
        self.focus = names.get(answer["focus"], answer["focus"])
        self.controls = {names.get(each["id"], each["id"]): each for each in answer["controls"]}

    def text(self, control):
        return self.controls[control]["text"]

    def items(self, control):
        return self.controls[control]["items"]

    def selected(self, control):
        """Text of the selected item; None when none is."""
        index = self.controls[control]["selected"]
        return None if index < 0 else self.items(control)[index]

    def chosen(self, control):
        """Texts of the selected items of a list of several choices."""
        return [self.items(control)[index] for index in self.controls[control]["chosen"]]

    def place(self, control):
        """(left, top, right, bottom) of a control on the screen."""
        return self.controls[control]["place"]

    def row(self, control, index):
        """The same of a row of a list."""
        return self.controls[control]["rows"][index]

    def checked(self, control):
        return self.controls[control]["checked"]

    def buttons(self):
        """Captions of the buttons in capitals."""
        return [each["text"].replace("&", "").upper() for each in self.controls.values()
                if "checked" in each]

    def enabled(self, control):
        return self.controls[control]["enabled"]


class Hand(windows.Prefix):
    """A driver of its own in a prefix that lives already."""

    def __init__(self, prefix):
        self.folder, self.disk, self.screen = prefix.folder, prefix.disk, prefix.screen
        self.environment = {**os.environ, "WINEPREFIX": str(prefix.folder),
                            "DISPLAY": prefix.screen.display}
        self.driver = subprocess.Popen(
            [windows.PROJECT / "tools/wine", prefix.driver_program], cwd=self.disk,
            env=self.environment, stdin=subprocess.PIPE, stdout=subprocess.PIPE,
            stderr=subprocess.DEVNULL)
        self.pending = b""
        self.identifiers = {name: number for number, name in windows.control_names().items()}

    def close(self):
        self.driver.stdin.close()
        self.driver.wait(timeout=30)

    def dialog(self, title):
        """The dialog of a title, waited for."""
        return Dialog(self.ask_once("form", title))

    def click(self, title, control):
        self.ask_once("click", title, str(self.identifiers[control]))

    def choose(self, title, control, index):
        self.ask_once("choose", title, str(self.identifiers[control]), str(index))

    def dismiss(self, title):
        self.ask_once("dismiss", title)

    def box(self, button="OK"):
        """Text and buttons (in capitals) of the message box that shows; the button is then pressed. Of
        several boxes it is the one whose button was pressed."""
        self.dialog("TrelvManager")
        pressed = windows.Box.of(list(self.ask("press", button))[0])
        return pressed.text, pressed.buttons

    def box_of(self, seconds, button="OK"):
        """The same of a box that comes after longer work."""
        deadline = time.monotonic() + seconds
        while self.no_box() and time.monotonic() < deadline:
            time.sleep(1)
        return self.box(button)

    def answer_by_keys(self, key):
        """The same by a key of the screen's keyboard, pressed again where the box stays: on a loaded
        machine one that has just come may not have the keyboard yet."""
        shown = self.dialog("TrelvManager")
        text = shown.text(windows.MESSAGE_TEXT)
        for _ in range(3):
            self.point_at(shown)
            self.keys(key)
            if self.goes(text):
                return text, shown.buttons()
            self.dialog("TrelvManager")
        raise AssertionError(f"the box stays: {text}")

    def goes(self, text):
        """True once no box has this text; false when it stays for five seconds."""
        deadline = time.monotonic() + 5
        while text in [windows.Box.of(each).text for each in self.ask("boxes") if "box" in each]:
            if time.monotonic() > deadline:
                return False
            time.sleep(0.1)
        return True

    def titles(self):
        """The titles of all dialogs that show."""
        return [each["title"] for each in self.ask("boxes") if "title" in each]

    def no_box(self):
        """True when no message box shows."""
        return "TrelvManager" not in self.titles()

    def other_title(self, known, seconds=20):
        """The title of a dialog beside those that are known, waited for."""
        deadline = time.monotonic() + seconds
        while time.monotonic() < deadline:
            if others := [title for title in self.titles() if title not in known]:
                return others[0]
            time.sleep(0.2)
        raise AssertionError(f"nothing but {known}")

    def press(self, title, control):
        """Clicks the middle of a control with the mouse of the screen."""
        self.mouse(self.dialog(title).place(control))

    def press_row(self, title, control, index, clicks=1):
        """Clicks a row of a list with the mouse of the screen."""
        self.mouse(self.dialog(title).row(control, index), clicks)

    def mouse(self, place, clicks=1):
        left, top, right, bottom = place
        self.tool("mousemove", str((left + right) // 2), str((top + bottom) // 2))
        self.tool("click", "--repeat", str(clicks), "--delay", "60", "1")
        time.sleep(0.2)

    def picture(self, title, name):
        """Keeps a picture of a dialog: in the folder that TRELV_PICTURES names, else where it is
        looked at once. Something must be drawn on it."""
        dialog = self.dialog(title)
        self.screen.picture(self.folder / "screen.png")
        folder = pathlib.Path(os.environ.get("TRELV_PICTURES", self.folder))
        place = (f"{dialog.right - dialog.left}x{dialog.bottom - dialog.top}+{dialog.left}+{dialog.top}")
        subprocess.run(["convert", self.folder / "screen.png", "-crop", place, "+repage", "-strip",
                        folder / f"{name}.png"], check=True)
        colours = subprocess.run(["identify", "-format", "%k", folder / f"{name}.png"], check=True,
                                 capture_output=True, text=True).stdout
        assert int(colours) > 10, f"{name}: nothing is drawn"

    def end(self):
        """Ends the programs of all dialogs by force."""
        for title in self.titles():
            with contextlib.suppress(RuntimeError):
                self.ask_once("end", title)

    def point_at(self, dialog):
        """Puts the pointer on the lower left edge of a dialog, where no control is: the keyboard of
        the screen goes to the window under the pointer."""
        self.tool("mousemove", str(dialog.left + 6), str(dialog.bottom - 6))

    def keys(self, *keys):
        self.tool("key", "--delay", "30", *keys)
        time.sleep(0.2)

    def type(self, text):
        """Types a text on the screen's keyboard."""
        self.tool("type", "--delay", "30", text)
        time.sleep(0.2)

    def tool(self, *words):
        subprocess.run(["xdotool", *words], env=self.environment, check=True)


@contextlib.contextmanager
def running(station, arguments, title, kill_when=""):
    """Runs the manager, which shows the form of the title, while the body works with a Hand in it. The
    manager must end by itself soon after the body, or by the appearance of the file that `kill_when`
    names (as `Prefix.run` takes it); where the body fails it is ended by force."""
    hand = Hand(station.prefix)
    runs = []
    thread = threading.Thread(
        target=lambda: runs.append(station.prefix.run(station.manager, arguments, answers=["-"] * 100,
                                                      limit=SECONDS, kill_when=kill_when)))
    thread.start()
    try:
        hand.dialog(title)
        yield hand
        thread.join(timeout=ENDING_SECONDS)
    except BaseException:
        hand.end()
        raise
    finally:
        ended = not thread.is_alive()
        if not ended:
            hand.end()
        hand.close()
        thread.join(timeout=SECONDS + 60)
    assert ended and runs and not runs[0].late, "the manager did not end"
    assert (runs[0].exit_code == ENDED_BY_FORCE) == bool(kill_when), "the manager ended otherwise"
