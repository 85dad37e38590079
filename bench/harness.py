"""Shared by the measuring scripts: servers, limit relays and brokers, and swarms that load them."""

import argparse
import contextlib
import json
import os
import resource
import subprocess
import sys
import tempfile
import time
from pathlib import Path
from typing import Callable, Dict, Iterator, List, Optional, Sequence

sys.path.append(str(Path(__file__).resolve().parent.parent / "scripts"))
from proxies import find_program  # noqa: E402
from servers import (PASSWORD, ROOT, Failure, end, free_port, listening,  # noqa: E402
                     make_data_folder, running, server_on, wait_until)

# For members that report, and for members that only wait.
NETWORKS = [f"{kind}{number}" for number in range(1, 101) for kind in ("Bench", "Idle")]

# A load for a server with strangers. The swarm, which checks every delivery, is the bottleneck, not
# the server: its passes find as much work with strangers as without, and the costs can be compared.
CROWD = "fanout --networks 20 --users 50 --burst 5"

HARDENED = {"Hardened": "1"}
# Hardened rules limit each address.
MANY_ADDRESSES = ["--addresses", "200"]


# General publish/subscribe brokers, measured with the same loads if they are installed: program and
# options, the last of which takes the port.
BROKERS = {
    "Redis": ["redis-server", "--bind", "127.0.0.1", "--save", "", "--port"],
    "NATS": ["nats-server", "--addr", "127.0.0.1", "--port"],
}


class Target:
    """A running server, limit relay or broker."""

    def __init__(self, name: str, process: subprocess.Popen, port: int,
                 swarm: Sequence[str] = ("corvane-swarm",)):
        self.name = name
        self.swarm = swarm  # the program that loads it, with its first arguments
        self.pid = process.pid
        self.port = port

    def cpu_seconds(self) -> float:
        """Processor time of all its threads since it started."""
        # The kernel's number for another process's clock (clock_getcpuclockid).
        return time.clock_gettime((~self.pid << 3) | 2)

    def descriptors(self) -> int:
        return len(os.listdir(f"/proc/{self.pid}/fd"))


class Bench:
    """Starts targets and runs swarms against them."""

    def __init__(self, programs: Path, scratch: Path, seconds: float, rounds: int):
        self.programs = programs
        self.scratch = scratch
        self.seconds = seconds
        self.rounds = rounds

    @contextlib.contextmanager
    def server(self, prepare: Optional[Callable[[Path], None]] = None,
               desktop: Optional[Dict[str, str]] = None,
               descriptors: Optional[int] = None,
               settings: Optional[Dict[str, str]] = None) -> Iterator[Target]:
        """A server with NETWORKS. Its window is not drawn, or, given the environment of a desktop,
        shown there. `prepare` may change its data folder; `descriptors` limits its descriptors."""
        port = free_port()
        environment = dict(desktop, QT_QPA_PLATFORM="xcb") if desktop else \
            dict(os.environ, QT_QPA_PLATFORM="offscreen")
        limit = [] if descriptors is None else ["prlimit", f"--nofile={descriptors}"]
        with tempfile.TemporaryDirectory(dir=self.scratch) as name:
            folder = Path(name)
            make_data_folder(folder, port, NETWORKS, settings)
            if prepare:
                prepare(folder)
            with server_on(folder, environment, self.programs, limit) as process:
                yield Target("server", process, port)

    @contextlib.contextmanager
    def relay(self) -> Iterator[Target]:
        port = free_port()
        with listening("limit relay", [self.programs / "corvane-limit-relay", port],
                       port) as process:
            yield Target("limit relay", process, port)

    @contextlib.contextmanager
    def broker(self, name: str) -> Iterator[Target]:
        """One of BROKERS, with its default settings, but storing nothing on disk."""
        port = free_port()
        program, *options = BROKERS[name]
        with listening(name, [find_program(program), *options, port], port,
                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                       cwd=self.scratch) as process:
            yield Target(name, process, port, ("corvane-broker-load", name.lower()))

    def swarm(self, target: Target, *arguments: object, seconds: Optional[float] = None) -> dict:
        """Returns the result of one run. Fails if anything was lost."""
        seconds = seconds or self.seconds
        before = target.descriptors()
        with self.start_swarm(target, *arguments, "--seconds", seconds) as process:
            found = finish(process, target, seconds + 120)
        # The members of the next run must not hear of these leaving. A file or two may be open.
        wait_until(lambda: target.descriptors() <= before + 3, 30,
                   f"the clients of the {target.name} did not leave")
        return found

    @contextlib.contextmanager
    def idle(self, target: Target, networks: int, users: int,
             *arguments: object) -> Iterator[subprocess.Popen]:
        """Clients that are logged in and wait. They leave together, by a reset."""
        with self.start_swarm(target, "idle", "--network-prefix", "Idle", "--networks", networks,
                              "--users", users, "--user-prefix", "idle",
                              "--leave", "abrupt", *arguments) as process:
            if process.stdout.readline() != "ready\n":
                raise Failure(f"the idle clients could not log into the {target.name}")
            yield process
            end(process)
            if process.returncode != 0:
                raise Failure(f"idle clients of the {target.name} were lost or disturbed: "
                              + process.stdout.read())

    @contextlib.contextmanager
    def server_among(self, strangers: int) -> Iterator[Target]:
        """A server with that many idle clients in 100 other networks."""
        with self.server() as server:
            if strangers == 0:
                yield server
                return
            server.name += f" {strangers}"
            with self.idle(server, 100, strangers // 100):
                yield server

    def alternate(self, targets: Sequence[Target], arguments: str,
                  seconds: Optional[float] = None) -> List[List[dict]]:
        """The runs of each target, one a round. The order rotates, so that a change in the
        machine's speed affects all targets."""
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


def installed_brokers() -> List[str]:
    return [name for name, (program, *_) in BROKERS.items() if find_program(program)]


def finish(process: subprocess.Popen, target: Target, patience: float,
           must_be_good: bool = True) -> dict:
    """Waits for the end of a swarm's run and returns its result."""
    try:
        output, _ = process.communicate(timeout=patience)
    except subprocess.TimeoutExpired:
        raise Failure(f"a run against the {target.name} did not end") from None
    lines = output.splitlines()
    if len(lines) < 2 or (must_be_good and process.returncode != 0):
        raise Failure(f"a run against the {target.name} failed: {output}")
    print(f"   {target.name:12} {lines[-2]}", flush=True)
    return json.loads(lines[-1])


def has_descriptors(count: int) -> bool:
    """Whether a process may have that many connections and some more descriptors."""
    return resource.getrlimit(resource.RLIMIT_NOFILE)[1] >= count + 100


def parser_of(description: str, rounds: int, seconds: float = 3) -> argparse.ArgumentParser:
    """A parser with the options of all scripts."""
    parser = argparse.ArgumentParser(description=description)
    parser.add_argument("--programs", type=Path, default=ROOT / "build/release/bin",
                        help="folder of the programs (build/release/bin)")
    parser.add_argument("--seconds", type=float, default=seconds,
                        help=f"of each run ({seconds})")
    parser.add_argument("--rounds", type=int, default=rounds, help=f"runs of each ({rounds})")
    return parser


@contextlib.contextmanager
def bench_of(options: argparse.Namespace) -> Iterator[Bench]:
    with tempfile.TemporaryDirectory() as scratch:
        yield Bench(options.programs, Path(scratch), options.seconds, options.rounds)
