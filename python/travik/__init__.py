"""Module images of signal generators as NumPy arrays.

    import travik
    image = travik.open("rf-board.bin")
    image.info.serial_number, image.problems
    block = image["RFBO_RFLEVEL_MAX_DATA"]
    block["values"]                     # a read-only array, in block.units["values"]
    block["values", 0, 10] = 1.25       # range-checked and sealed, in memory
    image.save()

docs/python.md is a tutorial.
"""

from travik._travik import (
    Block,
    BlockDiff,
    Counter,
    Diff,
    Dimension,
    Error,
    FieldDiff,
    Finding,
    FurtherIdent,
    Identity,
    Image,
    Instrument,
    Modification,
    ModuleInfo,
    Service,
    StoredValues,
    TimeMonitoring,
    Vco,
    __version__,
    diff,
    open,
)

__all__ = [
    "Block",
    "BlockDiff",
    "Counter",
    "Diff",
    "Dimension",
    "Error",
    "FieldDiff",
    "Finding",
    "FurtherIdent",
    "Identity",
    "Image",
    "Instrument",
    "Modification",
    "ModuleInfo",
    "Service",
    "StoredValues",
    "TimeMonitoring",
    "Vco",
    "__version__",
    "diff",
    "open",
]
