"""Starts stunnel and HAProxy in front of a server, with the configurations that corvanectl prints."""

import contextlib
import os
import re
import shutil
import signal
import socket
import ssl
import subprocess
from pathlib import Path
from typing import Iterator, Optional, Tuple

from servers import Failure, free_port, logged, wait_until

# Daemons are in folders that not every user's PATH has.
PATH = os.environ.get("PATH", "") + ":/usr/sbin:/usr/local/sbin"
# Each with the signal that makes it read its certificate again. HAProxy needs a first process for
# that, as its service has.
COMMANDS = {"stunnel": (["stunnel4"], signal.SIGHUP),
            "haproxy": (["haproxy", "-W", "-f"], signal.SIGUSR2)}


def find_program(name: str) -> Optional[str]:
    return shutil.which(name, path=PATH)


def control(programs: Path, folder: Path, *words: object) -> Tuple[int, str]:
    """What corvanectl exits with and prints, for the server of that data folder."""
    done = subprocess.run([programs / "corvanectl", "--data-folder", folder, *map(str, words)],
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)
    return done.returncode, done.stdout


def connect_encrypted(port: int, address: str = "127.0.0.1") -> ssl.SSLSocket:
    """A connection from a loopback address that trusts every certificate."""
    context = ssl.SSLContext(ssl.PROTOCOL_TLS_CLIENT)
    context.check_hostname = False
    context.verify_mode = ssl.CERT_NONE
    return context.wrap_socket(socket.create_connection(("127.0.0.1", port), 10, (address, 0)))


class Proxy:
    """A proxy on a separate port, in front of the running server of a data folder. Its files lie
    there, too."""

    def __init__(self, name: str, programs: Path, folder: Path):
        self.name = name
        self.port = free_port()
        self.certificate = folder / f"{name}.pem"
        self.log = folder / f"{name}.log"
        self.renew()
        code, text = control(programs, folder, "tunnel", name)
        if code != 0:
            raise Failure(text)
        text = re.sub(r"/etc/\w+/corvane.pem", str(self.certificate), text)
        # What only root may do, and the system's log.
        text = re.sub(r"(?m)^ *(set[ug]id|user|group|chroot|log) .*\n", "", text)
        text = text.replace("foreground = quiet", "foreground = yes\nsyslog = no")
        configuration = folder / f"{name}.conf"
        configuration.write_text(text.replace("12443", str(self.port)))
        self.command = [*COMMANDS[name][0], str(configuration)]

    def renew(self) -> None:
        """Makes another certificate, for the next start or reload."""
        subprocess.run(["openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt",
                        "ec_paramgen_curve:prime256v1", "-nodes", "-subj", "/CN=corvane.example",
                        "-keyout", self.certificate, "-out", self.certificate],
                       check=True, stderr=subprocess.DEVNULL)
        shown = subprocess.run(["openssl", "x509", "-in", self.certificate, "-noout",
                                "-fingerprint", "-sha256"],
                               check=True, stdout=subprocess.PIPE, text=True).stdout
        self.fingerprint = shown.split("=")[1].strip()

    def reload(self, process: subprocess.Popen) -> None:
        process.send_signal(COMMANDS[self.name][1])

    @contextlib.contextmanager
    def running(self) -> Iterator[subprocess.Popen]:
        with logged(self.command, self.log, env=dict(os.environ, PATH=PATH)) as process:
            wait_until(lambda: process.poll() is not None or self.answers(), 10,
                       f"{self.name} did not come up")
            if process.poll() is not None:
                raise Failure(f"{self.name} did not come up:\n"
                              + self.log.read_text(errors="replace"))
            yield process

    def answers(self) -> bool:
        with contextlib.suppress(OSError), connect_encrypted(self.port):
            return True
        return False
