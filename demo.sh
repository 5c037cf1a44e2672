#!/usr/bin/env bash
# Installs what is missing, builds, and shows the sample project: what it holds, what it predicts,
# how that compares with the finite element analysis at designs that it was not trained on, and a
# design optimised on its models.
set -euo pipefail
cd "$(dirname "$0")"
source tools/setup.sh

zel_install
zel_build release zel compare_tenbar

sample=examples/zel_tenbar.vrdb
zel=build/release/cli/zel

echo "\$ zel info $sample"
"$zel" info "$sample"

echo
echo "Predictions beside the finite element analysis, at designs not used for training"
echo
build/release/tools/sample_projects/compare_tenbar "$sample"

echo
echo "\$ zel solve $sample --in examples/points.csv --density"
"$zel" solve "$sample" --in examples/points.csv --density

echo
echo "The study's criteria at the same designs (limits are kept where they are positive)"
echo "\$ zel solve $sample --in examples/points.csv --criteria | cut -d, -f13-"
"$zel" solve "$sample" --in examples/points.csv --criteria | cut -d, -f13-

echo
echo "\$ zel eval 'max(abs(stress)) <= limit' --set 'stress=[12,-24.5,8]' --set 'limit=25'"
"$zel" eval 'max(abs(stress)) <= limit' --set 'stress=[12,-24.5,8]' --set 'limit=25'

random=examples/zel_tenbar_random.vrdb
echo
echo "The same truss with random modulus, loads and areas"
echo "\$ zel info $random"
"$zel" info "$random" | sed -n '1,/^Responses/p' | sed '$d'

echo
echo "\$ zel optimize $sample --minimize mass"
"$zel" optimize "$sample" --minimize mass
