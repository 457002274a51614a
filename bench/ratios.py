#!/usr/bin/env python3
"""Reads a Google Benchmark JSON run and prints each BM_<name> beside BM_<name>_Bare (or the
baseline named in BASELINES) as a Markdown table with the ratio library / baseline."""
import json
import sys

# Benchmarks whose baseline is not simply <name>_Bare: name -> baseline name.
BASELINES = {
    # The spiral's inversion is an iteration of point evaluations: compare it with one.
    "BM_CGeoEntrySpiral_GridDeltas_GoodGuess_Right": "BM_CGeoEntrySpiral_GridHorzPoint",
    "BM_CGeoEntrySpiral_GridDeltas_GoodGuess_Left": "BM_CGeoEntrySpiral_GridHorzPoint",
    "BM_CGeoEntrySpiral_GridDeltas_GoodGuess_Centreline": "BM_CGeoEntrySpiral_GridHorzPoint",
    "BM_CGeoEntrySpiral_GridDeltas_ExactGuess_Right": "BM_CGeoEntrySpiral_GridHorzPoint",
    "BM_CGeoEntrySpiral_GridDeltas_PoorGuess_Right": "BM_CGeoEntrySpiral_GridHorzPoint",
    "BM_CGeoEntrySpiral_GridDeltas_PoorGuess_Left": "BM_CGeoEntrySpiral_GridHorzPoint",
    # The road iterator: a walking surveyor beside one point of the element under the point,
    # the surface under it beside its positioning alone, a cold start beside one inversion.
    "BM_Iterator_Walk_Line": "BM_Iterator_Walk_Line_GridHorzPoint",
    "BM_Iterator_Walk_Arc": "BM_Iterator_Walk_Arc_GridHorzPoint",
    "BM_Iterator_Walk_Spiral": "BM_Iterator_Walk_Spiral_GridHorzPoint",
    "BM_Iterator_Intersection": "BM_Iterator_Intersection_CenterlineDeltas",
    "BM_Iterator_ColdStart/10": "BM_Iterator_ColdStart_LineInversion",
    "BM_Iterator_ColdStart/100": "BM_Iterator_ColdStart_LineInversion",
    "BM_Iterator_ColdStart/1000": "BM_Iterator_ColdStart_LineInversion",
    "BM_Iterator_ColdStart/10000": "BM_Iterator_ColdStart_LineInversion",
    "BM_CQuantityUnits_Destroy": "BM_CQuantityUnits_Construct_Bare",
    "BM_CQuantityUnits_DestroyChanged": "BM_CQuantityUnits_Construct_Bare",
    # The geodesy (bench_geodesy) is timed beside PROJ doing the same work.
    "BM_llh2xyz": "BM_llh2xyz_Proj",
    "BM_xyz2llh": "BM_xyz2llh_Proj",
    "BM_CGeoStereographic_Forward": "BM_CGeoStereographic_Forward_Proj",
    "BM_CGeoStereographic_Reverse": "BM_CGeoStereographic_Reverse_Proj",
    "BM_CGeo7PTrans_Transform": "BM_CGeo7PTrans_Transform_Proj",
    "BM_CGeoTransformation_Forward": "BM_CGeoTransformation_Forward_Proj",
    "BM_CGeoTransformation_Reverse": "BM_CGeoTransformation_Reverse_Proj",
}

# Nanoseconds per time unit of a benchmark's report.
NANOSECONDS = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}
# Suffix of benchmarks that time themselves (UseManualTime): their real time is the figure.
MANUAL = "/manual_time"


def main(path):
    with open(path) as f:
        run = json.load(f)
    times = {}
    for b in run["benchmarks"]:
        if b.get("run_type", "iteration") == "aggregate" and b.get("aggregate_name") != "median":
            continue
        name = b.get("run_name", b["name"])
        manual = name.endswith(MANUAL)
        if manual:
            name = name[: -len(MANUAL)]
        scale = NANOSECONDS[b.get("time_unit", "ns")]
        times[name] = (b["real_time"] if manual else b["cpu_time"]) * scale
    print("| Call | ns/call | Baseline | ns/call | Ratio |")
    print("|---|---:|---|---:|---:|")
    for name, t in times.items():
        if name.endswith("_Bare"):
            continue
        base = BASELINES.get(name, name + "_Bare")
        if base not in times:
            continue
        print(f"| `{name[3:]}` | {t:.1f} | {base[3:]} | {times[base]:.1f} | {t / times[base]:.2f} |")


if __name__ == "__main__":
    main(sys.argv[1])
