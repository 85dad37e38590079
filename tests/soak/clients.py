"""The clients: many connections on one thread, and what each has heard, by source."""

import contextlib
import selectors
import socket
import struct
import time
from pathlib import Path
from typing import Callable, Dict, List, Optional, Tuple

import wire

LEFT = b"left"  # the last entry heard from a member

# Linux: a connection in this state is closed without a word to the peer.
TCP_REPAIR = 19
PATIENCE = 120.0  # seconds; only ends a hang


class Difference(Exception):
    """The server differs from the model."""


class Pump:
    """Waits for all descriptors of the soak and calls their handlers."""

    def __init__(self) -> None:
        self.selector = selectors.DefaultSelector()

    def watch(self, file: object, events: int, serve: Callable[[int], None]) -> None:
        with contextlib.suppress(KeyError):
            self.selector.unregister(file)
        if events:
            self.selector.register(file, events, serve)

    def turn(self, seconds: float = 0.0) -> bool:
        ready = self.selector.select(seconds)
        for key, events in ready:
            key.data(events)
        return bool(ready)

    def until(self, condition: Callable[[], bool], what: Callable[[], str],
              patience: float = PATIENCE) -> None:
        end = time.monotonic() + patience
        while not condition():
            if time.monotonic() > end:
                raise Difference(f"not within {patience:.0f} s: {what()}")
            self.turn(0.02)

    def rest(self, seconds: float) -> None:
        end = time.monotonic() + seconds
        while (left := end - time.monotonic()) > 0:
            self.turn(left)


class Connection:
    """One client's connection, and what it heard since the last check:

    heard: by source, in order. A source is a member's name (records, then LEFT), or "#" and the
        beginning of a message's text.
    answers: to its own messages. BYE is counted instead, since the operator may send it, too.
    notices: kicks and bans.
    """

    def __init__(self, pump: Pump, port: int, address: str, label: str,
                 receive_buffer: Optional[int] = None):
        self.pump = pump
        self.label = label
        self.heard: Dict[bytes, List[bytes]] = {}
        self.answers: List[Tuple[int, bytes]] = []
        self.notices: List[Tuple[int, bytes]] = []
        self.byes = 0
        self.at_a_notice: Callable[[], None] = lambda: None
        self.is_open = True
        self.may_end = False  # the server may end it
        self.is_ending = False
        self.is_reading = True
        self.out = bytearray()
        self.stream = wire.Stream()
        self.socket = socket.socket()
        self.socket.setblocking(False)
        if receive_buffer:
            self.socket.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, receive_buffer)
        self.socket.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
        self.socket.bind((address, 0))
        self.socket.connect_ex(("127.0.0.1", port))
        self.peer_name = "%s:%d" % self.socket.getsockname()
        self.watch()

    def watch(self) -> None:
        events = (selectors.EVENT_READ if self.is_reading else 0) | \
            (selectors.EVENT_WRITE if self.out else 0)
        self.pump.watch(self.socket, events, self.serve)

    def serve(self, events: int) -> None:
        if events & selectors.EVENT_WRITE and self.is_open:
            self.flush()
        if events & selectors.EVENT_READ and self.is_open:
            self.receive()

    # ---- doing

    def send(self, data: bytes) -> None:
        had = bool(self.out)
        self.out += data
        if not had and self.is_open:
            self.flush()
            if self.out:
                self.watch()

    def flush(self) -> None:
        try:
            while self.out:
                del self.out[:self.socket.send(self.out)]
            if self.is_ending:
                self.socket.shutdown(socket.SHUT_WR)
        except BlockingIOError:
            return
        except OSError:
            self.out.clear()  # receive handles the end
        if self.is_open:
            self.watch()

    def stall(self) -> None:
        self.is_reading = False
        self.watch()

    def resume(self) -> None:
        self.is_reading = True
        if self.is_open:
            self.watch()

    def half_close(self) -> None:
        """Ends sending once all output is sent."""
        self.may_end = True
        self.is_ending = True
        if not self.out:
            self.flush()

    def reset(self) -> None:
        self.socket.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
        self.end()

    def vanish(self) -> bool:
        """Disappears silently. False if the system does not allow it."""
        try:
            self.socket.setsockopt(socket.IPPROTO_TCP, TCP_REPAIR, 1)
        except OSError:
            return False
        self.end()
        return True

    def end(self) -> None:
        if not self.is_open:
            return
        self.is_open = False
        self.pump.watch(self.socket, 0, self.serve)
        self.socket.close()

    def queues(self) -> str:
        """Both ends in /proc/net/tcp: state, bytes to send and to read, timer, retransmissions."""
        port = ":%04X" % int(self.peer_name.rpartition(":")[2])
        rows = [line.split() for line in Path("/proc/net/tcp").read_text().splitlines()]
        return "; ".join(" ".join(row[3:7]) for row in rows
                         if row[1].endswith(port) or row[2].endswith(port))

    # ---- hearing

    def receive(self) -> None:
        try:
            data = self.socket.recv(1 << 18)
        except BlockingIOError:
            return
        except OSError:
            data = b""
        if data:
            self.take(data)
            return
        self.end()
        if not self.may_end:
            raise Difference(f"{self.label}: the server ended the connection")

    def take(self, data: bytes) -> None:
        heard = self.heard
        for command, payload in self.stream.take(data):
            # The two forms of a record differ in their commas.
            if command == wire.MEMBER and payload.count(b",") == 5:
                source = payload[:payload.index(b"|")]
                if source in heard:
                    heard[source].append(payload)
                else:
                    heard[source] = [payload]
            elif command == wire.LEFT:
                heard.setdefault(payload, []).append(LEFT)
            elif command == wire.MESSAGE:
                source = b"#" + payload.partition(b"#")[0]
                heard.setdefault(source, []).append(payload)
            elif command == wire.BYE:
                self.byes += 1
                if payload != b"BYE":
                    raise Difference(f"{self.label}: BYE is {payload!r}")
            elif command == wire.KICK or command == wire.BAN:
                self.notices.append((command, payload))
                self.at_a_notice()
            else:
                self.answers.append((command, payload))
