"""Waiting for a condition, never for a time."""

import time

GENEROUS_S = 10.0


class DeskError(AssertionError):
    """The desk itself or the program under test did not do what a scenario waits for."""


def holds_within(seconds, condition, pause=0.005):
    """The first true value of the condition, or the last false one when the time is over."""
    deadline = time.monotonic() + seconds
    while not (value := condition()) and time.monotonic() < deadline:
        time.sleep(pause)
    return value


def wait_for(what, condition, seconds=GENEROUS_S):
    if not (value := holds_within(seconds, condition)):
        raise DeskError(f"waited {seconds:g} s in vain for {what}")
    return value
