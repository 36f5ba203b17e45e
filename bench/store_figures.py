#!/usr/bin/env python3
"""Prints how large and how fast stores of traces with few and many objects are, of this build or of two builds
in turn. Times are processor time: of an import per event, of opening with range and count, of the state and the
objects at a time, and of a view of 1 % of the trace (state, events, objects); medians. Status 1 when something
could not be measured."""
import argparse
import os
import statistics
import subprocess
import sys
import tempfile

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
COLUMNS = ["bytes/event", "import us/event", "open ms", "state ms", "view ms"]


def libraries(build):
    """The static libraries that an import needs, wherever the build has them."""
    names = ("libimport", "libtrv.", "libcxxutil.")
    return [os.path.join(folder, name) for folder, _, files in os.walk(build) for name in sorted(files)
            if name.endswith(".a") and name.startswith(names)]


def compiled_against(tree, build, work):
    program = os.path.join(work, "store_figures_other")
    subprocess.run(["c++", "-std=c++20", "-O3", "-DNDEBUG", "-DCW_MEASURE_ONLY", "-I", tree,
                    os.path.join(ROOT, "bench/store_figures.cpp"), "-Wl,--start-group", *libraries(build),
                    "-Wl,--end-group", "-o", program], check=True)
    return program


def trace_of(program, work, objects, events):
    name = os.path.join(work, f"objects-{objects}-{events}.trr")
    if not os.path.exists(name):
        subprocess.run([program, "--generate", name, str(objects), str(events)], check=True)
    return name


def figures(program, trace, work):
    base = os.path.join(work, "measured")
    run = subprocess.run([program, trace, base], check=True, capture_output=True, text=True)
    for extension in (".trv", ".tri", ".trs"):
        os.remove(base + extension)
    return [float(word) for word in run.stdout.split()]


def row(title, name, values):
    print(f"{title:>24} {name:>5}" + "".join(f"{value:16.3f}" for value in values), flush=True)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--build", default=os.path.join(ROOT, "build"), help="this tree's build")
    parser.add_argument("--against", nargs=2, metavar=("TREE", "BUILD"), help="another tree and its build")
    parser.add_argument("--objects", type=int, nargs="+", default=[30, 200, 1000, 5000])
    parser.add_argument("--events", type=int, default=250_000)
    parser.add_argument("--traces", nargs="*", default=[], help="raw event files to measure as well")
    parser.add_argument("--rounds", type=int, default=3)
    parser.add_argument("--work", help="where traces and stores go; kept")
    options = parser.parse_args()
    with tempfile.TemporaryDirectory(prefix="store_figures_") as passing:
        work = options.work or passing
        os.makedirs(work, exist_ok=True)
        mine = os.path.join(options.build, "bin/store_figures")
        programs = {"new": mine}
        if options.against:
            programs = {"old": compiled_against(*options.against, work), "new": mine}
        inputs = [(f"{objects} objects", trace_of(mine, work, objects, options.events))
                  for objects in options.objects]
        inputs += [(os.path.basename(trace), trace) for trace in options.traces]
        print(" " * 30 + "".join(f"{column:>16}" for column in COLUMNS))
        for title, trace in inputs:
            rounds = {name: [] for name in programs}
            for _ in range(options.rounds):
                for name, program in programs.items():
                    rounds[name].append(figures(program, trace, work))
            medians = {name: [statistics.median(column) for column in zip(*runs)]
                       for name, runs in rounds.items()}
            for name, values in medians.items():
                row(title, name, values)
            if options.against:
                row(title, "ratio", [new / old for new, old in zip(medians["new"], medians["old"])])


try:
    main()
except (subprocess.CalledProcessError, OSError) as problem:
    sys.exit(f"store_figures: {problem}: {getattr(problem, 'stderr', '') or ''}")
