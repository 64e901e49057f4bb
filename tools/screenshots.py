#!/usr/bin/env python3
"""Makes the pictures of the user's guide from the real program, beside simulated chargers.

    screenshots.py PROGRAMS               the guide's pictures, into docs/images
    screenshots.py PROGRAMS OUTPUT        every window and box, to look at
    screenshots.py PROGRAMS OUTPUT 2      the same as a screen of twice the density shows them

PROGRAMS is the folder of velantor-suite and velantor-sim. Needs the window manager openbox beside
what virtualdesk.py needs.
"""

import pathlib
import sys

sys.dont_write_bytecode = True  # nothing is left in the source tree

import virtualdesk  # noqa: E402
from virtualdesk import Desk, MainWindow, Stuck, ending_cleanly, flashpage  # noqa: E402

GUIDE = (
    *("start", "connect", "connected", "changed"),
    *("load-file", "add-or-replace", "left-out"),
    *("profile", "editing", "override", "wizard", "wizard-lithium", "model"),
    *("device", "device-changed", "stats"),
    *("write", "other-charger", "failed"),
    *("firmware", "firmware-uploading"),
    *("setup", "new-bundle", "checking", "up-to-date"),
)
# A window that shows all rows, and not more emptiness than needed.
COMPACT = (707, 480)
# The size that the window has at first: a profile fits without scrolling.
FIRST = (707, 730)


# Places in the pane: from its middle, and from the upper edge of what is below the tool bar.
FIRST_FIELD = (-60, 126)
BRIGHTNESS = (-205, 124)
ROTATE = (-215, 216)

# Places in the firmware tool.
FIRMWARE_FILE = (300, 46)
UPDATE_FIRMWARE = (-172, -25)
CLOSE = (-52, -25)


class Album:
    """Takes the pictures that are wanted."""

    def __init__(self, desk, output, wanted):
        self.desk, self.output, self.wanted = desk, output, wanted

    def take(self, name, window):
        self.desk.wait_until_still(window)
        self.take_moving(name, window)

    def take_moving(self, name, window):
        """The same of a window with a busy bar, which never comes to rest."""
        if not self.wanted or name in self.wanted:
            self.desk.save_window(window, self.output / (name + ".png"))
            print(name, flush=True)


def play(desk, album):
    site = desk.open_site()
    suite = MainWindow(desk)
    look_at_updates(desk, album, suite, site)
    album.take("new-window", suite.window)
    suite.window.resize(*COMPACT)
    album.take("start", suite.window)
    look_at_menus(desk, album, suite)
    load_files(desk, album, suite)

    dialog = suite.open_connect_dialog()
    album.take("no-port", dialog)
    charger = desk.plug_in("--hardware", "48v", "--pace", "--with-parent")
    suite.wait_for_connect_button(dialog)
    album.take("connect", dialog)
    suite.press_connect(dialog)
    album.take_moving("connecting", dialog)
    suite.wait_until_connected()
    suite.wait_for_rows("the rows come", lambda rows: len(rows) == 6)
    album.take("connected", suite.window)

    suite.window.resize(*FIRST)
    edit(desk, album, suite)
    make_new(desk, album, suite)
    look_at_device(desk, album, suite)
    suite.window.resize(*COMPACT)
    change(desk, album, suite)
    write(desk, album, suite, charger)
    read(desk, album, suite, charger)
    look_at_sizes(desk, album, suite)
    fail(desk, album, suite, charger)
    update_firmware(desk, album, suite)


def look_at_updates(desk, album, suite, site):
    site.publish("1.040", "1.106")
    album.take("setup", desk.wait_for_window("Setup"))
    desk.key("Return")
    close_box(desk, album, "new-software", "New Software Available!")
    close_box(desk, album, "new-bundle", "New Firmware!")

    site.publish("1.039", "1.105", how="silent")
    look_for(desk, 4)
    album.take_moving("checking", desk.wait_for_window("Firmware Checker"))
    desk.key("Escape")
    desk.wait_until_closed("Firmware Checker")
    site.publish("1.039", "1.105", how="close")
    look_for(desk, 4)
    close_box(desk, album, "check-failed-box", "Error!")
    close_box(desk, album, "check-failed", "Firmware Checker")
    site.publish("1.039", "1.106")
    look_for(desk, 5)
    close_box(desk, album, "new-software-asked", "New Software Available!")
    close_box(desk, album, "software-checked", "Software Updates")
    look_for(desk, 4)
    close_box(desk, album, "up-to-date", "Firmware Checker")
    look_for(desk, 3)
    album.take("setup-again", desk.wait_for_window("Setup"))
    # A folder stands where the answer is to be written.
    config = desk.folder / "data" / "velantor-suite" / "config.txt"
    config.unlink()
    config.mkdir()
    desk.key("Return")
    close_box(desk, album, "setup-failed", "Cannot Write To Config File")
    desk.key("Escape")
    desk.wait_until_closed("Setup")


def look_for(desk, ups):
    """An entry of the menu "File", counted from its end."""
    desk.wait_for_window("Velantor Software Suite For Firmware v1.0+").click(20, 10)
    desk.key(*["Up"] * ups, "Return")


def look_at_menus(desk, album, suite):
    for name, x in (("file", 20), ("edit", 56), ("help", 96)):
        suite.window.click(x, 10)
        album.take("menu-" + name, suite.window)
        desk.key("Escape")
    for name, title, downs in (
        ("getting-started", "Basic Usage", 1),
        ("about", "About Velantor Software Suite", 2),
    ):
        suite.window.click(96, 10)
        desk.key(*["Down"] * downs, "Return")
        close_box(desk, album, name, title)


def load_files(desk, album, suite):
    choose_file(desk, album, suite, "48v_default_profiles.xml")
    choose_file(desk, album, suite, "72v_default_profiles.xml")
    album.take("add-or-replace", desk.wait_for_window("Add Profiles to List?"))
    desk.key("alt+r")
    close_box(desk, album, "left-out", "Incompatible Profiles")
    suite.wait_for_rows("what fits is loaded", lambda rows: len(rows) > 0)


def choose_file(desk, album, suite, name):
    title = "Select XML File to Import"
    suite.window.click(20, 10)
    desk.key(*["Down"] * 3, "Return")
    dialog = desk.wait_for_window(title)
    album.take("load-file", dialog)
    desk.xdotool("type", name)
    desk.key("Return")
    desk.wait_until_closed(title)


def close_box(desk, album, name, title):
    """Takes a box's picture and closes it without a change."""
    album.take(name, desk.wait_for_window(title))
    desk.key("Escape")
    desk.wait_until_closed(title)


def edit(desk, album, suite):
    suite.select(0)
    album.take("profile", suite.window)
    suite.edit()
    suite.type_in_page(*FIRST_FIELD, "36")
    album.take("editing", suite.window)
    suite.override_defaults()
    album.take("override", suite.window)
    suite.cancel()
    for name, row in (("nickel", 4), ("lead", 5)):
        suite.select(row)
        album.take("profile-" + name, suite.window)
        suite.edit()
        album.take("editing-" + name, suite.window)
        suite.override_defaults()
        album.take("override-" + name, suite.window)
        suite.cancel()
    suite.select(1)
    album.take("profile-overridden", suite.window)
    look_small(album, suite, "profile")


def look_small(album, suite, name):
    for width, height in ((700, 350), (1600, 1000)):
        suite.window.resize(width, height)
        album.take("%s-%dx%d" % (name, width, height), suite.window)
    suite.window.resize(*FIRST)


def make_new(desk, album, suite):
    suite.add_profile()
    wizard = desk.wait_for_window("Profile Wizard")
    album.take("wizard", wizard)
    for name, x in (("nickel", 82), ("lead", 237), ("lithium", 393)):
        wizard.click(x, 332)
        album.take("wizard-" + name, wizard)
        wizard.click(237, 296)
        album.take("wizard-%s-override" % name, wizard)
        wizard.click(49, -20)
    wizard.click(-134, -20)
    desk.wait_until_closed("Profile Wizard")


def look_at_device(desk, album, suite):
    suite.view_device_settings()
    album.take("device", suite.window)
    suite.type_in_page(*BRIGHTNESS, "2")
    suite.click_in_page(*ROTATE)
    desk.take_pointer_away()
    album.take("device-changed", suite.window)
    suite.type_in_page(*BRIGHTNESS, "9")
    album.take("device-bright", suite.window)
    suite.load_defaults()
    album.take("device-defaults", suite.window)
    suite.cancel_device_settings()
    album.take("device-cancelled", suite.window)
    look_small(album, suite, "device")
    suite.view_device_settings()

    suite.window.click(96, 10)
    desk.key("Up", "Return")
    album.take("stats", desk.wait_for_window("Device Stats"))
    desk.key("Escape")
    desk.wait_until_closed("Device Stats")


def choose_model(desk, album, suite):
    suite.model()
    album.take("model-list", suite.window)
    desk.key("Home", "Return")
    album.take("model", desk.wait_for_window("Incompatible Profiles"))
    desk.key("Escape")
    desk.wait_until_closed("Incompatible Profiles")
    album.take("model-refused", suite.window)


def change(desk, album, suite):
    suite.select(2)
    suite.click_lamp(1)
    suite.wait_for_rows("the lamp goes out", lambda rows: not rows[1][0])
    album.take("changed", suite.window)
    suite.delete(5)
    close_box(desk, album, "delete", "Deleting Profile")
    suite.delete_all()
    close_box(desk, album, "delete-all", "Delete All Profiles?")


def write(desk, album, suite, charger):
    suite.press(suite.SAVE)
    dialog = desk.wait_for_window("Progress")
    album.take_moving("write", dialog)
    suite.wait_for_success(dialog)
    album.take("written", dialog)
    suite.press_ok(dialog)
    desk.wait_until_closed("Progress")
    if charger.profiles()[1]["active"]:
        raise Stuck("the change is not on the charger")


def read(desk, album, suite, charger):
    charger.tell("fault slow=0.3")
    suite.press(suite.READ)
    album.take_moving("read", desk.wait_for_window("Progress"))
    desk.wait_until_closed("Progress")
    charger.tell("clear")


def look_at_sizes(desk, album, suite):
    for width, height in ((700, 350), (1600, 1000)):
        suite.window.resize(width, height)
        album.take("window-%dx%d" % (width, height), suite.window)
    suite.window.resize(*COMPACT)


def fail(desk, album, suite, charger):
    charger.tell("hardware 24v")
    suite.press(suite.SAVE)
    dialog = desk.wait_for_window("Progress")
    suite.wait_for_success(dialog)
    album.take("other-charger", dialog)
    suite.press_ok(dialog)
    desk.wait_until_closed("Progress")
    album.take("disconnected", suite.window)

    charger.tell("fault silent")
    dialog = suite.open_connect_dialog()
    suite.press_connect(dialog)
    box = desk.wait_for_window("Failed!")
    album.take("failed", box)
    album.take("try-again", dialog)
    desk.key("Escape")
    desk.wait_until_closed("Failed!")
    desk.wait_until_closed("Connect")

    choose_model(desk, album, suite)
    import_strange_pages(desk, album, suite, charger)
    disconnect_without_port(desk, album, suite, charger)


def import_strange_pages(desk, album, suite, charger):
    charger.tell("clear")
    charger.tell("hardware 48v")
    elements = charger.page()
    good = flashpage.encode_page(elements)
    damaged = bytearray(good)
    damaged[len(good) // 2] ^= 1
    strange = (
        ("invalid-checksum", bytes(damaged)),
        ("no-page-count", flashpage.encode_page(elements[1:])),
    )
    for name, image in strange:
        file = desk.folder / "strange.hex"
        file.write_text(flashpage.to_hex(image), encoding="ascii")
        charger.tell("page %s" % file)
        suite.press_connect(suite.open_connect_dialog())
        close_box(desk, album, name, "Import from HEX status")
        desk.wait_until_closed("Connect")


def disconnect_without_port(desk, album, suite, charger):
    charger.tell("hardware 72v")
    suite.press_connect(suite.open_connect_dialog())
    suite.wait_until_connected()
    charger.tell("unplug")
    suite.press(suite.DISCONNECT)
    close_box(desk, album, "no-reset", "Failed Opening Serial Port")


def update_firmware(desk, album, suite):
    """With the cable of the last charger pulled, so that this one's port is the only one."""
    charger = desk.plug_in("--hardware", "48v", "--with-parent")
    suite.window.click(20, 10)
    desk.key("Up", "Up", "Return")
    tool = desk.wait_for_window("Velantor Firmware Tool")
    album.take("firmware-fresh", tool)
    tool.click(*UPDATE_FIRMWARE)
    close_box(desk, album, "firmware-no-file", "No File")
    tool.click(66, 10)
    desk.key("Down", "Return")
    close_box(desk, album, "firmware-help", "Basic Usage")
    type_file(desk, tool, "x" * 200 + ".hex")
    album.take("firmware-long-name", tool)
    tool.click(*UPDATE_FIRMWARE)
    close_box(desk, album, "firmware-wrong-file", "Wrong File")
    type_file(desk, tool, "v1.039.velantor")
    album.take("firmware", tool)

    charger.tell("fault silent")
    tool.click(*UPDATE_FIRMWARE)
    album.take_moving("firmware-starting", tool)
    close_box(desk, album, "firmware-no-answer", "Flashing Error!")
    album.take("firmware-after-error", tool)

    charger.tell("clear")
    type_file(desk, tool, "missing.velantor")
    tool.click(*UPDATE_FIRMWARE)
    box = desk.wait_for_window("Unknown Error!")
    album.take_moving("firmware-hung", tool)
    album.take("firmware-watchdog", box)
    desk.key("Escape")
    desk.wait_until_closed("Unknown Error!")

    for fault in ("slow=0.02", "slow-erase=0.1"):
        charger.tell("fault " + fault)
    type_file(desk, tool, "v1.039.velantor")
    tool.click(*UPDATE_FIRMWARE)
    album.take_moving("firmware-erasing", tool)
    wait_for_step(desk, "uploading")
    desk.wait_until("rows are written", follow(charger, 100))
    album.take_moving("firmware-uploading", tool)
    wait_for_step(desk, "verifying")
    desk.wait_until("rows are compared", follow(charger, 100))
    album.take_moving("firmware-verifying", tool)
    charger.tell("clear")
    desk.wait_until("the charger is reset", lambda: charger.state()["mode"] == "left", 60)
    album.take("firmware-done", tool)
    tool.click(*CLOSE)
    desk.wait_until_closed("Velantor Firmware Tool")


def type_file(desk, tool, name):
    tool.click(*FIRMWARE_FILE)
    desk.key("ctrl+a")
    desk.xdotool("type", name)


def wait_for_step(desk, name):
    """Waits until a flash has come to a step, which the suite prints."""
    log = desk.folder / "suite.log"
    line = "Entering %s state" % name
    desk.wait_until(line, lambda: line in log.read_text(errors="replace"), 60)


def follow(charger, commands):
    """A check that is true as soon as the charger has got so many commands more."""
    goal = charger.commands() + commands
    return lambda: charger.commands() >= goal


def main(arguments):
    if len(arguments) not in (2, 3, 4):
        sys.exit(__doc__.strip())
    wanted = GUIDE if len(arguments) == 2 else ()
    output = virtualdesk.ROOT / "docs" / "images"
    if len(arguments) > 2:
        output = pathlib.Path(arguments[2])
    output.mkdir(parents=True, exist_ok=True)
    scale = int(arguments[3]) if len(arguments) == 4 else 1
    try:
        desk = Desk(arguments[1], scale, window_manager="openbox", size=(1680, 1050))
        with ending_cleanly(), desk:
            try:
                play(desk, Album(desk, output, wanted))
            except Stuck:
                desk.save_screen(output / "stuck.png")
                raise
    except Stuck as stuck:
        sys.exit("FAILED: %s" % stuck)


if __name__ == "__main__":
    main(sys.argv)
