"""Drives a running halvane-desktop as a user would, on a real X display.

Widgets are found through the accessibility tree (AT-SPI), by the texts a user
reads: button captions, dialog titles, the prompt over a box. Every click and
keystroke is a real X event (xdotool), so the toolbar, menus, pages and the
Qt dialogs see what they would see from a person at the screen.
"""

import os
import subprocess
import time

import pyatspi

SHOWING = pyatspi.STATE_SHOWING


class TourFailure(Exception):
    pass


def wait(what, probe, timeout=60.0):
    """Polls probe until it returns something, or fails naming what was awaited."""
    end = time.monotonic() + timeout
    while True:
        try:
            found = probe()
        except Exception:  # the tree changes under us while windows come and go
            found = None
        if found:
            return found
        if time.monotonic() > end:
            raise TourFailure("waited %.0f s for %s" % (timeout, what))
        time.sleep(0.1)


def extents(node):
    e = node.queryComponent().getExtents(pyatspi.DESKTOP_COORDS)
    return e.x, e.y, e.width, e.height


def showing(node):
    return node is not None and node.getState().contains(SHOWING)


def text_of(node):
    try:
        return node.queryText().getText(0, -1)
    except NotImplementedError:
        return node.name


def descendants(node):
    """Showing descendants in tree order (which is the order of the page's layout)."""
    for i in range(node.childCount):
        child = node.getChildAtIndex(i)
        if not showing(child):
            continue
        yield child
        yield from descendants(child)


def xdotool(*args):
    subprocess.run(["xdotool", *args], check=True)


class Desktop:
    def __init__(self, shots):
        self.shots = shots
        self.taken = []
        os.makedirs(shots, exist_ok=True)
        desktop = pyatspi.Registry.getDesktop(0)

        def application():
            for i in range(desktop.childCount):
                app = desktop.getChildAtIndex(i)
                if app is not None and app.name == "Halvane" and app.childCount:
                    return app
            return None

        self.app = wait("the desktop's window on the accessibility bus", application)
        self.main = wait("the main window", lambda: self.top(lambda n: n.getRoleName() == "frame"))

    # Windows -------------------------------------------------------------------

    def tops(self):
        return [c for c in (self.app.getChildAtIndex(i) for i in range(self.app.childCount))
                if showing(c)]

    def top(self, matches):
        for node in self.tops():
            if matches(node):
                return node
        return None

    def page(self, heading, timeout=60.0):
        """The page on screen with heading as its caption or one of its texts."""
        def find():
            for node in self.tops():
                if node.getRoleName() == "filler" and (node.name == heading or any(
                        c.getRoleName() == "label" and c.name.strip() == heading
                        for c in descendants(node))):
                    return node
            return None
        return wait("the page '%s'" % heading, find, timeout)

    def no_page(self, timeout=30.0):
        wait("every page to close",
             lambda: not any(n.getRoleName() == "filler" for n in self.tops()) or None,
             timeout)

    def dialog(self, title=None, timeout=120.0):
        """The dialog with this title, or any dialog when title is None."""
        return wait("the dialog '%s'" % title,
                    lambda: self.top(lambda n: n.getRoleName() in ("dialog", "alert")
                                     and title in (None, n.name)), timeout)

    def gone(self, node, timeout=120.0):
        wait("'%s' to close" % node.name, lambda: not showing(node) or None, timeout)

    # Finding controls ----------------------------------------------------------

    @staticmethod
    def find(within, role, name=None, nth=0, prefix=False):
        hits = [n for n in descendants(within) if n.getRoleName() == role
                and (name is None or n.name.strip() == name
                     or prefix and n.name.startswith(name))]
        if len(hits) <= nth:
            raise TourFailure("no %s '%s' (#%d) in '%s'" % (role, name, nth, within.name))
        return hits[nth]

    @staticmethod
    def after(within, label, role="text"):
        """The first control of role after the label (or option) whose text starts with label."""
        seen = False
        for node in descendants(within):
            if not seen:
                seen = node.getRoleName() in ("label", "radio button") and \
                    node.name.strip().startswith(label)
            elif node.getRoleName() == role:
                return node
        raise TourFailure("no %s after '%s' in '%s'" % (role, label, within.name))

    @staticmethod
    def beside(within, box, role="push button"):
        """The control of role on the same line as box, to its right: a browse button."""
        x, y, w, h = extents(box)
        for node in descendants(within):
            if node.getRoleName() != role:
                continue
            nx, ny, nw, nh = extents(node)
            if nx >= x + w and abs((ny + nh / 2) - (y + h / 2)) < h / 2:
                return node
        raise TourFailure("nothing beside the box at %d,%d in '%s'" % (x, y, within.name))

    # Acting --------------------------------------------------------------------

    def click(self, node):
        x, y, w, h = extents(node)
        if w <= 0 or h <= 0:
            raise TourFailure("'%s' has no place on the screen" % node.name)
        xdotool("mousemove", "--sync", str(x + w // 2), str(y + h // 2))
        xdotool("click", "1")
        time.sleep(0.15)

    def press(self, *keys):
        xdotool("key", "--delay", "30", *keys)
        time.sleep(0.15)

    def type_into(self, box, text):
        """Clicks into a box, selects what it holds and types text over it."""
        self.click(box)
        self.press("ctrl+a")
        if text:
            xdotool("type", "--delay", "5", text)
        else:
            self.press("BackSpace")
        wait("'%s' in the box" % text, lambda: text_of(box) == text or None, 10)

    def button(self, within, caption):
        self.click(self.find(within, "push button", caption))

    def answer(self, title, button, timeout=120.0):
        """Waits for a message box, keeps its text, and presses one of its buttons."""
        box = self.dialog(title, timeout)
        texts = [n.name for n in descendants(box) if n.getRoleName() == "label" and n.name]
        self.button(box, button)
        self.gone(box)
        return texts

    def choose_file(self, title, path):
        """Answers a file or folder dialog (any dialog when title is None) by typing the path."""
        dialog = self.dialog(title)
        box = next(n for n in descendants(dialog) if n.getRoleName() == "text"
                   and n.name in ("File name:", "Directory:"))
        self.type_into(box, path)
        # The box's completer may have a list open, which takes the first
        # click or Return for itself; Return again only while the dialog stays.
        for _ in range(3):
            self.press("Return")
            try:
                return self.gone(dialog, 2)
            except TourFailure:
                pass
        raise TourFailure("'%s' did not take '%s'" % (title, path))

    def choose_raster(self, title, path):
        """Answers the raster browser: the folder typed at the top, the grid picked from the list."""
        dialog = self.dialog(title)
        self.type_into(self.find(dialog, "text"), os.path.dirname(path))
        self.press("Return")
        name = os.path.basename(path)
        self.click(wait("'%s' in the list" % name,
                        lambda: self.find(dialog, "list item", name), 10))
        self.button(dialog, "OK")
        self.gone(dialog)

    def menu(self, entry):
        """Opens the component's menu from its toolbar and clicks the entry's line.

        The popup is not in the accessibility tree, so the entry is reached the
        way a keyboard user reaches it: one Down per line, separators skipped.
        """
        self.click(self.find(self.main, "push button", "Halvane Menu"))
        self.press(*(["Down"] * (ENTRIES.index(entry) + 1)), "Return")

    # Pictures ------------------------------------------------------------------

    @staticmethod
    def framed(node):
        """A window's place with the window manager's frame around it.

        xdotool places a framed window's inside one frame width too far (it
        adds the frame's offset twice), which is how the X window behind the
        accessible one is told apart; its frame extents give the widths.
        """
        x, y, w, h = extents(node)
        found = subprocess.run(["xdotool", "search", "--onlyvisible", "--name", ""],
                               capture_output=True, text=True).stdout.split()
        for window in found:
            shell = subprocess.run(["xdotool", "getwindowgeometry", "--shell", window],
                                   capture_output=True, text=True).stdout
            place = dict(line.split("=", 1) for line in shell.split())
            frame = subprocess.run(["xprop", "-id", window, "_NET_FRAME_EXTENTS"],
                                   capture_output=True, text=True).stdout
            if "=" not in frame:
                continue
            left, right, top, bottom = (int(v) for v in frame.split("=")[1].split(","))
            if (int(place["X"]) - left, int(place["Y"]) - top, int(place["WIDTH"])) == (x, y, w):
                return x - left, y - top, w + left + right, h + top + bottom
        return x, y, w, h

    def shot(self, name, node):
        window = node.parent.getRoleName() == "application"
        x, y, w, h = self.framed(node) if window else extents(node)
        path = os.path.join(self.shots, "%02d-%s.png" % (len(self.taken) + 1, name))
        time.sleep(0.3)  # let the last paint land
        subprocess.run(["import", "-silent", "-window", "root", "-crop",
                        "%dx%d+%d+%d" % (w, h, x, y), "+repage", path], check=True)
        self.taken.append(path)
        return path


ENTRIES = ["Halvane Classification Wizard", "Resample", "Build Broad Scale BPI",
           "Build Fine Scale BPI", "Standardize BPI Grids", "Classification Dictionary Editor",
           "Terrain Classification Builder", "Rugosity Builder", "Help"]
