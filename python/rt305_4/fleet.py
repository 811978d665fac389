"""Measures recordings on many machines with Dask: rt305_4.fleet.measure(client, files, window=0.2).

The workers read the files themselves, from a folder that all of them see, with this package and the tool rt305. The
scheduler carries names and figures, never samples. Each task is a batch of files or a part of a long one, as a task costs
some milliseconds. Dask repeats the tasks of a worker that dies.
"""

from __future__ import annotations

import json
import math
import os
from collections.abc import Iterable, Iterator
from typing import TYPE_CHECKING, Any

from . import _tool
from ._library import Error
from ._measurement import Measurement, measure_files
from ._tool import Option, PathLike

if TYPE_CHECKING:
    from distributed import Client

_MOST_FILES = 50  # of a task
_TASKS_PER_THREAD = 4

Results = list["Measurement | Error"]


def measure(
    client: Client,
    files: PathLike | Iterable[PathLike],
    *,
    window: float | str | None = None,
    step: float | str | None = None,
    span: float | None = None,
    batch: int | None = None,
    **options: Option,
) -> Iterator[Measurement | Error]:
    """Measures recordings on the workers and yields the results in the order of the files; of one that fails, its Error.

    window   length of the windows to measure, in s or as text such as "200ms" (default: all of a recording)
    step     from the start of one window to that of the next (default: their length)
    span     also share out the windows of each recording, so many seconds to a task, a multiple of the step; for
             recordings so long that reading them for each task does not matter. Window and step are then numbers
    batch    files in a task (default: four tasks for each thread of the workers, of at most 50 files)
    options  those of `rt305 measure`: nominal=60, map={"Ua": "VA"}, primary=True
    """
    names = _absolute(files)
    common = options | {"window": window, "step": step}
    if span is None:
        tasks = [(part, common) for part in _batches(client, names, batch)]
    else:
        if window is None or {"start", "duration", "segment", "part"} & options.keys():
            raise ValueError("span shares out the windows of whole recordings: give window, and no part of them")
        length, advance, span = (
            _seconds(name, value)
            for name, value in (("window", window), ("step", window if step is None else step), ("span", span))
        )
        if abs(span / advance - round(span / advance)) > 1e-9:
            raise ValueError(f"span is {span!r}, not a multiple of the {advance!r} s from window to window")
        durations = client.gather(client.map(_duration, names, [options] * len(names), pure=False))
        tasks = [
            ([name], common | part)
            for name, duration in zip(names, durations)
            for part in _parts(duration, length, advance, span)
        ]
    for future in client.map(_measure, *zip(*tasks), pure=False, retries=2) if tasks else []:
        yield from future.result()


def measure_into(
    client: Client,
    folder: PathLike,
    files: PathLike | Iterable[PathLike],
    *,
    batch: int | None = None,
    **options: Option,
) -> list[Error]:
    """The same into a folder of results that all workers see (docs/batch.md). Returns an Error for each task with files
    that failed; the manifest in the folder has all of them."""
    shared = os.path.abspath(folder)
    tasks = [(part, shared, options) for part in _batches(client, _absolute(files), batch)]
    futures = client.map(_measure_into, *zip(*tasks), pure=False, retries=2) if tasks else []
    return [error for error in client.gather(futures) if error is not None]


def _absolute(files: PathLike | Iterable[PathLike]) -> list[str]:
    return [os.path.abspath(name) for name in _tool.names(files)]


def _seconds(name: str, value: float | str) -> float:
    if isinstance(value, str) or not 0 < value < math.inf:
        raise ValueError(f"{name} is {value!r}: with span, give it as a number of seconds above 0")
    return float(value)


def _batches(client: Client, names: list[str], size: int | None) -> list[list[str]]:
    threads = sum(client.nthreads().values()) or 1
    size = size or min(_MOST_FILES, max(1, math.ceil(len(names) / (_TASKS_PER_THREAD * threads))))
    return [names[first : first + size] for first in range(0, len(names), size)]


def _parts(duration: float | None, window: float, step: float, span: float) -> list[dict[str, Option]]:
    """Start and duration of the parts of a recording; one without both if nothing is known of it."""
    if duration is None or duration <= span:
        return [{}]
    count = math.floor((duration - window) / step * (1 + 1e-12) + 1e-9) + 1  # windows
    each = round(span / step)
    return [
        {"start": first * step, "duration": (min(each, count - first) - 1) * step + window}
        for first in range(0, count, each)
    ]


# These run on the workers.


def _duration(name: str, options: dict[str, Option]) -> float | None:
    """Of the segment that is measured; None when the recording cannot be read, which its measurement will tell."""
    reading = {key: options[key] for key in ("rate", "columns", "settings", "dat", "encoding") if key in options}
    try:
        document: dict[str, Any] = json.loads(_tool.run(["info", "--json", *_tool.arguments(reading), name]))
    except Error:
        return None
    return document["recording"]["duration"]  # type: ignore[no-any-return]


def _measure(names: list[str], options: dict[str, Any]) -> Results:
    """What fails for want of memory or because its process was killed is measured once more."""
    results: Results = []
    for result in measure_files(names, errors="yield", **options):
        if isinstance(result, Error) and result.exit_code == _tool.ENVIRONMENT and result.file:
            results += measure_files(result.file, errors="yield", **options)
        else:
            results.append(result)
    return results


def _measure_into(names: list[str], folder: str, options: dict[str, Option]) -> Error | None:
    into = ["measure", "--files-from=-", f"--output-folder={folder}"]
    command = [*into, *_tool.library_arguments(), *_tool.arguments(options)]
    with _tool.content(os.fsencode("".join(name + "\n" for name in names))) as stdin:
        try:
            _tool.run(command, stdin)
        except Error as error:
            if error.exit_code not in (_tool.PARTIAL, 1, 3):
                raise
            return error
    return None
