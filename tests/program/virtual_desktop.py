"""A desktop of its own on a virtual screen: window manager, message bus with the
accessibility bus, sound server without a sound card, and file manager."""

import contextlib
import os
import pathlib
import shutil
import subprocess
import tempfile

from waiting import PATIENCE, wait_until

SCREEN_WIDTH = 1280
SCREEN_HEIGHT = 1024

FILE_MANAGER = "pcmanfm-qt"


class VirtualDesktop(contextlib.ExitStack):
    """Starts everything on entering and ends everything on leaving.

    root is a new folder that holds the home folder, the temporary folder that the
    programs see, and the logs of everything that runs here.
    """

    def __init__(self, language="C.UTF-8", window_manager="openbox"):
        super().__init__()
        self._language = language
        self._window_manager = window_manager
        self.root = None
        self.environment = None

    def __enter__(self):
        super().__enter__()
        try:
            self._start()
        except BaseException:
            self.close()
            raise
        return self

    @property
    def home(self):
        return self.root / "home"

    @property
    def temporary(self):
        return self.root / "tmp"

    def log(self, program):
        """What program has written to its standard output and error so far."""
        path = self.root / f"{program}.log"
        return path.read_text(errors="replace") if path.exists() else ""

    def start(self, program, *arguments, **options):
        """Starts a program on this desktop; it ends with the desktop at the latest."""
        log = self.enter_context(open(self.root / f"{program.split('/')[-1]}.log", "ab"))
        process = subprocess.Popen(
            # Whoever kills the test takes its programs along.
            ["/usr/bin/setpriv", "--pdeathsig", "KILL", program, *arguments],
            env=options.pop("env", self.environment),
            cwd=self.home,
            stdin=subprocess.DEVNULL,
            stdout=options.pop("stdout", log),
            stderr=log,
            start_new_session=True,
            **options,
        )
        self.callback(_end, process)
        return process

    def run(self, *command):
        """Runs a command on this desktop to its end and returns its output."""
        return subprocess.run(
            command, env=self.environment, check=True, capture_output=True, timeout=60 * PATIENCE
        ).stdout

    def start_file_manager(self):
        """Starts the file manager, which waits without a window until it is asked to
        show something."""
        self.start(FILE_MANAGER, "--daemon-mode")
        wait_until(self._manages_files, lambda: "the file manager:\n" + self.log(FILE_MANAGER))

    def screenshot(self, path):
        """Writes the whole screen as a picture."""
        self._grab(0, 0, SCREEN_WIDTH, SCREEN_HEIGHT, "-y", str(path))

    def pixels(self, x, y, width, height):
        """A part of the screen as bytes, three (red, green, blue) a pixel, by rows."""
        return self._grab(x, y, width, height, "-f", "rawvideo", "-pix_fmt", "rgb24", "-")

    def _grab(self, x, y, width, height, *output):
        screen = ["-f", "x11grab", "-draw_mouse", "0", "-video_size", f"{width}x{height}"]
        screen += ["-i", f"{self.environment['DISPLAY']}+{x},{y}", "-frames:v", "1"]
        return self.run("ffmpeg", "-nostdin", "-loglevel", "error", *screen, *output)

    def _start(self):
        # Unix sockets live under it, whose paths must stay short.
        self.root = pathlib.Path(tempfile.mkdtemp(prefix="quibel-"))
        self.callback(shutil.rmtree, self.root, ignore_errors=True)
        runtime = self.root / "run"
        for folder in (self.home, self.temporary, runtime):
            folder.mkdir(mode=0o700)
        self.environment = {
            "PATH": "/usr/local/bin:/usr/bin:/bin:/usr/local/sbin:/usr/sbin:/sbin",
            "HOME": str(self.home),
            "LANG": self._language,
            "TMPDIR": str(self.temporary),
            "XDG_RUNTIME_DIR": str(runtime),
            "XDG_DATA_HOME": str(self.home / ".local" / "share"),
            "XDG_CONFIG_HOME": str(self.home / ".config"),
            "XDG_CACHE_HOME": str(self.home / ".cache"),
            "QT_QPA_PLATFORM": "xcb",
            "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1",
            "PULSE_SERVER": f"unix:{runtime}/pulse/native",
        }
        for name, value in os.environ.items():
            if name.endswith("SAN_OPTIONS"):
                self.environment[name] = value
        if "ASAN_OPTIONS" in self.environment:
            # Qt is built without frame pointers: a leak of its own is known by a name
            # only if the stack is unwound without them.
            self.environment["ASAN_OPTIONS"] += ":fast_unwind_on_malloc=0:malloc_context_size=12"
        self._start_screen()
        self._start_bus()
        if self._window_manager:
            self.start(self._window_manager)
        self._start_sound()
        if self._window_manager:
            wait_until(
                self._managed,
                lambda: "the window manager:\n" + self.log(self._window_manager),
            )
        wait_until(self._sounding, lambda: "the sound server:\n" + self.log("pulseaudio"))

    def _start_screen(self):
        reading, writing = os.pipe()
        screen = f"{SCREEN_WIDTH}x{SCREEN_HEIGHT}x24"
        self.start(
            "Xvfb", "-displayfd", str(writing), "-screen", "0", screen, "-nolisten", "tcp", "-noreset",
            pass_fds=[writing],
        )  # fmt: skip
        os.close(writing)
        with open(reading, encoding="ascii") as pipe:
            number = pipe.readline().strip()
        assert number, "No virtual screen:\n" + self.log("Xvfb")
        self.environment["DISPLAY"] = ":" + number

    def _start_bus(self):
        bus = self.start(
            "dbus-daemon", "--session", "--nofork", "--nopidfile", "--print-address",
            f"--address=unix:path={self.environment['XDG_RUNTIME_DIR']}/bus",
            stdout=subprocess.PIPE,
        )  # fmt: skip
        address = bus.stdout.readline().decode().strip()
        bus.stdout.close()
        assert address, "No message bus:\n" + self.log("dbus-daemon")
        self.environment["DBUS_SESSION_BUS_ADDRESS"] = address

    def _start_sound(self):
        self.start(
            "pulseaudio", "-n", "--daemonize=no", "--use-pid-file=no", "--exit-idle-time=-1",
            "--load", "module-native-protocol-unix auth-anonymous=1 auth-cookie-enabled=0",
            "--load", "module-null-sink sink_name=speakers norewinds=1",
        )  # fmt: skip

    def _manages_files(self):
        # Its name appears on the bus a little before what it answers to.
        query = subprocess.run(
            ["dbus-send", "--session", "--print-reply", "--dest=org.freedesktop.FileManager1",
             "/org/freedesktop/FileManager1", "org.freedesktop.DBus.Introspectable.Introspect"],
            env=self.environment, capture_output=True,
        )  # fmt: skip
        return b"ShowItems" in query.stdout

    def _managed(self):
        # It names itself before it listens, and may lose a window that is opened in
        # between: it is there when it does what it is told.
        subprocess.run(
            ["xdotool", "set_num_desktops", "1"], env=self.environment, capture_output=True
        )
        properties = self.run("xprop", "-root", "_NET_NUMBER_OF_DESKTOPS")
        return properties.endswith(b"= 1\n")

    def _sounding(self):
        query = subprocess.run(["pactl", "info"], env=self.environment, capture_output=True)
        return query.returncode == 0


def _end(process):
    process.terminate()
    try:
        process.wait(10)
    except subprocess.TimeoutExpired:
        process.kill()
        process.wait()
