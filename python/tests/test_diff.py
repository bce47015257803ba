"""What differs between two images."""

import numpy
import pytest
import travik
from conftest import SAMPLES

BOARD = (SAMPLES / "rf-board.bin").read_bytes()


def pair() -> tuple[travik.Image, travik.Image]:
    return travik.open(BOARD), travik.open(BOARD)


def test_the_same() -> None:
    before, after = pair()
    difference = travik.diff(before, after)
    assert not difference and len(difference) == 0 and difference.blocks == [] and difference.rest == []
    assert "the same" in repr(difference)


def test_values() -> None:
    before, after = pair()
    after[15716]["values", 0, 10] += 0.5
    after[15716]["values", 1, 3] -= 0.02
    after[2]["name"] = "X"
    difference = travik.diff(before, after)
    assert [(block.key, block.id, block.kind) for block in difference] == [
        ("IDENT_2", 2, "changed"),
        ("RFBO_RFLEVEL_MAX_DATA", 15716, "changed"),
    ]
    name, values = (block.fields[0] for block in difference.blocks)
    assert (name.name, name.before, name.after) == ("name", ["RFBO"], ["X"]) and name.indices.shape == (1, 0)
    assert values.indices.tolist() == [[0, 10], [1, 3]] and len(values) == 2
    assert numpy.allclose(values.after, numpy.asarray(values.before) + [0.5, -0.02]) and values.largest == 0.5
    assert "checksum" in difference.blocks[1].words and difference.blocks[1].bytes == []
    tolerant = travik.diff(before, after, tolerance=0.1, blocks=["RFBO_*"])
    assert [len(field) for block in tolerant for field in block.fields] == [1]
    assert tolerant.blocks[0].forgiven == 1
    # It shows what was compared, and keeps it.
    after.close()
    del before, after
    assert numpy.asarray(values.before).tolist() == [19.3, 18.44]
    assert "changed" in repr(difference) and "2 elements" in repr(values) and repr(difference.blocks[0])


def test_blocks_and_bytes() -> None:
    before, after = travik.open(BOARD), travik.open(BOARD[44:])
    first = travik.diff(before, after).blocks[0]
    assert (first.key, first.kind, first.offset_before, first.offset_after) == ("IDENT_2", "only before", 0, None)
    assert travik.diff(before, after).blocks[1].kind == "moved"
    assert travik.diff(before, travik.open(BOARD + b"ab")).rest == [(0, b"", b"ab")]


def test_what_is_refused() -> None:
    before, after = pair()
    for wrong in (-1.0, float("nan")):
        with pytest.raises(ValueError, match="tolerance"):
            travik.diff(before, after, tolerance=wrong)
    with pytest.raises(TypeError):
        travik.diff(before, None)  # type: ignore[arg-type]
    before.close()
    with pytest.raises(ValueError, match="closed"):
        travik.diff(before, after)
