"""What a process takes: the time on the clock, that of the processor, and its memory at the peak."""

import dataclasses
import os
import statistics
import time


@dataclasses.dataclass(frozen=True)
class Cost:
    seconds: float
    processor_seconds: float
    peak_mebibytes: float

    def __add__(self, other):
        """One after the other."""
        return Cost(self.seconds + other.seconds, self.processor_seconds + other.processor_seconds,
                    max(self.peak_mebibytes, other.peak_mebibytes))


def cost_of(command, folder, environment, expected=(0,)):
    """Runs a command to its end, without what it prints. It must end with one of the expected statuses."""
    begin = time.perf_counter()
    process = os.fork()
    if process == 0:
        os.chdir(folder)
        silence = os.open(os.devnull, os.O_WRONLY)
        os.dup2(silence, 1)
        os.execvpe(command[0], command, environment)
    _, status, usage = os.wait4(process, 0)
    seconds = time.perf_counter() - begin
    if os.waitstatus_to_exitcode(status) not in expected:
        raise SystemExit(f"{' '.join(map(str, command))} ended with {os.waitstatus_to_exitcode(status)}")
    return Cost(seconds, usage.ru_utime + usage.ru_stime, usage.ru_maxrss / 1024)


def median(costs):
    return Cost(*(statistics.median(getattr(cost, field.name) for cost in costs) for field in dataclasses.fields(Cost)))


def spread(costs):
    """The shortest and the longest time."""
    return min(cost.seconds for cost in costs), max(cost.seconds for cost in costs)


def allocated_mebibytes(folder):
    """The room on the disk, in whole blocks, of all that lies below a folder."""
    blocks = 0
    for path, _, names in os.walk(folder):
        for name in [".", *names]:
            blocks += os.lstat(os.path.join(path, name)).st_blocks
    return blocks * 512 / 2**20
