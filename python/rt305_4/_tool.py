"""The command-line tool rt305 as a child process: finds it, runs it, and turns its failures into exceptions.

A child costs some milliseconds and keeps what files can do to a reader out of this process. It has no state to share, so
threads and forks need no care.
"""

from __future__ import annotations

import contextlib
import os
import re
import shutil
import signal
import subprocess
import sys
import tempfile
from collections.abc import Iterable, Iterator, Mapping, Sequence
from pathlib import Path
from typing import IO, Union

from . import _library

PathLike = Union[str, "os.PathLike[str]"]
Option = Union[None, bool, float, str, Sequence[Union[str, float]], Mapping[str, Union[str, float]]]

UNUSABLE_OPTIONS, PARTIAL, ENVIRONMENT = 2, 4, 5  # exit codes

# Options after which the tool does not write what this package reads, and what to do instead.
_ELSEWHERE = {
    "--help": "the command `rt305 help measure` lists the options",
    "--files-from": "give the names themselves",
    "--output-folder": "the command `rt305 measure` and fleet.measure_into() write into a folder",
}


def find() -> str:
    """The tool: what RT305_4_TOOL names, else that of this package, of its installation, or of the system."""
    if named := os.environ.get("RT305_4_TOOL"):
        return named
    package = Path(__file__).resolve().parent
    places = (package / "native" / "rt305", package.parents[3] / "bin" / "rt305")
    return next((str(place) for place in places if place.exists()), shutil.which("rt305") or "rt305")


def arguments(options: Mapping[str, Option]) -> list[str]:
    """The options as the tool takes them: two_currents="a" is --two-currents=a, map={"Ua": 2} is --map=Ua=2."""
    given = []
    for name, value in options.items():
        option = "--" + name.replace("_", "-")
        if value is None or value is False:
            continue
        if option in _ELSEWHERE:
            raise ValueError(f"{name}= has no use here: {_ELSEWHERE[option]}")
        if value is True:
            given.append(option)
        elif isinstance(value, Mapping):
            given.append(f"{option}={','.join(f'{key}={item}' for key, item in value.items())}")
        elif isinstance(value, Sequence) and not isinstance(value, str):
            given.append(f"{option}={','.join(map(str, value))}")
        else:
            given.append(f"{option}={value}")
    return given


def names(paths: PathLike | Iterable[PathLike]) -> list[str]:
    """One path or several as text, each of which can be a line of a list of names."""
    texts = [os.fspath(path) for path in ([paths] if isinstance(paths, (str, os.PathLike)) else paths)]
    for text in texts:
        if text in ("", "-") or text.endswith("\r") or "\n" in text or "\0" in text:
            raise ValueError(f"the tool cannot be given the name {text!r}: rename the file")
    return texts


def failure(message: str, exit_code: int) -> Exception:
    """The exception for a message of the tool: ValueError for unusable options, else Error."""
    if exit_code == UNUSABLE_OPTIONS:
        return ValueError(message)
    error = _library.Error(message)
    error.exit_code = exit_code
    return error


def _failure_on(messages: bytes, exit_code: int) -> Exception:
    """The exception for what the tool wrote to stderr, without its warnings and notes, or for the signal that ended it."""
    if exit_code < 0:
        cause = ", as when memory runs out" if exit_code == -signal.SIGKILL else ""
        return failure(f"signal {-exit_code} ({signal.strsignal(-exit_code)}) ended the tool rt305{cause}", exit_code)
    paragraphs = re.split(r"^rt305: ", messages.decode(errors="replace"), flags=re.MULTILINE)[1:]
    errors = [paragraph for paragraph in paragraphs if not paragraph.startswith(("warning: ", "note: "))]
    message = "\n".join(map(str.strip, errors[-1].splitlines())) if errors else ""
    return failure(message or f"rt305 ended with exit code {exit_code}", exit_code)


@contextlib.contextmanager
def content(data: memoryview | bytes) -> Iterator[IO[bytes]]:
    """A file in memory that holds the data, to be the stdin of a child."""
    with os.fdopen(os.memfd_create("rt305"), "w+b") as file:
        file.write(data)
        file.seek(0)
        yield file


@contextlib.contextmanager
def running(command: Sequence[str], stdin: IO[bytes] | None = None) -> Iterator[IO[bytes]]:
    """Runs the tool and gives its stdout. Ends it when the block is left early; raises when it failed."""
    with tempfile.TemporaryFile() as messages:
        try:
            child = subprocess.Popen(
                [find(), *command], stdin=stdin or subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=messages
            )
        except OSError as error:
            raise OSError(
                f"cannot start the tool rt305: {error}. Name its file in the environment variable RT305_4_TOOL"
            ) from error
        assert child.stdout is not None
        with child.stdout as output:
            try:
                yield output
            except BaseException:
                child.kill()
                child.wait()
                raise
        if code := child.wait():
            messages.seek(0)
            raise _failure_on(messages.read(), code)


def run(command: Sequence[str], stdin: IO[bytes] | None = None) -> bytes:
    """What the tool writes to stdout."""
    with running(command, stdin) as output:
        return output.read()


def library_arguments() -> list[str]:
    """Lets the tool measure with the library that load() has loaded."""
    return [f"--library={_library.loaded_file}"] if _library.loaded_file else []


def main() -> None:
    """The command rt305 of a wheel."""
    tool = find()
    os.execv(tool, [tool, *sys.argv[1:]])
