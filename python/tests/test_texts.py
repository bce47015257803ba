"""What a person sees: reprs, the notebook's HTML, data frames, plots, and the tutorial."""

import builtins
import os
import re
import shutil
import xml.etree.ElementTree as xml
from pathlib import Path
from typing import Any

import numpy
import pytest
import travik
from conftest import SAMPLES, name_of, sample_paths

os.environ["MPLBACKEND"] = "agg"
BOARD = SAMPLES / "rf-board.bin"


def parsed(html: str) -> xml.Element:
    """Well-formed, so that nothing of an image has become markup."""
    return xml.fromstring(f"<div>{html}</div>")


def test_reprs() -> None:
    image = travik.open(BOARD)
    assert re.fullmatch(r"<travik.Image '.*rf-board.bin': \S+ [\d.]+ no. 101337, 23 blocks, 77376 bytes, no problems>", repr(image))
    assert repr(image[15716]) == (
        "<travik.Block RFBO_RFLEVEL_MAX_DATA (15716): 1040 bytes at 2300\n"
        "  rows     2\n"
        "  columns  128\n"
        "  values   float64, 2 × 128, by RFBO_RFLEVEL_MAX_FREQ>"
    )
    image[15716]["rows"] = 1
    assert "modified" in repr(image)
    assert "101337" in repr(image.info) and "serial_number=101337" in repr(image.info.identity)
    damaged = bytearray(BOARD.read_bytes())
    damaged[800] ^= 1
    problem = travik.open(damaged).problems[0]
    assert str(problem) == f"offset 684, block 15706: {problem.text}" and problem.kind == "wrong checksum"
    assert "1 problem" in repr(travik.open(damaged)) and problem.is_problem


@pytest.mark.parametrize("path", sample_paths(), ids=name_of)
def test_html_of_every_block(path: Path) -> None:
    image = travik.open(path)
    parsed(image._repr_html_())
    plots = sum(parsed(block._repr_html_()).find(".//polyline") is not None for block in image.blocks)
    assert plots > 0 or path.stem in ("main-board-identity", "synthesizer", "synthesizer-loop", "microwave-module")


def test_hostile_texts() -> None:
    image = travik.open(BOARD)
    image[2]["name"] = "</td><script>"
    image[2]["name"] = "<b>&'\"\x1b[31m\n"
    for html in (image._repr_html_(), image[2]._repr_html_()):
        assert "<b>" not in html and "\x1b" not in html
        parsed(html)
    assert "\x1b" not in repr(image) and "\x1b" not in repr(image[2])


def test_data_frames() -> None:
    pandas = pytest.importorskip("pandas")
    image = travik.open(BOARD)
    block = image[15716]
    frame = image.to_dataframe("RFBO_RFLEVEL_MAX_DATA")
    assert frame.shape == (128, 2) and frame.index.name.startswith("RFBO_RFLEVEL_MAX_FREQ [")
    assert numpy.array_equal(frame.to_numpy().T, block["values"])
    assert frame.index.tolist() == numpy.asarray(block.axis("values", 1)).tolist()
    frame.iloc[0, 0] = 7
    assert block["values", 0, 0] == 19.5
    with pytest.raises(ValueError, match="no table"):
        image.to_dataframe("IDENT_2")
    with pytest.raises(ValueError, match="single value"):
        image.to_dataframe(15716, "rows")
    with pytest.raises(KeyError):
        image.to_dataframe(15716, "none")
    counted = 0
    for path in sample_paths():
        for one in travik.open(path).blocks:
            for field in one.fields:
                value = one[field]
                if not isinstance(value, numpy.ndarray):
                    continue
                table = one.image.to_dataframe(one.id, field) if len(one.image.blocks_of(one.id)) == 1 else None
                if table is None:
                    continue
                assert isinstance(table, pandas.DataFrame)
                numbers = value[~numpy.isnan(value)] if value.dtype.kind == "f" else value
                if value.dtype.kind in "biuf":
                    assert table.count().sum() == numbers.size, (path, one.id, field)
                    assert numpy.isclose(numpy.nansum(table.to_numpy(dtype=float)), numbers.astype(float).sum())
                counted += 1
    assert counted > 100


def test_plots() -> None:
    pyplot = pytest.importorskip("matplotlib.pyplot")
    image = travik.open(BOARD)
    axes = image.plot("RFBO_RFLEVEL_MAX_DATA")
    assert len(axes.lines) == 2 and axes.get_title() == "RFBO_RFLEVEL_MAX_DATA"
    assert axes.get_xlabel().startswith("RFBO_RFLEVEL_MAX_FREQ [")
    assert axes.lines[1].get_ydata().tolist() == image[15716]["values"][1].tolist()
    assert image.plot(15716, ax=axes, color="red") is axes and len(axes.lines) == 4
    for name in ("dac-board", "second-edition", "step-attenuator"):
        for block in travik.open(SAMPLES / f"{name}.bin").blocks:
            for field in block.fields:
                value = block[field]
                if isinstance(value, numpy.ndarray) and value.dtype.kind in "iuf":
                    block.image.plot(block.id, field, ax=axes)
                    axes.clear()
    axes.figure.canvas.draw()
    pyplot.close("all")


@pytest.mark.parametrize(("missing", "call"), [("pandas", "to_dataframe"), ("matplotlib", "plot")])
def test_what_is_not_installed(missing: str, call: str, monkeypatch: pytest.MonkeyPatch) -> None:
    load = builtins.__import__

    def without(name: str, *arguments: Any, **named: Any) -> Any:
        if name.partition(".")[0] == missing:
            raise ImportError(name)
        return load(name, *arguments, **named)

    monkeypatch.setattr(builtins, "__import__", without)
    with pytest.raises(ImportError, match=f"needs {missing}"):
        getattr(travik.open(BOARD), call)(15716)


def test_every_snippet_of_the_tutorial(tmp_path: Path, monkeypatch: pytest.MonkeyPatch, capsys: pytest.CaptureFixture[str]) -> None:
    pytest.importorskip("pandas")
    pytest.importorskip("matplotlib")
    for path in sample_paths():
        shutil.copy(path, tmp_path)
    monkeypatch.chdir(tmp_path)
    snippets = re.findall(r"^```python\n(.*?)^```", (SAMPLES.parent / "docs" / "python.md").read_text(), re.M | re.S)
    assert len(snippets) == 6
    names: dict[str, Any] = {}
    for snippet in snippets:
        exec(compile(snippet, "docs/python.md", "exec"), names)
    output = capsys.readouterr().out
    assert "101337" in output and "values[0][10]=1e+09: out of range" in output
    assert Path("other.bin").exists() and Path("levels.png").stat().st_size > 1000
