"""The C interface of libRT305_4.so.1, told to ctypes: the same records, offsets and rules as include/rt305_4/rt305_4.h."""

from __future__ import annotations

import ctypes
import os
import threading
from pathlib import Path

SONAME = "libRT305_4.so.1"

VOLTAGES, CURRENTS, VOLTAGES_AND_CURRENTS = 4, 8, 21
PARAMETERS, SIGNALS, SPECTRUM, DISTORTION = range(4)

_TEXTS = (
    "paramData",
    "timeSignalDataU",
    "timeSignalDataI",
    "spectrumParamU",
    "spectrumParamI",
    "paramDataThdU",
    "paramDataThdI",
)


class Error(Exception):
    """The library refused the request. The text is the library's own message."""

    __module__ = "rt305_4"  # where users find it


class ChannelData(ctypes.Structure):
    _fields_ = [
        ("signalKind", ctypes.c_int32),  # 0 voltage, 1 current
        ("phase", ctypes.c_uint32),  # 0 a, 1 b, 2 c
        ("samples", ctypes.POINTER(ctypes.c_double)),
        ("count", ctypes.c_uint64),
        ("coefficient", ctypes.c_double),
        ("inputResistance", ctypes.c_double),
        ("gain", ctypes.c_double),
    ]


class Request(ctypes.Structure):
    _fields_ = [
        ("channels", ctypes.POINTER(ChannelData)),
        ("channelCount", ctypes.c_int32),
        ("samplesNumber", ctypes.c_uint64),
        ("sampleRate", ctypes.c_double),
        ("auxValue", ctypes.c_double),
        ("auxMode", ctypes.c_int16),
        ("inputType", ctypes.c_uint32),
        ("spectrumFlags", ctypes.c_uint32),
        ("measurementFlags", ctypes.c_uint32),
        ("operation", ctypes.c_uint32),
        *((name, ctypes.POINTER(ctypes.c_char_p)) for name in (*_TEXTS, "errorString")),
    ]


assert ctypes.sizeof(ChannelData) == 48 and ctypes.sizeof(Request) == 128

# The library keeps its texts in one place for the whole process, so one call at a time, texts included.
_lock = threading.Lock()
_loaded: ctypes.CDLL | None = None


def _find() -> str:
    """The file to open: what RT305_4_LIBRARY names, else the one of this installation, else the system's own."""
    if named := os.environ.get("RT305_4_LIBRARY"):
        return named
    lib = Path(__file__).resolve().parents[3]  # PREFIX/lib/python3/dist-packages/rt305_4/_library.py
    return str(next((path for path in (lib / SONAME, *lib.glob(f"*-linux-gnu/{SONAME}")) if path.exists()), SONAME))


def _open(file: str) -> ctypes.CDLL:
    try:
        library = ctypes.CDLL(file)
    except OSError as error:
        raise OSError(
            f"cannot open the measurement library: {error}. Name its file in the environment variable "
            "RT305_4_LIBRARY or with rt305_4.load()"
        ) from error
    try:
        library.getVersion.restype = ctypes.c_char_p
        library.dataProccess.restype = ctypes.c_int32
        library.dataProccess.argtypes = [Request]
    except AttributeError as error:
        raise OSError(f"{file} is not the measurement library: {error}") from error
    return library


def load(file: str | os.PathLike[str] | None = None) -> None:
    """Opens the library now, and instead of one that is open already.

    Without a file it is the one that the environment variable RT305_4_LIBRARY names, else the one installed together
    with this package, else the one that the system finds. The first measurement does the same by itself.
    """
    global _loaded
    library = _open(os.fspath(file) if file is not None else _find())
    with _lock:
        _loaded = library


def _library() -> ctypes.CDLL:
    if _loaded is None:
        load()
    assert _loaded is not None
    return _loaded


def version() -> str:
    """The version text of the library."""
    text: bytes = _library().getVersion()
    return text.decode()


def process(request: Request) -> dict[str, str]:
    """Runs one request, whose text pointers are set here, and returns copies of all texts by their field's name.

    Texts that belong to another operation or input type are what an earlier call left, or empty.
    """
    library = _library()
    texts = {name: ctypes.c_char_p(b"") for name in (*_TEXTS, "errorString")}
    for name, text in texts.items():
        setattr(request, name, ctypes.pointer(text))
    with _lock:
        accepted = library.dataProccess(request)
        copies = {name: (text.value or b"").decode() for name, text in texts.items()}
    message = copies.pop("errorString")
    if not accepted:
        raise Error(message)
    return copies
