#!/usr/bin/env python3
"""Plays the suite's main job in the real program, beside a simulated charger, without a display.

    demo.py PROGRAMS OUTPUT

PROGRAMS is the folder of velantor-suite and velantor-sim, OUTPUT gets the screenshots. Tells what it
does and what the charger then holds; the exit status is 0 only when the charger holds the change.
"""

import pathlib
import sys

sys.dont_write_bytecode = True  # nothing is left in the source tree

from virtualdesk import Desk, MainWindow, Stuck, ending_cleanly  # noqa: E402

# Rows counted from 0: one becomes the default, another one moves up.
NEW_DEFAULT = 3
MOVED = 4


class Story:
    """The steps, told as they are taken."""

    def __init__(self, desk, output):
        self.desk, self.output = desk, output
        self.suite = None
        self.step = 0

    def tell(self, text):
        self.step += 1
        print("%d. %s" % (self.step, text), flush=True)

    def picture(self, name):
        self.desk.save_window(
            self.suite.window, self.output / ("%02d-%s.png" % (self.step, name))
        )

    def play(self):
        self.tell("Plug in a simulated charger of 48 V")
        charger = self.desk.plug_in("--hardware", "48v", "--pace", "--with-parent")
        before = charger.profiles()
        print("   %s holds" % charger.port)
        print_profiles(before)

        self.tell("Start the suite")
        self.desk.choose_updates(automatic=False)
        suite = self.suite = MainWindow(self.desk)
        self.picture("start")

        self.tell('Press "Connect" and choose the port')
        dialog = suite.open_connect_dialog()
        self.picture("connect")
        suite.press_connect(dialog)
        suite.wait_until_connected()
        self.check_list(suite, before)

        self.tell("See the charger's profiles in the list")
        self.picture("connected")
        print_rows(suite.rows())

        wanted = changed(before)
        self.tell("Make row %d the default" % (NEW_DEFAULT + 1))
        suite.make_default(NEW_DEFAULT)
        suite.wait_for_rows("the default has changed", lambda rows: rows[NEW_DEFAULT][1])
        self.picture("default")

        self.tell("Move row %d up" % (MOVED + 1))
        suite.select(MOVED)
        suite.move_up()
        self.check_list(suite, wanted)
        self.picture("moved")
        print_rows(suite.rows())
        if kept(charger.profiles()) != kept(before):
            raise Stuck("the charger changed before anything was written")

        self.tell('Press "Save Data"')
        suite.press(suite.SAVE)
        dialog = self.desk.wait_for_window("Progress")
        self.picture("saving")
        suite.wait_for_success(dialog)

        self.tell("See the success and close the dialog")
        self.picture("saved")
        suite.press_ok(dialog)
        self.desk.wait_until_closed("Progress")
        print("   %s holds" % charger.port)
        print_profiles(charger.profiles())

        self.tell('Press "Read Data"')
        suite.read(charger)
        self.check_list(suite, wanted)
        self.picture("read-again")

        self.tell('Press "Disconnect": the charger restarts')
        suite.press(suite.DISCONNECT)
        suite.wait_until_shown(suite.CONNECT)
        self.desk.wait_until("the charger restarts", lambda: charger.state()["mode"] == "left")
        self.picture("disconnected")

        if kept(charger.profiles()) != kept(wanted):
            raise Stuck("the charger does not hold the change")

    def check_list(self, suite, profiles):
        """Waits until the list shows these profiles' lamps and default marks."""
        wanted = [(values["active"], values["defaultprofile"]) for values in profiles]
        suite.wait_for_rows(
            "the list shows the charger's profiles",
            lambda rows: [(active, default) for active, default, _ in rows] == wanted,
        )


def changed(profiles):
    """What the steps make of the charger's profiles."""
    result = [dict(values, defaultprofile=False) for values in profiles]
    result[NEW_DEFAULT].update(defaultprofile=True, active=True)
    result.insert(MOVED - 1, result.pop(MOVED))
    return result


def kept(profiles):
    """What must survive a write: all but the ids, which follow the order."""
    return [dict(values, profile_id=number) for number, values in enumerate(profiles)]


def print_profiles(profiles):
    for number, values in enumerate(profiles, 1):
        marks = [name for name, key in (("active", "active"), ("default", "defaultprofile"))
                 if values[key]]
        print(
            "     %d  %-12s %-14s %s"
            % (number, values["title"], values["description"], ", ".join(marks))
        )


def print_rows(rows):
    print("   the list shows")
    for number, (active, default, _) in enumerate(rows, 1):
        lamp = "lamp on " if active else "lamp off"
        print("     %d  %s%s" % (number, lamp, "  D" if default else ""))


def main(arguments):
    if len(arguments) != 3:
        sys.exit(__doc__.strip())
    output = pathlib.Path(arguments[2])
    output.mkdir(parents=True, exist_ok=True)
    for old in output.glob("*.png"):
        old.unlink()
    try:
        with ending_cleanly(), Desk(arguments[1]) as desk:
            try:
                Story(desk, output).play()
            except Stuck:
                desk.save_screen(output / "stuck.png")
                raise
    except Stuck as stuck:
        sys.exit("FAILED: %s" % stuck)
    print("The charger holds the change. Screenshots are in %s" % output)


if __name__ == "__main__":
    main(sys.argv)
