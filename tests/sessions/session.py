"""A person's session on Wayland: their account and language, the buses, sound, and a
file manager; what draws the screen is the subclass's."""

import contextlib
import pathlib
import shutil

from gi.repository import Gio, GLib

from spanish import LANGUAGE, locales
from virtual_desktop import VirtualDesktop
from waiting import PATIENCE, wait_until

WIDTH = 1280
HEIGHT = 860
SOCKET = "wayland-quibel"

PORTALS = pathlib.Path("/usr/share/xdg-desktop-portal/portals")
FILE_MANAGER = pathlib.Path(__file__).with_name("file_manager.py")

# The folders that an account is made with, in the person's language.
PERSONAL_FOLDERS = {
    "DESKTOP": "Escritorio",
    "DOCUMENTS": "Documentos",
    "DOWNLOAD": "Descargas",
    "MUSIC": "Música",
    "PICTURES": "Imágenes",
    "VIDEOS": "Vídeos",
}


class Session(VirtualDesktop):
    # What its programs know it by, and which portals it has.
    name = None
    portals = ()

    def __init__(self):
        super().__init__(LANGUAGE, window_manager=None)
        self._bus = None

    def call(self, name, path, method, signature="()", *arguments, interface=None):
        """Calls a method on the session's bus and returns all that it answers."""
        answer = self._bus.call_sync(
            name, path, interface or name, method, GLib.Variant(signature, arguments),
            None, Gio.DBusCallFlags.NONE, round(15000 * PATIENCE),
        )  # fmt: skip
        return answer.unpack()

    def revealed(self):
        """The addresses of the files that the file manager was asked to show."""
        return self.log(FILE_MANAGER.stem).splitlines()[1:]

    def __enter__(self):
        # Unlike its parent it begins no session yet: that takes a while here.
        contextlib.ExitStack.__enter__(self)
        try:
            self._start()
        except BaseException:
            self.close()
            raise
        return self

    def begin_session(self):
        """Ends the session before, and begins one with nothing left of it."""
        self._begin_account()
        self._fill_account()
        runtime = self._folder / "run"
        runtime.mkdir(mode=0o700)
        self.environment |= {
            "LOCPATH": str(locales()),
            "XDG_RUNTIME_DIR": str(runtime),
            "XDG_CURRENT_DESKTOP": self.name,
            "XDG_SESSION_TYPE": "wayland",
            "XDG_DESKTOP_PORTAL_DIR": str(self._choose_portals()),
            "LIBGL_ALWAYS_SOFTWARE": "1",
            "WAYLAND_DISPLAY": SOCKET,
        }
        self._prepare_shell()
        self._start_bus("DBUS_SYSTEM_BUS_ADDRESS", "system")
        self._start_bus()
        self._bus = self._programs.enter_context(
            _connection(self.environment["DBUS_SESSION_BUS_ADDRESS"])
        )
        self._start_file_manager()
        self._start_shell()

    def _start(self):
        self._prepare()
        # Qt finds out by itself.
        del self.environment["QT_QPA_PLATFORM"]
        self._start_sound()

    def _bus_configuration(self):
        return "--session"  # it may start all that the machine has

    def _prepare_shell(self):
        """Settles the environment before anything is started."""

    def _start_shell(self):
        """Starts what draws the screen, and waits for it."""
        raise NotImplementedError

    def _start_file_manager(self):
        log = self._programs.enter_context(open(self.log_path(FILE_MANAGER.stem), "ab"))
        self.start("/usr/bin/python3", "-B", str(FILE_MANAGER), stdout=log)
        wait_until(
            lambda: self.log(FILE_MANAGER.stem), lambda: "the file manager:\n" + self.log("python3")
        )

    def _choose_portals(self):
        """A folder with this desktop's portals, of all that the machine has."""
        folder = self._folder / "portals"
        folder.mkdir()
        for portal in self.portals:
            shutil.copy(PORTALS / f"{portal}.portal", folder)
        return folder

    def _fill_account(self):
        settings = self.home / ".config"
        settings.mkdir()
        lines = []
        for key, name in PERSONAL_FOLDERS.items():
            (self.home / name).mkdir()
            lines.append(f'XDG_{key}_DIR="$HOME/{name}"\n')
        (settings / "user-dirs.dirs").write_text("".join(lines))


@contextlib.contextmanager
def _connection(address):
    flags = Gio.DBusConnectionFlags
    connection = Gio.DBusConnection.new_for_address_sync(
        address, flags.AUTHENTICATION_CLIENT | flags.MESSAGE_BUS_CONNECTION
    )
    try:
        yield connection
    finally:
        with contextlib.suppress(GLib.Error):  # the bus may have ended first
            connection.close_sync()
