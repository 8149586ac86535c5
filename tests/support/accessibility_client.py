#!/usr/bin/python3
"""An assistive program that does what it is told: a line each, in JSON, and a line each in return.

It needs the system's own Python, for which Debian builds its modules.
"""

import contextlib
import json
import sys
import time

import pyatspi

NAME = "Ferrivane"
STATES = {name: getattr(pyatspi, f"STATE_{name.upper()}") for name in (
    "checked", "expanded", "focusable", "focused")}
SECONDS = 60


def application():
    end = time.monotonic() + SECONDS
    while time.monotonic() < end:
        for found in pyatspi.Registry.getDesktop(0):
            if found and found.name == NAME:
                found.clear_cache()  # kept up to date only while a main loop runs
                return found
        time.sleep(0.02)
    raise RuntimeError("no application on the bus of assistive programs")


def interface(query):
    try:
        return query()
    except NotImplementedError:
        return None


def described(item, path):
    states = item.getState()
    actions = interface(item.queryAction)
    text = interface(item.queryText)
    place = item.queryComponent().getExtents(pyatspi.DESKTOP_COORDS)
    return {"role": item.getRoleName(), "name": item.name, "description": item.description,
            "within": path, "place": [place.x, place.y, place.width, place.height], "text": text and text.getText(0, -1),
            "states": [name for name, state in STATES.items() if states.contains(state)],
            "actions": [actions.getName(i) for i in range(actions.nActions)] if actions else []}


def walk(item, path=()):
    """Everything below that is shown, with the names and roles of what it is in."""
    for child in item:
        if child and child.getState().contains(pyatspi.STATE_VISIBLE):
            yield child, path
            if child.getRole() != pyatspi.ROLE_COMBO_BOX:  # its choices are shown when it is opened
                yield from walk(child, (*path, child.name or child.getRoleName()))


def again(look):
    """A few times after errors: rows come and go meanwhile."""
    for _ in range(9):
        with contextlib.suppress(Exception):
            return look()
    return look()


def everything():
    return again(lambda: [described(item, path) for item, path in walk(application())])


def find(role, name):
    def look():
        for item, _ in walk(application()):
            if item.getRoleName() == role and name in (item.name, item.description):
                return item
        raise LookupError(f"no {role} {name!r}")
    return again(look)


def act(role, name, action):
    actions = find(role, name).queryAction()
    names = [actions.getName(i) for i in range(actions.nActions)]
    return actions.doAction(names.index(action))


def type_text(role, name, text):
    return find(role, name).queryEditableText().setTextContents(text)


def insert(role, name, place, text):
    return find(role, name).queryEditableText().insertText(place, text, len(text.encode()))


def main():
    pyatspi.setTimeout(SECONDS * 1000, SECONDS * 1000)  # else 0.8 s for each call
    operations = {"everything": everything, "act": act, "type": type_text, "insert": insert}
    for line in sys.stdin:
        operation, *arguments = json.loads(line)
        try:
            answer = {"value": operations[operation](*arguments)}
        except Exception as error:  # whatever it is, the test tells of it
            answer = {"error": f"{type(error).__name__}: {error}"}
        print(json.dumps(answer), flush=True)


if __name__ == "__main__":
    main()
