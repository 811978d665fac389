"""The shared library libRT305_4.so.1: finds it, loads it and runs requests."""

from __future__ import annotations

import ctypes
import os
import threading
from collections.abc import Sequence
from pathlib import Path
from typing import NamedTuple

import numpy as np
from numpy.typing import NDArray

from ._interface import ChannelData, DataProcessRequest, struct1_T

SONAME = "libRT305_4.so.1"

Values = NDArray[np.float64]
_TEXTS = [field[0] for field in DataProcessRequest._fields_[-8:]]  # the last one is errorString


class Error(Exception):
    """The library refused the request, or the tool could not measure. The text is their own message."""

    __module__ = "rt305_4"  # where users find it
    #: of the tool: 1 refused, 3 input that cannot be read or measured, 5 no library or no memory, -9 ended by signal 9
    exit_code = 1
    file: str | None = None  #: the recording, where it is one of many


class Row(NamedTuple):
    """One channel of a request. samples must be contiguous."""

    place: int  # 0 ... 5: ua, ub, uc, ia, ib, ic
    samples: Values
    coefficient: float = 1.0
    resistance: float = 0.0
    gain: float = 0.0

    def descriptor(self) -> ChannelData:
        pointer = self.samples.ctypes.data_as(ctypes.POINTER(ctypes.c_double))
        scale = self.coefficient, self.resistance, self.gain
        return ChannelData(self.place // 3, self.place % 3, pointer, len(self.samples), *scale)


# The library has one set of texts for the whole process, so a call holds the lock until its texts are copied.
_lock = threading.Lock()
_loaded: ctypes.CDLL | None = None
loaded_file = ""  # the library that load() was given


def _renew_lock() -> None:
    """Lets a child process measure that was forked during a call of another thread, which the child does not have."""
    global _lock
    _lock = threading.Lock()


os.register_at_fork(after_in_child=_renew_lock)


def _find() -> str:
    """The file to load: from RT305_4_LIBRARY, else from this installation, else from the system."""
    if named := os.environ.get("RT305_4_LIBRARY"):
        return named
    package = Path(__file__).resolve().parent  # PREFIX/lib/python3/dist-packages/rt305_4
    lib = package.parents[2]
    places = (package / "native" / SONAME, lib / SONAME, *lib.glob(f"*-linux-gnu/{SONAME}"))
    return str(next((path for path in places if path.exists()), SONAME))


def _open(file: str) -> ctypes.CDLL:
    try:
        library = ctypes.CDLL(file)
    except OSError as error:
        raise OSError(
            f"cannot load the measurement library: {error}. Name its file in the environment variable "
            "RT305_4_LIBRARY or with rt305_4.load()"
        ) from error
    try:
        library.getVersion.restype = ctypes.c_char_p
        library.dataProccess.restype = ctypes.c_int32
        library.dataProccess.argtypes = [DataProcessRequest]
    except AttributeError as error:
        raise OSError(f"{file} is not the measurement library: {error}") from error
    return library


def load(file: str | os.PathLike[str] | None = None) -> None:
    """Loads the library, also in place of one that is loaded already. The first measurement does this by itself.

    Without a file, the library is the one that the environment variable RT305_4_LIBRARY names, else the one installed
    with this package, else the one that the system finds.
    """
    global _loaded, loaded_file
    given = os.fspath(file) if file is not None else ""
    library = _open(given or _find())
    with _lock:
        _loaded, loaded_file = library, given


def _library() -> ctypes.CDLL:
    if _loaded is None:
        load()
    assert _loaded is not None
    return _loaded


def version() -> str:
    """The version text of the library."""
    text: bytes = _library().getVersion()
    return text.decode()


def process(
    rows: Sequence[Row], operation: int, input_type: int, spectrum_flags: int, measurement_flags: int, **fields: float
) -> dict[str, str]:
    """Runs one request and returns copies of all texts by the name of their field. `fields` sets further fields.

    Texts of another operation or input type are from an earlier call, or empty.
    """
    library = _library()
    request = DataProcessRequest(
        channels=(ChannelData * len(rows))(*(row.descriptor() for row in rows)),
        channelCount=len(rows),
        samplesNumber=len(rows[0].samples),
        inputType=input_type,
        options=struct1_T(spectrum_flags, measurement_flags),
        operation=operation,
        **fields,
    )
    texts = {name: ctypes.c_char_p(b"") for name in _TEXTS}
    for name, text in texts.items():
        setattr(request, name, ctypes.pointer(text))
    with _lock:
        accepted = library.dataProccess(request)
        copies = {name: (text.value or b"").decode() for name, text in texts.items()}
    message = copies.pop("errorString")
    if not accepted:
        raise Error(message)
    return copies
