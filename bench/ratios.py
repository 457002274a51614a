#!/usr/bin/env python3
"""Prints each library call BM_<name> beside its baselines as a Markdown table, with the ratio
library / baseline from the medians, and marks the fastest baseline (the one a call is judged
against).

The figures docs/performance.md reports come from one mode only: every benchmark repeated, with
Google Benchmark's random interleaving, so that a call and its baselines are timed minutes apart
never and the load of a shared machine falls on both alike. Either let this script run a program
in that mode:

    python3 bench/ratios.py --run build/release/bench/bench_geometry [--repetitions 5] \
        [--benchmark_filter=...]

or give it the JSON of such a run:

    python3 bench/ratios.py run.json

A JSON without median aggregates (a run without repetitions) is refused.
"""
import argparse
import json
import subprocess
import sys
import tempfile

# Baselines of each call, when they are not simply BM_<name>_Bare: name -> baseline names. Every
# baseline reaches the same answer; the fastest of them is the one the call is judged against.
BASELINES = {
    # The straight line: the bare trigonometry, and the dot/cross products (no trigonometry).
    "BM_CGeoLine_StationOffset_FreshLine": [
        "BM_CGeoLine_StationOffset_FreshLine_Bare",
        "BM_CGeoLine_StationOffset_FreshLine_DotCross",
    ],
    # The spiral's inversion is an iteration of point evaluations: compare it with one.
    "BM_CGeoEntrySpiral_GridDeltas_GoodGuess_Right": ["BM_CGeoEntrySpiral_GridHorzPoint"],
    "BM_CGeoEntrySpiral_GridDeltas_GoodGuess_Left": ["BM_CGeoEntrySpiral_GridHorzPoint"],
    "BM_CGeoEntrySpiral_GridDeltas_GoodGuess_Centreline": ["BM_CGeoEntrySpiral_GridHorzPoint"],
    "BM_CGeoEntrySpiral_GridDeltas_ExactGuess_Right": ["BM_CGeoEntrySpiral_GridHorzPoint"],
    "BM_CGeoEntrySpiral_GridDeltas_PoorGuess_Right": ["BM_CGeoEntrySpiral_GridHorzPoint"],
    "BM_CGeoEntrySpiral_GridDeltas_PoorGuess_Left": ["BM_CGeoEntrySpiral_GridHorzPoint"],
    # Stationing text: snprintf, and std::to_chars writing the same text.
    "BM_FormatStationing": ["BM_FormatStationing_Bare", "BM_FormatStationing_ToChars"],
    "BM_CQuantityUnits_Destroy": ["BM_CQuantityUnits_Construct_Bare"],
    "BM_CQuantityUnits_DestroyChanged": ["BM_CQuantityUnits_Construct_Bare"],
    # The geodesy (bench_geodesy) beside PROJ doing the same work; the geocentric conversions
    # also beside GeographicLib and the bare formula, since PROJ's per-call dispatch flatters.
    "BM_llh2xyz": ["BM_llh2xyz_Proj", "BM_llh2xyz_Geocentric", "BM_llh2xyz_Formula"],
    "BM_xyz2llh": ["BM_xyz2llh_Proj", "BM_xyz2llh_Geocentric", "BM_xyz2llh_Formula"],
    "BM_CGeoStereographic_Forward": ["BM_CGeoStereographic_Forward_Proj"],
    "BM_CGeoStereographic_Reverse": ["BM_CGeoStereographic_Reverse_Proj"],
    "BM_CGeo7PTrans_Transform": ["BM_CGeo7PTrans_Transform_Proj"],
    "BM_CGeoTransformation_Forward": ["BM_CGeoTransformation_Forward_Proj"],
    "BM_CGeoTransformation_Reverse": ["BM_CGeoTransformation_Reverse_Proj"],
    # The line walk also beside the bare trigonometry of its inversion (the walk's floor).
    "BM_Iterator_Walk_Line": [
        "BM_Iterator_Walk_Line_GridHorzPoint",
        "BM_Iterator_Walk_Line_BareInversion",
    ],
    "BM_Iterator_Walk_Arc": ["BM_Iterator_Walk_Arc_GridHorzPoint"],
    "BM_Iterator_Walk_Spiral": ["BM_Iterator_Walk_Spiral_GridHorzPoint"],
    "BM_Iterator_Intersection": ["BM_Iterator_Intersection_CenterlineDeltas"],
    "BM_Iterator_ColdStart/10": ["BM_Iterator_ColdStart_LineInversion"],
    "BM_Iterator_ColdStart/100": ["BM_Iterator_ColdStart_LineInversion"],
    "BM_Iterator_ColdStart/1000": ["BM_Iterator_ColdStart_LineInversion"],
    "BM_Iterator_ColdStart/10000": ["BM_Iterator_ColdStart_LineInversion"],
    "BM_Iterator_ColdStart_Winding/10": ["BM_Iterator_ColdStart_LineInversion"],
    "BM_Iterator_ColdStart_Winding/100": ["BM_Iterator_ColdStart_LineInversion"],
    "BM_Iterator_ColdStart_Winding/1000": ["BM_Iterator_ColdStart_LineInversion"],
    "BM_Iterator_ColdStart_Winding/10000": ["BM_Iterator_ColdStart_LineInversion"],
    "BM_Iterator_ColdStart_Winding_Kept/10": ["BM_Iterator_ColdStart_LineInversion"],
    "BM_Iterator_ColdStart_Winding_Kept/100": ["BM_Iterator_ColdStart_LineInversion"],
    "BM_Iterator_ColdStart_Winding_Kept/1000": ["BM_Iterator_ColdStart_LineInversion"],
    "BM_Iterator_ColdStart_Winding_Kept/10000": ["BM_Iterator_ColdStart_LineInversion"],
}

# Nanoseconds per time unit of a benchmark's report.
NANOSECONDS = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}
# Suffix of benchmarks that time themselves (UseManualTime): their real time is the figure.
MANUAL = "/manual_time"


def run_program(program, repetitions, extra):
    """Runs a benchmark program in the reporting mode and returns its JSON."""
    with tempfile.NamedTemporaryFile(suffix=".json") as out:
        command = [
            program,
            "--benchmark_enable_random_interleaving=true",
            f"--benchmark_repetitions={repetitions}",
            "--benchmark_report_aggregates_only=true",
            "--benchmark_format=json",
            f"--benchmark_out={out.name}",
        ] + extra
        subprocess.run(command, check=True, stdout=subprocess.DEVNULL)
        with open(out.name) as f:
            return json.load(f)


def medians(run):
    """Median time per benchmark, in nanoseconds."""
    times = {}
    for b in run["benchmarks"]:
        if b.get("run_type") != "aggregate" or b.get("aggregate_name") != "median":
            continue
        name = b.get("run_name", b["name"])
        manual = name.endswith(MANUAL)
        if manual:
            name = name[: -len(MANUAL)]
        scale = NANOSECONDS[b.get("time_unit", "ns")]
        times[name] = (b["real_time"] if manual else b["cpu_time"]) * scale
    return times


def table(times):
    lines = [
        "| Call | ns/call | Baseline | ns/call | Ratio |",
        "|---|---:|---|---:|---:|",
    ]
    for name, t in times.items():
        bases = [b for b in BASELINES.get(name, [name + "_Bare"]) if b in times]
        if not bases:
            continue
        best = min(bases, key=lambda b: times[b])
        for base in bases:
            ratio = f"{t / times[base]:.2f}"
            shown = base[3:]
            if len(bases) > 1 and base == best:
                ratio = f"**{ratio}**"
                shown += " (fastest)"
            lines.append(f"| `{name[3:]}` | {t:.1f} | {shown} | {times[base]:.1f} | {ratio} |")
    return "\n".join(lines)


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("json", nargs="?", help="JSON of an interleaved, repeated run")
    parser.add_argument("--run", metavar="PROGRAM", help="run this benchmark program first")
    parser.add_argument("--repetitions", type=int, default=5)
    # Any other --benchmark_... argument goes to the program run.
    args, extra = parser.parse_known_args()
    if extra and not args.run:
        parser.error(f"unknown arguments: {' '.join(extra)}")
    if args.run:
        run = run_program(args.run, args.repetitions, extra)
    elif args.json:
        with open(args.json) as f:
            run = json.load(f)
    else:
        parser.error("give a JSON file or --run PROGRAM")
    times = medians(run)
    if not times:
        sys.exit("no median aggregates: run with --benchmark_repetitions (and "
                 "--benchmark_enable_random_interleaving=true), or use --run")
    print(table(times))


if __name__ == "__main__":
    main()
