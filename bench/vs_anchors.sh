#!/usr/bin/env bash
# Vorra against the anchor engines (Box2D v3 for rigid scenes, LiquidFun for water), side by side.
# The machines are shared and absolute times drift by a third from hour to hour, so only ratios
# taken in one run mean anything: every round runs Vorra on 1 and 2 threads, then the anchors,
# and the table gives medians over the rounds.
#
#   bench/vs_anchors.sh [--rounds N] [--vorra PATH] [--out FILE] [SCENE]...
#
# Anchors are found in ANCHORS_DIR (default: shared/anchors beside the repository) and built
# once into ANCHORS_BUILD (default /tmp/vorra-anchors) by their own run.sh.
set -euo pipefail

root=$(cd "$(dirname "$0")/.." && pwd)
anchors=${ANCHORS_DIR:-$root/../shared/anchors}
anchor_bin=${ANCHORS_BUILD:-/tmp/vorra-anchors}
all=(pyramid20 pyramid40 pyramid100 circles1000 polygons200 chain100 dambreak5000 dambreak20000)
rounds=5 vorra=$root/build/bin/vorra-bench out='' scenes=()

die() { echo "vs_anchors: $*" >&2; exit 1; }

while [ $# -gt 0 ]; do
  case $1 in
    --rounds) rounds=${2:-}; shift 2 || die "--rounds needs a number" ;;
    --vorra) vorra=${2:-}; shift 2 || die "--vorra needs a path" ;;
    --out) out=${2:-}; shift 2 || die "--out needs a file" ;;
    -h|--help) sed -n '2,10s/^# \{0,1\}//p' "$0"; exit 0 ;;
    -*) die "unknown option $1" ;;
    *) [[ " ${all[*]} " == *" $1 "* ]] || die "unknown scene $1 (known: ${all[*]})"
       scenes+=("$1"); shift ;;
  esac
done
[[ $rounds =~ ^[1-9][0-9]*$ ]] || die "--rounds wants a positive whole number, not '$rounds'"
[ ${#scenes[@]} -gt 0 ] || scenes=("${all[@]}")
[ -x "$vorra" ] || die "no vorra-bench at $vorra (build it, or pass --vorra PATH)"
[ -f "$anchors/run.sh" ] || die "no anchors at $anchors (set ANCHORS_DIR)"

# What each engine is asked for: Vorra's polygons200 is matched by both the hull stand-in and
# the faithful triangle fans, so the rigid anchor runs both.
rigid=() water=()
for s in "${scenes[@]}"; do
  case $s in
    dambreak*) water+=("${s#dambreak}") ;;
    polygons200) rigid+=(polygons200 polygons200c) ;;
    *) rigid+=("$s") ;;
  esac
done
if [ ! -x "$anchor_bin/box2d_scenes" ] || [ ! -x "$anchor_bin/liquidfun_dambreak" ]; then
  # run.sh only builds as a side effect of running, so give it the cheapest scene.
  echo "vs_anchors: building the anchors into $anchor_bin (once, takes minutes)" >&2
  ANCHORS_BUILD=$anchor_bin bash "$anchors/run.sh" chain100 >/dev/null || die "anchor build failed"
fi

raw=$(mktemp)
trap 'rm -f "$raw"' EXIT

# Runs one engine, insists on a line per expected scene, and keeps the lines tagged by round.
run() {  # round tag "expected scenes" command...
  local r=$1 tag=$2 want=$3 text s
  shift 3
  text=$("$@") || die "$tag failed (exit $?): $*"
  for s in $want; do
    grep -q "^scene=$s " <<<"$text" || die "$tag printed no line for scene $s (round $r)"
  done
  awk -v p="round=$r run=$tag " '{ print p $0 }' <<<"$text" | tee -a "$raw"
}

report() {
  local cpu
  cpu=$(awk -F': *' '/^model name/ { print $2; exit }' /proc/cpuinfo 2>/dev/null)
  echo "# vs_anchors $(date '+%Y-%m-%d %H:%M %Z') | $(nproc) cores, ${cpu:-unknown CPU}" \
       "| rounds=$rounds | vorra=$vorra | anchors=$anchor_bin"
  for ((r = 1; r <= rounds; r++)); do
    run "$r" vorra1 "${scenes[*]}" "$vorra" --time-only --threads 1 "${scenes[@]}"
    run "$r" vorra2 "${scenes[*]}" "$vorra" --time-only --threads 2 "${scenes[@]}"
    [ ${#rigid[@]} -eq 0 ] || run "$r" box2d "${rigid[*]}" "$anchor_bin/box2d_scenes" "${rigid[@]}"
    [ ${#water[@]} -eq 0 ] ||
      run "$r" liquidfun "${water[*]/#/dambreak}" "$anchor_bin/liquidfun_dambreak" "${water[@]}"
  done
  awk -v scenes="${scenes[*]}" -v rounds="$rounds" '
    function field(k,   i) { for (i = 1; i <= NF; i++) if (index($i, k "=") == 1) return substr($i, length(k) + 2); return "" }
    function median(run, s,   v, n, i, j, t) {
      n = 0
      for (i = 1; i <= rounds; i++) if ((run, s, i) in ms) v[++n] = ms[run, s, i]
      for (i = 2; i <= n; i++) for (j = i; j > 1 && v[j - 1] > v[j]; j--) { t = v[j]; v[j] = v[j - 1]; v[j - 1] = t }
      return n % 2 ? v[(n + 1) / 2] : (v[n / 2] + v[n / 2 + 1]) / 2
    }
    function row(s, eng, as, note,   a, v1, v2) {
      v1 = median("vorra1", s); v2 = median("vorra2", s); a = median(eng, as)
      printf "%-14s %10.4f %10.4f  %-36s %10.4f %7.2f %7.2f\n", s, v1, v2, eng " " as note, a, v1 / a, v2 / a
    }
    {
      r = field("round"); run = field("run"); s = field("scene")
      # Vorra pays sweep_ms in every frame, so it belongs to its step time; anchors have none.
      ms[run, s, r] = field("ms_per_step") + field("sweep_ms")
      # The check of the final state: whatever follows the last timing field.
      last = 0; for (i = 1; i <= NF; i++) if (("_" substr($i, 1, index($i, "=") - 1) "_") ~ /_ms_/) last = i
      c = ""; for (i = last + 1; i <= NF; i++) c = c " " $i
      check[run, s] = c
    }
    END {
      printf "\n# ms per step, median over %d round(s); for Vorra that is ms_per_step + sweep_ms\n", rounds
      print "# ratio1, ratio2 = median Vorra (1, 2 threads) / median anchor: a ratio of medians"
      printf "%-14s %10s %10s  %-36s %10s %7s %7s\n", "scene", "vorra1_ms", "vorra2_ms", "anchor", "anchor_ms", "ratio1", "ratio2"
      n = split(scenes, list, " ")
      for (k = 1; k <= n; k++) {
        s = list[k]
        if (s ~ /^dambreak/) row(s, "liquidfun", s, "")
        else if (s == "polygons200") {
          row(s, "box2d", s, " (hulls, stand-in)")
          row(s, "box2d", "polygons200c", " (fans, faithful)")
        } else row(s, "box2d", s, "")
      }
      printf "\n# final-state checks, round %d\n", rounds
      for (k = 1; k <= n; k++) {
        s = list[k]; eng = s ~ /^dambreak/ ? "liquidfun" : "box2d"
        printf "%-14s %-13s%s\n", s, "vorra1", check["vorra1", s]
        printf "%-14s %-13s%s\n", "", "vorra2", check["vorra2", s]
        printf "%-14s %-13s%s\n", "", eng, check[eng, s]
        if (s == "polygons200") printf "%-14s %-13s%s\n", "", "box2d fans", check["box2d", "polygons200c"]
      }
    }' "$raw"
}

# tee with no file name only copies to the screen; pipefail carries a failure inside out.
report | tee ${out:+"$out"}
