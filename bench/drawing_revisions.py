#!/usr/bin/env python3
"""Writes the revisions of a made-up drawing, always the same for the same numbers.

    bench/drawing_revisions.py <folder> [revisions] [MiB]    writes <folder>/001.dwg, 002.dwg, ...

A revision holds what binary drawings hold: a header with times and counters, a preview picture that each
save makes anew, objects as records of handles and coordinates, texts, embedded pictures that do not
compress, and behind them a map from each object's handle to its place in the file. From one revision to
the next a few dozen objects change, some come, some go. So most of the file stays, all of it moves, and
every entry of the map behind the first insertion changes.
"""

import pathlib
import random
import struct
import sys
import zlib

PREVIEW_BYTES = 16 * 1024
SHARE_OF_PICTURES = 0.25
WORDS = ("Wall Door Stair Axis Hatch Level Beton Mauerwerk Achse Schnitt Ansicht Fundament Decke Detail "
         "Bolt Flange Weld M12 M16 DN100 EI30 RAL7016").split()


def point(rng):
    return struct.pack("<3d", round(rng.uniform(0, 50000), 1), round(rng.uniform(0, 30000), 1), 0.0)


def line(rng):
    return point(rng) + point(rng)


def polyline(rng):
    return b"".join(point(rng)[:16] for _ in range(rng.randint(3, 12)))


def text(rng):
    words = " ".join(rng.choices(WORDS, k=rng.randint(1, 5)))
    return point(rng) + struct.pack("<d", rng.choice((2.5, 3.5, 5.0))) + words.encode("utf-16-le")


def arc(rng):
    return point(rng) + struct.pack("<3d", rng.uniform(1, 900), rng.uniform(0, 6.28), rng.uniform(0, 6.28))


KINDS = (line, line, polyline, text, arc)


class Drawing:
    def __init__(self, seed, size_bytes):
        self.rng = random.Random(seed)
        self.revision = 0
        self.next_handle = 0x100
        self.layers = [self.rng.randrange(0x10, 0xFF) for _ in range(40)]
        self.pictures = self.rng.randbytes(int(size_bytes * SHARE_OF_PICTURES))
        self.objects = []
        size = PREVIEW_BYTES + len(self.pictures)
        while size < size_bytes:
            self.objects.append(self.new_object())
            size += len(self.objects[-1][1]) + 8

    def new_object(self):
        handle, self.next_handle = self.next_handle, self.next_handle + self.rng.randint(1, 3)
        return handle, self.record(handle)

    def record(self, handle):
        kind = self.rng.randrange(len(KINDS))
        body = KINDS[kind](self.rng)
        head = struct.pack("<HHIIhI", len(body) + 22, kind, handle, self.rng.choice(self.layers),
                           self.rng.choice((256, 256, 256, 1, 3, 7)), 0x1F)
        return head + body + struct.pack("<I", zlib.crc32(head + body))

    def edit(self):
        """What somebody does between two saves: works at one or two places, and here and there."""
        for _ in range(self.rng.randint(1, 3)):
            place = self.rng.randrange(len(self.objects) - 40)
            for index in self.rng.sample(range(place, place + 40), 12):
                handle = self.objects[index][0]
                self.objects[index] = (handle, self.record(handle))
            added = [self.new_object() for _ in range(self.rng.randint(0, 15))]
            self.objects[place:place] = added
        for _ in range(self.rng.randint(0, 4)):
            del self.objects[self.rng.randrange(len(self.objects))]

    def save(self):
        self.revision += 1
        preview = self.rng.randbytes(PREVIEW_BYTES)
        header = struct.pack("<6sIIdd", b"AC9999", self.revision, self.next_handle,
                             2460000.5 + self.revision * 0.3, 0.04 * self.revision).ljust(1024, b"\0")
        start, body, entries = len(header) + len(preview), [], []
        for handle, record in self.objects:
            entries.append(struct.pack("<II", handle, start))
            body.append(record)
            start += len(record)
        return b"".join([header, preview, *body, self.pictures, *entries])


def revisions(count, size_bytes, seed=1):
    drawing = Drawing(seed, size_bytes)
    for number in range(count):
        if number:
            drawing.edit()
        yield drawing.save()


def main():
    folder = pathlib.Path(sys.argv[1])
    count = int(sys.argv[2]) if len(sys.argv) > 2 else 50
    mebibytes = float(sys.argv[3]) if len(sys.argv) > 3 else 5
    folder.mkdir(parents=True, exist_ok=True)
    for number, contents in enumerate(revisions(count, int(mebibytes * 2**20)), 1):
        (folder / f"{number:03}.dwg").write_bytes(contents)


if __name__ == "__main__":
    main()
