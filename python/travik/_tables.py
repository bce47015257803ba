"""The arrays of a block as tables: rows along what has an axis, columns side by side."""

import itertools

import numpy


class Column:
    """One column of a table: where it stands in the other dimensions, its labels and its numbers."""

    def __init__(self, field, index, labels, values):
        self.field, self.index, self.labels, self.values = field, index, labels, values


class Table:
    """The columns of one field, or of several that run along the same dimension."""

    def __init__(self, block, fields):
        self.block, self.fields = block, fields
        self.dimensions = block.dimensions(fields[0])
        # As the tool shows it: the axis that is known goes down, else the longest dimension.
        self.rows = max(
            range(len(self.dimensions)),
            key=lambda d: (self.dimensions[d].axis_name is not None, self.dimensions[d].used, -d),
        )
        self.others = [d for d in range(len(self.dimensions)) if d != self.rows]
        self.axis = block.axis(fields[0], self.rows)

    @property
    def row_name(self):
        dimension = self.dimensions[self.rows]
        name = dimension.axis_name or dimension.name or "index"
        return f"{name} [{dimension.axis_unit}]" if dimension.axis_unit else name

    def has_rows_of_their_own(self):
        """Whether each index of the first dimension has its own labels."""
        return self.axis is not None and self.axis.ndim == 2

    def labels(self, index):
        if self.axis is None:
            return numpy.arange(self.dimensions[self.rows].used)
        return self.axis[index[0]] if self.has_rows_of_their_own() else self.axis

    def columns(self):
        for field in self.fields:
            values = numpy.moveaxis(numpy.asarray(self.block[field]), self.rows, -1)
            for index in itertools.product(*(range(extent) for extent in values.shape[:-1])):
                yield Column(field, index, self.labels(index), values[index])

    def column_labels(self, dimension):
        """What the entries of another dimension are called."""
        axis = self.block.axis(self.fields[0], dimension)
        return numpy.arange(self.dimensions[dimension].used) if axis is None or axis.ndim > 1 else axis

    def column_name(self, dimension):
        facts = self.dimensions[dimension]
        name = facts.axis_name or facts.name
        return f"{name} [{facts.axis_unit}]" if facts.axis_unit else name or None


def _runs_along(block, field):
    dimension = block.dimensions(field)[0]
    return dimension.name, dimension.extent, dimension.used, dimension.axis_block


def _is_layout(block, field):
    """Whether it says how a table that describes itself is stored."""
    return block.class_name == "HwDatablock2Edition" and field == "column_types"


def table_of(block, field=None):
    """The table of a block, or of one of its fields."""
    if field is not None:
        if not block.dimensions(field):
            raise ValueError(f"{block.key or block.id}.{field} is a single value, no table")
        return Table(block, [field])
    arrays = [
        name
        for name in block.fields
        if block.dimensions(name) and block.role(name) != "reserved" and not _is_layout(block, name)
    ]
    # What labels the table of the same block is no table beside it.
    fields = [name for name in arrays if block.role(name) not in ("axis", "count")] or arrays
    if not fields:
        raise ValueError(f"{block.key or block.id} has no table")
    if len(fields) > 1:
        flat = all(len(block.dimensions(name)) == 1 for name in fields)
        if not flat or len({_runs_along(block, name) for name in fields}) > 1:
            raise ValueError(f"{block.key or block.id} has several tables, say which field: {', '.join(fields)}")
    return Table(block, fields)


def to_dataframe(block, field):
    try:
        import pandas
    except ImportError as error:
        raise ImportError("to_dataframe needs pandas (Debian: python3-pandas)") from error
    table = table_of(block, field)
    columns = list(table.columns())
    units = {name: block.units[name] for name in table.fields}
    if table.has_rows_of_their_own():
        frame = _long_frame(pandas, table, columns)
    else:
        if len(table.fields) > 1 or not table.others:
            names = pandas.Index([column.field for column in columns])
        elif len(table.others) == 1:
            other = table.others[0]
            names = pandas.Index(table.column_labels(other), name=table.column_name(other))
        else:
            labels = [table.column_labels(d) for d in table.others]
            names = pandas.MultiIndex.from_product(labels, names=[table.column_name(d) for d in table.others])
        frame = pandas.DataFrame(
            dict(enumerate(_numbers(column.values) for column in columns)),
            index=pandas.Index(table.labels((0,)), name=table.row_name),
        )
        frame.columns = names
    frame.attrs["units"] = units
    frame.attrs["block"] = block.key or block.id
    return frame


def _numbers(values):
    """A copy: pandas writes into what it is given."""
    return numpy.array(values)


def _long_frame(pandas, table, columns):
    """Rows of their own labels: a line each, by the index of the first dimension and the label."""
    lines = []
    for column in columns:
        there = ~numpy.isnan(numpy.asarray(column.labels, dtype=float))
        for label, value in zip(column.labels[there], column.values[there]):
            lines.append((*column.index, label, value))
    names = [table.column_name(d) or f"index_{d}" for d in table.others] + [table.row_name]
    field = table.fields[0]
    return pandas.DataFrame(lines, columns=[*names, field]).set_index(names)


def plot(block, field, ax, **style):
    try:
        from matplotlib import pyplot
    except ImportError as error:
        raise ImportError("plot needs matplotlib (Debian: python3-matplotlib)") from error
    table = table_of(block, field)
    columns = [column for column in table.columns() if column.values.dtype.kind in "biuf"]
    if not columns:
        raise ValueError(f"{block.key or block.id}: texts and dates are not drawn")
    if ax is None:
        ax = pyplot.figure().add_subplot()
    for column in columns:
        name = table.dimensions[table.others[0]].name if table.others else ""
        place = f"{name} {', '.join(map(str, column.index))}".strip() if table.others else column.field
        ax.plot(column.labels, column.values, **{"label": _plain(place), **style})
    ax.set_title(_plain(block.key or str(block.id)))
    ax.set_xlabel(_plain(table.row_name))
    unit = block.units[table.fields[0]]
    what = table.fields[0] if len(table.fields) == 1 else ""
    ax.set_ylabel(_plain(f"{what} [{unit}]" if unit else what))
    if 1 < len(columns) <= 12:
        ax.legend()
    return ax


def _plain(text):
    """Matplotlib takes what stands between dollars for a formula."""
    return text.replace("$", r"\$")
