import sys
from pathlib import Path

import pytest
from _pytest.runner import runtestprotocol

sys.path.insert(0, str(Path(__file__).parents[1]))

from desk.desk import Desk  # noqa: E402

ROOT = Path(__file__).parents[2]
WINE_TRIES = 3  # Wine loses input now and then


def pytest_addoption(parser):
    parser.addoption("--target", choices=("linux", "windows"), default="linux",
                     help="the system that the program was built for; Windows runs under Wine")
    parser.addoption("--program", help="folder of the program under test, within its build folder")
    parser.addoption("--artefacts", default=ROOT / "build/artefacts/scenarios",
                     help="folder for pictures and logs of failures")


def pytest_configure(config):
    config.addinivalue_line("markers", "only(target, why): a scenario for one system only")


def pytest_collection_modifyitems(config, items):
    target = config.getoption("target")
    other = [item for item in items if (mark := item.get_closest_marker("only")) and mark.args[0] != target]
    config.hook.pytest_deselected(items=other)
    items[:] = [item for item in items if item not in other]


@pytest.hookimpl(tryfirst=True)
def pytest_runtest_protocol(item, nextitem):
    if item.config.getoption("target") != "windows":
        return None
    item.ihook.pytest_runtest_logstart(nodeid=item.nodeid, location=item.location)
    for tries in range(WINE_TRIES):
        reports = runtestprotocol(item, log=False, nextitem=nextitem)
        if not any(report.failed for report in reports):
            break
        item.user_properties.append(("tried again", tries + 1))
    for report in reports:
        item.ihook.pytest_runtest_logreport(report=report)
    item.ihook.pytest_runtest_logfinish(nodeid=item.nodeid, location=item.location)
    return True


def pytest_terminal_summary(terminalreporter, config):
    if config.getoption("target") == "windows":
        reports = [report for some in terminalreporter.stats.values() for report in some]
        again = sorted({report.nodeid.rpartition("::")[2] for report in reports if getattr(report, "user_properties", ())})
        terminalreporter.write_line(f"{len(again)} scenarios needed another try: {', '.join(again) or '-'}")


@pytest.hookimpl(hookwrapper=True)
def pytest_runtest_makereport(item, call):
    outcome = yield
    if call.when == "call":
        item.has_failed = outcome.get_result().failed


@pytest.fixture
def desk(request):
    """A private desk. After every scenario no device may be left floating, nothing down, no key without auto-repeat."""
    target = request.config.getoption("target")
    made = Desk(request.config.getoption("program") or ROOT / "build" / target / "rotika", target)
    made.doubles, made.speech = made.original.parent / "tests/doubles", ROOT / "build/speech"
    try:
        yield made
        has_failed, left = request.node.has_failed, []
        if not has_failed and made.screen.server.poll() is None:
            if not made.wheel():  # an open wheel captures the mouse
                left += made.leftovers(ignored=("not repeating",))
            made.end_program()
            left += made.leftovers()
        if has_failed or left:
            made.keep(Path(request.config.getoption("artefacts")) / target, request.node.name)
        assert not left, f"left behind: {left}"
    finally:
        made.close()
