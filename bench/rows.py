"""Rows of a table that compares our program with another one, and the table."""

import dataclasses

import measure


@dataclasses.dataclass(frozen=True)
class Row:
    work: str
    ours: str
    theirs: str
    ratio: float
    target: float | None
    more: str = ""

    def verdict(self):
        if self.target is None:
            return ""
        return "reached" if self.ratio <= self.target else "missed"


def of_times(work, ours, theirs, target=None):
    """From the costs of each run: medians, with the spread where there was more than one run."""
    one, other = measure.median(ours), measure.median(theirs)
    return Row(work, shown_time(one, ours), shown_time(other, theirs), one.seconds / other.seconds, target,
               f"{one.peak_mebibytes:.0f} / {other.peak_mebibytes:.0f} MiB")


def shown_time(middle, costs):
    shortest, longest = measure.spread(costs)
    shown = f"{middle.seconds:.3f} s"
    return shown if len(costs) == 1 else f"{shown} ({shortest:.3f} to {longest:.3f})"


def of_room(work, ours, theirs, target=None):
    return Row(work, f"{ours:.1f} MiB", f"{theirs:.1f} MiB", ours / theirs, target)


def of_memory(work, ours, limit_mebibytes):
    """Against a limit instead of the other program."""
    return Row(work, f"{ours:.0f} MiB", f"limit {limit_mebibytes} MiB", ours / limit_mebibytes, 1.0)


def table(rows):
    lines = ["| work | qrv | git | ratio | target | | peak memory |", "| --- | ---: | ---: | ---: | ---: | --- | ---: |"]
    for row in rows:
        target = "" if row.target is None else f"{row.target:g}"
        lines.append(f"| {row.work} | {row.ours} | {row.theirs} | {row.ratio:.2f} | {target} | {row.verdict()} "
                     f"| {row.more} |")
    return "\n".join(lines) + "\n"
