"""What a blind pilot has of the window: everything is read and done over the bus of screen readers.

    screenReader.py VISTREL SAMPLE_FLIGHT_MAKER

Runs the program on a sample flight, on the display and the session bus that it is given. Prints what
is wrong, and fails if anything is.
"""

import os
import shutil
import signal
import subprocess
import sys
import tempfile
import time

import pyatspi

LAUNCHER = "/usr/libexec/at-spi-bus-launcher"
LIMIT_S = 40
# Roles that a pilot acts on.
CONTROLS = {
    pyatspi.ROLE_PUSH_BUTTON, pyatspi.ROLE_CHECK_BOX, pyatspi.ROLE_RADIO_BUTTON,
    pyatspi.ROLE_SLIDER, pyatspi.ROLE_SPIN_BUTTON, pyatspi.ROLE_TEXT, pyatspi.ROLE_COMBO_BOX,
    pyatspi.ROLE_LIST_ITEM, pyatspi.ROLE_MENU_ITEM, pyatspi.ROLE_PAGE_TAB, pyatspi.ROLE_SCROLL_BAR,
}


def wait_for(what, condition):
    """Returns the first result of the condition that is not false."""
    end = time.monotonic() + LIMIT_S
    while time.monotonic() < end:
        try:
            result = condition()
        except Exception:  # an item that vanishes while it is read
            result = None
        if result:
            return result
        time.sleep(0.05)
    raise AssertionError("waited in vain for " + what)


def expect(condition, what):
    if not condition:
        raise AssertionError(what)


def application():
    return next((app for app in pyatspi.Registry.getDesktop(0) if app and app.name == "Vistrel"), None)


def window(name):
    return next((child for child in application()
                 if child and child.name.startswith(name) and is_shown(child)), None)


def is_shown(item):
    return item.getState().contains(pyatspi.STATE_SHOWING)


def below(item):
    for child in item:
        if child is not None and is_shown(child):
            yield child
            yield from below(child)


def find(top, name, role=None):
    return next((item for item in below(top)
                 if item.name == name and (role is None or item.getRole() == role)), None)


def press(item):
    actions = item.queryAction()
    names = [actions.getName(index) for index in range(actions.nActions)]
    expect("Press" in names, "%s cannot be pressed" % item.name)
    actions.doAction(names.index("Press"))


def check_names(top, least):
    """Every control has a name, and there are at least so many of them."""
    controls = [item for item in below(top) if item.getRole() in CONTROLS]
    nameless = ["%s below %s" % (item.getRoleName(), item.parent.name)
                for item in controls if not item.name.strip()]
    expect(not nameless, "without a name: " + ", ".join(nameless))
    expect(len(controls) >= least, "only %d controls in %s" % (len(controls), top.name))


def checked(item):
    return item.getState().contains(pyatspi.STATE_CHECKED)


def check_transport(main):
    timeline = wait_for("the timeline", lambda: find(main, "Timeline", pyatspi.ROLE_SLIDER))
    value = timeline.queryValue()
    wait_for("the length of the flight", lambda: value.maximumValue > 100)
    expect((value.minimumValue, value.currentValue) == (0, 0), "the timeline starts elsewhere")
    press(find(main, "Next frame"))
    wait_for("the next frame", lambda: value.currentValue == 1)
    wait_for("its number in the description", lambda: timeline.description.endswith("f 1"))
    value.currentValue = 25
    wait_for("a frame chosen on the timeline", lambda: timeline.description.endswith("f 25"))
    press(find(main, "First frame"))
    wait_for("the first frame again", lambda: value.currentValue == 0)
    press(find(main, "Play"))
    pause = wait_for("the button to pause", lambda: find(main, "Pause"))
    wait_for("playback", lambda: value.currentValue > 1)
    press(pause)
    wait_for("the button to play", lambda: find(main, "Play"))
    speed = find(main, "Playback speed", pyatspi.ROLE_SPIN_BUTTON).queryValue()
    expect((speed.minimumValue, speed.currentValue, speed.maximumValue) == (1, 1, 5),
           "the speed has other values")
    speed.currentValue = 3
    wait_for("the speed", lambda: speed.currentValue == 3)


def check_points(main):
    toggle = find(main, "List of the points of interest", pyatspi.ROLE_CHECK_BOX)
    expect(not checked(toggle), "the list is said to be open")
    press(toggle)
    wait_for("the list to be said open", lambda: checked(toggle))
    points = wait_for("the list", lambda: find(main, "Points of interest", pyatspi.ROLE_LIST))
    wait_for("two points", lambda: points.childCount == 2)
    first = points[0]
    expect("Hot cell, pass 1" in first.name, "the first point is called " + first.name)
    press(first)
    wait_for("it to be selected", lambda: first.getState().contains(pyatspi.STATE_SELECTED))
    timeline = find(main, "Timeline")
    wait_for("the moment of the point",
             lambda: timeline.description.startswith(first.name.split()[0]))
    press(find(main, "Next frame"))
    press(find(main, "Create POI at playhead position"))
    wait_for("the new point", lambda: points.childCount == 3)


def check_panels(main):
    find(main, "Adjustments", pyatspi.ROLE_PAGE_TAB)
    check_names(main, 25)


def choose(main, entry):
    """Presses an entry of the menus."""
    entries = find(main, "Entries of the menus")
    item = wait_for("the entry " + entry, lambda: find(entries, entry, pyatspi.ROLE_MENU_ITEM))
    press(item)


def close_by(top, button):
    name = top.name
    press(find(top, button, pyatspi.ROLE_PUSH_BUTTON))
    wait_for("%s to close" % name, lambda: window(name) is None)


def check_windows(main):
    for entry, name, button, least in (("Export frames as images...", "Export frames", "Cancel", 8),
                                       ("General settings", "Settings", "Cancel", 6),
                                       ("Restore POIs from flight data...", "Restore", "Cancel", 4),
                                       ("Shortcuts...", "Keyboard Shortcuts", "Close", 1)):
        choose(main, entry)
        opened = wait_for("the window " + name, lambda: window(name))
        check_names(opened, least)
        close_by(opened, button)


def check_jobs(main):
    press(find(main, "Jobs", pyatspi.ROLE_PUSH_BUTTON))
    jobs = wait_for("the list of jobs", lambda: find(main, "Jobs", pyatspi.ROLE_LIST))
    expect(any(job.name.startswith("Read FLIGHT01.LOG") for job in jobs), "the log is no job")
    press(find(main, "Close the list of jobs"))
    wait_for("the list to close", lambda: not find(main, "Close the list of jobs"))


def check_corner(main):
    """An entry with a tick says whether it is on, and changes it."""
    entries = find(main, "Entries of the menus")
    bar = find(entries, "Show thermal colour bar in exports")
    expect(not checked(bar), "the thermal bar is said to be on")
    press(bar)
    wait_for("the thermal bar", lambda: checked(bar))


def check_report(main, folder):
    choose(main, "Create inspection report...")
    dialog = wait_for("the dialog of the report", lambda: window("Save POI report as"))
    field = wait_for("its field", lambda: next(
        item for item in below(dialog) if item.getRole() == pyatspi.ROLE_TEXT))
    report = folder + "/review.docx"
    field.queryEditableText().setTextContents(report)
    save = next(item for item in below(dialog)
                if item.getRole() == pyatspi.ROLE_PUSH_BUTTON and item.name.replace("&", "") == "Save")
    press(save)
    wait_for("the report", lambda: os.path.exists(report) and os.path.getsize(report) > 10000)


def check_importer(main):
    press(wait_for("the start page", lambda: find(main, "Scan removable devices")))
    importer = wait_for("the importer", lambda: window("Auto importer"))
    check_names(importer, 8)
    for name, role in (("Log files location", pyatspi.ROLE_COMBO_BOX),
                       ("Video files location", pyatspi.ROLE_COMBO_BOX),
                       ("Fast search (ignores metadata)", pyatspi.ROLE_CHECK_BOX),
                       ("Flights", pyatspi.ROLE_LIST)):
        expect(find(importer, name, role), "the importer has no %s" % name)
    box = find(importer, "Fast search (ignores metadata)")
    expect(not checked(box), "the fast search is said to be on")
    actions = box.queryAction()
    actions.doAction(0)
    wait_for("the fast search", lambda: checked(box))
    press(find(importer, "Cancel"))
    wait_for("the importer to close", lambda: window("Auto importer") is None)


def run_checks(program, flight):
    subject = subprocess.Popen([program, flight])
    try:
        wait_for("the program", application)
        main = wait_for("its window with the flight",
                        lambda: (window("Vistrel") if "sample.ecor" in window("Vistrel").name else None))
        wait_for("the flight", lambda: find(main, "Play"))
        check_transport(main)
        check_points(main)
        check_panels(main)
        check_jobs(main)
        check_corner(main)
        check_windows(main)
        check_report(main, os.environ["HOME"])
    finally:
        subject.kill()
        subject.wait()
    wait_for("the program to be gone", lambda: application() is None)
    subject = subprocess.Popen([program])
    try:
        check_importer(wait_for("the empty window", lambda: window("Vistrel")))
    finally:
        subject.kill()
        subject.wait()


def main():
    program, maker = sys.argv[1:]
    home = tempfile.mkdtemp()
    for name in ("XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "HOME"):
        os.environ[name] = home
    os.environ["QT_LINUX_ACCESSIBILITY_ALWAYS_ON"] = "1"
    # The bus that it starts outlives it, and must not hold the output of this program open.
    launcher = subprocess.Popen([LAUNCHER, "--launch-immediately"], start_new_session=True,
                                stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    try:
        subprocess.run([maker, "--minutes", "0.4", home + "/flight"], check=True,
                       stdout=subprocess.DEVNULL)
        run_checks(program, home + "/flight/sample.ecor")
    except AssertionError as error:
        print("FAIL: %s" % error)
        return 1
    finally:
        os.killpg(launcher.pid, signal.SIGTERM)
        launcher.wait()
        shutil.rmtree(home, ignore_errors=True)
    print("everything was read and done")
    return 0


if __name__ == "__main__":
    sys.exit(main())
