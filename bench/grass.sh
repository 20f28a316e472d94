#!/usr/bin/env bash
# One peer chain inside a GRASS session, from linking the GeoTIFF input to writing the
# GeoTIFF output:   grass LOCATION/PERMANENT --exec bash bench/grass.sh OP ARGS...
#   bpi       GRID WEIGHTS SIZE OUT CO   ring mean by weight file, difference, rounded
#   sparsebpi GRID RADIUS OUT CO         a cheap broad-scale input for the classification
#   classify  SBPI LBPI SLOPE DEPTH OUT CO EXPRESSION   (EXPRESSION over b, l, s, z)
#   rugosity  GRID CELL OUT CO           8-triangle surface area over planar area
# CO: GeoTIFF creation options, comma-separated.
set -euo pipefail

op=$1
shift

link() { r.external input="$1" output="$2" -o --overwrite --quiet; }
save() { r.out.gdal -c input="$1" output="$2" format=GTiff type="$3" createopt="$4" \
    --overwrite --quiet; }

case $op in
bpi)
    link "$1" dem
    g.region raster=dem
    r.neighbors input=dem output=ring method=average size="$3" weighting_function=file \
        weight="$2" nprocs="$(nproc)" --overwrite --quiet
    r.mapcalc "bpi = int((dem - ring) + 0.5)" --overwrite --quiet
    save bpi "$4" Int32 "$5"
    ;;
sparsebpi)
    link "$1" dem
    g.region raster=dem
    r=$2
    q=$((r * 7 / 10))
    r.mapcalc "bpi = int(dem - (dem[-$r,0] + dem[$r,0] + dem[0,-$r] + dem[0,$r] + \
dem[-$q,-$q] + dem[-$q,$q] + dem[$q,-$q] + dem[$q,$q]) / 8.0 + 0.5)" --overwrite --quiet
    save bpi "$3" Int32 "$4"
    ;;
classify)
    link "$1" b
    link "$2" l
    link "$3" s
    link "$4" z
    g.region raster=z
    r.mapcalc "classes = $7" --overwrite --quiet
    save classes "$5" Int32 "$6"
    ;;
rugosity)
    link "$1" z
    g.region raster=z
    s=$2
    # Neighbours numbered 1 2 3 / 4 c 5 / 6 7 8, rows growing southwards.
    n=(z "z[-1,-1]" "z[-1,0]" "z[-1,1]" "z[0,-1]" "z[0,1]" "z[1,-1]" "z[1,0]" "z[1,1]")
    edge() { echo "sqrt((${n[$1]} - ${n[$2]})^2 + $3) / 2"; }
    d2=$((2 * s * s))
    s2=$((s * s))
    area() { echo "$1 * sqrt($2^2 - (($1^2 + $2^2 - $3^2) / (2 * $1))^2) / 2"; }
    r.mapcalc "rug = float(eval(\
e1 = $(edge 0 1 $d2), e2 = $(edge 0 2 $s2), e3 = $(edge 0 3 $d2), e4 = $(edge 0 4 $s2), \
e5 = $(edge 0 5 $s2), e6 = $(edge 0 6 $d2), e7 = $(edge 0 7 $s2), e8 = $(edge 0 8 $d2), \
e9 = $(edge 1 2 $s2), e10 = $(edge 2 3 $s2), e11 = $(edge 1 4 $s2), e12 = $(edge 3 5 $s2), \
e13 = $(edge 6 4 $s2), e14 = $(edge 5 8 $s2), e15 = $(edge 6 7 $s2), e16 = $(edge 7 8 $s2), \
($(area e1 e2 e9) + $(area e2 e3 e10) + $(area e1 e4 e11) + $(area e3 e5 e12) + \
$(area e4 e6 e13) + $(area e5 e8 e14) + $(area e6 e7 e15) + $(area e7 e8 e16)) / $s2.0))" \
        --overwrite --quiet
    save rug "$3" Float32 "$4"
    ;;
*)
    echo "grass.sh: unknown operation '$op'" >&2
    exit 2
    ;;
esac
