#!/usr/bin/env bash
# Times Halvane's raster operations against the nearest peer tool on one synthetic
# bathymetry grid, in one run, and prints medians, ratios (ours / peer) and our peak
# memory. See bench/README.md.
#
#   bench/run.sh [--size N] [--runs N] [--saga-size N] [--saga-runs N] [--big] [--only LIST]
#
# Environment: HALVANE (our binary), RUGOSITY (our rugosity command, see README),
# BENCH_WORK (grids and outputs; default bench/work), BENCH_CO (peers' GeoTIFF options).
set -uo pipefail
cd "$(dirname "$0")/.."
root=$PWD

size=8000
runs=3
sagaSize=4000
sagaRuns=1
big=0
only=""
cell=10
seed=1
while [ $# -gt 0 ]; do
    case $1 in
    --size) size=$2; shift 2 ;;
    --runs) runs=$2; shift 2 ;;
    --saga-size) sagaSize=$2; shift 2 ;;
    --saga-runs) sagaRuns=$2; shift 2 ;;
    --big) big=1; shift ;;
    --only) only=",$2,"; shift 2 ;;
    -h | --help) sed -n '2,9p' "$0" | sed 's/^# \{0,1\}//'; exit 0 ;;
    *) echo "run.sh: unknown argument '$1' (try --help)" >&2; exit 2 ;;
    esac
done

HALVANE=${HALVANE:-build-release/src/apps/halvane}
RUGOSITY=${RUGOSITY:-auto}
work=${BENCH_WORK:-$root/bench/work}
co=${BENCH_CO:-TILED=YES COMPRESS=ZSTD ZSTD_LEVEL=1}
mkdir -p "$work"
work=$(cd "$work" && pwd)
log=$work/run.log
: >"$log"
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT

die() { echo "run.sh: $*" >&2; exit 1; }
note() { echo "== $*" >&2; }

# ---- set-up: peers, build, grids --------------------------------------------------

install_missing() {
    local need=()
    command -v gdalinfo >/dev/null || need+=(gdal-bin)
    command -v grass >/dev/null || need+=(grass-core)
    command -v saga_cmd >/dev/null || need+=(saga)
    [ -x /usr/bin/time ] || need+=(time)
    # The scale-out rows: halvane is built with MPI when its files are there.
    command -v mpirun >/dev/null || need+=(openmpi-bin libopenmpi-dev)
    [ ${#need[@]} -eq 0 ] && return
    local sudo=""
    [ "$(id -u)" -ne 0 ] && sudo=sudo
    note "installing ${need[*]}"
    $sudo apt-get update -qq >>"$log" 2>&1
    # One at a time, so one package that cannot be had does not keep out the others.
    for p in "${need[@]}"; do
        $sudo env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq "$p" >>"$log" 2>&1 ||
            echo "run.sh: could not install $p; its pairs will show n/a" >&2
    done
}

install_missing
[ -x /usr/bin/time ] || die "/usr/bin/time is needed (Debian package 'time')"
scripts/install-deps.sh || die "installing the build dependencies failed"
note "building (Release)"
cmake -S . -B build-release -G Ninja -DCMAKE_BUILD_TYPE=Release \
    -DHALVANE_BUILD_TESTS=OFF >>"$log" 2>&1 || die "cmake configure failed, see $log"
cmake --build build-release >>"$log" 2>&1 || die "build failed, see $log"
synth=build-release/bench/synth/halvane-synth

ours=1
if [ ! -x "$HALVANE" ]; then
    ours=0
    echo "run.sh: no halvane binary at $HALVANE (set HALVANE=...); our side shows n/a" >&2
fi
HALVANE=$(realpath "$HALVANE" 2>/dev/null || echo "$HALVANE")
has() { command -v "$1" >/dev/null; }
wanted() { [ -z "$only" ] || [[ $only == *",$1,"* ]]; }

grid_of() { # N -> path of the cached N x N grid, made on first use
    local n=$1 path=$work/grid-$1.tif
    if [ ! -f "$path" ]; then
        note "generating $n x $n grid"
        "$synth" --cols "$n" --rows "$n" --cell "$cell" --seed "$seed" --out "$path.part" \
            2>>"$log" && mv "$path.part" "$path" || die "generating the $n x $n grid failed"
    fi
    echo "$path"
}

grass_run() { # OP ARGS...: one chain of bench/grass.sh in the throwaway location
    grass "$grass_loc/PERMANENT" --exec bash "$root/bench/grass.sh" "$@"
}
co_flags() { local o; for o in $co; do printf -- '-co %s ' "$o"; done; }
grass_co=${co// /,}

# ---- timing ---------------------------------------------------------------------

# Each side of a pair is a shell function NAME_ours / NAME_peer taking the output
# path; NAME_prep (optional) runs before every timed run and is not timed.
export -f grass_run co_flags
export HALVANE root tmp co grass_co

measure() { # FUNCTION OUT -> "seconds kilobytes", status of the function
    local t=$tmp/time
    /usr/bin/time -f '%e %M' -o "$t" bash -c '"$@"' _ "$@" >>"$log" 2>&1
    local rc=$?
    tail -n 1 "$t"
    return $rc
}

median() { sort -g | awk '{v[NR] = $1} END {
    if (NR == 0) print "n/a"; else if (NR % 2) print v[(NR + 1) / 2];
    else printf "%.2f\n", (v[NR / 2] + v[NR / 2 + 1]) / 2 }'; }

failed=0
lastOurs=n/a
results=()
side() { # NAME SIDE RUNS -> sets secs (median) and peakMb; "n/a" or "FAIL"
    local name=$1 which=$2 n=$3 i times=() kb=0 line
    secs=n/a
    peakMb=n/a
    for ((i = 1; i <= n; i++)); do
        local out=$tmp/out/$name-$which
        rm -rf "$out"
        mkdir -p "$out"
        if declare -F "${name}_prep" >/dev/null; then "${name}_prep" "$out" >>"$log" 2>&1; fi
        echo "-- $name $which run $i" >>"$log"
        if ! line=$(measure "${name}_$which" "$out"); then
            echo "run.sh: FAILED: $name ($which side), see $log" >&2
            failed=1
            secs=FAIL
            return
        fi
        times+=("${line% *}")
        ((${line#* } > kb)) && kb=${line#* }
    done
    secs=$(printf '%s\n' "${times[@]}" | median)
    peakMb=$((kb / 1024))
    rm -rf "$tmp/out/$name-$which"
}

ratio() { awk -v a="$1" -v b="$2" 'BEGIN {
    if (a + 0 > 0 && b + 0 > 0) printf "%.3f", a / b; else print "n/a" }'; }

row() { # LABEL OURS PEER RATIO TARGET MB
    local verdict=""
    if [[ $4 != n/a && $5 != - ]]; then
        verdict=$(awk -v r="$4" -v t="$5" 'BEGIN { print (r <= t) ? "ok" : "MISS" }')
    fi
    results+=("$(printf '%-46s %9s %9s %7s %7s %8s  %s' "$1" "$2" "$3" "$4" "$5" "$6" "$verdict")")
    echo "${results[-1]}" >&2
}

pair() { # NAME LABEL TARGET PEERTOOL [RUNS]
    local name=$1 label=$2 target=$3 tool=$4 n=${5:-$runs} o p mb
    wanted "$name" || return 0
    note "$label"
    o=n/a mb=n/a p=n/a
    if [ $ours -eq 1 ]; then side "$name" ours "$n"; o=$secs mb=$peakMb; fi
    lastOurs=$o
    if has "$tool"; then side "$name" peer "$n"; p=$secs; else
        echo "run.sh: $tool missing: peer of '$label' is n/a" >&2
    fi
    row "$label" "$o" "$p" "$(ratio "$o" "$p")" "$target" "$mb"
}

# ---- the pairs ------------------------------------------------------------------

grid=$(grid_of "$size")
read -r xmin ymin < <(gdalinfo "$grid" | awk -F'[(),]' '
    /^Origin/ {x = $2; y = $3} /^Size is/ {split($0, s, /[ ,]+/); rows = s[4]}
    /^Pixel Size/ {py = $3} END {printf "%.15g %.15g\n", x, y + rows * py}')
export grid size cell xmin ymin
if has grass; then
    # Made once, outside every timing: the chains only link their inputs into it.
    export grass_loc=$tmp/grassdb/loc
    mkdir -p "$tmp/grassdb"
    grass -c "$grid" "$grass_loc" -e >>"$log" 2>&1 || die "making a GRASS location failed, see $log"
fi

ring_weights() { # RADIUS FILE: 1 where radius 1 < d <= R cells, as Focalmean's annulus
    awk -v r="$1" 'BEGIN { for (y = -r; y <= r; y++) { line = "";
        for (x = -r; x <= r; x++) line = line ((x*x + y*y > 1 && x*x + y*y <= r*r) ? "1" : "0") \
            (x < r ? " " : ""); print line } }' >"$2"
}
ring_weights 5 "$work/ring5.txt"
export weights5=$work/ring5.txt

calc() { # OUTDIR NAME EXPRESSION BINDINGS...
    local dir=$1 name=$2 expr=$3
    shift 3
    local binds=()
    for b in "$@"; do binds+=(--bind "$b"); done
    "$HALVANE" calc --workdir "$dir" --name "$name" "${binds[@]}" "$expr"
}
export -f calc

bpi5_ours() { calc "$1" bpi5 'int(([inRaster] - Focalmean([inRaster], annulus, 1, 5)) + .5)' \
    "inRaster=$grid"; }
bpi5_peer() { grass_run bpi "$grid" "$weights5" 11 "$1/bpi5.tif" "$grass_co"; }
export -f bpi5_ours bpi5_peer
five=n/a
pair bpi5 "position index, ring 1..5 (GRASS)" 0.1 grass && five=$lastOurs

bpi25_ours() { calc "$1" bpi25 'int(([inRaster] - Focalmean([inRaster], annulus, 1, 25)) + .5)' \
    "inRaster=$grid"; }
export -f bpi25_ours
if wanted bpi25 && [ $ours -eq 1 ]; then
    note "ours: ring 1..25 against ring 1..5"
    side bpi25 ours "$runs"
    row "ours: ring 1..25 / ring 1..5" "$secs" "$five" "$(ratio "$secs" "$five")" 6 "$peakMb"
fi

if [ "$sagaSize" -gt 0 ]; then
    sagaGrid=$(grid_of "$sagaSize")
    export sagaGrid
    sagatpi_ours() { calc "$1" bpi25 \
        'int(([inRaster] - Focalmean([inRaster], annulus, 1, 25)) + .5)' "inRaster=$sagaGrid"; }
    sagatpi_peer() { saga_cmd ta_morphometry 18 -DEM="$sagaGrid" -TPI="$1/tpi.tif" \
        -RADIUS_MIN="$cell" -RADIUS_MAX="$((25 * cell))"; }
    export -f sagatpi_ours sagatpi_peer
    pair sagatpi "position index, ring 1..25, ${sagaSize}^2 (SAGA)" 0.05 saga_cmd "$sagaRuns"
fi

slope_ours() { "$HALVANE" slope --workdir "$1" --name slope "$grid"; }
slope_peer() { gdaldem slope -q -compute_edges $(co_flags) "$grid" "$1/slope.tif"; }
export -f slope_ours slope_peer
pair slope "slope, degrees, with edges (gdaldem)" 1.0 gdaldem

resample_ours() { calc "$1" res "Resample([inRaster], $((2 * cell)), Cubic)" "inRaster=$grid"; }
resample_peer() { gdalwarp -q -r cubic -tr $((2 * cell)) $((2 * cell)) -multi \
    -wo NUM_THREADS=ALL_CPUS $(co_flags) "$grid" "$1/res.tif"; }
export -f resample_ours resample_peer
pair resample "cubic resampling to 2x cell (gdalwarp)" 1.0 gdalwarp

# The classification's inputs are made once per grid size, by the peers (GRASS and
# gdaldem) or, without them, by us: only their values matter here, not who made them.
classes_inputs() {
    local dir=$work/inputs-$size
    [ -f "$dir/done" ] && { echo "$dir"; return; }
    rm -rf "$dir"
    mkdir -p "$dir"
    note "making the classification inputs"
    if has grass && has gdaldem; then
        grass_run bpi "$grid" "$weights5" 11 "$dir/sbpi.tif" "$grass_co" &&
            grass_run sparsebpi "$grid" 25 "$dir/lbpi.tif" "$grass_co" &&
            gdaldem slope -q -compute_edges "$grid" "$dir/slope.tif"
    elif [ $ours -eq 1 ]; then
        calc "$dir" sbpi 'int(([inRaster] - Focalmean([inRaster], annulus, 1, 5)) + .5)' \
            "inRaster=$grid" &&
            calc "$dir" lbpi 'int(([inRaster] - Focalmean([inRaster], annulus, 1, 25)) + .5)' \
                "inRaster=$grid" &&
            "$HALVANE" slope --workdir "$dir" --name slope "$grid"
    else
        false
    fi >>"$log" 2>&1 || { echo "run.sh: FAILED: classification inputs, see $log" >&2; return 1; }
    touch "$dir/done"
    echo "$dir"
}

# Six classes, nested two to four deep, over fine and broad position, slope and depth.
class_terms=(
    "B <= -1|L <= -10|1" "B <= -1|L > -10|2" "B >= 1|S <= 5|3" "B >= 1|S > 5|4"
    "B > -1|B < 1|S <= 5|Z >= -200|5" "B > -1|B < 1|S > 5|6")
class_expression() { # ours|grass
    local dialect=$1 t parts out=() e
    for t in "${class_terms[@]}"; do
        IFS='|' read -ra parts <<<"$t"
        local n=${#parts[@]} value=${parts[-1]}
        e=$value
        for ((k = n - 2; k >= 0; k--)); do
            if [ "$dialect" = ours ]; then e="con(${parts[k]}, $e, 0)"; else e="if(${parts[k]}, $e, 0)"; fi
        done
        out+=("$e")
    done
    if [ "$dialect" = ours ]; then
        e=$(IFS=,; echo "sum(${out[*]})")
        e=${e//,con/, con}
        e=${e//B /[inSBPI] }
        e=${e//L /[inLBPI] }
        e=${e//S /[inSlope] }
        e=${e//Z /[inDepth] }
    else
        e=$(printf ' + %s' "${out[@]}")
        e=${e# + }
        e=${e//B /b }
        e=${e//L /l }
        e=${e//S /s }
        e=${e//Z /z }
    fi
    echo "$e"
}

if wanted classes; then
    if inputs=$(classes_inputs); then
        export inputs classesOurs classesGrass
        classesOurs=$(class_expression ours)
        classesGrass=$(class_expression grass)
        classes_ours() { calc "$1" classes "$classesOurs" "inSBPI=$inputs/sbpi.tif" \
            "inLBPI=$inputs/lbpi.tif" "inSlope=$inputs/slope.tif" "inDepth=$grid"; }
        classes_peer() { grass_run classify "$inputs/sbpi.tif" "$inputs/lbpi.tif" \
            "$inputs/slope.tif" "$grid" "$1/classes.tif" "$grass_co" "$classesGrass"; }
        export -f classes_ours classes_peer
        pair classes "four-input nested con, six classes (GRASS)" 0.5 grass
    else
        row "four-input nested con, six classes (GRASS)" FAIL FAIL n/a 0.5 n/a
    fi
fi

# Statistics are read from a fresh copy with no .aux.xml, so neither side finds them stored.
stats_prep() { cp "$grid" "$1/grid.tif"; }
stats_ours() { "$HALVANE" info --json "$1/grid.tif"; }
stats_peer() { gdalinfo -stats "$1/grid.tif" >/dev/null; }
export -f stats_ours stats_peer
pair stats "mean and standard deviation (gdalinfo -stats)" 1.0 gdalinfo

# Our rugosity: RUGOSITY=auto takes `halvane rugosity` when the binary has it, else one
# fused `halvane calc` of the 8-triangle formula; RUGOSITY=calc forces the latter; any
# other value is a command that gets `--workdir DIR --name NAME INPUT` appended.
rugosity_expression() {
    local s=$cell d
    d=$(awk -v s="$s" 'BEGIN {printf "%.15g", sqrt(2 * s * s)}')
    local -a z=("[bathy]")
    # Shift coordinates of neighbours 1 to 8 (1 2 3 / 4 c 5 / 6 7 8), in cells.
    local dx dy
    for offset in "1 -1" "0 -1" "-1 -1" "1 0" "-1 0" "1 1" "0 1" "-1 1"; do
        read -r dx dy <<<"$offset"
        z+=("$(awk -v x="$xmin" -v y="$ymin" -v dx="$dx" -v dy="$dy" -v s="$s" \
            'BEGIN {printf "Shift([bathy], %.15g, %.15g)", x + dx * s, y + dy * s}')")
    done
    edge() { echo "(Sqrt(Sqr(${z[$1]} - ${z[$2]}) + Sqr($3)) / 2)"; }
    area() { echo "(($1 * (Sqrt((Sqr($2)) - (Sqr(((Sqr($1)) + (Sqr($2)) - (Sqr($3))) / ($1 * 2)))))) / 2)"; }
    local e=("" "$(edge 0 1 "$d")" "$(edge 0 2 "$s")" "$(edge 0 3 "$d")" "$(edge 0 4 "$s")"
        "$(edge 0 5 "$s")" "$(edge 0 6 "$d")" "$(edge 0 7 "$s")" "$(edge 0 8 "$d")"
        "$(edge 1 2 "$s")" "$(edge 2 3 "$s")" "$(edge 1 4 "$s")" "$(edge 3 5 "$s")"
        "$(edge 6 4 "$s")" "$(edge 5 8 "$s")" "$(edge 6 7 "$s")" "$(edge 7 8 "$s")")
    echo "($(area "${e[1]}" "${e[2]}" "${e[9]}") + $(area "${e[2]}" "${e[3]}" "${e[10]}") +" \
        "$(area "${e[1]}" "${e[4]}" "${e[11]}") + $(area "${e[3]}" "${e[5]}" "${e[12]}") +" \
        "$(area "${e[4]}" "${e[6]}" "${e[13]}") + $(area "${e[5]}" "${e[8]}" "${e[14]}") +" \
        "$(area "${e[6]}" "${e[7]}" "${e[15]}") + $(area "${e[7]}" "${e[8]}" "${e[16]}")) / Sqr($s)"
}
if [ "$RUGOSITY" = auto ]; then
    RUGOSITY=calc
    [ $ours -eq 1 ] && "$HALVANE" rugosity --help >/dev/null 2>&1 && RUGOSITY="$HALVANE rugosity"
fi
rugosityExpression=$(rugosity_expression)
export RUGOSITY rugosityExpression
rugosity_ours() {
    if [ "$RUGOSITY" = calc ]; then
        calc "$1" rugosity "$rugosityExpression" "bathy=$grid"
    else
        $RUGOSITY --workdir "$1" --name rugosity "$grid"
    fi
}
rugosity_peer() { grass_run rugosity "$grid" "$cell" "$1/rugosity.tif" "$grass_co"; }
export -f rugosity_ours rugosity_peer
pair rugosity "rugosity, 34 expressions saved once (GRASS)" 0.3 grass

# The whole chain as a user runs it (the classification, then the rugosity of the same
# grid) against a DEFLATE tiled copy of its input: what the chain must at least read
# and write. Each of our runs logs its stages (HALVANE_STAGE_LOG: one line per grid
# written, statistics pass or grid removed) for the breakdown printed after the table.
chainRuns=$work/chain-runs
chain_ours() {
    HALVANE_STAGE_LOG=$(mktemp "$chainRuns/run-XXXXXX") || return 1
    export HALVANE_STAGE_LOG
    "$HALVANE" classify --broad 1,5 --fine 1,3 --workdir "$1" "$grid" >/dev/null &&
        "$HALVANE" rugosity --workdir "$1" --name rugosity "$grid"
}
chain_peer() { gdal_translate -q -co COMPRESS=DEFLATE -co TILED=YES "$grid" "$1/copy.tif"; }
export -f chain_ours chain_peer
export chainRuns
chainSecs=n/a
if wanted chain; then
    rm -rf "$chainRuns"
    mkdir -p "$chainRuns"
    pair chain "chain: classify + rugosity / DEFLATE copy" 3.0 gdal_translate && chainSecs=$lastOurs
fi

# Scale-out (docs/scale-out.md): the same chain under mpirun with 1, 2 and 4
# processes against the chain run alone. One machine's processes share its cores
# (4 oversubscribe two), and each process's threads already use them all, so the
# rows tell what the split costs (bands, exchanges, the first process assembling
# every grid), not a speed-up; the per-cell cost and I/O rate they give are
# what the estimate for a cluster in docs/scale-out.md starts from.
scaleout_chain() { # PROCESSES OUTDIR
    # Open MPI refuses root unless told; the bench may run in a container as root.
    OMPI_ALLOW_RUN_AS_ROOT=1 OMPI_ALLOW_RUN_AS_ROOT_CONFIRM=1 \
        mpirun --oversubscribe -np "$1" "$HALVANE" classify --broad 1,5 --fine 1,3 \
        --workdir "$2" "$grid" >/dev/null &&
        OMPI_ALLOW_RUN_AS_ROOT=1 OMPI_ALLOW_RUN_AS_ROOT_CONFIRM=1 \
            mpirun --oversubscribe -np "$1" "$HALVANE" rugosity --workdir "$2" --name rugosity \
            "$grid" >/dev/null
}
scaleout1_ours() { scaleout_chain 1 "$1"; }
scaleout2_ours() { scaleout_chain 2 "$1"; }
scaleout4_ours() { scaleout_chain 4 "$1"; }
scaleout_alone() {
    "$HALVANE" classify --broad 1,5 --fine 1,3 --workdir "$1" "$grid" >/dev/null &&
        "$HALVANE" rugosity --workdir "$1" --name rugosity "$grid" >/dev/null
}
scaleout1_peer() { scaleout_alone "$1"; }
scaleout2_peer() { scaleout_alone "$1"; }
scaleout4_peer() { scaleout_alone "$1"; }
export -f scaleout_chain scaleout_alone scaleout1_ours scaleout2_ours scaleout4_ours \
    scaleout1_peer scaleout2_peer scaleout4_peer
if wanted scaleout && has mpirun; then
    only="${only:+$only,scaleout1,scaleout2,scaleout4,}"
    pair scaleout1 "scale-out: chain, mpirun -np 1 / alone" 1.1 mpirun
    pair scaleout2 "scale-out: chain, mpirun -np 2 / alone" - mpirun
    pair scaleout4 "scale-out: chain, mpirun -np 4 / alone" - mpirun
elif wanted scaleout; then
    echo "run.sh: mpirun missing: the scale-out rows are left out" >&2
fi

# Medians over the runs of each stage, in the order the chain runs them, with what
# the stages leave unexplained (start, opening grids, checks) as the last line.
chain_breakdown() { # CSV
    cat "$chainRuns"/run-* 2>/dev/null | awk -F, -v total="$chainSecs" -v csv="$1" '
    function median(list,   v, n, i, j, t) {
        n = split(list, v, " ")
        for (i = 2; i <= n; i++) for (j = i; j > 1 && v[j - 1] + 0 > v[j] + 0; j--) {
            t = v[j]; v[j] = v[j - 1]; v[j - 1] = t }
        return n % 2 ? v[(n + 1) / 2] : (v[n / 2] + v[n / 2 + 1]) / 2
    }
    # A pass that stores numbered grids names them as a range: ZONES1..12.
    function label(x,   part, n, i, out, base, num, first, last, runBase) {
        n = split(x, part, "+")
        out = ""; runBase = ""
        for (i = 1; i <= n + 1; i++) {
            base = ""; num = -1
            if (i <= n && match(part[i], /[0-9]+$/)) {
                base = substr(part[i], 1, RSTART - 1); num = substr(part[i], RSTART) + 0
            }
            if (runBase != "" && base == runBase && num == last + 1) { last = num; continue }
            if (runBase != "") {
                out = out (out == "" ? "" : "+") runBase first (last > first ? ".." last : "")
                runBase = ""
            }
            if (i > n) break
            if (num >= 0) { runBase = base; first = last = num }
            else out = out (out == "" ? "" : "+") part[i]
        }
        return out
    }
    NF == 4 {
        if (!($1 in seen)) { seen[$1] = 1; order[++stages] = $1 }
        s[$1] = s[$1] " " $2; r[$1] = r[$1] " " $3; w[$1] = w[$1] " " $4
    }
    END {
        if (stages == 0) exit
        print "stage,seconds,read_mb,written_mb" > csv
        printf "%-28s %9s %10s %10s\n", "stage", "seconds", "read MB", "written MB"
        for (k = 1; k <= stages; k++) {
            x = order[k]; sec = median(s[x]); rd = median(r[x]) / 1e6; wr = median(w[x]) / 1e6
            sum += sec; rsum += rd; wsum += wr
            printf "%s,%.3f,%.1f,%.1f\n", x, sec, rd, wr > csv
            # Removals take no time worth a line each: one line says them all.
            if (x ~ /^delete /) { deletes++; deleteSecs += sec; continue }
            printf "%-28s %9.2f %10.1f %10.1f\n", label(x), sec, rd, wr
        }
        if (deletes) printf "%-28s %9.2f\n", "delete " deletes (deletes == 1 ? " grid" : " grids"), deleteSecs
        printf "%-28s %9.2f %10.1f %10.1f\n", "all stages", sum, rsum, wsum
        if (total + 0 > 0) {
            printf "%-28s %9.2f\n", "other (start, opening, checks)", total - sum
            printf "other,%.3f,,\n", total - sum > csv
        }
    }'
}

copy_ours() { calc "$1" copy '[inRaster]' "inRaster=$grid"; }
copy_peer() { gdal_translate -q $(co_flags) "$grid" "$1/copy.tif"; }
export -f copy_ours copy_peer
pair copy "plain read and write (gdal_translate)" "-" gdal_translate

# The cost of cloud-optimized files: the same grid written as a COG with
# overviews (--layout cog) against the plain tiled file of one pass (the
# default), for a floating grid (the copy) and an integer one (the classes).
overviews_ours() { "$HALVANE" calc --workdir "$1" --name copy --layout cog \
    --bind "inRaster=$grid" '[inRaster]'; }
overviews_peer() { "$HALVANE" calc --workdir "$1" --name copy --bind "inRaster=$grid" '[inRaster]'; }
export -f overviews_ours overviews_peer
pair overviews "ours: COG with overviews / plain, floating" 1.3 "$HALVANE"
if wanted overviews && [ -n "${inputs:-}" ]; then
    zoverviews_ours() { "$HALVANE" calc --workdir "$1" --name classes --layout cog \
        --bind "inSBPI=$inputs/sbpi.tif" --bind "inLBPI=$inputs/lbpi.tif" \
        --bind "inSlope=$inputs/slope.tif" --bind "inDepth=$grid" "$classesOurs"; }
    zoverviews_peer() { calc "$1" classes "$classesOurs" "inSBPI=$inputs/sbpi.tif" \
        "inLBPI=$inputs/lbpi.tif" "inSlope=$inputs/slope.tif" "inDepth=$grid"; }
    export -f zoverviews_ours zoverviews_peer
    only="${only:+$only,zoverviews,}"
    pair zoverviews "ours: COG with overviews / plain, six classes" 1.3 "$HALVANE"
fi

if [ $big -eq 1 ] && [ $ours -eq 1 ]; then
    bigGrid=$(grid_of 20000)
    export bigGrid
    big_ours() { calc "$1" bpi5 'int(([inRaster] - Focalmean([inRaster], annulus, 1, 5)) + .5)' \
        "inRaster=$bigGrid"; }
    export -f big_ours
    note "memory: position index of a 20000 x 20000 grid"
    side big ours 1
    results+=("$(printf '%-46s %9s %9s %7s %7s %8s  %s' "ours: ring 1..5 on 20000^2, peak MB" \
        "$secs" "" "" "< 1024" "$peakMb" "$([[ $peakMb != n/a ]] && ((peakMb < 1024)) && echo ok || echo MISS)")")
fi

echo
printf '%s x %s cells of %s m, %s run(s) each, median seconds; ratio = ours / peer\n' \
    "$size" "$size" "$cell" "$runs"
printf '%-46s %9s %9s %7s %7s %8s\n' operation "ours s" "peer s" ratio target "ours MB"
printf '%s\n' "${results[@]}"
if wanted chain && [ -n "$(ls "$chainRuns" 2>/dev/null)" ]; then
    echo
    echo "chain stages, median over the runs (bytes through read() and write(), cache included):"
    chain_breakdown "$work/chain-stages.csv"
    echo "csv: $work/chain-stages.csv"
fi
echo "log: $log"
exit $failed
