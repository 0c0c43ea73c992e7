#!/usr/bin/env python3
"""Writes drawings as an office has them, always the same for the same numbers: copies of some templates, each with
changes of its own.

    bench/similar_drawings.py <folder> [count] [templates]    writes <folder>/sheet00/drawing0000.dwg, ...

A template holds 20 to 60 KB of what drawing_revisions.py puts into a drawing, but for the preview: title block, styles,
details. A copy gets a header of its own, works at some places, adds objects and deletes some. One in eight goes on
from an earlier copy, as a sheet does that was begun by saving another one under a new name.
"""

import pathlib
import random
import struct
import sys

import drawing_revisions

SEED = 11
SMALLEST, LARGEST = 20_000, 60_000
COPY_OF_COPY = 0.125
IN_A_FOLDER = 100


class Sheet(drawing_revisions.Drawing):
    """A small drawing without a preview picture."""

    def __init__(self, seed, size_bytes):
        super().__init__(seed, size_bytes + drawing_revisions.PREVIEW_BYTES)

    def copy(self, rng):
        twin = object.__new__(Sheet)
        twin.__dict__.update(self.__dict__)
        twin.rng, twin.objects = rng, list(self.objects)
        return twin

    def edit(self):
        for _ in range(self.rng.randint(1, 4)):
            place = self.rng.randrange(len(self.objects) - 12)
            for index in self.rng.sample(range(place, place + 12), 4):
                handle = self.objects[index][0]
                self.objects[index] = (handle, self.record(handle))
            self.objects[place:place] = [self.new_object() for _ in range(self.rng.randint(0, 6))]
        del self.objects[self.rng.randrange(len(self.objects))]

    def save(self):
        self.revision += 1
        header = struct.pack("<6sIIdd", b"AC9999", self.revision, self.next_handle,
                             self.rng.uniform(2450000, 2460000), self.rng.random()).ljust(1024, b"\0")
        start, body, entries = len(header), [], []
        for handle, record in self.objects:
            entries.append(struct.pack("<II", handle, start))
            body.append(record)
            start += len(record)
        return b"".join([header, *body, self.pictures, *entries])


def drawings(count, templates):
    rng = random.Random(SEED)
    originals = [Sheet(rng.random(), rng.randint(SMALLEST, LARGEST) * 8 // 10) for _ in range(templates)]
    copies = []
    for _ in range(count):
        known = copies if copies and rng.random() < COPY_OF_COPY else originals
        sheet = rng.choice(known).copy(random.Random(rng.random()))
        sheet.edit()
        copies.append(sheet)
        yield sheet.save()


def main():
    folder = pathlib.Path(sys.argv[1])
    count = int(sys.argv[2]) if len(sys.argv) > 2 else 3000
    templates = int(sys.argv[3]) if len(sys.argv) > 3 else 12
    for number, contents in enumerate(drawings(count, templates)):
        below = folder / f"sheet{number // IN_A_FOLDER:02}"
        below.mkdir(parents=True, exist_ok=True)
        (below / f"drawing{number:04}.dwg").write_bytes(contents)


if __name__ == "__main__":
    main()
