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

from accessibility import (Bus, Subject, act, check_names, expect, find, has_state, is_checked, press,
                           wait_for, wait_for_item)
from readerReview import choose, frame_of, make_report, review
from readerWork import (break_off, discard, export_frames, mark, put_off, read_curves, restore,
                        save_settings, wait_until_kept, work_in_list)


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


def check_unavailable(main):
    """What needs a flight says so while there is none, and does nothing."""
    add = wait_for_item(main, "Create POI at playhead position")
    wait_for("the reason", lambda: add.description.endswith(": open a video first"))
    save = wait_for("the entry that saves", lambda: find(
        find(main, "Entries of the menus"), "Save project", pyatspi.ROLE_MENU_ITEM))
    wait_for("it to be unavailable", lambda: save.description == "unavailable")
    for item in (add, save):
        expect(not has_state(item, pyatspi.STATE_FOCUSABLE), item.name + " is said to be usable")


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
    act(box)
    wait_for("the whole search", lambda: not is_checked(box))
    press(importer, "Cancel")
    subject.wait_until_gone("Auto importer")


def new_home(folder):
    """What the next program remembers is in a folder of its own."""
    os.mkdir(folder)
    for name in ("XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "HOME"):
        os.environ[name] = folder


def run_checks(program, flight, home):
    new_home(home + "/first")
    with Subject(program, flight + "/sample.ecor") as subject:
        main = wait_for("its window with the flight", lambda: next(
            found for found in [subject.window("Vistrel")] if "sample.ecor" in found.name))
        check_transport(main)
        check_points(main)
        check_panels(main)
        check_jobs(main)
        check_corner(main)
        check_windows(subject, main)
        make_report(subject, main, os.environ["HOME"] + "/sample.docx")
    new_home(home + "/second")
    with Subject(program) as subject:
        main = subject.wait_for_window("Vistrel")
        check_unavailable(main)
        check_importer(subject, main)
        review(subject, main, flight, os.environ["HOME"])


def check_work(program, flight, home):
    new_home(home + "/third")
    with Subject(program, flight + "/sample.ecor") as subject:
        main = subject.wait_for_window("Vistrel")
        work_in_list(main)
        read_curves(main)
        save_settings(subject, main)
        export_frames(subject, main, home + "/pictures")
        mark(main, 3)
        wait_until_kept(3)
        break_off(subject)
    for answer in (put_off, lambda main: restore(main, 3), discard):
        with Subject(program) as subject:
            answer(subject.wait_for_window("Vistrel"))
    with Subject(program) as subject:
        main = subject.wait_for_window("Vistrel")
        wait_for_item(main, "Scan removable devices")
        expect(not find(main, "Discard"), "discarded work is offered again")


def main():
    program, maker = sys.argv[1:]
    home = tempfile.mkdtemp()
    try:
        subprocess.run([maker, "--minutes", "0.4", home + "/flight"], check=True,
                       stdout=subprocess.DEVNULL)
        with Bus():
            run_checks(program, home + "/flight", home)
            check_work(program, home + "/flight", home)
    except AssertionError as error:
        print("FAIL: %s" % error)
        return 1
    finally:
        shutil.rmtree(home, ignore_errors=True)
    print("everything was read and done")
    return 0


if __name__ == "__main__":
    sys.exit(main())
