"""Faults around a step of the play, and trials, which are steps with their own script."""

import contextlib
import fcntl
import os
import random
import resource
import shutil
import signal
import sqlite3
from typing import Callable, Iterator, List, Optional

import wire
from clients import Difference
from host import Locator
from model import Session
from play import PASSWORD, Fault, Play, Player

F_SETPIPE_SZ = 1031
KEPT = 8 << 20  # bytes; more than the system buffers for a client, less than the server keeps
FLOOD = 33 << 20  # bytes; more than both
FLOOD_MESSAGE = 60_000  # bytes


class Stopped(Fault):
    name = "stopped"
    serves = may_operate = False

    @contextlib.contextmanager
    def around(self, play: Play, rng: random.Random) -> Iterator[None]:
        play.server.signal(signal.SIGSTOP)
        try:
            yield
            play.pump.rest(rng.uniform(0.5, 2))
        finally:
            play.server.signal(signal.SIGCONT)


class NoDescriptors(Fault):
    """No descriptors for new clients; `is_strict`: none at all, so that nothing can be stored."""

    may_write = may_operate = False

    def __init__(self, is_strict: bool):
        self.name = "no descriptors at all" if is_strict else "no descriptors for clients"
        self.is_strict = is_strict

    @contextlib.contextmanager
    def around(self, play: Play, rng: random.Random) -> Iterator[None]:
        pid = play.server.process.pid
        _, hard = resource.prlimit(pid, resource.RLIMIT_NOFILE)
        last = max(int(number) for number in os.listdir(f"/proc/{pid}/fd"))
        room = 1 if self.is_strict else 40 + rng.randrange(10)
        resource.prlimit(pid, resource.RLIMIT_NOFILE, (last + room, hard))
        yield
        resource.prlimit(pid, resource.RLIMIT_NOFILE, (hard, hard))


class Locked(Fault):
    """Another program reads the database or locks it exclusively."""

    may_write = False
    may_refuse = True

    def __init__(self, is_exclusive: bool):
        self.name = "database locked" if is_exclusive else "database being read"
        self.is_exclusive = is_exclusive
        self.may_read = not is_exclusive

    @contextlib.contextmanager
    def around(self, play: Play, rng: random.Random) -> Iterator[None]:
        with contextlib.closing(sqlite3.connect(play.server.database, isolation_level=None,
                                                timeout=30)) as other:
            other.execute("BEGIN EXCLUSIVE" if self.is_exclusive else "BEGIN")
            other.execute("SELECT * FROM bans").fetchall()
            yield
            play.pump.rest(rng.uniform(0, 1))


class FullDisk(Fault):
    name = "full disk"
    may_write = False
    may_refuse = True

    @contextlib.contextmanager
    def around(self, play: Play, rng: random.Random) -> Iterator[None]:
        if play.server.ignores_file_limit:
            pid = play.server.process.pid
            _, hard = resource.prlimit(pid, resource.RLIMIT_FSIZE)
            resource.prlimit(pid, resource.RLIMIT_FSIZE, (0, hard))
            yield
            resource.prlimit(pid, resource.RLIMIT_FSIZE, (hard, hard))
            return
        filler = play.server.folder / "filler"
        with filler.open("wb", buffering=0) as file, contextlib.suppress(OSError):
            while True:
                file.write(b"x" * 4096)
        yield
        filler.unlink()


class StuckOutput(Fault):
    name = "standard output stuck"

    @contextlib.contextmanager
    def around(self, play: Play, rng: random.Random) -> Iterator[None]:
        assert play.server.process.stdout is not None
        fcntl.fcntl(play.server.process.stdout, F_SETPIPE_SZ, 4096)
        play.server.read_output(False)
        yield
        play.server.read_output(True)


class NoLogFolder(Fault):
    name = "log folder gone"

    @contextlib.contextmanager
    def around(self, play: Play, rng: random.Random) -> Iterator[None]:
        shutil.rmtree(play.server.folder / "logs")
        (play.server.folder / "logs").touch()
        yield
        (play.server.folder / "logs").unlink()


class HangingLocator(Fault):
    name = "location host hangs"

    def __init__(self, locator: Locator):
        self.locator = locator

    @contextlib.contextmanager
    def around(self, play: Play, rng: random.Random) -> Iterator[None]:
        self.locator.answers.clear()
        yield
        play.finish()  # after the lookups have timed out
        self.locator.answers.set()


# ---- trials

def everybody_may_end(sessions: List[Session]) -> None:
    for session in sessions:
        session.connection.may_end = True
        session.connection.resume()


def everybody_ends(play: Play, sessions: List[Session]) -> None:
    for session in sessions:
        connection = session.connection
        play.pump.until(lambda: not connection.is_open,
                        lambda: f"the connection of {connection.label} ends")
    for player in play.players:
        player.session = None
        player.must_leave = False


def kill(play: Play, rng: random.Random) -> None:
    """Kills the server amid reports and bans, at a random moment or at the first notice of a ban. A
    ban that was announced must be stored; one with an end, or of a range, exactly once."""
    sessions = list(play.model.sessions)
    here = play.ins()
    before = list(play.model.bans)
    pairs = [(admin, target) for admin in here if admin.session.is_admin() for target in here
             if target is not admin and target.session.network is admin.session.network]
    rng.shuffle(pairs)
    waits_for_notice = bool(pairs) and rng.random() < 0.5
    for session in sessions:
        session.connection.may_end = True

    def kill_now() -> None:
        if play.server.process.poll() is None:
            play.server.signal(signal.SIGKILL)

    told: List[str] = []  # reasons
    for number in range(200):
        if number % 10 == 5 and play.server.process.poll() is None:
            reason = play.unique("kept")
            # The notice may kill the server before it answers.
            with contextlib.suppress(Difference):
                if rng.random() < 0.5:
                    play.server.control.do("ban-address", address=f"198.51.100.{number}",
                                           reason=reason, **{"for": "2h"})
                else:
                    play.server.control.do("ban-range", range=f"203.0.113.{number}-203.0.113.250",
                                           reason=reason, **{"for": "2h"})
                told.append(reason)
        session = rng.choice(here).session
        if not session.is_over:
            session.connection.send(play.reports(session, rng, 10))
        if number % 20 == 10 and pairs:
            admin, target = pairs.pop()
            if admin.session.is_over or target.session.is_over:
                continue
            if waits_for_notice:
                target.session.connection.at_a_notice = kill_now
            play.administrate(admin, [target], rng, may_message=False)
            if play.model.hardened:
                target.session.leave()  # the server closes it, unless it is killed first
        if number % 10 == 0:
            play.pump.turn()
    if waits_for_notice:
        play.pump.until(lambda: play.server.process.poll() is not None,
                        lambda: "a client gets notice of a kick or a ban")
    kill_now()
    play.server.end(None, -signal.SIGKILL)
    everybody_may_end(sessions)
    everybody_ends(play, sessions)
    seen = {reason.decode() for session in sessions
            for command, reason in session.connection.notices if command == wire.BAN}
    ending = [reason for reason, in play.server.query(
        "SELECT reason FROM bans JOIN ban_ends ON banid=bans.id "
        "UNION ALL SELECT reason FROM ban_ranges WHERE until NOT NULL")]
    if any(ending.count(reason) != 1 for reason in told):
        raise Difference(f"bans that end are stored as {ending!r}, announced were {told!r}")
    play.server.query("DELETE FROM bans WHERE id IN (SELECT banid FROM ban_ends)")
    play.server.query("DELETE FROM ban_ends")
    play.server.query("DELETE FROM ban_ranges")
    stored = {reason for reason, in play.server.query("SELECT reason FROM bans")}
    # A ban without notice may be stored or not.
    play.model.bans = before + [ban for ban in play.model.bans if ban not in before
                                and (ban.reason in seen or ban.reason in stored)]
    play.server.check_database(play.model)
    # Remove them, so that the script continues in the same way.
    for ban in set(play.model.bans) - set(before):
        play.server.query("DELETE FROM bans WHERE reason=?", ban.reason)
    play.model.bans = before
    play.count(sessions)
    play.model.settle(sessions, is_cut=True)
    restart(play)


def restart(play: Play) -> None:
    play.model.restart()
    play.server.start()


def stop(play: Play) -> None:
    """Stops the server in order: everything said before must arrive."""
    end(play)
    play.server.check_database(play.model)


def end(play: Play) -> None:
    sessions = list(play.model.sessions)
    everybody_may_end(sessions)
    play.server.end(signal.SIGTERM, 0)
    everybody_ends(play, sessions)
    play.model.settle(sessions)


def replace_by_backup(play: Play, rng: random.Random) -> None:
    """Replaces the database by a backup, after the server has ended or while it runs. Changes since
    the backup are gone."""
    model = play.model
    file = play.server.folder / "backup.rsd"
    play.shell.do("backup", str(file), "--overwrite")
    then = list(model.rows), list(model.bans), list(model.grants)
    play.server.check_database(model, file)
    play.step(rng)
    if rng.random() < 0.5:
        stop(play)
        file.replace(play.server.database)
    else:
        # The server continues with the open database, and reports that.
        file.replace(play.server.database)
        answer = play.server.control.ask("reload")
        if answer["ok"] or "replaced" not in answer["error"]:
            raise Difference(f"a database that was replaced: {answer!r}")
        end(play)
    model.rows, model.bans, model.grants = then
    restart(play)


def free_players(play: Play, count: int) -> List[Player]:
    """That many players who are not connected or banned; if needed, others leave."""
    def free() -> List[Player]:
        return [p for p in play.players
                if p.session is None and not play.model.is_banned(p.address)]

    while len(free()) < count:
        play.lead_off(play.ins()[-1].session)
    play.settle()
    return free()[:count]


def come(play: Play, player: Player, receive_buffer: Optional[int] = None) -> Session:
    session = play.connect(player, receive_buffer)
    session.connection.send(play.log_in(player, session))
    return session


def administrator(play: Play) -> Session:
    session = next((p.session for p in play.ins() if p.session.is_admin()), None)
    if session is None:
        player = free_players(play, 1)[0]
        session = come(play, player)
        play.settle()
        play.server.control.do("grant", user=player.name)
        play.model.grants.append(player.grant())
    return session


def fatal_message(play: Play, rng: random.Random) -> None:
    """Under classic rules a message that reaches a client without a network ends the server.
    Earlier output is still sent."""
    play.lead_off_strangers()
    admin = administrator(play)
    play.connect(free_players(play, 1)[0])
    play.settle()
    sessions = list(play.model.sessions)
    everybody_may_end(sessions)
    # The stranger is the last in the walk over the connections.
    text = play.unique("the last#").encode()
    admin.connection.send(admin.take(wire.MESSAGE_ALL, text))
    play.server.fatal_ends += 1
    play.server.end(None, 1)
    everybody_ends(play, sessions)
    play.model.settle(sessions)
    restart(play)


def do_not_read(play: Play, rng: random.Random) -> None:
    """One client stops reading for a while and then hears everything. Another never reads again and
    is cut off at the limit; the others hear everything and that it left."""
    play.lead_off_strangers()
    players = free_players(play, 4)
    homes = [player.network for player in players]
    name = play.unique("Deaf")
    play.add_network(name, 5)
    for player in players:
        player.network = name
    buffers = [None, None, 65536, 4096]
    admin, reader, slow, deaf = (come(play, *one) for one in zip(players, buffers))
    play.settle()
    play.server.control.do("grant", user=players[0].name)
    play.model.grants.append(players[0].grant())

    def flood(size: int) -> None:
        for _ in range(size // FLOOD_MESSAGE):
            text = play.unique(players[0].name + "#").encode() + b"." * FLOOD_MESSAGE
            admin.connection.send(admin.take(wire.MESSAGE_ALL, text))
            play.pump.turn()
        play.ask_around([admin])

    slow.connection.stall()
    deaf.connection.stall()
    flood(KEPT)
    slow.connection.resume()
    play.settle()
    play.leave(slow)
    flood(FLOOD)
    deaf.leave()
    play.forget(deaf)
    play.settle()
    deaf.connection.end()
    play.leave(admin)
    play.leave(reader)
    play.finish()
    for player, home in zip(players, homes):
        player.network = home


def race(play: Play, players: List[Player], frames: Callable[[Player], List[bytes]],
         step: int, most: int) -> None:
    """All send their frames at once; exactly `most` must pass the step, in the model too."""
    sessions = [play.connect(player) for player in players]
    for session, player in zip(sessions, players):
        session.connection.send(b"".join(frames(player)))
    for session in sessions:
        play.pump.until(lambda: len(session.connection.answers) >= 4,
                        lambda: f"{session.connection.label} is answered four times")
    wins = [s for s in sessions if (step, wire.OK) in s.connection.answers]
    if len(wins) != most:
        raise Difference(f"{len(wins)} of {len(players)} got through step {step - 1}, not {most}")
    for session, player in sorted(zip(sessions, players), key=lambda pair: pair[0] not in wins):
        for one in frames(player):
            command, = wire.HEADER.unpack_from(one)[1:]
            session.take(command, one[wire.HEADER.size:])
        session.connection.may_end = play.model.hardened
    play.finish()


def lead_off(play: Play, players: List[Player]) -> None:
    for player in players:
        if player.session is not None:
            play.lead_off(player.session)
    play.finish()


def seats(play: Play, rng: random.Random) -> None:
    """More clients than seats: some leave, others get in."""
    name, most = play.unique("Tight"), rng.randrange(3, 12)
    play.add_network(name, most)
    players = free_players(play, 3 * most)

    def frames(player: Player) -> List[bytes]:
        return [wire.frame(wire.NETWORK, name.encode()),
                wire.frame(wire.PASSWORD, wire.digest(PASSWORD)),
                wire.frame(wire.NAME, player.name.encode())]

    race(play, players[:2 * most], frames, wire.PASSWORD, most)
    ins = [p for p in players if p.session is not None and p.session.state == "in"]
    out = rng.randrange(1, most)
    for player in ins[:out]:
        play.lead_off(player.session)
    play.settle()
    race(play, players[2 * most:], frames, wire.PASSWORD, out)
    lead_off(play, players)


def names(play: Play, rng: random.Random) -> None:
    """Many want the same name, in all networks. It is free again once its owner has left."""
    for _ in range(2):
        players = free_players(play, 8)

        def frames(player: Player) -> List[bytes]:
            return [wire.frame(wire.NETWORK, player.network.encode()),
                    wire.frame(wire.PASSWORD, wire.digest(PASSWORD)),
                    wire.frame(wire.NAME, b"The One")]

        race(play, players, frames, wire.REPORT, 1)
        lead_off(play, players)
