"""The commands that a comparison of two builds runs. A case is a list of words for `chronoweave`; "{out}" in a word
stands for a file of the case's own, which is compared too."""
import json

FORMS = [[], ["--json"], ["--csv"]]
LARGE = 50_000  # events; of a trace with more, whole listings are compared in one form
SPANS = [1.0, 0.01, 0.001]  # seconds: the ranges that are looked at besides the whole


class Facts:
    """What the old build says about a store: what the cases are made from."""

    def __init__(self, ask, path):
        """ask(words) gives the objects that `chronoweave words --json` prints."""
        info = (ask(["info", path]) or [{}])[0]
        self.path = path
        self.events = info.get("events", 0)
        self.length = info.get("duration", 0)
        self.last_tick = info.get("endTick", 1) - 1
        ids = [o["object"] for o in ask(["objects", path]) if "object" in o]
        self.objects = [hex(ids[i]) for i in sorted({0, len(ids) // 2, len(ids) - 1})] if ids else []
        rows = ask(["report", "objects", path])
        self.statuses = frequent(rows, "status")
        self.names = frequent(rows, "event")
        self.ranges = [range_words(self.length * 0.3, span) for span in SPANS if span < self.length]
        self.large = self.events > LARGE


def frequent(rows, kind):
    """The names of the three most frequent events or statuses of a report, the most frequent first."""
    rows = [r for r in rows if r.get("kind") == kind and r.get("count")]
    return [r["name"] for r in sorted(rows, key=lambda r: -r["count"])[:3]]


def range_words(low, span):
    return ["--from", f"{low:.9f}", "--to", f"{low + span:.9f}"]


def formed(*words):
    return [list(words) + form for form in FORMS]


def pictures(facts):
    draw = ["render", facts.path]
    for kind in ("png", "svg", "pdf"):
        yield draw + ["-o", "{out}." + kind]
    for more in (["--width", "800", "--height", "600"], ["--width", "3000", "--height", "300", "--flat"], ["--flat"],
                 ["--sort", "id"], ["--sort", "name", "--flat"], ["--hide", "*1*"], ["--hide", "*/*"],
                 ["--json", "--height", "2000"]):
        yield draw + ["-o", "{out}.png"] + more
    for window in facts.ranges:
        yield draw + ["-o", "{out}.png"] + window
        yield draw + ["-o", "{out}.png", "--flat", "--sort", "id"] + window
        yield draw + ["-o", "{out}.svg", "--width", "1000"] + window


def listings(facts):
    path = facts.path
    yield from formed("info", path)
    yield ["info", path, "--ticks"]
    yield from [["events", path, "--csv"]] if facts.large else formed("events", path)
    for window in facts.ranges[1 if facts.large else 0:]:
        yield from formed("events", path, *window)
        yield from formed("objects", path, *window)
    yield ["events", path, "--ticks", "--from", str(facts.last_tick // 2), "--to", str(facts.last_tick // 2 + 200_000)]
    for first in ("1", "99", "100", "101", str(facts.events), str(facts.events + 1)):
        yield ["events", path, "--first", first, "--count", "5", "--json"]
    for number in facts.objects[:2]:
        yield ["events", path, "--object", number, "--json", "--first", "1", "--count", "50"]
    for part in (0, 0.37, 1, 2):
        yield ["state", path, "--at", f"{facts.length * part:.9f}", "--json"]
    yield from formed("state", path, "--at", f"{facts.length / 2:.9f}")
    yield ["state", path, "--ticks", "--at", str(facts.last_tick)]
    yield from formed("objects", path)


def searches(facts):
    path, some = facts.path, ["--objects", ",".join(facts.objects)] if facts.objects else []
    short = facts.ranges[1] if facts.large and len(facts.ranges) > 1 else []
    for name in facts.names:
        yield from formed("search", "event", path, "--event", name, *short)
    for name in facts.statuses:
        yield ["search", "status", path, "--status", name, "--json", "--limit", "200"]
        yield ["search", "status", path, "--status", name, *short]
    yield from formed("search", "switch", path, *some)
    yield ["search", "switch", path, "--limit", "7", "--ticks"]
    yield ["search", "event", path, "--limit", "3"] + some
    if len(facts.names) > 1:
        pair = ["--begin", facts.names[1], "--end", facts.names[0], *short]
        yield from formed("search", "pattern", path, *pair)
        yield ["search", "pattern", path, "--same-object", "--ticks", "--limit", "50"] + pair
        yield ["search", "pattern", path] + pair + some
        for begin in facts.objects[:2]:
            yield ["search", "interval", path, "--begin-objects", begin, "--end-objects", facts.objects[-1]] + pair


def reports(facts):
    path = facts.path
    yield from formed("report", "objects", path)
    for window in facts.ranges:
        yield ["report", "objects", path] + window
        yield ["report", "load", path, "--json"] + window
    for number in facts.objects:
        yield ["report", "object", path, "--object", number]
    yield from formed("report", "general", path)
    yield ["report", "general", path, "--switch", "--sort", "time", "--increasing", "--ticks"]
    for name in facts.names[:2]:
        yield ["report", "general", path, "--event", name, "--sort", "number"]
    for name in facts.statuses:
        yield ["report", "general", path, "--status", name, "--sort", "time"]
    yield from formed("report", "load", path)
    if facts.objects:
        yield ["report", "load", path, "--idle", facts.objects[0]]


def rule_lines(facts):
    """A file of timing rules about what the trace holds."""
    lines = ["# rules", 'load of processor * at most 50%', 'load of processor 0 at least 1% in 0s..1ms or none']
    for name in facts.names:
        lines.append(f'count of "{name}" between 1 and 50')
        lines.append(f'period of "{name}" 1ms jitter 1ms or none')
        lines += [f'interval "{facts.names[0]}" -> "{name}" max 1ms', f'interval "{name}" -> "{name}" min 10ticks or none']
    for name in facts.statuses:
        lines += [f'status "{name}" of * never longer than 2ms', f'status "{name}" of "*1*" at most 20% in 0s..']
    return "\n".join(lines) + "\n"


def checks(facts):
    yield from formed("check", "good.rules", facts.path)
    yield ["check", "good.rules", facts.path, "--junit", "{out}.xml"]
    yield ["check", "wrong.rules", facts.path]


def of_store(facts):
    """Every case on a store that is whole."""
    for family in (pictures, listings, searches, reports, checks):
        yield from family(facts)


def of_damaged(path):
    """What is asked of a store that is not."""
    yield from formed("info", path)
    yield ["events", path, "--csv"]
    yield ["events", path, "--first", "1500", "--count", "3"]
    yield ["objects", path]
    yield ["state", path, "--at", "0.001"]
    yield ["search", "switch", path]
    yield ["report", "objects", path]
    yield ["check", "good.rules", path]
    yield ["render", path, "-o", "{out}.png"]


def of_mistakes(facts):
    """Wrong command lines and files that aren't there, each with its message."""
    path = facts.path
    for text in ("info", "info nowhere.trr", "info .", "info empty.trr", "info text.trr", "info text.core", "info no-store",
                 f"info {path} {path}", f"info {path} --from 1", f"info {path} --nonsense", f"info {path} --json=",
                 f"nonsense {path}", "import", f"import {path}", "import nowhere.core", "import text.trr -o no/such/folder/x",
                 f"events {path} --from x", f"events {path} --to 1e", f"events {path} --first x",
                 f"events {path} --first 1 --from 0", f"events {path} --object nobody", f"events {path} --count 99999999999",
                 f"events {path} --config nowhere.tc", f"events {path} --config broken.tc --first 1 --count 2",
                 f"events {path} -o no/such/folder/x", f"events {path} -o {path}", f"events {path} --from 5 --to 1",
                 f"events {path} --ticks --from 1.5", f"state {path}", f"state {path} --at later", f"state {path} --at -1",
                 f"objects {path} --to never", f"render {path}", f"render {path} -o x.bmp", f"render {path} -o x.png --width 10",
                 f"render {path} -o x.png --width 0", f"render {path} -o x.png --sort size",
                 f"render {path} -o no/such/x.png", f"render {path} -o x.png --from 2 --to 1",
                 f"render nowhere.trs -o x.png", f"search {path}", f"search nonsense {path}", f"search event {path} --event X",
                 f"search status {path} --status X", f"search event {path} --status X", f"search pattern {path}",
                 f"search pattern {path} --begin X --end Y", f"search interval {path} --begin X --end Y",
                 f"search switch {path} --objects nobody", f"search switch {path} --limit many", f"report {path}",
                 f"search switch {path} --from late", f"report nonsense {path}", f"report object {path}",
                 f"report object {path} --object nobody", f"report general {path} --sort size",
                 f"report general {path} --event X", f"report load {path} --idle nobody",
                 f"check nowhere.rules {path}", "check good.rules nowhere.trr", f"check good.rules {path} --junit no/such/x",
                 "config", "config check", "config check nowhere.tc", "config check broken.tc", "config check broken.tc --json",
                 "config check broken.tc --csv", "config check empty.trr", "merge", "live"):
        yield text.split()


def of_nothing(configure_files):
    """What needs no trace."""
    for words in ("", "--help", "--version", "--print-man", "--print-completion", "info --help", "import --help",
                  "events --help", "state --help", "objects --help", "render --help", "search --help", "report --help",
                  "check --help", "config --help", "config check --help"):
        yield words.split()
    for file in configure_files:
        yield from formed("config", "check", file)


BROKEN_CONFIGURATION = """TRV_Object:TRV_Status:0x0:READY:0xc78500:TRV_Dash:2:TRV_Visible
TRV_Object:TRV_Status:zero:READY
TRV_Object:TRV_Status:0x3:TRV_Execution=RUNNING:0x009e73:TRV_Wavy:5:TRV_Visible
TRV_Event_Category:Things:TRV_Maybe
TRV_Event:0x1:*:TaskChange:task_change:TRV_Visible
TRV_Event:0x4
TRV_Nonsense:1
nonsense
"""


def facts_of_json(text):
    """The objects of an output of JSON lines; what is no such line is passed over."""
    found = []
    for line in text.splitlines():
        try:
            found.append(json.loads(line))
        except ValueError:
            pass
    return [f for f in found if isinstance(f, dict)]
