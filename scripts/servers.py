"""Starts servers on temporary data folders, and other programs, for all scripts.

Every program is started by a `with` statement and ends with its block.
"""

import base64
import contextlib
import json
import os
import random
import signal
import socket
import sqlite3
import subprocess
import sys
import time
from pathlib import Path
from typing import (Callable, ContextManager, Dict, Iterable, Iterator, NoReturn, Optional,
                    Sequence)
from xml.sax.saxutils import quoteattr

ROOT = Path(__file__).resolve().parent.parent
PROGRAMS = ROOT / "build/dev/bin"
PASSWORD = "demo"


class Failure(Exception):
    """Ends a script with a message."""


def say(words: str) -> None:
    print(f"== {words}", flush=True)


# ---- processes

@contextlib.contextmanager
def running(command: Sequence[object], **options) -> Iterator[subprocess.Popen]:
    # A new session: Ctrl+C at the terminal interrupts the script alone, which then ends its
    # programs in order.
    process = subprocess.Popen([str(word) for word in command], start_new_session=True, **options)
    try:
        yield process
    finally:
        end(process)
        if process.stdout:
            process.stdout.close()


def end(process: subprocess.Popen, patience: float = 15) -> int:
    """Terminates the process and all others of its session, kills them after `patience` seconds,
    and returns its exit code."""
    if process.poll() is None:
        os.killpg(process.pid, signal.SIGTERM)
        try:
            process.wait(patience)
        except subprocess.TimeoutExpired:
            os.killpg(process.pid, signal.SIGKILL)
    return process.wait()


@contextlib.contextmanager
def logged(command: Sequence[object], log: Path, **options) -> Iterator[subprocess.Popen]:
    """A program whose output goes into a file."""
    with log.open("wb") as output, \
            running(command, stdout=output, stderr=subprocess.STDOUT, **options) as process:
        yield process


@contextlib.contextmanager
def listening(name: str, command: Sequence[object], port: int,
              **options) -> Iterator[subprocess.Popen]:
    """A program, once it listens on the port."""
    with running(command, **options) as process:
        wait_until(lambda: process.poll() is not None or answers(port), 10,
                   f"the {name} did not come up")
        if process.poll() is not None:
            raise Failure(f"the {name} did not come up")
        yield process


def wait_until(condition: Callable[[], bool], patience: float, failure: str,
               interval: float = 0.05) -> None:
    deadline = time.monotonic() + patience
    while not condition():
        if time.monotonic() > deadline:
            raise Failure(failure)
        time.sleep(interval)


def free_port() -> int:
    """An unused port below the system's ephemeral range."""
    while True:
        port = random.randrange(20000, 32000)
        with socket.socket() as probe, contextlib.suppress(OSError):
            probe.bind(("", port))
            return port


def answers(port: int) -> bool:
    with socket.socket() as probe:
        return probe.connect_ex(("127.0.0.1", port)) == 0


# ---- servers

def make_data_folder(folder: Path, port: int, networks: Iterable[str],
                     settings: Optional[Dict[str, str]] = None) -> None:
    """Makes a data folder for a server on that port of all addresses. Its networks have the
    password PASSWORD."""
    subprocess.run([ROOT / "packaging/prepare-data-folder", folder], check=True)
    change_database(folder, "INSERT INTO networks (name, pass, users, enabled) "
                    "VALUES (?, ?, 100000, 1)", [(name, PASSWORD) for name in networks])
    values = {"AttachedNIC": "none", "AttachedPort": str(port), **(settings or {})}
    lines = [f"  <setting namestring={quoteattr(name)} valuestring={quoteattr(value)}/>\n"
             for name, value in values.items()]
    (folder / "Corvane Server.xml").write_text(
        f'<?xml version="1.0" encoding="UTF-8"?>\n<settings>\n{"".join(lines)}</settings>\n',
        encoding="utf-8")


def change_database(folder: Path, statement: str, rows: Iterable[tuple] = ((),)) -> None:
    with contextlib.closing(sqlite3.connect(folder / "serverdb.rsd")) as database, database:
        database.executemany(statement, rows)


@contextlib.contextmanager
def server_on(folder: Path, environment: Dict[str, str], programs: Path = PROGRAMS,
              prefix: Sequence[str] = ()) -> Iterator[subprocess.Popen]:
    """A listening server on a data folder, which logs to server.log there. `prefix` is a command
    that starts it, such as prlimit."""
    log = folder / "server.log"
    words = (b"Listening...", b"Server Error")
    with logged([*prefix, programs / "corvane-server"], log,
                env=dict(environment, XDG_DATA_HOME=str(folder))) as process:
        wait_until(lambda: process.poll() is not None
                   or any(word in log.read_bytes() for word in words),
                   30, "the server did not come up")
        if words[0] not in log.read_bytes():
            raise Failure("the server did not come up:\n" + log.read_text(errors="replace"))
        yield process
        if end(process) != 0:
            raise Failure(f"the server ended with code {process.returncode}:\n"
                          + log.read_text(errors="replace")[-2000:])


def players_at(port: int, networks: Iterable[str], log: Path,
               *arguments: object) -> ContextManager[subprocess.Popen]:
    """Players of the demonstration."""
    names = [word for network in networks for word in ("--network", network)]
    return logged([PROGRAMS / "corvane-swarm", "demo", "--port", port, "--password", PASSWORD,
                   *names, *arguments], log)


def map_of(folder: Path, port: int, network: str,
           environment: Dict[str, str]) -> ContextManager[subprocess.Popen]:
    """The map of a network for the user Guide, an administrator there, with the demo picture."""
    change_database(folder, "INSERT INTO admins (name, address, network) VALUES (?, ?, ?)",
                    [("Guide", "127.0.0.1", network)])
    return logged([PROGRAMS / "corvane-map", "--server", "127.0.0.1", "--port", port,
                   "--network", network, "--user", "Guide",
                   "--map", ROOT / "packaging/demo/isle.png", "--map-frame", "0,0,4"],
                  folder / "map.log", cwd=ROOT / "packaging/demo",
                  env=dict(environment, XDG_DATA_HOME=str(folder), XDG_CACHE_HOME=str(folder),
                           CORVANE_MAP_PASSWORD=PASSWORD))


def make_web(folder: Path, port: int, network: str, **fields: object) -> Path:
    """Makes a configuration for corvane-web, with the demo picture and these fields of the network,
    in the folder."""
    picture = (ROOT / "packaging/demo/isle.png").read_bytes()
    (folder / "demo.corvane").write_text(json.dumps({
        "format": 1, "host": "127.0.0.1", "port": port, "network": network,
        "encrypted": False,
        "pictures": [{"facet": 0, "name": "isle.png", "left": 0, "top": 0, "unitsPerPixel": 4,
                      "image": base64.b64encode(picture).decode()}],
        "landmarks": [{"type": "Feature", "geometry": {"type": "Point", "coordinates": place},
                       "properties": {"name": name, "colour": "#8a4fbe", "note": "", "facet": 0}}
                      for name, place in (("Gate", [2600, 1700]), ("Camp", [1300, 2300]))]}))
    (folder / "web-password").write_text(PASSWORD + "\n")
    config = folder / "web.json"
    config.write_text(json.dumps({
        "listen": f"127.0.0.1:{free_port()}", "data": "web", "networks": [
            {"id": "demo", "user": "Web", "passwordFile": "web-password",
             "place": "demo.corvane", **fields}]}))
    return config


def web_link(config: Path, *arguments: object, programs: Path = PROGRAMS) -> str:
    """Makes a link to the network of the configuration."""
    return subprocess.run([programs / "corvane-web", "--config", config, "links", "add", "demo",
                           *arguments], check=True, capture_output=True, text=True).stdout.strip()


@contextlib.contextmanager
def web_on(config: Path, programs: Path = PROGRAMS) -> Iterator[subprocess.Popen]:
    """The map in a browser, once it listens. Logs to web.log beside the configuration."""
    port = int(json.loads(config.read_text())["listen"].rpartition(":")[2])
    with (config.parent / "web.log").open("ab") as log, \
            listening("map in a browser", [programs / "corvane-web", "--config", config], port,
                      stderr=log) as process:
        yield process


# ---- scripts

def interrupt(*_: object) -> NoReturn:
    # Once only: the programs are being ended.
    for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
        signal.signal(number, signal.SIG_IGN)
    raise KeyboardInterrupt


def run(main: Callable[[], None]) -> NoReturn:
    """Runs a script's main function and ends cleanly on failures and signals."""
    # Set, not inherited: a shell starts background programs with SIGINT ignored.
    for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
        signal.signal(number, interrupt)
    try:
        main()
        sys.exit()
    except Failure as failure:
        sys.exit(f"{Path(sys.argv[0]).name}: {failure}")
    except KeyboardInterrupt:
        sys.exit(130)
    except BrokenPipeError:
        # The reader of standard output is gone; drop what is still buffered.
        os.dup2(os.open(os.devnull, os.O_WRONLY), sys.stdout.fileno())
        sys.exit(1)
