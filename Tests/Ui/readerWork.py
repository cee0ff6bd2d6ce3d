"""What else a day's work needs, by the tree of the screen reader alone: the list of the points of
interest, curves, settings, a series of pictures with its job, and work that was not saved."""

import os
import signal

import pyatspi

from accessibility import (act, below, expect, find, has_state, is_checked, press, wait_for,
                           wait_for_item)
from readerReview import choose, choose_file, set_text


def names_of(items):
    return [item.name for item in items]


def shown_text(main, part):
    """A text on screen that has this part in it."""
    return wait_for(part, lambda: next(item for item in below(main) if part in item.name))


def work_in_list(main):
    """Sorted by name, filtered, several deleted at once and brought back."""
    press(main, "List of the points of interest", pyatspi.ROLE_CHECK_BOX)
    points = wait_for_item(main, "Points of interest", pyatspi.ROLE_LIST)
    wait_for("the two points", lambda: points.childCount == 2)
    by_time = names_of(points)
    order = wait_for_item(main, "A-Z", pyatspi.ROLE_CHECK_BOX)
    act(order)
    wait_for("the order by name", lambda: is_checked(order))
    filter_field = wait_for_item(main, "Filter of the points of interest", pyatspi.ROLE_TEXT)
    set_text(filter_field, "pass 1")
    wait_for("the one point", lambda: names_of(points) == [by_time[0]])
    set_text(filter_field, "")
    wait_for("both points", lambda: points.childCount == 2)
    act(points[0])
    wait_for("the first to be selected", lambda: has_state(points[0], pyatspi.STATE_SELECTED))
    act(points[1], "Toggle")
    wait_for("both to be selected", lambda: all(
        has_state(point, pyatspi.STATE_SELECTED) for point in points))
    press(main, "Delete 2")
    wait_for("the empty list", lambda: points.childCount == 0)
    choose(main, "Undo delete 2 points of interest")
    wait_for("the points again", lambda: sorted(names_of(points)) == sorted(by_time))
    shown_text(main, "Undone: delete 2 points of interest")


def read_curves(main):
    """A value of the log found by its name, shown, read and taken away."""
    choose(main, "Show curves of the flight log")
    search = wait_for_item(main, "Search values of the log", pyatspi.ROLE_TEXT)
    values = wait_for_item(main, "Values of the log", pyatspi.ROLE_LIST)
    wait_for("the values", lambda: values.childCount > 3)
    set_text(search, "altitude")
    wait_for("the values of that name", lambda: values.childCount > 0 and all(
        "altitude" in name for name in names_of(values)))
    value = values[0]
    act(value)
    wait_for("the curve", lambda: is_checked(value))
    wait_for("its value at the playhead", lambda: next(
        item for item in below(main) if item.getRole() == pyatspi.ROLE_LABEL
        and item.name.startswith(value.name + " ")))
    act(value)
    wait_for_item(main, "Curves of the log, none chosen")


def save_settings(subject, main):
    choose(main, "General settings")
    settings = subject.wait_for_window("Settings")
    light = wait_for_item(settings, "Light, for bright sun", pyatspi.ROLE_RADIO_BUTTON)
    act(light)
    wait_for("the light theme to be chosen", lambda: is_checked(light))
    press(settings, "Save settings")
    subject.wait_until_gone("Settings")
    choose(main, "General settings")
    settings = subject.wait_for_window("Settings")
    expect(is_checked(wait_for_item(settings, "Light, for bright sun")), "it was not kept")
    press(settings, "Cancel")
    subject.wait_until_gone("Settings")


def export_frames(subject, main, folder):
    """A picture of each point of interest; the job says how it ended."""
    os.mkdir(folder)
    choose(main, "Export frames as images...")
    window = subject.wait_for_window("Export frames")
    press(window, "Points of interest (2)", pyatspi.ROLE_RADIO_BUTTON)
    press(window, "Browse...")
    choose_file(subject, "Please choose a folder", folder, "Choose")
    press(window, "Export images")
    subject.wait_until_gone("Export frames")
    shown_text(main, "2 pictures saved.")
    expect(sorted(os.listdir(folder)) == ["Frame000.jpg", "Frame001.jpg"],
           "there are " + ", ".join(os.listdir(folder)))
    press(main, "Jobs", pyatspi.ROLE_PUSH_BUTTON)
    jobs = wait_for_item(main, "Jobs", pyatspi.ROLE_LIST)
    wait_for("its job", lambda: "Save pictures, 2 pictures saved." in names_of(jobs))
    wait_for_item(main, "Open the folder of Save pictures")
    press(main, "Close the list of jobs")


def mark(main, count):
    """One more point of interest, which is not saved."""
    press(main, "Next frame")
    press(main, "Create POI at playhead position")
    points = wait_for_item(main, "Points of interest", pyatspi.ROLE_LIST)
    wait_for("the new point", lambda: points.childCount == count)


def wait_until_kept(count):
    kept = os.path.join(os.environ["XDG_DATA_HOME"], "Corvenity", "Vistrel", "recovery")

    def is_kept():
        files = [os.path.join(kept, name) for name in os.listdir(kept) if name.endswith(".json")]
        return any(open(path).read().count('"name"') >= count for path in files)

    wait_for("the work to be kept", is_kept)


def break_off(subject):
    subject.process.send_signal(signal.SIGKILL)
    subject.process.wait()


def put_off(main):
    """Left for another time."""
    shown_text(main, "Restore your unsaved review of ")
    press(main, "Later")
    wait_for("the offer to go", lambda: not find(main, "Restore"))


def restore(main, count):
    shown_text(main, "Restore your unsaved review of ")
    press(main, "Restore")
    points = wait_for_item(main, "Points of interest", pyatspi.ROLE_LIST)
    wait_for("the work", lambda: points.childCount == count)


def discard(main):
    shown_text(main, "Restore your unsaved review of ")
    press(main, "Discard")
    wait_for("the offer to go", lambda: not find(main, "Discard"))
