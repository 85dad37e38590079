"""The part of the protocol that the soak needs."""

import hashlib
import struct
from typing import Iterator, Tuple

NETWORK, PASSWORD, NAME, REPORT, MEMBER, LEFT, ADMIN = 1, 2, 3, 4, 5, 6, 9
KICK_USER, BAN_USER, MESSAGE_ALL, LIST_BANS, LIFT_BAN = 10, 11, 12, 13, 14
KICK, BAN, MESSAGE, BYE = 996, 997, 998, 999

OK, FAIL = b"OK", b"FAIL"
REFUSAL = b"Please contact an administrator formore information."
REMOVAL = b"This network has been removed from the server."

HEADER = struct.Struct(">ii")


def frame(command: int, payload: bytes = b"") -> bytes:
    return HEADER.pack(HEADER.size + len(payload), command) + payload


def digest(password: str) -> bytes:
    return hashlib.md5(password.encode()).digest()


class Stream:
    """Cuts received bytes into messages and keeps an incomplete rest."""

    def __init__(self) -> None:
        self.rest = b""

    def take(self, data: bytes) -> Iterator[Tuple[int, bytes]]:
        if self.rest:
            data = self.rest + data
        place, size = 0, len(data)
        while size - place >= HEADER.size:
            length, command = HEADER.unpack_from(data, place)
            if size - place < length:
                break
            yield command, data[place + HEADER.size:place + length]
            place += length
        self.rest = data[place:]
