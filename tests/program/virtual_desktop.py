"""A desktop of its own on a virtual screen: window manager and sound server without a sound
card; and, for each session there, message bus with the accessibility bus, and file manager."""

import contextlib
import os
import pathlib
import shutil
import signal
import subprocess
import tempfile

from accessibility_bus import AccessibilityBus
from waiting import PATIENCE, wait_until

SCREEN_WIDTH = 1280
SCREEN_HEIGHT = 1024

FILE_MANAGER = "pcmanfm-qt"

# Of a message bus that starts nothing by itself but what is in one folder.
BUS = """<busconfig>
<type>session</type>
<listen>unix:dir=/tmp</listen>
<servicedir>{services}</servicedir>
<policy context="default">
<allow send_destination="*" eavesdrop="true"/><allow eavesdrop="true"/><allow own="*"/>
</policy>
</busconfig>
"""


class VirtualDesktop(contextlib.ExitStack):
    """Starts everything on entering and ends everything on leaving.

    root is a new folder that holds the logs of the desktop's own programs and a folder
    for each session: its home folder, the temporary folder that its programs see, and
    their logs.
    """

    pointer_rests_at = (0, SCREEN_HEIGHT - 1)

    def __init__(self, language="C.UTF-8", window_manager="openbox"):
        super().__init__()
        self._language = language
        self._window_manager = window_manager
        self.root = None
        self.environment = None
        self._folder = None
        self._session = self.enter_context(contextlib.ExitStack())
        self._programs = self  # the desktop's own, as long as it starts
        self._sessions = 0

    def __enter__(self):
        super().__enter__()
        try:
            self._start()
            self.begin_session()
        except BaseException:
            self.close()
            raise
        return self

    @property
    def home(self):
        return self._folder / "home"

    @property
    def temporary(self):
        return self._folder / "tmp"

    def begin_session(self):
        """Ends the session before: whatever runs in its home. The new one has a message bus
        and folders of its own, and the pointer where it is over none of its windows."""
        self._begin_account()
        # The address of the accessibility bus that has just ended.
        self.run("xprop", "-root", "-remove", "AT_SPI_BUS")
        self._start_bus()
        # As in any session, accessibility is there before the programs that ask for it: Qt
        # may miss it where a reader has it started at the same moment.
        AccessibilityBus(self).programs()
        self.run("xdotool", "mouseup", "1", "mousemove", *map(str, self.pointer_rests_at))

    def log_path(self, program):
        """Where a program's standard output and error go."""
        return self._folder / f"{program}.log"

    def log(self, program):
        """What program has written to its standard output and error so far."""
        path = self.log_path(program)
        return path.read_text(errors="replace") if path.exists() else ""

    def logs(self):
        """What all programs of the session have written so far."""
        logs = sorted(self._folder.glob("*.log"))
        return "\n".join(f"{log.stem} said:\n{self.log(log.stem)}" for log in logs)

    def start(self, program, *arguments, **options):
        """Starts a program on this desktop; it ends with the session at the latest."""
        log = self._programs.enter_context(open(self.log_path(program.split("/")[-1]), "ab"))
        process = subprocess.Popen(
            # Whoever kills the test takes its programs along.
            ["/usr/bin/setpriv", "--pdeathsig", "KILL", program, *arguments],
            env=options.pop("env", self.environment),
            cwd=self.environment["HOME"],
            stdin=subprocess.DEVNULL,
            stdout=options.pop("stdout", log),
            stderr=log,
            start_new_session=True,
            **options,
        )
        self._programs.callback(_end, process)
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

    def _begin_account(self):
        """Ends the session before, and makes the folders of the new one."""
        self._session.close()
        self._programs = self._session
        self._sessions += 1
        self._folder = self.root / str(self._sessions)
        self._folder.mkdir()
        for folder in (self.home, self.temporary):
            folder.mkdir(mode=0o700)
        self.environment |= {
            "HOME": str(self.home),
            "TMPDIR": str(self.temporary),
            "XDG_DATA_HOME": str(self.home / ".local" / "share"),
            "XDG_CONFIG_HOME": str(self.home / ".config"),
            "XDG_CACHE_HOME": str(self.home / ".cache"),
        }
        # Also what others have started for it: the bus, or a file manager its archiver.
        self._session.callback(_kill_all_at_home, self.home)

    def _start(self):
        self._prepare()
        self._start_screen()
        if self._window_manager:
            self.start(self._window_manager)
        self._start_sound()
        if self._window_manager:
            wait_until(
                self._managed,
                lambda: "the window manager:\n" + self.log(self._window_manager),
            )

    def _prepare(self):
        """Makes the desktop's folder, and the environment of all that is started."""
        # Unix sockets live under it, whose paths must stay short.
        self.root = pathlib.Path(tempfile.mkdtemp(prefix="quibel-"))
        self.callback(shutil.rmtree, self.root, ignore_errors=True)
        self._folder = self.root
        runtime = self.root / "run"
        runtime.mkdir(mode=0o700)
        self.environment = {
            "PATH": "/usr/local/bin:/usr/bin:/bin:/usr/local/sbin:/usr/sbin:/sbin",
            "HOME": str(self.root),
            "LANG": self._language,
            "XDG_RUNTIME_DIR": str(runtime),
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

    def _start_bus(self, variable="DBUS_SESSION_BUS_ADDRESS", socket="bus"):
        bus = self.start(
            "dbus-daemon", self._bus_configuration(), "--nofork", "--nopidfile", "--print-address",
            f"--address=unix:path={self._folder}/{socket}",
            stdout=subprocess.PIPE,
        )  # fmt: skip
        address = bus.stdout.readline().decode().strip()
        bus.stdout.close()
        assert address, "No message bus:\n" + self.log("dbus-daemon")
        self.environment[variable] = address

    def _bus_configuration(self):
        """The bus' option that says what it may start by itself. The desktops that this
        machine has would change the window's look: of all there is, only accessibility."""
        services = self._folder / "services"
        services.mkdir()
        shutil.copy("/usr/share/dbus-1/services/org.a11y.Bus.service", services)
        configuration = self._folder / "bus.conf"
        configuration.write_text(BUS.format(services=services))
        return f"--config-file={configuration}"

    def _start_sound(self):
        self.start(
            "pulseaudio", "-n", "--daemonize=no", "--use-pid-file=no", "--exit-idle-time=-1",
            "--load", "module-native-protocol-unix auth-anonymous=1 auth-cookie-enabled=0",
            "--load", "module-null-sink sink_name=speakers norewinds=1",
        )  # fmt: skip
        wait_until(self._sounding, lambda: "the sound server:\n" + self.log("pulseaudio"))

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


def _kill_all_at_home(home):
    """Kills every process that has this folder for its home."""
    entry = f"HOME={home}".encode()
    for process in pathlib.Path("/proc").glob("[0-9]*"):
        try:
            if entry in (process / "environ").read_bytes().split(b"\0"):
                os.kill(int(process.name), signal.SIGKILL)
        except OSError:
            pass  # ended meanwhile, or another user's


def _end(process):
    process.terminate()
    try:
        process.wait(10)
    except subprocess.TimeoutExpired:
        process.kill()
        process.wait()
