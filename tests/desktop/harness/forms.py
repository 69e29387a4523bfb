"""The program's windows by what is in them."""

from .accessibility import tolerant
from .polling import eventually
from .window import Window

SETUP_TITLE = "Voxtrel Setup"
DOWNLOAD_TITLE = "Voxtrel — Download Model"
SETTINGS_TITLE = "Voxtrel Settings"

FIRST_LINE = "Connecting to HuggingFace..."
SKIP = "Skip (won't work without model)"
RETRY = "Retry"
HINT = "Check your internet connection and try again."


class DownloadForm(Window):
    """The window that fetches the model."""

    def __init__(self, desk, app, title=SETUP_TITLE, scale=1):
        super().__init__(desk, app, title, scale)
        self.node.wait_for("push button", SKIP)

    def labels(self):
        """The texts that are shown, from top to bottom."""
        return [node.name for node in self.node.all("label")]

    def bar(self):
        """The progress bar, or None."""
        return self.node.find("progress bar")

    def fraction(self):
        """How much of the bar is full, 0 to 1."""
        value, least, most = self.bar().value
        return (value - least) / (most - least)

    def log(self):
        """The lines of the log, or None where there is none."""
        node = self.node.find("text")
        return node.text.split("\n") if node else None

    def scrolled(self):
        """How far the log is scrolled down, 0 to 1."""
        value, least, most = self.node.find("scroll bar").value
        return (value - least) / (most - least)

    def skip(self):
        """The button that continues without the model."""
        return self.node.find("push button", SKIP)

    def retry(self):
        """The button that tries again, or None."""
        return self.node.find("push button", RETRY)

    def wait_for_fraction(self, expected):
        """Waits until the bar shows that much."""
        seen = []
        self._eventually(lambda: seen.append(self.fraction()) or abs(seen[-1] - expected) < 0.002,
                         f"the bar to show {expected}", seen)

    def wait_for_label(self, text):
        """Waits until a text is shown."""
        seen = []
        self._eventually(lambda: seen.append(self.labels()) or text in seen[-1], repr(text), seen)

    def wait_for_log(self, *lines):
        """Waits until the log holds exactly these lines."""
        seen = []
        self._eventually(lambda: seen.append(self.log()) or seen[-1] == list(lines),
                         f"the log {lines}", seen)

    def wait_for_newest(self, line, limit_s=10.0):
        """Waits until the log ends in this line."""
        seen = []
        self._eventually(lambda: seen.append((self.log() or [""])[-1]) or seen[-1] == line,
                         f"the newest line {line!r}", seen, limit_s)

    @staticmethod
    def _eventually(condition, what, seen, limit_s=10.0):
        try:
            eventually(tolerant(condition), what, limit_s)
        except AssertionError as error:
            raise AssertionError(f"{error}; last seen: {seen[-1:]}") from None


class SettingsForm(Window):
    """The window that edits the settings."""

    def __init__(self, desk, app, scale=1):
        super().__init__(desk, app, SETTINGS_TITLE, scale)
        self.node.wait_for("push button", "Save & Restart")

    def combo(self, label):
        """The box that is labelled so ("Hotkey:")."""
        return next(box for box in self.node.all("combo box") if box.label == label)

    def _items(self, label):
        """The rows of a box's list, which is there also while it is closed."""
        return [item for child in self.combo(label).children() for item in child.children()
                if item.role == "list item"]

    def rows(self, label):
        """The texts of a box's rows."""
        return [item.name for item in self._items(label)]

    def shown(self, label):
        """The row that a box shows; assistive technology knows it as the box's name."""
        return self.combo(label).name

    def open_list(self, label):
        """Whether a box's list is open."""
        return any(child.role == "list" and child.showing()
                   for child in self.combo(label).children())

    def choose_by_mouse(self, label, text):
        """Opens a box's list and clicks a row."""
        self.click(self.combo(label))
        row = eventually(lambda: self._visible_row(label, text), f"the row {text!r}")
        # A click too soon after the first makes it a double click.
        eventually(lambda: self.open_list(label), "the open list")
        self.click(row)
        self.wait_for_selection(label, text)
        eventually(lambda: not self.open_list(label), "the list to close")

    def _visible_row(self, label, text):
        for item in self._items(label):
            if item.name == text and item.showing() and item.place.width > 0:
                return item
        return None

    def selections(self):
        """What the three boxes show."""
        return tuple(self.shown(label) for label in ("Hotkey:", "Input Language:", "Output:"))

    def login(self):
        """The launch-at-login box."""
        return self.node.find("check box", "Launch at Login")

    def login_checked(self):
        """Whether it is checked."""
        return "checked" in self.login().states

    def save_button(self):
        """The one button."""
        return self.node.find("push button", "Save & Restart")

    def wait_for_selection(self, label, text):
        """Waits until a box shows this."""
        eventually(tolerant(lambda: self.shown(label) == text), f"{label} to show {text!r}")
