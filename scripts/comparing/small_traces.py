"""Small raw event files in which much happens, made up the same on every run: many kinds of record, odd names, long
extra data, damage."""
import os
import random
import struct

TASK_CHANGE, INTERRUPT, KERNEL_CALL, USER_EVENT, STATUS_CHANGE, REFRESH, TIMER = range(1, 8)
KINDS = [TASK_CHANGE, TASK_CHANGE, KERNEL_CALL, KERNEL_CALL, USER_EVENT, STATUS_CHANGE, STATUS_CHANGE, INTERRUPT, TIMER]
ODD_NAMES = [b"idle", b"a/b/c", b"a/b/d", b"a.b", b"", b"x" * 30, b"gr\xc3\xbcn", b"\xff\xfe", b"a*b", b'q"uote',
             b"two words"]


def header(big_endian, rate):
    numbers = struct.pack(">HHII" if big_endian else "<HHII", 1, 3, 0, rate)
    return b"CWGN" + bytes([3, 0, big_endian, 0]) + numbers + bytes(8)


def record(kind, subtype, time, words, tail=b"", big_endian=False):
    order = ">" if big_endian else "<"
    extra = struct.pack(f"{order}{len(words)}I", *words) + tail
    when = struct.pack(order + "II", time & 0xFFFFFFFF, time >> 32)
    return bytes([12 + len(extra)]) + struct.pack(">HH", kind, subtype) + when + extra


def tasks_named(count, processors):
    for task in range(count):
        name = ODD_NAMES[task] if task < len(ODD_NAMES) else b"group%d/task%02d" % (task % 4, task)
        yield (task + 1) << 10 | task % processors, name


def busy(seed, events, tasks, processors, gap=2000, big_endian=False):
    chance, time, out = random.Random(seed), 1_000_000, [header(big_endian, 1_000_000_000)]
    ids = []
    for number, name in tasks_named(tasks, processors):
        ids.append(number)
        out.append(record(REFRESH, 2, 0, [number, number % 20], name.ljust(31, b"\0"), big_endian))
    for _ in range(events):
        time += chance.randrange(gap)
        task = chance.choice(ids)
        kind = chance.choice(KINDS)
        words = [task, chance.randrange(1000), chance.randrange(1 << 20)][:chance.randrange(1, 4)]
        tail = bytes(chance.randrange(256) for _ in range(chance.choice([0, 0, 0, 40])))
        out.append(record(kind, chance.randrange(9 if kind == STATUS_CHANGE else 44), time, words, tail, big_endian))
    return b"".join(out)


def all_traces():
    """File name and bytes of each."""
    plain = busy(1, 2500, 24, 3)
    yield "small-busy.trr", plain
    yield "small-be.trr", busy(2, 800, 9, 2, big_endian=True)
    yield "small-sparse.trr", busy(3, 60, 5, 1, gap=300_000_000)
    yield "small-crowd.trr", busy(4, 1500, 400, 4)
    yield "small-one.trr", header(False, 1000) + record(TASK_CHANGE, 0, 7, [1 << 10])
    yield "small-none.trr", header(False, 1000)
    yield "small-cut.trr", plain[:-9]
    damaged = bytearray(plain)
    damaged[9000:9100] = b"\x05" * 100
    yield "small-damaged.trr", bytes(damaged)


def write_all(folder):
    """Writes them into the folder; their paths."""
    paths = []
    for name, data in all_traces():
        paths.append(os.path.join(folder, name))
        with open(paths[-1], "wb") as file:
            file.write(data)
    return paths
