"""A whole review by the tree of the screen reader alone: from the card to the report, without a mouse."""

import os

import pyatspi

from accessibility import (act, below, check_names, expect, find, has_state, press, wait_for,
                           wait_for_item)


def frame_of(main):
    """The number of the frame on screen, as the timeline describes it."""
    return int(find(main, "Timeline", pyatspi.ROLE_SLIDER).description.rsplit("f ", 1)[1])


def choose(main, entry):
    """Presses an entry of the menus."""
    press(wait_for_item(main, "Entries of the menus"), entry, pyatspi.ROLE_MENU_ITEM)


def text_of(field):
    return field.queryText().getText(0, -1)


def set_text(field, text):
    field.queryEditableText().setTextContents(text)
    wait_for("%s in the field" % text, lambda: text_of(field) == text)


def type_text(field, text):
    """Types small letters and blanks, as its user does: the reader brings the keyboard to the field."""
    act(field, "SetFocus")
    wait_for("the field to have the keyboard", lambda: has_state(field, pyatspi.STATE_FOCUSED))
    pyatspi.Registry.generateKeyboardEvent(0, text, pyatspi.KEY_STRING)
    wait_for("%s in the field" % text, lambda: text_of(field) == text)


def choose_file(subject, title, path, button):
    """Answers the file dialog of that title."""
    dialog = subject.wait_for_window(title)
    set_text(wait_for("the field of " + title, lambda: next(
        item for item in below(dialog) if item.getRole() == pyatspi.ROLE_TEXT)), path)
    act(wait_for("the button " + button, lambda: next(
        item for item in below(dialog)
        if item.getRole() == pyatspi.ROLE_PUSH_BUTTON and item.name.replace("&", "") == button)))
    subject.wait_until_gone(title)


def make_report(subject, main, path):
    choose(main, "Create inspection report...")
    choose_file(subject, "Save POI report as", path, "Save")
    wait_for("the report", lambda: os.path.exists(path) and os.path.getsize(path) > 10000)


def flight_values(main):
    return [item.name for item in wait_for_item(main, "Flight values")]


def open_from_card(subject, main, card):
    press(main, "Scan removable devices")
    importer = subject.wait_for_window("Auto importer")
    for location in ("Log files location", "Video files location"):
        act(wait_for("the button that browses", lambda: next(
            item for item in below(importer)
            if item.name == "Browse..." and item.description == location)))
        choose_file(subject, "Please choose a directory", card, "Choose")
        wait_for("the folder in the list of locations", lambda: card in find(
            importer, location, pyatspi.ROLE_COMBO_BOX).description)
    press(importer, "Search flights")
    flights = wait_for_item(importer, "Flights", pyatspi.ROLE_LIST)
    wait_for("the flight", lambda: flights.childCount == 1)
    flight = flights[0]
    expect(flight.name == "CORV0001 : FLIGHT01", "the flight is called " + flight.name)
    columns, evidence = flight.description.split("\n")[:2]
    expect("mission: " in columns and evidence == "Time and length agree",
           "the flight is described as " + flight.description)
    act(flight)
    wait_for("it to be selected", lambda: has_state(flight, pyatspi.STATE_SELECTED))
    press(importer, "Load selected")
    subject.wait_until_gone("Auto importer")


def look_through(main):
    timeline = wait_for_item(main, "Timeline", pyatspi.ROLE_SLIDER)
    value = timeline.queryValue()
    wait_for("the length of the flight", lambda: value.maximumValue > 100)
    # One without a value is "Pitch: no value".
    wait_for("the values of the log", lambda: all(
        any(text.startswith(label + " ") for text in flight_values(main))
        for label in ("Pitch", "Roll", "Heading", "Altitude", "Cam pitch")))
    before = flight_values(main)
    value.currentValue = 200
    wait_for("the values of another moment", lambda: flight_values(main) != before)
    wait_for("the names of the flight", lambda: any(
        item.name.startswith("Mission: ") for item in below(main)))
    press(main, "Play")
    act(wait_for_item(main, "Pause"))
    wait_for_item(main, "Play")


def check_disabled(toggle):
    """A press does nothing while the toggle cannot be used."""
    wait_for("the reason", lambda: toggle.description.endswith("show the thermal picture first"))
    before = has_state(toggle, pyatspi.STATE_CHECKED)
    toggle.queryAction().doAction(0)
    expect(has_state(toggle, pyatspi.STATE_CHECKED) == before, "a disabled toggle was switched")


def adjust(main):
    """The other tab, and back."""
    tab = wait_for_item(main, "Adjustments", pyatspi.ROLE_PAGE_TAB)
    expect(not has_state(tab, pyatspi.STATE_SELECTED), "the adjustments are said to be shown")
    act(tab)
    wait_for("the tab to be selected", lambda: has_state(tab, pyatspi.STATE_SELECTED))
    check_names(main, 30)
    check_disabled(wait_for_item(main, "Transparent thermal picture"))
    press(main, "Show thermal")
    wait_for("the thermal picture", lambda: has_state(find(main, "Show thermal"),
                                                      pyatspi.STATE_CHECKED))
    contrast = wait_for_item(main, "Contrast", pyatspi.ROLE_SLIDER).queryValue()
    contrast.currentValue = 1.5
    wait_for("the contrast", lambda: abs(contrast.currentValue - 1.5) < 0.01)
    press(main, "Flight data", pyatspi.ROLE_PAGE_TAB)
    wait_for("the flight data again", lambda: flight_values(main))


def note(subject, main):
    press(main, "Create POI at playhead position")
    press(main, "List of the points of interest", pyatspi.ROLE_CHECK_BOX)
    points = wait_for_item(main, "Points of interest", pyatspi.ROLE_LIST)
    act(wait_for("the new point of interest", lambda: next(
        point for point in points if "New POI" in point.name)))
    press(main, "Edit selected POI")
    editor = subject.wait_for_window("Edit point of interest")
    set_text(wait_for_item(editor, "Name", pyatspi.ROLE_TEXT), "cracked cell")
    type_text(wait_for_item(editor, "Description", pyatspi.ROLE_TEXT), "lower left corner")
    press(editor, "Save")
    subject.wait_until_gone("Edit point of interest")
    wait_for("the named point of interest", lambda: any(
        point.name.endswith("cracked cell, lower left corner") for point in points))


def review(subject, main, card, folder):
    open_from_card(subject, main, card)
    look_through(main)
    adjust(main)
    note(subject, main)
    choose(main, "Save project")
    project = folder + "/by reader.ecor"
    choose_file(subject, "Save project as", project, "Save")
    wait_for("the project", lambda: os.path.exists(project))
    wait_for("its name in the title", lambda: "by reader.ecor" in main.name)
    make_report(subject, main, folder + "/by reader.docx")
