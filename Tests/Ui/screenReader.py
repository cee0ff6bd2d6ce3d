"""What a blind pilot has of the window: everything is read and done over the bus of screen readers.

    screenReader.py VISTREL SAMPLE_FLIGHT_MAKER

Runs the program on a sample flight, on the display and the session bus that it is given. Prints what
is wrong, and fails if anything is.
"""

import os
import shutil
import subprocess
import sys
import tempfile

import pyatspi

from accessibility import (Bus, Subject, act, below, check_names, expect, find, has_state, is_checked,
                           press, wait_for, wait_for_item)


def frame_of(main):
    """The number of the frame on screen, as the timeline describes it."""
    return int(find(main, "Timeline", pyatspi.ROLE_SLIDER).description.rsplit("f ", 1)[1])


def check_transport(main):
    timeline = wait_for_item(main, "Timeline", pyatspi.ROLE_SLIDER)
    value = timeline.queryValue()
    wait_for("the length of the flight", lambda: value.maximumValue > 100)
    wait_for("the first frame", lambda: frame_of(main) == 0)
    expect((value.minimumValue, value.currentValue) == (0, 0), "the timeline starts elsewhere")
    press(main, "Next frame")
    wait_for("the next frame", lambda: value.currentValue == 1)
    wait_for("its number in the description", lambda: timeline.description.endswith("f 1"))
    value.currentValue = 25
    wait_for("a frame chosen on the timeline", lambda: timeline.description.endswith("f 25"))
    press(main, "First frame")
    wait_for("the first frame again", lambda: value.currentValue == 0)
    press(main, "Play")
    pause = wait_for_item(main, "Pause")
    wait_for("playback", lambda: value.currentValue > 1)
    act(pause)
    wait_for_item(main, "Play")
    speed = wait_for_item(main, "Playback speed", pyatspi.ROLE_SPIN_BUTTON).queryValue()
    expect((speed.minimumValue, speed.currentValue, speed.maximumValue) == (1, 1, 5),
           "the speed has other values")
    speed.currentValue = 3
    wait_for("the speed", lambda: speed.currentValue == 3)


def check_points(main):
    toggle = wait_for_item(main, "List of the points of interest", pyatspi.ROLE_CHECK_BOX)
    expect(not is_checked(toggle), "the list is said to be open")
    act(toggle)
    wait_for("the list to be said open", lambda: is_checked(toggle))
    points = wait_for_item(main, "Points of interest", pyatspi.ROLE_LIST)
    wait_for("two points", lambda: points.childCount == 2)
    first = wait_for("the first point",
                     lambda: points[0] if "Hot cell, pass 1" in points[0].name else None)
    act(first)
    wait_for("it to be selected", lambda: has_state(first, pyatspi.STATE_SELECTED))
    timeline = wait_for_item(main, "Timeline")
    wait_for("the moment of the point",
             lambda: timeline.description.startswith(first.name.split()[0]))
    frame = wait_for("its frame", lambda: frame_of(main))
    press(main, "Next frame")
    wait_for("the frame after the point", lambda: frame_of(main) == frame + 1)
    press(main, "Create POI at playhead position")
    wait_for("the new point", lambda: points.childCount == 3)


def check_panels(main):
    wait_for_item(main, "Adjustments", pyatspi.ROLE_PAGE_TAB)
    check_names(main, 25)


def choose(main, entry):
    """Presses an entry of the menus."""
    press(wait_for_item(main, "Entries of the menus"), entry, pyatspi.ROLE_MENU_ITEM)


def check_windows(subject, main):
    for entry, name, button, least in (("Export frames as images...", "Export frames", "Cancel", 8),
                                       ("General settings", "Settings", "Cancel", 6),
                                       ("Restore POIs from flight data...", "Restore", "Cancel", 4),
                                       ("Shortcuts...", "Keyboard Shortcuts", "Close", 1)):
        choose(main, entry)
        opened = subject.wait_for_window(name)
        check_names(opened, least)
        press(opened, button, pyatspi.ROLE_PUSH_BUTTON)
        subject.wait_until_gone(name)


def check_jobs(main):
    press(main, "Jobs", pyatspi.ROLE_PUSH_BUTTON)
    jobs = wait_for_item(main, "Jobs", pyatspi.ROLE_LIST)
    wait_for("the log among the jobs",
             lambda: any(job.name.startswith("Read FLIGHT01.LOG") for job in jobs))
    press(main, "Close the list of jobs")
    wait_for("the list to close", lambda: not find(main, "Close the list of jobs"))


def check_corner(main):
    """An entry with a tick says whether it is on, and changes it."""
    entries = wait_for_item(main, "Entries of the menus")
    bar = wait_for_item(entries, "Show thermal colour bar in exports")
    expect(not is_checked(bar), "the thermal bar is said to be on")
    act(bar)
    wait_for("the thermal bar", lambda: is_checked(bar))


def check_report(subject, main, folder):
    choose(main, "Create inspection report...")
    dialog = subject.wait_for_window("Save POI report as")
    field = wait_for("its field", lambda: next(
        item for item in below(dialog) if item.getRole() == pyatspi.ROLE_TEXT))
    report = folder + "/review.docx"
    field.queryEditableText().setTextContents(report)
    wait_for("the name in the field",
             lambda: field.queryText().getText(0, -1) == report)
    act(wait_for("the button that saves", lambda: next(
        item for item in below(dialog)
        if item.getRole() == pyatspi.ROLE_PUSH_BUTTON and item.name.replace("&", "") == "Save")))
    wait_for("the report", lambda: os.path.exists(report) and os.path.getsize(report) > 10000)


def check_importer(subject, main):
    press(main, "Scan removable devices")
    importer = subject.wait_for_window("Auto importer")
    check_names(importer, 8)
    for name, role in (("Log files location", pyatspi.ROLE_COMBO_BOX),
                       ("Video files location", pyatspi.ROLE_COMBO_BOX),
                       ("Fast search (ignores metadata)", pyatspi.ROLE_CHECK_BOX),
                       ("Flights", pyatspi.ROLE_LIST)):
        wait_for_item(importer, name, role)
    box = wait_for_item(importer, "Fast search (ignores metadata)")
    expect(not is_checked(box), "the fast search is said to be on")
    act(box)
    wait_for("the fast search", lambda: is_checked(box))
    press(importer, "Cancel")
    subject.wait_until_gone("Auto importer")


def run_checks(program, project):
    with Subject(program, project) as subject:
        main = wait_for("its window with the flight", lambda: next(
            found for found in [subject.window("Vistrel")] if "sample.ecor" in found.name))
        check_transport(main)
        check_points(main)
        check_panels(main)
        check_jobs(main)
        check_corner(main)
        check_windows(subject, main)
        check_report(subject, main, os.environ["HOME"])
    with Subject(program) as subject:
        check_importer(subject, subject.wait_for_window("Vistrel"))


def main():
    program, maker = sys.argv[1:]
    home = tempfile.mkdtemp()
    for name in ("XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "HOME"):
        os.environ[name] = home
    try:
        subprocess.run([maker, "--minutes", "0.4", home + "/flight"], check=True,
                       stdout=subprocess.DEVNULL)
        with Bus():
            run_checks(program, home + "/flight/sample.ecor")
    except AssertionError as error:
        print("FAIL: %s" % error)
        return 1
    finally:
        shutil.rmtree(home, ignore_errors=True)
    print("everything was read and done")
    return 0


if __name__ == "__main__":
    sys.exit(main())
