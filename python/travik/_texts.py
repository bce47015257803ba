"""What images and blocks look like in a terminal and in a notebook. Texts of an image are not trusted."""

import html
import math

import numpy

from travik._tables import table_of


def _visible(text):
    """Control characters by their numbers."""
    return "".join(c if c.isprintable() else c.encode("unicode_escape").decode() for c in text)


def image_text(image):
    if image.closed:
        return "<travik.Image, closed>"
    info = image.info
    who = " ".join(str(fact) for fact in (info.name, info.part_number) if fact)
    if info.serial_number is not None:
        who += f" no. {info.serial_number}"
    count = len(image.problems)
    parts = [
        who.strip() or "no ident block",
        f"{len(image)} blocks",
        f"{image.size} bytes",
        f"{count} problem{'s' if count > 1 else ''}" if count else "no problems",
    ]
    if image.modified:
        parts.append("modified")
    path = f" {image.path!r}" if image.path else ""
    return _visible(f"<travik.Image{path}: {', '.join(parts)}>")


def _closed(block):
    return f"<travik.Block {block.key or block.id}: the image is closed>"


def _short(value):
    if value is None:
        return "-"
    return repr(value) if isinstance(value, (str, bytes)) else str(value)


def _shape(block, name):
    """"int32, 2 × 128, by RFBO_RFLEVEL_MAX_FREQ"."""
    dimensions = block.dimensions(name)
    extents = " × ".join(str(d.used) for d in dimensions)
    axes = [d.axis_name for d in dimensions if d.axis_name]
    return f"{block[name].dtype}, {extents}" + (f", by {', '.join(axes)}" if axes else "")


def _field_rows(block):
    for name in block.fields:
        unit = block.units[name]
        if block.dimensions(name):
            yield name, _shape(block, name), unit
        else:
            yield name, _short(block[name]), unit


def _head(block):
    return f"{block.key or 'no key'} ({block.id}): {block.size} bytes at {block.offset}"


def block_text(block):
    if block.image.closed:
        return _visible(_closed(block))
    lines = [f"<travik.Block {_head(block)}"]
    rows = list(_field_rows(block))
    width = max((len(name) for name, _, _ in rows), default=0)
    lines += [f"  {name:{width}}  {value}{' ' + unit if unit else ''}" for name, value, unit in rows]
    lines += [f"  {problem.text}" for problem in block.problems]
    return "\n".join(map(_visible, lines)) + ">"


def _table_html(head, rows):
    def cells(tag, texts):
        return "".join(f"<{tag} style='text-align:left'>{html.escape(_visible(str(text)))}</{tag}>" for text in texts)

    body = "".join(f"<tr>{cells('td', row)}</tr>" for row in rows)
    return f"<table><thead><tr>{cells('th', head)}</tr></thead><tbody>{body}</tbody></table>"


def _state(block):
    if block.problems:
        return "; ".join(problem.text for problem in block.problems)
    return {True: "ok", False: "wrong checksum", None: "-"}[block.checksum_ok]


def image_html(image):
    text = f"<pre>{html.escape(image_text(image))}</pre>"
    if image.closed:
        return text
    rows = [(b.offset, b.id, b.key or "", b.class_name or "", b.size, _state(b)) for b in image.blocks]
    table = _table_html(("offset", "id", "key", "class", "size", "state"), rows)
    return f"{text}<details><summary>{len(rows)} blocks</summary>{table}</details>"


def block_html(block):
    if block.image.closed:
        return f"<pre>{html.escape(_visible(_closed(block)))}</pre>"
    head = f"<strong>{html.escape(_visible(_head(block)))}</strong>"
    problems = "".join(f"<div>{html.escape(_visible(problem.text))}</div>" for problem in block.problems)
    return head + problems + _table_html(("field", "value", "unit"), _field_rows(block)) + _plot_svg(block)


_WIDTH, _HEIGHT, _MARGIN = 480, 160, 18
_COLOURS = ("#1f77b4", "#ff7f0e", "#2ca02c", "#d62728", "#9467bd", "#8c564b")
_LINES, _POINTS = 12, 400


def _plot_svg(block):
    """A small plot of the block's table, or nothing where there is none to draw."""
    try:
        table = table_of(block)
    except ValueError:
        return ""
    lines = []
    for column in table.columns():
        if len(lines) == _LINES:
            break
        if column.values.dtype.kind not in "biuf":
            continue
        labels = column.labels if column.labels.dtype.kind in "iuf" else numpy.arange(len(column.values))
        x, y = labels.astype(float), column.values.astype(float)
        there = numpy.isfinite(x) & numpy.isfinite(y)
        x, y = x[there], y[there]
        step = math.ceil(len(x) / _POINTS) or 1
        if len(x) > 1:
            lines.append((x[::step], y[::step]))
    if not lines:
        return ""
    left, right = (f(f(x) for x, _ in lines) for f in (min, max))
    low, high = (f(f(y) for _, y in lines) for f in (min, max))
    paths = "".join(
        f"<polyline fill='none' stroke='{_COLOURS[i % len(_COLOURS)]}' points='{_points(x, y, left, right, low, high)}'/>"
        for i, (x, y) in enumerate(lines)
    )
    unit = block.units[table.fields[0]]
    notes = [
        (_MARGIN, 12, "start", f"{high:g} {unit}"),
        (_MARGIN, _HEIGHT - 4, "start", f"{low:g} {unit}"),
        (_WIDTH - _MARGIN, _HEIGHT - 4, "end", f"{left:g} to {right:g}  {table.row_name}"),
    ]
    texts = "".join(
        f"<text x='{x}' y='{y}' text-anchor='{anchor}' font-size='11'>{html.escape(_visible(text))}</text>"
        for x, y, anchor, text in notes
    )
    return (
        f"<svg width='{_WIDTH}' height='{_HEIGHT}' "
        f"style='background:#fff'>{paths}{texts}</svg>"
    )


def _points(x, y, left, right, low, high):
    def scaled(values, first, last, start, length):
        # Halves, so that the difference of the largest numbers is one.
        span = last / 2 - first / 2
        part = (values / 2 - first / 2) / span if span > 0 else numpy.full(len(values), 0.5)
        return start + part * length

    across = scaled(x, left, right, _MARGIN, _WIDTH - 2 * _MARGIN)
    up = scaled(y, low, high, _HEIGHT - _MARGIN, 2 * _MARGIN - _HEIGHT)
    return " ".join(f"{a:.1f},{b:.1f}" for a, b in zip(across, up))
