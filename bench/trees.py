"""Folders of files, always the same ones for the same numbers."""

import pathlib
import random
import zlib

import drawing_revisions
import similar_drawings

SEED = 7


def small_path(number):
    return pathlib.Path(f"part{number // 2500:03}", f"sheet{number // 100 % 25:02}", f"note{number % 100:03}.txt")


def small_files(root, count):
    """Notes of some ten bytes, a hundred in a folder."""
    for number in range(count):
        path = root / small_path(number)
        if number % 100 == 0:
            path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(f"note {number}\n")


def change_small_files(root, count, step, word):
    """Every `step`-th of the files gets other contents, `count` in all."""
    for number in range(0, count * step, step):
        (root / small_path(number)).write_text(f"note {number} {word}\n")


def files_that_do_not_compress(root, count):
    """Of 8 to 200 KiB, 200 in a folder."""
    source = random.Random(SEED)
    for number in range(count):
        folder = root / f"scan{number // 200:03}"
        folder.mkdir(exist_ok=True)
        (folder / f"sheet{number % 200:03}.bin").write_bytes(source.randbytes(source.randrange(8 << 10, 200 << 10)))


def copies_of_templates(root, count):
    """Drawings of 20 to 60 KB, a hundred in a folder."""
    for number, contents in enumerate(similar_drawings.drawings(count, 12)):
        folder = root / f"sheet{number // 100:02}"
        folder.mkdir(exist_ok=True)
        (folder / f"drawing{number:04}.dwg").write_bytes(contents)


def document(source, size_bytes):
    """Like a PDF: streams that were compressed by whoever made it, and between them text that was not."""
    parts = []
    while sum(map(len, parts)) < size_bytes:
        text = " ".join(source.choices(drawing_revisions.WORDS, k=4000)).encode()
        parts += [f"{len(parts)} 0 obj << /Length {len(text)} >> stream\n".encode(), zlib.compress(text, 1),
                  b"\nendstream endobj\n"]
    return b"".join(parts)


def mixed_folder(root, mebibytes):
    """What lies in an office: half of it drawings in some revisions each, then documents, pictures and archives."""
    source = random.Random(SEED)
    drawings = max(mebibytes // 2 // 24, 1)
    for number in range(drawings):
        for revision, contents in enumerate(drawing_revisions.revisions(6, 4 << 20, seed=number)):
            folder = root / f"house{number:03}"
            folder.mkdir(exist_ok=True)
            (folder / f"plan-{revision}.dwg").write_bytes(contents)
    for number in range(max(mebibytes // 4 // 2, 1)):
        folder = root / "documents" / f"{number // 50:03}"
        folder.mkdir(parents=True, exist_ok=True)
        (folder / f"{number:05}.pdf").write_bytes(document(source, 2 << 20))
    for number in range(max(mebibytes // 4 // 3, 1)):
        folder = root / "pictures" / f"{number // 50:03}"
        folder.mkdir(parents=True, exist_ok=True)
        name = f"{number:05}.{'jpg' if number % 2 else 'zip'}"
        (folder / name).write_bytes(source.randbytes(3 << 20))
