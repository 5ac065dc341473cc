"""Waiting for a condition instead of sleeping."""

import time

TIMEOUT_S = 20.0  # generous: a condition that holds is never waited for longer than it needs


class DeskError(AssertionError):
    """A condition that a scenario waits for did not occur, or the desk itself failed."""


def holds_within(seconds, condition, pause=0.005):
    """The condition's first true value, or its last false one after the timeout."""
    deadline = time.monotonic() + seconds
    while not (value := condition()) and time.monotonic() < deadline:
        time.sleep(pause)
    return value


def wait_for(what, condition, seconds=TIMEOUT_S):
    if not (value := holds_within(seconds, condition)):
        raise DeskError(f"timed out after {seconds:g} s waiting for {what}")
    return value
