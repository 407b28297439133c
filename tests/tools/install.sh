#!/usr/bin/env bash
# Installs the program alone, and runs it from there: no headers, no static libraries, and nothing
# that it needs is left out.
# Usage: install.sh CMAKE BUILD_DIR
set -euo pipefail
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

"$1" --install "$2" --component vextrace_tools --prefix "$work/prefix" >"$work/log"
mv "$work/prefix" "$work/moved" # wherever it lies

cd "$work/moved"
version=$(env -i ./bin/vextrace --version)
[[ $version == 'vextrace '[0-9]* ]] || { echo "install.sh: it says $version" >&2 && exit 1; }

wanted='bin/vextrace
share/bash-completion/completions/vextrace
share/doc/vextrace/README.md
share/doc/vextrace/copyright
share/doc/vextrace/program.md
share/fish/vendor_completions.d/vextrace.fish
share/man/man1/vextrace.1
share/zsh/site-functions/_vextrace'
found=$(find . -type f ! -name 'lib*.so*' | sed 's|^[.]/||' | LC_ALL=C sort)
if [ "$found" != "$wanted" ]; then
    diff <(echo "$wanted") <(echo "$found") >&2
    exit 1
fi
