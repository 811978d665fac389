"""Dates and times as the tool writes them."""

from __future__ import annotations

import re
from datetime import datetime, timedelta, timezone

_TIME = re.compile(r"(\d+)-(\d+)-(\d+)[T ](\d+):(\d+):(\d+)(?:\.(\d+))?(?:(Z)|([+-])(\d\d):?(\d\d))?")


def time_of(text: str | None) -> datetime | None:
    """A date by ISO 8601 to the microsecond, with its zone if it has one; None for any other text."""
    match = _TIME.fullmatch(text or "")
    if not match:
        return None
    *fields, fraction, utc, sign, hours, minutes = match.groups()
    year, month, day, hour, minute, second = map(int, fields)
    zone = timezone.utc if utc else None
    try:
        if sign:
            offset = timedelta(hours=int(hours), minutes=int(minutes))
            zone = timezone(offset if sign == "+" else -offset)
        return datetime(year, month, day, hour, minute, second, int((fraction or "0")[:6].ljust(6, "0")), zone)
    except ValueError:
        return None
