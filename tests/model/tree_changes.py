"""What differs between two trees, and between the working tree of a model and its HEAD."""

from collections import namedtuple

Step = namedtuple("Step", "path before after")

IGNORE_FILE = ".qrv/properties/ignore"


def change_between(before, after):
    if before is None:
        return "added"
    return "removed" if after is None else "modified"


def is_chosen(path, chosen):
    return any(choice in ("", path) or path.startswith(choice + "/") for choice in chosen)


def parents_of(path):
    parts = path.split("/")
    return ["/".join(parts[:count]) for count in range(1, len(parts))]


def steps_between(before, after):
    paths = sorted(before.keys() | after.keys())
    return [Step(p, before.get(p), after.get(p)) for p in paths if before.get(p) != after.get(p)]


class Changes:
    """The working tree beside HEAD."""

    def __init__(self, model):
        head = model.head
        rules = model.files.get(IGNORE_FILE, b"").decode().splitlines()
        suffixes = tuple(rule[1:] for rule in rules if rule.startswith("*"))
        self.present = sorted(p for p in model.files if p in head or not p.endswith(suffixes or "\0"))
        self.by_path = {p: "removed" for p in head if p not in model.files}
        for path in self.present:
            if path not in head:
                self.by_path[path] = "added"
            elif head[path][0] != model.files[path]:
                self.by_path[path] = "modified"
        self.renames = {}
        gone = sorted(p for p in head if p not in model.files)
        for path in self.present:
            contents = model.files[path]
            before = next((p for p in gone if head[p][0] == contents), None)
            if path not in head and contents and before is not None:
                self.renames[path] = before
                gone.remove(before)

    def of(self, path):
        return self.by_path.get(path, "unchanged")
