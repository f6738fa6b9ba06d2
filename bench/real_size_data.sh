#!/usr/bin/env bash
# The real-size crystals of the benchmarks, each made once and kept:
#   bench/real_size_data.sh GENERATOR DIR CRYSTALS [CAMPAIGN]
# DIR/c01 ... : 4 sites each, anion, cation and neutral outputs (charges -1, +1, 0;
# multiplicities 2, 2, 1) of 16 MiB with 24 KiB after the last energy line, every one its own
# file; the batch list and a neighbour table where each site lists the three others.
# With CAMPAIGN, also DIR/campaign-CAMPAIGN/crystals/r0001 ...: that many crystals for the
# campaign, each a directory of hard links to the files of one of the crystals above in turn.
set -euo pipefail
generator=$1 dir=$2 crystals=$3 campaign=${4:-}
mkdir -p "$dir"
cd "$dir"
for ((c = 1; c <= crystals; c++)); do
  name=$(printf 'c%02d' "$c")
  [[ ! -d $name ]] || continue
  rm -rf "$name.part"
  mkdir "$name.part"
  echo 4 >"$name.part/int_ener_files.dat"
  for s in 1 2 3 4; do
    seed=$((c * 100 + s * 10))
    "$generator" "$name.part/a$s.log" 16 $((seed + 1)) 24 -1 2
    "$generator" "$name.part/c$s.log" 16 $((seed + 2)) 24 1 2
    "$generator" "$name.part/n$s.log" 16 $((seed + 3)) 24 0 1
    echo "a$s.log c$s.log n$s.log" >>"$name.part/int_ener_files.dat"
  done
  printf '#\n#\n4\n' >"$name.part/neighbor.dat"
  for s in 1 2 3 4; do
    printf '%d\n3\n' "$s" >>"$name.part/neighbor.dat"
    for o in 1 2 3 4; do ((o == s)) || echo "$o" >>"$name.part/neighbor.dat"; done
  done
  mv "$name.part" "$name"
done
[[ -n $campaign && ! -d campaign-$campaign ]] || exit 0
rm -rf "campaign-$campaign.part"
for ((r = 1; r <= campaign; r++)); do
  target=$(printf 'campaign-%s.part/crystals/r%04d' "$campaign" "$r")
  mkdir -p "$target"
  source=$(printf 'c%02d' $(((r - 1) % crystals + 1)))
  ln "$source"/*.log "$source/int_ener_files.dat" "$source/neighbor.dat" "$target"/
done
mv "campaign-$campaign.part" "campaign-$campaign"
