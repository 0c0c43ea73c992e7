#!/usr/bin/env python3
"""Makes the page of measurements from the reports that Google Benchmark wrote, and tables that are finished.

    bench_table.py FOLDER           prints the rows whose reports are in FOLDER
    bench_table.py FOLDER PAGE      writes the whole page; every report must be there
"""

import datetime
import json
import pathlib
import platform
import statistics
import sys

TIME = "real_time"

# (question, report, ours, peer, what is compared, target): the ratio of ours to the peer's. Without a peer
# the figure is a ratio already.
ROWS = [
    ("Read a state document, against nlohmann::json", "json",
     "readLibrary/100000", "readNlohmann/100000", TIME, 0.6),
    ("Write a state document, against nlohmann::json", "json",
     "writeLibrary/100000", "writeNlohmann/100000", TIME, 0.8),
    ("Write a state document, against touching memory for its wide text", "json",
     "writeLibrary/100000", "fillWideText/100000", TIME, None),
    ("Memory for the wide text, against nlohmann::json", "json",
     "fillWideText/100000", "writeNlohmann/100000", TIME, None),
    ("Read, against RapidJSON (UTF-8 tree)", "json",
     "readLibrary/100000", "readRapidUtf8/100000", TIME, None),
    ("Read, against RapidJSON (wide tree)", "json",
     "readLibrary/100000", "readRapidWide/100000", TIME, None),
    ("Write, against RapidJSON (wide tree)", "json",
     "writeLibrary/100000", "writeRapidWide/100000", TIME, None),
    ("Read, against only building the tree", "json",
     "readLibrary/100000", "buildPrescribedTree/100000", TIME, None),
    ("Peak memory of a read, against the tree", "json",
     "readLibrary/100000", "buildPrescribedTree/100000", "peak_MiB", 1.1),
    ("Read ten times the entries", "json",
     "readLibrary/1000000", "readLibrary/100000", TIME, 11),
    ("Write ten times the entries", "json",
     "writeLibrary/1000000", "writeLibrary/100000", TIME, 11),
    ("Scan a repository, against one bare readdir pass", "scan",
     "repositoryScan", "bareReaddir", TIME, 1.3),
    ("Scan, against the standard library's directory walk", "scan",
     "repositoryScan", "directoryIterator", TIME, None),
    ("Tell whether 1 GiB changed, against SHA-256 over memory", "hash",
     "largeIsDifferent", "largeInMemory", TIME, 1.17),
    ("Tell whether 50,000 small files changed, against a bare loop", "hash",
     "smallAreDifferent", "smallInABareLoop", TIME, 1.1),
    ("Load a state, change an entry, save, against nlohmann::json", "state",
     "changeOneEntry<changeWithLibrary>/100000", "changeOneEntry<changeWithNlohmann>/100000",
     TIME, 0.3),
    ("The same, against rewriting the file's bytes", "state",
     "changeOneEntry<changeWithLibrary>/100000", "changeOneEntry<rewriteOnly>/100000", TIME, None),
    ("The same with ten times the entries", "state",
     "changeOneEntry<changeWithLibrary>/1000000", "changeOneEntry<changeWithLibrary>/100000",
     TIME, 11),
    ("Peak memory of that, against the file's size", "state",
     "changeOneEntry<changeWithLibrary>/100000", None, "peak_per_file_size", 4),
]

PAGE = """# Performance

Made by `scripts/bench.sh` on {date}; do not edit. Times differ from machine to machine and from run to
run: what counts is the ratio to the peer, measured in the same run on the same input. What each
benchmark does is said at the top of its source in `bench/`.

Machine: {machine}. Each figure is the median of {repetitions} runs.

## Against the targets

{ratios}
A ratio below 1 means that we are faster, or need less. "missed" marks a target that is not reached.

## The program against git

{sections}
## All measurements

{measurements}"""


def load(folder):
    """Report -> benchmark -> its runs, and the context of the last report."""
    reports, context = {}, {}
    for path in sorted(pathlib.Path(folder).glob("*.json")):
        report = json.loads(path.read_text(encoding="utf-8"))
        context = report["context"]
        runs = reports.setdefault(path.stem, {})
        for run in report["benchmarks"]:
            if run.get("error_occurred"):
                raise SystemExit(f"{path.stem}: {run['name']} failed: {run.get('error_message')}")
            if run["run_type"] == "iteration":
                runs.setdefault(run["run_name"], []).append(run)
    return reports, context


def median(runs, field):
    return statistics.median(run[field] for run in runs)


def format_row(cells):
    return "| " + " | ".join(cells) + " |\n"


def ratio_table(reports):
    text = format_row(["question", "ours", "peer", "ratio", "target", ""])
    text += format_row(["---", "---:", "---:", "---:", "---:", "---"])
    for question, report, ours, peer, field, target in ROWS:
        if report not in reports:
            continue
        runs = reports[report]
        absent = {ours, peer or ours} - set(runs)
        if absent:
            raise SystemExit(f"{report}: nothing measured for {', '.join(sorted(absent))}")
        our_figure = median(runs[ours], field)
        peer_figure = median(runs[peer], field) if peer else 1
        unit = runs[ours][0]["time_unit"] if field == TIME else field.rsplit("_", 1)[-1]
        ratio = our_figure / peer_figure
        verdict = "" if target is None else "reached" if ratio <= target else "missed"
        shown = [f"{our_figure:.4g} {unit}", f"{peer_figure:.4g} {unit}"] if peer else ["", ""]
        text += format_row([question, *shown, f"{ratio:.2f}", "" if target is None else f"{target:g}", verdict])
    return text


def measurement_table(reports):
    text = format_row(["program", "benchmark", "median", "from", "to", "more"])
    text += format_row(["---", "---", "---:", "---:", "---:", "---"])
    for report, benchmarks in reports.items():
        for name, runs in benchmarks.items():
            times, unit = [run[TIME] for run in runs], runs[0]["time_unit"]
            counters = [f"{key} {median(runs, key):.4g}" for key in runs[0]
                        if key == "files" or key.startswith("peak_")]
            text += format_row([f"qrv_bench_{report}", f"`{name}`",
                                f"{statistics.median(times):.4g} {unit}", f"{min(times):.4g}",
                                f"{max(times):.4g}", ", ".join(counters)])
    return text


def processor():
    for line in pathlib.Path("/proc/cpuinfo").read_text(encoding="utf-8").splitlines():
        if line.startswith("model name"):
            return line.split(":", 1)[1].strip()
    return platform.machine()


def page(reports, sections, context):
    repetitions = max(len(runs) for runs in next(iter(reports.values())).values())
    return PAGE.format(
        date=datetime.date.today().isoformat(),
        machine=f"{processor()}, {context['num_cpus']} cores, Linux {platform.release().split('-')[0]}",
        repetitions=repetitions,
        ratios=ratio_table(reports),
        sections="\n".join(sections),
        measurements=measurement_table(reports))


def main(arguments):
    reports, context = load(arguments[0])
    if len(arguments) == 1:
        print(ratio_table(reports), measurement_table(reports), sep="\n")
        return 0
    missing = {row[1] for row in ROWS} - set(reports)
    if missing:
        print(f"no report of {', '.join(sorted(missing))}", file=sys.stderr)
        return 1
    sections = [path.read_text(encoding="utf-8") for path in sorted(pathlib.Path(arguments[0]).glob("*.md"))]
    pathlib.Path(arguments[1]).write_text(page(reports, sections, context), encoding="utf-8")
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
