import os
import sys
from pathlib import Path

import pytest

ROOT = Path(__file__).parents[2]
sys.path.insert(0, str(ROOT / "tests"))


@pytest.fixture
def release():
    """The folder of the packages, which "./dev package" has made."""
    return Path(os.environ["ROTIKA_RELEASE"])


@pytest.fixture
def artefacts():
    """The folder for pictures."""
    folder = ROOT / "build/artefacts/packages"
    folder.mkdir(parents=True, exist_ok=True)
    return folder
