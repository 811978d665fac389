"""What all results have in common: their figures as columns, rows, a pandas table, or a table in a notebook."""

from __future__ import annotations

from html import escape
from typing import TYPE_CHECKING, Any

if TYPE_CHECKING:
    import pandas

Columns = dict[str, list[Any]]

_ROWS_SHOWN = 50


def _cell(value: Any) -> str:
    return escape(f"{value:.6g}" if isinstance(value, float) else str(value))


class Table:
    """A result with named columns of equal length."""

    @property
    def _caption(self) -> str:
        """The heading of the table in a notebook."""
        return ""

    def to_dict(self) -> Columns:
        """The columns by name."""
        raise NotImplementedError

    def to_records(self) -> list[dict[str, Any]]:
        """The same row by row."""
        columns = self.to_dict()
        return [dict(zip(columns, row)) for row in zip(*columns.values())]

    def to_pandas(self) -> pandas.DataFrame:
        """The same as a table of pandas."""
        import pandas

        return pandas.DataFrame(self.to_dict())

    def _repr_html_(self) -> str:
        """The first rows, for notebooks."""
        columns = self.to_dict()
        rows = list(zip(*columns.values()))
        lines = ["".join(f"<td>{_cell(value)}</td>" for value in row) for row in rows[:_ROWS_SHOWN]]
        more = f"<p>and {len(rows) - _ROWS_SHOWN} rows more</p>" if len(rows) > _ROWS_SHOWN else ""
        heading = "".join(f"<th>{escape(name)}</th>" for name in columns)
        caption = f"<caption>{escape(self._caption)}</caption>" if self._caption else ""
        return f"<table>{caption}<tr>{heading}</tr>{''.join(f'<tr>{line}</tr>' for line in lines)}</table>{more}"
