#!/usr/bin/env bash
# Seeds the fuzz corpora kept in the repository (fuzz/corpus/<target>) with files written by the
# project's own writers: registry files as the unit settings leave them, and saved calibrations
# (with a one-point and an antimeridian one) as `qv5 calibrate --save` writes them. Run after a
# build that has the qv5 program; the seeds are committed with the corpus.
#   scripts/seed-fuzz-corpora.sh [build/release]
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build/release}
qv5="$build/tools/qv5/qv5"
[ -x "$qv5" ] || { echo "no qv5 program in $build" >&2; exit 1; }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# Registry files: a fresh key, then one after changes of every kind.
export QV5_REGISTRY="$work/registry.reg"
"$qv5" units >/dev/null
cp "$QV5_REGISTRY" fuzz/corpus/registry_text/written_fresh.reg
for change in "horizontal-distance metres" "bearings gons" "grade rise-run" "area hectares" \
              "coords xyz" "stationing plus-tens" "volume cubic-metres"; do
    # shellcheck disable=SC2086
    "$qv5" units set $change >/dev/null
done
cp "$QV5_REGISTRY" fuzz/corpus/registry_text/written_changed.reg
# The same file as a Windows export would carry it: CR LF line ends.
sed 's/$/\r/' "$QV5_REGISTRY" > fuzz/corpus/registry_text/written_crlf.reg
# ...and as an editor that marks UTF-8 saves it: a byte-order mark first.
{ printf '\xEF\xBB\xBF'; cat "$QV5_REGISTRY"; } > fuzz/corpus/registry_text/written_bom.reg

# Saved calibrations, from the bundled control points and from two small ones.
"$qv5" calibrate data/sample-calibration.csv --save fuzz/corpus/calibration_file/written_sample.json \
    >/dev/null
cat > "$work/one.csv" <<'CSV'
name,latitude,longitude,height,north,east,elevation,use
ONE,52.1,5.2,44.0,1000.0,2000.0,3.0,hv
CSV
"$qv5" calibrate "$work/one.csv" --save fuzz/corpus/calibration_file/written_one_point.json >/dev/null
cat > "$work/fiji.csv" <<'CSV'
name,latitude,longitude,height,north,east,elevation,use
F1,-17.7000,179.9995,12.0,3900000.000,600000.000,12.0,hv
F2,-17.7100,-179.9995,14.5,3898893.000,600106.000,14.5,hv
F3,-17.6900,-179.9990,11.2,3901106.000,600159.000,11.2,hv
CSV
cp "$work/fiji.csv" fuzz/corpus/calibration_points/antimeridian.csv
"$qv5" calibrate "$work/fiji.csv" --save fuzz/corpus/calibration_file/written_antimeridian.json \
    >/dev/null || true
echo "seeded: $(ls fuzz/corpus/registry_text fuzz/corpus/calibration_file | wc -l) files"
