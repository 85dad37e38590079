"""The server under test: its process and data folder, its operator, and a location host."""

import contextlib
import http.server
import json
import os
import selectors
import signal
import socket
import sqlite3
import subprocess
import sys
import threading
import time
from pathlib import Path
from typing import Dict, Iterator, List, Optional

sys.path.append(str(Path(__file__).resolve().parents[2] / "scripts"))
import servers  # noqa: E402
from clients import Difference, Pump  # noqa: E402
from model import Model  # noqa: E402

# Lines on standard error that are no faults.
EXPECTED = ("Rules in force: ", "database: ")
FATAL = "An exception of class NilObjectException was not handled."

STORED_WITHIN = 45.0  # seconds; the server tries every ten

SANITIZERS = {
    # A small quarantine of freed memory, so that growth of the server shows.
    "ASAN_OPTIONS": "halt_on_error=1:detect_leaks=1:quarantine_size_mb=8:malloc_context_size=8",
    "LSAN_OPTIONS": f"suppressions={servers.ROOT}/tests/lsan.supp:print_suppressions=0",
    "UBSAN_OPTIONS": "halt_on_error=1:print_stacktrace=1",
}


class Server:
    """A server that can be killed, stopped and restarted on its folder."""

    def __init__(self, pump: Pump, programs: Path, folder: Path, settings: Dict[str, str],
                 ignores_file_limit: bool):
        self.pump = pump
        self.programs = programs
        self.folder = folder
        self.database = folder / "serverdb.rsd"
        self.errors = folder.parent / (folder.name + ".stderr")
        self.ignores_file_limit = ignores_file_limit
        self.port = servers.free_port()
        self.tail = b""  # of standard output
        self.fatal_ends = 0  # provoked so far
        self.control: Optional[Control] = None
        servers.make_data_folder(folder, self.port, [], settings)
        self.errors.touch()
        self.runtime = folder / "runtime"
        self.runtime.mkdir(0o700)

    def start(self) -> None:
        environment = dict(os.environ, XDG_DATA_HOME=str(self.folder), TMPDIR=str(self.runtime),
                           XDG_RUNTIME_DIR=str(self.runtime), QT_QPA_PLATFORM="offscreen",
                           **SANITIZERS)
        self.tail = b""
        with self.errors.open("ab") as errors:
            # SIGXFSZ would end the server before SQLite reports the full disk; Python ignores it,
            # and the server inherits that.
            self.process = subprocess.Popen(
                [self.programs / "corvane-server"], env=environment, stdout=subprocess.PIPE,
                stderr=errors, start_new_session=True,
                restore_signals=not self.ignores_file_limit)
        assert self.process.stdout is not None
        os.set_blocking(self.process.stdout.fileno(), False)
        self.read_output(True)
        self.pump.until(lambda: b"Listening..." in self.tail or self.process.poll() is not None,
                        lambda: "the server is up")
        if b"Listening..." not in self.tail:
            raise Difference("the server did not come up")
        self.control = Control(self.pump, self.folder / "corvane-server.sock")
        self.first_open = 0  # descriptors without those of clients, at the first count
        self.first_memory: Optional[int] = None

    def read_output(self, reads: bool) -> None:
        if self.process.stdout is not None and not self.process.stdout.closed:
            self.pump.watch(self.process.stdout, selectors.EVENT_READ if reads else 0, self.serve)

    def serve(self, _: int) -> None:
        assert self.process.stdout is not None
        data = self.process.stdout.read(1 << 18)
        if data:
            self.tail = (self.tail + data)[-4000:]
        elif data is not None:
            self.pump.watch(self.process.stdout, 0, self.serve)
            self.process.stdout.close()

    def open_files(self) -> List[str]:
        """All open files but eventfds, whose number varies with a library's threads."""
        folder = Path(f"/proc/{self.process.pid}/fd")
        links = []
        for number in os.listdir(folder):
            with contextlib.suppress(OSError):
                links.append(os.readlink(folder / number))
        return sorted(link for link in links if "eventfd" not in link)

    def memory(self) -> int:
        statm = Path(f"/proc/{self.process.pid}/statm").read_text()
        return int(statm.split()[1]) * os.sysconf("SC_PAGE_SIZE")

    def signal(self, number: int) -> None:
        os.killpg(self.process.pid, number)

    def end(self, number: Optional[int], expected: int) -> None:
        """Sends the signal, if any, and waits for the expected exit code."""
        if self.control is not None:
            self.control.close()
        if number is not None:
            self.signal(number)
        self.read_output(True)
        self.pump.until(lambda: self.process.poll() is not None, lambda: "the server ends")
        while self.process.stdout is not None and not self.process.stdout.closed:
            self.pump.turn(0.02)
        self.look_at_errors()
        if self.process.returncode != expected:
            raise Difference(f"the server ended with code {self.process.returncode}, "
                             f"not {expected}")

    def kill(self) -> None:
        with contextlib.suppress(ProcessLookupError, AttributeError):
            if self.process.poll() is None:
                self.signal(signal.SIGKILL)
                self.process.wait()

    def look_at_errors(self) -> None:
        """Any unexpected line on standard error is a difference."""
        text = self.errors.read_text(errors="replace")
        lines = [line for line in text.splitlines() if not line.startswith(EXPECTED)]
        fatal = [line for line in lines if line.startswith(FATAL)]
        if len(lines) > len(fatal) or len(fatal) != self.fatal_ends:
            raise Difference(f"standard error:\n{text[-8000:]}")

    def query(self, statement: str, *values: object) -> List[tuple]:
        with contextlib.closing(sqlite3.connect(self.database, timeout=30)) as database, database:
            return database.execute(statement, values).fetchall()

    def check_database(self, model: Model, file: Optional[Path] = None) -> None:
        """Waits, since the server stores later what it could not store at once."""
        end = time.monotonic() + STORED_WITHIN
        while (fault := self.database_fault(model, file)) and file is None:
            if time.monotonic() > end:
                break
            self.pump.rest(0.1)
        if fault:
            raise Difference(fault)

    def database_fault(self, model: Model, file: Optional[Path]) -> Optional[str]:
        with contextlib.closing(sqlite3.connect(file or self.database, timeout=30)) as database:
            def rows(query: str) -> List[tuple]:
                return database.execute(query).fetchall()
            for what, got, want in (
                    ("networks", rows("SELECT name, pass, users, enabled FROM networks"),
                     [(*row[:3], int(row[3])) for row in model.rows]),
                    ("bans", sorted(rows('SELECT address, "by", reason, network FROM bans')),
                     sorted(model.bans)),
                    ("grants", sorted(rows("SELECT name, address, network FROM admins")),
                     sorted(model.grants)),
                    ("integrity", rows("PRAGMA integrity_check"), [("ok",)])):
                if got != want:
                    missing = [row for row in want if row not in got]
                    more = [row for row in got if row not in want]
                    return f"{what} stored: missing are {missing!r}, not expected {more!r}"
        return None


class Control:
    """The operator: one JSON object a line over the server's local socket."""

    def __init__(self, pump: Pump, path: Path):
        self.pump = pump
        self.path = path
        self.rest = b""
        self.socket: Optional[socket.socket] = None

    def close(self) -> None:
        if self.socket is not None:
            self.pump.watch(self.socket, 0, self.serve)
            self.socket.close()
            self.socket = None

    def open(self) -> None:
        self.socket = socket.socket(socket.AF_UNIX)
        self.socket.connect(str(self.path))
        self.socket.setblocking(False)
        self.rest = b""
        self.is_ended = False
        self.pump.watch(self.socket, selectors.EVENT_READ, self.serve)

    def serve(self, _: int) -> None:
        assert self.socket is not None
        try:
            data = self.socket.recv(1 << 18)
        except ConnectionResetError:  # killed with a request unread
            data = b""
        self.rest += data
        self.is_ended = not data
        if not data:
            self.pump.watch(self.socket, 0, self.serve)

    def ask(self, command: str, **fields: object) -> dict:
        try:
            if self.socket is None or self.is_ended:
                self.close()
                self.open()
            self.socket.sendall(json.dumps({"command": command, **fields}).encode() + b"\n")
        except OSError as error:
            raise Difference(f"the operator's {command} {fields!r} reaches no server: {error}")
        self.pump.until(lambda: b"\n" in self.rest or self.is_ended,
                        lambda: f"the operator's {command} is answered")
        line, end, self.rest = self.rest.partition(b"\n")
        if not end:
            raise Difference(f"the answer to the operator's {command} {fields!r} is incomplete")
        return json.loads(line)

    def do(self, command: str, **fields: object) -> dict:
        answer = self.ask(command, **fields)
        if not answer["ok"]:
            raise Difference(f"the operator's {command} {fields!r}: {answer['error']}")
        return answer


class Shell:
    """The operator at a shell: corvanectl."""

    def __init__(self, pump: Pump, programs: Path, folder: Path):
        self.pump = pump
        self.words = [str(programs / "corvanectl"), "--data-folder", str(folder), "--json"]

    def do(self, *words: str, password: str = "") -> dict:
        process = subprocess.Popen([*self.words, *words], stdin=subprocess.PIPE,
                                   stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                   env=dict(os.environ, **SANITIZERS))
        assert process.stdin is not None and process.stdout is not None
        with contextlib.suppress(BrokenPipeError), process.stdin:
            process.stdin.write(password.encode() + b"\n")
        try:
            self.pump.until(lambda: process.poll() is not None,
                            lambda: f"corvanectl {words!r} ends")
            answer = process.stdout.read()
            error = process.stderr.read() if process.stderr else b""
        finally:
            process.kill()
            process.wait()
            process.stdout.close()
            if process.stderr:
                process.stderr.close()
        if process.returncode != 0:
            raise Difference(f"corvanectl {words!r}: code {process.returncode}, {error!r}")
        return json.loads(answer)


class Locator:
    """A location host that answers, or hangs while `answers` is cleared."""

    PAGE = b'<meta name="country" content="Norway">\n<meta name="city" content="Oslo">\n'

    def __init__(self) -> None:
        answers = threading.Event()
        answers.set()
        self.answers = answers

        class Handler(http.server.BaseHTTPRequestHandler):
            timeout = 3  # of an idle connection

            def do_GET(self) -> None:
                answers.wait(10)
                with contextlib.suppress(OSError):
                    self.send_response(200)
                    self.send_header("Content-Length", str(len(Locator.PAGE)))
                    self.end_headers()
                    self.wfile.write(Locator.PAGE)

            def log_message(self, *_: object) -> None:
                pass

        class Host(http.server.ThreadingHTTPServer):
            request_queue_size = 1024
            daemon_threads = True

            def handle_error(self, *_: object) -> None:
                pass  # the server stopped waiting

        self.server = Host(("127.0.0.1", 0), Handler)
        self.address = f"http://127.0.0.1:{self.server.server_port}"
        threading.Thread(target=self.server.serve_forever, daemon=True).start()

    def close(self) -> None:
        self.answers.set()
        self.server.shutdown()
        self.server.server_close()


@contextlib.contextmanager
def small_disk(folder: Path) -> Iterator[bool]:
    """Mounts a small file system on the folder, which can be filled. Yields whether it could."""
    is_mounted = subprocess.run(["mount", "-t", "tmpfs", "-o", "size=64m", "tmpfs", folder],
                                capture_output=True).returncode == 0
    try:
        yield is_mounted
    finally:
        if is_mounted:
            subprocess.run(["umount", "-l", folder], check=True)
