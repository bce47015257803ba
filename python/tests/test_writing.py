"""Values put into an image: what arrives, what is refused, and that nothing else changes."""

import datetime
import os
import stat
import subprocess
from pathlib import Path
from typing import Any

import numpy
import pytest
import travik
from conftest import SAMPLES, TOOL, golden_paths, name_of, sample_paths
from hypothesis import given, settings
from hypothesis import strategies as st

MASKED: Any = getattr(numpy.ma, "masked_all")((2, 128))
BOARD = (SAMPLES / "rf-board.bin").read_bytes()
settings.register_profile("house", deadline=None, max_examples=60, derandomize=True)
settings.load_profile("house")


def sound(image: travik.Image) -> bool:
    return not image.problems


def test_one_element_is_that_of_the_tool(board: Path) -> None:
    image = travik.open(board)
    image["RFBO_RFLEVEL_MAX_DATA"]["values", 0, 10] = 1.25
    image[2]["product_date"] = datetime.date(2024, 12, 31)
    image[2]["name"] = "Prüf"
    image[2]["serial_number"] = 7
    assignments = ["15716.values[0][10]=1.25", "2.product_date=2024-12-31", "2.name=Prüf", "2.serial_number=7"]
    assert bytes(image) != board.read_bytes()
    subprocess.run([TOOL, "set", str(board), *assignments], check=True, capture_output=True)
    assert bytes(image) == board.read_bytes()
    assert sound(image) and image.modified


def test_arrays_show_what_was_when_they_were_taken() -> None:
    image = travik.open(BOARD)
    block = image[15716]
    values, stored = block["values"], block.stored["values"]
    before = values.copy()
    changed = values.copy()
    changed[0] += 0.25
    block["values"] = changed
    assert numpy.array_equal(values, before) and stored[0, 0] == 1950
    assert numpy.allclose(block["values"], changed) and block.stored["values", 0, 0] == 1975
    assert block["values", 1].tolist() == before[1].tolist() and sound(image)
    del image, block
    assert stored[0, 0] == 1950


def test_parts_of_arrays() -> None:
    block = travik.open(BOARD)[15716]
    block["values", 0] = 19.5
    block["values", :, 0] = [1, 2]
    block["values", 1, -3:] = numpy.float32(4.25)
    block["values", block["values"] == 19.5] = numpy.int8(-3)
    block["values", [0, 1], [5, 6]] = (7.5, True)
    values = block["values"]
    assert values[:, 0].tolist() == [1, 2] and (values[0, [1, 2, 127]] == -3).all()
    assert values[1, -3:].tolist() == [4.25] * 3 and (values[0, 5], values[1, 6]) == (7.5, 1)
    backwards = values[::-1, ::-1]
    block["values"] = backwards
    assert numpy.array_equal(block["values"], backwards)
    block["values"] = numpy.asfortranarray(values)
    assert numpy.array_equal(block["values"], values)
    block.stored["values", 0, 0] = -5
    assert block["values", 0, 0] == -0.05
    block["values", 0, 0:0] = []
    block["columns"] = 3
    assert block["values"].shape == (2, 3)


@pytest.mark.parametrize(
    ("key", "value", "error", "text"),
    [
        (("values", 0, 10), 1e9, ValueError, r"values\[0\]\[10\]=1e\+09: out of range, takes -21474836.48 to"),
        (("values", 0, 10), 10**30, ValueError, "out of range"),
        (("values", 0, 10), 10**400, ValueError, "finite"),
        (("values", 0, 10), float("nan"), ValueError, "not a finite number"),
        (("values", 0, 10), "1.25", TypeError, "takes numbers, not str"),
        (("values", 0, 10), None, TypeError, "takes numbers, not NoneType"),
        (("values", 0, 10), 1j, TypeError, "takes numbers, not complex"),
        (("values", 0, 10), [1, 2], ValueError, "shape"),
        (("values", [0, 0], [1, 1]), [1, 2], ValueError, r"\[0\]\[1\]=2: is set twice"),
        (("values", 2, 0), 1, IndexError, "out of bounds"),
        (("values", 0, 128), 1, IndexError, "out of bounds"),
        (("values", 0, 2**80), 1, IndexError, ""),
        (("values", "x"), 1, IndexError, ""),
        ("values", 1.25, ValueError, r"takes shape \(2, 128\), this is of shape \(\)"),
        ("values", numpy.zeros((2, 129)), ValueError, "shape"),
        ("values", numpy.zeros((128, 2)), ValueError, "shape"),
        ("values", numpy.full((2, 128), "x"), TypeError, "numbers"),
        ("values", numpy.full((2, 128), None), TypeError, "an array of object"),
        ("values", MASKED, ValueError, "masked"),
        ("values", numpy.full((2, 128), numpy.longdouble("1e4000")), ValueError, "out of range"),
        ("values", [[1, 2], [3]], ValueError, ""),
        ("rows", 3, ValueError, "takes 0 to 2"),
        ("rows", -1, ValueError, "takes 0 to 2"),
        (("rows", 0), 1, IndexError, "no dimensions"),
        ("valeus", 1, KeyError, "near: values"),
        (7, 1, TypeError, "named by a str"),
    ],
)
@pytest.mark.filterwarnings("ignore:.*(ragged|overflow)")
def test_refusals_change_nothing(key: Any, value: Any, error: type[Exception], text: str) -> None:
    image = travik.open(BOARD)
    with pytest.raises(error, match=text):
        image[15716][key] = value
    assert bytes(image) == BOARD and not image.modified


def test_texts_and_dates_that_are_refused() -> None:
    image = travik.open(BOARD)
    ident = image["IDENT_2"]
    refused: list[tuple[str, Any, type[Exception]]] = [
        ("name", "123456789012345", ValueError),
        ("name", "€", ValueError),
        ("name", "a\0b", ValueError),
        ("name", "\ud800", ValueError),
        ("name", 7, TypeError),
        ("name", b"x", TypeError),
        ("product_date", "2023-02-29", ValueError),
        ("product_date", datetime.date(1979, 12, 31), ValueError),
        ("product_date", datetime.datetime(2023, 1, 1, 12), ValueError),
        ("product_date", None, TypeError),
        ("product_date", 7, TypeError),
    ]
    for field, value, error in refused:
        with pytest.raises(error):
            ident[field] = value
    with pytest.raises(TypeError, match="text"):
        ident.stored["name"] = b"x"
    with pytest.raises(ValueError, match="whole number"):
        ident.stored["serial_number"] = 1.5
    assert bytes(image) == BOARD
    ident["product_date"] = datetime.datetime(2023, 1, 2)
    assert ident["product_date"] == datetime.date(2023, 1, 2)
    ident["product_date"] = numpy.datetime64("2024-02-29")
    assert ident["product_date"] == datetime.date(2024, 2, 29)
    ident.stored["product_date"] = 0
    assert ident["product_date"] is None
    ident["product_date"] = None


def test_damaged_blocks_take_no_change() -> None:
    damaged = bytearray(BOARD)
    damaged[800] ^= 1
    image = travik.open(damaged)
    with pytest.raises(travik.Error, match="do not hold"):
        image[15706]["rows"] = 1
    assert len(image.problems) == 1 and image[15706].checksum_ok is False
    assert len(image.reseal(15706)) == 1 and sound(image)
    image[15706]["rows"] = 1
    with pytest.raises(KeyError):
        image.reseal("NONE")
    cut = travik.open(BOARD[:1000])
    with pytest.raises(travik.Error, match="doubtful"):
        cut[15706]["rows"] = 1
    second = travik.open(SAMPLES / "second-edition.bin")
    with pytest.raises(ValueError, match="shape"):
        second[40100]["rows"] = 39
    assert not second.modified


@pytest.mark.parametrize("path", sample_paths() + golden_paths(), ids=name_of)
def test_what_is_read_goes_back_without_a_byte_changed(path: Path) -> None:
    """Also NaNs, texts with bytes behind their end, dates that are none, and rows of unequal length."""
    image = travik.open(path)
    content = bytes(image)
    for block in image.blocks:
        for name in block.fields:
            if block[name] is None and block.role(name) != "date":
                continue
            try:
                block[name] = block[name]
                if numpy.asarray(block.stored[name]).dtype.kind != "S":
                    block.stored[name] = block.stored[name]
            except travik.Error:
                assert block.problems or block.image.problems
    assert bytes(image) == content and not image.modified


NUMBERS = st.floats(-300, 300, allow_nan=False)


@given(st.lists(NUMBERS, min_size=128, max_size=128), st.integers(0, 1))
def test_round_trip_of_physical_values(row: list[float], index: int) -> None:
    image = travik.open(BOARD)
    block = image[15716]
    other = block["values"][1 - index].tolist()
    block["values", index] = row
    assert numpy.abs(block["values"][index] - row).max() <= 0.005 + 1e-9
    assert block["values"][1 - index].tolist() == other
    again = travik.open(bytes(image))
    assert sound(again) and numpy.array_equal(again[15716]["values"], block["values"])


@given(st.data())
def test_round_trip_of_stored_numbers(data: st.DataObject) -> None:
    """Of every type that the sample images store, over all of its range."""
    name = data.draw(st.sampled_from(["second-edition", "dac-board", "step-attenuator"]))
    image = travik.open(SAMPLES / f"{name}.bin")
    block = data.draw(st.sampled_from([block for block in image.blocks if block.fields]))
    fields = [f for f in block.fields if block.role(f) == "value" and numpy.asarray(block.stored[f]).size]
    if not fields:
        return
    field = data.draw(st.sampled_from(fields))
    stored = numpy.asarray(block.stored[field])
    position = tuple(data.draw(st.integers(0, extent - 1)) for extent in stored.shape)
    value: Any
    if stored.dtype.kind in "iu":
        limits = numpy.iinfo(stored.dtype)
        value = data.draw(st.integers(int(limits.min), int(limits.max)))
    else:
        value = data.draw(st.floats(width=32))
    before = bytes(image)
    try:
        block.stored[(field, *position)] = value
    except ValueError as error:
        assert "sums" in str(error) or "shape" in str(error) or "out of range" in str(error)
        assert bytes(image) == before
        return
    now = block.stored[(field, *position)]
    assert now == value or (now != now and value != value)
    assert sound(image)


@given(st.text(max_size=20))
def test_round_trip_of_texts(text: str) -> None:
    image = travik.open(BOARD)
    try:
        image[2]["name"] = text
    except ValueError:
        assert len(text) > 14 or "\0" in text or any(ord(c) > 255 for c in text)
        assert bytes(image) == BOARD
    else:
        assert image[2]["name"] == text and sound(image)


def test_saving(board: Path, tmp_path: Path) -> None:
    board.chmod(0o640)
    image = travik.open(board)
    assert image.save() is None and board.read_bytes() == BOARD
    image[15716]["values", 0, 10] = 1.25
    other = tmp_path / "other.bin"
    assert image.save(other) is None
    assert other.read_bytes() == bytes(image) and board.read_bytes() == BOARD and image.modified
    assert image.save(backup=True) == f"{board}~"
    assert Path(f"{board}~").read_bytes() == BOARD and board.read_bytes() == bytes(image)
    assert not image.modified and stat.S_IMODE(board.stat().st_mode) == 0o640
    image[15716]["values", 0, 10] = 1.5
    link = tmp_path / "link.bin"
    link.symlink_to(board)
    image.save(str(link), backup=tmp_path / "kept.bin")
    assert not image.modified and (tmp_path / "kept.bin").exists() and link.is_symlink()
    assert {path.name for path in tmp_path.iterdir()} == {"rf-board.bin", "rf-board.bin~", "other.bin", "kept.bin", "link.bin"}


def test_a_file_that_others_changed_is_left(board: Path) -> None:
    image = travik.open(board)
    image[15716]["values", 0, 10] = 1.25
    for content in (BOARD[:-1], BOARD + b"x", b""):
        board.write_bytes(content)
        with pytest.raises(travik.Error, match="changed by another program"):
            image.save()
        assert board.read_bytes() == content and image.modified
    board.unlink()
    with pytest.raises(FileNotFoundError):
        image.save()
    with pytest.raises(FileNotFoundError):
        image.save(board / "none" / "x.bin")
    with pytest.raises(ValueError, match="not opened from a path"):
        travik.open(BOARD).save()
    image.save(board)
    assert board.read_bytes() == bytes(image)
    os.chdir(board.parent)
    image.save("-")
    assert Path("-").read_bytes() == bytes(image)
