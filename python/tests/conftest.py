"""The images that the tests read, and the tool as a second opinion."""

import json
import os
import subprocess
from pathlib import Path
from typing import Any

import pytest

SAMPLES = Path(os.environ["TRAVIK_SAMPLES"])
TOOL = os.environ["TRAVIK_TOOL"]
GOLDEN = Path(os.environ.get("TRAVIK_GOLDEN", SAMPLES.parent.parent / "shared" / "golden"))


def sample_paths() -> list[Path]:
    return sorted(SAMPLES.glob("*.bin"))


def name_of(path: Path) -> str:
    """What a test of an image is called."""
    return path.stem


def golden_paths() -> list[Path]:
    """Further images, where they are at hand."""
    return sorted(GOLDEN.rglob("*.bin"))


def documents(paths: list[Path]) -> list[dict[str, Any]]:
    """What `show --json` says of images."""
    done = subprocess.run([TOOL, "show", "--json", *map(str, paths)], capture_output=True, check=False)
    assert done.returncode in (0, 1), done.stderr.decode()
    loaded: list[dict[str, Any]] = json.loads(done.stdout)
    assert len(loaded) == len(paths)
    return loaded


@pytest.fixture
def board(tmp_path: Path) -> Path:
    """A copy of a board's image that may be changed."""
    copy = tmp_path / "rf-board.bin"
    copy.write_bytes((SAMPLES / "rf-board.bin").read_bytes())
    return copy
