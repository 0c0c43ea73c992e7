#!/usr/bin/env python3
"""How the cost of one change grows with the tree, beside git: prints a table and draws a picture.

    bench/growth.py QRV PICTURE.svg [--sizes N ...] [--runs N]

Of each size a tree of small files is committed; then one file is changed, staged and committed, some times, and the
status is asked for.
"""

import argparse
import math
import pathlib
import shutil
import tempfile

import against_git
import measure
import trees

WORKS = ("add one file", "commit one file", "status")


def costs_at(size, qrv, runs):
    """Work -> the medians of both sides."""
    top = pathlib.Path(tempfile.mkdtemp(prefix="qrv-bench-"))
    try:
        pair = against_git.committed_pair(top, qrv, size)
        costs = {work: ([], []) for work in WORKS}
        for number in range(runs):
            path = trees.small_path(number * 97 % size)
            for place, side in enumerate(pair.both):
                (side.tree / path).write_text(f"changed {number}\n")
                costs["add one file"][place].append(side.add(path))
                costs["commit one file"][place].append(side.commit())
        for place, side in enumerate(pair.both):
            costs["status"][place].extend(side.status() for _ in range(runs))
        return {work: [measure.median(side) for side in both] for work, both in costs.items()}
    finally:
        shutil.rmtree(top)


def table(found):
    lines = ["| files | " + " | ".join(f"{work}: qrv | git | ratio" for work in WORKS) + " | memory of qrv |",
             "| ---: |" + " ---: |" * (3 * len(WORKS) + 1)]
    for size, costs in found.items():
        cells = [f"{size:,}"]
        for work in WORKS:
            ours, theirs = costs[work]
            cells += [f"{ours.seconds * 1000:.0f} ms", f"{theirs.seconds * 1000:.0f} ms",
                      f"{ours.seconds / theirs.seconds:.2f}"]
        peak = max(both[0].peak_mebibytes for both in costs.values())
        lines.append("| " + " | ".join([*cells, f"{peak:.0f} MiB"]) + " |")
    return "\n".join(lines) + "\n"


class Picture:
    """Lines over two logarithmic scales."""

    width, height, left, bottom, top, right = 720, 420, 64, 48, 24, 200
    colours = ("#1f5fa8", "#b3541e", "#2c7a3f")

    def __init__(self, sizes, values):
        self.sizes = sizes
        self.low = 10 ** math.floor(math.log10(min(values)))
        self.high = 10 ** math.ceil(math.log10(max(values)))
        self.parts = []

    def x(self, size):
        span = math.log10(self.sizes[-1] / self.sizes[0]) or 1
        return self.left + (self.width - self.left - self.right) * math.log10(size / self.sizes[0]) / span

    def y(self, milliseconds):
        share = math.log10(milliseconds / self.low) / math.log10(self.high / self.low)
        return self.height - self.bottom - (self.height - self.bottom - self.top) * share

    def text(self, x, y, words, anchor="middle"):
        self.parts.append(f'<text x="{x:.0f}" y="{y:.0f}" text-anchor="{anchor}">{words}</text>')

    def line(self, points, colour, more=""):
        path = " ".join(f"{x:.1f},{y:.1f}" for x, y in points)
        self.parts.append(f'<polyline fill="none" stroke="{colour}" {more} points="{path}"/>')

    def grid(self):
        for size in self.sizes:
            self.line([(self.x(size), self.y(self.low)), (self.x(size), self.y(self.high))], "#ddd")
            self.text(self.x(size), self.height - self.bottom + 18, f"{size:,} files")
        step = self.low
        while step <= self.high:
            self.line([(self.x(self.sizes[0]), self.y(step)), (self.x(self.sizes[-1]), self.y(step))], "#ddd")
            self.text(self.left - 8, self.y(step) + 4, f"{step:g} ms", "end")
            step *= 10

    def curve(self, name, values, place, is_dashed):
        colour = self.colours[place]
        self.line([(self.x(size), self.y(value)) for size, value in zip(self.sizes, values)], colour,
                  'stroke-width="2"' + (' stroke-dasharray="5 4"' if is_dashed else ""))
        self.parts.append(f'<text x="{self.x(self.sizes[-1]) + 8:.0f}" y="{self.y(values[-1]) + 4:.0f}" '
                          f'fill="{colour}">{name}</text>')

    def svg(self):
        return (f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {self.width} {self.height}" '
                'font-family="sans-serif" font-size="12">\n<rect width="100%" height="100%" fill="white"/>\n'
                + "\n".join(self.parts) + "\n</svg>\n")


def picture(found):
    milliseconds = [cost.seconds * 1000 for costs in found.values() for both in costs.values() for cost in both]
    drawn = Picture(list(found), milliseconds)
    drawn.grid()
    for place, work in enumerate(WORKS):
        for side, name in enumerate(("qrv", "git")):
            values = [costs[work][side].seconds * 1000 for costs in found.values()]
            drawn.curve(f"{work}, {name}", values, place, side == 1)
    return drawn.svg()


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("qrv", type=pathlib.Path)
    parser.add_argument("picture", type=pathlib.Path)
    parser.add_argument("--sizes", type=int, nargs="+", default=[10_000, 100_000, 1_000_000])
    parser.add_argument("--runs", type=int, default=5)
    arguments = parser.parse_args()
    found = {size: costs_at(size, arguments.qrv.resolve(), arguments.runs) for size in arguments.sizes}
    arguments.picture.write_text(picture(found), encoding="utf-8")
    print(table(found), end="")


if __name__ == "__main__":
    main()
