import os
import sys
from pathlib import Path

import pytest

sys.path.insert(0, str(Path(__file__).parents[1]))

from desk.desk import Desk  # noqa: E402

ROOT = Path(__file__).parents[2]


def pytest_addoption(parser):
    parser.addoption("--program", default=os.environ.get("ROTIKA_PROGRAM", ROOT / "build/linux/rotika"),
                     help="folder of the program under test")
    parser.addoption("--artefacts", default=ROOT / "build/artefacts/scenarios",
                     help="folder for what a failure leaves")


@pytest.hookimpl(hookwrapper=True)
def pytest_runtest_makereport(item, call):
    outcome = yield
    if call.when == "call":
        item.has_failed = outcome.get_result().failed


@pytest.fixture
def desk(request):
    """A desk of its own. After every scenario nothing may be left floating, down or silent."""
    made = Desk(request.config.getoption("program"))
    try:
        yield made
        left = []
        if not made.wheel():  # with the wheel open the mouse is rightly held
            left += made.leftovers(but=("silent",))
        made.end_program()
        left += made.leftovers()
        if left or request.node.has_failed:
            made.keep(Path(request.config.getoption("artefacts")), request.node.name)
        assert not left, f"left behind: {left}"
    finally:
        made.close()
