"""What no caller may bring down: use after close, threads, objects made by hand, odd classes."""

import copy
import pickle
import threading
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path
from typing import Any

import numpy
import pytest
import travik
from conftest import SAMPLES

BOARD = SAMPLES / "rf-board.bin"


def test_use_after_close() -> None:
    with travik.open(BOARD) as image:
        block, blocks = image[15716], iter(image)
        values, stored = block["values"], block.stored
        view = stored["values"]
    assert image.closed and values[0, 0] == 19.5 and view[0, 0] == 1950
    image.close()
    uses: list[Any] = [
        lambda: image[15716],
        lambda: image.blocks,
        lambda: image.info,
        lambda: image.problems,
        lambda: image.size,
        lambda: image.modified,
        lambda: bytes(image),
        lambda: len(image),
        lambda: image.save(),
        lambda: image.reseal(),
        lambda: image.__enter__(),
        lambda: block["values"],
        lambda: stored["values"],
        lambda: block.axis("values", 1),
        lambda: block.checksum_ok,
        lambda: block.dimensions("values"),
        lambda: bytes(block),
        lambda: block.__setitem__(("values", 0, 0), 1),
    ]
    for use in uses:
        with pytest.raises(ValueError, match="closed"):
            use()
    assert "closed" in repr(image) and "closed" in repr(block) and "closed" in image._repr_html_()
    assert len(list(blocks)) == 23 and block.key == "RFBO_RFLEVEL_MAX_DATA" and block.units


@pytest.mark.parametrize("made", [travik.Image, travik.Block, travik.StoredValues, travik.Finding, travik.ModuleInfo])
def test_nothing_is_made_by_hand(made: Any) -> None:
    base = made.__mro__[1]
    for make in (made, lambda: made.__new__(made), lambda: object.__new__(made), lambda: base.__new__(made)):
        with pytest.raises(TypeError):
            make()
    with pytest.raises(TypeError):
        type("Derived", (made,), {})
    image = travik.open(BOARD)
    for item in (image, image[2], image.info):
        with pytest.raises(TypeError):
            type(item).__init__(item)
        with pytest.raises(TypeError):
            pickle.dumps(item)
        with pytest.raises(TypeError):
            copy.copy(item)
    with pytest.raises(TypeError):
        travik.Block.__getitem__(image, "values")  # type: ignore[index]


def test_any_arguments(tmp_path: Path, monkeypatch: pytest.MonkeyPatch) -> None:
    """Whatever functions are called with, they raise an exception at most."""
    monkeypatch.chdir(tmp_path)
    image = travik.open(BOARD)
    other = travik.open(BOARD)
    other[15716]["values", 0, 0] = 1
    difference = travik.diff(image, other)
    odd: list[Any] = [None, 0, -1, 2**70, 1.5, float("nan"), "", "values", "RFBO_RFLEVEL_MAX_DATA", b"", (), ("values",), object(), image]
    own = [image, image[15716], image[15716].stored, image[15716].dimensions("values")[0], image.info, image.info.identity,
           difference, difference.blocks[0], difference.blocks[0].fields[0], *odd]  # fmt: skip
    made = [value for value in vars(travik).values() if isinstance(value, type) and not issubclass(value, Exception)]
    calls = 0
    for kind in made:
        for name in vars(kind):
            member = vars(kind)[name]
            function: Any = member.fget if isinstance(member, property) else getattr(kind, name)
            if not callable(function) or name in ("__class__", "__new__", "plot"):
                continue
            for self in own:
                for arguments in [(), *((item,) for item in odd), *((item, item) for item in odd)]:
                    calls += 1
                    try:
                        function(self, *arguments)
                    except Exception:
                        pass
                    if image.closed:
                        image = travik.open(BOARD)
    for function in (travik.open, travik.diff):
        for first in own:
            for second in own:
                try:
                    function(first, second)
                except Exception:
                    pass
    assert calls > 1000 and not image.problems


def test_threads_lose_no_change() -> None:
    image = travik.open(BOARD)
    block = image[15716]
    failures: list[BaseException] = []
    columns = 40

    def write(row: int) -> None:
        try:
            for column in range(columns):
                block["values", row, column] = column
        except BaseException as error:
            failures.append(error)

    def read() -> None:
        try:
            for _ in range(columns):
                again = travik.open(bytes(image))
                assert not again.problems and again.info.serial_number == 101337
                image[15716].axis("values", 1), block["values"].sum(), image.problems
        except BaseException as error:
            failures.append(error)

    threads = [threading.Thread(target=write, args=(row,)) for row in (0, 1)] + [threading.Thread(target=read) for _ in range(3)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert not failures and not image.problems
    assert block["values"][:, :columns].tolist() == [list(range(columns))] * 2


def test_close_in_the_midst() -> None:
    for _ in range(20):
        image = travik.open(BOARD)
        block = image[15716]

        def use() -> None:
            try:
                while True:
                    block["values", 0, 0] = 1
                    image.problems
                    block["values"]
            except ValueError as error:
                assert "closed" in str(error)

        with ThreadPoolExecutor(2) as pool:
            used = [pool.submit(use) for _ in range(2)]
            image.close()
            for one in used:
                one.result()


def test_saves_of_several_threads(board: Path) -> None:
    image = travik.open(board)

    def save(number: int) -> None:
        image[2]["serial_number"] = number
        image.save()

    with ThreadPoolExecutor(4) as pool:
        list(pool.map(save, range(1, 21)))
    assert board.read_bytes() == bytes(image) and not image.modified


def test_values_that_interfere() -> None:
    image = travik.open(BOARD)
    block = image[15716]

    class Closing:
        def __array__(self, dtype: Any = None) -> Any:
            image.close()
            return numpy.zeros((2, 128))

    class Failing:
        def __array__(self, dtype: Any = None) -> Any:
            raise RuntimeError("not today")

        def __index__(self) -> int:
            raise RuntimeError("not today")

        def __fspath__(self) -> str:
            raise RuntimeError("not today")

    uses: list[Any] = [
        lambda: block.__setitem__("values", Failing()),
        lambda: block["values", Failing()],
        lambda: image[Failing()],
        lambda: travik.open(Failing()),
        lambda: image.save(Failing()),
    ]
    for use in uses:
        with pytest.raises(RuntimeError, match="not today"):
            use()
    with pytest.raises(ValueError, match="closed"):
        block["values"] = Closing()
