#!/usr/bin/env python3
"""A virtual display with a window manager. As a program: runs its arguments as a command there."""

import contextlib
import os
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path
from typing import Dict, Iterator, List

sys.dont_write_bytecode = True
from servers import run, running, wait_until  # noqa: E402

# Not inherited, like QT_* and LC_*: looks, languages and trays of the caller's desktop.
OWN = ("WAYLAND_DISPLAY", "DBUS_SESSION_BUS_ADDRESS", "XDG_CURRENT_DESKTOP", "XAUTHORITY")


def has_desktop() -> bool:
    return all(map(shutil.which, ("Xvfb", "openbox", "trayer", "xprop", "xdotool")))


@contextlib.contextmanager
def desktop(has_tray: bool = False) -> Iterator[Dict[str, str]]:
    """Yields the environment for programs on the display. A tray is optional."""
    environment = {name: value for name, value in os.environ.items()
                   if name not in OWN and not name.startswith(("QT_", "LC_"))}
    environment.update(LANG="C.UTF-8", LANGUAGE="")

    def succeeds(*command: str) -> bool:
        return subprocess.run(command, env=environment, check=False, stdout=subprocess.DEVNULL,
                              stderr=subprocess.DEVNULL).returncode == 0

    def start(*command: object, **options) -> None:
        stack.enter_context(running(command, env=environment, stdout=log,
                                    stderr=subprocess.STDOUT, **options))

    with contextlib.ExitStack() as stack:
        folder = Path(stack.enter_context(tempfile.TemporaryDirectory()))
        log = stack.enter_context((folder / "desktop.log").open("wb"))
        number = stack.enter_context((folder / "number").open("w+"))
        start("Xvfb", "-displayfd", number.fileno(), "-screen", 0, "1760x900x24", "-dpi", 96,
              "-wr", "-nolisten", "tcp", pass_fds=[number.fileno()])
        wait_until(lambda: (folder / "number").read_text().endswith("\n"), 10,
                   "the display did not come up")
        environment["DISPLAY"] = ":" + (folder / "number").read_text().strip()
        start("openbox")
        # A window that opens earlier gets no frame, and before the tray no icon there.
        wait_until(lambda: succeeds("sh", "-c", "xprop -root _NET_SUPPORTING_WM_CHECK | "
                                    "grep -q 'window id'"), 10, "the window manager did not come up")
        if has_tray:
            start("trayer", "--edge", "bottom", "--align", "right", "--widthtype", "request",
                  "--height", 24)
            wait_until(lambda: succeeds("xdotool", "search", "--class", "^trayer$"), 10,
                       "the tray did not come up")
        yield environment


def main() -> None:
    command: List[str] = sys.argv[1:]
    with desktop() as environment, running(command, env=environment) as process:
        sys.exit(process.wait())


if __name__ == "__main__":
    run(main)
