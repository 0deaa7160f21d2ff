"""Waiting for a condition, with a deadline that slow builds can stretch."""

import os
import time

# How many times longer than a plain build this one takes to answer.
PATIENCE = float(os.environ.get("QUIBEL_TEST_PATIENCE", "1"))

# When all waiting of a test ends.
_last = float("inf")


def begin_test():
    """Has all waiting end so many seconds from now as the environment says."""
    global _last
    _last = time.monotonic() + float(os.environ.get("QUIBEL_TEST_SECONDS", "inf"))


class DeadlinePassed(AssertionError):
    """What was waited for has not come."""


def wait_until(condition, what, seconds=15.0):
    """Calls condition() until it gives something true and returns that.

    what says in words what is waited for; it may be a function, called only when
    the deadline passes, so that it can tell what was there instead.
    """
    deadline = min(time.monotonic() + seconds * PATIENCE, _last)
    while True:
        found = condition()
        if found:
            return found
        if time.monotonic() > deadline:
            raise DeadlinePassed("Waited in vain for " + (what() if callable(what) else what))
        time.sleep(0.02)
