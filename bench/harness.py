"""Servers, limit relays and swarms for the measuring scripts.

Whatever a script starts, it starts inside a `with`, and it is ended there, however the block is
left.
"""

import argparse
import contextlib
import json
import os
import random
import re
import resource
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import time
from pathlib import Path
from typing import Callable, Iterator, List, NoReturn, Optional, Sequence

PASSWORD = "demo"

# A load for a server among strangers. The swarm, which looks into every delivery, is the limit here
# and not the server's core: the server's passes then find as much to do with strangers as without,
# and their cost can be compared.
CROWD = "fanout --networks 20 --users 50 --burst 5"


# General publish/subscribe brokers that carry the same loads, where they are installed: program and
# options, the last of which takes the port.
BROKERS = {
    "Redis": ["redis-server", "--bind", "127.0.0.1", "--save", "", "--port"],
    "NATS": ["nats-server", "--addr", "127.0.0.1", "--port"],
}


class BenchError(Exception):
    """What a measurement could not be made for; ends the script."""


class Target:
    """What a swarm is sent to: a server, a limit relay or a broker that runs."""

    def __init__(self, name: str, process: subprocess.Popen, port: int,
                 swarm: Sequence[str] = ("corvane-swarm",)):
        self.name = name
        self.swarm = swarm  # the program that speaks to it, with its first words
        self.pid = process.pid
        self.port = port

    def cpu_seconds(self) -> float:
        """Processor time of all its threads since it started."""
        # The kernel's number for another process's clock (clock_getcpuclockid).
        return time.clock_gettime((~self.pid << 3) | 2)

    def descriptors(self) -> int:
        return len(os.listdir(f"/proc/{self.pid}/fd"))


class Bench:
    """The programs and the data folder that the servers start with, each with a copy of its own."""

    def __init__(self, programs: Path, data: Path, scratch: Path, seconds: float, rounds: int):
        self.programs = programs
        self.data = data
        self.scratch = scratch
        self.seconds = seconds
        self.rounds = rounds

    @contextlib.contextmanager
    def server(self, prepare: Optional[Callable[[Path], None]] = None,
               display: Optional[str] = None,
               descriptors: Optional[int] = None) -> Iterator[Target]:
        """A server whose window is never drawn or, given a display, is shown there. `prepare` may
        change its data folder; `descriptors` is how many it may have, if not all that there are."""
        port = free_port()
        folder = Path(tempfile.mkdtemp(prefix="server", dir=self.scratch)) / "data"
        shutil.copytree(self.data, folder)
        set_port(folder / "Corvane Server.xml", port)
        if prepare:
            prepare(folder)
        environment = dict(os.environ, XDG_DATA_HOME=str(folder), QT_QPA_PLATFORM="offscreen")
        if display:
            environment.update(QT_QPA_PLATFORM="xcb", DISPLAY=display)
        limit = [] if descriptors is None else ["prlimit", f"--nofile={descriptors}"]
        log = folder / "server.log"
        with log.open("wb") as output, \
                running([*limit, self.programs / "corvane-server"], env=environment, stdout=output,
                        stderr=subprocess.STDOUT) as process:
            wait_until(lambda: process.poll() is not None or b"Listening..." in log.read_bytes(),
                       30, "the server did not come up")
            if process.poll() is not None:
                raise BenchError("the server did not come up:\n"
                                 + log.read_text(errors="replace"))
            yield Target("server", process, port)
            if end(process) != 0:
                raise BenchError(f"the server ended with code {process.returncode}:\n"
                                 + log.read_text(errors="replace")[-2000:])
        shutil.rmtree(folder)

    @contextlib.contextmanager
    def relay(self) -> Iterator[Target]:
        port = free_port()
        with listening("limit relay", [self.programs / "corvane-limit-relay", port],
                       port) as process:
            yield Target("limit relay", process, port)

    @contextlib.contextmanager
    def broker(self, name: str) -> Iterator[Target]:
        """One of BROKERS, on its own defaults but that it keeps nothing on disk."""
        port = free_port()
        program, *options = BROKERS[name]
        with listening(name, [find_program(program), *options, port], port,
                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                       cwd=self.scratch) as process:
            yield Target(name, process, port, ("corvane-broker-load", name.lower()))

    def swarm(self, target: Target, *arguments: object, seconds: Optional[float] = None) -> dict:
        """One run; returns what it found. A run in which anything was lost is an error."""
        seconds = seconds or self.seconds
        with self.start_swarm(target, *arguments, "--seconds", seconds) as process:
            return finish(process, target, seconds + 120)

    @contextlib.contextmanager
    def idle(self, target: Target, networks: int, users: int) -> Iterator[subprocess.Popen]:
        """Clients that only wait, all logged in; they leave together, without a word."""
        with self.start_swarm(target, "idle", "--network-prefix", "Idle", "--networks", networks,
                              "--users", users, "--user-prefix", "idle",
                              "--leave", "abrupt") as process:
            if process.stdout.readline() != "ready\n":
                raise BenchError(f"the idle clients did not get in at the {target.name}")
            yield process
            end(process)
            if process.returncode != 0:
                raise BenchError(f"idle clients of the {target.name} were lost or disturbed: "
                                 + process.stdout.read())

    @contextlib.contextmanager
    def server_among(self, strangers: int) -> Iterator[Target]:
        """A server with so many clients in 100 networks of their own, who only wait."""
        with self.server() as server:
            if strangers == 0:
                yield server
                return
            server.name += f" {strangers}"
            with self.idle(server, 100, strangers // 100):
                yield server

    def alternate(self, targets: Sequence[Target], arguments: str,
                  seconds: Optional[float] = None) -> List[List[dict]]:
        """The runs of each target, as many as there are rounds. Each is first, second and so on in
        turn, so that a change of the machine's mood meets all of them."""
        runs: List[List[dict]] = [[] for _ in targets]
        for number in range(self.rounds):
            for offset in range(len(targets)):
                index = (number + offset) % len(targets)
                runs[index].append(self.swarm(targets[index], *arguments.split(),
                                              seconds=seconds))
        return runs

    def start_swarm(self, target: Target, *arguments: object):
        program, *words = target.swarm
        command = [self.programs / program, *words, *arguments, "--port", target.port,
                   "--password", PASSWORD, "--server-pid", target.pid]
        return running(command, stdout=subprocess.PIPE, text=True)


@contextlib.contextmanager
def running(command: Sequence[object], **options) -> Iterator[subprocess.Popen]:
    # In a session of its own: Ctrl+C at the terminal is for the script alone, which then ends one
    # after the other.
    process = subprocess.Popen([str(word) for word in command], start_new_session=True, **options)
    try:
        yield process
    finally:
        end(process)
        if process.stdout:
            process.stdout.close()


@contextlib.contextmanager
def listening(name: str, command: Sequence[object], port: int,
              **options) -> Iterator[subprocess.Popen]:
    """A program that listens on the port."""
    with running(command, **options) as process:
        wait_until(lambda: process.poll() is not None or answers(port), 10,
                   f"the {name} did not come up")
        if process.poll() is not None:
            raise BenchError(f"the {name} did not come up")
        yield process


def find_program(name: str) -> Optional[str]:
    # Daemons lie where not every user's path leads.
    return shutil.which(name, path=os.environ.get("PATH", "") + ":/usr/sbin:/usr/local/sbin")


def installed_brokers() -> List[str]:
    return [name for name, (program, *_) in BROKERS.items() if find_program(program)]


def end(process: subprocess.Popen) -> int:
    """Asks the process to end, insists after a while, returns its exit code."""
    if process.poll() is None:
        process.terminate()
        try:
            process.wait(10)
        except subprocess.TimeoutExpired:
            process.kill()
    return process.wait()


def finish(process: subprocess.Popen, target: Target, patience: float,
           must_be_good: bool = True) -> dict:
    """Waits for the end of a swarm's run and returns what it found."""
    try:
        output, _ = process.communicate(timeout=patience)
    except subprocess.TimeoutExpired:
        raise BenchError(f"a run against the {target.name} did not end") from None
    lines = output.splitlines()
    if len(lines) < 2 or (must_be_good and process.returncode != 0):
        raise BenchError(f"a run against the {target.name} went wrong: {output}")
    print(f"   {target.name:12} {lines[-2]}", flush=True)
    return json.loads(lines[-1])


def wait_until(condition: Callable[[], bool], patience: float, failure: str,
               interval: float = 0.05) -> None:
    deadline = time.monotonic() + patience
    while not condition():
        if time.monotonic() > deadline:
            raise BenchError(failure)
        time.sleep(interval)


def free_port() -> int:
    """A port that nobody uses, below those that the system gives out by itself."""
    while True:
        port = random.randrange(20000, 32000)
        with socket.socket() as probe, contextlib.suppress(OSError):
            probe.bind(("", port))
            return port


def answers(port: int) -> bool:
    with socket.socket() as probe:
        return probe.connect_ex(("127.0.0.1", port)) == 0


def set_port(settings: Path, port: int) -> None:
    text, count = re.subn(r'(namestring="AttachedPort" valuestring=")\d+', rf"\g<1>{port}",
                          settings.read_text())
    if count != 1:
        raise BenchError(f"no port in {settings}")
    settings.write_text(text)


def has_descriptors(count: int) -> bool:
    """Whether the system lets a process have so many connections, with some room."""
    return resource.getrlimit(resource.RLIMIT_NOFILE)[1] >= count + 100


def interrupt(*_: object) -> NoReturn:
    # Once only: what follows is the ending of all that was started.
    for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
        signal.signal(number, signal.SIG_IGN)
    raise KeyboardInterrupt


def parser_of(description: str, rounds: int, seconds: float = 3) -> argparse.ArgumentParser:
    """The options that all the scripts have."""
    parser = argparse.ArgumentParser(description=description)
    parser.add_argument("--programs", type=Path, required=True, help="folder of the programs")
    parser.add_argument("--data", type=Path, required=True,
                        help="data folder with the networks Bench1 to Bench100 and Idle1 to "
                        "Idle100, of which every server gets a copy")
    parser.add_argument("--seconds", type=float, default=seconds,
                        help=f"of each run ({seconds})")
    parser.add_argument("--rounds", type=int, default=rounds, help=f"runs of each ({rounds})")
    return parser


@contextlib.contextmanager
def bench_of(options: argparse.Namespace) -> Iterator[Bench]:
    with tempfile.TemporaryDirectory() as scratch:
        yield Bench(options.programs, options.data, Path(scratch), options.seconds, options.rounds)


def run(main: Callable[[], None]) -> NoReturn:
    """Runs a script's main function so that it ends cleanly, whatever ends it."""
    # Set, not inherited: a shell starts background programs with SIGINT ignored.
    for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
        signal.signal(number, interrupt)
    try:
        main()
        sys.exit()
    except BenchError as error:
        sys.exit(f"{Path(sys.argv[0]).name}: {error}")
    except KeyboardInterrupt:
        sys.exit(130)
