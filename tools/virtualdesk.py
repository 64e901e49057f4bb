"""A desk without a screen: a virtual display, a home of its own, and on it the real suite beside a
simulated charger. What the suite shows is read from the display's memory, what the user would do
is done with its pointer and keys.

Needs the programs Xvfb, xdotool and, for pictures, ImageMagick's convert and import.
"""

import base64
import contextlib
import ctypes
import json
import mmap
import os
import pathlib
import shutil
import signal
import socket
import struct
import subprocess
import sys
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
sys.dont_write_bytecode = True  # nothing is left in the source tree
sys.path.insert(0, str(ROOT / "tests" / "support"))

import flashpage  # noqa: E402 (its folder is known only now)

PR_SET_PDEATHSIG = 1
LIBC = ctypes.CDLL(None)


class Stuck(Exception):
    """What did not happen, in words."""


@contextlib.contextmanager
def ending_cleanly():
    """Lets the signals that end a program unwind it, so that nothing that it started is left."""

    def end(number, _frame):
        sys.exit(128 + number)

    signals = (signal.SIGTERM, signal.SIGHUP, signal.SIGINT)
    before = [signal.signal(number, end) for number in signals]
    try:
        yield
    finally:
        for number, handler in zip(signals, before):
            signal.signal(number, handler)


class Area:
    """Pixels of a part of the screen, three bytes each, at known coordinates."""

    def __init__(self, left, top, width, rows):
        self.left, self.top, self.width, self.rows = left, top, width, rows

    def darkest(self):
        """The least brightness, 0 to 255, of any pixel."""
        return min(max(row[at : at + 3]) for row in self.rows for at in range(0, len(row), 3))

    def find(self, picture):
        """The top left corners, in screen coordinates, of all places that show a picture, from
        top to bottom. Of a picture only its opaque pixels count."""
        found = []
        first = picture.runs[0]
        for y in range(len(self.rows) - picture.height + 1):
            at = self.rows[y + first.y].find(first.data)
            while at >= 0:
                x = at // 3 - first.x
                if at % 3 == 0 and x >= 0 and self._shows(picture, x, y):
                    found.append((self.left + x, self.top + y))
                at = self.rows[y + first.y].find(first.data, at + 1)
        return found

    def _shows(self, picture, x, y):
        return all(
            self.rows[y + run.y].startswith(run.data, 3 * (x + run.x)) for run in picture.runs
        )


class Run:
    """Opaque pixels side by side."""

    def __init__(self, x, y, data):
        self.x, self.y, self.data = x, y, data


class Picture:
    """A picture of the suite as the screen shows it, longest run of opaque pixels first."""

    def __init__(self, file):
        command = ["convert", str(file), "-depth", "8"]
        head = subprocess.run(
            command + ["-format", "%w %h", "info:"], check=True, capture_output=True
        )
        self.width, self.height = map(int, head.stdout.split())
        data = subprocess.run(command + ["rgba:-"], check=True, capture_output=True).stdout
        self.runs = []
        for y in range(self.height):
            row = data[4 * self.width * y :][: 4 * self.width]
            start = None
            for x in range(self.width + 1):
                opaque = x < self.width and row[4 * x + 3] == 255
                if opaque and start is None:
                    start = x
                elif not opaque and start is not None:
                    self.runs.append(Run(start, y, without_fourth_bytes(row[4 * start : 4 * x])))
                    start = None
        self.runs.sort(key=lambda run: -len(run.data))


def without_fourth_bytes(data):
    triples = bytearray(len(data) // 4 * 3)
    for channel in range(3):
        triples[channel::3] = data[channel::4]
    return bytes(triples)


class Screen:
    """The pixels of a virtual display, which lie in a file in the X window dump format."""

    def __init__(self, file):
        with open(file, "rb") as opened:
            self.memory = mmap.mmap(opened.fileno(), 0, access=mmap.ACCESS_READ)
        header = struct.unpack(">25I", self.memory[:100])
        self.width, self.height = header[4], header[5]
        self.stride = header[12]
        self.start = header[0] + 12 * header[19]
        if header[11] != 32:
            raise Stuck("the display has %d bits per pixel" % header[11])

    def area(self, left, top, width, height):
        left, top = max(left, 0), max(top, 0)
        right, bottom = min(left + width, self.width), min(top + height, self.height)
        rows = []
        for y in range(top, bottom):
            start = self.start + y * self.stride
            pixels = self.memory[start + 4 * left : start + 4 * right]
            row = bytearray(without_fourth_bytes(pixels))
            row[0::3], row[2::3] = row[2::3], row[0::3]  # blue stands first there
            rows.append(bytes(row))
        return Area(left, top, right - left, rows)


class Window:
    """A window of the suite; places in it are given in pixels of an ordinary screen."""

    def __init__(self, desk, number):
        self.desk, self.number = desk, number
        self.frame = None

    @property
    def title(self):
        return self.desk.xdotool("getwindowname", self.number).rstrip("\n")

    def geometry(self):
        """Left, top, width and height in pixels of the screen."""
        values = self.desk.shell_values("getwindowgeometry", "--shell", self.number)
        left, top = self.frame_error(values["X"], values["Y"])
        return values["X"] - left, values["Y"] - top, values["WIDTH"], values["HEIGHT"]

    def frame_error(self, x, y):
        """How far xdotool is off: it counts the frame of a window manager twice. The pointer,
        moved into the window's corner, tells the truth."""
        if not self.desk.window_manager:
            return 0, 0
        if self.frame is None:
            corner = ("mousemove", "--window", self.number, "0", "0", "getmouselocation", "--shell")
            values = self.desk.shell_values(*corner)
            self.desk.take_pointer_away()
            self.frame = x - values["X"], y - values["Y"]
        return self.frame

    def area(self):
        return self.desk.screen.area(*self.geometry())

    def click(self, x, y):
        """Clicks; a negative place counts from the right or the bottom edge."""
        left, top, width, height = self.geometry()
        scale = self.desk.scale
        self.desk.click_at(
            left + x * scale + (width if x < 0 else 0),
            top + y * scale + (height if y < 0 else 0),
        )

    def resize(self, width, height):
        wanted = (width * self.desk.scale, height * self.desk.scale)
        self.desk.xdotool("windowsize", self.number, *wanted)
        self.desk.wait_until(
            "the window has its new size", lambda: self.geometry()[2:] == wanted
        )

    def text_is_black(self, x, y, width, height):
        """Whether anything dark is written there: the text of a button that can be pressed."""
        left, top, own_width, own_height = self.geometry()
        scale = self.desk.scale
        area = self.desk.screen.area(
            left + x * scale + (own_width if x < 0 else 0),
            top + y * scale + (own_height if y < 0 else 0),
            width * scale,
            height * scale,
        )
        return area.darkest() < 100


class Charger:
    """A simulated charger, reached through its socket."""

    def __init__(self, process, socket_path, folder):
        self.process, self.socket_path, self.folder = process, socket_path, folder
        self.port = process.stdout.readline().decode().strip()
        if not self.port:
            raise Stuck("the simulated charger does not start")

    def tell(self, command):
        """Sends a command and returns the lines of the answer before its "ok"."""
        with socket.socket(socket.AF_UNIX) as connection:
            connection.settimeout(10)
            connection.connect(str(self.socket_path))
            connection.sendall(command.encode() + b"\n")
            lines = []
            for line in connection.makefile():
                if line.startswith("error"):
                    raise Stuck("the simulated charger, told to %s: %s" % (command, line.strip()))
                if line == "ok\n":
                    return lines
                lines.append(line.rstrip("\n"))
        raise Stuck("the simulated charger does not answer to %s" % command)

    def state(self):
        return dict(line.split(" ", 1) for line in self.tell("state"))

    def commands(self):
        """How many commands it has got so far."""
        return int(self.state()["commands"])

    def page(self):
        """The elements of the page in its memory, as a reader sees them that shares nothing with
        the suite."""
        image = self.folder / "page.hex"
        self.tell("save %s" % image)
        try:
            return flashpage.decode_page(flashpage.from_hex(image.read_text(encoding="ascii")))
        except flashpage.PageError as error:
            raise Stuck("the charger's page: %s" % error) from None

    def profiles(self):
        """The profiles that count, in the order of the charger's list."""
        kept = [
            values
            for values in flashpage.latest(self.page())
            if values["element"].startswith("chemistry_")
            and not values["scheduled_for_deletion"]
        ]
        return sorted(kept, key=lambda values: values["profile_id"])


class Site:
    """A web server; tells about bundles and software what it is told to."""

    def __init__(self, process):
        self.process = process
        self.url = "http://127.0.0.1:%d" % int(process.stdout.readline())

    def publish(self, bundle, software, how="whole"):
        """The latest versions, told in one of the ways of webserver.py."""
        document = (
            "<updates>\n<current_version>%s</current_version>\n"
            "<download_link>%s/bundle</download_link>\n"
            '<os name="Linux">\n<sw_version>%s</sw_version>\n</os>\n</updates>\n'
        ) % (bundle, self.url, software)
        command = {
            "path": "/downloads/latest_bundle_info_new.xml",
            "status": 200,
            "body": base64.b64encode(document.encode()).decode(),
            "how": how,
        }
        self.process.stdin.write(json.dumps(command).encode() + b"\n")
        self.process.stdin.flush()
        self.process.stdout.readline()


class Desk:
    """The display and the home; a context manager that ends everything it started."""

    def __init__(self, programs, scale=1, window_manager=None, size=(1280, 1000)):
        self.programs = pathlib.Path(programs).resolve()
        self.scale = scale
        self.window_manager = window_manager
        self.size = size
        self.suite = None
        self.processes = []
        self.pictures = {}

    def __enter__(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="velantor-"))
        try:
            self._set_up()
        except BaseException:
            self.__exit__()
            raise
        return self

    def __exit__(self, *_exception):
        for process in reversed(self.processes):
            end_group(process)
        shutil.rmtree(self.folder, ignore_errors=True)

    def _set_up(self):
        for name in ("home", "data", "run", "screen"):
            (self.folder / name).mkdir(mode=0o700)
        self.environment = {
            "PATH": os.environ.get("PATH", os.defpath),
            "LANG": "C.UTF-8",
            "HOME": str(self.folder / "home"),
            "XDG_DATA_HOME": str(self.folder / "data"),
            "XDG_RUNTIME_DIR": str(self.folder / "run"),
            "QT_QPA_PLATFORM": "xcb",
            "QT_SCALE_FACTOR": str(self.scale),
        }
        self._start_display()
        if self.window_manager:
            self.start([self.window_manager])
            self.window_managed()

    def _start_display(self):
        reading, writing = os.pipe()
        width, height = (length * self.scale for length in self.size)
        command = ["Xvfb", "-displayfd", str(writing), "-nolisten", "tcp", "-noreset"]
        command += ["-dpi", "96", "-screen", "0", "%dx%dx24" % (width, height)]
        command += ["-fbdir", str(self.folder / "screen")]
        try:
            self.start(command, pass_fds=[writing])
        finally:
            os.close(writing)
        with os.fdopen(reading) as numbers:
            number = numbers.readline().strip()
        if not number:
            raise Stuck("the virtual display does not start")
        self.environment["DISPLAY"] = ":" + number
        self.screen = Screen(self.folder / "screen" / "Xvfb_screen0")

    def window_managed(self):
        """Waits for the window manager to be in charge."""

        def in_charge():
            return subprocess.run(
                ["xdotool", "get_num_desktops"],
                env=self.environment,
                capture_output=True,
                check=False,
            ).stdout.strip()

        self.wait_until("the window manager starts", in_charge)

    def start(self, command, **options):
        """Starts a program that ends with this one, as the head of a group of its own."""
        if not shutil.which(command[0]):
            raise Stuck("%s is not installed" % command[0])
        parent = os.getpid()

        def follow_parent():
            LIBC.prctl(PR_SET_PDEATHSIG, signal.SIGTERM)
            if os.getppid() != parent:
                os._exit(1)

        process = subprocess.Popen(
            [str(word) for word in command],
            env=self.environment,
            cwd=self.folder,
            start_new_session=True,
            preexec_fn=follow_parent,
            **dict(dict.fromkeys(("stdin", "stdout", "stderr"), subprocess.DEVNULL), **options),
        )
        self.processes.append(process)
        return process

    def plug_in(self, *options):
        """Starts a simulated charger among the ports."""
        number = len(self.processes)
        control = self.folder / ("charger-%d" % number)
        command = [self.programs / "velantor-sim", "--control", control, *options]
        process = self.start(command, stdout=subprocess.PIPE, stderr=None)
        return Charger(process, control, self.folder)

    def open_site(self):
        """Starts a web server that the suite takes for the maker's site."""
        script = ROOT / "tests" / "support" / "webserver.py"
        process = self.start(
            [sys.executable, script], stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=None
        )
        site = Site(process)
        self.environment["VELANTOR_SITE"] = site.url
        return site

    def choose_updates(self, automatic):
        """Answers in advance what the suite asks at its first start."""
        working = self.folder / "data" / "velantor-suite"
        working.mkdir(parents=True, exist_ok=True)
        value = "true" if automatic else "false"
        (working / "config.txt").write_text("automatic_updates %s\n" % value, encoding="ascii")

    def open_suite(self):
        """Starts the suite and returns its window once it is painted."""
        log = open(self.folder / "suite.log", "wb")
        with log:
            self.suite = self.start(
                [self.programs / "velantor-suite"], stdout=log, stderr=subprocess.STDOUT
            )
        window = self.wait_for_window("Velantor Software Suite For Firmware v1.0+")
        self.wait_until("the tool bar is painted", lambda: self.shown("LEDoff.png", window))
        return window

    def xdotool(self, *arguments):
        done = subprocess.run(
            ["xdotool", *map(str, arguments)],
            env=self.environment,
            capture_output=True,
            text=True,
            check=False,
        )
        return done.stdout

    def shell_values(self, *arguments):
        """The numbers that xdotool tells as lines of NAME=NUMBER."""
        lines = self.xdotool(*arguments).split()
        if not lines:
            raise Stuck("a window has gone; %s" % self.state_text())
        return {name: int(value) for name, value in (line.split("=") for line in lines)}

    def take_pointer_away(self):
        self.xdotool("mousemove", self.screen.width - 1, self.screen.height - 1)

    def windows(self):
        """The windows of the suite that are on screen, with their titles."""
        numbers = self.xdotool("search", "--onlyvisible", "--class", "velantor-suite").split()
        return [(window.title, window) for window in (Window(self, n) for n in numbers)]

    def window(self, title):
        """The window with that title, or None."""
        return dict(self.windows()).get(title)

    def wait_for_window(self, title, seconds=20):
        return self.wait_until(
            'the window "%s" opens' % title, lambda: self.window(title), seconds
        )

    def wait_until_closed(self, title, seconds=20):
        self.wait_until(
            'the window "%s" closes' % title, lambda: not self.window(title), seconds
        )

    def wait_until(self, what, check, seconds=20):
        """The first true value of check(); Stuck when there is none in time."""
        deadline = time.monotonic() + seconds
        while True:
            value = check()
            if value:
                return value
            if time.monotonic() > deadline or not self.suite_runs():
                raise Stuck("did not happen: %s; %s" % (what, self.state_text()))
            time.sleep(0.03)

    def suite_runs(self):
        return self.suite is None or self.suite.poll() is None

    def state_text(self):
        """What there is to be seen instead."""
        if not self.suite_runs():
            output = (self.folder / "suite.log").read_text(errors="replace")
            return "the suite ended with %d:\n%s" % (self.suite.returncode, output)
        return "on screen: %s" % ", ".join('"%s"' % title for title, _ in self.windows())

    def picture(self, name):
        if name not in self.pictures:
            stem, dot, extension = name.partition(".")
            dense = "@2x" if self.scale == 2 else ""
            file = ROOT / "resources" / "images" / (stem + dense + dot + extension)
            self.pictures[name] = Picture(file)
        return self.pictures[name]

    def shown(self, name, window):
        """The places in a window that show a picture of the suite."""
        return window.area().find(self.picture(name))

    def click_at(self, x, y):
        """Clicks at a place of the screen, and takes the pointer away."""
        self.xdotool("mousemove", int(x), int(y), "click", "1")
        self.take_pointer_away()

    def click_picture(self, name, window):
        """Clicks a button by its picture, once the button is there and enabled."""
        place = self.wait_until(
            "the button of %s can be pressed" % name, lambda: self.shown(name, window)
        )[0]
        half = self.picture(name).width // 2
        self.click_at(place[0] + half, place[1] + half)

    def wait_until_still(self, window):
        """Waits until a window has stopped changing its looks."""
        looks = [window.area().rows]

        def still():
            looks.append(window.area().rows)
            return len(looks) > 5 and all(rows == looks[-1] for rows in looks[-5:])

        self.wait_until("the window comes to rest", still)

    def key(self, *names):
        self.xdotool("key", *names)

    def save_screen(self, file):
        """Saves the whole screen."""
        self._import(["-window", "root"], file)

    def save_window(self, window, file):
        """Saves a window, with its frame where it has one, and what lies before it."""
        frame = ["-frame"] if self.window_manager else []
        self._import([*frame, "-screen", "-window", window.number], file)

    def _import(self, options, file):
        subprocess.run(
            ["import", "-silent", *options, "-strip", "-colors", "256", "png8:%s" % file],
            env=self.environment,
            check=True,
            stderr=subprocess.DEVNULL,
        )


def end_group(process):
    """Ends a program and what it started."""
    for number in (signal.SIGTERM, signal.SIGKILL):
        with contextlib.suppress(ProcessLookupError):
            os.killpg(process.pid, number)
        with contextlib.suppress(subprocess.TimeoutExpired):
            process.wait(timeout=3)


class MainWindow:
    """What the suite's window shows and what can be done in it."""

    CONNECT, CONNECTED = "LEDoff.png", "LEDon.png"
    DISCONNECT, READ, SAVE = "redLEDon.png", "download.png", "upload.png"
    LAMP_ON, LAMP_OFF = "greenlight.PNG", "nolight.PNG"

    def __init__(self, desk):
        self.desk = desk
        self.window = desk.open_suite()

    def press(self, picture):
        self.desk.click_picture(picture, self.window)

    def wait_until_shown(self, picture, seconds=20):
        self.desk.wait_until(
            "%s is shown" % picture, lambda: self.desk.shown(picture, self.window), seconds
        )

    def rows(self):
        """The list as it is seen, from top to bottom: (active, default, place of the lamp)."""
        area = self.window.area()
        lamps = [(place, True) for place in area.find(self.desk.picture(self.LAMP_ON))]
        lamps += [(place, False) for place in area.find(self.desk.picture(self.LAMP_OFF))]
        rows = []
        for (x, y), active in sorted(lamps, key=lambda lamp: lamp[0][1]):
            rows.append((active, self._is_default(x, y), (x, y)))
        return rows

    def _is_default(self, x, y):
        # The letter stands in a square of 20, 22 to the right of the lamp and 2 above it.
        scale = self.desk.scale
        letter = self.desk.screen.area(x + 22 * scale, y - 2 * scale, 20 * scale, 20 * scale)
        return letter.darkest() < 60

    def wait_for_rows(self, what, check):
        return self.desk.wait_until(what, lambda: check(self.rows()))

    def select(self, row):
        self._click_in_row(row, -95, 8)

    def click_lamp(self, row):
        self._click_in_row(row, 8, 8)

    def make_default(self, row):
        self._click_in_row(row, 32, 8)

    def delete(self, row):
        self._click_in_row(row, 53, 6)

    def _click_in_row(self, row, x, y):
        """x and y from the corner of the row's lamp."""
        left, top = self.rows()[row][2]
        scale = self.desk.scale
        self.desk.click_at(left + x * scale, top + y * scale)

    def move_up(self):
        self.window.click(54, self._below_menus() + self._height() - 90 - 31 + 10)

    def move_down(self):
        self.window.click(158, self._below_menus() + self._height() - 90 - 31 + 10)

    def delete_all(self):
        self.window.click(194, self._below_menus() + 18)

    def edit(self):
        """Presses "Edit Profile", down or up."""
        self._click_in_pane(self._pane()[2] - 58, 24)

    def override_defaults(self):
        self._click_in_pane(self._pane()[1], 247)

    def cancel(self):
        """Presses "Cancel" beside a profile."""
        self.window.click(269, self._below_menus() + 18)

    def view_device_settings(self):
        self.window.click(106, self._below_menus() + self._height() - 97 + 15)

    def save_device_settings(self):
        self._click_below_page(-8 - 95)

    def cancel_device_settings(self):
        self._click_below_page(7 + 95)

    def load_defaults(self):
        self._click_in_pane(self._pane()[1] + 7 + 190 - 52, 21)

    def add_profile(self):
        self.window.click(60, self._below_menus() + 18)

    def model(self):
        """Opens the list of models, left of the logo."""
        self.window.click(-130, self._below_menus() - 17)

    def click_in_page(self, x, y):
        """x from the middle of the pane, y from the upper edge of what stands in the window."""
        self._click_in_pane(self._pane()[1] + x, y)

    def type_in_page(self, x, y, text):
        """Types into the field at a place of click_in_page()."""
        self.click_in_page(x, y)
        self.desk.key("ctrl+a", *text, "Return")

    def _click_below_page(self, x):
        self._click_in_pane(self._pane()[1] + x, 3 + self._height() - 70 - 35 + 14)

    def _click_in_pane(self, x, y):
        self.window.click(x, self._below_menus() + y)

    def _pane(self):
        """Left edge, middle and right edge of the pane beside the list."""
        width = self.window.geometry()[2] // self.desk.scale
        return 212, 212 + (width - 216) // 2, 212 + width - 217

    def _height(self):
        return self.window.geometry()[3] // self.desk.scale

    def _below_menus(self):
        """The height of menu and tool bar: the first row's lamp is 52 below them."""
        top = self.window.geometry()[1]
        return (self.rows()[0][2][1] - top) // self.desk.scale - 52

    def open_connect_dialog(self):
        self.press(self.CONNECT)
        return self.desk.wait_for_window("Connect")

    def wait_for_connect_button(self, dialog):
        """Waits until there is a port to choose."""
        self.desk.wait_until("a port appears", lambda: dialog.text_is_black(-80, -32, 44, 20))

    @staticmethod
    def press_connect(dialog):
        dialog.click(-60, -23)

    def wait_until_connected(self):
        self.desk.wait_until_closed("Connect")
        self.wait_until_shown(self.CONNECTED)

    def read(self, charger):
        """Reads the charger once more, to the end; the dialog may come and go unseen."""
        before = charger.commands()
        self.press(self.READ)
        self.desk.wait_until("the charger is read", lambda: charger.commands() > before)
        self.desk.wait_until_closed("Progress")

    def wait_for_success(self, dialog):
        """Waits until a transfer's dialog can be closed with its button."""

        def ended():
            boxes = len(self.desk.windows()) - 2
            return boxes == 0 and dialog.text_is_black(-70, -30, 36, 20)

        self.desk.wait_until("the transfer ends", ended, seconds=30)

    @staticmethod
    def press_ok(dialog):
        dialog.click(-52, -20)
