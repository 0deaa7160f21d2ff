"""Has Quibel write a ringtone on a virtual desktop of each file manager, and looks
whether it is pointed out there; then whether its folder is opened where no file
manager answers. Prints where a picture of each lies.
Run as: reveal.py FOLDER-OF-THE-PROGRAMS FOLDER-FOR-THE-PICTURES
"""

import os
import pathlib
import signal
import sys
import traceback

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "program"))

import songs  # noqa: E402
from accessible import Screen  # noqa: E402
from quibel import CREATE, Quibel, SAVE_PANEL  # noqa: E402
from virtual_desktop import VirtualDesktop  # noqa: E402
from waiting import wait_until  # noqa: E402

INTERFACE = "org.freedesktop.FileManager1"

# How the message bus of a desktop with only that program as its file manager would
# start it.
FILE_MANAGERS = {
    "thunar": "/usr/bin/thunar --daemon",
    # Drawn by OpenGL in software, its window comes to nothing else.
    "nautilus": "/usr/bin/env GSK_RENDERER=cairo /usr/bin/nautilus --gapplication-service",
    "dolphin": "/usr/bin/dolphin --daemon",
    "pcmanfm-qt": "/usr/bin/pcmanfm-qt --daemon-mode",
}

# What opens a folder where no file manager answers.
OPENER = "pcmanfm-qt"


class Desk(VirtualDesktop):
    """A desktop whose file manager is command, and whose folders are opened by
    OPENER where that does not answer."""

    def __init__(self, command):
        super().__init__()
        self._command = command

    def __enter__(self):
        super().__enter__()
        settings = self.home / ".config"
        settings.mkdir(exist_ok=True)
        (settings / "mimeapps.list").write_text(
            f"[Default Applications]\ninode/directory={OPENER}.desktop\n"
        )
        # Comes before the services of the machine's own file managers.
        services = pathlib.Path(self.environment["XDG_RUNTIME_DIR"]) / "dbus-1" / "services"
        services.mkdir(parents=True, exist_ok=True)
        (services / f"{INTERFACE}.service").write_text(
            f"[D-BUS Service]\nName={INTERFACE}\nExec={self._command}\n"
        )
        self._ask_bus("ReloadConfig")
        return self

    def start_file_manager(self):
        """As the first message to it would."""
        wait_until(self._manages_files, lambda: "the file manager:\n" + self.log("dbus-daemon"))

    def start_one_that_hangs(self):
        self.start_file_manager()
        answer = self._ask_bus("GetConnectionUnixProcessID", f"string:{INTERFACE}")
        process = int(answer.split()[-1])
        os.kill(process, signal.SIGSTOP)
        self.callback(os.kill, process, signal.SIGKILL)

    def export(self, build, before_the_end):
        """Has Quibel write a ringtone into a folder with other files, and calls
        before_the_end when all that is left is to confirm its name. Returns its path."""
        folder = self.home / "tonos"
        folder.mkdir()
        for other in ("antes.m4r", "zeta.m4r"):
            (folder / other).touch()
        ringtone = folder / "Mi canción.m4r"
        quibel = Quibel(self, build)
        quibel.load(songs.tone(self.home / "Mi canción.wav", 5))
        quibel.click(CREATE)
        quibel.wait_for("dialog", SAVE_PANEL)
        quibel.wait_for("text").text = str(ringtone)
        before_the_end()
        quibel.pointer.type("Return")
        return ringtone

    def wait_until(self, program, shown, what, picture):
        """Until something that a program shows is what shown() looks for; then, or in
        vain, takes a picture."""
        screen = Screen(self)
        try:
            wait_until(
                lambda: any(map(shown, screen.elements(program))),
                lambda: f"{what}; see {picture}, which shows:\n" + screen.describe(program),
                60,
            )
        finally:
            self.screenshot(picture)

    def _ask_bus(self, method, *arguments):
        bus = "org.freedesktop.DBus"
        return self.run(
            "dbus-send", "--session", "--print-reply", f"--dest={bus}", "/org/freedesktop/DBus",
            f"{bus}.{method}", *arguments,
        )  # fmt: skip


def points_it_out(program, build, picture):
    with Desk(FILE_MANAGERS[program]) as desk:
        ringtone = desk.export(build, desk.start_file_manager)

        def pointed_out(element):
            # Thunar's icons are no elements; its status bar names the one that is selected.
            if element.role == "statusbar":
                return element.name.startswith(f'"{ringtone.name}"')
            return element.selected and element.name == ringtone.name

        desk.wait_until(program, pointed_out, f"{ringtone.name} to be selected", picture)


def opens_the_folder(command, before_the_end, build, picture):
    with Desk(command) as desk:
        folder = desk.export(build, lambda: before_the_end(desk)).parent

        def window(element):
            return element.role == "frame" and element.name.startswith(folder.name)

        desk.wait_until(OPENER, window, f"a window of {folder.name}", picture)


def main():
    build, pictures = (pathlib.Path(argument).resolve() for argument in sys.argv[1:])
    pictures.mkdir(parents=True, exist_ok=True)
    cases = {f"{program} points it out": (points_it_out, program) for program in FILE_MANAGERS}
    cases["its folder is opened where the file manager hangs"] = (
        opens_the_folder, FILE_MANAGERS["thunar"], Desk.start_one_that_hangs
    )  # fmt: skip
    cases["its folder is opened where there is none"] = (
        opens_the_folder, "/bin/false", lambda desk: None
    )  # fmt: skip

    failed = False
    for case, (check, *arguments) in cases.items():
        picture = pictures / f"{case.replace(' ', '-')}.png"
        try:
            check(*arguments, build, picture)
            print(f"{case}: {picture}", flush=True)
        except Exception:
            failed = True
            traceback.print_exc()
            print(f"NOT: {case}: {picture}", flush=True)
    sys.exit(failed)


if __name__ == "__main__":
    main()
