#!/usr/bin/env bash
# Keeps the README true: its program is the example, and its output is what the example prints.
# Usage: readme.sh SOURCE_DIR PROGRAM
set -euo pipefail
readme=$1/README.md
program=$2

block() {
    awk -v language="$1" '$0 == "```" { inside = 0 } inside { print }
        $0 == "```" language && !seen { inside = 1; seen = 1 }' "$readme"
}

diff <(block cpp) "$1/examples/firstSteps.cpp"
diff <(block text) <("$program")
echo "The README shows the program and its output as they are."
