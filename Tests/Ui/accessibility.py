"""The window as a screen reader has it: a bus of screen readers, and the tree of the program on it.

Everything here waits for a condition: a slow machine makes it slower and changes nothing else.
"""

import os
import signal
import subprocess
import time

import pyatspi
from gi.repository import Atspi, Gio, GLib

LAUNCHER = "/usr/libexec/at-spi-bus-launcher"
LAUNCHER_NAME = "org.a11y.Bus"
LIMIT_S = 60
# How long the program may take for one answer: the library's own limit is 0.8 s, which the making of
# a window exceeds on a loaded machine.
ANSWER_LIMIT_MS = 60000
# Roles that a pilot acts on.
CONTROLS = {
    pyatspi.ROLE_PUSH_BUTTON, pyatspi.ROLE_CHECK_BOX, pyatspi.ROLE_RADIO_BUTTON,
    pyatspi.ROLE_SLIDER, pyatspi.ROLE_SPIN_BUTTON, pyatspi.ROLE_TEXT, pyatspi.ROLE_COMBO_BOX,
    pyatspi.ROLE_LIST_ITEM, pyatspi.ROLE_MENU_ITEM, pyatspi.ROLE_PAGE_TAB, pyatspi.ROLE_SCROLL_BAR,
}


def wait_for(what, condition):
    """Returns the first result of the condition that is not false.

    What is read may vanish meanwhile, and an expectation of the condition may not hold yet: both count
    as false, and the last of them is in the message of the failure.
    """
    end = time.monotonic() + LIMIT_S
    while True:
        reason = ""
        try:
            result = condition()
            if result:
                return result
        except (AssertionError, AttributeError, IndexError, LookupError, NotImplementedError,
                StopIteration, TypeError, GLib.Error) as error:
            reason = ": %s" % error
        if time.monotonic() > end:
            raise AssertionError("waited in vain for " + what + reason)
        time.sleep(0.05)


def expect(condition, what):
    if not condition:
        raise AssertionError(what)


class Bus:
    """The bus of screen readers, on the session bus that this program is given.

    It is there before anything asks for it: a session starts another one on demand, and then a reader
    and the program that it reads can be on different buses.
    """

    def __enter__(self):
        # What the launcher starts must not hold the output of this program open.
        self.launcher = subprocess.Popen([LAUNCHER, "--launch-immediately"], start_new_session=True,
                                         stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        session = Gio.bus_get_sync(Gio.BusType.SESSION, None)
        wait_for("the bus of screen readers", lambda: self.launcher.pid == call(
            session, "org.freedesktop.DBus", "GetConnectionUnixProcessID", LAUNCHER_NAME))
        os.environ["AT_SPI_BUS_ADDRESS"] = wait_for(
            "its address", lambda: call(session, LAUNCHER_NAME, "GetAddress"))
        os.environ["QT_LINUX_ACCESSIBILITY_ALWAYS_ON"] = "1"
        Atspi.set_timeout(ANSWER_LIMIT_MS, ANSWER_LIMIT_MS)
        # Its registry starts with the first call.
        wait_for("the registry of screen readers",
                 lambda: pyatspi.Registry.getDesktop(0).childCount >= 0)
        return self

    def __exit__(self, *unused):
        try:
            os.killpg(self.launcher.pid, signal.SIGTERM)
        except ProcessLookupError:
            pass
        self.launcher.wait()


def call(connection, service, method, *arguments):
    """The first result of a call on the bus, of the service's interface of the same name."""
    path = {"org.freedesktop.DBus": "/org/freedesktop/DBus", LAUNCHER_NAME: "/org/a11y/bus"}[service]
    return connection.call_sync(service, path, service, method,
                                GLib.Variant("(%s)" % ("s" * len(arguments)), arguments), None,
                                Gio.DBusCallFlags.NO_AUTO_START, ANSWER_LIMIT_MS, None).unpack()[0]


class Subject:
    """The program under test, and what it has on the bus."""

    def __init__(self, *command):
        self.process = subprocess.Popen(command)

    def __enter__(self):
        wait_for("the program", self.application)
        return self

    def __exit__(self, *unused):
        self.process.kill()
        self.process.wait()
        wait_for("the program to be gone", lambda: self.application() is None)

    def application(self):
        for candidate in pyatspi.Registry.getDesktop(0):
            try:
                if candidate and candidate.get_process_id() == self.process.pid:
                    return candidate
            except GLib.Error:  # one that has just ended
                pass
        return None

    def window(self, name):
        """The window on screen whose title begins with that, None if there is none."""
        return next((child for child in self.application()
                     if child and child.name.startswith(name) and is_shown(child)), None)

    def wait_for_window(self, name):
        return wait_for("the window " + name, lambda: self.window(name))

    def wait_until_gone(self, name):
        wait_for("%s to close" % name, lambda: self.window(name) is None)


def has_state(item, state):
    return item.getState().contains(state)


def is_shown(item):
    return has_state(item, pyatspi.STATE_SHOWING)


def is_checked(item):
    return has_state(item, pyatspi.STATE_CHECKED)


def below(item):
    """All that is on screen below an item, from top to bottom."""
    for child in item:
        if child is not None and is_shown(child):
            yield child
            yield from below(child)


def find(top, name, role=None):
    return next((item for item in below(top)
                 if item.name == name and (role is None or item.getRole() == role)), None)


def wait_for_item(top, name, role=None):
    return wait_for(name, lambda: find(top, name, role))


def act(item, action="Press"):
    """Does what the item offers under that name, once it offers it and can be used."""
    def offered():
        actions = item.queryAction()
        names = [actions.getName(index) for index in range(actions.nActions)]
        expect(action in names, "%s offers %s" % (item.name, names))
        # The interface reports an item that is disabled by this state alone.
        expect(has_state(item, pyatspi.STATE_FOCUSABLE), item.name + " cannot be used")
        return actions, names.index(action)

    actions, index = wait_for("%s to have the action %s" % (item.name, action), offered)
    actions.doAction(index)


def press(top, name, role=None):
    act(wait_for_item(top, name, role))


def check_names(top, least):
    """Every control has a name, and there are at least so many of them."""
    def named():
        controls = [item for item in below(top) if item.getRole() in CONTROLS]
        nameless = ["%s below %s" % (item.getRoleName(), item.parent.name)
                    for item in controls if not item.name.strip()]
        expect(not nameless, "without a name: " + ", ".join(nameless))
        expect(len(controls) >= least, "only %d controls in %s" % (len(controls), top.name))
        return True

    wait_for("the controls of %s" % top.name, named)
