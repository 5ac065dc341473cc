"""Random fault injection: rounds of random input, kills, stalls and desktop changes, each followed by a check that no
key, button, grab or damaged file is left."""

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
SETTLE_S = 4.0  # the longest timed hold plus the guard's longest delay
LAYOUTS = ("de", "fr", "pl", "es", "us,ru")
MODES = ((800, 600), (1024, 768), (1280, 720))
PARTS = ((0, 0, 640, 800), (640, 0, 640, 800))
# The fields' functions; the dictionaries below refer to them by index.
FIELDS = [field("a"), field("lmb"), field("a", "ppm", ("b", "click", 3)), field(("shift", "hold", 400), "c"),
          field(("y", "hold", 600)), field(("lmb", "hold", 300)), field({"open": "no-such-program"}, "f13"),
          field(("w", "hold")), field(("w", "release")), field(("lmb", "hold"), ("ctrl", "hold")),
          field(("ctrl", "release"), ("lmb", "release")), field()]
HOLDS = {7: 8, 9: 10}  # fields that leave something down, and the fields that release it
CLICKS = {1: "button-up left", 2: "button-up right", 5: "button-up left", 9: "button-down left"}
MODIFIERS = {3: SHIFT, 9: CONTROL}  # modifiers that fields hold


class Rounds(Desk):
    """One desk for many rounds. A round may leave the program in any state; `settle` then releases everything."""

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
        self.was_killed = self.needs_restart = False

    def play(self, kind, rng):
        self.rng, self.number = rng, self.number + 1
        self.pressed, self.releasing = set(), set()  # the user's keys and buttons; fields that end functions' holds
        self.is_settled = self.layout_is_ours = self.screen_is_whole = True
        x, y = self.display.cursor()
        if not (20 < x < 1200 and 20 < y < 700):
            place_cursor(self.display, *PLACE)
        self.place = self.display.cursor()  # None once the cursor may have moved
        self.recorder.mark()
        getattr(self, kind)()
        self.settle()
        self.check()
        if not self.screen_is_whole:
            self.screen.set_monitors()
            self.screen.set_mode(*self.screen.size)
        if self.was_killed or self.needs_restart:
            self.restart()

    # Single actions

    def move_randomly(self):
        for _ in range(self.rng.randrange(1, 6)):
            self.mouse.move(self.rng.randrange(-200, 200), self.rng.randrange(-150, 150))

    def press(self, thing, down):
        """A key by its name, a button by its number."""
        (self.keyboard if isinstance(thing, str) else self.mouse).press(thing, down)
        (self.pressed.add if down else self.pressed.discard)(thing)

    def choose_any(self):
        index, seen = self.rng.randrange(len(FIELDS)), len(self.recorder.all())
        self.choose(index)
        if index in CLICKS:
            # A press during the next opening may open a menu of the window manager, which takes the keyboard.
            holds_within(1, lambda: any(  # none comes if the button was down already
                str(record) == CLICKS[index] for record in self.recorder.all()[seen:]))
        self.releasing |= {HOLDS[index]} if index in HOLDS else set()
        if index in MODIFIERS:
            self.wait_for_hot_key_with(*{MODIFIERS[index]} | ({CONTROL} if 10 in self.releasing else set()))

    def wait_until_steady(self):
        """Toggles and input that a stall has delayed may still be queued."""
        while holds_within(0.2, lambda was=self.wheel(): self.wheel() != was):
            pass

    # The kinds of rounds

    def toggles(self):
        """Fast toggles without waiting: none may be lost."""
        count = self.rng.randrange(1, 9)
        for _ in range(count):
            self.keyboard.tap(TOGGLE_KEY)
            if self.rng.random() < 0.3 and self.mouse_is_held():
                self.mouse.move(1, 1)
                self.place = None  # the mouse may have been released in between
        self.wait_until_steady()
        wait_for(f"the wheel as {count} toggles leave it", lambda: bool(self.wheel()) == bool(count % 2), 2)
        if count % 2:
            self.move_randomly()
            self.keyboard.tap(TOGGLE_KEY)
        self.wait_until_closed()

    def choices(self):
        for _ in range(self.rng.randrange(1, 4)):
            self.choose_any()

    def presses(self):
        """Buttons pressed and released away from fields while the wheel is open, and across opening and closing."""
        if self.rng.random() < 0.5:
            self.press(self.rng.choice((1, 2, 3)), True)
            # A window manager passes a press on a little later; a wheel opened before that may open its menu.
            wait_for("the press in the window", lambda: self.recorder.since_mark("button-down"))
        self.open_wheel()
        for _ in range(self.rng.randrange(1, 6)):
            self.press(self.rng.choice((1, 2, 3)), self.rng.random() < 0.6)
        self.keyboard.tap(TOGGLE_KEY)
        wait_for("the wheel to close", lambda: not self.wheel())

    def held_keys(self):
        """The user's keys go down and up before, during and after the toggle key's press."""
        def some():
            for _ in range(self.rng.randrange(3)):
                name = self.rng.choice(("w", "e", "space", "F5"))
                self.press(name, name not in self.pressed)

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
        if is_outside := self.rng.random() < 0.5:
            self.pick(self.rng.choice((3, 4)))
        self.screen.run("setxkbmap", self.rng.choice(LAYOUTS))
        if not is_outside:
            self.keyboard.tap(53)
            self.wait_until_closed()

    def monitors(self):
        self.screen_is_whole = False
        is_mode = self.rng.random() < 0.5
        if not is_mode:
            self.screen.set_monitors(*PARTS)
        place_cursor(self.display, 200 if is_mode else self.rng.choice((200, 900)), 300)
        self.open_wheel()
        self.place = None
        if is_mode:
            self.screen.set_mode(*self.rng.choice(MODES))
        else:
            self.screen.set_monitors(self.rng.choice((*PARTS, (0, 0, 700, 500))))
        self.keyboard.tap(TOGGLE_KEY)  # closes the wheel, or opens it again
        self.is_settled = False
        self.needs_restart = True  # restoring the monitors would close the next round's wheel

    def locks(self):
        self.open_wheel()
        self.lock_screen(True)
        # Once the program has received the lock it closes the wheel and ignores the key.
        wait_for("the wheel to close with the session", lambda: not self.wheel(), 3)
        for _ in range(self.rng.randrange(3)):
            self.keyboard.tap(TOGGLE_KEY)
        assert not holds_within(0.1, self.wheel), "the wheel opened over the locker"
        self.lock_screen(False)
        # Until the program has received the unlock it ignores the key.
        wait_for("the wheel after the lock", lambda: self.keyboard.tap(TOGGLE_KEY) or
                 holds_within(0.3, self.wheel))

    def stalls(self):
        """The program is stopped in any state, for a moment or beyond the guard's limit, with input in the meantime."""
        if self.rng.random() < 0.7:
            self.open_wheel()
            self.aim(self.rng.randrange(len(FIELDS)))
        self.program.send_signal(signal.SIGSTOP)
        seconds = self.rng.choice((0.05, 0.3, 3.0))
        inputs = (self.move_randomly, self.mouse.click, lambda: self.keyboard.tap("e"),
                  lambda: self.keyboard.tap(TOGGLE_KEY))
        holds_within(seconds, lambda: self.rng.choice(inputs)(), 0.05)
        assert seconds < 3 or not self.mouse_is_held(), "a stalled program holds the mouse"
        self.program.send_signal(signal.SIGCONT)
        self.place, self.is_settled = None, False

    def kills(self):
        """The program is killed at any moment, in some rounds after its guard."""
        way = self.rng.choice(("open", "run", "held", "closed"))
        if way == "open":
            self.open_wheel()
            self.move_randomly()
        elif way == "run":
            self.choose(self.rng.choice((2, 3, 4, 5)))
        elif way == "held":
            self.choose(7)
            wait_for("w to be down", self.display.keys_down)
        if self.rng.random() < 0.4:
            self.replace_guard()  # waits for the new guard: nothing can help if both are killed within milliseconds
        self.kill_program()
        self.was_killed = True
        if way == "held":
            self.keyboard.tap("w")  # a hold without a time: the user's own tap releases it

    def replace_guard(self, meanwhile=lambda: None):
        dead = self.kill_guard()
        meanwhile()
        wait_for("a new guard", lambda: self.guard() not in (None, dead), 3)

    def guard_kills(self):
        self.replace_guard(self.choose_any)
        self.needs_restart = True  # guards that end early may be restarted less and less often

    def shell(self):
        """Random keys and clicks in the program's own window, with a full disk in half of the rounds."""
        if self.disk and self.rng.random() < 0.5:
            subprocess.run(["dd", "if=/dev/zero", f"of={self.disk}/filler", "bs=4k"], capture_output=True)
        self.screen.run("xdotool", "search", "--onlyvisible", "--class", "rotika", "windowactivate", "--sync")
        for _ in range(self.rng.randrange(5, 40)):
            if self.rng.random() < 0.3:
                place_cursor(self.display, self.rng.randrange(215, 1065), self.rng.randrange(130, 700))
                self.mouse.click()
            else:
                self.keyboard.tap(self.rng.choice(("Tab", "Tab", "space", "Down", "Up", "Return", "5")))
        for _ in range(3):
            self.keyboard.tap("Escape")
        self.recorder.all()
        self.recorder.down.clear()  # the recorder misses releases while another window has the keyboard
        self.check_files()
        (self.folder / "filler").unlink(missing_ok=True)
        # The clicks may have made it quit or change its own wheels and keys.
        status = self.end_program()
        assert status in (0, -signal.SIGTERM), f"the program ended with {status}"
        self.place, self.was_killed = None, True

    # Invariants after each round

    def settle(self):
        """Releases everything that the user and functions hold, and closes the wheel."""
        if not self.layout_is_ours:
            self.screen.run("setxkbmap", "us")
        for thing in set(self.pressed):
            self.press(thing, False)
        if self.was_killed:
            return
        assert self.program.poll() is None, f"the program exited on its own with {self.program.returncode}"
        if not self.is_settled:
            self.wait_until_steady()
        if self.wheel():
            self.close_wheel()
        for index in self.releasing:
            self.choose(index)

    def check(self):
        cursor, left = self.display.cursor(), self.leftovers(() if self.was_killed else ("not repeating",), SETTLE_S)
        assert self.place in (None, cursor), f"the cursor was at {self.place} and is at {cursor}"
        assert not left, f"left behind: {left}"
        typed = {record.name for record in self.recorder.since_mark("key-down", "key-repeat")}
        assert TOGGLE_KEY not in typed or self.was_killed, "the toggle key's letter reached the window"
        is_clean = holds_within(SETTLE_S, lambda: self.recorder.all() and not self.recorder.down)
        assert is_clean, f"the window got no release of: {self.recorder.down}"
        self.check_files()
        output = (self.screen.folder / "rotika.log").read_text(errors="replace")
        assert "Sanitizer" not in output and "runtime error" not in output, "a sanitizer reported an error"

    def check_files(self):
        for file in self.folder.glob("*.json"):
            json.loads(file.read_text(encoding="utf-8-sig"))


KINDS = {Rounds.toggles: 20, Rounds.choices: 20, Rounds.presses: 15, Rounds.held_keys: 15, Rounds.layouts: 4,
         Rounds.monitors: 4, Rounds.locks: 6, Rounds.stalls: 3, Rounds.kills: 6, Rounds.guard_kills: 3,
         Rounds.shell: 3}


def campaign(options):
    print(f"Seed {options.seed}, {options.seconds} s on {options.program}", flush=True)
    if os.geteuid() != 0:
        print("Not root, so it cannot mount a disk to fill: no rounds with a full disk.")
    deadline = time.monotonic() + options.seconds
    counts, findings, rounds = Counter(), 0, None
    for number in itertools.count(options.first):
        if time.monotonic() > deadline or findings == MOST_FINDINGS:
            break
        rng = random.Random(f"{options.seed}/{number}")
        kind = rng.choices(list(KINDS), KINDS.values())[0].__name__
        kind = options.kind or kind
        try:
            rounds = rounds or Rounds(options.program)
            counts[kind] += 1
            rounds.play(kind, rng)
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
    parser.add_argument("--kind", choices=[kind.__name__ for kind in KINDS], help="only rounds of this kind")
    parser.add_argument("--artefacts", type=Path, default=Path("build/artefacts/attack"))
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(143))  # as an exception, so that the desk is closed
    sys.exit(campaign(parser.parse_args()))


if __name__ == "__main__":
    main()
