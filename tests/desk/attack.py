"""The fault campaign: random rounds of what a real desktop does to the program, and after each the question
whether anything is left that harms its user."""

import argparse
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
from desk.hands import place_cursor
from desk.waiting import DeskError, holds_within, wait_for

PLACE = (450, 350)
ROUNDS_A_DESK = 60
MOST_FINDINGS = 20
SETTLE_S = 4.0  # longest timed hold, then the longest wait for the guard
LAYOUTS = ("de", "fr", "pl", "es", "us,ru")
MODES = ((800, 600), (1024, 768), (1280, 720))
# Field by field: what it does, and the keysym and button that it leaves down.
FIELDS = [field("a"), field("lmb"), field("a", "ppm", ("b", "click", 3)), field(("shift", "hold", 400), "c"),
          field(("y", "hold", 600)), field(("lmb", "hold", 300)), field({"open": "no-such-program"}, "f13"),
          field(("w", "hold")), field(("w", "release")), field(("lmb", "hold"), ("ctrl", "hold")),
          field(("ctrl", "release"), ("lmb", "release")), field()]
HOLDS = {7: 8, 9: 10}  # a field that leaves something down, and the one that lets go
CLICKS = {1: "button-up left", 2: "button-up right", 5: "button-up left", 9: "button-down left"}
MODIFIERS = {3: SHIFT, 9: CONTROL}  # that a field holds last or for a time


class Round:
    """One desk for many rounds; every kind leaves the program in whatever state, and `settle` makes peace."""

    def __init__(self, program, on_small_disk):
        self.desk = Desk(program)
        self.disk = self.desk.folder if on_small_disk else None
        try:
            if self.disk:
                self.mount_small_disk(program)
            self.restart()
        except BaseException:
            self.close()
            raise

    def mount_small_disk(self, program):
        size = sum(file.stat().st_size for file in Path(program).rglob("*") if file.is_file())
        self.disk.mkdir()
        subprocess.run(["mount", "-t", "tmpfs", "-o", f"size={size // 1024 + 2048}k", "tmpfs", self.disk], check=True)

    def close(self):
        self.desk.end_program()
        if self.disk and self.disk.is_mount():
            subprocess.run(["umount", "-l", self.disk], check=True)
        self.desk.close()

    def restart(self):
        self.desk.end_program()
        self.desk.start(*FIELDS, cursor=PLACE, sendDelay=0, keyHold=20)
        self.was_killed = self.wants_restart = False

    def begin(self, chance):
        self.chance = chance
        self.person = {"keys": set(), "buttons": set()}
        self.owed = set()  # fields that let go of what is held
        self.is_settled = self.layout_is_ours = self.screen_is_whole = True
        x, y = self.desk.display.cursor()
        if not (20 < x < 1200 and 20 < y < 700):
            place_cursor(self.desk.display, *PLACE)
        self.place = self.desk.display.cursor()  # None once it may rightly be elsewhere
        self.desk.recorder.mark()

    # Single acts

    def wander(self):
        for _ in range(self.chance.randrange(1, 6)):
            self.desk.mouse.move(self.chance.randrange(-200, 200), self.chance.randrange(-150, 150))

    def key(self, name, down):
        self.desk.keyboard.press(name, down)
        (self.person["keys"].add if down else self.person["keys"].discard)(name)

    def button(self, number, down):
        self.desk.mouse.press(number, down)
        (self.person["buttons"].add if down else self.person["buttons"].discard)(number)

    def choose_any(self, but=()):
        index = self.chance.choice([index for index in range(len(FIELDS)) if index not in but])
        seen = len(self.desk.recorder.all())
        self.desk.open_wheel()
        self.desk.pick(index)
        if index in CLICKS:
            # A press that comes while the next wheel opens may end in a menu of the window manager, with the keyboard.
            holds_within(1, lambda: any(  # not if the button was down already
                str(record) == CLICKS[index] for record in self.desk.recorder.all()[seen:]))
        if index in HOLDS:
            self.owed.add(HOLDS[index])
        if index in MODIFIERS:
            held = {MODIFIERS[index]} | ({CONTROL} if 10 in self.owed else set())
            self.desk.wait_for_hot_key_with(*held)

    def wait_until_steady(self):
        """Toggles and what a stall has delayed may still be on their way."""
        while holds_within(0.2, lambda was=self.desk.wheel(): self.desk.wheel() != was):
            pass

    # The kinds of rounds

    def toggles(self):
        """Fast ones without waiting: none may be lost."""
        count = self.chance.randrange(1, 9)
        for _ in range(count):
            self.desk.keyboard.tap(TOGGLE_KEY)
            if self.chance.random() < 0.3 and self.desk.mouse_is_held():
                self.desk.mouse.move(1, 1)
                self.place = None  # it may have been given back in between
        self.wait_until_steady()
        is_right = holds_within(2, lambda: bool(self.desk.wheel()) == bool(count % 2))
        assert is_right, f"{count} toggles, and the wheel is wrong"
        if count % 2:
            self.wander()
            self.desk.keyboard.tap(TOGGLE_KEY)
        self.desk.wait_until_closed()

    def choices(self):
        for _ in range(self.chance.randrange(1, 4)):
            self.choose_any()

    def presses(self):
        """Buttons pressed and let go inside, and across opening and closing, beside every field."""
        if self.chance.random() < 0.5:
            self.button(self.chance.choice((1, 2, 3)), True)
            # A window manager lets go of a press a little later; opened before that, its menu may come up.
            wait_for("the press in the window", lambda: self.desk.recorder.since_mark("button-down"))
        self.desk.open_wheel()
        for _ in range(self.chance.randrange(1, 6)):
            self.button(self.chance.choice((1, 2, 3)), self.chance.random() < 0.6)
        self.desk.keyboard.tap(TOGGLE_KEY)
        wait_for("the wheel to close", lambda: not self.desk.wheel())

    def held_keys(self):
        """The person's keys go down and up before, under and after the toggle key."""
        def some():
            for _ in range(self.chance.randrange(3)):
                name = self.chance.choice(("w", "e", "space", "F5"))
                self.key(name, name not in self.person["keys"])

        for is_opening in (True, False):
            some()
            self.key(TOGGLE_KEY, True)
            some()
            (self.desk.wait_until_open if is_opening else self.desk.wait_until_closed)()
            self.key(TOGGLE_KEY, False)

    def layouts(self):
        """Another layout while something is held or the wheel is open."""
        self.desk.open_wheel()
        self.layout_is_ours = False
        is_inside = self.chance.random() < 0.5
        layout = self.chance.choice(LAYOUTS)
        if is_inside:
            self.desk.screen.run("setxkbmap", layout)
            self.desk.keyboard.tap(53)
            self.desk.wait_until_closed()
        else:
            self.desk.pick(self.chance.choice((3, 4)))
            self.desk.screen.run("setxkbmap", layout)

    def monitors(self):
        screen, self.screen_is_whole = self.desk.screen, False
        is_mode = self.chance.random() < 0.5
        if not is_mode:
            screen.set_monitors((0, 0, 640, 800), (640, 0, 640, 800))
        place_cursor(self.desk.display, 200 if is_mode else self.chance.choice((200, 900)), 300)
        self.desk.open_wheel()
        self.place = None
        if is_mode:
            screen.set_mode(*self.chance.choice(MODES))
        else:
            screen.set_monitors(self.chance.choice(((0, 0, 640, 800), (640, 0, 640, 800), (0, 0, 700, 500))))
        self.desk.keyboard.tap(TOGGLE_KEY)  # it may be what opens it again
        self.is_settled = False
        self.wants_restart = True  # the way back of the monitors would close the next round's wheel

    def locks(self):
        self.desk.open_wheel()
        self.desk.lock_screen(True)
        # It closes when the program has heard: from then on the key does nothing.
        wait_for("the wheel to close with the session", lambda: not self.desk.wheel(), 3)
        for _ in range(self.chance.randrange(3)):
            self.desk.keyboard.tap(TOGGLE_KEY)
        assert not holds_within(0.1, self.desk.wheel), "the wheel opened over the locker"
        self.desk.lock_screen(False)
        # The program hears of it in its own time; until then the key does nothing.
        wait_for("the wheel after the lock", lambda: self.desk.keyboard.tap(TOGGLE_KEY) or
                 holds_within(0.3, self.desk.wheel))

    def stalls(self):
        """Stopped for a moment or past the guard's patience, in whatever state, with input meanwhile."""
        if self.chance.random() < 0.7:
            self.desk.open_wheel()
            self.desk.aim(self.chance.randrange(len(FIELDS)))
        self.desk.program.send_signal(signal.SIGSTOP)
        seconds = self.chance.choice((0.05, 0.3, 3.0))
        deadline = time.monotonic() + seconds
        while time.monotonic() < deadline:
            self.chance.choice((self.wander, self.desk.mouse.click, lambda: self.desk.keyboard.tap("e"),
                                lambda: self.desk.keyboard.tap(TOGGLE_KEY)))()
            time.sleep(0.05)
        if seconds == 3.0:
            assert not self.desk.mouse_is_held(), "a stalled program holds the mouse"
        self.desk.program.send_signal(signal.SIGCONT)
        self.place, self.is_settled = None, False

    def deaths(self):
        """The program dies at any moment; before it perhaps the guard, perhaps both at once."""
        way = self.chance.choice(("open", "run", "held", "closed"))
        if way == "open":
            self.desk.open_wheel()
            self.wander()
        elif way == "run":
            self.desk.choose(self.chance.choice((2, 3, 4, 5)))
        elif way == "held":
            self.desk.choose(7)
            wait_for("w to be down", self.desk.display.keys_down)
        if self.chance.random() < 0.4:
            dead = self.desk.kill_guard()
            # Time enough for a new one; both gone within milliseconds cannot be helped.
            assert holds_within(3, lambda: self.desk.new_guard_is_ready(dead)), "no new guard came"
        self.desk.kill_program()
        self.was_killed = True
        if way == "held":
            self.desk.keyboard.tap("w")  # held on purpose: the person's own tap lets go

    def guard_deaths(self):
        dead = self.desk.kill_guard()
        self.choose_any()
        assert holds_within(3, lambda: self.desk.new_guard_is_ready(dead)), "no new guard came"
        self.wants_restart = True  # guards that die young may be started less and less often

    def shell(self):
        """Random keys and clicks in the program's own window, the disk full in half of the rounds."""
        is_full = self.disk and self.chance.random() < 0.5
        if is_full:
            self.fill_disk()
        self.desk.screen.run("xdotool", "search", "--onlyvisible", "--class", "rotika", "windowactivate", "--sync")
        for _ in range(self.chance.randrange(5, 40)):
            if self.chance.random() < 0.3:
                place_cursor(self.desk.display, self.chance.randrange(215, 1065), self.chance.randrange(130, 700))
                self.desk.mouse.click()
            else:
                self.desk.keyboard.tap(self.chance.choice(("Tab", "Tab", "space", "Down", "Up", "Return", "5")))
        for _ in range(3):
            self.desk.keyboard.tap("Escape")
        self.place = None
        self.desk.recorder.all()
        self.desk.recorder.down.clear()  # what goes up while another window has the keyboard is not seen here
        self.check_files()
        if self.disk:
            (self.disk / "filler").unlink(missing_ok=True)
        # It may have quit or changed its own wheels and keys by what was clicked.
        status = self.desk.program.poll()
        self.desk.end_program()
        status = self.desk.program.returncode if status is None else status
        assert status in (0, -signal.SIGTERM), f"the program ended with {status}"
        self.was_killed = True

    def fill_disk(self):
        with open(self.disk / "filler", "wb", buffering=0) as filler:
            try:
                while filler.write(b"\0" * 4096):
                    pass
            except OSError:
                pass  # now it is full

    # What must hold after each

    def settle(self):
        """The person lets go of everything and closes the wheel; what a function holds is released."""
        desk = self.desk
        if not self.layout_is_ours:
            desk.screen.run("setxkbmap", "us")
        for name in set(self.person["keys"]):
            self.key(name, False)
        for number in set(self.person["buttons"]):
            self.button(number, False)
        if self.was_killed:
            return
        if desk.program.poll() is not None:
            raise DeskError(f"the program ended by itself with {desk.program.returncode}")
        if not self.is_settled:
            self.wait_until_steady()
        if desk.wheel():
            desk.close_wheel()
        for index in self.owed:
            desk.choose(index)

    def check(self):
        desk = self.desk
        but = () if self.was_killed else ("silent",)
        if self.place not in (None, desk.display.cursor()):
            raise DeskError(f"the cursor was at {self.place} and is at {desk.display.cursor()}")
        if left := desk.leftovers(but, SETTLE_S):
            raise DeskError(f"left behind: {left}")
        typed = {record.name for record in desk.recorder.since_mark("key-down", "key-repeat")}
        if TOGGLE_KEY in typed and not self.was_killed:
            raise DeskError("the toggle key's letter reached the window")
        if not holds_within(SETTLE_S, lambda: desk.recorder.all() and not desk.recorder.down):
            raise DeskError(f"the window never saw these go up: {desk.recorder.down}")
        self.check_files()
        said = (desk.screen.folder / "rotika.log").read_text(errors="replace")
        if "Sanitizer" in said or "runtime error" in said:
            raise DeskError("a sanitizer has spoken")

    def check_files(self):
        for name in ("config.json", "default.json", "voice.json"):
            file = self.desk.folder / name
            if file.exists():
                json.loads(file.read_text(encoding="utf-8-sig"))

    def calm_down(self):
        """Screen and program as at the beginning."""
        if not self.screen_is_whole:
            self.desk.screen.set_monitors()
            self.desk.screen.set_mode(*self.desk.screen.size)
        if self.was_killed or self.wants_restart:
            self.restart()


KINDS = {Round.toggles: 20, Round.choices: 20, Round.presses: 15, Round.held_keys: 15, Round.layouts: 4,
         Round.monitors: 4, Round.locks: 6, Round.stalls: 3, Round.deaths: 6, Round.guard_deaths: 3, Round.shell: 3}


class Campaign:
    def __init__(self, options):
        self.options = options
        self.counts, self.findings = Counter(), []
        self.on_small_disk = os.geteuid() == 0
        self.desk_rounds = None
        self.used = 0

    def run(self):
        print(f"Seed {self.options.seed}, {self.options.seconds} s on {self.options.program}", flush=True)
        if not self.on_small_disk:
            print("Not root, so no disk of its own to fill: no full disk.")
        deadline = time.monotonic() + self.options.seconds
        number = self.options.first
        while time.monotonic() < deadline and len(self.findings) < MOST_FINDINGS:
            self.one(number)
            number += 1
        self.leave_desk()
        for kind, count in sorted(self.counts.items()):
            print(f"   {kind:<14}{count:>6}")
        print(f"   {sum(self.counts.values())} rounds, {len(self.findings)} findings")
        return 1 if self.findings else 0

    def one(self, number):
        chance = random.Random(f"{self.options.seed}/{number}")
        kind = chance.choices(list(KINDS), KINDS.values())[0].__name__
        kind = self.options.kind or kind
        try:
            if not self.desk_rounds or self.used == ROUNDS_A_DESK:
                self.leave_desk()
                self.desk_rounds, self.used = Round(self.options.program, self.on_small_disk), 0
            self.used += 1
            self.counts[kind] += 1
            self.desk_rounds.begin(chance)
            getattr(self.desk_rounds, kind)()
            self.desk_rounds.settle()
            self.desk_rounds.check()
            self.desk_rounds.calm_down()
        except (AssertionError, OSError, ValueError, subprocess.SubprocessError) as failure:
            self.findings.append(failure)
            print(f"Round {number}, {kind}: {type(failure).__name__}: {failure}", flush=True)
            if self.desk_rounds:
                self.desk_rounds.desk.keep(self.options.artefacts, f"attack-{self.options.seed}-{number}-{kind}")
            self.leave_desk()

    def leave_desk(self):
        if self.desk_rounds:
            self.desk_rounds.close()
        self.desk_rounds = None


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("program", type=Path, help="folder of the program")
    parser.add_argument("--seconds", type=float, default=300)
    parser.add_argument("--seed", type=int, default=time.time_ns() % 1_000_000)
    parser.add_argument("--first", type=int, default=1, help="number of the first round, to repeat it")
    parser.add_argument("--kind", choices=[kind.__name__ for kind in KINDS], help="rounds of one kind alone")
    parser.add_argument("--artefacts", type=Path, default=Path("build/artefacts/attack"))
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(143))  # not without taking the desk down
    sys.exit(Campaign(parser.parse_args()).run())


if __name__ == "__main__":
    main()
