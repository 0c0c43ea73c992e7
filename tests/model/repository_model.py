"""A repository as it should be: everything in dictionaries, each command in the plainest way.

It answers what `qrv` is expected to do, and is compared with what `qrv` did. Paths are texts in which a byte that
is no UTF-8 stands as a single surrogate, as `os.fsdecode` gives it; contents are bytes. A stored version is a pair
(contents, store); the store is None but for a drawing, whose versions are equal only within one store.
"""

from collections import namedtuple

from tree_changes import Changes, Step, change_between, is_chosen, parents_of, steps_between

Conflict = namedtuple("Conflict", "path local remote wanted")
Commit = namedtuple("Commit", "parents tree message")


class Refused(Exception):
    """The command fails with status 1 and changes nothing but what was stored before."""


class Model:
    def __init__(self):
        self.files = {}  # regular files of the working tree
        self.links = set()
        self.folders = set()  # as on the disk before the command
        self.head = {}
        self.commits = {}  # by number
        self.branches = {}
        self.tags = {}
        self.branch = "master"
        self.staged = []  # (path, change)
        self.renames = {}
        self.conflicts = []
        self.merging = None
        self.kept = set()

    # What is known.

    def head_commit(self):
        return self.branches.get(self.branch)

    def tree(self, number):
        return {} if number is None else self.commits[number].tree

    def ancestors(self, number):
        found, waiting = set(), [number]
        while waiting:
            one = waiting.pop()
            if one is not None and one not in found:
                found.add(one)
                waiting += self.commits[one].parents
        return found

    def names_of(self, number):
        names = [("branch", name) for name, commit in self.branches.items() if commit == number]
        return sorted(names + [("tag", name) for name, commit in self.tags.items() if commit == number])

    def staged_changes(self, changes):
        paths = {path for path, _ in self.staged}
        return [(p, changes.of(p)) for p in sorted(paths) if changes.of(p) != "unchanged"]

    def url_of(self, path, contents):
        """Where `store` keeps the file."""
        if not path.endswith(".dwg"):
            return contents, None
        line = self.head.get(self.renames.get(path, path))
        return contents, path if line is None or line[1] is None else line[1]

    # Files.

    def check_room(self, steps, changes):
        removed = {step.path for step in steps if step.after is None}
        staying = [path for path in changes.present if path not in removed]
        for step in steps:
            if step.after is not None:
                inside = any(path.startswith(step.path + "/") for path in staying)
                if inside or any(folder in staying for folder in parents_of(step.path)):
                    raise Refused
            here = step.path in self.files or step.path in self.links
            below_link = any(folder in self.links for folder in parents_of(step.path))
            if here and not below_link and step.path not in changes.present:
                raise Refused

    def check_unharmed(self, steps, changes):
        if any(changes.of(step.path) != "unchanged" for step in steps):
            raise Refused
        self.check_room(steps, changes)

    def apply(self, steps):
        files, folders = dict(self.files), set(self.folders)
        for step in steps:
            if step.after is None:
                files.pop(step.path, None)
                self.prune(step.path, files, folders)
        for step in steps:
            if step.after is None:
                continue
            above = parents_of(step.path)
            if step.path in folders or any(f in files or f in self.links for f in above):
                raise Refused
            files[step.path] = step.after[0]
            folders.update(above)
        self.files, self.folders = files, folders

    def prune(self, path, files, folders):
        for folder in reversed(parents_of(path)):
            inside = folder + "/"
            if any(p.startswith(inside) for p in [*files, *self.links, *folders]):
                return
            folders.discard(folder)

    def steps_to_tree(self, wanted, paths, changes, force):
        steps, unsaved = [], []
        for path in sorted(set(paths)):
            after = wanted.get(path)
            present = self.known_version(path, changes, after)
            if present == "unsaved":
                unsaved.append(path)
            elif present == after:
                continue
            steps.append(Step(path, present, after))
        if unsaved and not force:
            raise Refused
        self.check_room(steps, changes)
        for path in unsaved:
            self.kept.add(self.files[path])
        return steps

    def known_version(self, path, changes, wanted):
        """A drawing is called as HEAD, the commit being merged, or the wanted version have it; its contents may have been
        kept under any name."""
        if path not in changes.present:
            return None
        head = self.head.get(path)
        if changes.of(path) == "unchanged":
            return head
        contents = self.files[path]
        known = [version for version in (head, self.tree(self.merging).get(path), wanted) if version is not None]
        stores = [version[1] for version in known if version[1] is not None] if path.endswith(".dwg") else [None]
        return next(((contents, store) for store in stores if contents in self.kept), "unsaved")

    # Commands. Each changes the model as `qrv` should, or raises Refused.

    def add(self, arguments, everything=False):
        changes = Changes(self)
        for argument in arguments:
            if not everything and not any(is_chosen(p, [argument]) for p in changes.by_path):
                raise Refused
        self.stage({p for p in changes.by_path if is_chosen(p, arguments)}, changes, halves=True)

    def stage(self, paths, changes, halves=False):
        paths = set(paths)
        for path, before in changes.renames.items() if halves else ():
            if path in paths or before in paths:
                paths |= {path, before}
        self.staged = [entry for entry in self.staged if entry[0] not in paths]
        self.staged += [(path, changes.of(path)) for path in sorted(paths)]
        for path in paths:
            self.renames.pop(path, None)
            if path in changes.renames:
                self.renames[path] = changes.renames[path]

    def unstage(self, arguments, everything=False):
        for argument in arguments:
            if not everything and not any(is_chosen(path, [argument]) for path, _ in self.staged):
                raise Refused
        for path, _ in self.staged:
            if is_chosen(path, arguments):
                self.renames.pop(path, None)
        self.staged = [entry for entry in self.staged if not is_chosen(entry[0], arguments)]

    def commit(self, message):
        """Gives the commit; `record` is to be told its number."""
        changes = Changes(self)
        staged = self.staged_changes(changes)
        if self.conflicts or (not staged and self.merging is None):
            raise Refused
        tree = dict(self.head)
        for path, change in staged:
            if change == "removed":
                del tree[path]
            else:
                tree[path] = self.url_of(path, self.files[path])
                self.kept.add(self.files[path])
        self.check_shape(tree)
        parents = [p for p in (self.head_commit(), self.merging) if p is not None]
        return Commit(parents, tree, message)

    def check_shape(self, tree):
        if any(folder in tree for path in tree for folder in parents_of(path)):
            raise Refused

    def record(self, number, commit):
        self.commits[number] = commit
        self.branches[self.branch] = number
        self.head = dict(commit.tree)
        self.staged, self.renames, self.merging = [], {}, None

    def switch(self, branch, create=False, start=None):
        if self.conflicts or self.merging is not None:
            raise Refused
        exists = branch in self.branches or branch == self.branch
        if exists == create:
            raise Refused
        target = self.branches.get(branch)
        if create:
            target = self.head_commit() if start is None else start
        if target != self.head_commit():
            steps = steps_between(self.head, self.tree(target))
            self.check_unharmed(steps, Changes(self))
            self.apply(steps)
            self.head = dict(self.tree(target))
        self.branch = branch
        if target is not None:
            self.branches[branch] = target

    def merge(self, number, message):
        """Gives "upToDate", "forward", "conflicts", or a commit to record."""
        if self.conflicts or self.merging is not None:
            raise Refused
        head = self.head_commit()
        if number in self.ancestors(head):
            return "upToDate"
        changes = Changes(self)
        if self.staged_changes(changes):
            raise Refused
        if head is None or head in self.ancestors(number):
            steps = steps_between(self.head, self.tree(number))
            self.check_unharmed(steps, changes)
            self.forget_stage()
            self.apply(steps)
            self.head = dict(self.tree(number))
            self.branches[self.branch] = number
            return "forward"
        return self.merge_three_ways(number, message, changes)

    def forget_stage(self):
        self.staged, self.renames = [], {}

    def merge_three_ways(self, number, message, changes):
        common = self.ancestors(self.head_commit()) & self.ancestors(number)
        base = self.tree(max(common, default=None))
        theirs = self.tree(number)
        taken, conflicts = [], []
        for path, before, after in steps_between(base, theirs):
            local = self.head.get(path)
            if local == after:
                continue
            if local == before:
                taken.append(Step(path, local, after))
            else:
                changed = change_between(before, local), change_between(before, after)
                conflicts.append(Conflict(path, *changed, after))
        self.check_shape({p for p in self.head if p not in {s.path for s in taken}} | {s.path for s in taken if s.after})
        met = [Step(c.path, self.head.get(c.path), self.head.get(c.path)) for c in conflicts]
        self.check_unharmed(sorted(taken + met, key=lambda step: step.path), changes)
        self.forget_stage()
        self.apply(taken)
        if not conflicts:
            tree = {**self.head, **{step.path: step.after for step in taken}}
            tree = {path: version for path, version in tree.items() if version is not None}
            return Commit([self.head_commit(), number], tree, message)
        self.conflicts = conflicts
        self.staged = [(step.path, change_between(step.before, step.after)) for step in taken]
        self.merging = number
        return "conflicts"

    def resolve(self, path, way, force):
        conflict = next((c for c in self.conflicts if c.path == path), None)
        if conflict is None:
            raise Refused
        if way != "merged":
            version = self.head.get(path) if way == "mine" else conflict.wanted
            wanted = {} if version is None else {path: version}
            steps = self.steps_to_tree(wanted, [path], Changes(self), force)
            self.apply(steps)
        changes = Changes(self)
        self.conflicts = [c for c in self.conflicts if c.path != path]
        if changes.of(path) != "unchanged":
            self.stage([path], changes)

    def abort(self, force):
        if not self.conflicts and self.merging is None:
            raise Refused
        paths = [path for path, _ in self.staged] + [c.path for c in self.conflicts]
        self.apply(self.steps_to_tree(self.head, paths, Changes(self), force))
        self.forget_stage()
        self.conflicts, self.merging = [], None

    def restore(self, arguments, number, force):
        tree = self.head if number is None else self.tree(number)
        if not all(any(is_chosen(p, [argument]) for p in tree) for argument in arguments):
            raise Refused
        paths = [p for p in tree if is_chosen(p, arguments)]
        self.apply(self.steps_to_tree(tree, paths, Changes(self), force))

    def make_tag(self, name):
        if name in self.tags:
            raise Refused
        self.tags[name] = self.head_commit()

    def delete_tag(self, name):
        if name not in self.tags:
            raise Refused
        del self.tags[name]
