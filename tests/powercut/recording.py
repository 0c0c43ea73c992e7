"""What a command did to the disk: its calls, as steps on files and folders that are known by a number.

The recorder plays every call on a tree of its own, so it knows which file a descriptor or a path means at that moment. When
the command has ended, its tree must be the one on the disk: a call that it misunderstood would be seen there.
"""

import os
import re

from calls import bytes_of
from recorded_tree import FOLDER_MODE, ROOT, Flush, RecordedTree


class OpenFile:
    def __init__(self, number, appends):
        self.number = number
        self.appends = appends
        self.offset = 0


class Recorder(RecordedTree):
    def __init__(self, folder):
        super().__init__(folder)
        self.open_files = {}
        self.current = ROOT
        # The command inherits it.
        self.umask = os.umask(0)
        os.umask(self.umask)

    def record(self, calls):
        for call in calls:
            getattr(self, "on_" + call.name)(call)
        return self.steps

    # Where a path leads: (folder, name), or None for what is not in the tree. The folder may be missing.

    def base_of(self, argument):
        if argument == "AT_FDCWD":
            return self.current
        opened = self.open_files.get(int(argument))
        return opened.number if opened else None

    def place(self, base, argument):
        path = bytes_of(argument)
        if match := re.match(rb"/proc/self/fd/(\d+)(?:/(.*))?$", path, re.DOTALL):
            base, path = self.base_of(match.group(1).decode()), match.group(2) or b"."
        elif path.startswith(b"/"):
            if path != self.folder and not path.startswith(self.folder + b"/"):
                return None
            base, path = ROOT, path[len(self.folder) + 1 :]
        if base is None:
            return None
        folder, names = base, [name for name in path.split(b"/") if name not in (b"", b".")]
        for name in names[:-1]:
            folder = self.step_into(folder, os.fsdecode(name))
            if folder is None:
                return None
        return (folder, os.fsdecode(names[-1])) if names else (folder, "")

    # Calls that give descriptors

    def opened(self, place, flags, mode, call):
        number = self.number_at(place)
        if "O_TMPFILE" in flags:
            raise ValueError("files without a name are not understood")
        if number is None and place is not None and "O_CREAT" in flags:
            number = self.make(place, mode & ~self.umask, call.timeNs)
        if number is None:
            self.open_files.pop(call.result, None)
            return
        if "O_TRUNC" in flags and not self.nodes[number].is_folder:
            self.resize(number, 0, call.timeNs)
        self.open_files[call.result] = OpenFile(number, "O_APPEND" in flags)

    def on_openat(self, call):
        folder, path, flags, *mode = call.arguments
        place = self.place(self.base_of(folder), path)
        self.opened(place, flags, int(mode[0], 8) if mode else 0, call)

    def on_open(self, call):
        self.on_openat(call._replace(arguments=["AT_FDCWD", *call.arguments]))

    def on_creat(self, call):
        path, mode = call.arguments
        self.on_openat(call._replace(arguments=["AT_FDCWD", path, "O_CREAT|O_TRUNC", mode]))

    def on_openat2(self, call):
        folder, path, how, _ = call.arguments
        flags = re.search(r"flags=([\w|]+)", how).group(1)
        mode = re.search(r"mode=(0[0-7]*)", how)
        self.opened(self.place(self.base_of(folder), path), flags, int(mode.group(1), 8) if mode else 0, call)

    def on_close(self, call):
        self.open_files.pop(int(call.arguments[0]), None)

    def duplicated(self, call):
        opened = self.open_files.get(int(call.arguments[0]))
        self.open_files.pop(call.result, None)
        if opened:
            self.open_files[call.result] = opened

    on_dup = on_dup2 = on_dup3 = duplicated

    def on_fcntl(self, call):
        if call.arguments[1].startswith("F_DUPFD"):
            self.duplicated(call)

    def on_chdir(self, call):
        self.current = self.number_at(self.place(self.current, call.arguments[0]))

    def on_fchdir(self, call):
        self.current = self.base_of(call.arguments[0])

    def on_lseek(self, call):
        if opened := self.open_files.get(int(call.arguments[0])):
            opened.offset = call.result

    def on_mmap(self, call):
        _, _, protection, flags, file, _ = call.arguments
        if "PROT_WRITE" in protection and "MAP_SHARED" in flags and file != "-1" and int(file) in self.open_files:
            raise ValueError("writing through memory is not seen")

    # Calls that change contents

    def file_of(self, argument):
        opened = self.open_files.get(int(argument))
        return opened if opened and not self.nodes[opened.number].is_folder else None

    def on_write(self, call):
        opened = self.file_of(call.arguments[0])
        if not opened:
            return
        contents = bytes_of(call.arguments[1])[: call.result]
        if opened.appends:
            opened.offset = len(self.nodes[opened.number].contents)
        self.write(opened.number, opened.offset, contents, call.timeNs)
        opened.offset += len(contents)

    on_writev = on_write

    def written_at(self, call, offset):
        if opened := self.file_of(call.arguments[0]):
            self.write(opened.number, offset, bytes_of(call.arguments[1])[: call.result], call.timeNs)

    def on_pwrite64(self, call):
        self.written_at(call, int(call.arguments[3]))

    on_pwritev = on_pwritev2 = on_pwrite64

    def copied(self, call, source, source_offset, target, target_offset):
        """An offset that is NULL is that of the descriptor, which then moves."""
        source, target = self.file_of(source), self.file_of(target)
        if not target:
            return
        if not source:
            raise ValueError("a file from elsewhere is copied")
        begin = self.offset_of(source, source_offset, call.result)
        contents = self.nodes[source.number].contents[begin : begin + call.result]
        self.write(target.number, self.offset_of(target, target_offset, call.result), contents, call.timeNs)

    @staticmethod
    def offset_of(opened, argument, count):
        if argument == "NULL":
            opened.offset += count
            return opened.offset - count
        return int(re.search(r"\d+", argument).group(0))

    def on_copy_file_range(self, call):
        source, source_offset, target, target_offset, *_ = call.arguments
        self.copied(call, source, source_offset, target, target_offset)

    def on_sendfile(self, call):
        target, source, offset, _ = call.arguments
        self.copied(call, source, offset, target, "NULL")

    def on_ioctl(self, call):
        if call.arguments[1] not in ("FICLONE", "BTRFS_IOC_CLONE or FICLONE"):
            return
        source, target = self.file_of(call.arguments[2]), self.file_of(call.arguments[0])
        contents = self.nodes[source.number].contents
        self.resize(target.number, 0, call.timeNs)
        self.write(target.number, 0, contents, call.timeNs)

    def on_ftruncate(self, call):
        if opened := self.file_of(call.arguments[0]):
            self.resize(opened.number, int(call.arguments[1]), call.timeNs)

    def on_truncate(self, call):
        number = self.number_at(self.place(self.current, call.arguments[0]))
        if number is not None:
            self.resize(number, int(call.arguments[1]), call.timeNs)

    def on_fallocate(self, call):
        file, mode, offset, size = call.arguments
        opened = self.file_of(file)
        if opened and mode != "0":
            raise ValueError(f"fallocate with {mode} is not understood")
        if opened:
            end = max(len(self.nodes[opened.number].contents), int(offset) + int(size))
            self.resize(opened.number, end, call.timeNs)

    # Calls that change folders

    def on_mkdirat(self, call):
        folder, path, mode = call.arguments
        if place := self.place(self.base_of(folder), path):
            self.make(place, FOLDER_MODE | (int(mode, 8) & ~self.umask), call.timeNs)

    def on_mkdir(self, call):
        self.on_mkdirat(call._replace(arguments=["AT_FDCWD", *call.arguments]))

    def on_unlinkat(self, call):
        if place := self.place(self.base_of(call.arguments[0]), call.arguments[1]):
            self.change_entries([(*place, None)], call.timeNs)

    def on_unlink(self, call):
        self.on_unlinkat(call._replace(arguments=["AT_FDCWD", call.arguments[0]]))

    on_rmdir = on_unlink

    def on_renameat2(self, call):
        old_folder, old_path, new_folder, new_path, flags = call.arguments
        old, new = self.place(self.base_of(old_folder), old_path), self.place(self.base_of(new_folder), new_path)
        if old is None or new is None:
            if old != new:
                raise ValueError("something is moved out of the tree or into it")
            return
        other = self.number_at(new) if "EXCHANGE" in flags else None
        if old != new:
            self.change_entries([(*old, other), (*new, self.number_at(old))], call.timeNs)

    def on_renameat(self, call):
        self.on_renameat2(call._replace(arguments=[*call.arguments, "0"]))

    def on_rename(self, call):
        old, new = call.arguments
        self.on_renameat2(call._replace(arguments=["AT_FDCWD", old, "AT_FDCWD", new, "0"]))

    def on_linkat(self, call):
        old_folder, old_path, new_folder, new_path, _ = call.arguments
        number = self.number_at(self.place(self.base_of(old_folder), old_path))
        place = self.place(self.base_of(new_folder), new_path)
        if number is None or place is None:
            raise ValueError("a second name is made for something elsewhere, or there")
        self.change_entries([(*place, number)], call.timeNs)

    def on_link(self, call):
        old, new = call.arguments
        self.on_linkat(call._replace(arguments=["AT_FDCWD", old, "AT_FDCWD", new, "0"]))

    def on_symlink(self, call):
        raise ValueError("links are not understood")

    on_symlinkat = on_symlink

    # Of permissions and times the last ones are taken, as if they were always on the disk.

    def change_mode(self, number, mode):
        if number is not None:
            node = self.nodes[number]
            node.mode = (node.mode & FOLDER_MODE) | mode

    def on_fchmod(self, call):
        self.change_mode(self.base_of(call.arguments[0]), int(call.arguments[1], 8))

    def on_fchmodat(self, call):
        place = self.place(self.base_of(call.arguments[0]), call.arguments[1])
        self.change_mode(self.number_at(place), int(call.arguments[2], 8))

    def on_chmod(self, call):
        self.on_fchmodat(call._replace(arguments=["AT_FDCWD", *call.arguments]))

    def on_utimensat(self, call):
        base, path, times, _ = call.arguments
        number = self.base_of(base) if path == "NULL" else self.number_at(self.place(self.base_of(base), path))
        if number is None:
            return
        modified = call.timeNs
        if times != "NULL":
            last = re.findall(r"UTIME_OMIT|UTIME_NOW|tv_sec=(-?\d+), tv_nsec=(\d+)", times)[-1]
            if not last[0] and "UTIME_OMIT" in times:
                return
            modified = int(last[0]) * 1_000_000_000 + int(last[1]) if last[0] else call.timeNs
        self.nodes[number].modified_ns = modified

    # Calls that wait for the disk

    def on_fsync(self, call):
        number = self.base_of(call.arguments[0])
        if number is not None:
            self.steps.append(Flush(number, self.path_of(number)))

    on_fdatasync = on_fsync

    def on_syncfs(self, call):
        self.steps.append(Flush(None, "*"))

    on_sync = on_syncfs
