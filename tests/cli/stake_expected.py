#!/usr/bin/env python3
"""Expected results of staking the bundled sample shots, computed without the library.

The sample shots (data/sample-shots.csv) are made by tests/cli/make_sample_shots.cpp from the
design table tests/data/sample-shots-design.csv: each shot is put at a chosen station and offset
and a chosen height above or below the design surface, then taken to WGS84 through the sample
calibration. Staking them must therefore give back that station, offset and cut or fill. This
script adds what the design table does not say - the design elevation, the centreline elevation,
the azimuth and the grade at each shot - from the road description and its template files with
plain formulas:

  * azimuth: the road's start azimuth turned by each element's deflection (a line none, an arc
    l / R, a spiral l^2 / (2 R L) from its straight end);
  * profile: grades as angles between PVIs (atan of rise over run); on a tangent the elevation
    is the grade line's, inside a parabolic or circular curve the curve polynomial in the
    distance from the PVI with the mean grade and the rate (grade out - mean grade) / L, or for
    a circular curve the radius ((L/2) / cos(mean)) / tan(mean), anchored at the curve's end
    elevation on the outgoing grade line;
  * template: the chain of grade/width and delta-H/V elements from the centreline, the surface
    height at the offset, and beyond the shoulder the fill slope falling at its fill angle from
    the shoulder or the cut slope rising at its cut angle beyond the ditch.

Usage: stake_expected.py ROAD.json DESIGN.csv > tests/data/sample-stake-expected.csv
"""
import csv
import json
import math
import os
import sys


def deg(x):
    return x * math.pi / 180.0


def alignment(road):
    """Element list: (kind, start station, length, radius, sign, entry azimuth)."""
    start = road["start"]
    station = start.get("station", 0.0)
    az = deg(start["azimuth"])
    out = []
    for e in road["horizontal"]:
        if "azimuth" in e:
            az = deg(e["azimuth"])
        kind = e["type"]
        length = e["length"]
        radius = e.get("radius", math.inf)
        sign = 1.0 if e.get("direction", "right") == "right" else -1.0
        out.append((kind, station, length, radius, sign, az))
        if kind == "arc":
            az += sign * length / radius
        elif kind in ("entry-spiral", "exit-spiral"):
            az += sign * length / (2.0 * radius)
        station += length
    return out, station


def azimuth_at(elements, station):
    k = 0
    while k < len(elements) - 1 and station > elements[k + 1][1]:
        k += 1
    kind, s0, length, radius, sign, az0 = elements[k]
    l = station - s0
    if kind == "line":
        az = az0
    elif kind == "arc":
        az = az0 + sign * l / radius
    elif kind == "entry-spiral":
        az = az0 + sign * l * l / (2.0 * radius * length)
    else:  # exit spiral: the full turn less what remains to its straight end
        rest = length - l
        az = az0 + sign * (length / (2.0 * radius) - rest * rest / (2.0 * radius * length))
    return az % (2.0 * math.pi)


def profile_records(road):
    pvis = road["profile"]
    recs = []
    for p in pvis:
        length = p.get("length", 0.0)
        recs.append({"type": p["type"], "s": p["station"], "z": p["elevation"], "L": length})
    for i, r in enumerate(recs):
        if i > 0:
            p = recs[i - 1]
            r["gin"] = math.atan((r["z"] - p["z"]) / (r["s"] - p["s"]))
            p["gout"] = r["gin"]
    for r in recs:
        if r["type"] == "point":
            r["cs"] = r["ce"] = r["s"]
            r["cez"] = r["z"]
            continue
        half = r["L"] / 2.0
        r["cs"] = r["s"] - half
        r["ce"] = r["s"] + half
        r["cez"] = r["z"] + half * math.tan(r["gout"])
        mean = (r["gin"] + r["gout"]) / 2.0
        r["mean"] = mean
        if r["type"] == "parabola":
            r["rate"] = (r["gout"] - mean) / r["L"]
        else:
            r["rate"] = (half / math.cos(mean)) / math.tan(mean)
        r["zpvi"] = r["cez"] - r["rate"] * half * half - mean * half
    return recs


def profile_at(recs, s):
    for i, r in enumerate(recs):
        if i == 0 and s < r["cs"]:
            return r["z"] + (s - r["s"]) * math.tan(r["gout"]), r["gout"]
        if r["cs"] <= s < r["ce"]:
            d = s - r["s"]
            return r["rate"] * d * d + r["mean"] * d + r["zpvi"], 2 * r["rate"] * d + r["mean"]
        last = i == len(recs) - 1
        if last:
            return r["z"] + (s - r["s"]) * math.tan(r["gin"]), r["gin"]
        if s <= recs[i + 1]["cs"]:
            return r["cez"] + (s - r["ce"]) * math.tan(r["gout"]), r["gout"]
    raise ValueError("station outside the profile walk")


def chain(template):
    """Surface pieces (start h, start v, end h, slope or None for a step) and the side slope."""
    h = v = 0.0
    pieces = []
    side = None
    for e in template["elements"]:
        t = e["type"]
        if t == "grade-width":
            a = deg(e["angle"])
            nh, nv = h + e["width"], v + e["width"] * math.tan(a)
            pieces.append((h, v, nh, math.tan(a)))
            h, v = nh, nv
        elif t == "delta-hv":
            nh, nv = h + e["dh"], v + e["dv"]
            pieces.append((h, v, nh, (e["dv"] / e["dh"]) if abs(e["dh"]) >= 0.0005 else 0.0))
            h, v = nh, nv
        elif t == "step":
            nh, nv = h + e["dh"], v + e["dv"]
            pieces.append((h, v, nh, None))
            h, v = nh, nv
        elif t == "side-slope":
            side = (deg(e["cut_angle"]), deg(e["fill_angle"]), e["ditch_width"])
    return pieces, (h, v), side


def template_at(templates, applications, side, s):
    prev = None
    for a in applications:
        if a["side"] in (side, "both") and a["station"] <= s:
            if prev is None or a["station"] > prev["station"]:
                prev = a
    if prev is None:
        prev = min((a for a in applications if a["side"] in (side, "both")),
                   key=lambda a: a["station"])
    nxt = [a for a in applications if a["side"] in (side, "both") and a["station"] > s]
    if nxt:
        following = min(nxt, key=lambda a: a["station"])
        same = following["template"].lower() == prev["template"].lower()
        if not same and s - prev["station"] >= 0.001:
            raise ValueError("a shot between two different templates would need a blend")
    return templates[prev["template"].lower()]


def design_height(template, offset, height):
    """Design height (relative to the centreline) under the offset, and the surface kind."""
    pieces, (hs, vs), side = chain(template)
    o = abs(offset)
    for (h0, v0, h1, slope) in pieces:
        if o <= h1:
            if slope is None:
                raise ValueError("shot faces a step")
            return v0 + (o - h0) * slope, "road"
    if side is None:
        raise ValueError("beyond a shoulder without side slope")
    cut, fill, ditch = side
    run = o - hs
    if height > vs:
        if run < ditch:
            return vs, "ditch"
        return vs + math.tan(cut) * (run - ditch), "cut slope"
    return vs - math.tan(fill) * run, "fill slope"


def main():
    road_path, design_path = sys.argv[1], sys.argv[2]
    with open(road_path) as f:
        road = json.load(f)
    folder = os.path.dirname(road_path)
    templates = {}
    for t in road["templates"]:
        if "file" in t:
            with open(os.path.join(folder, t["file"])) as f:
                t = json.load(f)
        templates[t["name"].lower()] = t
    elements, _ = alignment(road)
    recs = profile_records(road)
    out = csv.writer(sys.stdout, lineterminator="\n")
    out.writerow(["name", "station", "offset", "design_elevation", "cut_fill",
                  "centreline_elevation", "azimuth", "grade", "surface"])
    with open(design_path) as f:
        rows = [r for r in csv.reader(l for l in f if not l.startswith("#"))]
    for name, station, offset, cut, kind in rows[1:]:
        s, o, c = float(station), float(offset), float(cut)
        cl, grade = profile_at(recs, s)
        t = template_at(templates, road["applications"], "right" if o > 0 else "left", s)
        # The side a shot's slope lies on follows from its own height: try the kind designed.
        pieces, (hs, vs), side = chain(t)
        if kind == "fill":
            trial = vs - 10.0
        elif kind == "cut":
            trial = vs + 10.0
        else:
            trial = 0.0
        dh, surface = design_height(t, o, trial)
        if surface != ("road" if kind == "road" else kind + " slope") and kind != "ditch":
            raise ValueError(name + ": designed as " + kind + " but lies on " + surface)
        design = cl + dh
        out.writerow([name, f"{s:.4f}", f"{o:.4f}", f"{design:.4f}", f"{c:.4f}", f"{cl:.4f}",
                      f"{azimuth_at(elements, s):.8f}", f"{grade:.8f}", surface])


if __name__ == "__main__":
    main()
