"""What else runs on the machine while something is measured; scripts/bench.py asks."""

import os
import time

TICK = 1_000_000_000 // os.sysconf("SC_CLK_TCK")


def thread_nanoseconds(pid):
    with open(f"/proc/{pid}/schedstat", encoding="ascii") as stat:
        return int(stat.read().split()[0])


def process_nanoseconds(pid):
    """Of all threads, those that have ended as well. As clock_getcpuclockid() makes the number of
    the clock, which is finer than the ticks in /proc."""
    return time.clock_gettime_ns((~pid << 3) | 2)


def machine_nanoseconds():
    """All that the processors did but waiting, and what a host took away from them."""
    with open("/proc/stat", encoding="ascii") as stat:
        user, nice, system, _, _, irq, softirq, steal = map(int, stat.readline().split()[1:9])
    return (user + nice + system + irq + softirq + steal) * TICK


class Watch:
    """From its making on: the time that passes, and the processors' time that others than the
    processes named have taken."""

    def __init__(self, *own):
        self.own = (*own, os.getpid())
        self.begin = time.monotonic_ns(), machine_nanoseconds(), self.taken_by_own()

    def taken_by_own(self):
        return sum(process_nanoseconds(pid) for pid in self.own)

    def seconds(self):
        return (time.monotonic_ns() - self.begin[0]) / 1e9

    def share_of_others(self):
        """As a share of one processor."""
        others = machine_nanoseconds() - self.begin[1] - (self.taken_by_own() - self.begin[2])
        return max(0, others) / max(1, time.monotonic_ns() - self.begin[0])


def use_all_processors(pid):
    """All threads of a process, and those that they will start."""
    processors = os.sched_getaffinity(0)
    for thread in os.listdir(f"/proc/{pid}/task"):
        os.sched_setaffinity(int(thread), processors)
