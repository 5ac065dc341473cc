"""The fault campaign: random rounds of what a real desktop does to the program, and after each the question
whether anything is left that harms its user."""

import argparse
import itertools
import json
import os
import random
import signal
import subprocess
import sys
import time
from collections import Counter
from pathlib import Path

from desk.desk import CONTROL, SHIFT, TOGGLE_KEY, Desk, field
from desk.input_devices import place_cursor
from desk.waiting import holds_within, wait_for

PLACE = (450, 350)
ROUNDS_A_DESK = 60
MOST_FINDINGS = 20
SETTLE_S = 4.0  # longest timed hold, then the longest wait for the guard
LAYOUTS = ("de", "fr", "pl", "es", "us,ru")
MODES = ((800, 600), (1024, 768), (1280, 720))
PARTS = ((0, 0, 640, 800), (640, 0, 640, 800))
# Field by field: what it does, and the keysym and button that it leaves down.
FIELDS = [field("a"), field("lmb"), field("a", "ppm", ("b", "click", 3)), field(("shift", "hold", 400), "c"),
          field(("y", "hold", 600)), field(("lmb", "hold", 300)), field({"open": "no-such-program"}, "f13"),
          field(("w", "hold")), field(("w", "release")), field(("lmb", "hold"), ("ctrl", "hold")),
          field(("ctrl", "release"), ("lmb", "release")), field()]
HOLDS = {7: 8, 9: 10}  # a field that leaves something down, and the one that lets go
CLICKS = {1: "button-up left", 2: "button-up right", 5: "button-up left", 9: "button-down left"}
MODIFIERS = {3: SHIFT, 9: CONTROL}  # that a field holds last or for a time


class Rounds(Desk):
    """One desk for many rounds; every kind leaves the program in whatever state, and `settle` makes peace."""

    def __init__(self, program):
        super().__init__(program)
        self.number, self.disk = 0, self.folder if os.geteuid() == 0 else None
        try:
            if self.disk:
                size = sum(file.stat().st_size for file in program.rglob("*") if file.is_file()) // 1024 + 2048
                self.disk.mkdir()
                subprocess.run(["mount", "-t", "tmpfs", "-o", f"size={size}k", "tmpfs", self.disk], check=True)
            self.restart()
        except BaseException:
            self.close()
            raise

    def close(self):
        self.end_program()
        if self.disk and self.disk.is_mount():
            subprocess.run(["umount", "-l", self.disk], check=True)
        super().close()

    def restart(self):
        self.end_program()
        self.start(*FIELDS, cursor=PLACE, sendDelay=0, keyHold=20)
        self.was_killed = self.wants_restart = False

    def play(self, kind, chance):
        self.chance, self.number = chance, self.number + 1
        self.person, self.owed = set(), set()  # what the person has down, and fields that let go of what is held
        self.is_settled = self.layout_is_ours = self.screen_is_whole = True
        x, y = self.display.cursor()
        if not (20 < x < 1200 and 20 < y < 700):
            place_cursor(self.display, *PLACE)
        self.place = self.display.cursor()  # None once it may rightly be elsewhere
        self.recorder.mark()
        getattr(self, kind)()
        self.settle()
        self.check()
        if not self.screen_is_whole:
            self.screen.set_monitors()
            self.screen.set_mode(*self.screen.size)
        if self.was_killed or self.wants_restart:
            self.restart()

    # Single acts

    def wander(self):
        for _ in range(self.chance.randrange(1, 6)):
            self.mouse.move(self.chance.randrange(-200, 200), self.chance.randrange(-150, 150))

    def press(self, thing, down):
        """A key by its name, a button by its number."""
        (self.keyboard if isinstance(thing, str) else self.mouse).press(thing, down)
        (self.person.add if down else self.person.discard)(thing)

    def choose_any(self):
        index, seen = self.chance.randrange(len(FIELDS)), len(self.recorder.all())
        self.choose(index)
        if index in CLICKS:
            # A press that comes while the next wheel opens may end in a menu of the window manager, with the keyboard.
            holds_within(1, lambda: any(  # not if the button was down already
                str(record) == CLICKS[index] for record in self.recorder.all()[seen:]))
        self.owed |= {HOLDS[index]} if index in HOLDS else set()
        if index in MODIFIERS:
            self.wait_for_hot_key_with(*{MODIFIERS[index]} | ({CONTROL} if 10 in self.owed else set()))

    def wait_until_steady(self):
        """Toggles and what a stall has delayed may still be on their way."""
        while holds_within(0.2, lambda was=self.wheel(): self.wheel() != was):
            pass

    # The kinds of rounds

    def toggles(self):
        """Fast ones without waiting: none may be lost."""
        count = self.chance.randrange(1, 9)
        for _ in range(count):
            self.keyboard.tap(TOGGLE_KEY)
            if self.chance.random() < 0.3 and self.mouse_is_held():
                self.mouse.move(1, 1)
                self.place = None  # it may have been given back in between
        self.wait_until_steady()
        wait_for(f"the wheel as {count} toggles leave it", lambda: bool(self.wheel()) == bool(count % 2), 2)
        if count % 2:
            self.wander()
            self.keyboard.tap(TOGGLE_KEY)
        self.wait_until_closed()

    def choices(self):
        for _ in range(self.chance.randrange(1, 4)):
            self.choose_any()

    def presses(self):
        """Buttons pressed and let go inside, and across opening and closing, beside every field."""
        if self.chance.random() < 0.5:
            self.press(self.chance.choice((1, 2, 3)), True)
            # A window manager lets go of a press a little later; opened before that, its menu may come up.
            wait_for("the press in the window", lambda: self.recorder.since_mark("button-down"))
        self.open_wheel()
        for _ in range(self.chance.randrange(1, 6)):
            self.press(self.chance.choice((1, 2, 3)), self.chance.random() < 0.6)
        self.keyboard.tap(TOGGLE_KEY)
        wait_for("the wheel to close", lambda: not self.wheel())

    def held_keys(self):
        """The person's keys go down and up before, under and after the toggle key."""
        def some():
            for _ in range(self.chance.randrange(3)):
                name = self.chance.choice(("w", "e", "space", "F5"))
                self.press(name, name not in self.person)

        for is_opening in (True, False):
            some()
            self.press(TOGGLE_KEY, True)
            some()
            (self.wait_until_open if is_opening else self.wait_until_closed)()
            self.press(TOGGLE_KEY, False)

    def layouts(self):
        """Another layout while something is held or the wheel is open."""
        self.open_wheel()
        self.layout_is_ours = False
        if is_outside := self.chance.random() < 0.5:
            self.pick(self.chance.choice((3, 4)))
        self.screen.run("setxkbmap", self.chance.choice(LAYOUTS))
        if not is_outside:
            self.keyboard.tap(53)
            self.wait_until_closed()

    def monitors(self):
        self.screen_is_whole = False
        is_mode = self.chance.random() < 0.5
        if not is_mode:
            self.screen.set_monitors(*PARTS)
        place_cursor(self.display, 200 if is_mode else self.chance.choice((200, 900)), 300)
        self.open_wheel()
        self.place = None
        if is_mode:
            self.screen.set_mode(*self.chance.choice(MODES))
        else:
            self.screen.set_monitors(self.chance.choice((*PARTS, (0, 0, 700, 500))))
        self.keyboard.tap(TOGGLE_KEY)  # it may be what opens it again
        self.is_settled = False
        self.wants_restart = True  # the way back of the monitors would close the next round's wheel

    def locks(self):
        self.open_wheel()
        self.lock_screen(True)
        # It closes when the program has heard: from then on the key does nothing.
        wait_for("the wheel to close with the session", lambda: not self.wheel(), 3)
        for _ in range(self.chance.randrange(3)):
            self.keyboard.tap(TOGGLE_KEY)
        assert not holds_within(0.1, self.wheel), "the wheel opened over the locker"
        self.lock_screen(False)
        # The program hears of it in its own time; until then the key does nothing.
        wait_for("the wheel after the lock", lambda: self.keyboard.tap(TOGGLE_KEY) or
                 holds_within(0.3, self.wheel))

    def stalls(self):
        """Stopped for a moment or past the guard's patience, in whatever state, with input meanwhile."""
        if self.chance.random() < 0.7:
            self.open_wheel()
            self.aim(self.chance.randrange(len(FIELDS)))
        self.program.send_signal(signal.SIGSTOP)
        seconds = self.chance.choice((0.05, 0.3, 3.0))
        acts = self.wander, self.mouse.click, lambda: self.keyboard.tap("e"), lambda: self.keyboard.tap(TOGGLE_KEY)
        holds_within(seconds, lambda: self.chance.choice(acts)(), 0.05)
        assert seconds < 3 or not self.mouse_is_held(), "a stalled program holds the mouse"
        self.program.send_signal(signal.SIGCONT)
        self.place, self.is_settled = None, False

    def deaths(self):
        """The program dies at any moment; before it perhaps the guard, perhaps both at once."""
        way = self.chance.choice(("open", "run", "held", "closed"))
        if way == "open":
            self.open_wheel()
            self.wander()
        elif way == "run":
            self.choose(self.chance.choice((2, 3, 4, 5)))
        elif way == "held":
            self.choose(7)
            wait_for("w to be down", self.display.keys_down)
        if self.chance.random() < 0.4:
            self.guard_dies()  # with time enough for a new one; both gone within milliseconds cannot be helped
        self.kill_program()
        self.was_killed = True
        if way == "held":
            self.keyboard.tap("w")  # held on purpose: the person's own tap lets go

    def guard_dies(self, meanwhile=lambda: None):
        dead = self.kill_guard()
        meanwhile()
        wait_for("a new guard", lambda: self.guard() not in (None, dead), 3)

    def guard_deaths(self):
        self.guard_dies(self.choose_any)
        self.wants_restart = True  # guards that die young may be started less and less often

    def shell(self):
        """Random keys and clicks in the program's own window, the disk full in half of the rounds."""
        if self.disk and self.chance.random() < 0.5:
            subprocess.run(["dd", "if=/dev/zero", f"of={self.disk}/filler", "bs=4k"], capture_output=True)
        self.screen.run("xdotool", "search", "--onlyvisible", "--class", "rotika", "windowactivate", "--sync")
        for _ in range(self.chance.randrange(5, 40)):
            if self.chance.random() < 0.3:
                place_cursor(self.display, self.chance.randrange(215, 1065), self.chance.randrange(130, 700))
                self.mouse.click()
            else:
                self.keyboard.tap(self.chance.choice(("Tab", "Tab", "space", "Down", "Up", "Return", "5")))
        for _ in range(3):
            self.keyboard.tap("Escape")
        self.recorder.all()
        self.recorder.down.clear()  # what goes up while another window has the keyboard is not seen here
        self.check_files()
        (self.folder / "filler").unlink(missing_ok=True)
        # It may have quit or changed its own wheels and keys by what was clicked.
        status = self.end_program()
        assert status in (0, -signal.SIGTERM), f"the program ended with {status}"
        self.place, self.was_killed = None, True

    # What must hold after each

    def settle(self):
        """The person lets go of everything and closes the wheel; what a function holds is released."""
        if not self.layout_is_ours:
            self.screen.run("setxkbmap", "us")
        for thing in set(self.person):
            self.press(thing, False)
        if self.was_killed:
            return
        assert self.program.poll() is None, f"the program ended by itself with {self.program.returncode}"
        if not self.is_settled:
            self.wait_until_steady()
        if self.wheel():
            self.close_wheel()
        for index in self.owed:
            self.choose(index)

    def check(self):
        cursor, left = self.display.cursor(), self.leftovers(() if self.was_killed else ("not repeating",), SETTLE_S)
        assert self.place in (None, cursor), f"the cursor was at {self.place} and is at {cursor}"
        assert not left, f"left behind: {left}"
        typed = {record.name for record in self.recorder.since_mark("key-down", "key-repeat")}
        assert TOGGLE_KEY not in typed or self.was_killed, "the toggle key's letter reached the window"
        is_clean = holds_within(SETTLE_S, lambda: self.recorder.all() and not self.recorder.down)
        assert is_clean, f"the window never saw these go up: {self.recorder.down}"
        self.check_files()
        said = (self.screen.folder / "rotika.log").read_text(errors="replace")
        assert "Sanitizer" not in said and "runtime error" not in said, "a sanitizer has spoken"

    def check_files(self):
        for file in self.folder.glob("*.json"):
            json.loads(file.read_text(encoding="utf-8-sig"))


KINDS = {Rounds.toggles: 20, Rounds.choices: 20, Rounds.presses: 15, Rounds.held_keys: 15, Rounds.layouts: 4,
         Rounds.monitors: 4, Rounds.locks: 6, Rounds.stalls: 3, Rounds.deaths: 6, Rounds.guard_deaths: 3,
         Rounds.shell: 3}


def campaign(options):
    print(f"Seed {options.seed}, {options.seconds} s on {options.program}", flush=True)
    if os.geteuid() != 0:
        print("Not root, so no disk of its own to fill: no full disk.")
    deadline = time.monotonic() + options.seconds
    counts, findings, rounds = Counter(), 0, None
    for number in itertools.count(options.first):
        if time.monotonic() > deadline or findings == MOST_FINDINGS:
            break
        chance = random.Random(f"{options.seed}/{number}")
        kind = chance.choices(list(KINDS), KINDS.values())[0].__name__
        kind = options.kind or kind
        try:
            rounds = rounds or Rounds(options.program)
            counts[kind] += 1
            rounds.play(kind, chance)
        except (AssertionError, OSError, ValueError, subprocess.SubprocessError) as failure:
            findings += 1
            print(f"Round {number}, {kind}: {type(failure).__name__}: {failure}", flush=True)
            if rounds:
                rounds.keep(options.artefacts, f"attack-{options.seed}-{number}-{kind}")
                rounds = rounds.close()
        if rounds and rounds.number == ROUNDS_A_DESK:
            rounds = rounds.close()
    if rounds:
        rounds.close()
    for kind, count in sorted(counts.items()):
        print(f"   {kind:<14}{count:>6}")
    print(f"   {counts.total()} rounds, {findings} findings")
    return 1 if findings else 0


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("program", type=Path, help="folder of the program")
    parser.add_argument("--seconds", type=float, default=300)
    parser.add_argument("--seed", type=int, default=time.time_ns() % 1_000_000)
    parser.add_argument("--first", type=int, default=1, help="number of the first round, to repeat it")
    parser.add_argument("--kind", choices=[kind.__name__ for kind in KINDS], help="rounds of one kind alone")
    parser.add_argument("--artefacts", type=Path, default=Path("build/artefacts/attack"))
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(143))  # not without taking the desk down
    sys.exit(campaign(parser.parse_args()))


if __name__ == "__main__":
    main()
